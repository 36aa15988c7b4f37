// Starting a shot anywhere at 1920x1080, "Basic" after its pre-roll on 2
// processors: a frame simulated without drawing against a rendered one,
// frame 1000 on its own with and without a checkpoint every 25 frames, and
// the size of a checkpoint (the "state_bytes" counter).
#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "sparkhost/controls/curves.h"
#include "sparkhost/core/host.h"

using namespace sparkhost;

namespace {

constexpr int kLastFrame = 1000, kCacheEvery = 25;

// A host on the plug-in with the built-in inputs, as fizzle-render uses it,
// "Basic" chosen and the pre-roll pressed; its start-up banner kept out of
// the results table.
std::unique_ptr<Host> basic_with_preroll() {
    setenv("FIZZLE_NO_PAUSE", "1", 1);
    clear_curves();
    Settings settings;
    settings.format = {1920, 1080, Depth::Bits8};
    settings.processors = 2;
    settings.message_sink = [](const Message &) {};
    settings.private_copy = false;
    auto host = std::make_unique<Host>(settings);
    host->load(FIZZLE_PLUGIN_PATH);
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO), null = open("/dev/null", O_WRONLY);
    if (null >= 0) dup2(null, STDOUT_FILENO);
    host->initialise(1);
    std::fflush(stdout);
    if (saved >= 0) dup2(saved, STDOUT_FILENO), close(saved);
    if (null >= 0) close(null);
    host->set_control("Auto Preview", 0);
    host->set_control("Demos", 0);
    host->press_control("Restart+PreRoll");
    return host;
}

// Argument: 1 simulates, 0 renders; frames after the pre-roll's first.
void BM_Step1080(benchmark::State &state) {
    const bool simulate = state.range(0) == 1;
    auto host = basic_with_preroll();
    int frame = 1;
    host->process(frame++);  // runs the pre-roll
    for (auto _ : state) {
        if (simulate)
            host->simulate(frame++);
        else if (!host->process(frame++))
            state.SkipWithError(host->last_failure().c_str());
    }
    state.SetLabel(simulate ? "simulated" : "rendered");
}

// Argument: 1 starts from the checkpoint after frame 975, made beforehand
// as a --cache every 25 frames would have; 0 simulates frames 1-999.
void BM_Frame1000Alone(benchmark::State &state) {
    const bool cached = state.range(0) == 1;
    std::vector<uint8_t> checkpoint;
    const int restored = (kLastFrame - 1) / kCacheEvery * kCacheEvery;
    if (cached) {
        auto filler = basic_with_preroll();
        for (int frame = 1; frame <= restored; ++frame) filler->simulate(frame);
        checkpoint = filler->export_state();
    }
    for (auto _ : state) {
        auto host = basic_with_preroll();
        int next = 1;
        if (cached) {
            host->import_state(checkpoint);
            next = restored + 1;
        }
        for (int frame = next; frame < kLastFrame; ++frame) host->simulate(frame);
        if (!host->process(kLastFrame)) state.SkipWithError(host->last_failure().c_str());
        if (cached) state.counters["state_bytes"] = double(checkpoint.size());
    }
    state.SetLabel(cached ? "from a checkpoint every 25" : "no cache");
}

}  // namespace

BENCHMARK(BM_Step1080)->Arg(0)->Arg(1)->Iterations(40)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Frame1000Alone)->Arg(0)->Arg(1)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
