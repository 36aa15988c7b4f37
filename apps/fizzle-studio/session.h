// One plug-in instance driven as an interactive host would drive it, for
// every page connected to the studio. Plug-in calls are serialised; the
// state the pages poll is kept apart so that polling never waits for a render.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "render/options.h"
#include "sparkhost/core/host.h"
#include "sparkhost/viewer/viewer.h"
#include "disk_states.h"
#include "history.h"
#include "sparkhost/core/state_cache.h"

class FloatView;

// A request the page made that cannot be carried out; the message is for the user.
class RequestError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The frame the viewer shows, as RGB bytes with the top row first. Shared
// and never changed once made, so that sending it copies nothing.
struct Picture {
    uint64_t version = 0;
    int width = 0;
    int height = 0;
    std::shared_ptr<const std::vector<uint8_t>> rgb = std::make_shared<const std::vector<uint8_t>>();
};

class Session {
public:
    // Loads the plug-in, applies the setup and preset of options and renders
    // the first frame of first..last. Throws sparkhost::Error.
    Session(const RenderOptions &options, const std::string &working_dir, int first, int last);
    ~Session();

    // --- calls into the plug-in (serialised) ---------------------------------
    nlohmann::json controls();
    // The value as a user would type it (see parse_control_value) or a string
    // control's text. An animated control also gets a key at the current frame.
    // After this and every other change the frame shown is made again as
    // fizzle-render makes it with the settings now in force.
    // step: the value starts a step of its own for undo (false: it goes on
    // the step of the value before, as a slider's drag does).
    nlohmann::json set_value(int number, const std::string &text, bool step = true);
    nlohmann::json press(int number);
    nlohmann::json pen(float x, float y, float pressure, float zoom);
    nlohmann::json overlay(float zoom);
    // Forwards: the bubbles go on from the frame shown; backwards: they
    // restart from the first frame. Either way they start instead from the
    // nearest state kept for these settings (or on disk, with --cache)
    // when that is closer, and
    // frames on the way are only simulated, so frame N shows what a render
    // of frames first..N would.
    nlohmann::json go_to(int frame);
    nlohmann::json set_range(int first, int last);
    nlohmann::json set_key(int number);
    // The settings before the last step (after the last undone one) put
    // back through the plug-in; a RequestError when there is none.
    nlohmann::json undo();
    nlohmann::json redo();
    nlohmann::json clear_keys(int number);
    // Removes the key at the frame shown only.
    nlohmann::json remove_key(int number);
    nlohmann::json channel_editor();
    void load_setup(const std::string &path);
    void save_setup(const std::string &path);
    // Without a file: presses "Import Amplitude File", the user cancels the
    // browser, and the answer says what the plug-in asked to browse for.
    nlohmann::json import_amplitude(const std::optional<std::string> &path);
    // The fizzle-render arguments that render what the viewer shows, with the
    // setup saved as setup_path (named setup_name on the command line), and
    // the bubbles layer when one is asked for (empty: none).
    std::vector<std::string> render_arguments(const std::string &setup_path, const std::string &setup_name,
                                              const std::string &output, int first, int last,
                                              const std::string &layer = "", const std::string &layer_type = "");

    // A float scene is shown through a display and view of the colour
    // config; the choices are in state()'s "display". A RequestError
    // when there is no float scene or the pair is unknown.
    nlohmann::json choose_display(const std::string &display, const std::string &view);

    // --- no plug-in call ---------------------------------------------------------
    nlohmann::json state(uint64_t messages_after);
    Picture picture();
    // One of the last few pictures shown, for sending the next as changes from it.
    std::optional<Picture> picture_at(uint64_t version);
    bool answer_confirm(uint64_t id, bool yes);
    // Refuses further plug-in calls and answers an open question "no", so
    // that requests under way end soon.
    void stop_requests();
    // stop_requests(), then lets the plug-in go.
    void shutdown();

private:
    struct LoggedMessage {
        uint64_t id;
        sparkhost::Message::Kind kind;
        std::string text;
    };

    std::unique_lock<std::mutex> plugin_lock();
    void log_message(const sparkhost::Message &message);
    bool ask(const std::string &text);
    void show(const sparkhost::Frame &frame);
    void show_rgb(std::vector<uint8_t> rgb, int width, int height);
    void changed();
    void process_to(int frame);
    void restart_bubbles();
    // Shows `frame` as a render from the shot's first frame would; returns
    // the first frame run to get there.
    int move_to(int frame);
    // Frame N again after a change: the frame-cycle render a callback made
    // (Auto Preview) advanced the bubbles, so it is never what is shown.
    nlohmann::json show_again();
    // The kept states that belong to the settings now in force: those of
    // earlier settings are shelved, so that an undo finds its states again.
    void match_states();
    std::string run_key();
    // Before a change the user makes: the settings it starts from, for undo.
    void step();
    nlohmann::json go_back(bool undo);
    // Anything the bubbles depend on changed: kept states no longer hold,
    // and the live one is no longer that of a render from the first frame.
    void settings_changed();
    void keep_state(int frame, int first, int last);
    sparkhost::Control &control(int number);

    RenderOptions options_;
    std::unique_ptr<sparkhost::Host> host_;
    std::unique_ptr<sparkhost::Viewer> viewer_;
    std::unique_ptr<FloatView> float_view_;  // with a float scene only
    std::mutex plugin_mutex_;
    bool preroll_ = false;  // the bubbles were last restarted with a pre-roll
    bool uninitialised_ = false;
    sparkhost::StateCache states_;
    std::string states_key_;     // the run states_ belongs to
    bool states_stale_ = false;  // settings changed since states_key_ was made
    std::deque<std::pair<std::string, sparkhost::StateCache>> shelved_;  // newest first
    History history_;
    ShotSettings defaults_;  // as the plug-in starts, before any preset or setup
    bool pen_down_ = false;
    std::unique_ptr<DiskStates> disk_;
    bool clean_ = false;  // the live state is that of an uninterrupted run from first_

    std::mutex state_mutex_;
    std::condition_variable answered_;
    uint64_t version_ = 1;
    int frame_ = 1, first_ = 1, last_ = 100;
    int cursor_ = 0;
    std::string busy_;
    int busy_done_ = 0, busy_total_ = 0;
    Picture picture_;
    std::deque<Picture> recent_;
    nlohmann::json display_;  // the float scene's display choices; null without one
    std::deque<LoggedMessage> messages_;
    uint64_t message_count_ = 0;
    size_t undoable_ = 0, redoable_ = 0;
    std::optional<std::pair<uint64_t, std::string>> question_;
    uint64_t questions_ = 0;
    std::optional<std::pair<uint64_t, bool>> answer_;
    bool stopping_ = false;
};
