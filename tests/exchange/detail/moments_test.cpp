#include "detail/moments.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

using kd_lib::exchange::Date;
using kd_lib::exchange::Timestamp;
using namespace kd_lib::exchange::detail;

namespace {

TEST(Moments, DaysOfTheCalendar)
{
    EXPECT_TRUE(dayOfCalendar(1, 1, 1));
    EXPECT_TRUE(dayOfCalendar(9999, 12, 31));
    EXPECT_TRUE(dayOfCalendar(2024, 2, 29));
    EXPECT_TRUE(dayOfCalendar(2000, 2, 29));
    for (const auto& [year, month, day] : {std::array{0U, 1U, 1U},
                                           {10000U, 1U, 1U},
                                           {2024U, 0U, 1U},
                                           {2024U, 13U, 1U},
                                           {2024U, 1U, 0U},
                                           {2024U, 1U, 32U},
                                           {2023U, 2U, 29U},
                                           {1900U, 2U, 29U},
                                           {2024U, 2U, 30U},
                                           {2024U, 4U, 31U}}) {
        EXPECT_FALSE(dayOfCalendar(year, month, day)) << year << ' ' << month << ' ' << day;
    }
    const unsigned lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (unsigned month = 1; month <= 12; ++month) {
        EXPECT_TRUE(dayOfCalendar(2023, month, lengths[month - 1]));
        EXPECT_FALSE(dayOfCalendar(2023, month, lengths[month - 1] + 1));
    }
}

TEST(Moments, WrittenTextsAreReadBack)
{
    char text[timestampSize];
    const Timestamp moment = {{2024, 2, 29}, 86399999};
    EXPECT_EQ(std::string(text, putTimestamp(text, moment, 'T')), "2024-02-29T23:59:59.999");
    EXPECT_EQ(parseTimestamp({text, timestampSize})->Milliseconds, 86399999U);
    EXPECT_EQ(parseTimestamp({text, timestampSize})->Day, moment.Day);
    EXPECT_EQ(std::string(text, putDate(text, {1, 2, 3})), "0001-02-03");
    EXPECT_EQ(parseDate({text, dateSize}), (Date{1, 2, 3}));
    EXPECT_EQ(std::string(text, putTime(text, 3661001)), "01:01:01.001");
    EXPECT_EQ(parseTime({text, timeSize}), 3661001U);
    EXPECT_EQ(parseTimestamp("2024-02-29")->Milliseconds, 0U);
    EXPECT_EQ(parseEightDigits("20240229"), (Date{2024, 2, 29}));
}

}  // namespace
