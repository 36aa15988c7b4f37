// sparkhost::Viewer — the host's viewer over a loaded plug-in: it has the
// plug-in draw its overlay (SparkOverlay) and hands it pen samples
// (SparkInteract), recording what the plug-in asked of the viewer.
//
//     sparkhost::Viewer viewer(host);          // host has loaded and initialised
//     host.process(1);
//     viewer.set_zoom(2.0f);
//     std::vector<GlPrimitive> picture = viewer.draw();
//     PenOutcome hover = viewer.pen(100, 50, 0.0f);
//     std::vector<PenOutcome> drag = viewer.stroke({100, 50}, {300, 80});
//
// Pen coordinates are image pixels of the full-resolution frame, y up (the
// overlay's own units, before zoom and offsets). The viewer ratio and the
// state byte live in the host's settings (viewer_ratio, viewer_active),
// zoom, offsets and frame here. A pen sample that re-renders uses the
// buffers of the frame the host last prepared (the viewer shows that
// frame); before any frame it prepares the viewer's frame itself.
#pragma once

#include <optional>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/viewer/gl_recorder.h"
#include "sparkhost/core/host.h"

namespace sparkhost {

// What one pen sample made the plug-in do.
struct PenOutcome {
    std::vector<int> cursors;    // sparkViewingCursor shapes, in order
    int redraws = 0;             // sparkViewingDraw calls
    std::vector<int> updates;    // controls passed to sparkControlUpdate, in order
    std::optional<Frame> frame;  // the re-rendered frame, when SparkInteract returned one

    // The last cursor shape asked for; 0 when none.
    int cursor() const { return cursors.empty() ? 0 : cursors.back(); }
    // Nothing at all: no cursor, redraw, update or frame.
    bool ignored() const { return cursors.empty() && redraws == 0 && updates.empty() && !frame; }
};

struct PenPoint {
    float x = 0.0f, y = 0.0f;
};

class Viewer {
public:
    explicit Viewer(Host &host);

    // Viewer pixels per image pixel, handed to SparkOverlay; throws Error
    // unless positive and finite.
    void set_zoom(float zoom);
    float zoom() const { return zoom_; }
    // Translation of the picture in the viewer, in viewer pixels.
    void set_offset(int x, int y);
    int offset_x() const { return offset_x_; }
    int offset_y() const { return offset_y_; }
    // sparkGetViewerRatio's answer.
    void set_ratio(float ratio);
    float ratio() const;
    // The info record's state byte: 0 refuses interaction.
    void set_active(bool active);
    bool active() const;
    // The frame the info records are made for (numbered from 1).
    void set_frame(int frame);
    int frame() const { return frame_; }

    // The info record handed to the viewer entry points.
    SparkInfoStruct info_record() const;

    // SparkOverlay with the viewer's zoom. Returns what it drew, in viewer
    // coordinates; gl_recorder() keeps the same until the next draw.
    std::vector<GlPrimitive> draw();
    // SparkInteract with one pen sample.
    PenOutcome pen(float x, float y, float pressure);
    // A user's drag: a hover at from, a press there, `steps` drag samples
    // evenly on the way to to (the last one at to), and a release at to.
    // One outcome per sample, in that order.
    std::vector<PenOutcome> stroke(PenPoint from, PenPoint to, int steps = 4,
                                   float pressure = 0.5f);

private:
    template <class Function>
    Function entry(const char *name) const;

    Host &host_;
    float zoom_ = 1.0f;
    int offset_x_ = 0;
    int offset_y_ = 0;
    int frame_ = 1;
};

// Draws an overlay recorded at zoom 1 without offsets over a frame of either
// depth: image pixels and viewer pixels then coincide, row 0 at the bottom.
void DrawOverFrame(const std::vector<GlPrimitive> &primitives, Frame &frame);

}  // namespace sparkhost
