// fizzle-render's overlay output: the plug-in's viewer overlay drawn over
// each written frame (--overlay) or written as SVG (--overlay-svg).
#pragma once

#include "render/options.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/core/host.h"
#include "sparkhost/viewer/viewer.h"

class OverlayOutput {
public:
    // Checks the SVG pattern and that the plug-in draws overlays; throws
    // sparkhost::Error naming the option otherwise. Does nothing more when
    // neither option was given.
    OverlayOutput(sparkhost::Host &host, const RenderOptions &options);

    // Has the plug-in draw its overlay for the frame just processed (zoom
    // 1, no offsets: one viewer pixel per image pixel), then draws it over
    // picture and writes its SVG file as asked.
    void apply(int frame, sparkhost::Frame &picture);

private:
    sparkhost::Viewer viewer_;
    bool over_frames_;
    bool svg_;
    sparkhost::FramePattern svg_pattern_;
};
