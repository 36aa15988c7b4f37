// A shot split for a farm: the cache-fill run, the chunks and the commands
// that render them, kept in a job file that status and wait read back.
#pragma once

#include <string>
#include <vector>

struct Chunk {
    int index = 0;  // 0-based, as job arrays count
    int first = 0;
    int last = 0;
};

struct FarmPlan {
    std::string manager = "slurm";
    std::string directory;     // the job's own folder: job file, scripts, logs
    std::string working_dir;   // where the commands run
    std::string render;        // the fizzle-render program
    std::vector<std::string> render_options;  // passed through as given
    std::string output;        // absolute output pattern
    std::string cache;         // absolute cache folder
    int cache_every = 25;
    int first = 1, last = 1, chunk_size = 50;
    std::string partition;     // empty: the manager's default
    std::vector<Chunk> chunks;
    // Filled by the manager at submission.
    std::string fill_job;      // empty when no frame before the last chunk needs simulating
    std::string chunk_job;

    // The frames the cache must hold before the chunks start: 1 up to the
    // last chunk's first frame minus 1 (nothing when that is frame 1).
    int fill_last() const { return chunks.empty() ? 0 : chunks.back().first - 1; }
    std::vector<std::string> fill_command() const;
    std::vector<std::string> chunk_command(const Chunk &chunk) const;
    std::string job_file() const;
};

// Splits first..last into chunks of at most size frames.
std::vector<Chunk> split_frames(int first, int last, int size);

// The job file: written whole (temporary, then rename), read back for
// status and wait. Throw sparkhost::Error naming the file.
void save_plan(const FarmPlan &plan);
FarmPlan load_plan(const std::string &job_file);

// One POSIX shell word.
std::string shell_quoted(const std::string &word);
