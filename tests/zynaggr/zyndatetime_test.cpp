// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatetime.h"

#include "support/test.h"
#include "zynplatform/locale.h"

#include <chrono>
#include <clocale>

// The C library's own, when it looks for locales along LOCPATH.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:__argz_add_sep";
}

using namespace std::chrono;

constexpr int firstDay = -657434, lastDay = 2958465;
constexpr sys_days epoch = 1899y / December / 30;
constexpr auto valid = CzynDateTime::valid, invalid = CzynDateTime::invalid, null = CzynDateTime::null;

// Year, month, day, day of week, day of year, hour, minute, second.
using Fields = std::array<int, 8>;

static Fields FieldsOf(CzynDateTime v) {
    return {v.GetYear(),      v.GetMonth(), v.GetDay(),    v.GetDayOfWeek(),
            v.GetDayOfYear(), v.GetHour(),  v.GetMinute(), v.GetSecond()};
}

// By rule: units are split off one by one, more than half a second rounds up, the day of week stays behind.
static Fields FieldsByRule(double value) {
    double day, hour, minute, second;
    const double fraction = std::abs(std::modf(value, &day));
    const double rest = std::modf(std::modf(std::modf(fraction * 24, &hour) * 60, &minute) * 60, &second);
    const int s = static_cast<int>(hour * 3600 + minute * 60 + second) + (rest > 0.5 ? 1 : 0);
    const sys_days own = epoch + days(static_cast<int>(day)), rounded = own + days(s / 86400);
    const year_month_day date(rounded);
    const int y = int(date.year()), m = int(unsigned(date.month())), d = int(unsigned(date.day()));
    const int number = int((rounded - sys_days(year(y) / 1 / 1)).count()) + 1;
    return {y, m, d, int(weekday(own).c_encoding()), number, s / 3600 % 24, s / 60 % 60, s % 60};
}

TEST(DateTime, EveryDayConvertsBothWaysAndNothingElse) {
    CzynDateTime value;
    int day = firstDay;
    for (int y = 0; y < 10100; ++y)
        for (unsigned m = 0; m < 14; ++m)
            for (unsigned d = 0; d < 33; ++d) {
                const bool isDate = y >= 100 && y <= 9999 && (year(y) / month(m) / std::chrono::day(d)).ok();
                ASSERT_EQ(value.SetDate(y, int(m), int(d)), isDate ? valid : invalid);
                ASSERT_EQ(double(value), isDate ? day : 0);
                if (!isDate) continue;
                const bool isInside = day != firstDay && day != lastDay; // else there at midnight only
                const auto s = isInside ? static_cast<int>(day * -7919LL % 86400 + 86400) % 86400 : 0;
                const double date = day + (day < 0 ? -1 : 1) * s / 86400.0;
                const Fields f = FieldsByRule(date);
                value.SetDateTime(y, int(m), int(d), f[5], f[6], f[7]);
                ASSERT_NEAR(double(value), date, 1e-9);
                ASSERT_EQ(FieldsOf(value), f) << day;
                ++day;
            }
    // The last days of months, years and the range, and leap days, with every half second and next to it.
    for (const int start : {0, 31, 36584, 45350, 45351, 45657, 2958464, -1, -1400, -1401, -657433})
        for (int i = 0; i < 86400 * 5; ++i) {
            const double half = start + (start < 0 ? -1 : 1) * (i / 5 + 0.5) / 86400, to = i % 5 - 2;
            const double moved = i % 2 ? std::nextafter(half, to * 1e9) : half + to * 2e-6;
            ASSERT_EQ(FieldsOf(moved), FieldsByRule(moved)) << start << ' ' << i;
        }
}

