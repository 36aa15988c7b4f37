// The lazily made random table against a whole fill of the same stream.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "framework/random.h"
#include "framework/random_table.h"

namespace {

std::vector<float> whole_fill(long *seed) {
    std::vector<float> values(RandomTableQv::kSize);
    ran1fQvFill(seed, values.data(), RandomTableQv::kSize);
    return values;
}

}  // namespace

// Read in any order, from the start, the end or the middle, the entries and
// the seed left behind are those of a whole fill; seeds past the generator's
// modulus (huge frame numbers) and zero included.
TEST(RandomTable, EntriesAndSeedAfterAreThoseOfAWholeFill) {
    for (long start : {-1L, -785L, 0L, -7860L, -2147483647L, -2147483648L, -42949672960L}) {
        long fill_seed = start, table_seed = start;
        const std::vector<float> expected = whole_fill(&fill_seed);
        RandomTableQv table;
        table.Refill(&table_seed);
        EXPECT_EQ(table_seed, fill_seed) << "seed " << start;
        EXPECT_EQ(table.Made(), 0) << "nothing is drawn before it is read";
        for (int32_t index : {200000, 3, 0, 4095, 4096, RandomTableQv::kSize - 1, 77777})
            ASSERT_EQ(table.Entry(index), expected[size_t(index)]) << "seed " << start << " entry " << index;
        EXPECT_EQ(std::vector<float>(table.Whole(), table.Whole() + RandomTableQv::kSize), expected);
    }
}

// A positive seed goes on from where the last table ended, as the process-wide
// stream does after a whole fill.
TEST(RandomTable, PositiveSeedContinuesAfterTheLastEntry) {
    long fill_seed = -31, table_seed = -31;
    whole_fill(&fill_seed);
    RandomTableQv table;
    table.Refill(&table_seed);
    table.Entry(10);  // only partly made when the next fill starts
    fill_seed = table_seed = 123456789;
    const std::vector<float> expected = whole_fill(&fill_seed);
    table.Refill(&table_seed);
    EXPECT_EQ(table_seed, fill_seed);
    EXPECT_EQ(table.Entry(9000), expected[9000]);
    EXPECT_EQ(table.Entry(1), expected[1]);
}

// Banded workers read the same table at once; each sees the whole fill's numbers.
TEST(RandomTable, ConcurrentReadersSeeTheSameNumbers) {
    long fill_seed = -5, table_seed = -5;
    const std::vector<float> expected = whole_fill(&fill_seed);
    RandomTableQv table;
    table.Refill(&table_seed);
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> readers;
    for (int worker = 0; worker < 4; ++worker)
        readers.emplace_back([&, worker] {
            for (int32_t i = worker; i < 60000; i += 3)
                if (table.Entry(i) != expected[size_t(i)]) ++wrong[size_t(worker)];
        });
    for (std::thread &reader : readers) reader.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}
