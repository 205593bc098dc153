// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zyndatetimespan.h"

using Span = CzynDateTimeSpan;

TEST(DateTimeSpan, SplitsIntoWholeUnitsOfTheNearestSecondWithinItsRange) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 300000; ++i) {
        const std::int64_t limit = i % 2 ? 3615896LL * 86400 : 100000;
        const std::int64_t seconds = std::uniform_int_distribution(-limit, limit)(random);
        // Hours and minutes that cancel out, and up to half a second that is rounded off.
        Span span(static_cast<long>(seconds / 86400), i % 100, i % 100 * -60,
                  static_cast<int>(seconds % 86400));
        span += (i % 3 - 1) * 0.49 / 86400;
        const double totals[] = {span.GetTotalSeconds(), span.GetTotalMinutes(), span.GetTotalHours()};
        const long parts[] = {span.GetSeconds(), span.GetMinutes(), span.GetHours()};
        for (int unit = 0; unit < 3; ++unit) {
            const int size[] = {1, 60, 3600}, count[] = {60, 60, 24};
            ASSERT_EQ(totals[unit], static_cast<double>(seconds / size[unit])) << unit;
            ASSERT_EQ(parts[unit], seconds / size[unit] % count[unit]) << unit;
        }
        ASSERT_TRUE(span.GetDays() == seconds / 86400 && span.GetTotalDays() == double(span.GetDays()));
    }
    const double half = Span::OLE_DATETIME_HALFSECOND, max = 3615897, beyond = std::nextafter(max, HUGE_VAL);
    EXPECT_TRUE(half == 5.787037037037037e-6 && Span(half).GetSeconds() == 1 &&
                Span(-half).GetSeconds() == -1);
    EXPECT_EQ(Span(max).GetStatus() + Span(-max).GetStatus(), Span::valid);
    for (const double days : {beyond, -beyond, 1e200, -HUGE_VAL, std::nan("")})
        EXPECT_TRUE(Span(days).GetStatus() == Span::invalid && Span(days).GetSeconds() == 0) << days;
    EXPECT_EQ(Span(std::numeric_limits<long>::max(), 0, 0, 0).GetStatus(), Span::invalid);
    EXPECT_EQ(-WithStatus(Span(-2.0), Span::invalid), Span(2.0));
}

TEST(DateTimeSpan, AddsAndComparesByStatusThenByNumber) {
    const Span spans[] = {WithStatus(Span(1.0), Span::null), WithStatus(Span(1.0), Span::invalid), -3e6, -0.5,
                          3e6};
    for (int i = 0; i < 25; ++i) {
        const Span &a = spans[i / 5], &b = spans[i % 5];
        const int status = std::max(a.GetStatus(), b.GetStatus()); // null outlasts invalid
        const bool isLess = status == Span::valid && &a < &b, isEqual = &a == &b && status != Span::invalid;
        EXPECT_TRUE((a == b) == isEqual && (a != b) != isEqual && (a < b) == isLess && (b > a) == isLess);
        EXPECT_TRUE((a <= b) == (isLess || isEqual) && (b >= a) == (isLess || isEqual)) << i;
        for (const int sign : {1, -1}) {
            const double number = status == Span::valid ? double(a) + sign * double(b) : 0;
            Span sum(a);
            sign > 0 ? sum += b : sum -= b;
            EXPECT_TRUE(double(sum) == number && double(sign > 0 ? a + b : a - b) == number);
            EXPECT_EQ(sum.GetStatus(), std::abs(number) > 4e6 ? Span::invalid : status);
        }
    }
}

TEST(DateTimeSpan, FormatsByItsOwnCodes) {
    const Span span(1, 2, 3, 4);
    EXPECT_STREQ(span.Format("%D days %H:%M:%S %#H h %#M %#S %#D%"), "1 days 02:03:04 2 h 3 4 1");
    EXPECT_STREQ(Span(-1, -12, 0, -5).Format("%D %H %M %S %#S"), "-1 -12 00 -5 -5");
    EXPECT_STREQ(span.Format("\xE4%%%#%|%Q%#Q%##|%d%#"), "\xE4%%||");
    EXPECT_STREQ(WithStatus(Span(1.0), Span::invalid).Format("%D"), "Invalid DateTimeSpan");
    EXPECT_TRUE(span.Format(nullptr).IsEmpty() && WithStatus(Span(1.0), Span::null).Format("%D").IsEmpty());
    EXPECT_STREQ(WithStatus(Span(1.0), Span::invalid).Format(""), "");
}
