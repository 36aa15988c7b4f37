// Start-up console banner and the check that the host has enough image
// buffers for the plug-in to run.
#pragma once

#include "spark/spark.h"

// Prints the banner and the mode line, asks the host for its free buffers
// and compares them with the count needed in the current mode (deep12).
// Sets no_buffers, and tells the user (console, host message, 5 s pause)
// when there are too few.
void PrintBannerAndCheckBuffers(const SparkInfoStruct &info, const char *product, int needed_8bit,
                                int needed_12bit, const char *host_version, int tag_selector);
