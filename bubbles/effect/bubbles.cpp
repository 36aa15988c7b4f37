// Construction and destruction of the bubble effect.
#include "bubbles/bubbles.h"

// The seeds are fixed so that every instance starts from the same tables.
Bubbles::Bubbles() {
    gradientTabInit(-665);
    long table_seed = -1;
    fill_random_table(&table_seed);
    partSet = part_set_create(1024);
    restartPending = 0;
    preRollPending = 0;
    requestSpare = 0;
    lumpAspect = -400.0f;
    firstFrame = 1;
}

Bubbles::~Bubbles() { part_set_destroy(partSet); }

void Bubbles::fill_random_table(long *seed) { randomTable.Refill(seed); }
