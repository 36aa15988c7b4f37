// fizzle-studio: the plug-in's interactive side as a local web application.
#include <pthread.h>
#include <signal.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <thread>

#include <CLI/CLI.hpp>

#include "server.h"
#include "session.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/memory_policy.h"
#include "studio_options.h"

namespace {

std::string beside_program(const char *name) {
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? name : (self.parent_path() / name).string();
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app;
    app.name("fizzle-studio");
    app.set_version_flag("--version", "fizzle-studio " FIZZLE_VERSION);
    StudioOptions options;
    add_studio_options(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) return app.exit(error);  // --help
        std::fprintf(stderr, "fizzle-studio: %s (see --help)\n", error.what());
        return 2;
    }
    try {
        resolve_studio_options(options);
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "fizzle-studio: %s\n", error.what());
        return 2;
    }

    // Stop requests are taken by one thread, whatever thread the kernel picks.
    sigset_t stops;
    sigemptyset(&stops);
    for (int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&stops, signal);
    pthread_sigmask(SIG_BLOCK, &stops, nullptr);
    signal(SIGPIPE, SIG_IGN);
    sparkhost::keep_freed_memory();

    try {
        std::error_code error;
        const std::string working_dir = std::filesystem::current_path(error).string();
        Session session(options.render, working_dir, options.render.first_frame, options.render.last_frame);
        ServerPaths paths{options.web, options.help, working_dir, beside_program("fizzle-render")};
        StudioServer server(session, paths, make_token());
        std::string problem;
        const int port = server.bind(options.listen, options.port, problem);
        if (port < 0) throw sparkhost::Error(problem);
        std::printf("Fizzle Studio: http://%s:%d/?token=%s\n", options.listen.c_str(), port, server.token().c_str());
        std::fflush(stdout);

        std::thread stopper([&server, &session, stops] {
            int signal = 0;
            sigwait(&stops, &signal);
            // Requests waiting on the plug-in or on a question end first, so
            // that the server's workers can be joined.
            session.stop_requests();
            server.stop();
        });
        server.serve();
        session.shutdown();
        // The stopper is still waiting when serve() ended by itself.
        pthread_kill(stopper.native_handle(), SIGTERM);
        stopper.join();
        std::fprintf(stderr, "fizzle-studio: stopped\n");
        return 0;
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "fizzle-studio: %s\n", error.what());
        return 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fizzle-studio: unexpected failure: %s\n", error.what());
        return 1;
    }
}
