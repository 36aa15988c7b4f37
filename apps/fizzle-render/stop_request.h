// SIGINT and SIGTERM for a program that writes files: the first signal asks
// it to stop at the next safe point, a second one ends it at once. Either
// way no temporary output file is left behind.
#pragma once

// Installs the handlers; program names the process in the message a second
// signal prints (it must outlive the process, e.g. a string literal).
void install_stop_handlers(const char *program);

// The signal that asked for a stop, 0 while none has.
int stop_signal();

// The exit status of a program stopped by signal: 130 for SIGINT, 143 for
// SIGTERM.
int stopped_exit_code(int signal);

// "SIGINT" or "SIGTERM".
const char *stop_signal_name(int signal);
