// sparkhost::Host: loading a plug-in, its buffers and its frame cycle.
#include "sparkhost/core/host.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "sparkhost/controls/curves.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/memory_policy.h"
#include "sparkhost/core/resolution.h"
#include "sparkhost/clips/file_clip.h"
#include "sparkhost/clips/prefetch_clip.h"

namespace sparkhost {

namespace {

std::atomic<Host *> current_host{nullptr};
// The host whose controls are registered for the spark* functions.
std::atomic<Host *> registered_host{nullptr};

using InitialiseFunction = unsigned int (*)(SparkInfoStruct);
using ProcessFunction = unsigned long *(*)(SparkInfoStruct);
using UnInitialiseFunction = void (*)(SparkInfoStruct);
using VoidFunction = void (*)();
using IntFunction = int (*)();

Settings checked(Settings settings) {
    if (settings.processors < 1 || settings.processors > 127)
        throw Error("processor count must be 1..127, not " + std::to_string(settings.processors));
    if (settings.format.width < 1 || settings.format.height < 1)
        throw Error("frame size must be positive, not " + settings.format.size_text());
    return settings;
}

// Copies the plug-in where no other loader has seen it, loads it and removes
// the copy again: the mapping outlives the file.
void *open_private_copy(const std::string &path, std::string &problem) {
    namespace fs = std::filesystem;
    std::string pattern = (fs::temp_directory_path() / "sparkhost-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        problem = std::string("cannot make a temporary directory: ") + std::strerror(errno);
        return nullptr;
    }
    fs::path copy = fs::path(pattern) / fs::path(path).filename();
    std::error_code error;
    fs::copy_file(path, copy, error);
    void *handle = nullptr;
    if (error) {
        problem = "cannot copy it: " + error.message();
    } else {
        handle = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) problem = dlerror();
    }
    fs::remove_all(pattern, error);
    return handle;
}

}  // namespace

const char *clip_name(int clip) {
    static const char *const names[kClipCount] = {"scene", "birth", "burst", "reflection"};
    return clip >= 0 && clip < kClipCount ? names[clip] : "unknown";
}

int Settings::default_processors() {
    unsigned int cores = std::thread::hardware_concurrency();
    return cores == 0 ? 1 : int(std::min(cores, 127u));
}

Host::Host(Settings settings) : settings_(checked(std::move(settings))), pool_(settings_.processors) {
    for (int clip = 0; clip < kClipCount; ++clip) {
        inputs_[clip] = make_default_clip(clip);
        shown_[clip] = &input_buffers_[clip];
    }
}

Host::~Host() {
    Host *self = this;
    current_host.compare_exchange_strong(self, nullptr);
    self = this;
    if (registered_host.compare_exchange_strong(self, nullptr)) unregister_plugin_controls();
    if (handle_) dlclose(handle_);
}

namespace {

SparkPupStruct *find_resolution_list(const ControlTable &controls) {
    const std::vector<std::string> &names = resolution_names();
    for (const Control &control : controls.controls()) {
        if (control.kind() != ControlKind::Pup) continue;
        auto *list = static_cast<SparkPupStruct *>(control.structure());
        if (list->Count < 1 || size_t(list->Count) > names.size()) continue;
        bool resolutions = true;
        for (int entry = 0; entry < list->Count && resolutions; ++entry)
            resolutions = list->Titles[entry] && names[size_t(entry)] == list->Titles[entry];
        if (resolutions) return list;
    }
    return nullptr;
}

}  // namespace

void Host::load(const std::string &path) {
    if (handle_) throw Error("a plug-in is already loaded: '" + path_ + "'");
    if (access(path.c_str(), R_OK) != 0)
        throw Error("cannot read plug-in '" + path + "': " + std::strerror(errno));
    std::string problem;
    void *handle = nullptr;
    if (settings_.private_copy) {
        handle = open_private_copy(path, problem);
    } else {
        handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) problem = dlerror();
    }
    if (!handle) throw Error("cannot load plug-in '" + path + "': " + problem);
    handle_ = handle;
    path_ = path;
    controls_ = ControlTable::discover(handle_);
    resolution_list_ = find_resolution_list(controls_);
    // Every entry point a frame or a state call may need, while no other
    // library is loading.
    for (const char *name : {"SparkInitialise", "SparkUnInitialise", "SparkProcess", "SparkProcessStart",
                             "SparkClips", "SparkMemoryTempBuffers", "SparkOverlay", "SparkInteract",
                             "SparkSimulate", "SparkSimulateClips", "SparkStateExport", "SparkStateImport",
                             "SparkChannelEditor"})
        symbol(name);
    make_current();
}

