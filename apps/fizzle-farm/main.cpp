// fizzle-farm: renders a shot on a render farm in chunks, from a simulation
// cache one job fills first, so every chunk gives the bytes one run would.
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "farm_commands.h"
#include "sparkhost/core/error.h"

int main(int argc, char **argv) {
    CLI::App app{"Renders a Fizzle shot on a farm: one job fills the simulation cache, then a job "
                 "array renders the chunks from it. Options it does not know go to fizzle-render."};
    app.name("fizzle-farm");
    app.set_version_flag("--version", "fizzle-farm " FIZZLE_VERSION);
    app.require_subcommand(1);
    SubmitOptions submit;
    CLI::App *submit_command = app.add_subcommand("submit", "Submit a shot: fizzle-farm submit --frames 1-1000 "
                                                            "--chunk 50 [fizzle-render options] -o out/f.%04d.exr");
    add_submit_options(*submit_command, submit);
    std::string job;
    double timeout = 0;
    CLI::App *status_command = app.add_subcommand("status", "Show each chunk of a submitted shot");
    status_command->add_option("job", job, "The job folder (or its job.json) that submit printed")->required();
    CLI::App *wait_command = app.add_subcommand("wait", "Wait until every chunk has finished; exit 0 when "
                                                        "every frame was written");
    wait_command->add_option("job", job, "The job folder (or its job.json) that submit printed")->required();
    wait_command->add_option("--timeout", timeout, "Give up after this many seconds (default: never)")
        ->check(CLI::NonNegativeNumber);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) return app.exit(error);
        std::fprintf(stderr, "fizzle-farm: %s (see --help)\n", error.what());
        return 2;
    }
    try {
        if (*submit_command) return run_submit(submit, submit_command->remaining());
        if (*status_command) return run_status(job);
        return run_wait(job, timeout);
    } catch (const sparkhost::Error &error) {
        std::fprintf(stderr, "fizzle-farm: %s\n", error.what());
        return 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "fizzle-farm: unexpected failure: %s\n", error.what());
        return 1;
    }
}
