// The parameter callback behind every dlcb_ function of the control table.
#pragma once

#include "spark/spark.h"

// The callback of parameter control number: Sync its framework control,
// run the effect's reaction, then DefaultCB when the control asks for it.
unsigned long *parameter_callback(int number, int reason, SparkInfoStruct info);
