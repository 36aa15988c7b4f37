// fizzle-farm's three commands: submit, status and wait.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

struct SubmitOptions {
    std::string frames = "1";
    int chunk = 50;
    std::string output;
    std::string job_dir;    // default: fizzle-farm beside the output
    std::string cache;      // default: cache inside the job folder
    int cache_every = 25;
    std::string manager = "slurm";
    std::string partition;
    std::string render;     // default: fizzle-render beside this program
};

void add_submit_options(CLI::App &command, SubmitOptions &options);

// Each returns the exit code; problems throw sparkhost::Error.
int run_submit(const SubmitOptions &options, const std::vector<std::string> &render_options);
int run_status(const std::string &job);
int run_wait(const std::string &job, double timeout_seconds);
