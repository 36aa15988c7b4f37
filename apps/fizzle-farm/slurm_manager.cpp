// Slurm behind fizzle-farm: sbatch for the fill job and the chunk array,
// scontrol for their states. Commands are found on PATH; SLURM_CONF, when
// set, names the cluster as for any Slurm command.
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>

#include <sys/stat.h>
#include <sys/wait.h>

#include "farm_manager.h"
#include "sparkhost/core/error.h"

using sparkhost::Error;

namespace {

struct Output {
    int status = -1;
    std::string text;  // standard output and error together
};

Output run(const std::vector<std::string> &command) {
    std::string line;
    for (const std::string &word : command) line += (line.empty() ? "" : " ") + shell_quoted(word);
    line += " 2>&1 </dev/null";
    Output output;
    FILE *pipe = popen(line.c_str(), "r");
    if (!pipe) throw Error("cannot run " + command.front());
    char buffer[4096];
    size_t read;
    while ((read = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) output.text.append(buffer, read);
    const int status = pclose(pipe);
    output.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

std::string first_line(const std::string &text) {
    const std::string line = text.substr(0, text.find('\n'));
    return line.empty() ? "no message" : line;
}

void write_script(const std::string &path, const std::string &body) {
    std::ofstream out(path, std::ios::trunc);
    out << "#!/bin/sh\n" << body;
    if (!out.flush()) throw Error("cannot write '" + path + "'");
    chmod(path.c_str(), 0755);
}

std::string command_line(const std::vector<std::string> &command) {
    std::string line = "exec";
    for (const std::string &word : command) line += " " + shell_quoted(word);
    return line + "\n";
}

// Runs sbatch and returns the job id it printed.
std::string sbatch(std::vector<std::string> arguments, const FarmPlan &plan) {
    arguments.insert(arguments.begin(), {"sbatch", "--parsable", "--chdir=" + plan.working_dir});
    if (!plan.partition.empty()) arguments.push_back("--partition=" + plan.partition);
    const Output output = run(arguments);
    const std::string id = first_line(output.text).substr(0, first_line(output.text).find(';'));
    if (output.status != 0 || !std::regex_match(id, std::regex("[0-9]+")))
        throw Error("sbatch refused the job: " + first_line(output.text));
    return id;
}

// scontrol's one-line records: task (or first..last of a pending group) to state.
std::map<int, std::string> states_of(const std::string &job) {
    std::map<int, std::string> states;
    if (job.empty()) return states;
    const Output output = run({"scontrol", "-o", "show", "job", job});
    if (output.status != 0) {
        // A job the controller forgot has ended; any other failure (a busy
        // controller) says nothing about the job.
        if (output.text.find("Invalid job id") == std::string::npos) states[-2] = "UNKNOWN";
        return states;
    }
    static const std::regex task(R"(ArrayTaskId=([0-9,\-]+))"), state(R"(JobState=([A-Z_]+))");
    std::istringstream lines(output.text);
    for (std::string line; std::getline(lines, line);) {
        std::smatch tasks, found;
        if (!std::regex_search(line, found, state)) continue;
        if (!std::regex_search(line, tasks, task)) {
            states[-1] = found.str(1);  // not an array: the job itself
            continue;
        }
        std::istringstream ranges(tasks.str(1));
        for (std::string range; std::getline(ranges, range, ',');) {
            const size_t dash = range.find('-');
            const int from = std::stoi(range.substr(0, dash));
            const int to = dash == std::string::npos ? from : std::stoi(range.substr(dash + 1));
            for (int index = from; index <= to; ++index) states[index] = found.str(1);
        }
    }
    return states;
}

class SlurmManager : public FarmManager {
public:
    void submit(FarmPlan &plan) override {
        const std::string fill_script = plan.directory + "/fill.sh";
        const std::string chunk_script = plan.directory + "/chunks.sh";
        if (plan.fill_last() >= 1) write_script(fill_script, command_line(plan.fill_command()));
        std::string cases = "case \"$SLURM_ARRAY_TASK_ID\" in\n";
        for (const Chunk &chunk : plan.chunks)
            cases += std::to_string(chunk.index) + ") " + command_line(plan.chunk_command(chunk)) + ";;\n";
        cases += "*) echo \"no chunk $SLURM_ARRAY_TASK_ID\" >&2; exit 2 ;;\nesac\n";
        write_script(chunk_script, cases);

        if (plan.fill_last() >= 1)
            plan.fill_job = sbatch({"--job-name=fizzle-fill", "--output=" + plan.directory + "/fill.log",
                                    "--ntasks=1", fill_script},
                                   plan);
        std::vector<std::string> arguments{"--job-name=fizzle-chunk",
                                           "--array=0-" + std::to_string(plan.chunks.size() - 1),
                                           "--output=" + plan.directory + "/chunk-%a.log", "--ntasks=1",
                                           "--requeue"};
        // A failed fill leaves nothing to start from: the chunks then never run.
        if (!plan.fill_job.empty()) {
            arguments.push_back("--dependency=afterok:" + plan.fill_job);
            arguments.push_back("--kill-on-invalid-dep=yes");
        }
        arguments.push_back(chunk_script);
        plan.chunk_job = sbatch(arguments, plan);
    }

    std::map<int, std::string> chunk_states(const FarmPlan &plan) override {
        std::map<int, std::string> states = states_of(plan.chunk_job);
        if (states.count(-2))
            for (const Chunk &chunk : plan.chunks) states[chunk.index] = "UNKNOWN";
        return states;
    }

    std::string fill_state(const FarmPlan &plan) override {
        const std::map<int, std::string> states = states_of(plan.fill_job);
        if (states.count(-2)) return "UNKNOWN";
        auto it = states.find(-1);
        return it == states.end() ? std::string() : it->second;
    }
};

}  // namespace

std::unique_ptr<FarmManager> make_farm_manager(const std::string &name) {
    if (name == "slurm") return std::make_unique<SlurmManager>();
    throw Error("--manager: '" + name + "' is not built; the one manager is slurm");
}
