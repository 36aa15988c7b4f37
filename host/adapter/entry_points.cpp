// The plug-in's exported Spark entry points: start-up, the frame cycle and
// tear-down, joining the host's frame buffers to the effect instance.
#include <cstddef>
#include <cstdint>

#include "framework/messages.h"
#include "framework/pause.h"
#include "host/adapter/conversion.h"
#include "host/adapter/frame_buffers.h"
#include "host/adapter/globals.h"
#include "host/adapter/proxy_divisor.h"
#include "host/adapter/startup.h"
#include "host/effect_seam.h"
#include "spark/spark.h"

namespace {

constexpr int kBuffersNeeded8 = 2;
constexpr int kBuffersNeeded12 = 2;

}  // namespace

extern "C" {

SPARK_EXPORT unsigned int SparkInitialise(SparkInfoStruct info) {
    if (sparkAPIVersionInfo() < 4.0)
        sparkError("This version of \"Fizzle\" needs IFFFS 7.0/4.0 (sparks API 4.0) or higher.");
    deep12 = (info.FrameDepth == 48 || info.FrameDepth == 64) ? 1 : 0;
    sparkLoadSetup(&info);
    PrintBannerAndCheckBuffers(info, "Fizzle", kBuffersNeeded8, kBuffersNeeded12, "7", 1);
    bind_framework_controls();
    title_pages_and_clips();
    DL_Sync_Ctrl = 1;
    rename_channel_editor_entries();
    return 2;
}

SPARK_EXPORT int SparkClips(void) { return 4; }

SPARK_EXPORT void SparkMemoryTempBuffers(void) {}

SPARK_EXPORT int SparkProcessStart(void) { return 1; }

SPARK_EXPORT unsigned long *SparkProcess(SparkInfoStruct info) {
    PluginQv &effect = effect_instance();
    effect.pen_pressure = 0.0f;
    sparkCursorBusy();
    if (no_buffers) {
        sparkMessage(" Fizzle cannot run due to insufficient buffers.");
        PauseForUser(5);
        return nullptr;
    }

    const double aspect = begin_frame(info);
    // Read before the clips are converted: they tell which clips are read.
    // A clip no enabled control reads is still asked for, so a host short of
    // buffers fails the same way, but is left unconverted.
    refresh_cached_control_values();

    if (!load_source(0, SourceIDInput, SourceBufInput, aspect)) return nullptr;
    if (!load_source(1, SourceIDInput2, SourceBufInput2, aspect, effect_reads_source(1))) return nullptr;
    if (!load_source(2, SourceIDInput3, SourceBufInput3, aspect, effect_reads_source(2))) return nullptr;
    if (!load_source(3, SourceIDInput4, SourceBufInput4, aspect, effect_reads_source(3))) return nullptr;

    if (!get_buffer(ResultIDOutput, ResultBufOutput)) return nullptr;
    ResultQv &result = effect_result();
    delete result.image;
    // The effect overwrites every pixel, so nothing is copied in.
    result.image = convert_in(ResultBufOutput.Buffer, aspect, 0);

    if (DL_Sync_Ctrl == 1) {
        effect.SyncControls();
        DL_Sync_Ctrl = 0;
    }
    effect.ProcessFrame();

    const double amount = blend_control_value() / 100.0;
    if (amount > 0 && result.image && effect_source(0).image)
        blend_with_scene(*result.image, *effect_source(0).image, amount);

    for (int index = 0; index < 4; ++index) {
        SourceQv &source = effect_source(index);
        delete source.image;
        source.image = nullptr;
    }
    convert_out(result.image, ResultBufOutput.Buffer);
    delete result.image;
    result.image = nullptr;

    sparkViewingCursor(1);
    return static_cast<unsigned long *>(ResultBufOutput.Buffer);
}

SPARK_EXPORT void SparkUnInitialise(SparkInfoStruct info) { sparkSaveSetup(&info); }

}  // extern "C"
