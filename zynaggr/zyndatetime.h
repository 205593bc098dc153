// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zyndatetimespan.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"
#include "zynplatform/time.h"

#include <cstdint>

// A date and a time of day, from 1 January 100 to 31 December 9999 of the Gregorian calendar.
//
//     CzynDateTime due(2024, 2, 29, 12, 0, 0);
//     due += CzynDateTimeSpan(1, 0, 0, 0);
//     due.Format("%d.%m.%Y %H:%M");                       // "01.03.2024 12:00"
//     if (due < CzynDateTime::GetTickCount()) ...         // it is past, by local time
//
// The value is one number of days, 0 for 30 December 1899 at midnight: the whole part counts days, the
// fraction is the time of day. In a negative number the days count back, but the fraction still counts
// forward: -1.25 is 29 December 1899, 06:00, and 0.25 and -0.25 are the same time. Numbers from -657434 to
// 2958465 convert to fields, both included; the last day of the range is there at its midnight only, and so
// is the first.
//
// A value is valid, invalid or null. Input that makes no date leaves it invalid, never throws; null ("no
// date") is set by SetStatus only. What a function does with such a value is said with it; arithmetic goes by
// the number whatever the status.
//
// Calendar fields are worked out at the first question and kept until the value changes. So also asking needs
// the object for itself: one object is for one thread at a time. Format throws std::bad_alloc when memory
// runs out; nothing else throws.
class ZYN_API CzynDateTime {
public:
    // See above.
    enum DateTimeStatus : std::int32_t { valid = 0, invalid = 1, null = 2 };

    // ---- Making and assigning

