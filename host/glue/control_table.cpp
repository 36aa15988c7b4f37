// The exported control structures and the table listing them, both made
// from bubbles/controls.def so that each title and default lives once.
#include "host/glue/control_table.h"

#include "host/glue/amplitude_import.h"
#include "host/glue/help.h"

namespace {

template <class... Entries>
constexpr int entry_count(Entries...) {
    return int(sizeof...(Entries));
}

template <class... Entries>
constexpr const char *first_entry(const char *first, Entries...) {
    return first;
}

}  // namespace

// ---------------------------------------------------------------------------
// The structures the host reads and writes.

extern "C" {
#define SPARK_STRING_CONTROL(n, title, flags, value) \
    SPARK_EXPORT SparkStringStruct SparkString##n = {value, title, flags, nullptr};
#define SPARK_PUSH_CONTROL(n, title, callback) SPARK_EXPORT SparkPushStruct SparkPush##n = {title, callback};
#define SPARK_INT_CONTROL(n, title, value, min, max, step, flags, callback) \
    SPARK_EXPORT SparkIntStruct SparkInt##n = {value, min, max, step, flags, title, callback};
#define SPARK_FLOAT_CONTROL(n, title, value, min, max, step, flags, callback) \
    SPARK_EXPORT SparkFloatStruct SparkFloat##n = {float(value), float(min), float(max), float(step), flags, title, callback};
#define SPARK_BOOLEAN_CONTROL(n, title, value, callback) \
    SPARK_EXPORT SparkBooleanStruct SparkBoolean##n = {uint8_t(value), title, callback};
#define SPARK_PUP_CONTROL(n, value, callback, ...) \
    SPARK_EXPORT SparkPupStruct SparkPup##n = {value, entry_count(__VA_ARGS__), callback, {__VA_ARGS__}};
#define SPARK_COLOR_CONTROL(n, value, callback) SPARK_EXPORT SparkColorStruct SparkColor##n = {value, callback};
#include "host/glue/spark_controls.def"
}

// ---------------------------------------------------------------------------
// The listing.

namespace {

const HostControl kHostControls[] = {
#define SPARK_STRING_CONTROL(n, title, flags, value) {n, HostControlKind::String, title, 0, 0, 0, &SparkString##n},
#define SPARK_PUSH_CONTROL(n, title, callback) {n, HostControlKind::Push, title, 0, 0, 0, &SparkPush##n},
#define SPARK_INT_CONTROL(n, title, value, min, max, step, flags, callback) \
    {n, HostControlKind::Int, title, value, min, max, &SparkInt##n},
#define SPARK_FLOAT_CONTROL(n, title, value, min, max, step, flags, callback) \
    {n, HostControlKind::Float, title, value, min, max, &SparkFloat##n},
#define SPARK_BOOLEAN_CONTROL(n, title, value, callback) \
    {n, HostControlKind::Boolean, title, value, 0, 1, &SparkBoolean##n},
#define SPARK_PUP_CONTROL(n, value, callback, ...) \
    {n, HostControlKind::Pup, first_entry(__VA_ARGS__), value, 0, entry_count(__VA_ARGS__) - 1.0, &SparkPup##n},
#define SPARK_COLOR_CONTROL(n, value, callback) \
    {n, HostControlKind::Color, nullptr, double(value), 0, double(0xFFFFFFFFu), &SparkColor##n},
#include "host/glue/spark_controls.def"
};

}  // namespace

HostControlList host_controls() {
    return {kHostControls, sizeof kHostControls / sizeof kHostControls[0]};
}

const HostControl *find_host_control(int number) {
    for (const HostControl &control : host_controls())
        if (control.number == number) return &control;
    return nullptr;
}

int host_control_page(int number) {
    if (number < SPARK_FIRST_PAGE_CONTROL) return -1;
    return (number - SPARK_FIRST_PAGE_CONTROL) / SPARK_CONTROLS_PER_PAGE;
}

bool is_page_common_control(int number) {
    if (number < SPARK_FIRST_PAGE_CONTROL) return false;
    const int place = (number - SPARK_FIRST_PAGE_CONTROL) % SPARK_CONTROLS_PER_PAGE;
    // Places of "Clear Overlay", "Help", "Reset", the resolution list and "Auto Preview".
    return place == 22 || place == 25 || place == 26 || place == 27 || place == 28;
}

void write_host_default(const HostControl &control) {
    switch (control.kind) {
    case HostControlKind::Int:
        static_cast<SparkIntStruct *>(control.structure)->Value = int32_t(control.default_value);
        break;
    case HostControlKind::Float:
        static_cast<SparkFloatStruct *>(control.structure)->Value = float(control.default_value);
        break;
    case HostControlKind::Boolean:
        static_cast<SparkBooleanStruct *>(control.structure)->Value = uint8_t(control.default_value);
        break;
    case HostControlKind::Pup:
        static_cast<SparkPupStruct *>(control.structure)->Value = int32_t(control.default_value);
        break;
    case HostControlKind::Color:
        static_cast<SparkColorStruct *>(control.structure)->Value = uint32_t(control.default_value);
        break;
    case HostControlKind::String:
    case HostControlKind::Push:
        break;
    }
}
