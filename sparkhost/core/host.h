// sparkhost::Host — loads a Spark plug-in and drives it as a compositing host
// would, for fizzle-render and for tests.
//
//     sparkhost::Settings settings;
//     settings.format = {64, 48, sparkhost::Depth::Bits8};
//     sparkhost::Host host(settings);
//     host.load(FIZZLE_PLUGIN_PATH);
//     host.set_input(sparkhost::kScene, frame);      // or set_input_file(...)
//     host.initialise();
//     std::optional<sparkhost::Frame> out = host.process(1);  // nullopt: refused,
//     host.uninitialise();                                    // see last_failure()
//
// Frames are numbered from 1 as the user and file sequences count them; the
// info record's FrameNo is that number minus 1, and sparkGetFrame's frame
// argument counts the same way as FrameNo. The destructor only unloads the
// plug-in: calling uninitialise() (which saves the setup) is the caller's. Inputs not given are the
// built-in pictures of default_clips.h. Buffers follow frame.h: row 0 is the
// bottom row; files are flipped on reading and writing, never the plug-in.
//
// The spark* functions a plug-in calls have no context argument, so they act
// on the current host: the one that last loaded or called into a plug-in
// (make_current() switches explicitly). Without a current host they keep to
// harmless defaults, so code linked against libsparkhost runs without one;
// sparkMpFork then runs as many workers as its fourth argument asks for.
//
// Host-side problems (missing plug-in, unreadable inputs, wrong sizes) throw
// sparkhost::Error. A plug-in that refuses a frame makes process() return
// nullopt. Messages the plug-in sends are echoed to stderr and recorded.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "spark/spark.h"
#include "sparkhost/clips/clip_source.h"
#include "sparkhost/controls/controls.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/frame.h"
#include "sparkhost/core/thread_pool.h"

namespace sparkhost {

// Input clips in the plug-in's order; buffer id = clip + 2.
enum ClipIndex { kScene = 0, kBirth = 1, kBurst = 2, kReflection = 3 };
constexpr int kClipCount = 4;
constexpr int kOutputBufferId = 1;
constexpr unsigned kAllClips = (1u << kClipCount) - 1;
const char *clip_name(int clip);  // "scene", "birth", "burst", "reflection"

struct Message {
    enum class Kind { Message, Error, Confirm };
    Kind kind;
    std::string text;
};

struct Settings {
    FrameFormat format{1280, 720, Depth::Bits8};
    float pixel_aspect = 1.0f;
    // Processors the fork runs on and the info record reports (1..127).
    int processors = default_processors();
    int free_buffers = 8;          // sparkMemGetFreeMemory
    double api_version = 4.0;      // sparkAPIVersionInfo
    bool confirm_answer = true;    // sparkMessageConfirm: yes
    // Asks a person instead (an interactive host); unset: confirm_answer.
    std::function<bool(const std::string &)> confirm_handler;
    float viewer_ratio = 1.0f;     // sparkGetViewerRatio
    bool viewer_active = true;     // info record byte 4120
    // Resolution list entry to select before every frame (0 FULL .. 8 1/32)
    // in the plug-in's resolution list, found by its entries; unset leaves
    // the plug-in's own choice alone.
    std::optional<int> proxy;
    uint32_t total_frames = 0;     // info record TotalFrames; 0: the frame's own number
    std::string setup_path;        // handed over in the info record
    std::string working_dir;       // sparkWorkingDir; empty: the process's
    // What the file browser "picks"; empty: the user cancels.
    std::string browser_answer;
    std::set<int> unavailable_buffers;  // ids sparkMemGetBuffer refuses
    // Load a private copy of the plug-in file, so each Host gets a freshly
    // constructed plug-in instead of sharing one loaded image.
    bool private_copy = true;
    // Where messages go besides the record; unset: stderr with a prefix.
    std::function<void(const Message &)> message_sink;

