// Resolution list entries by name.
#include "sparkhost/core/resolution.h"

#include <algorithm>
#include <cctype>

namespace sparkhost {

const std::vector<std::string> &resolution_names() {
    static const std::vector<std::string> names = {"FULL", "1/2",  "1/3",  "1/4", "1/6",
                                                   "1/8",  "1/12", "1/16", "1/32"};
    return names;
}

std::optional<int> resolution_index(const std::string &name) {
    std::string upper = name;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return char(std::toupper(c)); });
    const auto &names = resolution_names();
    auto found = std::find(names.begin(), names.end(), upper);
    if (found == names.end()) return std::nullopt;
    return int(found - names.begin());
}

}  // namespace sparkhost
