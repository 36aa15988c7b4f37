// A test fixture with the real plug-in loaded in our host, started and one
// frame processed, with the process-wide host records cleared first.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "spark/spark.h"
#include "sparkhost/controls/control_log.h"
#include "sparkhost/controls/controls.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/core/host.h"
#include "sparkhost/viewer/ui_record.h"

inline sparkhost::Settings quiet_host_settings(sparkhost::Depth depth = sparkhost::Depth::Bits8) {
    sparkhost::Settings settings;
    settings.format = {32, 24, depth};
    settings.processors = 2;
    settings.message_sink = [](const sparkhost::Message &) {};
    return settings;
}

class PluginHostTest : public ::testing::Test {
protected:
    // A fresh plug-in (private copy) per host: its structures start at the
    // table's defaults.
    void start(sparkhost::Settings settings = quiet_host_settings()) {
        sparkhost::clear_curves();
        sparkhost::clear_ui_record();
        host_ = std::make_unique<sparkhost::Host>(std::move(settings));
        host_->load(FIZZLE_PLUGIN_PATH);
        host_->initialise();
        // The first frame applies the visibility rules to the defaults.
        sparkhost::control_log().clear();
        ASSERT_TRUE(host_->process(1)) << host_->last_failure();
    }
    void SetUp() override { start(); }
    void TearDown() override {
        host_.reset();
        sparkhost::clear_curves();
    }

    sparkhost::Host &host() { return *host_; }
    double value(int number) { return host_->controls().at(number).value(); }
    static bool shown(int number) { return sparkhost::control_log().enabled(number); }

private:
    std::unique_ptr<sparkhost::Host> host_;
};