void *Host::symbol(const char *name) const {
    if (!handle_) return nullptr;
    std::lock_guard<std::mutex> lock(symbols_mutex_);
    auto found = symbols_.find(name);
    if (found == symbols_.end()) found = symbols_.emplace(name, dlsym(handle_, name)).first;
    return found->second;
}

template <class Function>
Function Host::entry(const char *name) const {
    return reinterpret_cast<Function>(symbol(name));
}

void Host::require_loaded(const char *what) const {
    if (!handle_) throw Error(std::string("no plug-in loaded for ") + what);
}

int Host::clips() {
    require_loaded("SparkClips");
    auto clips_entry = entry<IntFunction>("SparkClips");
    if (!clips_entry) throw Error("plug-in '" + path_ + "' exports no SparkClips");
    make_current();
    return clips_entry();
}

void Host::set_input(int clip, Frame still) {
    set_input(clip, std::make_shared<StillClip>(std::move(still)));
}

void Host::set_input(int clip, std::shared_ptr<ClipSource> source) {
    if (clip < 0 || clip >= kClipCount) throw Error("no input clip " + std::to_string(clip));
    inputs_[clip] = source ? std::move(source) : make_default_clip(clip);
    filled_from_[clip] = nullptr;
}

void Host::set_input_file(int clip, const std::string &pattern) {
    set_input(clip, std::make_shared<FileClip>(pattern));
}

ClipSource &Host::input(int clip) {
    if (clip < 0 || clip >= kClipCount) throw Error("no input clip " + std::to_string(clip));
    return *inputs_[clip];
}

void Host::check_inputs(int first, int last) {
    for (int clip = 0; clip < kClipCount; ++clip) {
        try {
            inputs_[clip]->check(first, last, settings_.format);
        } catch (const Error &error) {
            throw Error(std::string(clip_name(clip)) + " input: " + error.what());
        }
    }
}

void Host::read_ahead(int first, int last) {
    for (std::shared_ptr<ClipSource> &input : inputs_)
        if (input->changes()) input = std::make_shared<PrefetchClip>(input, first, last, settings_.format,
                                                   frames_in_flight(settings_.format, 2));
    filled_from_.fill(nullptr);
}

unsigned Host::initialise(int frame) {
    require_loaded("SparkInitialise");
    auto initialise_entry = entry<InitialiseFunction>("SparkInitialise");
    if (!initialise_entry) throw Error("plug-in '" + path_ + "' exports no SparkInitialise");
    make_current();
    current_frame_ = frame;
    unsigned result = initialise_entry(info_record(frame));
    if (auto clips_entry = entry<IntFunction>("SparkClips")) clips_entry();
    if (auto temp_buffers = entry<VoidFunction>("SparkMemoryTempBuffers")) temp_buffers();
    started_ = false;
    return result;
}

std::optional<Frame> Host::process(int frame) {
    if (!run_frame(frame)) return std::nullopt;
    return output_;
}

bool Host::run_frame(int frame) {
    require_loaded("SparkProcess");
    auto process_entry = entry<ProcessFunction>("SparkProcess");
    if (!process_entry) throw Error("plug-in '" + path_ + "' exports no SparkProcess");
    using Clock = std::chrono::steady_clock;
    const Clock::time_point started = Clock::now();
    prepare_frame(frame);
    return process_prepared(frame, started);
}

