// Pauses after user-facing failure messages, skippable for automated runs.
#include "framework/pause.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

void PauseForUser(unsigned int seconds) {
    static const bool skip = [] {
        const char *value = std::getenv("FIZZLE_NO_PAUSE");
        return value && std::strcmp(value, "1") == 0;
    }();
    if (!skip) sleep(seconds);
}
