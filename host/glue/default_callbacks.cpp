// The re-render rule: a change is shown at once only with "Auto Preview" on.
#include "host/glue/default_callbacks.h"

#include "host/glue/control_table.h"

unsigned long *DefaultCB(int reason, SparkInfoStruct info) {
    if (SparkBoolean34.Value && reason == SPARK_REASON_USER) return SparkProcess(info);
    sparkViewingDraw();
    return nullptr;
}

unsigned long *OverlayCB(int, SparkInfoStruct) {
    sparkViewingDraw();
    return nullptr;
}
