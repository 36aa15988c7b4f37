// Pauses after user-facing failures, skippable for tests and batch runs.
#include "framework/pause.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace {

bool pauses_disabled() {
    // Read once: the environment of a host process does not change under us.
    static const bool disabled = [] {
        const char *value = std::getenv("FIZZLE_NO_PAUSE");
        return value && std::strcmp(value, "1") == 0;
    }();
    return disabled;
}

}  // namespace

void pause_seconds(int seconds) {
    if (seconds <= 0 || pauses_disabled()) return;
    sleep(static_cast<unsigned int>(seconds));
}
