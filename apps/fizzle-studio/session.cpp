// The studio's plug-in instance: user actions in, frames, overlays and
// messages out.
#include "session.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "apps/fizzle-render/checkpoints.h"
#include "apps/fizzle-render/control_options.h"
#include "apps/fizzle-render/host_setup.h"
#include "page_json.h"
#include "sparkhost/control_log.h"
#include "sparkhost/curves.h"
#include "sparkhost/error.h"
#include "sparkhost/setup_file.h"
#include "sparkhost/text_match.h"
#include "sparkhost/ui_record.h"

using nlohmann::json;
using sparkhost::Control;
using sparkhost::ControlKind;

namespace {

constexpr size_t kKeptMessages = 200;
// Pages polling a few times a second are at most a few pictures behind.
constexpr size_t kRecentPictures = 4;
// A question nobody answers is answered "no", so the plug-in is never held forever.
constexpr auto kQuestionTimeout = std::chrono::minutes(10);
// States of earlier settings kept for undo: a few runs, within this budget.
constexpr size_t kShelvedRuns = 8;
constexpr size_t kShelvedBytes = size_t(256) << 20;

const char *kind_text(sparkhost::Message::Kind kind) {
    switch (kind) {
    case sparkhost::Message::Kind::Error: return "error";
    case sparkhost::Message::Kind::Confirm: return "confirm";
    default: return "message";
    }
}

}  // namespace

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

void Session::log_message(const sparkhost::Message &message) {
    std::string text = message.text;
    while (!text.empty() && text.back() == '\n') text.pop_back();
    std::fprintf(stderr, "spark %s: %s\n", kind_text(message.kind), text.c_str());
    std::lock_guard<std::mutex> lock(state_mutex_);
    messages_.push_back({++message_count_, message.kind, text});
    if (messages_.size() > kKeptMessages) messages_.pop_front();
    ++version_;
}

bool Session::ask(const std::string &text) {
    std::unique_lock<std::mutex> lock(state_mutex_);
    const uint64_t id = ++questions_;
    question_.emplace(id, text);
    ++version_;
    const bool answered = answered_.wait_for(lock, kQuestionTimeout, [&] {
        return stopping_ || (answer_ && answer_->first == id);
    });
    const bool yes = answered && !stopping_ && answer_ && answer_->second;
    question_.reset();
    ++version_;
    return yes;
}

bool Session::answer_confirm(uint64_t id, bool yes) {
    std::lock_guard<std::mutex> lock(state_mutex_);
    if (!question_ || question_->first != id) return false;
    answer_.emplace(id, yes);
    answered_.notify_all();
    return true;
}

void Session::show(const sparkhost::Frame &frame) {
    auto rgb = std::make_shared<const std::vector<uint8_t>>(rgb_top_down(frame));
    std::lock_guard<std::mutex> lock(state_mutex_);
    recent_.push_back(picture_);
    if (recent_.size() > kRecentPictures) recent_.pop_front();
    picture_.rgb = std::move(rgb);
    picture_.width = frame.width();
    picture_.height = frame.height();
    picture_.version = ++version_;
}

void Session::changed() {
    std::lock_guard<std::mutex> lock(state_mutex_);
    ++version_;
}

Control &Session::control(int number) {
    Control *found = host_->controls().find(number);
    if (!found) throw RequestError("no control number " + std::to_string(number));
    return *found;
}

void Session::process_to(int frame) {
    std::optional<sparkhost::Frame> picture = host_->process(frame);
    if (!picture) throw sparkhost::Error(host_->last_failure());
    viewer_->set_frame(frame);
    {
        std::lock_guard<std::mutex> lock(state_mutex_);
        frame_ = frame;
    }
    show(*picture);
}

void Session::settings_changed() {
    states_stale_ = true;
    disk_->forget_key();
    clean_ = false;
}

