// A test fixture that starts every test with an empty control log and GL
// recording, with shorthands for reading them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <vector>

#include "sparkhost/controls/control_log.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/viewer/gl_recorder.h"
#include "spark/spark.h"

namespace sparkhost {
inline void PrintTo(const ControlCall &call, std::ostream *out) {
    static const char *const kinds[] = {"update", "enable", "disable"};
    *out << kinds[call.kind] << "(" << call.what << ", " << call.control << ")";
}
}  // namespace sparkhost

class HostLogTest : public ::testing::Test {
protected:
    void SetUp() override {
        sparkhost::control_log().clear();
        sparkhost::gl_recorder().clear();
        sparkhost::clear_curves();
    }
    static std::vector<int> updates() { return sparkhost::control_log().updates(); }
    static std::vector<sparkhost::ControlCall> calls() { return sparkhost::control_log().calls(); }
    static std::vector<sparkhost::GlPrimitive> drawn() { return sparkhost::gl_recorder().primitives(); }
    static sparkhost::ControlCall update(int control) {
        return {sparkhost::ControlCall::Update, 0, control};
    }
    static sparkhost::ControlCall enable(int control) {
        return {sparkhost::ControlCall::Enable, SPARK_UI_CONTROL, control};
    }
    static sparkhost::ControlCall disable(int control) {
        return {sparkhost::ControlCall::Disable, SPARK_UI_CONTROL, control};
    }
};
