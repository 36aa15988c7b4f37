/* An optional extension of the Spark interface: stepping a simulation
 * without drawing, and saving and restoring the effect's state, so that a
 * host can render any frame of a shot on its own. A host looks each entry
 * point up with dlsym; a plug-in that lacks them is simply rendered frame by
 * frame from the shot's first frame. Nothing here changes the Spark entry
 * points or their order. */
#ifndef SPARK_SPARK_STATE_H
#define SPARK_SPARK_STATE_H

#include "spark/spark.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Input clips SparkSimulate reads with the controls in force now, one bit per
 * clip (bit 0 the first clip). The host sets the frame's control values,
 * asks, and need only fill those buffers before calling SparkSimulate. */
unsigned int SparkSimulateClips(void);

/* Advances the effect by one frame exactly as SparkProcess with the same
 * record, controls and inputs would, but draws nothing and leaves the output
 * buffer alone (it is asked for only for its size). Returns 1, or 0 where
 * SparkProcess would have returned null. */
int SparkSimulate(SparkInfoStruct info);

/* Writes the effect's whole state (what the next frame depends on besides
 * controls and inputs) into buffer when capacity is large enough, and
 * returns its size in bytes either way; 0 when there is no state to give. */
size_t SparkStateExport(void *buffer, size_t capacity);

/* Replaces the effect's state by one SparkStateExport gave. Returns 1, or 0
 * when the data is not a state this plug-in can take; the effect is then
 * left as it was. */
int SparkStateImport(const void *data, size_t size);

#ifdef __cplusplus
}
#endif

#endif /* SPARK_SPARK_STATE_H */
