// Frame-number patterns in file names.
#include "sparkhost/files/frame_pattern.h"

#include <cstdlib>

#include "sparkhost/core/error.h"

namespace sparkhost {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

// A plain scan from the end: a regular expression recursed once a character
// and overflowed the stack on long runs of '#'.
FramePattern::FramePattern(std::string text) : text_(std::move(text)) {
    std::size_t begin = 0, end = 0;  // the number's place in text_
    std::string width;               // digits of %0Nd, or the run of '#'
    for (std::size_t i = text_.size(); i-- > 0;) {
        if (text_[i] == '#') {
            end = i + 1;
            while (i > 0 && text_[i - 1] == '#') --i;
            begin = i;
            width = std::to_string(end - begin);
            break;
        }
        if (text_[i] != 'd') continue;
        std::size_t digits = i;
        while (digits > 0 && is_digit(text_[digits - 1])) --digits;
        if (digits == 0 || text_[digits - 1] != '%') continue;
        begin = digits - 1;
        end = i + 1;
        width = text_.substr(digits, i - digits);
        break;
    }
    if (end == 0) return;
    // "%0Nd": the zero is the flag, not part of the width.
    std::size_t first = width.find_first_not_of('0');
    width = first == std::string::npos ? "0" : width.substr(first);
    if (width.size() > 3 || std::atoi(width.c_str()) > kWidest)
        throw Error("'" + text_ + "' asks for frame numbers " + width + " digits wide; at most " +
                    std::to_string(kWidest) + " fit in a file name");
    width_ = std::atoi(width.c_str());
    sequence_ = true;
    prefix_ = text_.substr(0, begin);
    suffix_ = text_.substr(end);
}

std::string FramePattern::path(int frame) const {
    if (!sequence_) return text_;
    const bool negative = frame < 0;
    std::string digits = std::to_string(negative ? -static_cast<long long>(frame) : frame);
    const std::size_t width = std::size_t(width_) - (negative ? 1 : 0);
    if (width_ > 0 && digits.size() < width) digits.insert(0, width - digits.size(), '0');
    return prefix_ + (negative ? "-" : "") + digits + suffix_;
}

}  // namespace sparkhost

namespace sparkhost {

std::optional<int> FramePattern::frame_of(const std::string &name) const {
    if (!sequence_) return std::nullopt;
    if (name.size() <= prefix_.size() + suffix_.size() || name.compare(0, prefix_.size(), prefix_) != 0 ||
        name.compare(name.size() - suffix_.size(), suffix_.size(), suffix_) != 0)
        return std::nullopt;
    const std::string digits = name.substr(prefix_.size(), name.size() - prefix_.size() - suffix_.size());
    if (digits.size() > 10 || digits.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const long long number = std::atoll(digits.c_str());
    if (number > 2147483647LL || path(int(number)) != name) return std::nullopt;
    return int(number);
}

}  // namespace sparkhost