bool Host::run_frame_over(int frame, const Frame &scene) {
    require_loaded("SparkProcess");
    if (!entry<ProcessFunction>("SparkProcess")) throw Error("plug-in '" + path_ + "' exports no SparkProcess");
    using Clock = std::chrono::steady_clock;
    const Clock::time_point started = Clock::now();
    if (scene.format() != settings_.format)
        throw Error("scene is " + scene.format().describe() + " but the frame is " + settings_.format.describe());
    // The same frame rendered again over another scene: inputs that already
    // hold this frame's picture are not read or drawn a second time.
    unsigned clips = 0;
    for (int clip = 1; clip < kClipCount; ++clip)
        if (filled_from_[clip] != inputs_[clip].get() || filled_number_[clip] != frame ||
            filled_format_[clip] != settings_.format)
            clips |= 1u << clip;
    prepare_frame(frame, clips);
    input_buffers_[kScene].assign(scene);
    shown_[kScene] = &input_buffers_[kScene];
    shown_owner_[kScene].reset();
    filled_from_[kScene] = nullptr;  // the clip's own picture is due again next frame
    return process_prepared(frame, started);
}

bool Host::process_prepared(int frame, std::chrono::steady_clock::time_point started) {
    using Clock = std::chrono::steady_clock;
    auto process_entry = entry<ProcessFunction>("SparkProcess");
    apply_proxy();
    make_current();
    current_frame_ = frame;
    apply_curves(controls_, float(info_record(frame).FrameNo));
    if (!started_) {
        if (auto start = entry<IntFunction>("SparkProcessStart")) start();
        started_ = true;
    }
    last_failure_.clear();
    const Clock::time_point prepared = Clock::now();
    unsigned long *result = process_entry(info_record(frame));
    frame_times_ = {std::chrono::duration<double>(prepared - started).count(),
                    std::chrono::duration<double>(Clock::now() - prepared).count()};
    if (!result) {
        last_failure_ = "plug-in returned no picture for frame " + std::to_string(frame);
        return false;
    }
    if (static_cast<void *>(result) != static_cast<void *>(output_.data())) {
        last_failure_ = "plug-in returned pixels other than the output buffer for frame " +
                        std::to_string(frame);
        return false;
    }
    return true;
}

void Host::uninitialise(int frame) {
    require_loaded("SparkUnInitialise");
    auto uninitialise_entry = entry<UnInitialiseFunction>("SparkUnInitialise");
    if (!uninitialise_entry) throw Error("plug-in '" + path_ + "' exports no SparkUnInitialise");
    make_current();
    uninitialise_entry(info_record(frame));
    started_ = false;
}

void Host::prepare_frame(int frame, unsigned clips) {
    if (frame < 1) throw Error("frame numbers start at 1, not " + std::to_string(frame));
    for (int clip = 0; clip < kClipCount; ++clip)
        if (clips & (1u << clip)) fill_input(clip, frame);
    prepare_output();
}

void Host::fill_input(int clip, int frame) {
    const FrameFormat &format = settings_.format;
    // Filled in place: the buffers keep their storage from frame to frame.
    // A still picture already shown is not copied again; plug-ins read their
    // input buffers and never write them.
    ClipSource *source = inputs_[clip].get();
    if (filled_from_[clip] == source && !source->changes() && filled_format_[clip] == format) return;
    filled_from_[clip] = nullptr;
    try {
        // A picture the clip holds is shown as it is, and kept alive with its
        // clip even when another input takes the clip's place.
        if (const Frame *held = source->held(frame, format)) {
            shown_[clip] = held;
            shown_owner_[clip] = inputs_[clip];
            input_buffers_[clip] = Frame();
        } else {
            shown_[clip] = &input_buffers_[clip];
            shown_owner_[clip].reset();
            source->fill(frame, format, input_buffers_[clip]);
        }
    } catch (const Error &error) {
        throw Error(std::string(clip_name(clip)) + " input: " + error.what());
    }
    filled_from_[clip] = source;
    filled_number_[clip] = frame;
    filled_format_[clip] = shown_[clip]->format();
    if (shown_[clip]->format() != format)
        throw Error(std::string(clip_name(clip)) + " input: " + inputs_[clip]->describe() + " is " +
                    shown_[clip]->format().describe() + " but the frame is " + format.describe());
}

void Host::take_output(Frame &into) { std::swap(output_, into); }

