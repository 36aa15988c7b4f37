// Host control records for tests, filled the way the host's table fills them.
#pragma once

#include "spark/spark.h"

inline SparkFloatStruct float_record(float value, float min = -300.0f, float max = 300.0f,
                                     const char *title = "F: %.2f") {
    SparkFloatStruct record{};
    record.Value = value;
    record.Min = min;
    record.Max = max;
    record.Increment = 1.0f;
    record.Title = title;
    return record;
}
