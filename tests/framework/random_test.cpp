// The framework's random generators against values worked out from their
// definitions.
#include <gtest/gtest.h>

#include <vector>

#include "framework/random.h"

TEST(RandQv, LinearCongruentialStepWrapsAndKeepsBitsSixteenToThirty) {
    long seed = 2531011;
    // 2531011 * 214013 + 2531011 wraps to 505908858; bits 16..30 give 7719.
    EXPECT_EQ(randQv(seed), 7719);
    EXPECT_EQ(seed, 505908858);
}

TEST(Ran1Qv, MinimalStandardShuffledAndRestartedByANegativeSeed) {
    long seed = -1;
    EXPECT_EQ(ran1Qv(&seed), 893351816);
    seed = -785;
    EXPECT_EQ(ran1Qv(&seed), 2077440268);
}

TEST(Ran1fQv, SameIntegersAsRan1QvScaledAndNeverReachingOne) {
    long seed = -1;
    EXPECT_FLOAT_EQ(ran1fQv(&seed), 893351816.0f * 4.656612873e-10f);
    seed = -12345;
    for (int i = 0; i < 200000; ++i) {
        float value = ran1fQv(&seed);
        ASSERT_TRUE(value > 0.0f && value <= 0.99999988f) << i;
    }
}

// The bulk fill is the same stream: same values, same seed after, and a
// draw after it continues where single draws would have.
TEST(Ran1fQv, FillDrawsTheSameNumbersAndLeavesTheStreamWhereSingleDrawsWould) {
    long single_seed = -77, fill_seed = -77;
    std::vector<float> single(5000), filled(5000);
    for (float &value : single) value = ran1fQv(&single_seed);
    const long seed_after = single_seed;
    const float single_next = ran1fQv(&single_seed);
    ran1fQvFill(&fill_seed, filled.data(), long(filled.size()));
    EXPECT_EQ(filled, single);
    EXPECT_EQ(fill_seed, seed_after);
    EXPECT_EQ(ran1fQv(&fill_seed), single_next);
}

TEST(Ran2Qv, ThreeGeneratorsShuffledFromMinusOneLeaveSeedAtOne) {
    long seed = -1;
    EXPECT_EQ(ran2Qv(&seed), 0.3900425136089325f);
    EXPECT_EQ(seed, 1);
}

// gasdevQv keeps its spare across calls, so it has only this one test.
TEST(GasdevQv, PolarPairsDrawnFromRan2EverySecondCallTakingNoDraw) {
    long seed = -1;
    // Each pair of ran2 draws gives x2 * fac first, then x1 * fac.
    EXPECT_EQ(gasdevQv(&seed), -1.1475273370742798f);
    EXPECT_EQ(gasdevQv(&seed), -0.383696585893631f);
    EXPECT_EQ(gasdevQv(&seed), 0.9040268063545227f);
    EXPECT_EQ(gasdevQv(&seed), 0.3489713966846466f);
    // Four values took exactly four ran2 draws: the next is the fifth.
    EXPECT_EQ(ran2Qv(&seed), 0.17056703567504883f);
}
