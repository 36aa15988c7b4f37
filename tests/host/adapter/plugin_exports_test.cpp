// The plug-in's dynamic symbols, as nm lists them: it defines the Spark
// interface and nothing else, and leaves the host's spark* and GL functions
// to the process that loads it.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace {

// The names of the plug-in's dynamic symbols that nm lists with option.
std::set<std::string> dynamic_symbols(const char *option) {
    std::string command = std::string("nm -D ") + option + " '" + FIZZLE_PLUGIN_PATH + "'";
    std::set<std::string> names;
    FILE *pipe = popen(command.c_str(), "r");
    if (!pipe) return names;
    char line[512];
    while (std::fgets(line, sizeof line, pipe)) {
        std::istringstream fields(line);
        std::string field, last;
        while (fields >> field) last = field;
        if (!last.empty()) names.insert(last);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return names;
}

}  // namespace

TEST(PluginExports, DefinesTheSparkInterfaceAndNothingElse) {
    const std::regex interface(
        "Spark(Initialise|UnInitialise|Clips|MemoryTempBuffers|ProcessStart|Process|Overlay|"
        "Interact|ChannelEditor|SimulateClips|Simulate|StateExport|StateImport)|"
        "Spark(Float|Int|Boolean|Push|Pup|Color|String)[0-9]+");
    std::set<std::string> defined = dynamic_symbols("--defined-only");
    for (const std::string &name : defined)
        EXPECT_TRUE(std::regex_match(name, interface)) << name << " is exported";
    for (const char *entry : {"SparkInitialise", "SparkProcess", "SparkUnInitialise", "SparkOverlay",
                              "SparkSimulate", "SparkStateExport", "SparkStateImport", "SparkPup33"})
        EXPECT_EQ(defined.count(entry), 1u) << entry << " is missing";
}

TEST(PluginExports, LeavesHostAndGlFunctionsToTheLoadingProcess) {
    std::set<std::string> undefined = dynamic_symbols("--undefined-only");
    for (const char *name : {"sparkControlUpdate", "sparkMpFork", "sparkGetCurveValuef", "glBegin"})
        EXPECT_EQ(undefined.count(name), 1u) << name << " is not left undefined";
}
