// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <cstdint>

// The difference between two CzynDateTime values: a number of days with a fraction, negative for a span that
// leads back.
//
//     CzynDateTimeSpan span(1, 2, 3, 4);                      // days, hours, minutes, seconds
//     span.Format("%D days %H:%M:%S");                        // "1 days 02:03:04"
//     span.GetTotalHours();                                   // 26
//
// A span is valid within 3615897 days either way, the width of the whole calendar; a number beyond, or none
// at all (NaN), makes it invalid. Null is the status of a span that nobody knows; it is set by SetStatus
// only, and outlasts invalid in sums. Getters and negation go by the number whatever the status.
//
// Nothing throws but Format, when memory runs out. One object is for one thread at a time.
class ZYN_API CzynDateTimeSpan {
public:
    // See above.
    enum DateTimeSpanStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

    static constexpr double OLE_DATETIME_HALFSECOND = 0.5 / 86400; // in days

    CzynDateTimeSpan() = default; // 0, valid
    // A number of days, or the sum of parts.
    CzynDateTimeSpan(double days) : m_dt(days) { CheckRange(); }
    CzynDateTimeSpan(long days, int hours, int minutes = 0, int seconds = 0) {
        SetDateTimeSpan(days, hours, minutes, seconds);
    }

    // As the constructor.
    CzynDateTimeSpan& operator=(double days) { return *this = CzynDateTimeSpan(days); }
    // Parts of any size, which add up; negative ones subtract.
    void SetDateTimeSpan(long days, int hours = 0, int minutes = 0, int seconds = 0);

    // The number stays when the status is set.
    DateTimeSpanStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeSpanStatus status) { m_status = status; }
    // Makes the span invalid when its number is out of range; never valid.
    void CheckRange() {
        if (!(m_dt >= -maxSpan && m_dt <= maxSpan)) m_status = invalid;
    }

    // The exact number of days.
    operator double() const { return m_dt; }

    // The getters and Format go by the span rounded to the nearest second, halves away from zero. A number
    // that 64 bits cannot hold counts as 0 there; no valid span is near it.

    // The whole span in one unit, without its fraction: 1.5 days are 1 day, 36 hours, 2160 minutes.
    double GetTotalDays() const { return static_cast<double>(GetTotal(1)); }
    double GetTotalHours() const { return static_cast<double>(GetTotal(24)); }
    double GetTotalMinutes() const { return static_cast<double>(GetTotal(1440)); }
    double GetTotalSeconds() const { return static_cast<double>(GetTotal(86400)); }

    // What each unit leaves to the next larger one, hours from -23 to 23, minutes and seconds from -59 to 59,
    // each with the sign of the span: -1.5 days are -1 day and -12 hours.
    long GetDays() const { return static_cast<long>(GetTotal(1)); }
    long GetHours() const { return static_cast<long>(GetTotal(24) % 24); }
    long GetMinutes() const { return static_cast<long>(GetTotal(1440) % 60); }
    long GetSeconds() const { return static_cast<long>(GetTotal(86400) % 60); }

    // %D is replaced by the days, %H, %M and %S by the other parts in two digits at least, %% by a percent
    // sign; with a # behind its percent sign a part has no leading zero. A % with any other letter is left
    // out, as is one at the end. All else is copied.
    //
    // "Invalid DateTimeSpan" for an invalid span; empty for a null span, and for a null or empty format.
    CStringA Format(const char* format) const;

    // Null when either is null, else invalid when either is invalid, both with the number 0; else the sum or
    // difference, invalid if out of range.
    CzynDateTimeSpan operator+(const CzynDateTimeSpan& other) const { return Sum(other, other.m_dt); }
    CzynDateTimeSpan operator-(const CzynDateTimeSpan& other) const { return Sum(other, -other.m_dt); }
    CzynDateTimeSpan& operator+=(CzynDateTimeSpan other) { return *this = *this + other; }
    CzynDateTimeSpan& operator-=(CzynDateTimeSpan other) { return *this = *this - other; }
    // Valid unless out of range, whatever this span's status.
    CzynDateTimeSpan operator-() const { return CzynDateTimeSpan(-m_dt); }

    // Valid spans are equal when their numbers are, exactly; null ones are equal; invalid ones never are, not
    // even to themselves.
    bool operator==(const CzynDateTimeSpan& other) const {
        if (m_status != other.m_status) return false;
        return m_status == valid ? m_dt == other.m_dt : m_status == null;
    }
    bool operator!=(const CzynDateTimeSpan& other) const { return !(*this == other); }
    // Order by number; false unless both are valid. <= and >= are true for two null spans, which are equal.
    bool operator<(const CzynDateTimeSpan& other) const { return AreValid(other) && m_dt < other.m_dt; }
    bool operator>(const CzynDateTimeSpan& other) const { return other < *this; }
    bool operator<=(const CzynDateTimeSpan& other) const { return *this < other || *this == other; }
    bool operator>=(const CzynDateTimeSpan& other) const { return *this > other || *this == other; }

protected:
    static constexpr double maxSpan = 3615897.0;

    bool AreValid(const CzynDateTimeSpan& other) const {
        return m_status == valid && other.m_status == valid;
    }
    CzynDateTimeSpan Sum(const CzynDateTimeSpan& other, double days) const;
    std::int64_t GetTotal(int unitsPerDay) const;

    double m_dt = 0; // days
    DateTimeSpanStatus m_status = valid;
};
