// Output files that appear whole or not at all: written under a temporary
// name beside the final one and renamed into place when complete. The
// temporaries in flight are listed where a signal handler can remove them.
#pragma once

#include <cstddef>
#include <string>

namespace sparkhost {

// A hidden name in the same directory as path (so the rename stays on one
// file system), unique to this process on this machine, ending in path's
// extension so that libraries choosing a format by extension still
// recognise it. Never longer than a file name may be: a long final name is
// shortened in its temporary, not refused.
std::string temporary_path_for(const std::string &path);

// Whether a file name is one temporary_path_for makes.
bool is_temporary_name(const std::string &file_name);

// Removes the temporaries in directory left by processes of this machine
// that no longer run (a process killed outright removes nothing). Returns
// how many were removed; a directory that cannot be listed removes none.
int remove_stale_temporaries(const std::string &directory);

class AtomicFile {
public:
    // Reserves the temporary name; nothing is created until the caller
    // writes to temporary_path(). Throws Error when too many files are in
    // flight at once.
    explicit AtomicFile(std::string path);
    // Abandons the file unless it was committed.
    ~AtomicFile();
    AtomicFile(const AtomicFile &) = delete;
    AtomicFile &operator=(const AtomicFile &) = delete;

    const std::string &path() const { return path_; }
    const std::string &temporary_path() const { return temporary_; }

    // Writes data as the whole temporary, checking every write and the
    // close. Throws Error naming path (and removes the temporary) when that
    // fails.
    void write(const void *data, std::size_t size);
    // Renames the finished temporary onto path. Throws Error naming path
    // (and removes the temporary) when that fails.
    void commit();
    // Removes the temporary; path is left as it was.
    void abandon();

private:
    void release();

    std::string path_;
    std::string temporary_;
    int slot_ = -1;
};

// Removes every temporary still in flight. Async-signal-safe: meant for a
// handler that is about to end the process.
void remove_temporaries_in_flight();

// How many temporaries are in flight (for tests).
int temporaries_in_flight();

}  // namespace sparkhost
