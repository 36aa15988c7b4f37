// The bubbles layer and float scenes. Each frame is rendered from one saved
// simulation state over black and over grey, which gives the layer (see
// sparkhost/colour/bubble_layer.h); the state is then put back so the frame's own
// render over an integer scene is exactly today's. A float scene is never
// handed to the effect, which reads the scene only to composite over it:
// the layer, converted to the scene's colour space, goes over the plate in
// float instead, so every value the bubbles leave alone keeps its bits.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "render/options.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/files/frame_pattern.h"
#include "sparkhost/core/host.h"
#include "sparkhost/colour/plate_io.h"

class PlateOutput {
public:
    // Call after the plug-in is loaded and before the inputs are checked:
    // probes the scene and reflection files, opens the colour config and
    // puts converted clips in place of float ones. Throws sparkhost::Error
    // naming the problem. notes: one-line warnings.
    PlateOutput(sparkhost::Host &host, const RenderOptions &options, std::function<void(const std::string &)> notes);
    // Writes what was queued, unless a write failed.
    ~PlateOutput();
    PlateOutput(const PlateOutput &) = delete;
    PlateOutput &operator=(const PlateOutput &) = delete;

    // Whether there is anything to do: a layer or a float scene.
    bool active() const { return active_; }
    // A float scene: the output frames are written here, not by the caller.
    bool writes_output() const { return float_scene_; }
    // Whether a frame's files exist, for --skip-existing.
    bool frame_exists(int frame) const;

    // Renders the frame's layer. With a float scene the frame is then done
    // (the plug-in's state is the frame's); otherwise the state is as before
    // the frame, for the caller to render it. Throws a write error of an
    // earlier frame.
    void render(int frame);
    // Waits for the last files; throws a write error.
    void finish();

private:
    struct Job {
        int number;
        sparkhost::Frame over_black;
        sparkhost::Frame over_grey;
        long sequence;
    };
    // A writer's frame-sized buffers, kept from frame to frame: fresh ones
    // cost page faults and clearing on every frame.
    struct Scratch {
        sparkhost::PlateImage layer;
        sparkhost::PlateImage plate;
    };
    void setup_colour(const RenderOptions &options);
    std::string space_of(const std::string &pattern, const sparkhost::PlateInfo &info) const;
    void work();
    void write_frame(const Job &job, Scratch &scratch);
    const sparkhost::PlateImage &composite_frame(int frame, Scratch &scratch);
    void throw_failure();
    void flush_notes();

    sparkhost::Host &host_;
    const RenderOptions &options_;
    std::function<void(const std::string &)> notes_;
    bool active_ = false;
    bool float_scene_ = false;
    sparkhost::SampleType scene_type_ = sparkhost::SampleType::Float;
    std::string scene_space_;
    std::shared_ptr<const sparkhost::ColourConfig> config_;
    std::shared_ptr<const sparkhost::ColourConversion> to_scene_;  // working encoding to the scene's space
    sparkhost::FramePattern scene_, output_, layer_;
    sparkhost::Frame black_, grey_;

    std::mutex still_mutex_;
    std::shared_ptr<const sparkhost::PlateImage> still_plate_;
    std::size_t still_non_finite_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    std::vector<sparkhost::Frame> spare_;
    long submitted_ = 0;
    long committed_ = 0;
    int writing_ = 0;
    bool closing_ = false;
    std::exception_ptr failure_;
    std::vector<std::string> pending_notes_;
    bool warned_non_finite_ = false;
    std::vector<std::thread> threads_;
};
