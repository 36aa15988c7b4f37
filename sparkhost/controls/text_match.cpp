// Matching what a user typed against names.
#include "sparkhost/controls/text_match.h"

#include <algorithm>
#include <cctype>

namespace sparkhost {
namespace {

size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

std::string trim(std::string_view text) {
    size_t begin = 0, end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin]))) ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1]))) --end;
    return std::string(text.substr(begin, end - begin));
}

std::string lower(std::string_view text) {
    std::string out(text);
    for (char &c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string closest_text(const std::vector<std::string> &candidates, std::string_view text) {
    const std::string wanted = lower(trim(text));
    if (wanted.empty()) return {};
    const std::string *best = nullptr;
    size_t best_distance = 0;
    for (const std::string &candidate : candidates) {
        size_t distance = edit_distance(wanted, lower(candidate));
        if (!best || distance < best_distance) {
            best = &candidate;
            best_distance = distance;
        }
    }
    if (best && best_distance <= std::max<size_t>(2, wanted.size() / 3)) return *best;
    for (const std::string &candidate : candidates)
        if (lower(candidate).find(wanted) != std::string::npos) return candidate;
    return {};
}

}  // namespace sparkhost
