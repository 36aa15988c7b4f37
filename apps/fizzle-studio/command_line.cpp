// Quoting for the shell, so that a pasted command gets the same words.
#include "command_line.h"

std::string shell_command(const std::vector<std::string> &words) {
    static const char *plain_characters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./=:,+%@";
    std::string line;
    for (const std::string &word : words) {
        if (!line.empty()) line += ' ';
        if (!word.empty() && word.find_first_not_of(plain_characters) == std::string::npos) {
            line += word;
            continue;
        }
        line += '\'';
        for (char c : word) line += c == '\'' ? std::string("'\\''") : std::string(1, c);
        line += '\'';
    }
    return line;
}
