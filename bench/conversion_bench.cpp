// The host conversions of one frame cycle (four inputs in, the output image
// made and written back) at 1920x1080, beside a memcpy of the same host
// bytes (five frames). Target: full-resolution conversions within 3x the memcpy.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "host/adapter/conversion.h"
#include "host/adapter/globals.h"

namespace {

constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kInputs = 4;

template <class Word>
std::vector<Word> random_frame() {
    std::mt19937 generator(1);
    std::vector<Word> words(size_t(kWidth) * kHeight * 3);
    for (Word &w : words) w = Word(generator());
    return words;
}

template <class Word, class In, class Out>
void frame_cycle_conversions(benchmark::State &state, In convert_in, Out convert_out) {
    const int divisor = int(state.range(0));
    DLnumProc = int32_t(state.range(1));  // the frame cycle forks over the host's processors
    std::vector<std::vector<Word>> inputs(kInputs, random_frame<Word>());
    std::vector<Word> output(inputs[0].size());
    for (auto _ : state) {
        ImageQv *images[kInputs];
        for (int i = 0; i < kInputs; ++i)
            images[i] = convert_in(inputs[i].data(), kWidth, kHeight, 1.0, divisor, nullptr, 1);
        ImageQv *result = convert_in(output.data(), kWidth, kHeight, 1.0, divisor, nullptr, 0);
        for (ImageQv *image : images) delete image;
        convert_out(result, output.data(), kWidth, kHeight, divisor);
        delete result;
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * (kInputs + 1) * int64_t(output.size()) *
                            int64_t(sizeof(Word)));
}

// The yardstick: copying the host bytes that the conversions read and write.
template <class Word>
void memcpy_same_bytes(benchmark::State &state) {
    const size_t bytes = size_t(kWidth) * kHeight * 3 * sizeof(Word);
    std::vector<std::vector<uint8_t>> sources(kInputs + 1, std::vector<uint8_t>(bytes, 1));
    std::vector<std::vector<uint8_t>> targets(kInputs + 1, std::vector<uint8_t>(bytes, 0));
    for (auto _ : state) {
        for (int i = 0; i <= kInputs; ++i) std::memcpy(targets[i].data(), sources[i].data(), bytes);
        benchmark::DoNotOptimize(targets.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * (kInputs + 1) * int64_t(bytes));
}

void BM_FrameCycleConversions8(benchmark::State &state) {
    frame_cycle_conversions<uint8_t>(state, ConvertFromDLImage8, ConvertToDLImage8);
}
void BM_FrameCycleConversions12(benchmark::State &state) {
    frame_cycle_conversions<uint16_t>(state, ConvertFromDLImage12, ConvertToDLImage12);
}
void BM_MemcpySameBytes8(benchmark::State &state) { memcpy_same_bytes<uint8_t>(state); }
void BM_MemcpySameBytes12(benchmark::State &state) { memcpy_same_bytes<uint16_t>(state); }

}  // namespace

BENCHMARK(BM_MemcpySameBytes8)->UseRealTime()->Unit(benchmark::kMillisecond);
// Arguments: proxy divisor, processors.
BENCHMARK(BM_FrameCycleConversions8)
    ->Args({1, 1})->Args({1, 2})->Args({2, 2})->Args({4, 2})
    ->ArgNames({"divisor", "processors"})->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MemcpySameBytes12)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FrameCycleConversions12)
    ->Args({1, 1})->Args({1, 2})->Args({2, 2})->Args({4, 2})
    ->ArgNames({"divisor", "processors"})->UseRealTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
