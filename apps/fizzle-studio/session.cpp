// The studio's plug-in instance: user actions in, frames, overlays and
// messages out.
#include "session.h"

#include <algorithm>
#include <cstdio>

#include "render/checkpoints.h"
#include "render/control_options.h"
#include "render/host_setup.h"
#include "render/render_command.h"
#include "float_view.h"
#include "page_json.h"
#include "sparkhost/controls/control_log.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/setup_file.h"
#include "sparkhost/controls/text_match.h"
#include "sparkhost/viewer/ui_record.h"

using nlohmann::json;
using sparkhost::Control;
using sparkhost::ControlKind;

Session::Session(const RenderOptions &options, const std::string &working_dir, int first, int last)
    : options_(options), first_(first), last_(last) {
    sparkhost::Settings settings;
    settings.format = options.format;
    settings.pixel_aspect = float(options.pixel_aspect);
    settings.processors = options.processors;
    settings.total_frames = uint32_t(last);
    settings.working_dir = working_dir;
    settings.message_sink = [this](const sparkhost::Message &message) { log_message(message); };
    settings.confirm_handler = [this](const std::string &text) { return ask(text); };
    host_ = std::make_unique<sparkhost::Host>(settings);
    attach_inputs(*host_, options);
    host_->load(plugin_path(options));
    float_view_ = FloatView::open(*host_, options);
    if (float_view_) display_ = float_view_->choices();
    viewer_ = std::make_unique<sparkhost::Viewer>(*host_);
    host_->initialise(first);
    defaults_ = settings_of(*host_, false);
    configure_plugin(*host_, options);
    disk_ = std::make_unique<DiskStates>(*host_, options_, [](const std::string &note) {
        std::fprintf(stderr, "fizzle-studio: %s\n", note.c_str());
    });
    // The shot starts at frame 1 whatever part of it the timeline shows, as
    // fizzle-render's does, so frame N here is frame N of a render.
    clean_ = true;
    states_key_ = run_key();
    for (int earlier = 1; earlier < first; ++earlier) {
        if (host_->can_simulate()) host_->simulate(earlier);
        else process_to(earlier);
        keep_state(earlier, first, last);
    }
    frame_ = first;
    process_to(first);
    keep_state(first, first, last);
}

Session::~Session() { shutdown(); }

std::unique_lock<std::mutex> Session::plugin_lock() {
    std::unique_lock<std::mutex> lock(plugin_mutex_);
    std::lock_guard<std::mutex> state(state_mutex_);
    if (stopping_) throw RequestError("the studio is stopping");
    return lock;
}

Control &Session::control(int number) {
    Control *found = host_->controls().find(number);
    if (!found) throw RequestError("no control number " + std::to_string(number));
    return *found;
}

void Session::step() { history_.step(settings_of(*host_, preroll_)); }

json Session::undo() { return go_back(true); }

json Session::redo() { return go_back(false); }

json Session::go_back(bool undo) {
    auto lock = plugin_lock();
    const ShotSettings now = settings_of(*host_, preroll_);
    std::optional<ShotSettings> target = undo ? history_.undo(now) : history_.redo(now);
    if (!target) throw RequestError(undo ? "nothing to undo" : "nothing to redo");
    settings_changed();
    preroll_ = target->preroll;
    try {
        put_back(*host_, *target);
    } catch (const std::exception &error) {
        throw RequestError(std::string(undo ? "cannot undo: " : "cannot redo: ") + error.what());
    }
    return show_again();
}

json Session::controls() {
    auto lock = plugin_lock();
    json list = json::array();
    for (const Control &item : host_->controls().controls()) {
        json entry = control_json(item, sparkhost::control_log().enabled(item.number()));
        if (auto value = defaults_.values.find(item.number()); value != defaults_.values.end())
            entry["default"] = value->second;
        list.push_back(std::move(entry));
    }
    const sparkhost::UiRecord ui = sparkhost::ui_record();
    json pages = json::object();
    for (const auto &[page, title] : ui.page_titles) pages[std::to_string(page)] = title;
    return {{"controls", std::move(list)}, {"pages", std::move(pages)}};
}

json Session::set_value(int number, const std::string &text, bool step_of_its_own) {
    auto lock = plugin_lock();
    Control &target = control(number);
    if (step_of_its_own) step();
    settings_changed();
    try {
        if (target.kind() == ControlKind::String) {
            const std::string problem = target.check_text(text);
            if (!problem.empty()) throw RequestError(problem);
            target.set_text(text);
            host_->press_control(number);
            return show_again();
        }
        const double value = parse_control_value(target, text, target.name());
        if (sparkhost::curve_of(number)) {
            int frame;
            {
                std::lock_guard<std::mutex> state(state_mutex_);
                frame = frame_;
            }
            sparkhost::set_curve_key(number, float(frame - 1), float(value));
        }
        {
            // The frame a callback would render is thrown away: not rendering it saves the time.
            std::optional<PreviewPause> pause;
            if (sparkhost::lower(target.name()) != "auto preview") pause.emplace(host_->controls());
            host_->set_control(number, value);
        }
        return show_again();
    } catch (const sparkhost::Error &error) {
        throw RequestError(error.what());
    } catch (const sparkhost::ControlError &error) {
        throw RequestError(error.what());
    }
}

json Session::press(int number) {
    auto lock = plugin_lock();
    Control &button = control(number);
    const std::string name = sparkhost::lower(button.name());
    if (name == "restart") preroll_ = false;
    if (name == "restart+preroll") preroll_ = true;
    step();
    settings_changed();
    host_->press_control(number);
    return show_again();
}

