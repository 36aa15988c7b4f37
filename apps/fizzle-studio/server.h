// The studio's HTTP side: the page's files and its JSON calls, every
// request checked against the per-start token.
#pragma once

#include <memory>
#include <string>

#include "render_job.h"
#include "session.h"
#include "work_files.h"

namespace httplib {
class Server;
}

struct ServerPaths {
    std::string web;          // the page's files
    std::string help;         // the help pages the "Help" button opens
    std::string working_dir;  // the only files the page may read or write
    std::string render_program;  // fizzle-render
};

class StudioServer {
public:
    StudioServer(Session &session, const ServerPaths &paths, std::string token);
    ~StudioServer();

    // Binds (port 0 picks a free one); returns the port, or -1 with error set.
    int bind(const std::string &address, int port, std::string &error);
    void serve();  // until stop()
    void stop();
    const std::string &token() const { return token_; }

private:
    void routes();
    bool authorised(const std::string &query_token, const std::string &cookie) const;

    Session &session_;
    ServerPaths paths_;
    WorkFiles work_;
    WorkFiles web_;
    WorkFiles help_;
    std::string token_;
    RenderJob render_;
    std::unique_ptr<httplib::Server> server_;
};

// A fresh random token, 32 hex digits.
std::string make_token();
