// Pauses that give the user time to read a failure message before the host
// carries on.
#pragma once

// Sleeps for the given number of seconds. When the environment variable
// FIZZLE_NO_PAUSE is "1" at the first call, this and every later pause
// return at once (for automated runs and tests).
void PauseForUser(unsigned int seconds);
