// fizzle-studio's origin rule: only its own page, on its own address,
// reaches anything beyond the page's shipped files.
#include <gtest/gtest.h>

#include "apps/fizzle-studio/access_rules.h"

namespace {

const std::string kToken = "0123456789abcdef0123456789abcdef";
const std::string kPageKey = "fedcba9876543210fedcba9876543210";

AccessRules rules() { return AccessRules(kToken, kPageKey, "127.0.0.1", 8600); }

AccessRequest own_call(const std::string &method = "POST", const std::string &path = "/api/set") {
    AccessRequest request;
    request.method = method;
    request.path = path;
    request.host = "127.0.0.1:8600";
    request.origin = "http://127.0.0.1:8600";
    request.fetch_site = "same-origin";
    request.token = kToken;
    return request;
}

TEST(StudioAccess, TheOwnPageWithTheTokenReachesEverythingAtEitherLoopbackName) {
    EXPECT_EQ(rules().check(own_call()).access, Access::Everything);
    AccessRequest by_name = own_call();
    by_name.host = "localhost:8600";
    by_name.origin = "http://localhost:8600";
    EXPECT_EQ(rules().check(by_name).access, Access::Everything);
    // With --listen, the studio is reached by the address typed.
    for (const char *address : {"192.168.1.5", "[::1]"}) {
        AccessRequest by_number = own_call();
        by_number.host = std::string(address) + ":8600";
        by_number.origin = "http://" + by_number.host;
        EXPECT_EQ(rules().check(by_number).access, Access::Everything) << address;
    }
    // Scripts and the address typed in send neither Origin nor Sec-Fetch-Site "same-origin".
    AccessRequest script = own_call("GET", "/api/state");
    script.origin.clear();
    script.fetch_site.clear();
    EXPECT_EQ(rules().check(script).access, Access::Everything);
    script.fetch_site = "none";
    EXPECT_EQ(rules().check(script).access, Access::Everything);
}

// Another port of 127.0.0.1 is the same site for cookies and SameSite,
// but not the same origin: everything it sends is refused, token or not.
TEST(StudioAccess, PagesOfOtherPortsAndOtherSitesAreRefusedEvenWithTheToken) {
    AccessRequest foreign = own_call();
    foreign.origin = "http://127.0.0.1:9999";
    EXPECT_EQ(rules().check(foreign).access, Access::Refused);
    foreign.origin = "null";
    EXPECT_EQ(rules().check(foreign).access, Access::Refused);
    // No-CORS loads (an image, a form) carry no Origin on GET, but do say where they come from.
    AccessRequest embedded = own_call("GET", "/api/file");
    embedded.origin.clear();
    for (const char *site : {"same-site", "cross-site"}) {
        embedded.fetch_site = site;
        EXPECT_EQ(rules().check(embedded).access, Access::Refused) << site;
    }
    // A link on another page may open the studio's page, but nothing else.
    AccessRequest link = own_call("GET", "/");
    link.origin.clear();
    link.fetch_site = "cross-site";
    link.fetch_mode = "navigate";
    EXPECT_EQ(rules().check(link).access, Access::Everything);
    link.path = "/api/file";
    EXPECT_EQ(rules().check(link).access, Access::Refused);
    link.path = "/";
    link.fetch_mode = "no-cors";
    EXPECT_EQ(rules().check(link).access, Access::Refused);
    // Another name resolved to this address (DNS rebinding) is not this studio.
    AccessRequest rebound = own_call();
    rebound.host = "attacker.example:8600";
    rebound.origin = "http://attacker.example:8600";
    EXPECT_EQ(rules().check(rebound).access, Access::Refused);
    AccessRequest other_port = own_call();
    other_port.host = "127.0.0.1:9999";
    EXPECT_EQ(rules().check(other_port).access, Access::Refused);
    AccessRequest no_port = own_call();
    no_port.host = "127.0.0.1";
    EXPECT_EQ(rules().check(no_port).access, Access::Refused);
    AccessRequest no_host = own_call();
    no_host.host.clear();
    EXPECT_EQ(rules().check(no_host).access, Access::Refused);
}

// The cookie, which browsers also send to other ports, opens only the page's shipped files.
TEST(StudioAccess, ThePageCookieOpensOnlyThePagesFiles) {
    const AccessRules studio = rules();
    EXPECT_EQ(studio.page_cookie_name(), "fizzle_studio_page_8600");
    EXPECT_EQ(studio.page_cookie().find(kToken), std::string::npos);
    auto with_cookie = [&](const std::string &method, const std::string &path) {
        AccessRequest request = own_call(method, path);
        request.token.clear();
        request.cookie = "other=1; fizzle_studio_page_8600=" + kPageKey;
        return studio.check(request).access;
    };
    for (const char *path : {"/", "/static/studio.js", "/help/bubbles.htm", "/favicon.ico"})
        EXPECT_EQ(with_cookie("GET", path), Access::PageFiles) << path;
    for (const char *path : {"/api/state", "/api/file", "/api/files"}) EXPECT_EQ(with_cookie("GET", path), Access::Refused) << path;
    EXPECT_EQ(with_cookie("POST", "/api/setup/save"), Access::Refused);
    EXPECT_EQ(with_cookie("POST", "/"), Access::Refused);

    AccessRequest wrong = own_call("GET", "/");
    wrong.token = "0123";
    wrong.cookie = "fizzle_studio_page_8601=" + kPageKey + "; fizzle_studio_page_8600=nope";
    EXPECT_EQ(studio.check(wrong).access, Access::Refused);
    wrong.token.clear();
    wrong.cookie.clear();
    EXPECT_EQ(studio.check(wrong).access, Access::Refused);
}

TEST(StudioAccess, SecretsMatchOnlyWhole) {
    EXPECT_TRUE(same_secret(kToken, kToken));
    EXPECT_FALSE(same_secret(kToken, kToken.substr(0, 31)));
    EXPECT_FALSE(same_secret(kToken, kPageKey));
    EXPECT_FALSE(same_secret("", ""));
}

}  // namespace
