// Start-up as users feel it: whole fizzle-render runs timed from outside at
// 1920x1080, "Basic" with pre-roll on 2 processors. An argument error; the
// first frame of a shot, written as TIFF; frame 1000 alone from a cache
// written every 25 frames (filled once before timing), written as EXR. Each
// case is run several times; the medians are the figures to read. cpu_s is
// the program's own user+system time, which a loaded machine inflates less
// than the wall time.
#include <benchmark/benchmark.h>

#include <stdlib.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace fs = std::filesystem;

namespace {

const std::string kShot = " --preset Basic --preroll --size 1920x1080 --processors 2 -q";

double children_cpu_seconds() {
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

class Scratch {
public:
    Scratch() {
        std::string pattern = (fs::temp_directory_path() / "fizzle-startup-XXXXXX").string();
        if (mkdtemp(pattern.data())) path_ = pattern;
    }
    ~Scratch() {
        std::error_code ignored;
        if (!path_.empty()) fs::remove_all(path_, ignored);
    }
    const std::string &path() const { return path_; }

private:
    std::string path_;
};

// expect_exit: the status the run must end with.
void time_runs(benchmark::State &state, const std::string &command, int expect_exit) {
    double cpu = 0;
    for (auto _ : state) {
        const double before = children_cpu_seconds();
        const int status = std::system((command + " > /dev/null 2>&1").c_str());
        cpu += children_cpu_seconds() - before;
        if (!WIFEXITED(status) || WEXITSTATUS(status) != expect_exit) state.SkipWithError(("failed: " + command).c_str());
    }
    state.counters["cpu_s"] = benchmark::Counter(cpu, benchmark::Counter::kAvgIterations);
}

void BM_ArgumentError(benchmark::State &state) { time_runs(state, std::string(FIZZLE_RENDER_PATH) + " --bogus", 2); }

void BM_FirstFrame1080Tiff(benchmark::State &state) {
    Scratch dir;
    time_runs(state, std::string(FIZZLE_RENDER_PATH) + kShot + " --frames 1 -o " + dir.path() + "/f.%04d.tif", 0);
}

void BM_Frame1000FromCache1080Exr(benchmark::State &state) {
    static Scratch cache;  // filled once for every repetition
    static bool filled = std::system((std::string(FIZZLE_RENDER_PATH) + kShot + " --simulate-only --cache " +
                                      cache.path() + " --frames 1-1000 > /dev/null 2>&1")
                                         .c_str()) == 0;
    if (!filled) {
        state.SkipWithError("cannot fill the cache");
        return;
    }
    Scratch dir;
    time_runs(state,
              std::string(FIZZLE_RENDER_PATH) + kShot + " --cache " + cache.path() + " --frames 1000 -o " +
                  dir.path() + "/f.%04d.exr",
              0);
}

}  // namespace

BENCHMARK(BM_ArgumentError)->Iterations(1)->Repetitions(7)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FirstFrame1080Tiff)->Iterations(1)->Repetitions(7)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Frame1000FromCache1080Exr)->Iterations(1)->Repetitions(7)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
