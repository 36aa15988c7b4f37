// What the test plug-in's callbacks saw, shared between it and the tests.
#ifndef TESTS_SPARKHOST_FAKE_PLUGIN_H
#define TESTS_SPARKHOST_FAKE_PLUGIN_H

#include <stdint.h>

extern "C" {
struct FakeCallbackLog {
    int calls;
    int reason;
    uint32_t frame;     // FrameNo of the info record the last callback received
    double value_seen;  // Density when it ran
};
}

#endif
