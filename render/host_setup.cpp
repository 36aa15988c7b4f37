// Inputs and plug-in set-up from fizzle-render's options.
#include "render/host_setup.h"

#include <filesystem>

#include "render/control_options.h"
#include "sparkhost/core/error.h"

void attach_inputs(sparkhost::Host &host, const RenderOptions &options) {
    for (int clip = 0; clip < sparkhost::kClipCount; ++clip)
        if (!options.inputs[clip].empty()) host.set_input_file(clip, options.inputs[clip]);
}

sparkhost::ControlTable &plugin_controls(sparkhost::Host &host) { return host.controls(); }

void configure_plugin(sparkhost::Host &host, const RenderOptions &options) {
    // The host's file browser answers "Import Amplitude File" with this file.
    host.settings().browser_answer = options.import_amplitude;
    const size_t messages_before = host.messages().size();
    apply_control_options(host.controls(), options, [&host](sparkhost::Control &control, const double *value) {
        if (value)
            host.set_control(control.number(), *value);
        else
            host.press_control(control.number());
    });
    // The plug-in reports an unreadable or malformed amplitude file to the
    // user; here that ends the run before any frame is written.
    if (!options.import_amplitude.empty()) {
        const std::vector<sparkhost::Message> messages = host.messages();
        for (size_t i = messages_before; i < messages.size(); ++i)
            throw sparkhost::Error("--import-amplitude: '" + options.import_amplitude + "': " + messages[i].text);
    }
}

std::string plugin_path(const RenderOptions &options) {
    if (!options.plugin.empty()) return options.plugin;
    std::error_code error;
    std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return "fizzle.spark";
    return (self.parent_path() / "fizzle.spark").string();
}
