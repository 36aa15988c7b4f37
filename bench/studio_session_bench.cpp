// fizzle-studio's server-side work per user action at 1280x720 on "Basic"
// (the page's share is measured by studio_bench.mjs): a slider change at
// frame 90, shown as frame 90 of a render with it (the bubbles run again from
// frame 1 under the new value), the next frame of playback, and one drag
// sample of a handle at frame 90, which shows its frame the same way.
#include <benchmark/benchmark.h>

#include <filesystem>

#include "apps/fizzle-studio/session.h"

namespace {

Session &basic_session() {
    static Session *session = [] {
        RenderOptions options;
        options.format = {1280, 720, sparkhost::Depth::Bits8};
        options.preset = "Basic";
        options.processors = 2;
        options.plugin = FIZZLE_PLUGIN_PATH;
        return new Session(options, std::filesystem::current_path().string(), 1, 1000000);
    }();
    return *session;
}

void BM_StudioSliderChangeToPicture(benchmark::State &state) {
    Session &session = basic_session();
    session.go_to(90);
    int step = 0;
    for (auto _ : state) {
        session.set_value(102, std::to_string(40 + (step++ % 20) * 5));  // "Light Inten"
        benchmark::DoNotOptimize(session.picture().rgb->data());
    }
}
BENCHMARK(BM_StudioSliderChangeToPicture)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StudioPlaybackFrame(benchmark::State &state) {
    Session &session = basic_session();
    int frame = session.state(0)["frame"].get<int>();
    for (auto _ : state) {
        session.go_to(++frame);
        benchmark::DoNotOptimize(session.picture().rgb->data());
    }
}
BENCHMARK(BM_StudioPlaybackFrame)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StudioHandleDragSample(benchmark::State &state) {
    Session &session = basic_session();
    session.go_to(90);
    // The plug-in hit-tests its handles where it last drew them.
    session.overlay(1.0f);
    // Press on the emitter's middle handle, then drag it up and down.
    session.pen(640, 11.5f, 0.0f, 1.0f);
    session.pen(640, 11.5f, 0.5f, 1.0f);
    int step = 0;
    for (auto _ : state) benchmark::DoNotOptimize(session.pen(640, 20.0f + float(step++ % 40), 0.5f, 1.0f));
    session.pen(640, 20.0f, 0.0f, 1.0f);
}
BENCHMARK(BM_StudioHandleDragSample)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
