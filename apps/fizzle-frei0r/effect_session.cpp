// The frame cycle of one frei0r instance on our host.
#include "effect_session.h"

#include <cstdio>
#include <utility>

#include "render/host_setup.h"
#include "sparkhost/core/error.h"

using sparkhost::Error;

// The host's picture of the frame being rendered, and the next one as the
// host hands it over: kept apart, so that a repeated frame is recognised
// without a copy. The simulation never reads the scene, so one picture is
// all the plug-in needs.
class EffectSession::SceneClip : public sparkhost::ClipSource {
public:
    explicit SceneClip(const sparkhost::FrameFormat &format) : picture_(format), next_(format) {}
    sparkhost::Frame &next() { return next_; }
    bool next_is_same() const { return next_ == picture_; }
    void take_next() { std::swap(picture_, next_); }
    sparkhost::Frame frame(int, const sparkhost::FrameFormat &) override { return picture_; }
    void fill(int, const sparkhost::FrameFormat &, sparkhost::Frame &into) override {
        into.reshape(picture_.format());
        into.assign(picture_);
    }
    void check(int, int, const sparkhost::FrameFormat &) override {}
    std::string describe() const override { return "the host's picture"; }

private:
    sparkhost::Frame picture_;
    sparkhost::Frame next_;
};

namespace {

sparkhost::Settings session_settings(const RenderOptions &options) {
    sparkhost::Settings settings;
    settings.format = options.format;
    settings.processors = options.processors;
    // Each frame says its own number as the last one: the effect never
    // reads the total, and a host never says how long its clip is.
    settings.total_frames = 0;
    // Every instance its own copy of the plug-in and so its own effect: the
    // plug-in keeps the effect in globals.
    settings.private_copy = true;
    settings.message_sink = [](const sparkhost::Message &message) {
        std::string text = message.text;
        while (!text.empty() && text.back() == '\n') text.pop_back();
        const char *prefix = message.kind == sparkhost::Message::Kind::Error ? "error" : "message";
        std::fprintf(stderr, "fizzle: spark %s: %s\n", prefix, text.c_str());
    };
    return settings;
}

// fizzle-render's limit: larger pictures are more than the effect's buffers take.
const RenderOptions &checked_size(const RenderOptions &options) {
    const sparkhost::FrameFormat &format = options.format;
    if (format.width < 1 || format.height < 1 || format.width > 16384 || format.height > 16384)
        throw Error("frame size " + format.size_text() + " is outside 1 to 16384 pixels each way");
    return options;
}

}  // namespace

EffectSession::EffectSession(const RenderOptions &options, const std::string &plugin_path)
    : options_(options), host_(session_settings(checked_size(options))) {
    attach_inputs(host_, options_);
    scene_ = std::make_shared<SceneClip>(options_.format);
    host_.set_input(sparkhost::kScene, scene_);
    host_.load(plugin_path);
    if (!host_.can_simulate()) throw Error("plug-in '" + plugin_path + "' cannot simulate a frame without drawing it");
    host_.initialise(1);
    configure_plugin(host_, options_);
    states_.keep(0, host_.export_state());
    shot_ = std::make_unique<ShotRunner>(host_, options_, [](const std::string &note) {
        std::fprintf(stderr, "fizzle: note: %s\n", note.c_str());
    });
}

EffectSession::~EffectSession() {
    try {
        host_.uninitialise(done_ > 0 ? done_ : 1);
    } catch (...) {
        // Leaving: nothing is left to save.
    }
}

sparkhost::Frame &EffectSession::scene() { return scene_->next(); }

void EffectSession::advance(int frame) {
    shot_->advance(frame);
    shot_->frame_done(frame);
    ++simulated_;
    done_ = frame;
    if (states_.wants(frame)) states_.keep(frame, host_.export_state());
}

void EffectSession::reach(int done) {
    if (!started_) {
        started_ = true;
        // With a checkpoint directory the first frame asked for starts from
        // the nearest checkpoint on disk, as fizzle-render would.
        if (!options_.cache_dir.empty() && done > 0) {
            options_.first_frame = done + 1;
            shot_->catch_up();
            simulated_ += done - shot_->restored_from();
            done_ = done;
            return;
        }
    }
    if (done_ == done) return;
    auto kept = states_.nearest(done);
    // Going on from the live state beats restoring an older one.
    if (done_ > done || !kept || kept->first > done_) {
        if (!kept) throw Error("no state kept before frame " + std::to_string(done + 1));
        if (!host_.import_state(*kept->second)) throw Error("the plug-in refused a state it had given");
        done_ = kept->first;
    }
    while (done_ < done) advance(done_ + 1);
}

const sparkhost::Frame &EffectSession::render(int frame) {
    if (frame < 1) throw Error("frame numbers start at 1, not " + std::to_string(frame));
    // Hosts repeat the last frame (MLT at the end of a clip, a paused player).
    if (frame == shown_ && scene_->next_is_same()) return host_.output_buffer();
    shown_ = 0;
    scene_->take_next();
    reach(frame - 1);
    if (!host_.run_frame(frame)) throw Error(host_.last_failure());
    done_ = frame;
    shot_->frame_done(frame);
    if (states_.wants(frame)) states_.keep(frame, host_.export_state());
    shown_ = frame;
    return host_.output_buffer();
}
