#include "zynaggr/zyndatetime.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

// Fields to value, value to fields, and there and back, against std::chrono's calendar with the same value, a
// number of days; with whole seconds, which is another value, but what the calendar itself costs, it is the
// floor. A run converts 4096 dates; items_per_second counts dates.

namespace {

using namespace std::chrono;
using Days = duration<double, days::period>;

constexpr sys_days epoch = 1899y / December / 30;

struct Ours {
    using Value = CzynDateTime;
    static Value ToValue(const SYSTEMTIME& fields) { return CzynDateTime(fields); }
    static void ToFields(const Value& value, SYSTEMTIME& fields) { value.GetAsSystemTime(fields); }
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
};

struct StdDays {
    using Value = time_point<system_clock, Days>;
    static Value ToValue(const SYSTEMTIME& fields) { return StdSeconds::ToValue(fields); }
    static void ToFields(Value value, SYSTEMTIME& fields) {
        StdSeconds::ToFields(round<seconds>(value), fields);
    }
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

template <class Calendar> void FieldsToValue(benchmark::State& state) {
    const auto dates = Dates<Calendar>();
    for (auto _ : state)
        for (const SYSTEMTIME& fields : dates)
            benchmark::DoNotOptimize(Calendar::ToValue(fields));
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(dates.size()));
}

template <class Calendar> void ValueToFields(benchmark::State& state) {
    const auto dates = Dates<Calendar>();
    std::vector<typename Calendar::Value> values;
    for (const SYSTEMTIME& fields : dates)
        values.push_back(Calendar::ToValue(fields));
    for (auto _ : state)
        for (const auto& value : values) {
            SYSTEMTIME fields;
            Calendar::ToFields(value, fields);
            benchmark::DoNotOptimize(fields);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(dates.size()));
}

template <class Calendar> void ThereAndBack(benchmark::State& state) {
    const auto dates = Dates<Calendar>();
    for (auto _ : state)
        for (const SYSTEMTIME& fields : dates) {
            SYSTEMTIME back;
            Calendar::ToFields(Calendar::ToValue(fields), back);
            benchmark::DoNotOptimize(back);
        }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(dates.size()));
}

} // namespace

#define ALL(workload, name)                                                                                  \
    BENCHMARK(name<Ours>)->Name(workload "/ours");                                                           \
    BENCHMARK(name<StdSeconds>)->Name(workload "/floor: std::chrono, whole seconds");                        \
    BENCHMARK(name<StdDays>)->Name(workload "/std::chrono, double days")

ALL("date, 4096 fields to value", FieldsToValue);
ALL("date, 4096 values to fields", ValueToFields);
ALL("date, 4096 fields to value to fields", ThereAndBack);
