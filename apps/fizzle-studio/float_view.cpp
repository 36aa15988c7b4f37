// The studio's view of a float scene: layer over plate, through a display.
#include "float_view.h"

#include <algorithm>
#include <cmath>

#include "sparkhost/colour/bubble_layer.h"
#include "sparkhost/core/error.h"

using sparkhost::Error;

std::unique_ptr<FloatView> FloatView::open(sparkhost::Host &host, const RenderOptions &options) {
    // A float reflection is read in the working encoding, as fizzle-render
    // reads it, whatever the scene: the picture must be the render's.
    const std::string &reflection = options.inputs[sparkhost::kReflection];
    if (!reflection.empty() && may_hold_float(reflection))
        use_float_reflection(host, options, *sparkhost::open_colour_config(options.plates.colour_config));
    const std::string &scene = options.inputs[sparkhost::kScene];
    if (scene.empty() || !may_hold_float(scene)) return nullptr;
    const sparkhost::FramePattern pattern(scene);
    const sparkhost::PlateInfo info = sparkhost::probe_plate(pattern.path(pattern.is_sequence() ? options.first_frame : 0));
    if (!info.is_float()) return nullptr;
    if (info.width != options.format.width || info.height != options.format.height)
        throw Error("scene input: '" + scene + "' is " + std::to_string(info.width) + "x" +
                    std::to_string(info.height) + " but the frame is " + options.format.size_text());
    if (!host.can_simulate())
        throw Error("plug-in '" + host.plugin_path() + "' cannot save and restore its state, which a float scene needs");
    std::unique_ptr<FloatView> view(new FloatView());
    view->config_ = sparkhost::open_colour_config(options.plates.colour_config);
    view->scene_ = pattern;
    view->scene_space_ = plate_space(*view->config_, options.plates, scene, info);
    view->to_scene_ = view->config_->conversion(options.plates.working_space, view->scene_space_);
    view->black_ = sparkhost::constant_frame(options.format, 0);
    view->grey_ = sparkhost::constant_frame(options.format, sparkhost::layer_grey_level(options.format.depth));
    // The effect reads the scene only to composite over it.
    host.set_input(sparkhost::kScene, view->black_);
    nlohmann::json list = nlohmann::json::array();
    for (const std::string &display : view->config_->displays())
        for (const std::string &one : view->config_->views(display)) list.push_back({{"display", display}, {"view", one}});
    if (list.empty()) throw Error("colour config " + view->config_->describe() + " has no display to show a float scene on");
    view->choices_ = {{"choices", list}};
    view->choose(list[0]["display"], list[0]["view"]);
    return view;
}

void FloatView::choose(const std::string &display, const std::string &view) {
    to_display_ = config_->display_conversion(scene_space_, display, view);
    choices_["display"] = display;
    choices_["view"] = view;
}

void FloatView::render(sparkhost::Host &host, int frame) {
    const std::vector<uint8_t> state = host.export_state();
    if (!host.run_frame_over(frame, black_)) throw Error(host.last_failure());
    over_black_.assign(host.output_buffer());
    if (!host.import_state(state)) throw Error("plug-in refused its own state at frame " + std::to_string(frame));
    if (!host.run_frame_over(frame, grey_)) throw Error(host.last_failure());
    sparkhost::PlateImage layer = sparkhost::layer_from_renders(over_black_, host.output_buffer());
    sparkhost::convert_layer(layer, *to_scene_);
    try {
        if (!scene_.is_sequence()) {
            if (!still_) still_ = std::make_shared<sparkhost::PlateImage>(sparkhost::read_plate(scene_.path(0)));
            composite_ = *still_;
        } else {
            composite_ = sparkhost::read_plate(scene_.path(frame));
        }
    } catch (const Error &error) {
        throw Error(std::string("scene input: ") + error.what());
    }
    if (composite_.width != layer.width || composite_.height != layer.height)
        throw Error("scene input: '" + scene_.path(frame) + "' is " + std::to_string(composite_.width) + "x" +
                    std::to_string(composite_.height) + ", not the frame's size");
    sparkhost::composite_over(layer, composite_);
}

std::vector<uint8_t> FloatView::picture() const {
    sparkhost::PlateImage shown = composite_;
    const std::size_t count = std::size_t(shown.width) * std::size_t(shown.height);
    to_display_->apply(shown.pixels.data(), count, shown.channels);
    std::vector<uint8_t> rgb(count * 3);
    for (std::size_t i = 0; i < count; ++i)
        for (int c = 0; c < 3; ++c) {
            const float value = shown.pixels[i * std::size_t(shown.channels) + std::size_t(c)];
            // NaN shows as black; the display's range is 0..1.
            rgb[i * 3 + std::size_t(c)] = value > 0.0f ? uint8_t(std::min(value, 1.0f) * 255.0f + 0.5f) : 0;
        }
    return rgb;
}
