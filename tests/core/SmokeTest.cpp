#include <gtest/gtest.h>
#include "TestStreams.h"
TEST(Smoke, Builds) { ZUMMemoryInputStream in("ab", 2); EXPECT_EQ(in.read(), 'a'); }
