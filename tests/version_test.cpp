#include <kd_lib/version.h>

#include <gtest/gtest.h>

TEST(Version, StringIsTheWhatStringByteForByte)
{
    const std::string text(reinterpret_cast<const char*>(kd_db_1VersionString));
    EXPECT_EQ("@(#)PROGRAM:kd_db.1  PROJECT:kd_lib-1.1\n", text);
}

TEST(Version, NumberIsOnePointOne)
{
    EXPECT_EQ(1.1, kd_db_1VersionNumber);
}
