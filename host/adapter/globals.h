// Module-level state of the host adapter, shared by the entry points, the
// conversions and the framework's multiprocessing.
#pragma once

#include <cstdint>

#include "spark/spark.h"

extern int32_t deep12;        // host buffers hold 12-bit data in 16-bit words
extern int32_t no_buffers;    // start-up buffer check failed; frames are refused
extern int32_t DL_Sync_Ctrl;  // first frame after start-up runs SyncControls
extern int32_t DLwidth;       // full-resolution frame width of the current frame
extern int32_t DLheight;
extern int32_t DLscalesr;     // proxy divisor, 1 at full resolution
extern int32_t DLnumProc;     // processors reported by the host

extern int32_t ResultIDOutput;
extern int32_t SourceIDInput, SourceIDInput2, SourceIDInput3, SourceIDInput4;
extern SparkMemBufStruct ResultBufOutput;
extern SparkMemBufStruct SourceBufInput, SourceBufInput2, SourceBufInput3, SourceBufInput4;
