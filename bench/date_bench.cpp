// SPDX-License-Identifier: MIT
#include "zynaggr/zyndatetime.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>
#include <string>
#include <vector>

// Fields to value, value to fields, there and back, the fields by the getters, and sums, against
// std::chrono's calendar with the same value, a number of days; with whole seconds, which is another value,
// but what the calendar itself costs, it is the floor. Dates as texts against gmtime_r and strftime, spans
// against snprintf; each ends in a string of its own. A run converts 4096 dates; items_per_second counts
// dates.

namespace {

using namespace std::chrono;
using Days = duration<double, days::period>;

constexpr sys_days epoch = 1899y / December / 30;

struct Ours {
    using Value = CzynDateTime;
    static Value ToValue(const SYSTEMTIME& fields) { return CzynDateTime(fields); }
    static void ToFields(const Value& value, SYSTEMTIME& fields) { value.GetAsSystemTime(fields); }
    static CzynDateTimeSpan Step() { return 1.5; }
};

// The same by the getters, each of a new object, which has not been asked yet.
struct OursByGetters : Ours {
    static void ToFields(const Value& value, SYSTEMTIME& fields) {
        CzynDateTime date(value);
        const auto cut = [](int number) { return static_cast<std::uint16_t>(number); };
        fields = {cut(date.GetYear()), cut(date.GetMonth()),  cut(date.GetDayOfWeek()), cut(date.GetDay()),
                  cut(date.GetHour()), cut(date.GetMinute()), cut(date.GetSecond()),    0};
    }
};

struct StdSeconds {
    using Value = sys_seconds;
    static Value ToValue(const SYSTEMTIME& f) {
        const year_month_day date{year(f.wYear), month(f.wMonth), day(f.wDay)};
        return date.ok() ? sys_days(date) + hours(f.wHour) + minutes(f.wMinute) + seconds(f.wSecond)
                         : Value();
    }
    static void ToFields(Value value, SYSTEMTIME& fields) {
        const auto day = floor<days>(value);
        const year_month_day date(day);
        const hh_mm_ss time(value - day);
        const auto cut = [](auto number) { return static_cast<std::uint16_t>(number); };
        fields = {cut(static_cast<int>(date.year())), cut(static_cast<unsigned>(date.month())),
                  cut(weekday(day).c_encoding()),     cut(static_cast<unsigned>(date.day())),
                  cut(time.hours().count()),          cut(time.minutes().count()),
                  cut(time.seconds().count()),        0};
    }
    static hours Step() { return hours(36); }
};

struct StdDays {
    using Value = time_point<system_clock, Days>;
    static Value ToValue(const SYSTEMTIME& fields) { return StdSeconds::ToValue(fields); }
    static void ToFields(Value value, SYSTEMTIME& fields) {
        StdSeconds::ToFields(round<seconds>(value), fields);
    }
    static Days Step() { return Days(1.5); }
};

// Dates after the epoch, where the fraction of ours counts like any other. Nothing is timed that does not
// give them back.
template <class Calendar> std::vector<SYSTEMTIME> Dates() {
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::int64_t> second(sys_seconds(epoch).time_since_epoch().count(),
                                                       253402214400 - 1);
    std::vector<SYSTEMTIME> dates(4096);
    for (SYSTEMTIME& fields : dates) {
        StdSeconds::ToFields(sys_seconds(seconds(second(random))), fields);
        SYSTEMTIME back{};
        Calendar::ToFields(Calendar::ToValue(fields), back);
        if (std::memcmp(&fields, &back, sizeof back) != 0) std::abort();
    }
    return dates;
}

template <class Calendar> auto Values() {
    std::vector<typename Calendar::Value> values;
    for (const SYSTEMTIME& fields : Dates<Calendar>())
        values.push_back(Calendar::ToValue(fields));
    return values;
}

template <class Sources, class Convert>
void Run(benchmark::State& state, const Sources& sources, Convert convert) {
    for (auto _ : state)
        for (const auto& source : sources)
            benchmark::DoNotOptimize(convert(source));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sources.size()));
}

