// The whole frame cycle through our host at 1920x1080 (buffers filled,
// SparkProcess, conversions, the effect): every demo preset just after its
// pre-roll, and a frame with no bubbles at all, which costs the host's
// copies and the conversions alone. Each case times the same 20 frames
// after the pre-roll, so that every run sees the same particles (set
// FIZZLE_BENCH_FRAMES to time more, e.g. under a profiler).
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bubbles/presets.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/host.h"

using namespace sparkhost;

namespace {

constexpr int kTimedFrames = 20;

// Starts the plug-in with its start-up banner kept out of the results table.
void initialise_quietly(Host &host) {
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    const int null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    host.initialise(1);
    std::fflush(stdout);
    if (saved >= 0) dup2(saved, STDOUT_FILENO);
    if (null >= 0) close(null);
    if (saved >= 0) close(saved);
}

// Argument 0: the preset's list value, or 0 for no bubbles; argument 1: processors.
void BM_FrameCycle1080(benchmark::State &state) {
    const int preset = int(state.range(0));
    setenv("FIZZLE_NO_PAUSE", "1", 1);
    clear_curves();
    Settings settings;
    settings.format = {1920, 1080, Depth::Bits8};
    settings.processors = int(state.range(1));
    settings.message_sink = [](const Message &) {};
    // One host at a time, so the plug-in file itself can be loaded (and
    // profilers find its symbols); it is unloaded again between cases.
    settings.private_copy = false;
    Host host(settings);
    // Still pictures: the host copies them each frame, but does not draw them anew.
    for (int clip = 0; clip < kClipCount; ++clip) host.set_input(clip, default_frame(clip, 1, settings.format));
    host.load(FIZZLE_PLUGIN_PATH);
    initialise_quietly(host);
    host.set_control("Auto Preview", 0);
    if (preset > 0) {
        host.set_control("Demos", preset - 1);
        host.press_control("Restart+PreRoll");
        state.SetLabel(demo_preset_for_list_value(preset).name);
    } else {
        host.set_control("Density", 0);
        state.SetLabel("no bubbles");
    }
    int frame = 1;
    if (!host.run_frame(frame++)) state.SkipWithError(host.last_failure().c_str());  // runs the pre-roll
    // The frame is left in the host's buffer, as fizzle-render takes it;
    // copying it out each frame would time a copy no render makes.
    for (auto _ : state) {
        if (!host.run_frame(frame++)) state.SkipWithError(host.last_failure().c_str());
    }
    state.counters["fps"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
    clear_curves();
}

void presets_and_processors(benchmark::internal::Benchmark *bench) {
    for (int processors : {1, 2})
        for (int preset = 0; preset <= kDemoPresetCount; ++preset) bench->Args({preset, processors});
}

}  // namespace

int main(int argc, char **argv) {
    const char *frames = std::getenv("FIZZLE_BENCH_FRAMES");
    const int timed = frames && std::atoi(frames) > 0 ? std::atoi(frames) : kTimedFrames;
    benchmark::RegisterBenchmark("BM_FrameCycle1080", BM_FrameCycle1080)
        ->Apply(presets_and_processors)
        ->ArgNames({"preset", "processors"})
        ->Iterations(timed)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
