// Costs our host adds around each frame: the processor fork, the built-in
// scene and writing a frame to disk.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>

#include "spark/spark.h"
#include "sparkhost/default_clips.h"
#include "sparkhost/host.h"
#include "sparkhost/image_io.h"

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

static void BM_WriteFrame1080(benchmark::State &state, const char *extension) {
    Frame frame = default_frame(kScene, 1, FrameFormat{1920, 1080, Depth::Bits8});
    std::string path = (std::filesystem::temp_directory_path() / "sparkhost_bench.").string() + extension;
    for (auto _ : state) write_image(path, frame);
    std::filesystem::remove(path);
}
BENCHMARK_CAPTURE(BM_WriteFrame1080, png, "png")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_WriteFrame1080, exr, "exr")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