void Host::prepare_output() {
    const FrameFormat &format = settings_.format;
    if (output_.format() != format) {
        output_ = Frame(format);
        return;
    }
    // Cleared so that a plug-in that leaves pixels unwritten shows black,
    // not the last frame; each processor clears its share.
    uint8_t *bytes = output_.bytes().data();
    const std::size_t size = output_.bytes().size();
    const int workers = pool_.size();
    if (workers == 1) {
        std::memset(bytes, 0, size);
        return;
    }
    pool_.run([&](int worker) {
        const std::size_t begin = size * std::size_t(worker) / std::size_t(workers);
        const std::size_t end = size * std::size_t(worker + 1) / std::size_t(workers);
        std::memset(bytes + begin, 0, end - begin);
    });
}

// Fills a buffer the plug-in asks for during a control callback, as
// prepare_frame would have before it. False when it could not be filled;
// the error is thrown once the callback returns.
bool Host::fill_deferred(int id) {
    if (!deferred_.active) return true;
    try {
        if (id == kOutputBufferId && deferred_.output) {
            deferred_.output = false;
            deferred_.shown = output_;
            deferred_.cleared = true;
            prepare_output();
        } else if (id >= 2 && id < 2 + kClipCount && (deferred_.clips & (1u << (id - 2)))) {
            deferred_.clips &= ~(1u << (id - 2));
            fill_input(id - 2, deferred_.frame);
        }
        return true;
    } catch (const Error &error) {
        if (!deferred_.failure) deferred_.failure = error;
        return false;
    }
}

SparkInfoStruct Host::info_record(int frame) const {
    SparkInfoStruct info;
    std::memset(&info, 0, sizeof info);
    std::strncpy(info.SetupPath, settings_.setup_path.c_str(), SPARK_SETUP_PATH_MAX - 1);
    const FrameFormat &format = settings_.format;
    info.ViewerWidth = format.width;
    info.ViewerHeight = format.height;
    info.ViewerZoom = 1.0f;
    info.ViewerState = settings_.viewer_active ? 1 : 0;
    info.FrameNo = uint32_t(std::max(frame - 1, 0));
    info.TotalFrames = settings_.total_frames ? settings_.total_frames : uint32_t(std::max(frame, 1));
    info.FrameWidth = format.width;
    info.FrameHeight = format.height;
    info.FrameDepth = format.bits_per_pixel();
    info.NumProcessors = int8_t(settings_.processors);
    return info;
}

void Host::apply_proxy() {
    if (!settings_.proxy) return;
    if (resolution_list_) resolution_list_->Value = *settings_.proxy;
}

std::vector<Message> Host::messages() const {
    std::lock_guard<std::mutex> lock(messages_mutex_);
    return messages_;
}

void Host::clear_messages() {
    std::lock_guard<std::mutex> lock(messages_mutex_);
    messages_.clear();
}

void Host::make_current() {
    current_host.store(this);
    if (!handle_) return;
    // Re-registered only when another table took the place of ours, so that
    // references into the registered table stay valid while we run.
    const ControlTable *registered = registered_controls();
    const bool ours = registered_host.exchange(this) == this && registered &&
                      registered->controls().size() == controls_.controls().size() &&
                      (controls_.empty() ||
                       registered->controls().front().structure() == controls_.controls().front().structure());
    if (!ours) register_plugin_controls(controls_);
}

ControlTable &Host::controls() { return controls_; }

std::optional<Frame> Host::user_change(Control &control, const double *value) {
    if (current_frame_ < 1) throw Error("frame numbers start at 1, not " + std::to_string(current_frame_));
    deferred_ = Deferred{true, current_frame_, kAllClips, true, Frame(), false, std::nullopt};
    apply_proxy();
    make_current();
    const SparkInfoStruct info = info_record(current_frame_);
    unsigned long *result = nullptr;
    try {
        result = value ? control.set_by_user(*value, info) : control.notify(info);
    } catch (...) {
        deferred_.active = false;
        throw;
    }
    Deferred done = std::move(deferred_);
    deferred_ = Deferred();
    if (done.failure) throw *done.failure;
    // The viewer keeps showing the last frame unless the callback renders.
    if (!result || static_cast<void *>(result) != static_cast<void *>(output_.data())) {
        if (done.cleared) output_ = std::move(done.shown);
        return std::nullopt;
    }
    return output_;
}

