// Signal handlers behind stop requests; they only touch async-signal-safe state.
#include "stop_request.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "sparkhost/files/atomic_file.h"

namespace {

std::atomic<int> requested{0};
const char *program_name = "";

void write_text(const char *text) {
    ssize_t ignored = write(STDERR_FILENO, text, std::strlen(text));
    (void)ignored;
}

void on_signal(int signal) {
    int expected = 0;
    if (requested.compare_exchange_strong(expected, signal)) return;
    // A second signal: whatever is being written is dropped.
    sparkhost::remove_temporaries_in_flight();
    write_text("\n");
    write_text(program_name);
    write_text(": stopped at once by ");
    write_text(stop_signal_name(signal));
    write_text(", the frame in progress was not written\n");
    _exit(stopped_exit_code(signal));
}

}  // namespace

void install_stop_handlers(const char *program) {
    program_name = program;
    struct sigaction action {};
    action.sa_handler = on_signal;
    sigemptyset(&action.sa_mask);
    // Slow calls (reads, waits) resume: the request is checked between frames.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int stop_signal() { return requested.load(); }

int stopped_exit_code(int signal) { return 128 + signal; }

const char *stop_signal_name(int signal) { return signal == SIGINT ? "SIGINT" : "SIGTERM"; }
