// Files the studio may read or write: only under its working directory,
// never through a link that leads out of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

class WorkFiles {
public:
    // root must exist; it is made absolute and canonical.
    explicit WorkFiles(const std::string &root);
    const std::string &root() const { return root_; }

    // The absolute path of a relative name under the root, or nullopt when
    // it is absolute, climbs out with "..", or resolves (through links of
    // any existing part) outside the root. The file itself need not exist.
    std::optional<std::string> resolve(const std::string &relative) const;
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
    std::string root_;
};
