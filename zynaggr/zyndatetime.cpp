// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatetime.h"

#include "zynplatform/timetext.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr int daysOfMonth[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr int daysBeforeMonth[13] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

// Without branches: of the years divisible by 4, a century is a leap year when 16 divides it, too.
bool IsLeapYear(std::uint32_t year) {
    return (year & (year % 25 == 0 ? 15 : 3)) == 0;
}

bool IsDate(const SYSTEMTIME& fields) {
    if (fields.wYear < 100 || fields.wYear > 9999 || fields.wMonth < 1 || fields.wMonth > 12) return false;
    const int days = daysOfMonth[fields.wMonth] + (int{fields.wMonth == 2} & int{IsLeapYear(fields.wYear)});
    return fields.wDay >= 1 && fields.wDay <= days;
}

// 1 for 1 January.
int DayOfYear(const SYSTEMTIME& date) {
    return daysBeforeMonth[date.wMonth] + (int{date.wMonth > 2} & int{IsLeapYear(date.wYear)}) + date.wDay;
}

std::int32_t DayOf(const SYSTEMTIME& date) {
    const std::uint32_t yearsBefore = date.wYear - 1u; // from the year 1 on
    const std::uint32_t centuries = yearsBefore / 100;
    const std::uint32_t days = 1461 * yearsBefore / 4 - centuries + centuries / 4;
    return static_cast<std::int32_t>(days) + DayOfYear(date) - 693594; // that of 30 December 1899
}

// Here a year begins on 1 March, so that its leap day is its last, and months count from 3 to 14. Day 0 is 1
// March of the year 0.
constexpr std::int32_t epoch = 693899; // 30 December 1899

void SetDate(SYSTEMTIME& fields, std::int32_t dayNumber) {
    // Four quarters a day: a century has 146097 and a year 1461, which puts the longer ones in their places.
    const std::uint32_t quarters = 4 * static_cast<std::uint32_t>(dayNumber + epoch) + 3;
    const std::uint32_t century = quarters / 146097;
    const std::uint32_t inCentury = quarters % 146097 | 3;
    const std::uint32_t dayOfYear = inCentury % 1461 / 4;
    // The days before the months lie on a line, as far as whole numbers do: steps of 2141/65536 of a month.
    const std::uint32_t month = 2141 * dayOfYear + 197913;
    const bool isEarly = dayOfYear >= 306;
    fields.wYear = static_cast<std::uint16_t>(100 * century + inCentury / 1461 + isEarly);
    fields.wMonth = static_cast<std::uint16_t>(month / 65536 - 12u * isEarly);
    fields.wDay = static_cast<std::uint16_t>(month % 65536 / 2141 + 1);
}

// The quotients i / divisor: dividing takes longer than all the rest of a conversion.
template <std::size_t count> consteval std::array<double, count> Quotients(double divisor) {
    std::array<double, count> quotients{};
    for (std::size_t i = 0; i < count; ++i)
        quotients[i] = static_cast<double>(i) / divisor;
    return quotients;
}

double TimeOf(const SYSTEMTIME& fields) {
    static constexpr auto hours = Quotients<24>(24);
    static constexpr auto minutes = Quotients<60>(1440);
    static constexpr auto seconds = Quotients<60>(86400);
    if (fields.wHour < 24 && fields.wMinute < 60 && fields.wSecond < 60)
        return hours[fields.wHour] + minutes[fields.wMinute] + seconds[fields.wSecond];
    return fields.wHour / 24.0 + fields.wMinute / 1440.0 + fields.wSecond / 86400.0;
}

double DateOf(const SYSTEMTIME& fields) {
    const std::int32_t day = DayOf(fields);
    const double time = TimeOf(fields);
    return day >= 0 ? day + time : day - time;
}

// The second of the day from the fraction of a day, when that is next to half a second: hours, minutes and
// seconds are split off one after the other, and more than a half is rounded up.
std::uint32_t SecondAtHalf(double fraction) {
    const double hours = fraction * 24;
    const double minutes = (hours - std::trunc(hours)) * 60;
    const double seconds = (minutes - std::trunc(minutes)) * 60;
    const double whole = std::trunc(hours) * 3600 + std::trunc(minutes) * 60 + std::trunc(seconds);
    return static_cast<std::uint32_t>(whole) + (seconds - std::trunc(seconds) > 0.5);
}

