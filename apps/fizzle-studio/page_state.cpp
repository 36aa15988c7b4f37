// What the pages poll, kept apart from the plug-in's lock: the picture,
// messages, the open question and the timeline's place.
#include "session.h"

#include <chrono>
#include <cstdio>

#include "page_json.h"
#include "sparkhost/controls/curves.h"

using nlohmann::json;

namespace {

constexpr size_t kKeptMessages = 200;
// Pages polling a few times a second are at most a few pictures behind.
constexpr size_t kRecentPictures = 4;
// A question nobody answers is answered "no", so the plug-in is never held forever.
constexpr auto kQuestionTimeout = std::chrono::minutes(10);

const char *kind_text(sparkhost::Message::Kind kind) {
    switch (kind) {
    case sparkhost::Message::Kind::Error: return "error";
    case sparkhost::Message::Kind::Confirm: return "confirm";
    default: return "message";
    }
}

}  // namespace

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

void Session::show(const sparkhost::Frame &frame) { show_rgb(rgb_top_down(frame), frame.width(), frame.height()); }

void Session::show_rgb(std::vector<uint8_t> rgb, int width, int height) {
    auto shared = std::make_shared<const std::vector<uint8_t>>(std::move(rgb));
    std::lock_guard<std::mutex> lock(state_mutex_);
    recent_.push_back(picture_);
    if (recent_.size() > kRecentPictures) recent_.pop_front();
    picture_.rgb = std::move(shared);
    picture_.width = width;
    picture_.height = height;
    picture_.version = ++version_;
}

void Session::changed() {
    std::lock_guard<std::mutex> lock(state_mutex_);
    ++version_;
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
    if (!display_.is_null()) answer["display"] = display_;
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