TEST(DateTime, TakesAnyTimeAndAnswersNothingOutOfRange) {
    EXPECT_EQ(double(CzynDateTime(1899, 12, 29, 0, 360, 64800)), -2);
    EXPECT_EQ(double(CzynDateTime(67556, 65537, 65537, -1, 0, 0)), 43831 + 65535 / 24.0); // 16 bits each
    EXPECT_EQ(CzynDateTime(9999, 12, 31, 12, 0, 0).GetStatus(), valid);
    for (const double number : {lastDay + 0.5, std::nextafter(lastDay, HUGE_VAL), HUGE_VAL, std::nan(""),
                                firstDay - 0.5, std::nextafter(firstDay, -HUGE_VAL), -HUGE_VAL}) {
        CzynDateTime value(number);
        UDATE date{{1, 2, 3, 4, 5, 6, 7, 8}, 9};
        EXPECT_TRUE(value.GetStatus() == invalid && !value.GetAsUDATE(date)) << number;
        EXPECT_TRUE(date.st.wYear == 1 && date.wDayOfYear == 0) << number;
        value.SetStatus(valid);
        EXPECT_TRUE(!value.GetAsUDATE(date) && date.st.wYear == 0 && date.st.wMilliseconds == 0) << number;
        EXPECT_TRUE(FieldsOf(value)[0] == -1 && value.Format("%Y") == "Invalid DateTime") << number;
    }
}

TEST(DateTime, CountsSecondsInLocalTimeByTheZoneAsItIs) {
    const Variable zone("TZ", "EAST-5:30");
    EXPECT_DOUBLE_EQ(CzynDateTime(std::int64_t{253402280999}), lastDay + 86399 / 86400.0);
    for (const std::int64_t seconds : {std::int64_t{-1}, std::int64_t{253402281000},
                                       std::int64_t{2068146604800} /* the year 67536 */, INT64_MAX})
        EXPECT_EQ(CzynDateTime(seconds).GetStatus(), invalid) << seconds;
    zynplatform::SetTimeSource([]() -> std::int64_t { return 0; });
    EXPECT_EQ(CzynDateTime::GetTickCount().Format("%F %T %z %Z"), "1970-01-01 05:30:00 +0530 EAST");
    zynplatform::SetTimeSource(nullptr);
    EXPECT_LE(std::abs(std::time(nullptr) - zynplatform::CurrentTime()), 1);
    zone.Set("WEST3"); // without tzset
    EXPECT_EQ(CzynDateTime(std::int64_t{86400}).GetHour(), 21);
    zone.Set("America/Caracas"); // where standard time was another one in 2012
    const auto zoneAt = [](std::int64_t seconds) { return CzynDateTime(seconds).Format("%z %Z"); };
    EXPECT_EQ(zoneAt(1'350'000'000), zoneAt(1'700'000'000));
}

TEST(DateTime, ComparesAndAddsByStatusThenLinearly) {
    // In a negative date the fraction counts forward, too: there are two numbers for a time of day 0.
    const CzynDateTime values[] = {WithStatus(CzynDateTime(0.0), null),
                                   WithStatus(CzynDateTime(0.0), invalid), -2.25, -2.75, 0.25};
    for (int i = 0; i < 25; ++i) {
        const CzynDateTime &a = values[i / 5], &b = values[i % 5];
        const bool isEqual = &a == &b && &a != values + 1, isLess = i >= 10 && &a < &b;
        EXPECT_TRUE((a == b) == isEqual && (a != b) != isEqual && (a < b) == isLess && (b > a) == isLess);
        EXPECT_TRUE((a <= b) == (isLess || isEqual) && (b >= a) == (isLess || isEqual)) << i;
    }
    EXPECT_FALSE(values[4] == CzynDateTime(-0.25) || values[4] > CzynDateTime(-0.25));

    const double cases[][3] = {
        {-1.25, 0.5, -1.75}, {-1.25, 1, 0.25}, {0.25, -0.5, -1.75}, {2, -4.5, -3.5}, {-5, -1, -6}};
    for (const auto& [date, days, sum] : cases) {
        const CzynDateTimeSpan span(days);
        CzynDateTime value(date);
        EXPECT_TRUE(double(value + span) == sum && double(value - -span) == sum) << date;
        EXPECT_TRUE(CzynDateTime(sum) - value == span && double(value -= -span) == sum) << date;
    }
    const CzynDateTimeSpan day(1.0);
    CzynDateTime latest(double{lastDay}), lost = WithStatus(CzynDateTime(5.0), null);
    EXPECT_EQ((latest + day).GetStatus(), invalid);
    EXPECT_TRUE((latest += day).GetStatus() == valid && (lost += day).GetStatus() == null);
}

