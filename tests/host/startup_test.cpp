// Start-up banner, mode line and the buffer check; the proxy divisor table.
#include <gtest/gtest.h>

#include <string>

#include "host/globals.h"
#include "host/proxy_divisor.h"
#include "host/startup.h"

namespace {

std::string run_startup(int needed) {
    SparkInfoStruct info{};
    testing::internal::CaptureStdout();
    PrintBannerAndCheckBuffers(info, "Fizzle", needed, needed, "7", 1);
    return testing::internal::GetCapturedStdout();
}

class Startup : public ::testing::Test {
protected:
    void TearDown() override {
        deep12 = 0;
        no_buffers = 0;
    }
};

}  // namespace

TEST_F(Startup, BannerBetweenTwoRulesThenModeAndBufferLines) {
    deep12 = 0;
    const int available = sparkMemGetFreeMemory();
    std::string out = run_startup(available);
    const std::string rule(51, '=');
    const std::string expected_start =
        rule + "\nCorvale MP-V5.0.7 Tallow Fizzle for Discreet  \n    UCAPI  Built ";
    ASSERT_EQ(out.compare(0, expected_start.size(), expected_start), 0) << out;
    const std::string expected_end = "\n" + rule + "\n... 8-10 bit mode selected.\nAvailable buffers = " +
                                     std::to_string(available) + "\n" + std::string(51, '+') + "\n\n";
    ASSERT_GE(out.size(), expected_end.size());
    EXPECT_EQ(out.substr(out.size() - expected_end.size()), expected_end) << out;
    EXPECT_NE(out.find(" at "), std::string::npos);
    EXPECT_EQ(no_buffers, 0);
}

TEST_F(Startup, TooFewBuffersTurnsProcessingOff) {
    const int available = sparkMemGetFreeMemory();
    std::string out = run_startup(available + 1);
    const std::string refusal = "ERROR: we need " + std::to_string(available + 1) +
                                " image buffers, but we only got " + std::to_string(available) +
                                ".\n... Processing will be turned off ...\n";
    EXPECT_NE(out.find(std::string(51, '+') + "\n\n" + refusal), std::string::npos) << out;
    EXPECT_EQ(no_buffers, 1);
    // A later start-up with enough buffers turns it back on.
    run_startup(available);
    EXPECT_EQ(no_buffers, 0);
}

// The frame cycle tests cover values 0..9 end to end.
TEST(ProxyDivisor, NegativeResolutionValueFallsBackToFull) { EXPECT_EQ(ProxyDivisorFor(-1), 1); }
