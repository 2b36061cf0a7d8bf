#include "logic/limits.h"

#include <gtest/gtest.h>

using namespace tarvolin::logic;

TEST(FailureLimiter, BlocksAfterTheLimitUntilTheOldestFailureLeavesTheWindow) {
    FailureLimiter f(3, 1000);
    f.recordFailure("k", 0);
    f.recordFailure("k", 100);
    EXPECT_EQ(f.retryAfter("k", 150), 0);
    f.recordFailure("k", 200);
    EXPECT_EQ(f.retryAfter("k", 250), 750);
    EXPECT_EQ(f.retryAfter("other", 250), 0);
    EXPECT_EQ(f.retryAfter("k", 1000), 0);
    // Failures keep counting after the block: the newest three decide.
    f.recordFailure("k", 1000);
    EXPECT_EQ(f.retryAfter("k", 1000), 100);
    f.clear("k");
    EXPECT_EQ(f.retryAfter("k", 1000), 0);
}

TEST(RequestLimiter, BurstThenSteadyRate) {
    RequestLimiter r(10, 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(r.allow("a", 0));
    }
    EXPECT_FALSE(r.allow("a", 0));
    EXPECT_TRUE(r.allow("b", 0));
    EXPECT_FALSE(r.allow("a", 50));
    EXPECT_TRUE(r.allow("a", 100));
    EXPECT_FALSE(r.allow("a", 100));
    // A long pause fills the bucket to the burst and no further.
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(r.allow("a", 100'000));
    }
    EXPECT_FALSE(r.allow("a", 100'000));
}

TEST(RequestLimiter, ZeroRateMeansNoLimit) {
    RequestLimiter r(0, 1);
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(r.allow("a", 0));
    }
}