json Session::pen(float x, float y, float pressure, float zoom) {
    auto lock = plugin_lock();
    try {
        viewer_->set_zoom(zoom);
    } catch (const sparkhost::Error &error) {
        throw RequestError(error.what());
    }
    // A press of the pen starts a step: the whole drag undoes at once.
    if (pressure > 0 && !pen_down_) step();
    pen_down_ = pressure > 0;
    const sparkhost::PenOutcome outcome = viewer_->pen(x, y, pressure);
    // The picture follows a drag at every sample that moved something.
    if (outcome.frame || !outcome.updates.empty()) {
        settings_changed();
        show_again();
    }
    json answer = {{"overlay", overlay_json(viewer_->draw())}, {"updates", outcome.updates}};
    std::lock_guard<std::mutex> state(state_mutex_);
    if (outcome.cursor()) cursor_ = outcome.cursor();
    answer["cursor"] = cursor_;
    answer["version"] = version_;
    answer["picture"] = picture_.version;
    return answer;
}

json Session::overlay(float zoom) {
    auto lock = plugin_lock();
    try {
        viewer_->set_zoom(zoom);
    } catch (const sparkhost::Error &error) {
        throw RequestError(error.what());
    }
    return {{"overlay", overlay_json(viewer_->draw())}};
}

json Session::set_key(int number) {
    auto lock = plugin_lock();
    Control &target = control(number);
    if (!target.has_value()) throw RequestError("\"" + target.name() + "\" has no value to animate");
    int frame;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        frame = frame_;
    }
    step();
    // Curves count frames as the info record does, one less than the user.
    sparkhost::set_curve_key(number, float(frame - 1), float(target.value()));
    settings_changed();
    json answer = show_again();
    answer["ok"] = true;
    return answer;
}

json Session::clear_keys(int number) {
    auto lock = plugin_lock();
    control(number);
    step();
    sparkhost::remove_curve(number);
    settings_changed();
    json answer = show_again();
    answer["ok"] = true;
    return answer;
}

json Session::remove_key(int number) {
    auto lock = plugin_lock();
    control(number);
    int frame;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        frame = frame_;
    }
    std::optional<sparkhost::Curve> curve = sparkhost::curve_of(number);
    if (!curve || !curve->keys().count(float(frame - 1)))
        throw RequestError("no key at frame " + std::to_string(frame) + " to remove");
    step();
    curve->remove_key(float(frame - 1));
    sparkhost::set_curve(number, *curve);
    settings_changed();
    json answer = show_again();
    answer["ok"] = true;
    return answer;
}

json Session::channel_editor() {
    auto lock = plugin_lock();
    json folders = json::array();
    if (auto entry = reinterpret_cast<void (*)()>(host_->symbol("SparkChannelEditor"))) {
        host_->make_current();
        sparkhost::clear_channel_editor();
        entry();
    }
    const sparkhost::UiRecord ui = sparkhost::ui_record();
    for (const sparkhost::ChannelEditorFolder &folder : sparkhost::channel_editor_folders()) {
        json controls = json::array();
        for (int number : folder.controls) {
            auto name = ui.control_names.find(number);
            const Control *item = host_->controls().find(number);
            controls.push_back({{"number", number},
                                {"name", name != ui.control_names.end() ? name->second
                                                                          : item ? item->name() : std::to_string(number)},
                                {"animated", sparkhost::curve_of(number).has_value()}});
        }
        folders.push_back({{"folder", folder.name}, {"controls", std::move(controls)}});
    }
    return folders;
}

void Session::load_setup(const std::string &path) {
    auto lock = plugin_lock();
    step();
    settings_changed();
    try {
        sparkhost::load_setup(path, host_->controls());
    } catch (const std::exception &error) {
        throw RequestError(error.what());
    }
    show_again();
}

void Session::save_setup(const std::string &path) {
    auto lock = plugin_lock();
    try {
        sparkhost::save_setup(path, host_->controls());
    } catch (const std::exception &error) {
        throw RequestError(error.what());
    }
}

json Session::import_amplitude(const std::optional<std::string> &path) {
    auto lock = plugin_lock();
    Control *button = host_->controls().find("Import Amplitude File");
    if (!button || button->kind() != ControlKind::Push)
        throw RequestError("the plug-in has no \"Import Amplitude File\" button");
    step();
    settings_changed();
    host_->settings().browser_answer = path.value_or("");
    const size_t browses = host_->events().browses.size();
    try {
        host_->press_control(button->number());
    } catch (...) {
        host_->settings().browser_answer.clear();
        throw;
    }
    host_->settings().browser_answer.clear();
    json answer = show_again();
    const auto &asked = host_->events().browses;
    if (asked.size() > browses) {
        answer["directory"] = asked.back().directory;
        answer["extension"] = asked.back().extension;
    }
    return answer;
}

std::vector<std::string> Session::render_arguments(const std::string &setup_path, const std::string &setup_name,
                                                   const std::string &output, int first, int last,
                                                   const std::string &layer, const std::string &layer_type) {
    save_setup(setup_path);
    // The studio's own size, depth, aspect and clips; the rest is this render's.
    RenderCommand command = render_command(options_);
    command.setup = setup_name;
    {
        std::lock_guard<std::mutex> lock(plugin_mutex_);
        command.preroll = preroll_;
    }
    command.first_frame = first;
    command.last_frame = last;
    command.output = output;
    command.layer = layer;
    command.layer_type = layer_type;
    return ::render_arguments(command);
}

void Session::stop_requests() {
    std::lock_guard<std::mutex> lock(state_mutex_);
    stopping_ = true;
    answered_.notify_all();
}

void Session::shutdown() {
    stop_requests();
    std::lock_guard<std::mutex> lock(plugin_mutex_);
    if (host_ && host_->loaded() && !uninitialised_) host_->uninitialise(frame_);
    uninitialised_ = true;
}
