// Construction and destruction of the bubble effect's engine state.
#include "bubbles/bubbles.h"

#include "framework/random.h"

Bubbles::Bubbles() {
    gradientTabInit(-665);
    long table_seed = -1;
    fill_random_table(&table_seed);
    partSet = part_set_create(1024);
}

Bubbles::~Bubbles() { part_set_destroy(partSet); }

void Bubbles::fill_random_table(long *seed) {
    for (float &entry : randomTable) entry = ran1fQv(seed);
}
