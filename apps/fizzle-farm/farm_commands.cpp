// submit plans the chunks and hands them to the manager; status and wait
// combine what the manager says with the frames actually written.
#include "farm_commands.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <regex>
#include <thread>

#include "farm_manager.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/frame_pattern.h"

namespace fs = std::filesystem;
using sparkhost::Error;

void add_submit_options(CLI::App &command, SubmitOptions &options) {
    command.allow_extras();
    command.add_option("--frames", options.frames, "Frames of the shot: FIRST-LAST")->required();
    command.add_option("--chunk", options.chunk, "Frames a chunk job renders")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    command.add_option("-o,--output", options.output, "Output pattern, e.g. out/f.%04d.exr")->required();
    command.add_option("--job-dir", options.job_dir,
                       "Folder for the job file, scripts and logs (default: fizzle-farm beside the output)");
    command.add_option("--cache", options.cache, "Simulation cache folder (default: cache in the job folder)");
    command.add_option("--cache-every", options.cache_every, "A checkpoint every Nth frame")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000));
    command.add_option("--manager", options.manager, "Workload manager (slurm)")->capture_default_str();
    command.add_option("--partition", options.partition, "Partition (queue) to submit to");
    command.add_option("--render", options.render, "The fizzle-render program the jobs run");
}

namespace {

std::string beside_this_program(const std::string &name) {
    std::error_code error;
    const fs::path self = fs::read_symlink("/proc/self/exe", error);
    return error ? name : (self.parent_path() / name).string();
}

std::string job_file_of(const std::string &job) {
    std::error_code error;
    return fs::is_directory(job, error) ? (fs::path(job) / "job.json").string() : job;
}

int frames_written(const FarmPlan &plan, const Chunk &chunk) {
    const sparkhost::FramePattern pattern(plan.output);
    int count = 0;
    for (int frame = chunk.first; frame <= chunk.last; ++frame) {
        std::error_code error;
        const std::string path = pattern.path(frame);
        count += fs::is_regular_file(path, error) && fs::file_size(path, error) > 0 && !error;
    }
    return count;
}

bool still_active(const std::string &state) {
    // UNKNOWN: the manager could not be asked this time.
    static const std::regex active("UNKNOWN|PENDING|RUNNING|CONFIGURING|COMPLETING|REQUEUED|REQUEUE_HOLD|"
                                   "REQUEUE_FED|RESIZING|SUSPENDED|SIGNALING|STAGE_OUT");
    return std::regex_match(state, active);
}

struct ChunkReport {
    Chunk chunk;
    int written = 0;
    std::string state;  // "done", the manager's word, or "missing"
    bool settled = false;
};

std::vector<ChunkReport> report(const FarmPlan &plan, FarmManager &manager) {
    const std::map<int, std::string> states = manager.chunk_states(plan);
    std::vector<ChunkReport> reports;
    for (const Chunk &chunk : plan.chunks) {
        ChunkReport line{chunk, frames_written(plan, chunk), "", false};
        auto it = states.find(chunk.index);
        const std::string state = it == states.end() ? std::string() : it->second;
        const int total = chunk.last - chunk.first + 1;
        if (still_active(state)) {
            line.state = state;
        } else if (line.written == total) {
            line.state = "done";
            line.settled = true;
        } else {
            // Ended without every frame: failed, cancelled, or forgotten by the manager.
            line.state = state.empty() ? "missing" : state;
            line.settled = true;
        }
        reports.push_back(line);
    }
    return reports;
}

void print(const FarmPlan &plan, FarmManager &manager, const std::vector<ChunkReport> &reports) {
    if (!plan.fill_job.empty()) {
        const std::string state = manager.fill_state(plan);
        std::printf("cache fill   1-%d  job %s  %s\n", plan.fill_last(), plan.fill_job.c_str(),
                    state.empty() ? "finished" : state.c_str());
    }
    for (const ChunkReport &line : reports)
        std::printf("chunk %3d  %d-%d  job %s_%d  %s  %d/%d frames\n", line.chunk.index, line.chunk.first,
                    line.chunk.last, plan.chunk_job.c_str(), line.chunk.index, line.state.c_str(), line.written,
                    line.chunk.last - line.chunk.first + 1);
    std::fflush(stdout);
}

}  // namespace

