// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatetimespan.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

namespace {

// 0 for what 64 bits cannot hold.
std::int64_t Whole(double number) {
    return std::abs(number) < 0x1p63 ? static_cast<std::int64_t>(number) : 0;
}

// As %0<width>ld: the sign counts.
void AppendNumber(std::string& text, long number, int width) {
    char digits[24];
    char* const end = std::to_chars(digits, std::end(digits), number).ptr;
    if (number < 10 && width == 2 && number >= 0) text += '0';
    text.append(digits, end);
}

} // namespace

void CzynDateTimeSpan::SetDateTimeSpan(long days, int hours, int minutes, int seconds) {
    *this = static_cast<double>(days) + hours / 24.0 + minutes / 1440.0 + seconds / 86400.0;
}

std::int64_t CzynDateTimeSpan::GetTotal(int unitsPerDay) const {
    const double rounded = m_dt >= 0 ? m_dt + OLE_DATETIME_HALFSECOND : m_dt - OLE_DATETIME_HALFSECOND;
    return Whole(rounded * unitsPerDay);
}

CStringA CzynDateTimeSpan::Format(const char* format) const {
    if (!format || !*format || m_status == null) return {};
    if (m_status == invalid) return "Invalid DateTimeSpan";
    std::string text;
    text.reserve(2 * std::strlen(format));
    for (; *format; ++format) {
        if (*format != '%') {
            text += *format;
            continue;
        }
        const bool isAlternate = *++format == '#';
        if (isAlternate) ++format;
        const int width = isAlternate ? 1 : 2;
        switch (*format) {
        case 'D':
            AppendNumber(text, GetDays(), 1);
            break;
        case 'H':
            AppendNumber(text, GetHours(), width);
            break;
        case 'M':
            AppendNumber(text, GetMinutes(), width);
            break;
        case 'S':
            AppendNumber(text, GetSeconds(), width);
            break;
        case '%':
            text += '%';
            break;
        case 0:
            --format;
            break;
        default:
            break;
        }
    }
    return CStringA(std::move(text));
}

CzynDateTimeSpan CzynDateTimeSpan::Sum(const CzynDateTimeSpan& other, double days) const {
    if (AreValid(other)) return m_dt + days;
    CzynDateTimeSpan sum;
    sum.m_status = m_status == null || other.m_status == null ? null : invalid;
    return sum;
}
