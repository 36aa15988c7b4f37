// The studio server's bounds on connections: slow or idle clients cannot
// hold the workers others need, and stopping does not wait for them.
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "apps/fizzle-studio/guarded_server.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class StudioConnections : public ::testing::Test {
protected:
    void SetUp() override {
        GuardedServer::Limits limits;
        limits.workers = 4;
        limits.request_read = 1500ms;
        limits.grace = 100ms;
        server_ = std::make_unique<GuardedServer>(limits);
        server_->set_keep_alive_timeout(30);
        server_->Get("/ping", [](const httplib::Request &, httplib::Response &response) {
            response.set_content("pong", "text/plain");
        });
        port_ = server_->bind_to_any_port("127.0.0.1");
        ASSERT_GT(port_, 0);
        serving_ = std::thread([this] { server_->listen_after_bind(); });
    }
    void TearDown() override {
        server_->halt();
        if (serving_.joinable()) serving_.join();
        for (int sock : clients_) close(sock);
    }

    // A connection closed when the test ends.
    int connect_client() {
        const int sock = open_connection();
        clients_.push_back(sock);
        return sock;
    }
    int open_connection() {
        const int sock = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(uint16_t(port_));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(connect(sock, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        return sock;
    }

    // Whether the answer to a whole request, sent after a pause, comes within the wait.
    bool answered(std::chrono::milliseconds wait, std::chrono::milliseconds pause = 0ms) {
        const int sock = connect_client();
        std::this_thread::sleep_for(pause);
        const std::string request = "GET /ping HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
        if (send(sock, request.data(), request.size(), MSG_NOSIGNAL) != ssize_t(request.size())) return false;
        pollfd ready = {sock, POLLIN, 0};
        if (poll(&ready, 1, int(wait.count())) != 1) return false;
        char answer[64] = {};
        return recv(sock, answer, sizeof answer - 1, 0) > 0 && std::string(answer).find("200 OK") != std::string::npos;
    }

    // Whether the server ended the connection within the wait, while the client still drips bytes into it.
    static bool ended(int sock, std::chrono::milliseconds wait) {
        const Clock::time_point until = Clock::now() + wait;
        while (Clock::now() < until) {
            pollfd ready = {sock, POLLIN, 0};
            if (poll(&ready, 1, 50) == 1) {
                char byte;
                return recv(sock, &byte, 1, 0) <= 0;
            }
            if (send(sock, "G", 1, MSG_NOSIGNAL) < 0) return true;
        }
        return false;
    }

    std::unique_ptr<GuardedServer> server_;
    int port_ = 0;
    std::thread serving_;
    std::vector<int> clients_;
};

// Three times as many clients as workers, each sending its request a byte
// at a time, must not keep a whole request waiting, even one that comes a
// moment after its connection.
TEST_F(StudioConnections, SlowClientsGiveWayToAWholeRequest) {
    std::vector<int> slow;
    for (int i = 0; i < 12; ++i) slow.push_back(open_connection());
    std::atomic<bool> stop{false};
    // Cut off, a slow client comes straight back, as an attacker's would.
    std::thread drip([&] {
        while (!stop) {
            for (int &sock : slow) {
                pollfd closed = {sock, POLLIN, 0};
                if (poll(&closed, 1, 0) == 1 || send(sock, "G", 1, MSG_NOSIGNAL) < 0) {
                    close(sock);
                    sock = open_connection();
                }
            }
            std::this_thread::sleep_for(50ms);
        }
        for (int sock : slow) close(sock);
    });
    std::this_thread::sleep_for(300ms);
    const bool ok = answered(1000ms) && answered(1000ms, 50ms);
    stop = true;
    drip.join();
    EXPECT_TRUE(ok);
}

TEST_F(StudioConnections, ARequestMustArriveWholeWithinTheReadLimit) {
    const int sock = connect_client();
    EXPECT_TRUE(ended(sock, 4000ms));
    EXPECT_TRUE(answered(1000ms));
}

TEST_F(StudioConnections, StoppingDoesNotWaitForIdleConnections) {
    ASSERT_TRUE(answered(1000ms));  // its connection stays open, idle, for up to 30 s
    const Clock::time_point start = Clock::now();
    server_->halt();
    serving_.join();
    EXPECT_LT(Clock::now() - start, 5s);
}

}  // namespace
