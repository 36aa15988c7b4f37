// The exported Spark entry points (placeholder until the frame cycle lands).
#include "spark/spark.h"

extern "C" {
SPARK_EXPORT int SparkClips(void) { return 4; }
}