    static int default_processors();
};

// What the plug-in asked of the viewer and file browser.
struct HostEvents {
    int cursor_busy = 0;
    int viewing_draws = 0;
    std::vector<int> cursor_shapes;
    struct Browse {
        std::string directory;
        std::string extension;
    };
    std::vector<Browse> browses;
};

class Host {
public:
    explicit Host(Settings settings = Settings());
    ~Host();
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;

    // --- the plug-in -------------------------------------------------------
    void load(const std::string &path);  // throws Error
    bool loaded() const { return handle_ != nullptr; }
    const std::string &plugin_path() const { return path_; }
    void *symbol(const char *name) const;  // null when not exported
    bool exports(const char *name) const { return symbol(name) != nullptr; }
    int clips();  // SparkClips

    // --- inputs ------------------------------------------------------------
    void set_input(int clip, Frame still);
    void set_input(int clip, std::shared_ptr<ClipSource> source);
    void set_input_file(int clip, const std::string &pattern);
    ClipSource &input(int clip);
    // Throws Error unless every input can serve frames first..last.
    void check_inputs(int first, int last);
    // From here on, inputs that change from frame to frame are read or drawn
    // ahead of the render, frames first..last in order (prefetch_clip.h).
    void read_ahead(int first, int last);

    // --- the frame cycle -----------------------------------------------------
    unsigned initialise(int frame = 1);   // SparkInitialise, SparkClips, SparkMemoryTempBuffers
    std::optional<Frame> process(int frame);
    // process() without the copy: true when the plug-in rendered, the
    // picture then being output_buffer() until the next frame or change.
    bool run_frame(int frame);
    // run_frame() with `scene` in the scene clip's buffer instead of its
    // picture: what the effect adds to a known scene (a bubbles layer is
    // worked out from renders over two constant scenes).
    bool run_frame_over(int frame, const Frame &scene);
    void uninitialise(int frame = 1);
    // Fills the four input buffers for a frame and clears the output buffer;
    // process() does this itself. Callers that invoke plug-in callbacks
    // directly use it to get the buffers ready.
    // clips: one bit per input clip to fill; the others keep what they held.
    void prepare_frame(int frame, unsigned clips = kAllClips);
    SparkInfoStruct info_record(int frame) const;
    const Frame &output_buffer() const { return output_; }
    // Moves the picture of the last frame into `into` without copying it,
    // taking `into`'s storage (a buffer a writer has done with, or nothing)
    // as the output buffer, which the next frame clears as always.
    void take_output(Frame &into);
    const std::string &last_failure() const { return last_failure_; }
    // Where the last run_frame() spent its time, in seconds: getting the
    // buffers ready (reading or waiting for inputs), then the plug-in's
    // SparkProcess.
    struct FrameTimes {
        double buffers = 0;
        double process = 0;
    };
    const FrameTimes &last_frame_times() const { return frame_times_; }

    // --- simulation and state (spark_state.h; host_state.cpp) ----------------
    // True when the plug-in simulates without drawing and exports and
    // imports its state; otherwise a frame can only be had by rendering
    // every frame before it.
    bool can_simulate() const;
    // Advances the plug-in by one frame as process(frame) would, without a
    // picture. Throws Error when the plug-in refuses the frame.
    void simulate(int frame);
    std::vector<uint8_t> export_state();
    // False when the plug-in refused the state (it is then unchanged).
    bool import_state(const std::vector<uint8_t> &state);

    // --- controls ------------------------------------------------------------
    // The loaded plug-in's controls. load() registers them for the spark*
    // functions (setups, curves) and make_current() registers them again
    // when another table took their place. Before each frame process()
    // writes the curves' values into them, at the info record's frame.
    ControlTable &controls();
    // As a user would: prepares the buffers of the frame last processed (or
    // started), sets the value and calls the control's callback with reason
    // 1. Returns the output when the callback rendered; otherwise the output
    // buffer keeps the last frame. Throws ControlError for an unknown control
    // or a value it refuses.
    std::optional<Frame> set_control(std::string_view name, double value);
    std::optional<Frame> set_control(int number, double value);
    // Presses a push button (or calls any control's callback) the same way.
    std::optional<Frame> press_control(std::string_view name);
    std::optional<Frame> press_control(int number);

