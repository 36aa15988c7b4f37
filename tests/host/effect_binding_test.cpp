// The frame cycle and the control callbacks on this program's own copy of
// the plug-in code, so that the effect instance itself can be inspected:
// our host's control table drives the exported structures and callbacks,
// and the host serves the buffers.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/control_table.h"
#include "host/instance.h"
#include "sparkhost/controls.h"
#include "plugin_host_fixture.h"
#include "sparkhost/host.h"

namespace {

void *own_structure(const char *name) {
    for (const HostControl &control : host_controls()) {
        static const char *const kinds[] = {"String", "Push", "Int", "Float", "Boolean", "Pup", "Color"};
        if (std::string("Spark") + kinds[int(control.kind)] + std::to_string(control.number) == name)
            return control.structure;
    }
    return nullptr;
}

class OwnFrameCycle : public ::testing::Test {
protected:
    void SetUp() override {
        for (const HostControl &control : host_controls()) write_host_default(control);
        host_ = std::make_unique<sparkhost::Host>(quiet_host_settings());
        host_->make_current();
        host_->prepare_frame(1);
        info_ = host_->info_record(1);
        controls_ = sparkhost::ControlTable::discover(own_structure);
        sparkhost::register_plugin_controls(controls_);
        ASSERT_EQ(SparkInitialise(info_), 2u);
        ASSERT_NE(SparkProcess(info_), nullptr);
        Instance.restartPending = Instance.preRollPending = 0;
    }
    void TearDown() override {
        sparkhost::unregister_plugin_controls();
        for (const HostControl &control : host_controls()) write_host_default(control);
        host_.reset();
    }

    std::unique_ptr<sparkhost::Host> host_;
    SparkInfoStruct info_;
    sparkhost::ControlTable controls_;
};

}  // namespace

TEST_F(OwnFrameCycle, DensitySetThroughTheHostIsReadByTheNextFrame) {
    controls_.at("Auto Preview").set_by_user(0, info_);
    EXPECT_EQ(controls_.at("Density").set_by_user(40, info_), nullptr);
    EXPECT_FLOAT_EQ(Instance.partSet->density, 20.0f);
    ASSERT_NE(SparkProcess(info_), nullptr);
    EXPECT_FLOAT_EQ(Instance.partSet->density, 40.0f);
    EXPECT_DOUBLE_EQ(Instance.parameters.density, 40.0);
}

TEST_F(OwnFrameCycle, GrowthModeThreeReachesTheEffectAsFour) {
    controls_.at("Growth Mode").set_by_user(3, info_);
    SparkProcess(info_);
    EXPECT_EQ(Instance.parameters.growth_mode, 4);
    EXPECT_EQ(Instance.partSet->growth_mode, 3);
    controls_.at("Growth Mode").set_by_user(0, info_);
    EXPECT_EQ(Instance.parameters.growth_mode, 1);
}

TEST_F(OwnFrameCycle, RestartButtonsOfEveryPageRaiseTheSameRequest) {
    // Without Auto Preview the press does not render, which would consume the request.
    controls_.at("Auto Preview").set_by_user(0, info_);
    for (int number : {6, 35, 64}) {
        Instance.restartPending = 0;
        controls_.at(number).press(info_);
        EXPECT_EQ(Instance.restartPending, 1) << number;
        EXPECT_EQ(Instance.preRollPending, 0) << number;
    }
    for (int number : {8, 37, 66}) {
        Instance.preRollPending = 0;
        controls_.at(number).press(info_);
        EXPECT_EQ(Instance.preRollPending, 1) << number;
    }
}
