// Console reports of the framework: one line to standard error, for the
// person at the host's terminal.
#pragma once

void PrintError(const char *format, ...) __attribute__((format(printf, 1, 2)));
