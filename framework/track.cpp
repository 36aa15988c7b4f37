// Tracking data: a clip whose pixels carry a 2-D vector each, in signed 8.8
// fixed point (horizontal in red and green, vertical in blue and alpha).
#include <cstdint>

#include "framework/messages.h"
#include "framework/plugin.h"

float *PluginQv::GetTrackData(SourceQv *source, double frame) {
    if (!source || !source->image) {
        PrintError("GetTrackData: the tracking input has no current frame\n");
        return nullptr;
    }
    const int32_t w = source->image->width;
    const int32_t h = source->image->height;
    ImageQv *fetched = new ImageQv(w, h, 1.0f, nullptr, nullptr);
    float *vectors = new float[size_t(w > 0 ? w : 0) * size_t(h > 0 ? h : 0) * 2]();
    // The tracking clip is addressed in fields, so the frame number is doubled.
    source->GetValue(2.0 * frame, fetched);
    if (fetched) {
        track_image = fetched;
        track_buffer = vectors;
        MultiProcess(&PluginQv::mp_ImgToTV, h);
        track_image = nullptr;
        track_buffer = nullptr;
        delete fetched;
    }
    return vectors;
}

void PluginQv::mp_ImgToTV(long first, long last) {
    const int32_t w = track_image->width;
    for (long y = first; y <= last; ++y) {
        const PixelQv *pixel = track_image->rows[y];
        float *out = track_buffer + 2 * size_t(y) * size_t(w);
        for (int32_t x = 0; x < w; ++x, ++pixel, out += 2) {
            // Only the low 16 bits count: the top bit of green or alpha falls out.
            const int16_t u = int16_t(uint16_t((pixel->red >> 7) | (pixel->green << 1)));
            const int16_t v = int16_t(uint16_t((pixel->blue >> 7) | (pixel->alpha << 1)));
            out[0] = float(u * 0.00390625);
            out[1] = float(v * 0.00390625);
        }
    }
}
