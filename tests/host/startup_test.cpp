// Start-up banner, mode line and the buffer count; the proxy divisor table.
#include <gtest/gtest.h>

#include <string>

#include "host/globals.h"
#include "host/proxy_divisor.h"
#include "host/startup.h"

// The refusal when buffers are short is covered end to end by the frame cycle tests.
TEST(Startup, BannerBetweenTwoRulesThenModeAndBufferLines) {
    deep12 = 0;
    const int available = sparkMemGetFreeMemory();
    SparkInfoStruct info{};
    testing::internal::CaptureStdout();
    PrintBannerAndCheckBuffers(info, "Fizzle", available, available, "7", 1);
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string rule(51, '=');
    const std::string expected_start = rule + "\nCorvale MP-V5.0.7 Tallow Fizzle for Discreet  \n    UCAPI  Built ";
    ASSERT_EQ(out.compare(0, expected_start.size(), expected_start), 0) << out;
    const std::string expected_end = "\n" + rule + "\n... 8-10 bit mode selected.\nAvailable buffers = " +
                                     std::to_string(available) + "\n" + std::string(51, '+') + "\n\n";
    ASSERT_GE(out.size(), expected_end.size());
    EXPECT_EQ(out.substr(out.size() - expected_end.size()), expected_end) << out;
    EXPECT_NE(out.find(" at "), std::string::npos);
    EXPECT_EQ(no_buffers, 0);
}

// The frame cycle tests cover values 0..9 end to end.
TEST(ProxyDivisor, NegativeResolutionValueFallsBackToFull) { EXPECT_EQ(ProxyDivisorFor(-1), 1); }
