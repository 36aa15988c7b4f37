// The frei0r entry points: a filter that runs the Fizzle plug-in through our
// host, as fizzle-render does, over the host's pictures.
//
// Our host library answers the plug-in's spark* calls for one current host
// at a time, so instances take turns: one lock around everything that runs
// the plug-in. Each frame is still spread over every processor by the
// plug-in's own workers, and each instance has its own copy of the plug-in
// (it keeps the effect in globals).
#include <dlfcn.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

// Debian's header declares the entry points without C linkage.
extern "C" {
#include <frei0r.h>
}

#include "effect_session.h"
#include "frame_clock.h"
#include "parameters.h"
#include "pixels.h"
#include "sparkhost/core/error.h"

namespace {

std::mutex &engine_mutex() {
    static std::mutex mutex;
    return mutex;
}

struct Library {
    bool ready = false;
    std::string plugin_path;
    ParameterTable table;
};

Library &library() {
    static Library instance;
    return instance;
}

// The plug-in resolves its spark* calls in the global scope, where a host's
// dlopen (RTLD_LOCAL) did not put our host library: promote it.
bool publish_host_library(std::string &problem) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void *>(&sparkhost::clip_name), &info) || !info.dli_fname) {
        problem = "cannot find the host library";
        return false;
    }
    if (!dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL)) {
        const char *why = dlerror();
        problem = std::string("cannot share the host library: ") + (why ? why : "unknown error");
        return false;
    }
    return true;
}

// FIZZLE_SPARK_PLUGIN, else the Spark plug-in beside this file: one folder up
// in the build tree, under dl/spark in an installed tree.
std::string find_plugin() {
    if (const char *given = std::getenv("FIZZLE_SPARK_PLUGIN"); given && *given) return given;
    namespace fs = std::filesystem;
    Dl_info info{};
    if (!dladdr(reinterpret_cast<void *>(&find_plugin), &info) || !info.dli_fname) return {};
    const fs::path folder = fs::absolute(fs::path(info.dli_fname)).parent_path();
    for (const fs::path &candidate : {folder / "fizzle.spark", folder.parent_path() / "fizzle.spark",
                                      folder.parent_path().parent_path() / "dl" / "spark" / "fizzle.spark"}) {
        std::error_code error;
        if (fs::is_regular_file(candidate, error)) return candidate.lexically_normal().string();
    }
    return {};
}

// The parameter table comes from the plug-in's controls as it loads:
// their values then are the defaults.
bool start_library(std::string &problem) {
    Library &lib = library();
    if (lib.ready) return true;
    if (!publish_host_library(problem)) return false;
    lib.plugin_path = find_plugin();
    if (lib.plugin_path.empty()) {
        problem = "cannot find fizzle.spark beside this filter (set FIZZLE_SPARK_PLUGIN to its path)";
        return false;
    }
    // Kept loaded: the table's texts are read from it once, and hosts may
    // ask for the parameters again after f0r_deinit.
    void *handle = dlopen(lib.plugin_path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char *why = dlerror();
        problem = "cannot load '" + lib.plugin_path + "': " + (why ? why : "unknown error");
        return false;
    }
    try {
        sparkhost::ControlTable controls = sparkhost::ControlTable::discover(handle);
        lib.table = ParameterTable(controls);
    } catch (const std::exception &error) {
        problem = "'" + lib.plugin_path + "': " + error.what();
        return false;
    }
    lib.ready = true;
    return true;
}

bool environment_flag(const char *name) {
    const char *value = std::getenv(name);
    return value && *value && std::strcmp(value, "0") != 0;
}

// FIZZLE_FREI0R_LOG: a line a call (time, frame, milliseconds), to see what a
// host passes. FIZZLE_FREI0R_TIMINGS: a summary as each instance ends.
bool logging_frames() {
    static const bool on = environment_flag("FIZZLE_FREI0R_LOG");
    return on;
}

bool summing_times() {
    static const bool on = environment_flag("FIZZLE_FREI0R_TIMINGS");
    return on;
}

using Clock = std::chrono::steady_clock;

// Option names in fizzle-render's messages mean nothing to a host's user.
std::string without_dashes(std::string text) {
    if (text.rfind("--", 0) == 0) text.erase(0, 2);
    return text;
}

