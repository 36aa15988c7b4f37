// The studio's timeline: frame N shown as a render from the shot's first
// frame makes it, from the nearest state kept for the settings in force.
#include "session.h"

#include <algorithm>

#include "render/checkpoints.h"
#include "render/control_options.h"
#include "float_view.h"
#include "sparkhost/core/error.h"

using nlohmann::json;

namespace {

// States of earlier settings kept for undo: a few runs, within this budget.
constexpr size_t kShelvedRuns = 8;
constexpr size_t kShelvedBytes = size_t(256) << 20;

}  // namespace

void Session::process_to(int frame) {
    if (float_view_) {
        float_view_->render(*host_, frame);
        viewer_->set_frame(frame);
        {
            std::lock_guard<std::mutex> lock(state_mutex_);
            frame_ = frame;
        }
        show_rgb(float_view_->picture(), options_.format.width, options_.format.height);
        return;
    }
    std::optional<sparkhost::Frame> picture = host_->process(frame);
    if (!picture) throw sparkhost::Error(host_->last_failure());
    viewer_->set_frame(frame);
    {
        std::lock_guard<std::mutex> lock(state_mutex_);
        frame_ = frame;
    }
    show(*picture);
}

json Session::choose_display(const std::string &display, const std::string &view) {
    auto lock = plugin_lock();
    if (!float_view_) throw RequestError("the scene is not a float image: there is no display to choose");
    try {
        float_view_->choose(display, view);
    } catch (const sparkhost::Error &error) {
        throw RequestError(error.what());
    }
    {
        std::lock_guard<std::mutex> state(state_mutex_);
        display_ = float_view_->choices();
    }
    show_rgb(float_view_->picture(), options_.format.width, options_.format.height);
    std::lock_guard<std::mutex> state(state_mutex_);
    return {{"picture", picture_.version}, {"display", display_}};
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
    states_ = sparkhost::StateCache();
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
