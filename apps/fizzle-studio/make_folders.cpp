// Folders for renders and hand-offs into a fresh working directory.
#include "make_folders.h"

std::string make_folders_for(const WorkFiles &files, const std::string &relative) {
    return files.make_folders_above(relative);
}
