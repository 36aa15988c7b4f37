// Dense shots end to end: fizzle-render at 1920x1080, "Basic" with pre-roll
// and Density 5000 or 500, 6 frames to TIFF, beside the naive reference: the
// same command on one processor with every pixel shaded alone through
// std::pow (FIZZLE_PLAIN_SHADING=1), as the renderer first did. Each run
// reports the CPU seconds of the program (user + system, from the child's
// resource usage) and its wall seconds; the fast runs also report how many
// times less CPU and wall time they take than the reference run just before
// them. Set FIZZLE_BENCH_FRAMES for another frame count.
#include <benchmark/benchmark.h>

#include <stdlib.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

namespace fs = std::filesystem;

namespace {

int frame_count() {
    const char *frames = std::getenv("FIZZLE_BENCH_FRAMES");
    return frames && std::atoi(frames) > 0 ? std::atoi(frames) : 6;
}

double seconds(const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; }

double children_cpu() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

struct Figures {
    double cpu = 0, wall = 0;
};
std::map<int, Figures> reference;  // by density

// Arguments: density, and 1 for the naive reference.
void BM_Dense1080(benchmark::State &state) {
    const int density = int(state.range(0));
    const bool naive = state.range(1) == 1;
    std::string folder = (fs::temp_directory_path() / "fizzle-dense-XXXXXX").string();
    if (!mkdtemp(folder.data())) {
        state.SkipWithError("cannot make a temporary directory");
        return;
    }
    const std::string command = std::string(naive ? "FIZZLE_PLAIN_SHADING=1 " : "") + FIZZLE_RENDER_PATH +
                                " --preset Basic --preroll --size 1920x1080 --set Density=" +
                                std::to_string(density) + " --processors " + (naive ? "1" : "2") +
                                " -q --frames 1-" + std::to_string(frame_count()) + " -o " + folder +
                                "/f.%04d.tif > /dev/null";
    Figures figures;
    for (auto _ : state) {
        const double cpu = children_cpu();
        const auto start = std::chrono::steady_clock::now();
        if (std::system(command.c_str()) != 0) state.SkipWithError(("failed: " + command).c_str());
        figures.wall += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        figures.cpu += children_cpu() - cpu;
    }
    figures.cpu /= double(state.iterations());
    figures.wall /= double(state.iterations());
    state.counters["cpu_s"] = figures.cpu;
    state.counters["wall_s"] = figures.wall;
    if (naive) {
        reference[density] = figures;
    } else if (reference.count(density)) {
        state.counters["cpu_x"] = reference[density].cpu / figures.cpu;
        state.counters["wall_x"] = reference[density].wall / figures.wall;
    }
    state.SetLabel(naive ? "naive reference, 1 processor" : "2 processors");
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

}  // namespace

BENCHMARK(BM_Dense1080)
    ->Args({5000, 1})
    ->Args({5000, 0})
    ->Args({500, 1})
    ->Args({500, 0})
    ->ArgNames({"density", "naive"})
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kSecond);

BENCHMARK_MAIN();
