// Connections served one request at a time by a fixed pool, each request
// read against a deadline.
#include "guarded_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

using Clock = std::chrono::steady_clock;

// Two level-triggered flags connections can wait on beside their socket:
// "connections are waiting for a worker" and "the server is stopping".
class GuardedServer::Signals {
public:
    Signals() : pressure_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), stop_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~Signals() {
        if (pressure_ >= 0) close(pressure_);
        if (stop_ >= 0) close(stop_);
    }
    int pressure_fd() const { return pressure_; }
    int stop_fd() const { return stop_; }
    void set_pressure(bool on) {
        uint64_t value = 1;
        if (on) (void)!write(pressure_, &value, sizeof value);
        else (void)!read(pressure_, &value, sizeof value);
    }
    void stop() {
        uint64_t value = 1;
        (void)!write(stop_, &value, sizeof value);
    }

private:
    int pressure_;
    int stop_;
};

namespace {

// A fixed set of workers taking connections in turn; while any waits for
// a worker, the pressure flag is up.
class Pool : public httplib::TaskQueue {
public:
    Pool(size_t workers, std::shared_ptr<GuardedServer::Signals> signals) : signals_(std::move(signals)) {
        for (size_t i = 0; i < workers; ++i) threads_.emplace_back([this] { work(); });
    }
    ~Pool() override { shutdown(); }

    void enqueue(std::function<void()> task) override {
        std::lock_guard<std::mutex> lock(mutex_);
        tasks_.push_back(std::move(task));
        if (idle_ < tasks_.size() && !pressure_) {
            pressure_ = true;
            signals_->set_pressure(true);
        }
        ready_.notify_one();
    }

    void shutdown() override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            if (stopping_ && threads_.empty()) return;
            stopping_ = true;
        }
        ready_.notify_all();
        for (std::thread &thread : threads_) thread.join();
        threads_.clear();
    }

private:
    void work() {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                ++idle_;
                ready_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
                --idle_;
                if (tasks_.empty()) return;  // stopping, nothing left
                task = std::move(tasks_.front());
                tasks_.pop_front();
                if (pressure_ && tasks_.size() <= idle_) {
                    pressure_ = false;
                    signals_->set_pressure(false);
                }
            }
            task();
        }
    }

    std::shared_ptr<GuardedServer::Signals> signals_;
    std::mutex mutex_;
    std::condition_variable ready_;
    std::deque<std::function<void()>> tasks_;
    std::vector<std::thread> threads_;
    size_t idle_ = 0;
    bool pressure_ = false;
    bool stopping_ = false;
};

// One connection's socket, read through a small buffer against the
// current request's deadline.
class DeadlineStream : public httplib::Stream {
public:
    DeadlineStream(int sock, const GuardedServer::Signals &signals, time_t read_timeout, time_t write_timeout,
                   const GuardedServer::Limits &limits)
        : sock_(sock), signals_(signals), read_timeout_(std::chrono::seconds(read_timeout)),
          write_timeout_(std::chrono::seconds(write_timeout)), limits_(limits) {}

    // Waits for the next request's first byte; false when the connection
    // should end instead (closed, idle too long, stopping, or others
    // waiting). A new connection's first request is read at once: its
    // bytes may be a moment behind, and it gets the grace time of a head.
    bool next_request(time_t keep_alive_seconds, bool first) {
        if (!first && offset_ == filled_) {
            pollfd fds[3] = {{sock_, POLLIN, 0}, {signals_.stop_fd(), POLLIN, 0}, {signals_.pressure_fd(), POLLIN, 0}};
            if (poll(fds, 3, int(keep_alive_seconds * 1000)) <= 0 || fds[0].revents == 0) return false;
        }
        started_ = Clock::now();
        head_read_ = false;
        return true;
    }
    void head_read() { head_read_ = true; }
    bool closing = false;

    bool is_readable() const override { return offset_ < filled_ || wait(POLLIN); }
    bool is_writable() const override { return wait(POLLOUT); }

    ssize_t read(char *data, size_t size) override {
        if (offset_ == filled_) {
            if (!wait(POLLIN)) return -1;
            const ssize_t got = recv(sock_, buffer_, sizeof buffer_, 0);
            if (got <= 0) return got;
            offset_ = 0;
            filled_ = size_t(got);
        }
        const size_t n = std::min(size, filled_ - offset_);
        std::memcpy(data, buffer_ + offset_, n);
        offset_ += n;
        return ssize_t(n);
    }

