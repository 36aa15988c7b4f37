// Missing folders on the way to a file the studio writes, made under its
// working directory only.
#pragma once

#include <string>

#include "work_files.h"

// Makes the folders above `relative` (a name under files' root) that do not
// exist yet, one at a time, each checked to stay under the root. Returns an
// empty string, or what stopped it, for the user.
std::string make_folders_for(const WorkFiles &files, const std::string &relative);
