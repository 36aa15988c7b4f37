// libFuzzer entry point: feeds arbitrary bytes to the amplitude file reader.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "host/glue/amplitude_import.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::vector<char> bytes(data, data + size);
    FILE *file = size ? fmemopen(bytes.data(), size, "r") : nullptr;
    int keys = 0;
    AmplitudeReadResult result = read_amplitude_keys(file, [&keys](int, int, float value) {
        if (!(value == value)) __builtin_trap();  // only numbers reach the curve
        ++keys;
    });
    if (file) std::fclose(file);
    // Keys are handed on only after a good header, never more than announced.
    if (keys != result.keys_read) __builtin_trap();
    if (!result.header_ok && keys != 0) __builtin_trap();
    if (keys > 0 && keys > result.size) __builtin_trap();
    return 0;
}