std::string Session::run_key() {
    std::string key;
    try {
        key = setup_text(*host_);
    } catch (const std::exception &) {
        // Without the setup's text no kept run can be matched: a key of its own.
        static uint64_t unmatched = 0;
        return "unmatched " + std::to_string(++unmatched);
    }
    std::lock_guard<std::mutex> state(state_mutex_);
    return key + "\npreroll " + std::to_string(preroll_) + " range " + std::to_string(first_) + "-" +
           std::to_string(last_);
}

void Session::match_states() {
    if (!states_stale_) return;
    states_stale_ = false;
    std::string key = run_key();
    if (key == states_key_) return;
    if (states_.size()) shelved_.emplace_front(std::move(states_key_), std::move(states_));
    states_ = StateCache();
    for (auto kept = shelved_.begin(); kept != shelved_.end(); ++kept)
        if (kept->first == key) {
            states_ = std::move(kept->second);
            shelved_.erase(kept);
            break;
        }
    states_key_ = std::move(key);
    size_t bytes = 0, runs = 0;
    for (auto kept = shelved_.begin(); kept != shelved_.end(); ++kept, ++runs) {
        bytes += kept->second.bytes();
        if (runs >= kShelvedRuns || bytes > kShelvedBytes) {
            shelved_.erase(kept, shelved_.end());
            break;
        }
    }
}

void Session::keep_state(int frame, int first, int last) {
    if (!clean_ || !host_->can_simulate()) return;
    if (states_.wants(frame)) states_.keep(frame, host_->export_state());
    disk_->frame_done(frame, first, last, preroll_);
}

void Session::restart_bubbles() {
    PreviewPause pause(host_->controls());
    host_->press_control(preroll_ ? "Restart+PreRoll" : "Restart");
}

json Session::show_again() {
    int frame;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        frame = frame_;
    }
    move_to(frame);
    std::lock_guard<std::mutex> lock(state_mutex_);
    ++version_;
    undoable_ = history_.undoable();
    redoable_ = history_.redoable();
    return {{"version", version_}, {"picture", picture_.version}};
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

json Session::go_to(int frame) {
    auto lock = plugin_lock();
    int first, last;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        first = first_;
        last = last_;
    }
    if (frame < first || frame > last)
        throw RequestError("frame " + std::to_string(frame) + " is outside the range " + std::to_string(first) + "-" +
                           std::to_string(last));
    const int start = move_to(frame);
    std::lock_guard<std::mutex> state(state_mutex_);
    ++version_;
    return {{"version", version_}, {"picture", picture_.version}, {"frame", frame_}, {"from", start + 1}};
}

int Session::move_to(int frame) {
    int from, first, last;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        from = frame_;
        first = first_;
        last = last_;
    }
    match_states();
    // The state to go on from: the live one going forwards when it is that
    // of a run from the first frame, otherwise a restart at the shot's
    // first frame; a kept state between that and the frame beats both.
    int start = clean_ && frame > from ? from : 0;
    bool restart = start == 0;
    auto kept = states_.nearest(frame - 1);
    const int in_memory = kept && kept->first > start ? kept->first : start;
    // A checkpoint on the way that failed its checks may leave an older one
    // imported: the bubbles then go on from that one unless memory has better.
    if (std::optional<int> restored = disk_->restore(in_memory, frame - 1, first, last, preroll_);
        restored && (*restored > in_memory || in_memory == start)) {
        start = *restored;
        restart = false;
        clean_ = true;
        kept.reset();
    }
    if (kept && kept->first > start) {
        if (host_->import_state(*kept->second)) {
            start = kept->first;
            restart = false;
            clean_ = true;
        } else {
            states_.forget(kept->first);
        }
    }
    if (restart) {
        restart_bubbles();
        clean_ = true;
    }
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        busy_ = frame - start > 1 ? "Simulating" : "";
        busy_done_ = 0;
        busy_total_ = frame - start;
    }
    try {
        for (int next = start + 1; next <= frame; ++next) {
            // Frames on the way only advance the bubbles, without a picture when the plug-in can.
            if (next < frame && host_->can_simulate()) host_->simulate(next);
            else process_to(next);
            keep_state(next, first, last);
            std::lock_guard<std::mutex> state(state_mutex_);
            ++busy_done_;
            if (stopping_) throw RequestError("the studio is stopping");
        }
    } catch (...) {
        // The bubbles stopped somewhere on the way: only a restart is sure again.
        clean_ = false;
        std::lock_guard<std::mutex> state(state_mutex_);
        busy_.clear();
        throw;
    }
    std::lock_guard<std::mutex> state(state_mutex_);
    busy_.clear();
    return start;
}

