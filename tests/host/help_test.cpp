// Help button: the page address and browser command built from the
// environment, a real launch through a stand-in browser, and the page itself.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "host/help.h"

namespace {

// Sets (or, with null, removes) an environment variable for one scope.
class ScopedEnv {
public:
    ScopedEnv(const char *name, const char *value) : name_(name) {
        const char *old = std::getenv(name);
        had_ = old != nullptr;
        if (had_) old_ = old;
        if (value) setenv(name, value, 1);
        else unsetenv(name);
    }
    ~ScopedEnv() {
        if (had_) setenv(name_.c_str(), old_.c_str(), 1);
        else unsetenv(name_.c_str());
    }

private:
    std::string name_, old_;
    bool had_;
};

std::string read_file(const std::string &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

bool copy_file(const std::string &from, const std::string &to) {
    std::ifstream in(from, std::ios::binary);
    std::ofstream out(to, std::ios::binary);
    out << in.rdbuf();
    return bool(in) && bool(out);
}

bool exists(const std::string &path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

// Every control's title format as the control table gives it; what the
// user sees is the text before the value and without the trailing blanks.
const char *const kTitleFormats[] = {
    "1: Background", "2: Birth", "3: Burst/Gather", "4: Reflection",
    "Restart   ", "Restart+PreRoll   ", "Do PreRoll   ", "PreRoll: %d", "Advance   ",
    "Left X: %.2f", "Left Y: %.2f", "Lifetime: %.2f", "TimeMaxSize: %d", "Use Birth Matte   ",
    "Density: %.2f", "Position Var: %.2f", "Right X: %.2f", "Right Y: %.2f",
    "Initial Velocity: %.2f", "Velocity Var: %.2f", "Vel Dir: %.2f",
    "Growth Mode: Assorted  ", "Growth Mode: Shrinking  ", "Growth Mode: Variable Growth  ",
    "Growth Mode: Linear Growth  ", "Bubble Size: %.2f", "Bubble Size Var: %.2f", "Seed: %d",
    "Blend: %.2f", "Clear Overlay",
    "Demos: Basic  ", "Demos: Soap  ", "Demos: Champagne  ", "Demos: Under Water  ",
    "Demos: Floating  ", "Demos: Bubbly  ", "Demos: Swirly  ", "Demos: Gathering  ",
    "Demos: Flurry  ", "Demos: Pipe  ", "Help", "Reset",
    "FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32", "Auto Preview",
    "Turbulence   ", "SwirlDens: %.2f", "SwirlAmp: %.2f", "SwlMaxTim: %.2f", "Friction   ",
    "Friction: %.3f", "Gravity   ", "Gravity: %.2f", "GravAngle: %.2f", "Bubbles Burst   ",
    "Burst Probability: %.2f", "Burst Quantity: %.2f", "Burst Extent: %.2f", "Afterlife: %d",
    "Congregate   ", "ColourVar: %.2f", "MonoVar: %.2f", "BubbleColour R: %.2f",
    "BubbleColour G: %.2f", "BubbleColour B: %.2f", "Fade Mode: Col+Dens  ", "Fade Mode: Colour  ",
    "Fade Mode: Density  ", "Light   ", "Light Colour R: %.2f", "Light Colour G: %.2f",
    "Light Colour B: %.2f", "Reflections   ", "Ref Intensity: %.2f", "Light Source X: %.2f",
    "Light Source Y: %.2f", "Light Inten: %.2f", "Light Spread: %.2f", "Glisten Tight: %.2f",
    "Light Target X: %.2f", "Light Target Y: %.2f", "Light Z: %.3f", "Min. Bright: %.2f",
    "Shine: %.2f", "Highlight: %.2f", "Import Amplitude File",
};
const char *const kPages[] = {"Bubbles", "Forces", "Colour", "Light"};

std::string on_screen(const std::string &format) {
    std::string title = format.substr(0, format.find(": %"));
    title.erase(title.find_last_not_of(' ') + 1);
    return title;
}

}  // namespace

TEST(HelpLaunch, DefaultsWhenNoVariableIsSet) {
    ScopedEnv base("DIR_QV", nullptr), browser("QV_HELP_BROWSER", nullptr);
    HelpLaunch launch = help_launch_for("bubbles.htm");
    EXPECT_EQ(launch.address, "file:/usr/local/Corvale/dl/help/bubbles.htm");
    EXPECT_EQ(launch.command, "firefox -geometry +50+50 file:/usr/local/Corvale/dl/help/bubbles.htm &");
}

TEST(HelpLaunch, VariablesChooseInstallDirectoryAndBrowser) {
    ScopedEnv base("DIR_QV", "/opt/fx"), browser("QV_HELP_BROWSER", "mybrowser --new");
    HelpLaunch launch = help_launch_for("bubbles.htm");
    EXPECT_EQ(launch.address, "file:/opt/fx/dl/help/bubbles.htm");
    EXPECT_EQ(launch.command, "mybrowser --new -geometry +50+50 file:/opt/fx/dl/help/bubbles.htm &");
}

TEST(HelpLaunch, TopicLosesOnlyAnExtensionAfterItsFirstCharacter) {
    ScopedEnv base("DIR_QV", "/d"), browser("QV_HELP_BROWSER", nullptr);
    EXPECT_EQ(help_launch_for("bubbles").address, "file:/d/dl/help/bubbles.htm");
    EXPECT_EQ(help_launch_for(".hidden").address, "file:/d/dl/help/.hidden.htm");
    EXPECT_EQ(help_launch_for("a.b.html").address, "file:/d/dl/help/a.b.htm");
    EXPECT_EQ(help_launch_for("").address, "file:/d/dl/help/.htm");
}

TEST(HelpLaunch, LongEnvironmentValuesAreKeptWhole) {
    const std::string long_base = "/" + std::string(20000, 'x');
    ScopedEnv base("DIR_QV", long_base.c_str()), browser("QV_HELP_BROWSER", nullptr);
    HelpLaunch launch = help_launch_for(std::string(5000, 't').c_str());
    EXPECT_EQ(launch.address, "file:" + long_base + "/dl/help/" + std::string(5000, 't') + ".htm");
}

TEST(HelpLaunch, NullTopicFailsWithoutRunningAnything) {
    EXPECT_EQ(display_help_topic(nullptr), 1);
}

// Installs the help pages as the install rule would, starts a stand-in
// browser that records its arguments, and checks what it was asked to show.
TEST(HelpPage, HelpButtonOpensAnInstalledPageNamingEveryControl) {
    char pattern[] = "/tmp/fizzle_help_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string root = pattern;
    const std::string help_dir = root + "/dl/help";
    ASSERT_EQ(system(("mkdir -p '" + help_dir + "'").c_str()), 0);
    const std::string source_help = std::string(FIZZLE_TEST_DATA) + "/../../help";
    ASSERT_TRUE(copy_file(source_help + "/bubbles.htm", help_dir + "/bubbles.htm"));

    const std::string browser = root + "/browser.sh";
    const std::string record = root + "/browser.args";
    {
        std::ofstream script(browser);
        script << "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" << record << ".tmp' && mv '" << record << ".tmp' '"
               << record << "'\n";
    }
    ASSERT_EQ(chmod(browser.c_str(), 0755), 0);

    ScopedEnv base("DIR_QV", root.c_str()), browser_env("QV_HELP_BROWSER", browser.c_str());
    SparkInfoStruct info{};
    EXPECT_EQ(HelpCB(1, info), nullptr);
    for (int i = 0; i < 200 && !exists(record); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_TRUE(exists(record)) << "the browser was not started";

    const std::string address = "file:" + help_dir + "/bubbles.htm";
    EXPECT_EQ(read_file(record), "-geometry\n+50+50\n" + address + "\n");

    const std::string page = read_file(address.substr(5));
    ASSERT_FALSE(page.empty());
    for (const char *format : kTitleFormats)
        EXPECT_NE(page.find(on_screen(format)), std::string::npos) << "page does not name \"" << on_screen(format) << "\"";
    for (const char *page_title : kPages)
        EXPECT_NE(page.find(std::string(page_title) + " page"), std::string::npos) << page_title;

    // Everything the page links locally must be installed beside it.
    std::regex link("(?:href|src)=\"([^\"#:]+)\"");
    for (auto it = std::sregex_iterator(page.begin(), page.end(), link); it != std::sregex_iterator(); ++it) {
        const std::string target = (*it)[1];
        EXPECT_TRUE(exists(source_help + "/" + target)) << "missing linked file " << target;
    }
    EXPECT_EQ(system(("rm -rf '" + root + "'").c_str()), 0);
}
