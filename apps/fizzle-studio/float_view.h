// A float scene in the studio. As in a render, the effect composites over
// black and the bubbles layer goes over the plate in float, in the plate's
// colour space; the viewer then shows that composite through the colour
// config's display transform, as a compositor would view the file written.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "render/options.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/core/host.h"
#include "sparkhost/colour/plate_io.h"

class FloatView {
public:
    // Null when the scene is not a float file. Gives the host black in the
    // scene's place. Call once the plug-in is loaded. Throws sparkhost::Error.
    static std::unique_ptr<FloatView> open(sparkhost::Host &host, const RenderOptions &options);

    // Renders the frame from the plug-in's state now (over black and over
    // grey, leaving the frame's state) and composites the layer over the
    // plate. Throws sparkhost::Error.
    void render(sparkhost::Host &host, int frame);
    // The last composite through the chosen display and view, as RGB bytes,
    // top row first.
    std::vector<uint8_t> picture() const;

    // {"display", "view", "choices": [{"display", "view"}...]}, the config's default first.
    const nlohmann::json &choices() const { return choices_; }
    // Throws sparkhost::Error naming what there is.
    void choose(const std::string &display, const std::string &view);

private:
    FloatView() = default;

    std::shared_ptr<const sparkhost::ColourConfig> config_;
    std::shared_ptr<const sparkhost::ColourConversion> to_scene_, to_display_;
    sparkhost::FramePattern scene_{""};
    std::string scene_space_;
    sparkhost::Frame black_, grey_, over_black_;
    std::shared_ptr<const sparkhost::PlateImage> still_;
    sparkhost::PlateImage composite_;
    nlohmann::json choices_;
};