struct Instance {
    int width = 0;
    int height = 0;
    std::vector<ParameterValue> values;
    std::unique_ptr<EffectSession> session;
    std::string key;  // what the session, or the failure, was made from
    bool failed = false;
    std::optional<FrameClock> clock;
    ClockSettings clock_settings;
    long updates = 0;
    long rendered = 0;
    double seconds = 0;  // in f0r_update, frames that rendered
    double slowest = 0;

    ~Instance() {
        if (!summing_times() || rendered == 0) return;
        std::fprintf(stderr,
                     "fizzle: timings: %ld frames of %dx%d in %.3f s, %.1f ms a frame, slowest %.1f ms; %ld frames "
                     "simulated without a picture\n",
                     rendered, width, height, seconds, 1000.0 * seconds / double(rendered), 1000.0 * slowest,
                     session ? session->simulated_frames() : 0L);
    }
};

void pass_through(const Instance &instance, const uint32_t *in, uint32_t *out) {
    if (in != out) std::memcpy(out, in, size_t(instance.width) * size_t(instance.height) * 4);
}

// Once a set-up fails, its frames pass through, with one line for them all.
void give_up(Instance &instance, const std::string &key, const std::string &why, const uint32_t *in, uint32_t *out) {
    std::fprintf(stderr, "fizzle: %s; the picture passes through unchanged\n", why.c_str());
    instance.session.reset();
    instance.failed = true;
    instance.key = key;
    pass_through(instance, in, out);
}

