// Path checks for every file the page names.
#include "work_files.h"

#include <algorithm>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

bool inside(const fs::path &path, const fs::path &root) {
    auto mismatch = std::mismatch(root.begin(), root.end(), path.begin(), path.end());
    return mismatch.first == root.end();
}

}  // namespace

WorkFiles::WorkFiles(const std::string &root) : root_(fs::canonical(root).string()) {}

std::optional<std::string> WorkFiles::resolve(const std::string &relative) const {
    if (relative.find('\0') != std::string::npos) return std::nullopt;
    const fs::path asked(relative);
    if (asked.is_absolute() || asked.has_root_name()) return std::nullopt;
    for (const fs::path &part : asked)
        if (part == "..") return std::nullopt;
    // weakly_canonical follows links in the part that exists, so a link that
    // points outside is caught here whatever its name.
    std::error_code error;
    const fs::path full = fs::weakly_canonical(fs::path(root_) / asked, error);
    if (error || !inside(full, fs::path(root_))) return std::nullopt;
    return full.string();
}

std::string WorkFiles::relative(const std::string &absolute) const {
    std::error_code error;
    fs::path name = fs::relative(absolute, root_, error);
    if (error || name.empty() || *name.begin() == "..") return absolute;
    return name.string();
}

std::optional<std::vector<WorkFiles::Entry>> WorkFiles::list(const std::string &directory,
                                                             const std::string &extension) const {
    std::optional<std::string> path = resolve(directory.empty() ? "." : directory);
    std::error_code error;
    if (!path || !fs::is_directory(*path, error)) return std::nullopt;
    std::vector<Entry> entries;
    for (const fs::directory_entry &item : fs::directory_iterator(*path, error)) {
        const std::string name = item.path().filename().string();
        if (name.empty() || name[0] == '.') continue;
        const fs::path target = fs::weakly_canonical(item.path(), error);
        if (error || !inside(target, fs::path(root_))) continue;
        const bool is_directory = fs::is_directory(target, error);
        if (!is_directory && !extension.empty() &&
            (name.size() < extension.size() || name.compare(name.size() - extension.size(), extension.size(), extension) != 0))
            continue;
        entries.push_back({name, is_directory});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        return a.directory != b.directory ? a.directory : a.name < b.name;
    });
    return entries;
}