json Session::set_range(int first, int last) {
    auto lock = plugin_lock();
    if (first < 1 || last < first || last > 1000000)
        throw RequestError("the range must run from frame 1 or later to a frame not before it");
    host_->settings().total_frames = uint32_t(last);
    settings_changed();
    int frame;
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        first_ = first;
        last_ = last;
        frame = std::clamp(frame_, first, last);
    }
    move_to(frame);
    std::lock_guard<std::mutex> state(state_mutex_);
    ++version_;
    return {{"version", version_}, {"picture", picture_.version}};
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
                                                   const std::string &output, int first, int last) {
    save_setup(setup_path);
    std::vector<std::string> arguments = {"--size", options_.format.size_text(), "--depth",
                                          options_.format.depth == sparkhost::Depth::Bits12 ? "12" : "8"};
    if (options_.pixel_aspect != 1.0) {
        char aspect[32];
        std::snprintf(aspect, sizeof aspect, "%.9g", options_.pixel_aspect);
        arguments.insert(arguments.end(), {"--aspect", aspect});
    }
    for (int clip = 0; clip < sparkhost::kClipCount; ++clip)
        if (!options_.inputs[clip].empty())
            arguments.insert(arguments.end(), {std::string("--") + sparkhost::clip_name(clip), options_.inputs[clip]});
    arguments.insert(arguments.end(), {"--setup", setup_name});
    {
        std::lock_guard<std::mutex> lock(plugin_mutex_);
        if (preroll_) arguments.push_back("--preroll");
    }
    arguments.insert(arguments.end(),
                     {"--frames", std::to_string(first) + "-" + std::to_string(last), "-o", output});
    return arguments;
}

json Session::state(uint64_t messages_after) {
    std::lock_guard<std::mutex> lock(state_mutex_);
    json messages = json::array();
    for (const LoggedMessage &message : messages_)
        if (message.id > messages_after)
            messages.push_back({{"id", message.id}, {"kind", kind_text(message.kind)}, {"text", message.text}});
    json keys = json::object();
    for (const auto &[number, curve] : sparkhost::all_curves()) {
        json frames = json::array();
        for (const auto &[frame, value] : curve.keys()) frames.push_back({frame + 1, value});
        keys[std::to_string(number)] = std::move(frames);
    }
    json answer = {{"version", version_}, {"picture", picture_.version}, {"frame", frame_},
                   {"first", first_},     {"last", last_},               {"cursor", cursor_},
                   {"messages", std::move(messages)},                    {"keys", std::move(keys)},
                   {"undo", undoable_},   {"redo", redoable_}};
    if (!busy_.empty()) answer["busy"] = {{"what", busy_}, {"done", busy_done_}, {"total", busy_total_}};
    if (question_) answer["question"] = {{"id", question_->first}, {"text", question_->second}};
    return answer;
}

Picture Session::picture() {
    std::lock_guard<std::mutex> lock(state_mutex_);
    return picture_;
}

std::optional<Picture> Session::picture_at(uint64_t version) {
    std::lock_guard<std::mutex> lock(state_mutex_);
    if (picture_.version == version) return picture_;
    for (const Picture &kept : recent_)
        if (kept.version == version) return kept;
    return std::nullopt;
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
