// A small plug-in exporting a few control structures with callbacks, loaded
// by the host's control, curve and setup tests.
#include "spark/spark.h"
#include "sparkhost/fake_plugin/fake_plugin.h"

namespace {
unsigned long fake_output[4];
}

extern "C" {

SPARK_EXPORT FakeCallbackLog fake_callback_log;

SPARK_EXPORT extern SparkFloatStruct SparkFloat16;
SPARK_EXPORT extern SparkPupStruct SparkPup23;

}  // extern "C"

namespace {

unsigned long *log_call(int reason, const SparkInfoStruct &info, int control, double value) {
    fake_callback_log.calls++;
    fake_callback_log.reason = reason;
    fake_callback_log.control = control;
    fake_callback_log.frame = info.FrameNo;
    fake_callback_log.value_seen = value;
    return fake_output;
}

unsigned long *density_changed(int reason, SparkInfoStruct info) {
    return log_call(reason, info, 16, SparkFloat16.Value);
}

unsigned long *growth_changed(int reason, SparkInfoStruct info) {
    return log_call(reason, info, 23, SparkPup23.Value);
}

// Renders nothing, as a callback does when previews are off.
unsigned long *quiet(int reason, SparkInfoStruct info) {
    log_call(reason, info, -1, 0.0);
    return nullptr;
}

}  // namespace

extern "C" {

SPARK_EXPORT SparkStringStruct SparkString0 = {"1: Background", "%s", 16, nullptr};
SPARK_EXPORT SparkPushStruct SparkPush6 = {"Restart   ", quiet};
SPARK_EXPORT SparkIntStruct SparkInt9 = {20, 1, 1000, 1, 8, "PreRoll: %d", quiet};
SPARK_EXPORT SparkBooleanStruct SparkBoolean15 = {0, "Use Birth Matte   ", quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat16 = {20.0f, 0.0f, 10000.0f, 1.0f, 0, "Density: %.2f", density_changed};
// A lower bound that no float holds exactly.
SPARK_EXPORT SparkFloatStruct SparkFloat17 = {1.0f, 0.1f, 300.0f, 0.05f, 0, "Position Var: %.2f", quiet};
SPARK_EXPORT SparkPupStruct SparkPup23 = {
    3, 4, growth_changed,
    {"Growth Mode: Assorted  ", "Growth Mode: Shrinking  ", "Growth Mode: Variable Growth  ",
     "Growth Mode: Linear Growth  "}};
SPARK_EXPORT SparkPupStruct SparkPup33 = {
    0, 9, quiet, {"FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32"}};
SPARK_EXPORT SparkBooleanStruct SparkBoolean34 = {1, "Auto Preview", quiet};
SPARK_EXPORT SparkBooleanStruct SparkBoolean63 = {1, "Auto Preview", quiet};
SPARK_EXPORT SparkColorStruct SparkColor71 = {0xFFFFFFFFu, quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat72 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour R: %.2f", quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat73 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour G: %.2f", quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat74 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour B: %.2f", quiet};
SPARK_EXPORT SparkColorStruct SparkColor80 = {0x00336699u, nullptr};
SPARK_EXPORT SparkBooleanStruct SparkBoolean93 = {0, "Light   ", quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat102 = {50.0f, 0.0f, 500.0f, 0.5f, 0, "Light Inten: %.2f", quiet};
SPARK_EXPORT SparkFloatStruct SparkFloat109 = {0.0f, -1.0f, 1.0f, 0.05f, 0, "Light Z: %.3f", quiet};

}  // extern "C"