void update(Instance &instance, double time, const uint32_t *in, uint32_t *out) {
    const Library &lib = library();
    const ParameterTable &table = lib.table;
    std::string key;
    try {
        RenderOptions options = render_options(table, instance.values, instance.width, instance.height);
        key = options_key(options);
        for (size_t i = 0; i < table.parameters().size(); ++i) {
            const ParameterRole role = table.parameters()[i].role;
            if (role == ParameterRole::FrameRate || role == ParameterRole::TimeUnit)
                key += "\n" + instance.values[i].text;
        }
        if (key != instance.key) {
            instance.session.reset();
            instance.failed = false;
            instance.key = key;
        }
        if (instance.failed) return pass_through(instance, in, out);
        if (!lib.ready) throw sparkhost::Error("the filter could not start (see the message at start-up)");
        const ClockSettings clock = clock_settings(table, instance.values);
        if (!instance.clock || !(clock == instance.clock_settings)) {
            instance.clock.emplace(clock.rate, clock.unit);
            instance.clock_settings = clock;
        }
        const Clock::time_point started = Clock::now();
        const int frame = instance.clock->frame_at(time);
        if (!instance.session) {
            // The plug-in greets on standard output as it starts, where a host
            // may be writing the video (ffmpeg ... -f rawvideo -): the greeting
            // goes nowhere. Its messages come through the host as usual.
            static FILE *const nowhere = std::fopen("/dev/null", "w");
            FILE *saved = stdout;
            if (nowhere) stdout = nowhere;
            try {
                instance.session = std::make_unique<EffectSession>(options, lib.plugin_path);
            } catch (...) {
                stdout = saved;
                throw;
            }
            stdout = saved;
        }
        rgba_to_frame(in, instance.session->scene());
        const sparkhost::Frame &picture = instance.session->render(frame);
        frame_to_rgba(picture, in, out);
        const double seconds = std::chrono::duration<double>(Clock::now() - started).count();
        ++instance.updates;
        ++instance.rendered;
        instance.seconds += seconds;
        if (seconds > instance.slowest) instance.slowest = seconds;
        if (logging_frames())
            std::fprintf(stderr, "fizzle: instance %p call %ld time %.17g frame %d %.1f ms\n",
                         static_cast<void *>(&instance), instance.updates, time, frame, 1000.0 * seconds);
    } catch (const std::exception &error) {
        give_up(instance, key, without_dashes(error.what()), in, out);
    } catch (...) {
        give_up(instance, key, "unexpected failure", in, out);
    }
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int f0r_init() {
    std::lock_guard<std::mutex> lock(engine_mutex());
    std::string problem;
    if (start_library(problem)) return 1;
    std::fprintf(stderr, "fizzle: %s\n", problem.c_str());
    return 0;
}

__attribute__((visibility("default"))) void f0r_deinit() {}

__attribute__((visibility("default"))) void f0r_get_plugin_info(f0r_plugin_info_t *info) {
    info->name = "fizzle";
    info->author = "Fizzle";
    info->plugin_type = F0R_PLUGIN_TYPE_FILTER;
    info->color_model = F0R_COLOR_MODEL_RGBA8888;
    info->frei0r_version = FREI0R_MAJOR_VERSION;
    info->major_version = 5;
    info->minor_version = 0;
    info->num_params = library().ready ? library().table.size() : 0;
    info->explanation = "Fizzle bubbles over the clip, frame for frame as fizzle-render renders them";
}

__attribute__((visibility("default"))) void f0r_get_param_info(f0r_param_info_t *info, int index) {
    const ParameterTable &table = library().table;
    if (index < 0 || index >= table.size()) return;
    const Parameter &parameter = table.parameters()[size_t(index)];
    info->name = parameter.name.c_str();
    info->type = int(parameter.type);
    info->explanation = parameter.explanation.c_str();
}

// Cheap: the plug-in starts with the first frame, so a host may make
// instances only to read their defaults.
__attribute__((visibility("default"))) f0r_instance_t f0r_construct(unsigned int width, unsigned int height) {
    try {
        auto instance = std::make_unique<Instance>();
        instance->width = int(width);
        instance->height = int(height);
        instance->values = library().table.defaults();
        return instance.release();
    } catch (...) {
        return nullptr;
    }
}

__attribute__((visibility("default"))) void f0r_destruct(f0r_instance_t handle) {
    std::lock_guard<std::mutex> lock(engine_mutex());
    delete static_cast<Instance *>(handle);
}

__attribute__((visibility("default"))) void f0r_set_param_value(f0r_instance_t handle, f0r_param_t param,
                                                                int index) {
    auto *instance = static_cast<Instance *>(handle);
    const ParameterTable &table = library().table;
    if (!instance || !param || index < 0 || index >= table.size()) return;
    std::lock_guard<std::mutex> lock(engine_mutex());
    ParameterValue &value = instance->values[size_t(index)];
    switch (table.parameters()[size_t(index)].type) {
    case ParameterType::Bool:
    case ParameterType::Double: value.number = *static_cast<const double *>(param); break;
    case ParameterType::Colour: {
        const auto *colour = static_cast<const f0r_param_color_t *>(param);
        value.colour = {colour->r, colour->g, colour->b};
        break;
    }
    case ParameterType::String: {
        const char *text = *static_cast<char *const *>(param);
        // A host cannot take an exception: a text that cannot be stored is dropped.
        try {
            value.text = text ? text : "";
        } catch (...) {
        }
        break;
    }
    }
}

__attribute__((visibility("default"))) void f0r_get_param_value(f0r_instance_t handle, f0r_param_t param,
                                                                int index) {
    auto *instance = static_cast<Instance *>(handle);
    const ParameterTable &table = library().table;
    if (!instance || !param || index < 0 || index >= table.size()) return;
    std::lock_guard<std::mutex> lock(engine_mutex());
    const ParameterValue &value = instance->values[size_t(index)];
    switch (table.parameters()[size_t(index)].type) {
    case ParameterType::Bool:
    case ParameterType::Double: *static_cast<double *>(param) = value.number; break;
    case ParameterType::Colour:
        *static_cast<f0r_param_color_t *>(param) = {value.colour.r, value.colour.g, value.colour.b};
        break;
    case ParameterType::String: *static_cast<const char **>(param) = value.text.c_str(); break;
    }
}

__attribute__((visibility("default"))) void f0r_update(f0r_instance_t handle, double time, const uint32_t *inframe,
                                                       uint32_t *outframe) {
    auto *instance = static_cast<Instance *>(handle);
    if (!instance || !inframe || !outframe) return;
    std::lock_guard<std::mutex> lock(engine_mutex());
    update(*instance, time, inframe, outframe);
}

}  // extern "C"
