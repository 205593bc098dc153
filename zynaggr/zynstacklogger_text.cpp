// SPDX-License-Identifier: MIT
#include "zynaggr/zynstacklogger_impl.h"

#include "zynplatform/tick.h"
#include "zynplatform/time.h"

#include <algorithm>
#include <charconv>

namespace {

// As %0<width>i.
char* PutNumber(char* to, std::int32_t value, int width) {
    char digits[12];
    const char* from = digits;
    const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    if (value < 0) *to++ = *from++;
    to = std::fill_n(to, std::max(0, width - static_cast<int>(end - digits)), '0');
    return std::copy(from, end, to);
}

// As %04X.
char* PutHex(char* to, std::uint32_t value) {
    char digits[8];
    char* const end = digits + sizeof digits;
    char* from = end;
    for (; value != 0 || end - from < 4; value >>= 4)
        *--from = "0123456789ABCDEF"[value & 15];
    return std::copy(from, end, to);
}

char* PutText(char* to, std::string_view text) {
    return std::copy(text.begin(), text.end(), to);
}

// The text of a number, made anew only when it is another one: few pieces change from entry to entry.
struct NumberText {
    template <class Put> std::string_view Of(std::uint32_t number, Put put) {
        if (m_length == 0 || number != m_number)
            m_length = static_cast<std::size_t>(put(m_text, m_number = number) - m_text);
        return {m_text, m_length};
    }

    std::uint32_t m_number;
    char m_text[20];
    std::size_t m_length;
};

} // namespace

namespace zyn {

std::string StackTime() {
    const zynplatform::TimeOfDay time = zynplatform::LocalTimeOfDay();
    std::string stamp = "00:00:00.000 ";
    const auto putTwo = [&](std::size_t at, int value) {
        stamp[at] = static_cast<char>('0' + value / 10);
        stamp[at + 1] = static_cast<char>('0' + value % 10);
    };
    putTwo(0, time.hour);
    putTwo(3, time.minute);
    putTwo(6, time.second);
    putTwo(9, time.millisecond / 10);
    stamp[11] = static_cast<char>('0' + time.millisecond % 10);
    return stamp;
}

std::array<std::string_view, 3> StackPrefix(std::uint32_t threadId, std::int32_t depth) {
    [[gnu::tls_model("initial-exec")]] static constinit thread_local NumberText id{}, level{}, tick{};
    const auto putDepth = [](char* to, std::uint32_t number) {
        return PutNumber(to, static_cast<std::int32_t>(number), 3);
    };
    const auto putTick = [](char* to, std::uint32_t number) {
        return PutText(PutNumber(PutText(to, ":"), static_cast<std::int32_t>(number), 5), " ");
    };
    const auto putId = [](char* to, std::uint32_t number) {
        return PutText(PutHex(PutText(to, "t0x"), number), " L");
    };
    return {id.Of(threadId, putId), level.Of(static_cast<std::uint32_t>(depth), putDepth),
            tick.Of(zynplatform::TickCount(), putTick)};
}

} // namespace zyn
