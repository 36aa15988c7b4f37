// libFuzzer entry point: feeds arbitrary bytes to the setup-file loader.
// A refused file must leave every control and curve as it was; an accepted
// one must leave every value in range and survive a save and reload.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "fuzz_controls.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/files/setup_file.h"

namespace {

struct State {
    std::vector<double> values;
    std::vector<std::string> texts;
    std::map<int, sparkhost::Curve> curves;
    bool operator==(const State &other) const {
        return values == other.values && texts == other.texts && curves == other.curves;
    }
};

State state_of(sparkhost::ControlTable &table) {
    State state;
    for (const sparkhost::Control &control : table.controls()) {
        state.values.push_back(control.value());
        state.texts.push_back(control.kind() == sparkhost::ControlKind::String ? control.text() : "");
    }
    state.curves = sparkhost::all_curves();
    return state;
}

const std::string &scratch(const char *name) {
    static std::map<std::string, std::string> paths;
    std::string &path = paths[name];
    if (path.empty()) path = "/tmp/setup_fuzz_" + std::to_string(getpid()) + "_" + name;
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    sparkhost::ControlTable &table = fuzz_controls();
    const std::string &input = scratch("input.json");
    {
        FILE *file = std::fopen(input.c_str(), "wb");
        if (!file) __builtin_trap();
        if (size) std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    const State before = state_of(table);
    try {
        sparkhost::load_setup(input, table);
    } catch (const sparkhost::SetupError &) {
        if (!(state_of(table) == before)) __builtin_trap();  // half applied
        return 0;
    }
    for (const sparkhost::Control &control : table.controls())
        if (control.has_value() && !control.check_value(control.value()).empty()) __builtin_trap();
    const State loaded = state_of(table);
    const std::string &saved = scratch("saved.json");
    sparkhost::save_setup(saved, table);
    sparkhost::load_setup(saved, table);
    if (!(state_of(table) == loaded)) __builtin_trap();  // the saved file says something else
    return 0;
}
