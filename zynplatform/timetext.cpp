// SPDX-License-Identifier: MIT
#include "zynplatform/timetext.h"

#include "zynplatform/codepage.h"
#include "zynplatform/fork.h"
#include "zynplatform/locale.h"
#include "zynplatform/locale_table.h"
#include "zynplatform/time.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <iterator>
#include <langinfo.h>
#include <string_view>

namespace zynplatform {

namespace {

bool IsUtf8() {
    return std::string_view(nl_langinfo(_NL_TIME_CODESET)) == "UTF-8";
}

bool IsAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A text of usual length, from conversions about which C libraries agree: false stands for "leave it to
// strftime".
class QuickText {
public:
    explicit QuickText(const std::tm& time) : m_time(time) {}

    // Whether every number has as many digits as its conversion says, and every name is there.
    bool CanWrite() const {
        const auto isWithin = [](int value, int first, int last) { return value >= first && value <= last; };
        return isWithin(m_time.tm_year, 1000 - 1900, 9999 - 1900) && isWithin(m_time.tm_mon, 0, 11) &&
               isWithin(m_time.tm_mday, 1, 31) && isWithin(m_time.tm_hour, 0, 23) &&
               isWithin(m_time.tm_min, 0, 59) && isWithin(m_time.tm_sec, 0, 60) &&
               isWithin(m_time.tm_wday, 0, 6) && isWithin(m_time.tm_yday, 0, 365);
    }

    bool Write(const char* format) {
        for (; *format; ++format) {
            if (m_to >= m_room) return false;
            if (*format != '%')
                *m_to++ = *format;
            else if (!WriteConversion(*++format))
                return false;
        }
        return true;
    }

    std::string_view View() const { return {m_text, static_cast<std::size_t>(m_to - m_text)}; }

private:
    bool WriteConversion(char conversion) {
        switch (conversion) {
        case 'Y':
            return Two(Year() / 100), Two(Year() % 100);
        case 'C':
            return Two(Year() / 100);
        case 'y':
            return Two(Year() % 100);
        case 'm':
            return Two(m_time.tm_mon + 1);
        case 'd':
            return Two(m_time.tm_mday);
        case 'e':
            Two(m_time.tm_mday);
            if (m_to[-2] == '0') m_to[-2] = ' ';
            return true;
        case 'H':
            return Two(m_time.tm_hour);
        case 'I':
            return Two((m_time.tm_hour + 11) % 12 + 1);
        case 'M':
            return Two(m_time.tm_min);
        case 'S':
            return Two(m_time.tm_sec);
        case 'j':
            return One((m_time.tm_yday + 1) / 100), Two((m_time.tm_yday + 1) % 100);
        case 'w':
            return One(m_time.tm_wday);
        case 'u':
            return One((m_time.tm_wday + 6) % 7 + 1);
        case 'D':
            return Write("%m/%d/%y");
        case 'F':
            return Write("%Y-%m-%d");
        case 'R':
            return Write("%H:%M");
        case 'T':
            return Write("%H:%M:%S");
        case 'a':
            return Name(ABDAY_1 + m_time.tm_wday);
        case 'A':
            return Name(DAY_1 + m_time.tm_wday);
        case 'b':
        case 'h':
            return Name(ABMON_1 + m_time.tm_mon);
        case 'B':
            return Name(MON_1 + m_time.tm_mon);
        case 'c':
            return WriteLocales(D_T_FMT);
        case 'x':
            return WriteLocales(D_FMT);
        case 'X':
            return WriteLocales(T_FMT);
        case 'p':
            return Name(m_time.tm_hour < 12 ? AM_STR : PM_STR);
        case '%':
            return Put('%');
        default:
            return false;
        }
    }

    int Year() const { return m_time.tm_year + 1900; }
    bool Put(char character) {
        *m_to++ = character;
        return true;
    }
    bool One(int digit) { return Put(static_cast<char>('0' + digit)); }
    bool Two(int number) { return One(number / 10), One(number % 10); }

    // Of the thread's locale.
    bool Name(nl_item item) {
        const std::string_view name(nl_langinfo(item));
        if (!IsAscii(name) && IsUtf8()) return Append(Recode(name, utf8CodePage, ansiCodePage));
        return Append(name);
    }
    bool WriteLocales(nl_item format) { return IsAscii(nl_langinfo(format)) && Write(nl_langinfo(format)); }
    bool Append(std::string_view text) {
        if (text.size() > static_cast<std::size_t>(m_room - m_to)) return false;
        m_to = std::copy(text.begin(), text.end(), m_to);
        return true;
    }

    const std::tm& m_time;
    char m_text[256];
    char* m_to = m_text;
    char* const m_room = m_text + sizeof m_text - 4; // the longest number still fits in behind
};

// The zone's standard time of today. The C library's own answer, timezone and tzname, changes with every
// moment that is converted.
void SetStandardZone(std::tm& time) {
    constexpr std::int64_t halfYear = std::int64_t{183} * 86400;
    std::tm local{};
    for (const std::int64_t moment : {CurrentTime(), CurrentTime() + halfYear})
        if (LocalTime(moment, local) && local.tm_isdst == 0) break;
    time.tm_gmtoff = local.tm_gmtoff;
    time.tm_zone = local.tm_zone;
}

std::string AnyText(const char* format, std::tm time) {
    const ForkGuard guard; // the child of a fork could wait for the C library's lock for ever
    if (std::strpbrk(format, "zZcrxX")) SetStandardZone(time); // also in what the locale puts for a date
    const bool isUtf8 = IsUtf8();
    const std::string recoded = isUtf8 ? Recode(format, ansiCodePage, utf8CodePage) : format;
    const std::size_t limit = std::max<std::size_t>(256, 64 * recoded.size());
    std::string text;
    std::size_t length = 0;
    // 0 means no room or no text.
    for (std::size_t room = 256; length == 0 && text.size() < limit; room *= 2) {
        text.resize(std::min(room, limit));
        length = std::strftime(text.data(), text.size() + 1, recoded.c_str(), &time);
    }
    text.resize(length);
    return isUtf8 ? Recode(text, utf8CodePage, ansiCodePage) : text;
}

// The user's texts for dates are this thread's while this lives.
class UsersTexts {
public:
    UsersTexts() {
        const auto lcid = static_cast<std::int32_t>(GetThreadLocale());
        const auto row = std::ranges::find(localeTable, lcid, &LocaleRow::lcid);
        std::string name = std::string(row == std::end(localeTable) ? "" : row->culture) + ".utf8";
        std::ranges::replace(name, '-', '_');
        m_locale = newlocale(LC_TIME_MASK, name.c_str(), nullptr);
        if (!m_locale) m_locale = newlocale(LC_TIME_MASK, "", nullptr);
        if (m_locale) m_before = uselocale(m_locale);
    }
    ~UsersTexts() {
        if (!m_locale) return;
        uselocale(m_before);
        freelocale(m_locale);
    }
    UsersTexts(const UsersTexts&) = delete;
    UsersTexts& operator=(const UsersTexts&) = delete;

private:
    locale_t m_locale = nullptr, m_before = nullptr;
};

} // namespace

std::string FormatTime(const char* format, const std::tm& time) {
    QuickText text(time);
    return text.CanWrite() && text.Write(format) ? std::string(text.View()) : AnyText(format, time);
}

std::string FormatTimeForUser(const char* format, const std::tm& time) {
    const UsersTexts texts;
    return FormatTime(format, time);
}

} // namespace zynplatform
