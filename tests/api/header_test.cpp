#include <gtest/gtest.h>

extern "C" int ConvertFromC(void);

TEST(PublicHeader, ServesC) { EXPECT_EQ(ConvertFromC(), 0); }
