// Construction and destruction of the particle engine.
#include "bubbles/engine/particle_engine.h"

// The seeds are fixed so that every engine starts from the same tables.
ParticleEngine::ParticleEngine() {
    gradientTabInit(-665);
    long table_seed = -1;
    fill_random_table(&table_seed);
    partSet = part_set_create(1024);
}

ParticleEngine::~ParticleEngine() { part_set_destroy(partSet); }

void ParticleEngine::fill_random_table(long *seed) { randomTable.Refill(seed); }
