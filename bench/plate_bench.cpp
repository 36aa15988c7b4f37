// Float plates and the bubbles layer end to end: 1920x1080, Basic with
// pre-roll, 2 processors, 48 frames (FIZZLE_BENCH_FRAMES), beside today's
// integer path to EXR at the same depth: 12 bits, which float plates are
// rendered at, and 8. fps is frames a second of the whole run; peak_MB the
// largest resident size of the fizzle-render process. Each case runs once in
// a fresh child, so the peak belongs to that case alone.
//
// At 8 bits the integer frame has at most 256 levels a channel, which EXR's
// PIZ compresses almost for nothing; the float output carries the plate's
// own values, whose compression is most of the difference there.
#include <benchmark/benchmark.h>

#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

int frame_count() {
    const char *frames = std::getenv("FIZZLE_BENCH_FRAMES");
    return frames && std::atoi(frames) > 0 ? std::atoi(frames) : 48;
}

struct Measured {
    bool ok = false;
    double peak_mb = 0;
    double cpu_seconds = 0;
};

// Runs a shell command in a child and measures it.
Measured run_measured(const std::string &command) {
    Measured measured;
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    int status = 0;
    struct rusage usage {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return measured;
    measured.ok = true;
    measured.peak_mb = double(usage.ru_maxrss) / 1024.0;
    measured.cpu_seconds = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    return measured;
}

void BM_Plates1080(benchmark::State &state, bool float_plate, int depth) {
    std::string pattern = (fs::temp_directory_path() / "fizzle-plates-bench-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        state.SkipWithError("cannot make a temporary directory");
        return;
    }
    const int frames = frame_count();
    std::string arguments = " --preset Basic --preroll --size 1920x1080 --processors 2 --depth " +
                            std::to_string(depth) + " -q --frames 1-" + std::to_string(frames) + " -o " + pattern +
                            "/f.%04d.exr";
    if (float_plate) {
        // Values from -0.05 to 16, as a scene-linear plate holds them.
        const std::string make_plate = "oiiotool --pattern fill:topleft=-0.05,0,0.18:topright=16,1,2:"
                                       "bottomleft=0.5,0.5,0.5:bottomright=2,8,16 1920x1080 3 -d half -o " +
                                       pattern + "/plate.exr > /dev/null 2>&1";
        if (std::system(make_plate.c_str()) != 0) {
            state.SkipWithError("oiiotool could not make the plate");
            return;
        }
        arguments += " --scene " + pattern + "/plate.exr --layer " + pattern + "/layer.%04d.exr";
    }
    const std::string command = std::string(FIZZLE_RENDER_PATH) + arguments + " > /dev/null 2>&1";
    Measured measured;
    for (auto _ : state) {
        measured = run_measured(command);
        if (!measured.ok) state.SkipWithError(("failed: " + command).c_str());
    }
    state.counters["fps"] = benchmark::Counter(double(frames), benchmark::Counter::kIsRate);
    state.counters["cpu_ms_frame"] = 1000.0 * measured.cpu_seconds / frames;
    state.counters["peak_MB"] = measured.peak_mb;
    std::error_code ignored;
    fs::remove_all(pattern, ignored);
}

}  // namespace

BENCHMARK_CAPTURE(BM_Plates1080, integer_to_exr_12bit, false, 12)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Plates1080, float_plate_with_layer_12bit, true, 12)
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_Plates1080, integer_to_exr_8bit, false, 8)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Plates1080, float_plate_with_layer_8bit, true, 8)
    ->Iterations(1)
    ->Unit(benchmark::kSecond)
    ->UseRealTime();

BENCHMARK_MAIN();
