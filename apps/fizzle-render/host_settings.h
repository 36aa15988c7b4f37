// fizzle-render's host settings: its options, and the plug-in's messages
// printed around the progress bar.
#pragma once

#include "render/options.h"
#include "progress.h"
#include "sparkhost/core/host.h"

sparkhost::Settings host_settings(const RenderOptions &options, Progress &progress);
