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

#include "host/glue/expected_controls.h"
#include "host/glue/help.h"

namespace {

std::string read_file(const std::string &path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

// What the user sees of a title: the text before the value, without the trailing blanks.
std::string on_screen(std::string title) {
    title = title.substr(0, title.find(": %"));
    return title.erase(title.find_last_not_of(' ') + 1);
}

}  // namespace

TEST(HelpLaunch, DefaultsWhenUnsetAndTheTopicLosesOnlyAnExtensionAfterItsFirstCharacter) {
    unsetenv("DIR_QV");
    unsetenv("QV_HELP_BROWSER");
    const HelpLaunch launch = help_launch_for("bubbles.htm");
    EXPECT_EQ(launch.address, "file:/usr/local/Corvale/dl/help/bubbles.htm");
    EXPECT_EQ(launch.command, "firefox -geometry +50+50 file:/usr/local/Corvale/dl/help/bubbles.htm &");
    EXPECT_EQ(help_launch_for(".hidden").address, "file:/usr/local/Corvale/dl/help/.hidden.htm");
    EXPECT_EQ(help_launch_for("a.b.html").address, "file:/usr/local/Corvale/dl/help/a.b.htm");
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

    setenv("DIR_QV", root.c_str(), 1);
    setenv("QV_HELP_BROWSER", browser.c_str(), 1);
    EXPECT_EQ(HelpCB(1, SparkInfoStruct{}), nullptr);
    for (int i = 0; i < 200 && !fs::exists(record); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::string address = "file:" + help_dir + "/bubbles.htm";
    EXPECT_EQ(read_file(record), "-geometry\n+50+50\n" + address + "\n") << "the browser was not started as asked";

    using namespace expected_controls;
    const std::string page = read_file(address.substr(5));
    std::vector<std::string> names = {"Bubbles page", "Forces page", "Colour page", "Light page"};
    for (const Number &n : kFloats) names.push_back(on_screen(n.title));
    for (const Number &n : kIntegers) names.push_back(on_screen(n.title));
    for (const Switch &s : kSwitches) names.push_back(on_screen(s.title));
    for (const Button &b : kButtons) names.push_back(on_screen(b.title));
    for (const List &l : kLists)
        for (const std::string &entry : l.entries) names.push_back(on_screen(entry));
    for (const auto &s : kStrings) names.push_back(s.second);
    for (const std::string &name : names) EXPECT_NE(page.find(name), std::string::npos) << "page lacks \"" << name << '"';

    // Everything the page links locally must be installed beside it.
    std::regex link("(?:href|src)=\"([^\"#:]+)\"");
    for (auto it = std::sregex_iterator(page.begin(), page.end(), link); it != std::sregex_iterator(); ++it)
        EXPECT_TRUE(fs::exists(source_help + "/" + std::string((*it)[1]))) << "missing linked file " << (*it)[1];
    fs::remove_all(root);
}
