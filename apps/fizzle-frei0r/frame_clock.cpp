// Time to frame number, and which unit the loading host counts time in.
#include "frame_clock.h"

#include <dlfcn.h>

#include <cctype>
#include <cmath>
#include <cstdlib>

#include "sparkhost/core/error.h"

namespace {

std::string lowered(std::string text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    size_t start = 0;
    while (start < text.size() && std::isspace(static_cast<unsigned char>(text[start]))) ++start;
    text.erase(0, start);
    for (char &c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// A whole text as a finite number, or false.
bool whole_number(const std::string &text, double &value) {
    if (text.empty()) return false;
    char *end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return end == text.c_str() + text.size() && std::isfinite(value);
}

bool loaded(const char *symbol) { return dlsym(RTLD_DEFAULT, symbol) != nullptr; }

}  // namespace

double parse_frame_rate(const std::string &text) {
    const std::string typed = lowered(text);
    const size_t slash = typed.find('/');
    double rate = 0;
    bool ok = false;
    if (slash == std::string::npos) {
        ok = whole_number(typed, rate);
    } else {
        double numerator = 0, denominator = 0;
        ok = whole_number(typed.substr(0, slash), numerator) && whole_number(typed.substr(slash + 1), denominator) &&
             denominator > 0;
        if (ok) rate = numerator / denominator;
    }
    if (!ok || !(rate > 0) || rate > 1000)
        throw sparkhost::Error("frame rate \"" + text + "\" is not a rate of frames a second (25, 29.97, 30000/1001)");
    return rate;
}

TimeUnit parse_time_unit(const std::string &text) {
    const std::string typed = lowered(text);
    if (typed.empty() || typed == "auto") return host_time_unit();
    if (typed == "seconds" || typed == "s") return TimeUnit::Seconds;
    if (typed == "milliseconds" || typed == "ms") return TimeUnit::Milliseconds;
    throw sparkhost::Error("time unit \"" + text + "\" is none of auto, seconds, milliseconds");
}

TimeUnit host_time_unit() {
    // MLT and GStreamer may have loaded libavfilter for other work: they are
    // asked about first.
    if (loaded("mlt_factory_init") || loaded("gst_init")) return TimeUnit::Seconds;
    if (loaded("avfilter_graph_alloc")) return TimeUnit::Milliseconds;
    return TimeUnit::Seconds;
}

int FrameClock::frame_at(double time) {
    const double seconds = unit_ == TimeUnit::Milliseconds ? time / 1000.0 : time;
    const double position = seconds * rate_;
    int frame;
    if (std::isfinite(position) && position > -0.5 && position < 1e8)
        frame = int(std::floor(position + 0.5)) + 1;
    else
        frame = last_ + 1;
    last_ = frame;
    return frame;
}
