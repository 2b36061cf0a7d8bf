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

TEST(RequestLimiter, TakeTellsHowLongUntilTheNextRequest) {
    // Ten an hour: all ten at once, then one every six minutes.
    RequestLimiter r(10.0 / 3600.0, 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(r.take("a", 0), 0);
    }
    EXPECT_EQ(r.take("a", 0), 360'000);
    EXPECT_EQ(r.take("a", 60'000), 300'000);
    // A refusal takes nothing: the wait only shrinks.
    EXPECT_EQ(r.take("a", 359'999), 1);
    EXPECT_EQ(r.take("a", 360'000), 0);
    EXPECT_EQ(r.take("a", 360'000), 360'000);
}