int run_submit(const SubmitOptions &options, const std::vector<std::string> &render_options) {
    std::smatch match;
    static const std::regex form(R"((\d{1,9})(?:-(\d{1,9}))?)");
    if (!std::regex_match(options.frames, match, form))
        throw Error("--frames: '" + options.frames + "' is not FIRST-LAST or a single frame");
    FarmPlan plan;
    plan.first = std::stoi(match.str(1));
    plan.last = match[2].matched ? std::stoi(match.str(2)) : plan.first;
    if (plan.first < 1 || plan.last < plan.first) throw Error("--frames: '" + options.frames + "' is not a range from 1 on");
    for (const std::string &word : render_options)
        for (const char *own : {"--frames", "--cache", "--cache-every", "--simulate-only", "--skip-existing"})
            if (word == own || word.rfind(std::string(own) + "=", 0) == 0)
                throw Error(std::string(own) + " is fizzle-farm's to set for each job");
    auto manager = make_farm_manager(options.manager);

    plan.manager = options.manager;
    plan.working_dir = fs::current_path().string();
    plan.output = fs::absolute(options.output).string();
    if (!sparkhost::FramePattern(plan.output).is_sequence())
        throw Error("--output: '" + options.output + "' has no frame number (%04d or ####)");
    const fs::path output_dir = fs::path(plan.output).parent_path();
    plan.directory = fs::absolute(options.job_dir.empty() ? output_dir / "fizzle-farm" : fs::path(options.job_dir)).string();
    plan.cache = fs::absolute(options.cache.empty() ? fs::path(plan.directory) / "cache" : fs::path(options.cache)).string();
    plan.cache_every = options.cache_every;
    plan.chunk_size = options.chunk;
    plan.partition = options.partition;
    plan.render = options.render.empty() ? beside_this_program("fizzle-render") : fs::absolute(options.render).string();
    plan.render_options = render_options;
    plan.chunks = split_frames(plan.first, plan.last, plan.chunk_size);
    std::error_code error;
    for (const fs::path &folder : {output_dir, fs::path(plan.directory), fs::path(plan.cache)}) {
        fs::create_directories(folder, error);
        if (error) throw Error("cannot make the folder '" + folder.string() + "': " + error.message());
    }
    manager->submit(plan);
    save_plan(plan);
    std::printf("submitted %zu chunks of frames %d-%d%s; job folder %s\n", plan.chunks.size(), plan.first,
                plan.last, plan.fill_job.empty() ? "" : (" after cache fill job " + plan.fill_job).c_str(),
                plan.directory.c_str());
    return 0;
}

int run_status(const std::string &job) {
    const FarmPlan plan = load_plan(job_file_of(job));
    auto manager = make_farm_manager(plan.manager);
    print(plan, *manager, report(plan, *manager));
    return 0;
}

int run_wait(const std::string &job, double timeout_seconds) {
    const FarmPlan plan = load_plan(job_file_of(job));
    auto manager = make_farm_manager(plan.manager);
    const auto start = std::chrono::steady_clock::now();
    while (true) {
        const std::vector<ChunkReport> reports = report(plan, *manager);
        bool settled = true, done = true;
        for (const ChunkReport &line : reports) {
            settled = settled && line.settled;
            done = done && line.state == "done";
        }
        const double waited = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (settled || (timeout_seconds > 0 && waited >= timeout_seconds)) {
            print(plan, *manager, reports);
            if (!settled) throw Error("gave up waiting after " + std::to_string(int(waited)) + " s");
            if (!done) throw Error("some chunks ended without writing every frame; submit again to finish them");
            return 0;
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}