    ssize_t write(const char *data, size_t size) override {
        if (!wait(POLLOUT)) return -1;
        return send(sock_, data, size, MSG_NOSIGNAL);
    }

    void get_remote_ip_and_port(std::string &ip, int &port) const override { address(getpeername, ip, port); }
    void get_local_ip_and_port(std::string &ip, int &port) const override { address(getsockname, ip, port); }
    socket_t socket() const override { return sock_; }

private:
    // Waits until the socket is ready for events, within the library's
    // timeouts and, for reading, the request's deadline.
    bool wait(short events) const {
        const bool reading = events == POLLIN;
        const Clock::time_point now = Clock::now();
        Clock::time_point until = now + (reading ? read_timeout_ : write_timeout_);
        if (reading) until = std::min(until, started_ + limits_.request_read);
        for (;;) {
            const Clock::time_point now = Clock::now();
            if (now >= until) return false;
            // A head still arriving after the grace time gives way to waiting connections.
            const bool yielding = reading && !head_read_ && now >= started_ + limits_.grace;
            Clock::time_point wake = until;
            if (reading && !head_read_ && !yielding) wake = std::min(until, started_ + limits_.grace);
            pollfd fds[3] = {{sock_, events, 0}, {signals_.stop_fd(), POLLIN, 0}, {signals_.pressure_fd(), POLLIN, 0}};
            const auto timeout = std::chrono::duration_cast<std::chrono::milliseconds>(wake - now).count() + 1;
            const int ready = poll(fds, yielding ? 3 : 2, int(timeout));
            if (ready < 0) return false;
            if (fds[0].revents) return true;
            if (fds[1].revents || (yielding && fds[2].revents)) return false;
        }
    }

    template <class Query>
    void address(Query query, std::string &ip, int &port) const {
        sockaddr_storage storage = {};
        socklen_t length = sizeof storage;
        ip.clear();
        port = 0;
        if (query(sock_, reinterpret_cast<sockaddr *>(&storage), &length) != 0) return;
        char text[INET6_ADDRSTRLEN] = {};
        if (storage.ss_family == AF_INET) {
            const auto *in = reinterpret_cast<const sockaddr_in *>(&storage);
            inet_ntop(AF_INET, &in->sin_addr, text, sizeof text);
            port = ntohs(in->sin_port);
        } else if (storage.ss_family == AF_INET6) {
            const auto *in = reinterpret_cast<const sockaddr_in6 *>(&storage);
            inet_ntop(AF_INET6, &in->sin6_addr, text, sizeof text);
            port = ntohs(in->sin6_port);
        }
        ip = text;
    }

    int sock_;
    const GuardedServer::Signals &signals_;
    std::chrono::milliseconds read_timeout_, write_timeout_;
    const GuardedServer::Limits &limits_;
    Clock::time_point started_ = Clock::now();
    bool head_read_ = false;
    char buffer_[4096];
    size_t offset_ = 0, filled_ = 0;
};

// The stream of the request this thread is answering.
thread_local DeadlineStream *current_stream = nullptr;

}  // namespace

void GuardedServer::close_after_response() {
    if (current_stream) current_stream->closing = true;
}

GuardedServer::GuardedServer(const Limits &limits) : limits_(limits), signals_(std::make_shared<Signals>()) {
    new_task_queue = [this] { return new Pool(limits_.workers, signals_); };
}

GuardedServer::~GuardedServer() = default;

void GuardedServer::halt() {
    signals_->stop();
    stop();
}

bool GuardedServer::process_and_close_socket(socket_t sock) {
    const int on = 1;
    setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    DeadlineStream stream(sock, *signals_, read_timeout_sec_, write_timeout_sec_, limits_);
    current_stream = &stream;
    bool ok = false;
    for (size_t left = keep_alive_max_count_; left > 0 && svr_sock_ != INVALID_SOCKET; --left) {
        if (!stream.next_request(keep_alive_timeout_sec_, left == keep_alive_max_count_)) break;
        bool closed = false;
        ok = process_request(stream, left == 1, closed, [&stream](httplib::Request &) { stream.head_read(); });
        if (!ok || closed || stream.closing) break;
    }
    current_stream = nullptr;
    shutdown(sock, SHUT_RDWR);
    close(sock);
    return ok;
}
