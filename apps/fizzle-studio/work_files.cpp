// Name checks for every file the page names; the opening itself is safe_open's.
#include "work_files.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "sparkhost/core/error.h"

namespace fs = std::filesystem;

namespace {

// Plain relative names only: what the page's dialogs produce.
bool acceptable(const std::string &relative) {
    if (relative.find('\0') != std::string::npos || (!relative.empty() && relative[0] == '/')) return false;
    for (const fs::path &part : fs::path(relative))
        if (part == "..") return false;
    return true;
}

}  // namespace

WorkFiles::WorkFiles(const std::string &root)
    : root_(fs::canonical(root).string()), root_fd_(::open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (!root_fd_) throw sparkhost::Error("cannot open the folder '" + root_ + "'");
}

int WorkFiles::open(const std::string &relative, int flags) const {
    if (!acceptable(relative)) {
        errno = EXDEV;
        return -1;
    }
    return open_beneath(root_fd_.get(), root_, relative, flags);
}

std::optional<WorkFiles::Opened> WorkFiles::open_file(const std::string &relative, Refusal &why) const {
    why = Refusal::Outside;
    if (relative.empty()) return std::nullopt;
    // Not blocking: a FIFO would otherwise wait here for a writer.
    UniqueFd fd(open(relative, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    if (!fd) {
        why = errno == ENOENT || errno == ENOTDIR ? Refusal::Missing : errno == ENXIO ? Refusal::Special
                                                                                     : Refusal::Outside;
        return std::nullopt;
    }
    struct stat info;
    if (fstat(fd.get(), &info) != 0) return std::nullopt;
    if (!S_ISREG(info.st_mode)) {
        why = S_ISDIR(info.st_mode) ? Refusal::Missing : Refusal::Special;
        return std::nullopt;
    }
    why = Refusal::None;
    return Opened{std::move(fd), uint64_t(info.st_size)};
}

std::string WorkFiles::make_folders_above(const std::string &relative) const {
    if (!acceptable(relative)) return "'" + relative + "' is not a name under the working directory";
    std::string so_far;
    for (const fs::path &part : fs::path(relative).parent_path()) {
        if (part == "." || part.empty()) continue;
        const std::string above = so_far;
        so_far = so_far.empty() ? part.string() : so_far + "/" + part.string();
        UniqueFd folder(open(so_far, O_PATH | O_DIRECTORY));
        if (folder) continue;
        if (errno != ENOENT) {
            if (errno == ENOTDIR) return "'" + so_far + "' is a file, not a folder";
            return "'" + so_far + "' is not a folder under the working directory";
        }
        UniqueFd parent(open(above, O_PATH | O_DIRECTORY));
        if (!parent) return "'" + (above.empty() ? std::string(".") : above) + "' is not a folder under the working directory";
        if (::mkdirat(parent.get(), part.c_str(), 0777) != 0 && errno != EEXIST)
            return "cannot make the folder '" + so_far + "': " + std::strerror(errno);
    }
    return {};
}

std::string WorkFiles::Place::path() const { return descriptor_path(folder.get()) + "/" + name; }

std::optional<WorkFiles::Place> WorkFiles::place(const std::string &relative) const {
    const size_t slash = relative.find_last_of('/');
    Place place;
    place.name = slash == std::string::npos ? relative : relative.substr(slash + 1);
    if (place.name.empty() || place.name == "." || place.name == "..") return std::nullopt;
    place.folder = UniqueFd(open(slash == std::string::npos ? "" : relative.substr(0, slash), O_PATH | O_DIRECTORY));
    if (!place.folder) return std::nullopt;
    // Files are renamed into place, replacing a link rather than writing
    // through it; a link out is refused all the same, as a name outside.
    struct stat info;
    if (fstatat(place.folder.get(), place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(info.st_mode) &&
        !UniqueFd(open(relative, O_PATH)) && errno != ENOENT)
        return std::nullopt;
    return place;
}

std::string WorkFiles::relative(const std::string &absolute) const {
    std::error_code error;
    fs::path name = fs::relative(absolute, root_, error);
    if (error || name.empty() || *name.begin() == "..") return absolute;
    return name.string();
}

std::optional<std::vector<WorkFiles::Entry>> WorkFiles::list(const std::string &directory,
                                                             const std::string &extension) const {
    UniqueFd folder(open(directory, O_RDONLY | O_DIRECTORY));
    if (!folder) return std::nullopt;
    DIR *stream = fdopendir(folder.get());
    if (!stream) return std::nullopt;
    folder.release();  // the stream owns it now
    const std::string prefix = directory.empty() || directory == "." ? "" : directory + "/";
    std::vector<Entry> entries;
    while (const dirent *item = readdir(stream)) {
        const std::string name = item->d_name;
        if (name.empty() || name[0] == '.') continue;
        // Opened the way a later request would open it: links out are left out.
        UniqueFd target(open(prefix + name, O_PATH));
        struct stat info;
        if (!target || fstat(target.get(), &info) != 0) continue;
        const bool is_directory = S_ISDIR(info.st_mode);
        if (!is_directory && !extension.empty() &&
            (name.size() < extension.size() || name.compare(name.size() - extension.size(), extension.size(), extension) != 0))
            continue;
        entries.push_back({name, is_directory});
    }
    closedir(stream);
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        return a.directory != b.directory ? a.directory : a.name < b.name;
    });
    return entries;
}
