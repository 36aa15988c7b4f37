// Costs our host adds around each frame: the processor fork, the built-in
// scene and writing a frame to disk; and reading long setups and curves,
// whose cost must grow with their length, not its square.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "spark/spark.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/host.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/files/image_io.h"
#include "sparkhost/files/setup_file.h"

using namespace sparkhost;

namespace {
void empty_worker(void *, void *, void *, void *) {}
}  // namespace

static void BM_ProcessorFork(benchmark::State &state) {
    Settings settings;
    settings.processors = int(state.range(0));
    Host host(settings);
    host.make_current();
    for (auto _ : state) sparkMpFork(empty_worker, 4, nullptr, nullptr, nullptr, nullptr);
}
BENCHMARK(BM_ProcessorFork)->Arg(1)->Arg(2)->Arg(16);

static void BM_DefaultScene1080(benchmark::State &state) {
    FrameFormat format{1920, 1080, state.range(0) == 12 ? Depth::Bits12 : Depth::Bits8};
    int frame = 1;
    for (auto _ : state) benchmark::DoNotOptimize(default_frame(kScene, frame++, format));
}
BENCHMARK(BM_DefaultScene1080)->Arg(8)->Arg(12)->Unit(benchmark::kMillisecond);

// The built-in still pictures, drawn once when a render starts.
static void BM_DefaultStills1080(benchmark::State &state) {
    const FrameFormat format{1920, 1080, state.range(0) == 12 ? Depth::Bits12 : Depth::Bits8};
    for (auto _ : state)
        for (int clip : {kBirth, kBurst, kReflection}) benchmark::DoNotOptimize(default_frame(clip, 1, format));
}
BENCHMARK(BM_DefaultStills1080)->Arg(8)->Arg(12)->Unit(benchmark::kMillisecond);

static void BM_WriteFrame1080(benchmark::State &state, const char *extension) {
    Frame frame = default_frame(kScene, 1, FrameFormat{1920, 1080, Depth::Bits8});
    std::string path = (std::filesystem::temp_directory_path() / "sparkhost_bench.").string() + extension;
    for (auto _ : state) write_image(path, frame);
    std::filesystem::remove(path);
}
BENCHMARK_CAPTURE(BM_WriteFrame1080, png, "png")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriteFrame1080, exr, "exr")->Unit(benchmark::kMillisecond);

// A curve imported key by key, as "Import Amplitude File" sets it.
static void BM_CurveKeys(benchmark::State &state) {
    for (auto _ : state) {
        for (int key = 0; key < state.range(0); ++key) set_curve_key(93, float(key), 0.5f);
        state.PauseTiming();
        clear_curves();
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_CurveKeys)->RangeMultiplier(4)->Range(1 << 12, 1 << 18)->Complexity()->Unit(benchmark::kMillisecond);

// A setup of n control objects, read and checked up to the first repeated
// control it lists: the file is parsed whole first.
static void BM_SetupOfManyObjects(benchmark::State &state) {
    const std::string path = (std::filesystem::temp_directory_path() / "sparkhost_bench_setup.json").string();
    {
        std::ofstream out(path);
        out << R"({"format": "sparkhost-setup", "version": 1, "controls": [)";
        for (int i = 0; i < state.range(0); ++i) out << (i ? "," : "") << R"({"number": 16, "value": 33})";
        out << "]}";
    }
    ControlTable controls;
    for (auto _ : state) {
        try {
            load_setup(path, controls);
        } catch (const SetupError &) {
        }
    }
    std::filesystem::remove(path);
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SetupOfManyObjects)->RangeMultiplier(4)->Range(1 << 12, 1 << 16)->Complexity()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
