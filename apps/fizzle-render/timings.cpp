// The --timings summary.
#include "timings.h"

namespace {

// Set as the program loads, before main.
const RenderTimings::Clock::time_point started = RenderTimings::Clock::now();

double seconds_between(RenderTimings::Clock::time_point from, RenderTimings::Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

}  // namespace

void RenderTimings::frame_rendered(const sparkhost::Host::FrameTimes &times) {
    ++frames_;
    buffers_ += times.buffers;
    process_ += times.process;
}

void RenderTimings::print(std::FILE *stream) const {
    const Clock::time_point now = Clock::now();
    const double total = seconds_between(started, now);
    const bool rendered = first_frame_ != Clock::time_point();
    const double start_up = (rendered ? seconds_between(started, first_frame_) : total) + library_;
    const double frames = total - start_up;
    const double outside = frames - process_;
    const auto share = [frames](double part) { return frames > 0 ? 100.0 * part / frames : 0.0; };
    std::fprintf(stream,
                 "fizzle-render: timings: %.3f s in all; start-up %.3f s (of which waiting for the image library "
                 "%.3f s); then %d frame%s in "
                 "%.3f s (%.1f fps): the plug-in's frame cycle %.3f s (%.0f%%), outside it %.3f s (%.0f%%), of "
                 "which input buffers %.3f s and handing frames to the writer %.3f s\n",
                 total, start_up, library_, frames_, frames_ == 1 ? "" : "s", frames, frames > 0 ? frames_ / frames : 0.0,
                 process_, share(process_), outside, share(outside), buffers_, hand_over_);
}