std::optional<Frame> Host::set_control(std::string_view name, double value) {
    return user_change(controls_.at(name), &value);
}

std::optional<Frame> Host::set_control(int number, double value) {
    return user_change(controls_.at(number), &value);
}

std::optional<Frame> Host::press_control(std::string_view name) { return user_change(controls_.at(name), nullptr); }

std::optional<Frame> Host::press_control(int number) { return user_change(controls_.at(number), nullptr); }

Host *Host::current() { return current_host.load(); }

void Host::report(Message::Kind kind, const std::string &text) {
    Message message{kind, text};
    {
        std::lock_guard<std::mutex> lock(messages_mutex_);
        messages_.push_back(message);
    }
    if (settings_.message_sink) {
        settings_.message_sink(message);
        return;
    }
    std::string shown = text;
    while (!shown.empty() && shown.back() == '\n') shown.pop_back();
    const char *prefix = kind == Message::Kind::Error     ? "spark error: "
                         : kind == Message::Kind::Confirm ? "spark confirm: "
                                                          : "spark message: ";
    if (kind == Message::Kind::Confirm)
        shown += settings_.confirm_answer ? " [answered yes]" : " [answered no]";
    std::fprintf(stderr, "%s%s\n", prefix, shown.c_str());
}

int Host::confirm(const std::string &text) {
    report(Message::Kind::Confirm, text);
    if (settings_.confirm_handler) return settings_.confirm_handler(text) ? 1 : 0;
    return settings_.confirm_answer ? 1 : 0;
}

int Host::memory_buffer(int id, SparkMemBufStruct *record) {
    if (!record || settings_.unavailable_buffers.count(id)) return 0;
    if (!fill_deferred(id)) return 0;
    const Frame *frame = nullptr;
    if (id == kOutputBufferId)
        frame = &output_;
    else if (id >= 2 && id < 2 + kClipCount)
        frame = shown_[id - 2];
    if (!frame || frame->size() == 0) return 0;
    record->BufId = id;
    // The record has no const: plug-ins only read their input buffers.
    record->Buffer = const_cast<uint8_t *>(frame->data());
    record->BufWidth = frame->width();
    record->BufHeight = frame->height();
    record->BufDepth = frame->format().bits_per_pixel();
    record->Reserved = 0;
    record->BufSize = frame->size();
    return 1;
}

void Host::graph_setup(SparkGraphInfoStruct *graph) const {
    graph->PixelAspectRatio = settings_.pixel_aspect;
    graph->FrameWidth = settings_.format.width;
    graph->FrameHeight = settings_.format.height;
    graph->FrameDepth = settings_.format.bits_per_pixel();
}

int Host::fetch_frame(int clip, int frame, void *buffer) {
    if (clip < 0 || clip >= kClipCount || frame < 0 || !buffer) return 0;
    try {
        // The plug-in counts frames from 0, as the info record does.
        ClipSource &source = *inputs_[clip];
        Frame copy;
        const Frame *picture = source.held(frame + 1, settings_.format);
        if (!picture) {
            copy = source.frame(frame + 1, settings_.format);
            picture = &copy;
        }
        if (picture->format() != settings_.format) return 0;
        std::memcpy(buffer, picture->data(), picture->size());
        return 1;
    } catch (const Error &) {
        return 0;
    }
}

int Host::fork(SparkMpWorker worker, void *a0, void *a1, void *a2, void *a3) {
    pool_.run([&](int) { worker(a0, a1, a2, a3); });
    return 1;
}

std::string Host::working_dir() const {
    if (!settings_.working_dir.empty()) return settings_.working_dir;
    std::error_code error;
    std::string here = std::filesystem::current_path(error).string();
    return error ? "." : here;
}

void Host::browse(const char *directory, const char *extension, SparkFileBrowserCallback callback) {
    events_.browses.push_back({directory ? directory : "", extension ? extension : ""});
    if (settings_.browser_answer.empty() || !callback) return;
    char path[SPARK_SETUP_PATH_MAX] = {};
    std::strncpy(path, settings_.browser_answer.c_str(), sizeof path - 1);
    callback(path);
}

}  // namespace sparkhost