    // --- settings and records ----------------------------------------------
    const Settings &settings() const { return settings_; }
    // Everything but the processor count may change between frames.
    Settings &settings() { return settings_; }
    std::vector<Message> messages() const;
    void clear_messages();
    const HostEvents &events() const { return events_; }

    void make_current();
    static Host *current();

    // --- served to the spark* functions --------------------------------------
    void report(Message::Kind kind, const std::string &text);
    int confirm(const std::string &text);
    int memory_buffer(int id, SparkMemBufStruct *record);
    void graph_setup(SparkGraphInfoStruct *graph) const;
    int fetch_frame(int clip, int frame, void *buffer);
    int fork(SparkMpWorker worker, void *a0, void *a1, void *a2, void *a3);
    void note_cursor_busy() { ++events_.cursor_busy; }
    void note_viewing_draw() { ++events_.viewing_draws; }
    void note_cursor(int shape) { events_.cursor_shapes.push_back(shape); }
    std::string working_dir() const;
    void browse(const char *directory, const char *extension, SparkFileBrowserCallback callback);

private:
    template <class Function>
    Function entry(const char *name) const;
    void require_loaded(const char *what) const;
    void apply_proxy();
    std::optional<Frame> user_change(Control &control, const double *value);
    void fill_input(int clip, int frame);
    void prepare_output();
    bool fill_deferred(int id);
    bool process_prepared(int frame, std::chrono::steady_clock::time_point started);

    Settings settings_;
    ThreadPool pool_;
    void *handle_ = nullptr;
    std::string path_;
    // Entry points looked up once: dlsym waits while another thread loads a
    // library (the image I/O module loads during the first frames).
    mutable std::mutex symbols_mutex_;
    mutable std::unordered_map<std::string, void *> symbols_;
    std::array<std::shared_ptr<ClipSource>, kClipCount> inputs_;
    std::array<Frame, kClipCount> input_buffers_;
    // What the plug-in is shown of each input: its buffer above, or a picture
    // the clip holds (ClipSource::held), kept alive here with its clip.
    std::array<const Frame *, kClipCount> shown_{};
    std::array<std::shared_ptr<ClipSource>, kClipCount> shown_owner_;
    // The source whose picture each input buffer holds, null when unknown.
    std::array<const ClipSource *, kClipCount> filled_from_{};
    std::array<int, kClipCount> filled_number_{};  // the frame each buffer holds
    std::array<FrameFormat, kClipCount> filled_format_{};  // and its format
    Frame output_;
    // During a control callback the buffers are filled only when the plug-in
    // asks for them: most callbacks never do, and a 1080p picture drawn or
    // copied for nothing costs more than the callback.
    struct Deferred {
        bool active = false;
        int frame = 1;
        unsigned clips = 0;  // input clips still to fill
        bool output = false;  // output still to clear
        Frame shown;          // the output before it was cleared
        bool cleared = false;
        std::optional<Error> failure;
    };
    Deferred deferred_;
    bool started_ = false;
    int current_frame_ = 1;
    ControlTable controls_;
    // The plug-in's resolution list, which Settings::proxy selects: the
    // first list control, in number order, whose entries are the resolution
    // names from "FULL" on. Null when it has none: nothing to select then.
    SparkPupStruct *resolution_list_ = nullptr;
    std::string last_failure_;
    FrameTimes frame_times_;
    mutable std::mutex messages_mutex_;
    std::vector<Message> messages_;
    HostEvents events_;
};

}  // namespace sparkhost
