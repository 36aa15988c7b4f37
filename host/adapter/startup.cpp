// Start-up console banner and buffer check.
#include "host/adapter/startup.h"

#include <cstdio>

#include "framework/pause.h"
#include "host/adapter/globals.h"

#ifndef FIZZLE_BUILD_DATE
#define FIZZLE_BUILD_DATE "unknown date"
#endif
#ifndef FIZZLE_BUILD_TIME
#define FIZZLE_BUILD_TIME "unknown time"
#endif

namespace {

constexpr const char *kPluginVersion = "5.0";
constexpr const char *kBannerRule = "===================================================";  // 51
constexpr const char *kBufferRule = "+++++++++++++++++++++++++++++++++++++++++++++++++++";  // 51

const char *interface_tag(int selector) {
    switch (selector) {
        case 1: return "UCAPI";
        case 0: return "NATIVE";
        default: return " ";
    }
}

}  // namespace

void PrintBannerAndCheckBuffers(const SparkInfoStruct &, const char *product, int needed_8bit,
                                int needed_12bit, const char *host_version, int tag_selector) {
    std::printf("%s\n", kBannerRule);
    std::printf("Corvale MP-V%s.%s Tallow %s for Discreet %s\n    %s  Built %s at %s\n",
                kPluginVersion, host_version, product, " ", interface_tag(tag_selector),
                FIZZLE_BUILD_DATE, FIZZLE_BUILD_TIME);
    std::printf("%s\n", kBannerRule);
    std::fflush(stdout);

    std::printf("%s\n", deep12 ? "... 12 bit mode selected." : "... 8-10 bit mode selected.");
    std::fflush(stdout);

    const int available = sparkMemGetFreeMemory();
    std::printf("Available buffers = %d\n", available);
    std::fflush(stdout);
    std::printf("%s\n\n", kBufferRule);

    const int needed = deep12 ? needed_12bit : needed_8bit;
    if (available < needed) {
        std::printf("ERROR: we need %d image buffers, but we only got %d.\n", needed, available);
        std::printf("... Processing will be turned off ...\n");
        std::fflush(stdout);
        sparkMessage("Insufficient image buffers available! Giving up!");
        PauseForUser(5);
        no_buffers = 1;
    } else {
        no_buffers = 0;
    }
    std::fflush(stdout);
}