// The same for any fraction. Multiplying at once differs by far less than a microsecond from splitting, so
// it comes to the same elsewhere.
std::uint32_t SecondOf(double fraction) {
    const double second = fraction * 86400;
    const auto nearest = static_cast<std::int32_t>(second + 0.5); // NOLINT(bugprone-incorrect-roundings)
    if (std::abs(second - nearest) > 0.499999) [[unlikely]]
        return SecondAtHalf(fraction);
    return static_cast<std::uint32_t>(nearest);
}

// Of a date in range.
void FieldsOf(double date, SYSTEMTIME& fields) {
    auto day = static_cast<std::int32_t>(date);
    // Day 1 was a Sunday; whole weeks make the number positive.
    fields.wDayOfWeek = static_cast<std::uint16_t>(static_cast<std::uint32_t>(day - 1 + 7 * 100000) % 7);
    std::uint32_t second = SecondOf(std::abs(date - day));
    if (second == 86400) {
        second = 0;
        ++day;
    }
    SetDate(fields, day);
    const std::uint32_t minute = second / 60;
    fields.wHour = static_cast<std::uint16_t>(minute / 60);
    fields.wMinute = static_cast<std::uint16_t>(minute % 60);
    fields.wSecond = static_cast<std::uint16_t>(second % 60);
    fields.wMilliseconds = 0;
}

template <class Formatter>
CStringA FormatBy(Formatter formatter, const CzynDateTime& date, const char* format) {
    if (!format || !*format || date.GetStatus() == CzynDateTime::null) return {};
    UDATE fields;
    if (!date.GetAsUDATE(fields)) return "Invalid DateTime";
    std::tm time{};
    time.tm_sec = fields.st.wSecond;
    time.tm_min = fields.st.wMinute;
    time.tm_hour = fields.st.wHour;
    time.tm_mday = fields.st.wDay;
    time.tm_mon = fields.st.wMonth - 1;
    time.tm_year = fields.st.wYear - 1900;
    time.tm_wday = fields.st.wDayOfWeek;
    time.tm_yday = fields.wDayOfYear - 1;
    return CStringA(formatter(format, time));
}

} // namespace

CzynDateTime::CzynDateTime(std::int64_t seconds) : m_status(invalid) {
    std::tm local;
    if (seconds < 0 || !zynplatform::LocalTime(seconds, local) || local.tm_year > 9999 - 1900) return;
    SetDateTime(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec);
}

void CzynDateTime::Set(const SYSTEMTIME& fields) {
    const bool isDate = IsDate(fields);
    m_dt = isDate ? DateOf(fields) : 0;
    m_status = isDate ? valid : invalid;
    Free_m_pSysTime();
}

int CzynDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second) {
    const auto cut = [](int number) { return static_cast<std::uint16_t>(number); };
    Set({cut(year), cut(month), 0, cut(day), cut(hour), cut(minute), cut(second), 0});
    return m_status;
}

bool CzynDateTime::CheckSystemTime(const SYSTEMTIME& fields) {
    return IsDate(fields);
}

bool CzynDateTime::GetAsSystemTime(SYSTEMTIME& fields) const {
    if (m_status != valid) return false;
    const bool isInRange = m_dt >= firstDate && m_dt <= lastDate;
    if (isInRange)
        FieldsOf(m_dt, fields);
    else
        fields = {};
    return isInRange;
}

bool CzynDateTime::GetAsUDATE(UDATE& fields) const {
    fields.wDayOfYear = 0;
    if (!GetAsSystemTime(fields.st)) return false;
    fields.wDayOfYear = static_cast<std::uint16_t>(DayOfYear(fields.st));
    return true;
}

int CzynDateTime::GetDayOfYear() const {
    UDATE fields;
    return GetAsUDATE(fields) ? fields.wDayOfYear : -1;
}

void CzynDateTime::Init_m_pSysTime() {
    if (m_status == valid && m_pSysTime) return;
    m_pSysTime = GetAsSystemTime(m_sysTime) ? &m_sysTime : nullptr;
}

CStringA CzynDateTime::Format(const char* format) const {
    return FormatBy(zynplatform::FormatTime, *this, format);
}

CStringA CzynDateTime::FormatForUser(const char* format) const {
    return FormatBy(zynplatform::FormatTimeForUser, *this, format);
}

double CzynDateTime::Mirrored(double date) {
    const double day = std::ceil(date);
    return day - (date - day);
}

double CzynDateTime::MirroredBack(double linear) {
    const double day = std::floor(linear);
    return day - linear + day;
}
