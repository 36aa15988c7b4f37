// Frame buffers of the host, fetched, checked and converted for the effect.
#include "host/adapter/frame_buffers.h"

#include <cstddef>
#include <cstdint>

#include "framework/messages.h"
#include "host/adapter/conversion.h"
#include "host/adapter/globals.h"
#include "host/adapter/proxy_divisor.h"
#include "host/effect_seam.h"

ImageQv *convert_in(const void *pixels, double aspect, int copy) {
    if (deep12) return ConvertFromDLImage12(pixels, DLwidth, DLheight, aspect, DLscalesr, nullptr, copy);
    return ConvertFromDLImage8(pixels, DLwidth, DLheight, aspect, DLscalesr, nullptr, copy);
}

void convert_out(const ImageQv *image, void *pixels) {
    if (deep12)
        ConvertToDLImage12(image, pixels, DLwidth, DLheight, DLscalesr);
    else
        ConvertToDLImage8(image, pixels, DLwidth, DLheight, DLscalesr);
}

bool get_buffer(int id, SparkMemBufStruct &buffer) {
    if (!sparkMemGetBuffer(id, &buffer)) return false;
    if (!buffer.Buffer) {
        PrintError("Fizzle: the host gave buffer %d without pixels; frame not processed\n", id);
        return false;
    }
    const size_t needed = size_t(DLwidth > 0 ? DLwidth : 0) * size_t(DLheight > 0 ? DLheight : 0) *
                          (deep12 ? 6u : 3u);
    if (buffer.BufSize != 0 && buffer.BufSize < needed) {
        PrintError("Fizzle: buffer %d holds %zu bytes but a %dx%d frame needs %zu; frame not processed\n",
                   id, buffer.BufSize, DLwidth, DLheight, needed);
        return false;
    }
    return true;
}

bool load_source(int index, int id, SparkMemBufStruct &buffer, double aspect, bool convert) {
    if (!get_buffer(id, buffer)) return false;
    SourceQv &source = effect_source(index);
    source.clip = id - 2;
    source.deep = uint8_t(deep12);
    source.time = 0.0;
    delete source.image;  // only left over when an earlier frame stopped half way
    source.image = convert ? convert_in(buffer.Buffer, aspect, 1) : nullptr;
    return true;
}

double begin_frame(const SparkInfoStruct &info) {
    const int divisor = ProxyDivisorFor(resolution_list_value());
    SparkGraphInfoStruct graph{};
    sparkGraphSetup(&graph);

    DLheight = info.FrameHeight;
    DLwidth = info.FrameWidth;
    DLscalesr = divisor;
    DLnumProc = info.NumProcessors;
    frame_context = FrameContextQv{DLwidth, DLheight, DLscalesr, DLnumProc, ConvertFetchedFrame};
    PluginQv &effect = effect_instance();
    // The effect copies the scene's matte on every frame.
    effect.skip_matte_copy = 0;
    effect.current_frame = double(info.FrameNo);
    effect.frame_count = double(info.TotalFrames);
    return graph.PixelAspectRatio;
}
