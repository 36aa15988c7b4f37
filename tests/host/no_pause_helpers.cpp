// Failure pauses would only slow the tests down: skip them for the whole run.
#include <cstdlib>

namespace {
const int kNoPause = setenv("FIZZLE_NO_PAUSE", "1", 1);
}
