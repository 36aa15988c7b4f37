// Who may ask the studio what. Browsers send cookies to every port of a
// host, and pages on other ports of 127.0.0.1 count as the same site, so
// neither a cookie nor SameSite can tell the studio's page from another
// local page. What can: the token in a header the page adds itself (a
// foreign page may not add one without asking the server first, which this
// server never grants), the Host the request was sent to, and the Origin
// and Sec-Fetch-Site the browser adds.
#pragma once

#include <string>

// What the request is allowed to reach.
enum class Access {
    Refused,
    PageFiles,  // the page's own files and help pages: shipped, nothing private
    Everything,
};

struct AccessRequest {
    std::string method;
    std::string path;
    std::string host;        // Host header
    std::string origin;      // Origin header, empty when absent
    std::string fetch_site;  // Sec-Fetch-Site header, empty when absent
    std::string fetch_mode;  // Sec-Fetch-Mode header, empty when absent
    std::string token;       // from the token header, or the address's ?token=
    std::string cookie;      // Cookie header
};

struct AccessVerdict {
    Access access = Access::Refused;
    std::string reason;  // why refused, for the 403 answer
};

class AccessRules {
public:
    // token: printed at start; page_key: the page cookie's value, a second
    // secret good only for the page's files; listen and port: where this
    // studio is reached.
    AccessRules(std::string token, std::string page_key, std::string listen, int port);

    AccessVerdict check(const AccessRequest &request) const;

    // The cookie that lets the browser load the page's files (sent only in
    // exchange for the token), and its name.
    std::string page_cookie_name() const;
    std::string page_cookie() const;
    static constexpr const char *kTokenHeader = "X-Fizzle-Token";

private:
    bool own_host(const std::string &host) const;

    std::string token_;
    std::string page_key_;
    std::string listen_;
    int port_;
};

// Compares in constant time, so the token cannot be guessed a digit at a time.
bool same_secret(const std::string &a, const std::string &b);
