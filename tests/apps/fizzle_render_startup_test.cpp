// fizzle-render's start-up: the image library (hundreds of shared libraries)
// is loaded only by runs that read or write image files, and one that
// cannot be loaded is named in one line.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "render_run.h"

namespace fs = std::filesystem;

class FizzleRenderStartup : public RenderRun {
protected:
    // What the dynamic loader reported opening during one run.
    std::string libraries_opened(const std::vector<std::string> &arguments) {
        const fs::path log = fs::path(path("ld-log"));
        fs::remove_all(log);
        fs::create_directory(log);
        run(arguments, "LD_DEBUG=files LD_DEBUG_OUTPUT=" + quoted((log / "ld").string()));
        std::string text;
        for (const auto &entry : fs::directory_iterator(log)) text += slurp(entry.path());
        fs::remove_all(log);
        return text;
    }
};

TEST_F(FizzleRenderStartup, ArgumentErrorsHelpAndListingsNeverLoadTheImageLibrary) {
    // The sanitizer run preloads the image library into every process.
    if (std::getenv("FIZZLE_IMAGE_LIBRARY_PRELOADED")) GTEST_SKIP() << "the image library is preloaded";
    const std::string out = path("f.%04d.png");
    const std::vector<std::vector<std::string>> cases = {
        {"--bogus"}, {"--help"}, {"--frames", "3-1", "-o", out}, {"--list-presets"}, {"--preset", "Nosuch", "-o", out},
    };
    for (const std::vector<std::string> &arguments : cases) {
        const std::string opened = libraries_opened(arguments);
        EXPECT_NE(opened.find("libstdc++"), std::string::npos) << arguments.front() << ": no loader log";
        EXPECT_EQ(opened.find("OpenImageIO"), std::string::npos) << arguments.front();
        EXPECT_EQ(opened.find("sparkhost-imageio"), std::string::npos) << arguments.front();
    }
    // A run that writes a frame does load it.
    const std::string opened = libraries_opened({"--frames", "1", "--size", "32x24", "-o", out});
    EXPECT_NE(opened.find("OpenImageIO"), std::string::npos);
    EXPECT_TRUE(fs::exists(path("f.0001.png")));
}

TEST_F(FizzleRenderStartup, AnImageModuleThatCannotBeLoadedIsNamedInOneLineAndNothingIsWritten) {
    std::ofstream(path("not-a-module.so")) << "not a shared object";
    const std::string frames = path("f.%04d.png");
    for (const std::string &module : {path("missing-imageio.so"), path("not-a-module.so")}) {
        SCOPED_TRACE(module);
        const std::string environment = "SPARKHOST_IMAGE_IO=" + quoted(module);
        const std::string name = fs::path(module).filename().string();
        expect_refused({"--frames", "1-2", "--size", "32x24", "-o", frames}, {name}, environment);
        expect_refused({"--frames", "1", "--size", "32x24", "--scene", path("plate.png"), "-o", frames}, {name},
                       environment);
        expect_refused({"--frames", "1", "--size", "32x24", "--save-setup", path("s.json"), "-o", frames}, {name},
                       environment);
    }
}
