// fizzle-render: renders the Fizzle plug-in from the command line.
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "render/options.h"
#include "render.h"
#include "stop_request.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/memory_policy.h"

int main(int argc, char **argv) {
    CLI::App app;
    app.name("fizzle-render");
    app.set_version_flag("--version", "fizzle-render " FIZZLE_VERSION);
    RenderOptions options;
    add_render_options(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) return app.exit(error);  // --help
        std::fprintf(stderr, "fizzle-render: %s (see --help)\n", error.what());
        return 2;
    }
    try {
        resolve_options(options);
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "fizzle-render: %s\n", error.what());
        return 2;
    }
    install_stop_handlers("fizzle-render");
    sparkhost::keep_freed_memory();
    try {
        return render(options);
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "fizzle-render: %s\n", error.what());
        return 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fizzle-render: unexpected failure: %s\n", error.what());
        return 1;
    }
}
