// The host control table as data: the exported control structures, their
// callbacks, and a listing of every control with its kind, title, default
// and range, all generated from bubbles/controls.def.
#pragma once

#include <cstddef>

#include "spark/spark.h"

enum class HostControlKind { String, Push, Int, Float, Boolean, Pup, Color };

struct HostControl {
    int number;
    HostControlKind kind;
    const char *title;     // title format; a list's first entry; null for a colour
    double default_value;  // a list's entry from 0, a colour's packed word; 0 when none
    double minimum;        // a list's first and last entry; 0 when none
    double maximum;
    void *structure;       // the exported structure
};

// Every control, in number order.
struct HostControlList {
    const HostControl *first;
    std::size_t count;
    const HostControl *begin() const { return first; }
    const HostControl *end() const { return first + count; }
};
HostControlList host_controls();
// Null for an empty slot.
const HostControl *find_host_control(int number);

// The page of a control number (0..3), or -1 below the first page.
int host_control_page(int number);
// The block every page repeats: "Clear Overlay", "Help", "Reset", the
// resolution list and "Auto Preview".
bool is_page_common_control(int number);

// Writes the control's default from the table into its structure; nothing
// for push buttons and strings.
void write_host_default(const HostControl &control);

// The exported structures, named by kind and number.
extern "C" {
#define SPARK_STRING_CONTROL(n, title, flags, value) extern SPARK_EXPORT SparkStringStruct SparkString##n;
#define SPARK_PUSH_CONTROL(n, title, callback) extern SPARK_EXPORT SparkPushStruct SparkPush##n;
#define SPARK_INT_CONTROL(n, title, value, min, max, step, flags, callback) \
    extern SPARK_EXPORT SparkIntStruct SparkInt##n;
#define SPARK_FLOAT_CONTROL(n, title, value, min, max, step, flags, callback) \
    extern SPARK_EXPORT SparkFloatStruct SparkFloat##n;
#define SPARK_BOOLEAN_CONTROL(n, title, value, callback) extern SPARK_EXPORT SparkBooleanStruct SparkBoolean##n;
#define SPARK_PUP_CONTROL(n, value, callback, ...) extern SPARK_EXPORT SparkPupStruct SparkPup##n;
#define SPARK_COLOR_CONTROL(n, value, callback) extern SPARK_EXPORT SparkColorStruct SparkColor##n;
#include "host/glue/spark_controls.def"
}

// The callbacks the structures name (a name may serve several controls).
#define SPARK_STRING_CONTROL(n, title, flags, value)
#define SPARK_PUSH_CONTROL(n, title, callback) unsigned long *callback(int reason, SparkInfoStruct info);
#define SPARK_INT_CONTROL(n, title, value, min, max, step, flags, callback) \
    unsigned long *callback(int reason, SparkInfoStruct info);
#define SPARK_FLOAT_CONTROL(n, title, value, min, max, step, flags, callback) \
    unsigned long *callback(int reason, SparkInfoStruct info);
#define SPARK_BOOLEAN_CONTROL(n, title, value, callback) unsigned long *callback(int reason, SparkInfoStruct info);
#define SPARK_PUP_CONTROL(n, value, callback, ...) unsigned long *callback(int reason, SparkInfoStruct info);
#define SPARK_COLOR_CONTROL(n, value, callback) unsigned long *callback(int reason, SparkInfoStruct info);
#include "host/glue/spark_controls.def"
