// The re-render rule that ends every control callback.
#pragma once

#include "spark/spark.h"

// Re-renders when "Auto Preview" is on and the user made the change (reason
// 1); otherwise only asks the host to redraw the viewer and returns null.
unsigned long *DefaultCB(int reason, SparkInfoStruct info);
// Redraws the viewer; returns null.
unsigned long *OverlayCB(int reason, SparkInfoStruct info);
