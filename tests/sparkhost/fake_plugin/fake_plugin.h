// What the test plug-in's callbacks saw, shared between it and the tests.
#ifndef TESTS_SPARKHOST_FAKE_PLUGIN_H
#define TESTS_SPARKHOST_FAKE_PLUGIN_H

#include <stdint.h>

extern "C" {
struct FakeCallbackLog {
    int calls;
    int reason;
    int control;          // number of the control whose callback ran last
    uint32_t frame;       // FrameNo of the info record it received
    double value_seen;    // the control's value when its callback ran
};
}

#endif
