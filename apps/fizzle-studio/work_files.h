// Files the studio may read or write: only under its working directory,
// never through a link that leads out of it, whenever the link appeared.
// Every name is opened from the root's descriptor (safe_open.h) and the
// open file is what gets read, never the name again.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "safe_open.h"

class WorkFiles {
public:
    // root must exist; it is made absolute and canonical and held open.
    explicit WorkFiles(const std::string &root);
    const std::string &root() const { return root_; }

    // Why a name was refused: Outside and Missing answer 404 (an outside
    // name looks like a missing one), Special 400.
    enum class Refusal { None, Outside, Missing, Special };

    // A regular file opened for reading, with its size at the time.
    struct Opened {
        UniqueFd fd;
        uint64_t size = 0;
    };
    // Refuses names that are absolute, climb out with "..", lead out through
    // links, or name something other than a regular file (a folder, FIFO or
    // device: opened without waiting for a writer, then refused).
    std::optional<Opened> open_file(const std::string &relative, Refusal &why) const;

    // Where a file is written: its folder held open, and its name there.
    struct Place {
        UniqueFd folder;
        std::string name;
        // A path through the held folder ("/proc/self/fd/N/name"), for writers
        // that take paths: temporary and rename stay in that very folder.
        std::string path() const;
    };
    // The folder must exist under the root; the name must be a plain name.
    std::optional<Place> place(const std::string &relative) const;

    // Makes the missing folders above relative's last name, each with
    // mkdirat in the folder already opened beneath the root, so a link
    // swapped in meanwhile cannot lead outside. Returns what stopped it, for
    // the user, or an empty string.
    std::string make_folders_above(const std::string &relative) const;

    // The name relative to the root, for showing and for command lines.
    std::string relative(const std::string &absolute) const;

    struct Entry {
        std::string name;
        bool directory;
    };
    // A directory's entries (sorted, directories first), keeping files whose
    // name ends with extension (any file when empty) and leaving out links
    // that lead outside. nullopt when directory is refused or not a directory.
    std::optional<std::vector<Entry>> list(const std::string &directory, const std::string &extension) const;

private:
    int open(const std::string &relative, int flags) const;

    std::string root_;
    UniqueFd root_fd_;
};
