// Progress bar and summary on stderr.
#include "progress.h"

#include <cstdio>

namespace {

std::string clock_text(double seconds) {
    long whole = long(seconds + 0.5);
    char text[32];
    if (whole >= 3600)
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

}  // namespace

Progress::Progress(int total_frames, bool enabled)
    : total_(total_frames), enabled_(enabled), start_(std::chrono::steady_clock::now()) {}

Progress::~Progress() { clear_line(); }

void Progress::start() { start_ = std::chrono::steady_clock::now(); }

double Progress::seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}

void Progress::frame_done(int frame) {
    ++done_;
    if (!enabled_) return;
    constexpr int width = 30;
    int filled = total_ > 0 ? done_ * width / total_ : width;
    std::string bar(filled, '#');
    bar.append(width - filled, '-');
    double elapsed = seconds();
    double fps = elapsed > 0 ? done_ / elapsed : 0;
    double left = fps > 0 ? (total_ - done_) / fps : 0;
    std::fprintf(stderr, "\r[%s] %d/%d  frame %d  %.1f fps  %s left\033[K", bar.c_str(), done_,
                 total_, frame, fps, clock_text(left).c_str());
    std::fflush(stderr);
    drawn_ = true;
}

void Progress::clear_line() {
    if (!drawn_) return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    drawn_ = false;
}

void Progress::finish(const std::string &where) {
    if (!enabled_) return;
    clear_line();
    double elapsed = seconds();
    char took[32];
    if (elapsed < 60)
        std::snprintf(took, sizeof took, "%.1f s", elapsed);
    else
        std::snprintf(took, sizeof took, "%s", clock_text(elapsed).c_str());
    std::fprintf(stderr, "Rendered %d frame%s to %s in %s (%.1f fps)\n", done_, done_ == 1 ? "" : "s",
                 where.c_str(), took, elapsed > 0 ? done_ / elapsed : 0.0);
}
