#include "zynaggr/zyndatetimespan.h"

#include <cmath>

namespace {

constexpr double maxSpan = 3615897.0;

// 0 for what 64 bits cannot hold.
std::int64_t Whole(double number) {
    return std::abs(number) < 0x1p63 ? static_cast<std::int64_t>(number) : 0;
}

} // namespace

void CzynDateTimeSpan::SetDateTimeSpan(long days, int hours, int minutes, int seconds) {
    *this = static_cast<double>(days) + hours / 24.0 + minutes / 1440.0 + seconds / 86400.0;
}

void CzynDateTimeSpan::CheckRange() {
    if (!(m_dt >= -maxSpan && m_dt <= maxSpan)) m_status = invalid;
}

std::int64_t CzynDateTimeSpan::GetTotal(int unitsPerDay) const {
    const double rounded = m_dt >= 0 ? m_dt + OLE_DATETIME_HALFSECOND : m_dt - OLE_DATETIME_HALFSECOND;
    return Whole(rounded * unitsPerDay);
}

CStringA CzynDateTimeSpan::Format(const char* format) const {
    CStringA text;
    if (!format || m_status == null) return text;
    if (*format && m_status == invalid) return "Invalid DateTimeSpan";
    for (; *format; ++format) {
        if (*format != '%') {
            text += *format;
            continue;
        }
        const bool isAlternate = *++format == '#';
        if (isAlternate) ++format;
        const char* const partFormat = isAlternate ? "%ld" : "%02ld";
        switch (*format) {
        case 'D':
            text.AppendFormat("%ld", GetDays());
            break;
        case 'H':
            text.AppendFormat(partFormat, GetHours());
            break;
        case 'M':
            text.AppendFormat(partFormat, GetMinutes());
            break;
        case 'S':
            text.AppendFormat(partFormat, GetSeconds());
            break;
        case '%':
            text += '%';
            break;
        case 0:
            return text;
        default:
            break;
        }
    }
    return text;
}

CzynDateTimeSpan CzynDateTimeSpan::Sum(const CzynDateTimeSpan& other, double days) const {
    if (AreValid(other)) return m_dt + days;
    CzynDateTimeSpan sum;
    sum.m_status = m_status == null || other.m_status == null ? null : invalid;
    return sum;
}

bool CzynDateTimeSpan::operator==(const CzynDateTimeSpan& other) const {
    if (m_status != other.m_status) return false;
    return m_status == valid ? m_dt == other.m_dt : m_status == null;
}
