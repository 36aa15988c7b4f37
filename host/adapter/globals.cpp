// Module-level state of the host adapter.
#include "host/adapter/globals.h"

#include "host/effect_seam.h"

int32_t deep12 = 0;
int32_t no_buffers = 0;
int32_t DL_Sync_Ctrl = 1;
int32_t DLwidth = 0;
int32_t DLheight = 0;
int32_t DLscalesr = 0;
int32_t DLnumProc = 0;

int32_t ResultIDOutput = 1;
int32_t SourceIDInput = 2;
int32_t SourceIDInput2 = 3;
int32_t SourceIDInput3 = 4;
int32_t SourceIDInput4 = 5;
SparkMemBufStruct ResultBufOutput{};
SparkMemBufStruct SourceBufInput{};
SparkMemBufStruct SourceBufInput2{};
SparkMemBufStruct SourceBufInput3{};
SparkMemBufStruct SourceBufInput4{};

bool host_frames_deep() { return deep12 != 0; }
