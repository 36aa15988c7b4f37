// A small plug-in exporting a few control structures with callbacks, loaded
// by the host's control, curve and setup tests.
#include "spark/spark.h"
#include "sparkhost/fake_plugin/fake_plugin.h"

extern "C" {
SPARK_EXPORT FakeCallbackLog fake_callback_log;
SPARK_EXPORT extern SparkFloatStruct SparkFloat16;
}

namespace {

unsigned long fake_output[4];

unsigned long *log_call(int reason, SparkInfoStruct info) {
    fake_callback_log.calls++;
    fake_callback_log.reason = reason;
    fake_callback_log.frame = info.FrameNo;
    fake_callback_log.value_seen = SparkFloat16.Value;
    return fake_output;
}

}  // namespace

extern "C" {

SPARK_EXPORT SparkStringStruct SparkString0 = {"1: Background", "%s", 16, nullptr};
SPARK_EXPORT SparkPushStruct SparkPush6 = {"Restart   ", log_call};
SPARK_EXPORT SparkIntStruct SparkInt9 = {20, 1, 1000, 1, 8, "PreRoll: %d", log_call};
SPARK_EXPORT SparkBooleanStruct SparkBoolean15 = {0, "Use Birth Matte   ", log_call};
SPARK_EXPORT SparkFloatStruct SparkFloat16 = {20.0f, 0.0f, 10000.0f, 1.0f, 0, "Density: %.2f", log_call};
// A lower bound that no float holds exactly.
SPARK_EXPORT SparkFloatStruct SparkFloat17 = {1.0f, 0.1f, 300.0f, 0.05f, 0, "Position Var: %.2f", log_call};
SPARK_EXPORT SparkPupStruct SparkPup23 = {
    3, 4, log_call,
    {"Growth Mode: Assorted  ", "Growth Mode: Shrinking  ", "Growth Mode: Variable Growth  ",
     "Growth Mode: Linear Growth  "}};
SPARK_EXPORT SparkPupStruct SparkPup33 = {0, 3, log_call, {"FULL", "1/2", "1/3"}};
SPARK_EXPORT SparkColorStruct SparkColor71 = {0xFFFFFFFFu, log_call};
SPARK_EXPORT SparkFloatStruct SparkFloat72 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour R: %.2f", log_call};
SPARK_EXPORT SparkFloatStruct SparkFloat73 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour G: %.2f", log_call};
SPARK_EXPORT SparkFloatStruct SparkFloat74 = {100.0f, 0.0f, 100.0f, 0.2f, 0, "BubbleColour B: %.2f", log_call};
SPARK_EXPORT SparkColorStruct SparkColor80 = {0x00336699u, nullptr};
SPARK_EXPORT SparkBooleanStruct SparkBoolean93 = {0, "Light   ", log_call};
SPARK_EXPORT SparkFloatStruct SparkFloat102 = {50.0f, 0.0f, 500.0f, 0.5f, 0, "Light Inten: %.2f", log_call};

}  // extern "C"
