#include "../../../src/formats/julianday.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using namespace kd_lib::formats;

TEST(JulianDay, EveryDayAgreesWithTheCalendar)
{
    using namespace std::chrono;
    constexpr std::int64_t epoch = 2440588;
    for (std::int64_t julian = firstJulianDay; julian <= lastJulianDay; ++julian) {
        const year_month_day expected{sys_days(days(julian - epoch))};
        const CalendarDay day = calendarDay(julian);
        ASSERT_EQ(year(day.Year), expected.year()) << julian;
        ASSERT_EQ(month(static_cast<unsigned>(day.Month)), expected.month()) << julian;
        ASSERT_EQ(std::chrono::day(static_cast<unsigned>(day.Day)), expected.day()) << julian;
    }
}

TEST(JulianDay, LimitsAreTheFirstAndTheLastDay)
{
    const CalendarDay first = calendarDay(firstJulianDay);
    EXPECT_TRUE(first.Year == 1 && first.Month == 1 && first.Day == 1);
    const CalendarDay last = calendarDay(lastJulianDay);
    EXPECT_TRUE(last.Year == 9999 && last.Month == 12 && last.Day == 31);
}

}  // namespace
