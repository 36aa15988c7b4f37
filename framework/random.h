// The framework's process-wide pseudo-random generators.
#pragma once

int randQv(long &seed);
long ran1Qv(long *seed);
float ran1fQv(long *seed);
float ran2Qv(long *seed);
float gasdevQv(long *seed);
