#include "zynplatform/time.h"

#include "zynplatform/codepage.h"
#include "zynplatform/fork.h"
#include "zynplatform/locale.h"
#include "zynplatform/locale_table.h"

#include <algorithm>
#include <atomic>
#include <clocale>
#include <ctime>
#include <iterator>
#include <langinfo.h>
#include <string_view>

namespace zynplatform {

namespace {

std::int64_t SystemTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

std::atomic<std::int64_t (*)()> timeSource{SystemTime};

std::int64_t Milliseconds() {
    return timeSource.load(std::memory_order_acquire)();
}

} // namespace

std::int64_t CurrentTime() {
    return Milliseconds() / 1000;
}

TimeOfDay LocalTimeOfDay() {
    // Breaking a time down costs more than reading the clock, so each thread does it once a second.
    static constinit thread_local std::int64_t brokenDown = -1;
    static constinit thread_local TimeOfDay time{};

    const std::int64_t now = Milliseconds();
    if (now / 1000 != brokenDown) {
        std::tm local{};
        LocalTime(now / 1000, local);
        time = {local.tm_hour, local.tm_min, local.tm_sec, 0};
        brokenDown = now / 1000;
    }
    time.millisecond = static_cast<int>(now % 1000);
    return time;
}

void SetTimeSource(std::int64_t (*milliseconds)()) {
    timeSource.store(milliseconds ? milliseconds : SystemTime, std::memory_order_release);
}

bool LocalTime(std::int64_t seconds, std::tm& local) {
    const ForkGuard guard; // the child of a fork could wait for the C library's lock for ever
    tzset();               // localtime_r need not look at TZ again
    const std::time_t time = seconds;
    return localtime_r(&time, &local) != nullptr;
}

namespace {

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

} // namespace

std::string FormatTime(const char* format, std::tm time) {
    const ForkGuard guard; // as above
    SetStandardZone(time);
    const bool isUtf8 = std::string_view(nl_langinfo(_NL_TIME_CODESET)) == "UTF-8";
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

namespace {

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

std::string FormatTimeForUser(const char* format, std::tm time) {
    const UsersTexts texts;
    return FormatTime(format, time);
}

} // namespace zynplatform
