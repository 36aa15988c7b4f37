// Frame-number patterns in file names.
#include "sparkhost/frame_pattern.h"

#include <cstdio>
#include <regex>

namespace sparkhost {

FramePattern::FramePattern(std::string text) : text_(std::move(text)) {
    static const std::regex number(R"(%(0?)(\d*)d|#+)");
    std::smatch last;
    for (auto it = std::sregex_iterator(text_.begin(), text_.end(), number);
         it != std::sregex_iterator(); ++it)
        last = *it;
    if (last.empty()) return;
    sequence_ = true;
    prefix_ = text_.substr(0, last.position(0));  // prefix() only reaches back to the previous match
    suffix_ = text_.substr(last.position(0) + last.length(0));
    std::string found = last.str(0);
    if (found[0] == '#')
        width_ = int(found.size());
    else
        width_ = last.str(2).empty() ? 0 : std::stoi(last.str(2));
}

std::string FramePattern::path(int frame) const {
    if (!sequence_) return text_;
    char digits[32];
    std::snprintf(digits, sizeof digits, "%0*d", width_, frame);
    return prefix_ + digits + suffix_;
}

}  // namespace sparkhost
