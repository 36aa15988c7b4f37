// Help button: the page address and browser command built from the
// environment, a real launch through a stand-in browser, and the page itself.
#include <gtest/gtest.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "expected_controls.h"
#include "host/help.h"

namespace {

// Sets (or, with null, removes) an environment variable for one scope.
class ScopedEnv {
public:
    ScopedEnv(const char *name, const char *value) : name_(name), had_(std::getenv(name) != nullptr) {
        if (had_) old_ = std::getenv(name);
        value ? setenv(name, value, 1) : unsetenv(name);
    }
    ~ScopedEnv() { had_ ? setenv(name_.c_str(), old_.c_str(), 1) : unsetenv(name_.c_str()); }

private:
    std::string name_;
    bool had_;
    std::string old_;
};

std::string read_file(const std::string &path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// Every title format of the control table; what the user sees is the text
// before the value and without the trailing blanks.
std::vector<std::string> title_formats() {
    using namespace expected_controls;
    std::vector<std::string> formats;
    for (const Number &n : kFloats) formats.push_back(n.title);
    for (const Number &n : kIntegers) formats.push_back(n.title);
    for (const Switch &s : kSwitches) formats.push_back(s.title);
    for (const Button &b : kButtons) formats.push_back(b.title);
    for (const List &l : kLists) formats.insert(formats.end(), l.entries.begin(), l.entries.end());
    for (const auto &s : kStrings) formats.push_back(s.second);
    return formats;
}
const char *const kPages[] = {"Bubbles", "Forces", "Colour", "Light"};

std::string on_screen(const std::string &format) {
    std::string title = format.substr(0, format.find(": %"));
    title.erase(title.find_last_not_of(' ') + 1);
    return title;
}

}  // namespace

TEST(HelpLaunch, VariablesChooseInstallDirectoryAndBrowserWithDefaultsWhenUnset) {
    struct Case {
        const char *base, *browser, *address, *command;
    } cases[] = {
        {nullptr, nullptr, "file:/usr/local/Corvale/dl/help/bubbles.htm",
         "firefox -geometry +50+50 file:/usr/local/Corvale/dl/help/bubbles.htm &"},
        {"/opt/fx", "mybrowser --new", "file:/opt/fx/dl/help/bubbles.htm",
         "mybrowser --new -geometry +50+50 file:/opt/fx/dl/help/bubbles.htm &"},
    };
    for (const Case &c : cases) {
        ScopedEnv base("DIR_QV", c.base), browser("QV_HELP_BROWSER", c.browser);
        HelpLaunch launch = help_launch_for("bubbles.htm");
        EXPECT_EQ(launch.address, c.address);
        EXPECT_EQ(launch.command, c.command);
    }
}

TEST(HelpLaunch, TopicLosesOnlyAnExtensionAfterItsFirstCharacterAndLongValuesStayWhole) {
    ScopedEnv base("DIR_QV", "/d"), browser("QV_HELP_BROWSER", nullptr);
    EXPECT_EQ(help_launch_for("bubbles").address, "file:/d/dl/help/bubbles.htm");
    EXPECT_EQ(help_launch_for(".hidden").address, "file:/d/dl/help/.hidden.htm");
    EXPECT_EQ(help_launch_for("a.b.html").address, "file:/d/dl/help/a.b.htm");
    EXPECT_EQ(help_launch_for("").address, "file:/d/dl/help/.htm");
    EXPECT_EQ(display_help_topic(nullptr), 1);  // fails without running anything

    const std::string long_base = "/" + std::string(20000, 'x');
    ScopedEnv long_env("DIR_QV", long_base.c_str());
    EXPECT_EQ(help_launch_for(std::string(5000, 't').c_str()).address,
              "file:" + long_base + "/dl/help/" + std::string(5000, 't') + ".htm");
}

// Installs the help pages as the install rule would, starts a stand-in
// browser that records its arguments, and checks what it was asked to show.
TEST(HelpPage, HelpButtonOpensAnInstalledPageNamingEveryControl) {
    namespace fs = std::filesystem;
    char pattern[] = "/tmp/fizzle_help_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    const std::string root = pattern, help_dir = root + "/dl/help";
    const std::string source_help = std::string(FIZZLE_TEST_DATA) + "/../../help";
    fs::create_directories(help_dir);
    fs::copy_file(source_help + "/bubbles.htm", help_dir + "/bubbles.htm");

    const std::string browser = root + "/browser.sh", record = root + "/browser.args";
    std::ofstream(browser) << "#!/bin/sh\nprintf '%s\\n' \"$@\" > '" << record << ".tmp' && mv '" << record
                           << ".tmp' '" << record << "'\n";
    fs::permissions(browser, fs::perms::owner_all);

    ScopedEnv base("DIR_QV", root.c_str()), browser_env("QV_HELP_BROWSER", browser.c_str());
    SparkInfoStruct info{};
    EXPECT_EQ(HelpCB(1, info), nullptr);
    for (int i = 0; i < 200 && !fs::exists(record); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_TRUE(fs::exists(record)) << "the browser was not started";

    const std::string address = "file:" + help_dir + "/bubbles.htm";
    EXPECT_EQ(read_file(record), "-geometry\n+50+50\n" + address + "\n");

    const std::string page = read_file(address.substr(5));
    ASSERT_FALSE(page.empty());
    for (const std::string &format : title_formats())
        EXPECT_NE(page.find(on_screen(format)), std::string::npos) << "page does not name \"" << on_screen(format) << "\"";
    for (const char *page_title : kPages)
        EXPECT_NE(page.find(std::string(page_title) + " page"), std::string::npos) << page_title;

    // Everything the page links locally must be installed beside it.
    std::regex link("(?:href|src)=\"([^\"#:]+)\"");
    for (auto it = std::sregex_iterator(page.begin(), page.end(), link); it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(fs::exists(source_help + "/" + std::string((*it)[1]))) << "missing linked file " << (*it)[1];
    fs::remove_all(root);
}
