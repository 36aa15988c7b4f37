// fizzle-studio's command line: the host settings fizzle-render takes, plus
// where to listen and where the page's files are.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "render/options.h"

struct StudioOptions {
    RenderOptions render;  // size, depth, aspect, processors, inputs, setup, preset, frames
    int port = 8600;
    std::string listen = "127.0.0.1";
    std::string web;   // the page's files
    std::string help;  // the help pages
};

void add_studio_options(CLI::App &app, StudioOptions &options);
// Throws sparkhost::Error naming the option.
void resolve_studio_options(StudioOptions &options);
