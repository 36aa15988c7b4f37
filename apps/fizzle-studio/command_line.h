// The command line "Copy command line" hands to a shell.
#pragma once

#include <string>
#include <vector>

// The words as one shell command line: plain words as they are, others in
// single quotes (a quote inside becomes '\'').
std::string shell_command(const std::vector<std::string> &words);
