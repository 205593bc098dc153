// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "zynaggr/zyndatetime.h"

#include <cmath>
#include <string>

// The input is two dates, as numbers, fields or counts of seconds, and a format.

namespace {

double TakeDays(Input& input) {
    if (input.Below(4) == 0) {
        double days = 0;
        const std::string_view bytes = input.Take(sizeof days);
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(&days));
        return days;
    }
    return input.Number() % 3'000'000 + input.Number() % 86'400 / 86'400.0 + input.Number() % 100 * 1e-8;
}

CzynDateTime TakeDate(Input& input) {
    const unsigned kind = input.Below(4);
    if (kind > 1) return TakeDays(input);
    int parts[6];
    for (int& part : parts)
        part = input.Number();
    if (kind == 1) return {parts[0] & 0x3FFF, parts[1] & 15, parts[2] & 31, parts[3], parts[4], parts[5]};
    return std::int64_t{parts[0]} << (parts[1] & 31);
}

// The fields make the date again, to half a second, and its texts.
void CheckFields(const CzynDateTime& date) {
    UDATE fields;
    if (!date.GetAsUDATE(fields)) return Check(date.Format("%Y") == "Invalid DateTime");
    Check(CzynDateTime::CheckSystemTime(fields.st));
    const CzynDateTime again(fields.st);
    Check(again.GetStatus() == CzynDateTime::valid && std::abs(double(again - date)) * 86400 < 0.501);
    const SYSTEMTIME& f = fields.st;
    CStringA text;
    text.Format("%d-%02d-%02d %02d:%02d:%02d %03d", f.wYear, f.wMonth, f.wDay, f.wHour, f.wMinute, f.wSecond,
                fields.wDayOfYear);
    Check(date.Format("%Y-%m-%d %H:%M:%S %j") == text);
}

void CheckSpan(const CzynDateTimeSpan& span) {
    if (span.GetStatus() != CzynDateTimeSpan::valid) return;
    const std::int64_t hours = 24 * std::int64_t{span.GetDays()} + span.GetHours();
    const std::int64_t seconds = (60 * hours + span.GetMinutes()) * 60 + span.GetSeconds();
    Check(static_cast<double>(seconds) == span.GetTotalSeconds() && -(-span) == span);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const CzynDateTime date = TakeDate(input), other = TakeDate(input);
    const std::string format(input.Rest());
    CheckFields(date);
    const CzynDateTimeSpan span = date - other;
    CheckSpan(span);
    date.Format(format.c_str());
    span.Format(format.c_str());
    if (date.GetStatus() + other.GetStatus() != CzynDateTime::valid) return 0;
    Check((other < date) == (double(span) > 0) && (date < other) == (double(span) < 0));
    // Short of a midnight before the epoch by the last bit of its number, a sum may come out two days early.
    const CzynDateTime sum = other + span;
    const double error = std::abs(double(sum - date));
    Check(error < 1e-6 || std::abs(error - 2) < 1e-6);
    CheckFields(sum);
    return 0;
}