TEST(DateTime, KeepsItsFieldsUntilTheValueChanges) {
    CzynDateTime v(2024, 2, 29, 1, 2, 3);
    EXPECT_EQ(v.GetYear(), 2024);
    for (const auto status : {null, valid}) {
        v.SetStatus(status);
        EXPECT_EQ(v.GetDay(), status == valid ? 29 : -1);
    }
    EXPECT_EQ((v = 2.0).GetDay(), 1);
    EXPECT_EQ((v = UDATE{{2024, 5, 9, 31, 0, 0, 0, 9}, 400}).GetDay(), 31);
    EXPECT_EQ(v.SetDate(2024, 6, 1) + v.GetDay(), 1);
    EXPECT_EQ((v -= CzynDateTimeSpan(1.0)).GetDay(), 31);
}

TEST(DateTime, FormatsByTheRuntimeLibrary) {
    std::mt19937 random(1);
    for (int i = 0; i < 4000; ++i) {
        const CzynDateTime value(std::uniform_real_distribution(double{firstDay}, double{lastDay})(random));
        const Fields f = FieldsOf(value);
        const std::tm time{f[7], f[6], f[5], f[2], f[1] - 1, f[0] - 1900, f[3], f[4] - 1, 0, 0, nullptr};
        std::setlocale(LC_TIME, i % 2 ? "C.UTF-8" : "C");
        for (char conversion = '!'; conversion <= '~'; ++conversion) {
            if (conversion == 'z' || conversion == 'Z') continue;
            const std::string format = "%e."s + '%' + conversion + ".%S";
            char text[256];
            std::strftime(text, sizeof text, format.c_str(), &time);
            ASSERT_EQ(value.Format(format.c_str()), text) << double(value) << ' ' << format;
        }
    }
    const CzynDateTime value(2024, 12, 31, 23, 5, 9);
    EXPECT_EQ(value.Format("\xE3\x98 %F %%%B"), "\xE3\x98 2024-12-31 %December"); // by the last locale: UTF-8
    std::setlocale(LC_TIME, "C");
    const std::string zeros(298, '0');
    EXPECT_EQ(value.Format("%300d\xE3").View(), zeros + "31\xE3");
    for (std::string dots(248, '.'); dots.size() < 260; dots += '.')
        EXPECT_EQ(value.Format((dots + "%Y").c_str()).View(), dots + "2024");
    EXPECT_EQ(value.Format("%2000000000d"), "");
    EXPECT_TRUE(value.Format(nullptr).IsEmpty() &&
                WithStatus(CzynDateTime(1.0), null).Format("%Y").IsEmpty());
    EXPECT_STREQ(WithStatus(CzynDateTime(1.0), invalid).Format(""), "");
}

TEST(DateTime, NamesMonthsInTheUsersLanguageWhateverTheProcesssLocaleIs) {
    const TempFolder folder;
    for (const std::string name : {"ru_RU", "de_DE"}) { // of the locales only what dates need
        folder.Write(name + ".txt", "LC_TIME\ncopy \"" + name + "\"\nEND LC_TIME\n");
        const std::string path = folder.Native(name);
        const int ended [[maybe_unused]] = // 1 also when it only warns
            std::system(("localedef -c -f UTF-8 -i " + path + ".txt " + path + ".utf8 2>/dev/null").c_str());
        if (!fs::exists(path + ".utf8/LC_TIME")) GTEST_SKIP() << "no locales to make";
    }
    const CzynDateTime value(2024, 12, 31);
    const Variable texts("LOCPATH", folder.Native()), locale("LC_ALL", "ru_RU.UTF-8");
    EXPECT_EQ(value.FormatForUser("%d %B, %A\xB9"), "31 декабря, Вторник№"_cp1251);
    zynplatform::SetThreadLocale(1031);
    EXPECT_EQ(value.FormatForUser("%B %A"), "Dezember Dienstag");
    zynplatform::SetThreadLocale(1155); // whose texts the system has not got
    EXPECT_EQ(value.FormatForUser("%b"), "дек"_cp1251);
    EXPECT_EQ(value.Format("%B"), "December");
    zynplatform::SetThreadLocale(0);
}
