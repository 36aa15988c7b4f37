// sparkhost::Viewer: the viewer entry points driven with the viewer's zoom,
// offsets and pen samples, and overlays drawn over frames.
#include "sparkhost/viewer/viewer.h"

#include <cmath>
#include <cstdint>
#include <string>

#include "sparkhost/controls/control_log.h"
#include "sparkhost/core/error.h"

namespace sparkhost {

namespace {

using OverlayFunction = void (*)(SparkInfoStruct, float);
using InteractFunction = unsigned long *(*)(SparkInfoStruct, int, int, float, float, float);

template <class T>
std::vector<T> after(const std::vector<T> &all, size_t start) {
    return start < all.size() ? std::vector<T>(all.begin() + long(start), all.end()) : std::vector<T>();
}

}  // namespace

Viewer::Viewer(Host &host) : host_(host) {}

void Viewer::set_zoom(float zoom) {
    if (!(zoom > 0.0f) || !std::isfinite(zoom))
        throw Error("viewer zoom must be a positive number, not " + std::to_string(zoom));
    zoom_ = zoom;
}

void Viewer::set_offset(int x, int y) {
    offset_x_ = x;
    offset_y_ = y;
}

void Viewer::set_ratio(float ratio) {
    if (!std::isfinite(ratio)) throw Error("viewer ratio must be a finite number");
    host_.settings().viewer_ratio = ratio;
}

float Viewer::ratio() const { return host_.settings().viewer_ratio; }

void Viewer::set_active(bool active) { host_.settings().viewer_active = active; }

bool Viewer::active() const { return host_.settings().viewer_active; }

void Viewer::set_frame(int frame) {
    if (frame < 1) throw Error("frame numbers start at 1, not " + std::to_string(frame));
    frame_ = frame;
}

SparkInfoStruct Viewer::info_record() const {
    SparkInfoStruct info = host_.info_record(frame_);
    info.ViewerOffsetX = offset_x_;
    info.ViewerOffsetY = offset_y_;
    info.ViewerWidth = int32_t(std::lround(double(info.FrameWidth) * zoom_));
    info.ViewerHeight = int32_t(std::lround(double(info.FrameHeight) * zoom_));
    info.ViewerZoom = zoom_;
    return info;
}

template <class Function>
Function Viewer::entry(const char *name) const {
    if (!host_.loaded()) throw Error(std::string("no plug-in loaded for ") + name);
    auto function = reinterpret_cast<Function>(host_.symbol(name));
    if (!function) throw Error("plug-in '" + host_.plugin_path() + "' exports no " + name);
    return function;
}

std::vector<GlPrimitive> Viewer::draw() {
    auto overlay = entry<OverlayFunction>("SparkOverlay");
    host_.make_current();
    // Each redraw of the viewer starts from a clean picture.
    gl_recorder().clear();
    overlay(info_record(), zoom_);
    return gl_recorder().primitives();
}

PenOutcome Viewer::pen(float x, float y, float pressure) {
    auto interact = entry<InteractFunction>("SparkInteract");
    host_.make_current();
    // A re-render needs the input buffers; until a frame was processed
    // there are none.
    if (host_.output_buffer().size() == 0) host_.prepare_frame(frame_);

    const size_t cursors_before = host_.events().cursor_shapes.size();
    const int draws_before = host_.events().viewing_draws;
    const size_t updates_before = control_log().updates().size();

    unsigned long *result = interact(info_record(), 0, 0, pressure, x, y);

    PenOutcome outcome;
    outcome.cursors = after(host_.events().cursor_shapes, cursors_before);
    outcome.redraws = host_.events().viewing_draws - draws_before;
    outcome.updates = after(control_log().updates(), updates_before);
    if (result) {
        if (static_cast<const void *>(result) != static_cast<const void *>(host_.output_buffer().data()))
            throw Error("SparkInteract returned pixels other than the output buffer");
        outcome.frame = host_.output_buffer();
    }
    return outcome;
}

std::vector<PenOutcome> Viewer::stroke(PenPoint from, PenPoint to, int steps, float pressure) {
    if (steps < 1) throw Error("a stroke needs at least one drag step, not " + std::to_string(steps));
    if (!(pressure > 0.0f)) throw Error("a stroke needs a positive pen pressure");
    std::vector<PenOutcome> outcomes;
    outcomes.push_back(pen(from.x, from.y, 0.0f));
    outcomes.push_back(pen(from.x, from.y, pressure));
    for (int i = 1; i < steps; ++i) {
        const float t = float(i) / float(steps);
        outcomes.push_back(pen(from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t, pressure));
    }
    outcomes.push_back(pen(to.x, to.y, pressure));
    outcomes.push_back(pen(to.x, to.y, 0.0f));
    return outcomes;
}

void DrawOverFrame(const std::vector<GlPrimitive> &primitives, Frame &frame) {
    const int width = frame.width(), height = frame.height();
    if (width <= 0 || height <= 0 || primitives.empty()) return;
    if (frame.format().depth == Depth::Bits8) {
        Rasterise(primitives, frame.data(), width, height, RowOrder::BottomFirst);
        return;
    }
    // Drawing is opaque: a pixel the overlay touched differs from black on
    // one canvas or from white on the other, and holds its colour on both.
    const size_t bytes = size_t(width) * size_t(height) * 3;
    std::vector<uint8_t> on_black(bytes, 0), on_white(bytes, 255);
    Rasterise(primitives, on_black.data(), width, height, RowOrder::BottomFirst);
    Rasterise(primitives, on_white.data(), width, height, RowOrder::BottomFirst);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const size_t at = (size_t(y) * width + x) * 3;
            const bool touched = on_black[at] | on_black[at + 1] | on_black[at + 2] ||
                                 (on_white[at] & on_white[at + 1] & on_white[at + 2]) != 255;
            if (!touched) continue;
            frame.set_rgb16(x, y, widen_to16(on_black[at], Depth::Bits8),
                            widen_to16(on_black[at + 1], Depth::Bits8),
                            widen_to16(on_black[at + 2], Depth::Bits8));
        }
}

}  // namespace sparkhost
