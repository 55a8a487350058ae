#include "progressline.h"

#include <gtest/gtest.h>

namespace kd_tool {

constexpr std::size_t usualWidth = 79;

TEST(ProgressLine, ShowsShareRateAndTimeLeft)
{
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 250000, 10}, 2, usualWidth),
              "a.dbf  25% [" + std::string(10, '#') + std::string(30, '-') + "] 125 kB/s  0:06 left");
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 0, 0}, 2, usualWidth), "a.dbf  0% [" + std::string(40, '-') + "] 0 B/s");
}

TEST(ProgressLine, BarFillsWhatIsLeftOfTheLine)
{
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 500000, 10}, 2, 43), "a.dbf  50% [#####-----] 250 kB/s  0:02 left");
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 500000, 10}, 2, 38), "a.dbf  50% [##---] 250 kB/s  0:02 left");
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 500000, 10}, 2, 37), "a.dbf  50%  250 kB/s  0:02 left");
    EXPECT_EQ(progressLine({"a.dbf", 1000000, 500000, 10}, 2, 12), "a.dbf  50%  ");
}

TEST(ProgressLine, ShowsRecordsIfTheSizeIsUnknown)
{
    EXPECT_EQ(progressLine({"-", std::nullopt, 12345, 67}, 1, usualWidth), "-  67 records  12.3 kB  12.3 kB/s");
    EXPECT_EQ(progressLine({"-", 0, 12, 3}, 1, usualWidth), "-  3 records  12 B  12 B/s");
}

TEST(ProgressLine, AmountsHaveThreeDigitsOrSo)
{
    const auto rate = [](std::uint64_t bytes) {
        const std::string line = progressLine({"", std::nullopt, bytes, 0}, 1, usualWidth);
        return line.substr(line.rfind("  ") + 2);
    };
    EXPECT_EQ(rate(999), "999 B/s");
    EXPECT_EQ(rate(1000), "1.0 kB/s");
    EXPECT_EQ(rate(99949), "99.9 kB/s");
    EXPECT_EQ(rate(100000), "100 kB/s");
    EXPECT_EQ(rate(2500000), "2.5 MB/s");
    EXPECT_EQ(rate(3000000000), "3.0 GB/s");
    EXPECT_EQ(rate(4000000000000), "4.0 TB/s");
    EXPECT_EQ(rate(5000000000000000), "5000 TB/s");
}

TEST(ProgressLine, TimesHaveHoursIfNeeded)
{
    const auto left = [](std::uint64_t seconds) {
        const std::string line = progressLine({"", seconds + 1, 1, 0}, 1, usualWidth);
        return line.substr(line.rfind("/s  ") + 4);
    };
    EXPECT_EQ(left(59), "0:59 left");
    EXPECT_EQ(left(60), "1:00 left");
    EXPECT_EQ(left(3599), "59:59 left");
    EXPECT_EQ(left(3600), "1:00:00 left");
    EXPECT_EQ(left(36061), "10:01:01 left");
    EXPECT_EQ(left(1000000), "100:00:00 left");
}

}  // namespace kd_tool
