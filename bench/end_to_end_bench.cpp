// The main job end to end: one whole fizzle-render run per output format
// (TIFF, EXR, PNG) at 1920x1080, Basic with pre-roll, 48 frames on 2
// processors, beside the plug-in's frame cycle alone over the same frames,
// each in frames per second. outside_pct is the share of each run's render
// loop spent outside the plug-in's frame cycle, as --timings reports it.
// Each case runs once (set FIZZLE_BENCH_FRAMES for a longer or shorter
// sequence).
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "sparkhost/controls/curves.h"
#include "sparkhost/clips/default_clips.h"
#include "sparkhost/core/host.h"

namespace fs = std::filesystem;
using namespace sparkhost;

namespace {

int frame_count() {
    const char *frames = std::getenv("FIZZLE_BENCH_FRAMES");
    return frames && std::atoi(frames) > 0 ? std::atoi(frames) : 48;
}

const char *const kRenderArguments = " --preset Basic --preroll --size 1920x1080 --processors 2 -q";

void BM_Render1080(benchmark::State &state, const std::string &extension) {
    std::string pattern = (fs::temp_directory_path() / "fizzle-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        state.SkipWithError("cannot make a temporary directory");
        return;
    }
    const int frames = frame_count();
    const std::string timings = pattern + "/timings.txt";
    const std::string command = std::string(FIZZLE_RENDER_PATH) + kRenderArguments + " --timings --frames 1-" +
                                std::to_string(frames) + " -o " + pattern + "/f.%04d." + extension +
                                " > /dev/null 2> " + timings;
    for (auto _ : state)
        if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
    state.counters["fps"] = benchmark::Counter(double(frames), benchmark::Counter::kIsRate);
    // The render loop's share outside the plug-in's frame cycle, as the run reported it.
    std::ifstream report(timings);
    const std::string line((std::istreambuf_iterator<char>(report)), std::istreambuf_iterator<char>());
    const std::size_t at = line.find("outside it ");
    const std::size_t open = at == std::string::npos ? at : line.find('(', at);
    if (open != std::string::npos) state.counters["outside_pct"] = std::atof(line.c_str() + open + 1);
    std::error_code ignored;
    fs::remove_all(pattern, ignored);
}

// The frames the render above makes, through the host over still pictures,
// nothing drawn, read or written: the run's cost with free input and output.
void BM_FrameCycleOnly1080(benchmark::State &state) {
    setenv("FIZZLE_NO_PAUSE", "1", 1);
    clear_curves();
    Settings settings;
    settings.format = {1920, 1080, Depth::Bits8};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    settings.private_copy = false;
    Host host(settings);
    // Still pictures: the host copies them each frame, nothing is drawn or read.
    for (int clip = 0; clip < kClipCount; ++clip) host.set_input(clip, default_frame(clip, 1, settings.format));
    host.load(FIZZLE_PLUGIN_PATH);
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO), null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    host.initialise(1);
    host.set_control("Auto Preview", 0);
    host.set_control("Demos", 0);
    host.press_control("Restart+PreRoll");
    std::fflush(stdout);
    if (saved >= 0) dup2(saved, STDOUT_FILENO);
    if (null >= 0) close(null);
    if (saved >= 0) close(saved);
    const int frames = frame_count();
    for (auto _ : state)
        for (int frame = 1; frame <= frames; ++frame)
            if (!host.run_frame(frame)) state.SkipWithError(host.last_failure().c_str());
    state.counters["fps"] = benchmark::Counter(double(frames), benchmark::Counter::kIsRate);
    clear_curves();
}

}  // namespace

int main(int argc, char **argv) {
    for (const char *extension : {"tif", "exr", "png"})
        benchmark::RegisterBenchmark((std::string("BM_Render1080/") + extension).c_str(), BM_Render1080,
                                     std::string(extension))
            ->Iterations(1)
            ->UseRealTime()
            ->Unit(benchmark::kSecond);
    benchmark::RegisterBenchmark("BM_FrameCycleOnly1080/Basic", BM_FrameCycleOnly1080)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kSecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
