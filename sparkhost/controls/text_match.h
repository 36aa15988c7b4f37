// Matching what a user typed against names: case and surrounding blanks
// ignored, and the nearest name offered for a typo.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sparkhost {

std::string trim(std::string_view text);
std::string lower(std::string_view text);

// The candidate nearest to text ignoring case: a few letters wrong (more for
// longer text), else the first that contains it; empty when none is near.
std::string closest_text(const std::vector<std::string> &candidates, std::string_view text);

}  // namespace sparkhost
