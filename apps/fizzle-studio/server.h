// The studio's HTTP side: the page's files and its JSON calls, every
// request checked against the per-start token and the origin rule
// (access_rules.h).
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "access_rules.h"
#include "render_job.h"
#include "session.h"
#include "work_files.h"

class GuardedServer;

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

    // Requests that need the plug-in wait for it one at a time; only a few
    // may wait at once, so that a long call or an open question never
    // takes every worker the page's other requests need.
    class PluginTurn;
    std::atomic<int> plugin_requests_{0};

    Session &session_;
    ServerPaths paths_;
    WorkFiles work_;
    WorkFiles web_;
    WorkFiles help_;
    std::string token_;
    std::optional<AccessRules> rules_;  // once the port is known
    RenderJob render_;
    std::unique_ptr<GuardedServer> server_;
};

// A fresh random token, 32 hex digits.
std::string make_token();
