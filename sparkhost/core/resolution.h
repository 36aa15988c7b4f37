// The names of the resolution list's entries, as the user types them.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sparkhost {

// "FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32".
const std::vector<std::string> &resolution_names();

// The entry's index (0 for FULL); "full" is accepted in any case.
std::optional<int> resolution_index(const std::string &name);

}  // namespace sparkhost
