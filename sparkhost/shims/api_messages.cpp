// Host functions: interface version, messages and confirmations.
#include <cstdio>

#include "spark/spark.h"
#include "sparkhost/core/host.h"

using sparkhost::Host;
using sparkhost::Message;

extern "C" {

double sparkAPIVersionInfo(void) {
    Host *host = Host::current();
    return host ? host->settings().api_version : 4.0;
}

void sparkError(const char *text) {
    if (Host *host = Host::current())
        host->report(Message::Kind::Error, text ? text : "");
    else
        std::fprintf(stderr, "spark error: %s\n", text ? text : "");
}

void sparkMessage(const char *text) {
    if (Host *host = Host::current())
        host->report(Message::Kind::Message, text ? text : "");
    else
        std::fprintf(stderr, "spark message: %s\n", text ? text : "");
}

int sparkMessageConfirm(const char *text) {
    Host *host = Host::current();
    return host ? host->confirm(text ? text : "") : 1;
}

}  // extern "C"