    CzynDateTime() = default; // 0.0, valid
    // Number and status; what was worked out is not copied.
    CzynDateTime(const CzynDateTime& other) : m_dt(other.m_dt), m_status(other.m_status) {}
    // The number as it is; invalid when it is out of range or NaN.
    CzynDateTime(double date) : m_dt(date) { CheckRange(); }
    // The fields of a record, but for day of week, milliseconds and day of the year; 0.0 and invalid when
    // CheckSystemTime refuses them. Hours, minutes and seconds of any size add up: 25:00 is 01:00 of the next
    // day, or of the day before on a date before the epoch.
    CzynDateTime(const SYSTEMTIME& fields) { Set(fields); }
    CzynDateTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
        SetDateTime(year, month, day, hour, minute, second);
    }
    // Local time (see zynplatform::LocalTime) of a count of seconds since 1970-01-01 00:00 UTC; 0.0 and
    // invalid when that is negative or after the year 9999.
    CzynDateTime(std::int64_t seconds);
    // The current local time, to the second.
    static CzynDateTime GetTickCount() { return zynplatform::CurrentTime(); }

    // As the constructors.
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): what was worked out is worked out again
    CzynDateTime& operator=(const CzynDateTime& other) {
        m_dt = other.m_dt;
        m_status = other.m_status;
        Free_m_pSysTime();
        return *this;
    }
    CzynDateTime& operator=(double date) { return *this = CzynDateTime(date); }
    CzynDateTime& operator=(const SYSTEMTIME& fields) { return *this = CzynDateTime(fields); }
    CzynDateTime& operator=(const UDATE& fields) { return *this = fields.st; }
    CzynDateTime& operator=(std::int64_t seconds) { return *this = CzynDateTime(seconds); }

    // Each returns the new status. The numbers are cut to 16 bits without a sign before they are looked at:
    // -1 hour is 65535 hours, the year 65536 + 2024 is 2024.
    int SetDateTime(int year, int month, int day, int hour, int minute = 0, int second = 0);
    int SetDate(int year, int month, int day) { return SetDateTime(year, month, day, 0, 0, 0); }
    // A time of day without a date: on day 0, 30 December 1899.
    int SetTime(int hour, int minute, int second = 0) {
        return SetDateTime(1899, 12, 30, hour, minute, second);
    }

    // What the value is.
    DateTimeStatus GetStatus() const { return m_status; }
    // The number stays.
    void SetStatus(DateTimeStatus status) { m_status = status; }

    // Whether a record holds a day of the calendar; its hours, minutes and seconds are not looked at.
    static bool CheckSystemTime(const SYSTEMTIME& fields);

    // ---- Calendar fields
    //
    // The time is rounded to the nearest second, exactly half a second down. A time rounded up to midnight
    // has the next day's date, but the day of the week of the day before.

    // False, with the record untouched, when the value is not valid; false, with the record zeroed, when it
    // is out of range, as it may be after arithmetic or input by fields. Milliseconds are always 0.
    bool GetAsSystemTime(SYSTEMTIME& fields) const;
    // The same with the day of the year, which is 0 on failure.
    bool GetAsUDATE(UDATE& fields) const;

    // Each returns -1 where GetAsSystemTime would fail.
    int GetYear() { return Field(&SYSTEMTIME::wYear); }
    int GetMonth() { return Field(&SYSTEMTIME::wMonth); }
    int GetDay() { return Field(&SYSTEMTIME::wDay); }
    int GetHour() { return Field(&SYSTEMTIME::wHour); }
    int GetMinute() { return Field(&SYSTEMTIME::wMinute); }
    int GetSecond() { return Field(&SYSTEMTIME::wSecond); }
    int GetDayOfWeek() { return Field(&SYSTEMTIME::wDayOfWeek); } // 0 Sunday to 6 Saturday
    int GetDayOfYear() const;                                     // 1 for 1 January; worked out each time

    // The number of days.
    operator double() const { return m_dt; }

    // The fields as text by std::strftime's format, in full length; see zynplatform::FormatTime.
    // "Invalid DateTime" where GetAsSystemTime would fail; empty for a null value, and for a null or empty
    // format.
    CStringA Format(const char* format) const;
    // The same with the names of months and days (%B, %A) in the user's language, whatever the process's
    // locale is; zynplatform::FormatTimeForUser says which that is.
    CStringA FormatForUser(const char* format) const;

    // ---- Comparing and arithmetic, linear in time also before the epoch

    // Valid values are equal when their numbers are, exactly (so 0.25 and -0.25 are not, though neither is
    // less); null ones are equal; invalid ones never are, not even to themselves.
    bool operator==(const CzynDateTime& other) const {
        if (m_status != other.m_status) return false;
        return m_status == valid ? m_dt == other.m_dt : m_status == null;
    }
    bool operator!=(const CzynDateTime& other) const { return !(*this == other); }
    // Order in time; false unless both are valid. <= and >= are true for two null values, which are equal.
    bool operator<(const CzynDateTime& other) const {
        return m_status == valid && other.m_status == valid &&
               DoubleFromDate(m_dt) < DoubleFromDate(other.m_dt);
    }
    bool operator>(const CzynDateTime& other) const { return other < *this; }
    bool operator<=(const CzynDateTime& other) const { return *this < other || *this == other; }
    bool operator>=(const CzynDateTime& other) const { return *this > other || *this == other; }

    // Valid unless out of range. A sum that falls short of a midnight before the epoch, or of day 0, by no
    // more than the last bit of its number may come out two days early.
    CzynDateTime operator+(CzynDateTimeSpan span) const { return Moved(span); }
    CzynDateTime operator-(CzynDateTimeSpan span) const { return Moved(-span); }
    // The same number; the range is not checked and the status stays.
    CzynDateTime& operator+=(CzynDateTimeSpan span) {
        m_dt = Moved(span);
        Free_m_pSysTime();
        return *this;
    }
    CzynDateTime& operator-=(CzynDateTimeSpan span) { return *this += -span; }
    // The time from the other to this.
    CzynDateTimeSpan operator-(const CzynDateTime& other) const {
        return DoubleFromDate(m_dt) - DoubleFromDate(other.m_dt);
    }

protected:
    static constexpr double firstDate = -657434.0; // 1 January 100
    static constexpr double lastDate = 2958465.0;  // 31 December 9999

    // A date's number on a scale where the fraction counts forward before the epoch too, and back.
    static double DoubleFromDate(double date) { return date >= 0 ? date : Mirrored(date); }
    static double DateFromDouble(double linear) { return linear >= 0 ? linear : MirroredBack(linear); }
    static double Mirrored(double date);
    static double MirroredBack(double linear);
    double Moved(double days) const { return DateFromDouble(DoubleFromDate(m_dt) + days); }

    void Set(const SYSTEMTIME& fields);
    // Makes a value out of range, or NaN, invalid.
    void CheckRange() {
        if (!(m_dt >= firstDate && m_dt <= lastDate)) m_status = invalid;
    }

    // Fills the cache, or frees it when there is nothing to fill it with.
    void Init_m_pSysTime();
    void Free_m_pSysTime() { m_pSysTime = nullptr; }
    int Field(std::uint16_t SYSTEMTIME::*field) {
        if (!m_pSysTime || m_status != valid) Init_m_pSysTime();
        return m_pSysTime ? m_pSysTime->*field : -1;
    }

    double m_dt = 0; // days since 1899-12-30 00:00
    DateTimeStatus m_status = valid;
    SYSTEMTIME* m_pSysTime = nullptr; // the fields of the value, in m_sysTime, once they were asked for
    SYSTEMTIME m_sysTime;
};
