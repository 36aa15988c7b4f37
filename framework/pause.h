// Pauses that let a user read a message the host has just shown.
#pragma once

// Sleeps for the given number of seconds, unless FIZZLE_NO_PAUSE=1 was set in
// the environment when the first pause was asked for (tests and batch runs).
void pause_seconds(int seconds);
