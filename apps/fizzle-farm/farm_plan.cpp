// Chunks, their fizzle-render command lines and the job file.
#include "farm_plan.h"

#include <unistd.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/regular_file.h"

namespace fs = std::filesystem;
using sparkhost::Error;

std::vector<Chunk> split_frames(int first, int last, int size) {
    std::vector<Chunk> chunks;
    for (int start = first, index = 0; start <= last; start += size, ++index)
        chunks.push_back(Chunk{index, start, std::min(last, start + size - 1)});
    return chunks;
}

std::vector<std::string> FarmPlan::fill_command() const {
    std::vector<std::string> command{render};
    command.insert(command.end(), render_options.begin(), render_options.end());
    for (const std::string &word : {std::string("--quiet"), std::string("--simulate-only"), std::string("--cache"),
                                    cache, std::string("--cache-every"), std::to_string(cache_every),
                                    std::string("--frames"), "1-" + std::to_string(fill_last())})
        command.push_back(word);
    return command;
}

std::vector<std::string> FarmPlan::chunk_command(const Chunk &chunk) const {
    std::vector<std::string> command{render};
    command.insert(command.end(), render_options.begin(), render_options.end());
    // Chunks only read the cache: the fill job wrote what they need.
    for (const std::string &word :
         {std::string("--quiet"), std::string("--skip-existing"), std::string("--cache"), cache,
          std::string("--cache-every"), std::to_string(cache_every), std::string("--frames"),
          std::to_string(chunk.first) + "-" + std::to_string(chunk.last), std::string("-o"), output})
        command.push_back(word);
    return command;
}

std::string FarmPlan::job_file() const { return (fs::path(directory) / "job.json").string(); }

void save_plan(const FarmPlan &plan) {
    nlohmann::json chunks = nlohmann::json::array();
    for (const Chunk &chunk : plan.chunks) chunks.push_back({chunk.index, chunk.first, chunk.last});
    const nlohmann::json json{{"format", "fizzle-farm-job"},
                              {"version", 1},
                              {"manager", plan.manager},
                              {"directory", plan.directory},
                              {"working_dir", plan.working_dir},
                              {"render", plan.render},
                              {"render_options", plan.render_options},
                              {"output", plan.output},
                              {"cache", plan.cache},
                              {"cache_every", plan.cache_every},
                              {"first", plan.first},
                              {"last", plan.last},
                              {"chunk_size", plan.chunk_size},
                              {"partition", plan.partition},
                              {"chunks", chunks},
                              {"fill_job", plan.fill_job},
                              {"chunk_job", plan.chunk_job}};
    const std::string path = plan.job_file();
    const std::string text = json.dump(2) + "\n";
    try {
        sparkhost::AtomicFile file(path);
        file.write(text.data(), text.size());
        file.commit();
    } catch (const Error &error) {
        throw Error(std::string("job file: ") + error.what());
    }
}

FarmPlan load_plan(const std::string &job_file) {
    // A job file is a few kilobytes: a FIFO or a device is refused, not read.
    std::string text;
    try {
        text = sparkhost::read_regular_file(job_file, 64u << 20);
    } catch (const Error &error) {
        throw Error(std::string("cannot read the job file: ") + error.what());
    }
    try {
        const nlohmann::json json = nlohmann::json::parse(text);
        if (json.at("format") != "fizzle-farm-job") throw Error("'" + job_file + "' is not a fizzle-farm job file");
        if (json.at("version").get<int>() > 1) throw Error("'" + job_file + "' was written by a newer fizzle-farm");
        FarmPlan plan;
        plan.manager = json.at("manager");
        plan.directory = json.at("directory");
        plan.working_dir = json.at("working_dir");
        plan.render = json.at("render");
        plan.render_options = json.at("render_options").get<std::vector<std::string>>();
        plan.output = json.at("output");
        plan.cache = json.at("cache");
        plan.cache_every = json.at("cache_every");
        plan.first = json.at("first");
        plan.last = json.at("last");
        plan.chunk_size = json.at("chunk_size");
        plan.partition = json.at("partition");
        for (const auto &chunk : json.at("chunks"))
            plan.chunks.push_back(Chunk{chunk.at(0), chunk.at(1), chunk.at(2)});
        plan.fill_job = json.at("fill_job");
        plan.chunk_job = json.at("chunk_job");
        return plan;
    } catch (const nlohmann::json::exception &error) {
        throw Error("job file '" + job_file + "' is malformed: " + error.what());
    }
}

std::string shell_quoted(const std::string &word) {
    std::string quoted = "'";
    for (char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