template <class Calendar> void FieldsToValue(benchmark::State& state) {
    Run(state, Dates<Calendar>(), [](const SYSTEMTIME& fields) { return Calendar::ToValue(fields); });
}

template <class Calendar> void ValueToFields(benchmark::State& state) {
    Run(state, Values<Calendar>(), [](const auto& value) {
        SYSTEMTIME fields;
        Calendar::ToFields(value, fields);
        return fields;
    });
}

template <class Calendar> void ThereAndBack(benchmark::State& state) {
    Run(state, Dates<Calendar>(), [](const SYSTEMTIME& fields) {
        SYSTEMTIME back;
        Calendar::ToFields(Calendar::ToValue(fields), back);
        return back;
    });
}

// Each sum is the next one's date.
template <class Calendar> void Sums(benchmark::State& state) {
    const auto values = Values<Calendar>();
    auto value = values[0];
    Run(state, values, [&](const auto&) { return value = value + Calendar::Step(); });
}

constexpr const char numbers[] = "%Y-%m-%d %H:%M:%S", names[] = "%a, %d %B %Y, %H:%M", span[] = "%D %H:%M:%S";

template <const char* format> void Text(benchmark::State& state) {
    Run(state, Values<Ours>(), [](const CzynDateTime& value) { return value.Format(format); });
}

template <const char* format> void TextStd(benchmark::State& state) {
    std::vector<std::time_t> values;
    for (const sys_seconds value : Values<StdSeconds>())
        values.push_back(value.time_since_epoch().count());
    Run(state, values, [](std::time_t value) {
        std::tm fields;
        char text[256];
        gmtime_r(&value, &fields);
        return std::string(text, std::strftime(text, sizeof text, format, &fields));
    });
}

std::vector<CzynDateTimeSpan> Spans() {
    std::vector<CzynDateTimeSpan> spans;
    for (const CzynDateTime& value : Values<Ours>())
        spans.push_back(value - CzynDateTime(2000, 1, 1));
    return spans;
}

void SpanText(benchmark::State& state) {
    Run(state, Spans(), [](const CzynDateTimeSpan& value) { return value.Format(span); });
}

void SpanTextStd(benchmark::State& state) {
    Run(state, Spans(), [](double value) {
        const auto second = static_cast<long>(value * 86400 + (value < 0 ? -0.5 : 0.5));
        char text[64];
        const int length = std::snprintf(text, sizeof text, "%ld %02ld:%02ld:%02ld", second / 86400,
                                         second / 3600 % 24, second / 60 % 60, second % 60);
        return std::string(text, static_cast<std::size_t>(length));
    });
}

} // namespace

#define ALL(workload, name, mine)                                                                            \
    BENCHMARK(name<mine>)->Name(workload "/ours");                                                           \
    BENCHMARK(name<StdSeconds>)->Name(workload "/floor: std::chrono, whole seconds");                        \
    BENCHMARK(name<StdDays>)->Name(workload "/std::chrono, double days")
#define TEXTS(workload, format)                                                                              \
    BENCHMARK(Text<format>)->Name(workload "/ours");                                                         \
    BENCHMARK(TextStd<format>)->Name(workload "/gmtime_r, strftime")

ALL("date, 4096 fields to value", FieldsToValue, Ours);
ALL("date, 4096 values to fields", ValueToFields, Ours);
ALL("date, 4096 values to fields by the getters", ValueToFields, OursByGetters);
ALL("date, 4096 fields to value to fields", ThereAndBack, Ours);
ALL("date, 4096 fields to value to fields by the getters", ThereAndBack, OursByGetters);
ALL("date, 4096 sums", Sums, Ours);
TEXTS("date, 4096 texts", numbers);
TEXTS("date, 4096 texts with names", names);
BENCHMARK(SpanText)->Name("date, 4096 texts of spans/ours");
BENCHMARK(SpanTextStd)->Name("date, 4096 texts of spans/snprintf");
