// SPDX-License-Identifier: MIT
#include "zynaggr/zynstringfile.h"

#include "zynplatform/codepage.h"
#include "zynplatform/types.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <limits>
#include <memory>

// The static converters of CzynStringFile. UCS-2LE is the intermediate form of every pair.

namespace {

using Buffer = std::unique_ptr<unsigned char[]>;

Buffer Allocate(std::size_t size) {
    return Buffer(new unsigned char[size]);
}

bool FitsInt(std::size_t size) {
    return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

// The code page that an 8-bit encoding is converted with, 0 for the others.
unsigned CodePageOf(zynTextEncoding encoding) {
    switch (encoding) {
    case zynEncCP1251:
        return zynplatform::ansiCodePage;
    case zynEncUTF8:
        return zynplatform::utf8CodePage;
    default:
        return 0;
    }
}

bool Give(Buffer buffer, std::size_t length, unsigned char*& out, int& outLength) {
    out = buffer.release();
    outLength = static_cast<int>(length);
    return true;
}

bool Copy(const unsigned char* src, int length, unsigned char*& out, int& outLength) {
    const auto size = static_cast<std::size_t>(length);
    Buffer copy = Allocate(size);
    std::memcpy(copy.get(), src, size);
    return Give(std::move(copy), size, out, outLength);
}

// A last byte that is no unit stays as it is.
bool CopySwapped(const unsigned char* src, int length, unsigned char*& out, int& outLength) {
    const auto size = static_cast<std::size_t>(length);
    Buffer copy = Allocate(size);
    unsigned char* const target = copy.get();
    for (std::size_t at = 0; at + 1 < size; at += 2) {
        std::uint16_t unit;
        std::memcpy(&unit, src + at, sizeof unit);
        unit = static_cast<std::uint16_t>(unit << 8 | unit >> 8);
        std::memcpy(target + at, &unit, sizeof unit);
    }
    if (size % 2 != 0) target[size - 1] = src[size - 1];
    return Give(std::move(copy), size, out, outLength);
}

// Without the byte-order mark, if there is one.
bool ConvertUtf8To1251(const unsigned char* src, int length, unsigned char*& out, int& outLength) {
    const int mark = GetBomLength(zynEncUTF8, src, length);
    const auto size = static_cast<std::size_t>(length - mark);
    Buffer buffer = Allocate(size + 1);
    auto* const target = reinterpret_cast<char*>(buffer.get());
    const std::size_t count =
        zynplatform::Utf8To1251(reinterpret_cast<const char*>(src) + mark, size, target);
    target[count] = 0;
    return count > 0 && Give(std::move(buffer), count, out, outLength);
}

bool Convert1251ToUtf8(const unsigned char* src, int length, unsigned char*& out, int& outLength) {
    const auto size = static_cast<std::size_t>(length);
    Buffer buffer = Allocate(3 * size + 1);
    auto* const target = reinterpret_cast<char*>(buffer.get());
    const std::size_t count = zynplatform::From1251ToUtf8(reinterpret_cast<const char*>(src), size, target);
    target[count] = 0;
    return FitsInt(count + 1) && Give(std::move(buffer), count, out, outLength);
}

// 16-bit units at any address, for the code page conversions, which want them aligned.
class AlignedUnits {
public:
    AlignedUnits(const unsigned char* bytes, std::size_t count) {
        if (reinterpret_cast<std::uintptr_t>(bytes) % alignof(WCHAR) == 0) {
            m_units = reinterpret_cast<const WCHAR*>(bytes);
        } else {
            m_copy.reset(new WCHAR[count]);
            std::memcpy(m_copy.get(), bytes, count * sizeof(WCHAR));
            m_units = m_copy.get();
        }
    }
    const WCHAR* Get() const { return m_units; }

private:
    std::unique_ptr<WCHAR[]> m_copy;
    const WCHAR* m_units;
};

} // namespace

zynTextEncoding CzynStringFile::GetBufferEncode(unsigned char* buffer, int length) {
    return zynGetBufferEncodeByBOM(buffer, length, nullptr);
}

bool CzynStringFile::ConvertEncoding(zynTextEncoding from, unsigned char* src, int length, zynTextEncoding to,
                                     unsigned char*& out, int& outLength) {
    out = nullptr;
    outLength = 0;
    if (!src || length <= 0 || from == zynEncUnknown || to == zynEncUnknown) return false;
    if (from == to) return Copy(src, length, out, outLength);
    if (from == zynEncUTF8 && to == zynEncCP1251) return ConvertUtf8To1251(src, length, out, outLength);
    if (from == zynEncCP1251 && to == zynEncUTF8) return Convert1251ToUtf8(src, length, out, outLength);
    Buffer units;
    if (from != zynEncUCS2LE) {
        unsigned char* converted = nullptr;
        int convertedLength = 0;
        if (!ConvertEncoding2UCS2(from, src, length, converted, convertedLength)) return false;
        units.reset(converted);
        if (convertedLength == 0) return false;
        if (to == zynEncUCS2LE)
            return Give(std::move(units), static_cast<std::size_t>(convertedLength), out, outLength);
        src = units.get();
        length = convertedLength;
    }
    return ConverUCS2Encoding(src, length, to, out, outLength);
}

bool CzynStringFile::ConvertEncoding2UCS2(zynTextEncoding from, unsigned char* src, int length,
                                          unsigned char*& out, int& outLength) {
    out = nullptr;
    outLength = 0;
    if (!src || length <= 0) return false;
    if (from == zynEncUCS2LE) return Copy(src, length, out, outLength);
    if (from == zynEncUCS2BE) return CopySwapped(src, length, out, outLength);
    const unsigned codePage = CodePageOf(from);
    assert(codePage != 0 && "no converter for this encoding");
    if (codePage == 0) return false;
    const auto* const text = reinterpret_cast<const char*>(src);
    // No character takes less bytes than it has units: this is room for all, without counting them first.
    Buffer buffer = Allocate((static_cast<std::size_t>(length) + 1) * sizeof(WCHAR));
    const std::size_t size =
        sizeof(WCHAR) * zynplatform::ToWide(codePage, text, static_cast<std::size_t>(length),
                                            reinterpret_cast<WCHAR*>(buffer.get()));
    if (size == 0 || !FitsInt(size + sizeof(WCHAR))) return false;
    buffer[size] = buffer[size + 1] = 0;
    return Give(std::move(buffer), size, out, outLength);
}

bool CzynStringFile::ConverUCS2Encoding(unsigned char* src, int length, zynTextEncoding to,
                                        unsigned char*& out, int& outLength) {
    out = nullptr;
    outLength = 0;
    if (!src || length <= 0) return false;
    if (to == zynEncUCS2LE) return Copy(src, length, out, outLength);
    if (to == zynEncUCS2BE) return CopySwapped(src, length, out, outLength);
    if (to == zynEncUCS4LE || to == zynEncUCS4BE) {
        unsigned wideLength = 0;
        if (!BufConvert_UCS2_to_Utf32le(src, static_cast<unsigned>(length), out, wideLength)) return false;
        outLength = static_cast<int>(wideLength);
        return to == zynEncUCS4LE || BufConvert_Utf32_BE2LE(out, wideLength);
    }
    const unsigned codePage = CodePageOf(to);
    assert(codePage != 0 && "no converter for this encoding");
    if (codePage == 0) return false;
    if (const int mark = GetBomLength(zynEncUCS2LE, src, length)) {
        src += mark;
        length -= mark;
    }
    const std::size_t units = static_cast<std::size_t>(length) / sizeof(WCHAR);
    const AlignedUnits text(src, units);
    // A unit takes at most three bytes of UTF-8, or one: this is room for all, without counting them first.
    Buffer buffer = Allocate((codePage == zynplatform::utf8CodePage ? 3 : 1) * units + 1);
    const std::size_t count =
        zynplatform::ToNarrow(codePage, text.Get(), units, reinterpret_cast<char*>(buffer.get()));
    if (count == 0 || !FitsInt(count + 1)) return false;
    buffer[count] = 0;
    return Give(std::move(buffer), count, out, outLength);
}

bool CzynStringFile::BufConvert_Utf16_BE2LE(unsigned char* buffer, unsigned length) {
    if (length == 0) return true;
    if (!buffer) return false;
    for (unsigned char *unit = buffer, *end = buffer + length - length % 2; unit != end; unit += 2)
        std::swap(unit[0], unit[1]);
    return true;
}

bool CzynStringFile::BufConvert_Utf32_BE2LE(unsigned char* buffer, unsigned length) {
    if (length == 0) return true;
    if (!buffer) return false;
    for (unsigned char *unit = buffer, *end = buffer + length - length % 4; unit != end; unit += 4) {
        std::swap(unit[0], unit[3]);
        std::swap(unit[1], unit[2]);
    }
    return true;
}

bool CzynStringFile::BufConvert_Utf32le_to_UCS2(unsigned char* src, unsigned length, unsigned char*& out,
                                                unsigned& outLength) {
    out = nullptr;
    outLength = 0;
    if (length == 0) return true;
    if (!src) return false;
    const std::size_t units = length / 4;
    Buffer buffer = Allocate(length / 2);
    for (std::size_t i = 0; i < units; ++i) {
        const unsigned char* const unit = src + 4 * i;
        if (unit[2] != 0 || unit[3] != 0) return false;
        buffer[2 * i] = unit[0];
        buffer[2 * i + 1] = unit[1];
    }
    out = buffer.release();
    outLength = static_cast<unsigned>(2 * units);
    return true;
}

bool CzynStringFile::BufConvert_UCS2_to_Utf32le(unsigned char* src, unsigned length, unsigned char*& out,
                                                unsigned& outLength) {
    out = nullptr;
    outLength = 0;
    if (length == 0) return true;
    if (!src || length > std::numeric_limits<int>::max() / 2) return false;
    const std::size_t units = length / 2;
    Buffer buffer = Allocate(4 * units);
    for (std::size_t i = 0; i < units; ++i) {
        unsigned char* const unit = &buffer[4 * i];
        unit[0] = src[2 * i];
        unit[1] = src[2 * i + 1];
        unit[2] = unit[3] = 0;
    }
    out = buffer.release();
    outLength = static_cast<unsigned>(4 * units);
    return true;
}

void CzynStringFile::FreeBuffer(unsigned char* buffer) {
    delete[] buffer;
}
