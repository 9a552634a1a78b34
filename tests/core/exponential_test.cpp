#include "corvane/core/exponential.h"

#include <cmath>

#include <gtest/gtest.h>

TEST(Exponential, IsWithinTwoUnitsOfTheLibrarysOwn)
{
    for (double x = -707.9; x < 709.0; x += 0.0371) {
        EXPECT_NEAR(corvane::Exp(x) / std::exp(x), 1.0, 5e-16) << x;
    }
    EXPECT_EQ(corvane::Exp(0.0), 1.0);
    EXPECT_EQ(corvane::Exp(-709.0), 0.0);
    EXPECT_EQ(corvane::Exp(-HUGE_VAL), 0.0);
    EXPECT_EQ(corvane::Exp(709.5), HUGE_VAL);
    EXPECT_EQ(corvane::Exp(HUGE_VAL), HUGE_VAL);
    EXPECT_TRUE(std::isnan(corvane::Exp(std::nan(""))));
}
