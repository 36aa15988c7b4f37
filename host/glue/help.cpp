// Help browser: builds the page address and browser command from the
// environment and starts the browser through the shell.
#include "host/glue/help.h"

#include <cstdlib>
#include <sys/wait.h>

#include "framework/messages.h"

namespace {

const char *environment_or(const char *name, const char *fallback) {
    const char *value = std::getenv(name);
    return value ? value : fallback;
}

// Cuts the extension at the last dot, unless that dot opens the name.
std::string topic_without_extension(const char *topic) {
    std::string name(topic);
    std::string::size_type dot = name.rfind('.');
    if (dot != std::string::npos && dot != 0) name.erase(dot);
    return name;
}

}  // namespace

HelpLaunch help_launch_for(const char *topic) {
    const std::string base = environment_or("DIR_QV", "/usr/local/Corvale");
    const std::string browser = environment_or("QV_HELP_BROWSER", "firefox");
    const std::string help_directory = base + "/dl/help";
    HelpLaunch launch;
    launch.address = "file:" + help_directory + "/" + topic_without_extension(topic) + ".htm";
    launch.command = browser + " -geometry +50+50 " + launch.address + " &";
    return launch;
}

int display_help_topic(const char *topic) {
    if (!topic) {
        PrintError("display_help_topic: no topic given\n");
        return 1;
    }
    const HelpLaunch launch = help_launch_for(topic);
    int status = std::system(launch.command.c_str());
    // -1: no child process; 127: the shell itself could not run. The
    // trailing "&" means a missing browser does not show up here.
    if (status == -1 || (WIFEXITED(status) && WEXITSTATUS(status) == 127)) return 1;
    return 0;
}

unsigned long *HelpCB(int, SparkInfoStruct) {
    if (display_help_topic("bubbles.htm") != 0)
        sparkError("Error in opening help file (failed to spawn netscape process)");
    return nullptr;
}
