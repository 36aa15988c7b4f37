// Files that must be ordinary files: a FIFO, a device or a directory named
// where a file is wanted is refused at once, instead of hanging on it or
// reading from it without end, and a file is measured before it is read.
#pragma once

#include <cstdint>
#include <string>

namespace sparkhost {

// Throws Error saying what is wrong ("no such file", "is a directory",
// "is a FIFO, not a regular file", the system's message) unless path names
// a regular file (after following links).
void check_regular_file(const std::string &path);

// The whole of a regular file of at most `largest` bytes. Opened without
// waiting (a FIFO does not block the open) and checked on the open file, so
// nothing swapped in after a check is read. Throws Error as above, or when
// the file is larger than `largest`.
std::string read_regular_file(const std::string &path, std::uintmax_t largest);

}  // namespace sparkhost
