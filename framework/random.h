// The framework's process-wide pseudo-random generators.
#pragma once

int randQv(long &seed);
long ran1Qv(long *seed);
float ran1fQv(long *seed);
// `count` successive ran1fQv draws into `out`: the same numbers, made with
// the generator's state held locally instead of reloaded for every draw.
void ran1fQvFill(long *seed, float *out, long count);
float ran2Qv(long *seed);
float gasdevQv(long *seed);
