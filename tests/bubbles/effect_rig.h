// A Bubbles effect bound to this test program's own copy of the exported
// control structures, all at their defaults, with an empty control log.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "bubbles/bubbles.h"
#include "host/glue/control_binding.h"
#include "host/glue/control_table.h"
#include "sparkhost/controls/control_log.h"

class BoundEffectTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const HostControl &control : host_controls()) write_host_default(control);
        effect = std::make_unique<Bubbles>();
        bind_effect_controls(*effect);
        sparkhost::control_log().clear();
    }
    void TearDown() override {
        for (const HostControl &control : host_controls()) write_host_default(control);
    }
    static bool shown(int number) { return sparkhost::control_log().enabled(number); }

    std::unique_ptr<Bubbles> effect;
};
