// What the page is sent: controls, overlay drawings and pictures in the
// forms its widgets and canvases take.
#pragma once

#include <nlohmann/json.hpp>

#include "sparkhost/controls/controls.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/viewer/gl_recorder.h"

// number, page, slot, kind, name, title, value (colours as "#RRGGBB", lists
// from 0), range and step, list entries, text, hidden and enabled. shown:
// false once the plug-in hid the control (sparkDisableParameter); a plug-in
// disables a slider by freezing its range, and the page greys it then.
nlohmann::json control_json(const sparkhost::Control &control, bool shown);

// Primitives recorded at some zoom: mode ("points", "lines", "strip",
// "polygon"), colour as "#rrggbb" and the vertices flattened, y up.
nlohmann::json overlay_json(const std::vector<sparkhost::GlPrimitive> &primitives);

// RGB bytes with the top row first, 8 bits whatever the frame's depth.
std::vector<uint8_t> rgb_top_down(const sparkhost::Frame &frame);
