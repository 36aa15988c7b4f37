// Hand-written parsers: a regular expression engine recurses per character
// and overflows the stack on a long argument.
#include "render/value_parsers.h"

#include <cctype>
#include <algorithm>
#include <cstdlib>
#include <optional>

#include "sparkhost/core/error.h"
#include "sparkhost/core/resolution.h"
#include "sparkhost/controls/text_match.h"

using sparkhost::Error;

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Reads 1 to max_digits digits at text[at], moving at past them.
bool read_whole(const std::string &text, size_t &at, int max_digits, int &value) {
    size_t start = at;
    long long number = 0;
    while (at < text.size() && is_digit(text[at]) && int(at - start) < max_digits)
        number = number * 10 + (text[at++] - '0');
    if (at == start || (at < text.size() && is_digit(text[at]))) return false;
    value = int(number);
    return true;
}

std::string joined_resolutions() {
    std::string text;
    for (const std::string &name : sparkhost::resolution_names()) text += (text.empty() ? "" : "|") + name;
    return text;
}

// The furthest from zero a key's frame may be: as far as --frames counts.
constexpr double kFrameLimit = 999999999.0;

// FRAME:VALUE with blanks allowed around both; FRAME is [-]digits[.digits].
bool parse_key(const std::string &one, double &frame, std::string &value) {
    size_t colon = one.find(':');
    if (colon == std::string::npos) return false;
    const std::string number = sparkhost::trim(one.substr(0, colon));
    size_t at = !number.empty() && number[0] == '-' ? 1 : 0, digits = 0;
    while (at < number.size() && is_digit(number[at])) ++at, ++digits;
    if (digits == 0) return false;
    if (at < number.size() && number[at] == '.')
        for (++at; at < number.size() && is_digit(number[at]);) ++at;
    if (at != number.size()) return false;
    frame = std::strtod(number.c_str(), nullptr);
    value = sparkhost::trim(one.substr(colon + 1));
    return !value.empty();
}

}  // namespace

FrameRange parse_frames(const std::string &text) {
    FrameRange range;
    size_t at = 0;
    bool ok = read_whole(text, at, 9, range.first);
    range.last = range.first;
    if (ok && at < text.size()) ok = text[at++] == '-' && read_whole(text, at, 9, range.last);
    if (!ok || at != text.size()) throw Error("--frames: '" + text + "' is not FIRST-LAST or a single frame");
    if (range.first < 1) throw Error("--frames: frames are numbered from 1, '" + text + "' starts at 0");
    if (range.last < range.first) throw Error("--frames: '" + text + "' ends before it starts");
    return range;
}

PixelSize parse_size(const std::string &text) {
    PixelSize size;
    size_t at = 0;
    bool ok = read_whole(text, at, 5, size.width) && at < text.size() && text[at++] == 'x' &&
              read_whole(text, at, 5, size.height) && at == text.size();
    if (!ok) throw Error("--size: '" + text + "' is not WIDTHxHEIGHT");
    if (size.width < 1 || size.height < 1 || size.width > 16384 || size.height > 16384)
        throw Error("--size: '" + text + "' must be 1 to 16384 pixels each way");
    return size;
}

ControlAssignment parse_assignment(const std::string &text) {
    size_t equals = text.find('=');
    ControlAssignment assignment{text, sparkhost::trim(text.substr(0, std::min(equals, text.size()))), ""};
    if (equals != std::string::npos) assignment.value = sparkhost::trim(text.substr(equals + 1));
    if (equals == std::string::npos || assignment.name.empty() || assignment.value.empty())
        throw Error("--set: '" + text + "' is not NAME=VALUE");
    return assignment;
}

ControlAnimation parse_animation(const std::string &text) {
    size_t equals = text.find('=');
    const std::string form = "is not NAME=FRAME:VALUE,FRAME:VALUE,...";
    if (equals == std::string::npos) throw Error("--animate: '" + text + "' " + form);
    ControlAnimation animation{text, sparkhost::trim(text.substr(0, equals)), {}};
    if (animation.name.empty()) throw Error("--animate: '" + text + "' " + form);
    std::string keys = text.substr(equals + 1);
    size_t start = 0;
    while (true) {
        size_t comma = keys.find(',', start);
        std::string one = keys.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        double frame = 0;
        std::string value;
        if (!parse_key(one, frame, value))
            throw Error("--animate: '" + one + "' in '" + text + "' is not FRAME:VALUE");
        if (!(frame >= -kFrameLimit && frame <= kFrameLimit))
            throw Error("--animate: frame '" + sparkhost::trim(one.substr(0, one.find(':'))) + "' in '" + text +
                        "' is out of range");
        animation.keys.emplace_back(frame, value);
        if (comma == std::string::npos) break;
        start = comma + 1;
    }
    return animation;
}

int parse_proxy(const std::string &text) {
    std::optional<int> index = sparkhost::resolution_index(text);
    if (!index) throw Error("--proxy: '" + text + "' is not one of " + joined_resolutions());
    return *index;
}
