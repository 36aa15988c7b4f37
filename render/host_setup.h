// Turning fizzle-render's options into the host's inputs and, once the
// plug-in is running, its control values.
#pragma once

#include "render/options.h"
#include "sparkhost/controls/controls.h"
#include "sparkhost/core/host.h"

// Gives the host the input files named on the command line.
void attach_inputs(sparkhost::Host &host, const RenderOptions &options);

// The loaded plug-in's controls, also the table the host's setup and curve
// functions work on.
sparkhost::ControlTable &plugin_controls(sparkhost::Host &host);

// Applies options that act on the plug-in's controls (setup, preset, sets,
// animations, pre-roll); runs after SparkInitialise, before the first frame.
// Throws sparkhost::Error naming the first problem.
void configure_plugin(sparkhost::Host &host, const RenderOptions &options);

// The plug-in to load: --plugin, else fizzle.spark next to this program.
std::string plugin_path(const RenderOptions &options);
