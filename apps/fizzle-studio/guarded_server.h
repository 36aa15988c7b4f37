// cpp-httplib's server with bounds on what one connection can hold. The
// library gives every connection a worker thread for as long as it stays
// open, and its read timeout restarts with every byte: a client sending a
// byte a second kept a worker for hours, and eight of them stopped the
// studio. Here each request must arrive whole within a time limit, and
// when connections wait for a worker, idle ones and ones still sending
// their request line give way to them.
#pragma once

#include <chrono>
#include <memory>

#include <httplib.h>

class GuardedServer : public httplib::Server {
public:
    struct Limits {
        size_t workers = 16;
        // Reading one request, head and body, from its first byte.
        std::chrono::milliseconds request_read = std::chrono::seconds(10);
        // How long a request's head may take before it gives way to waiting connections.
        std::chrono::milliseconds grace = std::chrono::milliseconds(250);
    };
    explicit GuardedServer(const Limits &limits);
    ~GuardedServer() override;

    // Stops listening and wakes the connections waiting for their next request.
    void halt();
    // From a handler: the connection ends after this answer (a refused
    // request's body is left unread, so nothing after it can be trusted).
    static void close_after_response();

    class Signals;

private:
    bool process_and_close_socket(socket_t sock) override;

    Limits limits_;
    std::shared_ptr<Signals> signals_;
};
