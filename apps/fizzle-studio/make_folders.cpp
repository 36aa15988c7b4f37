// Folders for renders and hand-offs into a fresh working directory.
#include "make_folders.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;

std::string make_folders_for(const WorkFiles &files, const std::string &relative) {
    fs::path so_far;
    const fs::path parent = fs::path(relative).parent_path();
    for (const fs::path &part : parent) {
        so_far /= part;
        // Checked before each step: a link made meanwhile cannot lead the next one out.
        const std::optional<std::string> path = files.resolve(so_far.string());
        if (!path) return "'" + so_far.string() + "' is not a folder under the working directory";
        std::error_code error;
        if (fs::is_directory(*path, error)) continue;
        if (::mkdir(path->c_str(), 0777) != 0 && errno != EEXIST)
            return "cannot make the folder '" + so_far.string() + "': " + std::strerror(errno);
        if (!fs::is_directory(*path, error)) return "'" + so_far.string() + "' is a file, not a folder";
    }
    return {};
}
