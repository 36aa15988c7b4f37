// The optional entry points of spark_state.h: a frame simulated without
// drawing, and the effect's state exported and imported whole.
#include <algorithm>
#include <cstring>
#include <memory>

#include "host/adapter/conversion.h"
#include "host/adapter/frame_buffers.h"
#include "host/adapter/globals.h"
#include "host/adapter/proxy_divisor.h"
#include "host/effect_seam.h"
#include "spark/spark_state.h"

namespace {

// The sources SparkProcess would fetch that simulation reads, by clip.
struct ClipBuffer {
    int id;
    SparkMemBufStruct *buffer;
};

void drop_images() {
    for (int index = 0; index < 4; ++index) {
        SourceQv &source = effect_source(index);
        delete source.image;
        source.image = nullptr;
    }
    // The result is the shape below, which outlives the frame.
    effect_result().image = nullptr;
}

// An image of the output's size and ratios whose pixels simulation never
// touches: made once per size rather than cleared on every frame.
ImageQv *output_shape(const void *pixels, double aspect) {
    static std::unique_ptr<ImageQv> shape;
    const int divisor = DLscalesr < 1 ? 1 : DLscalesr;
    auto extent = [divisor](int32_t full) { return divisor == 1 ? std::max(0, full) : ProxyExtent(full, divisor); };
    if (shape && shape->width == extent(DLwidth) && shape->height == extent(DLheight)) {
        if (deep12)
            ConvertFromDLImage12(pixels, DLwidth, DLheight, aspect, DLscalesr, shape.get(), 0);
        else
            ConvertFromDLImage8(pixels, DLwidth, DLheight, aspect, DLscalesr, shape.get(), 0);
    } else {
        shape.reset(convert_in(pixels, aspect, 0));
    }
    return shape.get();
}

}  // namespace

extern "C" {

SPARK_EXPORT unsigned int SparkSimulateClips(void) { return simulated_clip_mask(); }

// The frame cycle of SparkProcess up to the effect's step, with only the
// clips the simulation reads, and no drawing, blending or writing back.
SPARK_EXPORT int SparkSimulate(SparkInfoStruct info) {
    PluginQv &effect = effect_instance();
    effect.pen_pressure = 0.0f;
    if (no_buffers) return 0;

    const double aspect = begin_frame(info);

    const ClipBuffer clips[4] = {{SourceIDInput, &SourceBufInput},
                                 {SourceIDInput2, &SourceBufInput2},
                                 {SourceIDInput3, &SourceBufInput3},
                                 {SourceIDInput4, &SourceBufInput4}};
    const unsigned wanted = simulated_clip_mask();
    for (int index = 0; index < 4; ++index) {
        if (!(wanted & (1u << index))) continue;
        if (!load_source(index, clips[index].id, *clips[index].buffer, aspect)) {
            drop_images();
            return 0;
        }
    }
    if (!get_buffer(ResultIDOutput, ResultBufOutput)) {
        drop_images();
        return 0;
    }
    ResultQv &result = effect_result();
    delete result.image;  // only left over when an earlier frame stopped half way
    result.image = output_shape(ResultBufOutput.Buffer, aspect);

    refresh_cached_control_values();
    if (DL_Sync_Ctrl == 1) {
        effect.SyncControls();
        DL_Sync_Ctrl = 0;
    }
    simulate_effect_frame();
    drop_images();
    return 1;
}

SPARK_EXPORT size_t SparkStateExport(void *buffer, size_t capacity) {
    const std::vector<uint8_t> state = export_effect_state();
    if (buffer && capacity >= state.size()) std::memcpy(buffer, state.data(), state.size());
    return state.size();
}

SPARK_EXPORT int SparkStateImport(const void *data, size_t size) {
    return import_effect_state(static_cast<const uint8_t *>(data), size) ? 1 : 0;
}

}  // extern "C"
