// Runs fizzle-render as a program in a fresh directory and reads back what it printed and wrote.
#ifndef TESTS_APPS_RENDER_RUN_H
#define TESTS_APPS_RENDER_RUN_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct RunResult {
    int exit_code = -1;
    std::string out, err;
};

inline std::string slurp(const std::filesystem::path &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class RenderRun : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "fizzle-render-XXXXXX").string();
        dir_ = mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string path(const std::string &name) const { return (dir_ / name).string(); }

    // environment: assignments put before the command, e.g. "A=1 B=2".
    RunResult run(const std::vector<std::string> &arguments, const std::string &environment = "") const {
        std::string command = environment + " FIZZLE_NO_PAUSE=1 " + quoted(FIZZLE_RENDER_PATH);
        for (const std::string &argument : arguments) command += " " + quoted(argument);
        const std::string out = (dir_ / "..stdout").string(), err = (dir_ / "..stderr").string();
        command += " >" + quoted(out) + " 2>" + quoted(err) + " </dev/null";
        const int status = std::system(command.c_str());
        RunResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(out), slurp(err)};
        std::filesystem::remove(out);
        std::filesystem::remove(err);
        return result;
    }

    // Files the runs left in the directory.
    int files() const {
        int count = 0;
        for (const auto &entry : std::filesystem::directory_iterator(dir_)) count += entry.is_regular_file();
        return count;
    }

    // Fails with one line on stderr naming every needle, and writes nothing.
    void expect_refused(const std::vector<std::string> &arguments, const std::vector<std::string> &needles,
                        const std::string &environment = "") {
        const int before = files();
        const RunResult result = run(arguments, environment);
        EXPECT_NE(result.exit_code, 0);
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        for (const std::string &needle : needles)
            EXPECT_NE(result.err.find(needle), std::string::npos) << "wanted '" << needle << "' in: " << result.err;
        EXPECT_EQ(files(), before);
    }

    static std::string quoted(const std::string &text) {
        std::string result = "'";
        for (char c : text) result += c == '\'' ? "'\\''" : std::string(1, c);
        return result + "'";
    }

    std::filesystem::path dir_;
};

#endif  // TESTS_APPS_RENDER_RUN_H
