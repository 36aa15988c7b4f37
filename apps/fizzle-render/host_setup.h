// Turning fizzle-render's options into host settings, inputs and, once the
// plug-in is running, its control values.
#pragma once

#include "options.h"
#include "progress.h"
#include "sparkhost/host.h"

sparkhost::Settings host_settings(const RenderOptions &options, Progress &progress);

// Gives the host the input files named on the command line.
void attach_inputs(sparkhost::Host &host, const RenderOptions &options);

// Applies options that act on the plug-in's controls; runs after
// SparkInitialise, before the first frame.
void configure_plugin(sparkhost::Host &host, const RenderOptions &options);

// The plug-in to load: --plugin, else fizzle.spark next to this program.
std::string plugin_path(const RenderOptions &options);
