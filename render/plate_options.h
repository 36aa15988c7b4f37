// fizzle-render's options for scene-linear plates: the bubbles layer and
// the colour spaces.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "sparkhost/colour/plate_io.h"
#include "sparkhost/core/host.h"

struct RenderOptions;

struct PlateOptions {
    std::string layer;              // pattern of the bubbles layer; empty: none
    std::string layer_type_text;    // half, float or uint16; empty: half in EXR, uint16 elsewhere
    sparkhost::SampleType layer_type = sparkhost::SampleType::Half;
    std::string colour_config;      // empty: $OCIO, else OpenImageIO's built-in spaces
    std::string scene_space;        // empty: from the file (EXR and float files scene-linear)
    std::string working_space = "sRGB";  // the encoding the effect works in
    bool working_space_given = false;

    // Whether any colour option was given (the config is then checked even
    // when no file needs converting).
    bool colour_asked() const { return !colour_config.empty() || !scene_space.empty() || working_space_given; }
};

void add_plate_options(CLI::App &app, RenderOptions &options);
// --colour-config, --scene-space and --working-space alone (fizzle-studio
// takes these but writes no layer of its own).
void add_colour_options(CLI::App &app, PlateOptions &plates);
// Whether a file pattern may hold float samples (only those are probed, so
// an 8-bit PNG scene costs no look at the plate library).
bool may_hold_float(const std::string &pattern);
// The colour space of a float file: --scene-space, else the file's own
// claim, else the config's scene-linear role. Throws sparkhost::Error.
std::string plate_space(const sparkhost::ColourConfig &config, const PlateOptions &plates, const std::string &pattern,
                        const sparkhost::PlateInfo &info);
// Gives the effect a float reflection clip converted to the working
// encoding, as it reads every clip; false (and nothing changed) when the
// reflection is not a float file. Throws sparkhost::Error.
bool use_float_reflection(sparkhost::Host &host, const RenderOptions &options, const sparkhost::ColourConfig &config);
// What can be checked without reading a file; throws sparkhost::Error
// naming the option.
void check_plate_options(RenderOptions &options);
