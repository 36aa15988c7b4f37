// Stopping a render part-way and resuming it with --skip-existing.
#include "resume.h"

#include <cstdio>
#include <string>

#include "stop_request.h"

void report_stop(int signal, const RenderOptions &options, int last_done) {
    const std::string frames = std::to_string(options.first_frame) + "-" + std::to_string(options.last_frame);
    if (last_done < options.first_frame)
        std::fprintf(stderr, "fizzle-render: stopped by %s before frame %d of %s\n", stop_signal_name(signal),
                     options.first_frame, frames.c_str());
    else
        std::fprintf(stderr,
                     "fizzle-render: stopped by %s after frame %d of %s (frames %d-%d are complete; "
                     "--skip-existing resumes)\n",
                     stop_signal_name(signal), last_done, frames.c_str(), options.first_frame, last_done);
}
