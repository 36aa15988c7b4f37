// The studio's origin rule, kept apart from the server so that it can be
// read, and tested, as one piece.
#include "access_rules.h"

#include <arpa/inet.h>

namespace {

std::string cookie_value(const std::string &header, const std::string &name) {
    size_t start = 0;
    while (start < header.size()) {
        size_t end = header.find(';', start);
        if (end == std::string::npos) end = header.size();
        std::string part = header.substr(start, end - start);
        const size_t first = part.find_first_not_of(' ');
        part = first == std::string::npos ? "" : part.substr(first);
        if (part.compare(0, name.size() + 1, name + "=") == 0) return part.substr(name.size() + 1);
        start = end + 1;
    }
    return {};
}

bool page_file(const AccessRequest &request) {
    if (request.method != "GET" && request.method != "HEAD") return false;
    const std::string &path = request.path;
    return path == "/" || path == "/favicon.ico" || path.compare(0, 8, "/static/") == 0 ||
           path.compare(0, 6, "/help/") == 0;
}

}  // namespace

bool same_secret(const std::string &a, const std::string &b) {
    if (a.size() != b.size() || a.empty()) return false;
    unsigned char difference = 0;
    for (size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

AccessRules::AccessRules(std::string token, std::string page_key, std::string listen, int port)
    : token_(std::move(token)), page_key_(std::move(page_key)), listen_(std::move(listen)), port_(port) {}

std::string AccessRules::page_cookie_name() const { return "fizzle_studio_page_" + std::to_string(port_); }

std::string AccessRules::page_cookie() const {
    return page_cookie_name() + "=" + page_key_ + "; Path=/; HttpOnly; SameSite=Strict";
}

// Only this studio's own names, with its port: "localhost", the address it
// listens on, or an address by number (with --listen, the one the user
// typed). A name of another site that a resolver points here (DNS
// rebinding) is refused.
bool AccessRules::own_host(const std::string &host) const {
    const std::string port = ":" + std::to_string(port_);
    if (host.size() <= port.size() || host.compare(host.size() - port.size(), port.size(), port) != 0) return false;
    const std::string name = host.substr(0, host.size() - port.size());
    if (name == "localhost" || name == listen_) return true;
    unsigned char address[16];
    if (inet_pton(AF_INET, name.c_str(), address) == 1) return true;
    return name.size() > 2 && name.front() == '[' && name.back() == ']' &&
           inet_pton(AF_INET6, name.substr(1, name.size() - 2).c_str(), address) == 1;
}

AccessVerdict AccessRules::check(const AccessRequest &request) const {
    if (!own_host(request.host)) return {Access::Refused, "this studio answers only at 127.0.0.1 or localhost on its own port"};
    // Browsers name the page a request comes from; only the studio's own may ask.
    if (!request.origin.empty() && request.origin != "http://" + request.host)
        return {Access::Refused, "requests from other pages (" + request.origin + ") are refused"};
    // A link elsewhere may still open the page itself (it cannot be framed);
    // anything else another page sends is refused.
    const bool opening_page = page_file(request) && request.fetch_mode == "navigate";
    if (!request.fetch_site.empty() && request.fetch_site != "same-origin" && request.fetch_site != "none" && !opening_page)
        return {Access::Refused, "requests from other pages are refused"};
    if (same_secret(request.token, token_)) return {Access::Everything, {}};
    if (page_file(request) && same_secret(cookie_value(request.cookie, page_cookie_name()), page_key_))
        return {Access::PageFiles, {}};
    return {Access::Refused, "forbidden: this address needs the token the studio printed when it started"};
}
