// Host settings from fizzle-render's options.
#include "host_settings.h"

#include <cstdio>
#include <string>

sparkhost::Settings host_settings(const RenderOptions &options, Progress &progress) {
    sparkhost::Settings settings;
    settings.format = options.format;
    settings.pixel_aspect = float(options.pixel_aspect);
    settings.processors = options.processors;
    settings.proxy = options.proxy;
    settings.total_frames = uint32_t(options.last_frame);
    // One process renders once: no need for a private copy of the plug-in.
    settings.private_copy = false;
    settings.message_sink = [&progress](const sparkhost::Message &message) {
        progress.clear_line();
        std::string text = message.text;
        while (!text.empty() && text.back() == '\n') text.pop_back();
        const char *prefix = message.kind == sparkhost::Message::Kind::Error ? "spark error: " : "spark message: ";
        std::fprintf(stderr, "%s%s\n", prefix, text.c_str());
    };
    return settings;
}
