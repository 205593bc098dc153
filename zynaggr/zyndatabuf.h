// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/export.h"
#include "zynplatform/types.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace zyn {

// A 32-bit integer as it stands in a buffer: four bytes, the low one first, on every machine.
inline void StoreInt32(char* bytes, std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    bytes[0] = static_cast<char>(bits);
    bytes[1] = static_cast<char>(bits >> 8);
    bytes[2] = static_cast<char>(bits >> 16);
    bytes[3] = static_cast<char>(bits >> 24);
}
inline std::int32_t LoadInt32(const char* bytes) {
    const auto byte = [bytes](int i) { return std::uint32_t{static_cast<unsigned char>(bytes[i])}; };
    return static_cast<std::int32_t>(byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24);
}

} // namespace zyn

// A growable block of bytes: values and strings are appended at the end and read back, in the same order,
// from a position that moves along.
//
//     CzynDataBuf out;                              CzynDataBuf in(block, size);   // memory of the caller
//     out.Add(&number, 4);                          if (!in.Read(&number)) ...
//     out.AddStrBuf("text");                        if (!in.ReadStrBuf(text)) ...
//     send(out.GetBuffer(), out.m_nSize);
//
// Items follow each other without padding; integers and 16-bit units have their low byte first:
//
//     written by                     bytes
//     Add(&value, 4)                 the 4 bytes of the integer
//     Add(data, n)                   the n bytes
//     AddStr(text)                   the text, neither count nor terminator
//     AddStrBuf(text)                k = length + 1 as 4 bytes, then k characters, the last a zero
//     AddStrBuf(null)                0 as 4 bytes
//     BeginPosSizer ... EndSiezer    count as 4 bytes, then that many bytes
//
// While m_bStoreAnsi is true, characters of strings are bytes; else they are 16-bit units, but for those of
// AddStr(const char*), and k counts units. The writer's mode is not recorded: reader and writer agree on it.
// Add writes the bytes of memory as they are; a program for a machine with the high byte first puts its
// integers in order before, with zyn::StoreInt32.
//
// The memory is the buffer's own, or external: wrapped memory of the caller, which must outlive its use, is
// never freed and never grows. An own buffer starts with a capacity of 4096 and grows by doubling, with one
// byte beyond the capacity for a trailing zero.
//
// Data may come from anywhere: a count that is negative or not covered by the data makes the read fail, and
// nothing is allocated for it. A position outside the data reads nothing. External memory that is null counts
// as empty, as does a negative size.
//
// Where nothing else is said, running out of memory, or of 2^31 - 1 bytes, throws std::bad_alloc and leaves
// the buffer as it was; but a read may have moved the position. Not copied; one thread at a time.
class ZYN_API CzynDataBuf {
public:
    CzynDataBuf();
    // With a capacity of n bytes, as SetSize; for 0 nothing is allocated.
    explicit CzynDataBuf(int n);
    // Wraps external memory to be read. The capacity is 0: nothing can be written, not even by a size slot.
    CzynDataBuf(char* data, int size);
    virtual ~CzynDataBuf();
    CzynDataBuf(const CzynDataBuf&) = delete;
    CzynDataBuf& operator=(const CzynDataBuf&) = delete;

    // ---- Memory

    // Sets the capacity, also to less than it was. False, with nothing changed, for external memory and for n
    // below the size in use; true, with nothing changed, when n equals the size in use.
    bool SetSize(int n);
    int GetMaxSize() const { return m_nMaxSize; } // the capacity

    // The data; null while nothing is allocated. Valid until the buffer grows or lets its memory go.
    void* GetBuffer() const { return m_pBuf; }
    // The same from the position on, which is not checked.
    void* GetCurBuffer() const { return m_pBuf ? m_pBuf + m_nCurPos : nullptr; }
    // The next n bytes, in place, and moves behind them; null, without moving, when there are fewer or n is
    // negative.
    void* GetCurBuffer(int n) {
        if (!m_pBuf || !HasBytes(n)) return nullptr;
        char* const bytes = m_pBuf + m_nCurPos;
        m_nCurPos += n;
        return bytes;
    }

    // Empties the buffer. An own one keeps its capacity; from external memory it parts, without touching it,
    // for an own buffer of capacity 4096.
    void Clear();
    // Wraps external memory, size and capacity `size`. What the buffer owned is freed.
    void SetExternalData(void* data, int size);
    // Takes over memory that came from new char[size], as size and capacity; the buffer deletes it. For null
    // or a size of 0 the buffer becomes an own, empty one of capacity 4096, and `data` stays the caller's.
    // What the buffer owned is freed.
    void AttachExternalData(void* data, int size);

    // ---- Writing at the end

    // Appends n bytes, which may be the buffer's own, and a zero byte behind them that is not counted: the
    // data can be read as a text. Grows when size + n is not below the capacity: 4096, 8194, 16390.
    //
    // Returns the end of the data, which is the size; -1 for external memory, null or a negative n. When
    // memory runs out a message box says so, nothing is appended and the result is the size as it was.
    int Add(const void* data, int n) {
        if (m_bExternalData || !data || n < 0) return -1;
        return n == 0 ? m_nSize : Append(data, static_cast<std::size_t>(n));
    }

    // Each returns what Add does; -1 for null. An empty text appends nothing, and its result is the size.
    int AddStr(const char* text);
    // In 8-bit mode the text is converted to the code page CzynStringAdapter::m_st_encoding, and as many
    // bytes are appended as it has units: where the conversion is longer it is cut, where shorter, zeros
    // follow.
    int AddStr(const WCHAR* text);

    // Appends a string record; returns the size, or -1 for external memory. Where the buffer cannot grow that
    // is reported as by Add, and no part of the record is written. 16-bit mode converts from the system's
    // code page. The text does not lie in this buffer.
    int AddStrBuf(const char* text) {
        if (m_bExternalData) return -1;
        const std::size_t count = text ? std::strlen(text) + 1 : 0;
        return m_bStoreAnsi || !text ? AddRecord(count, text, count) : AddUnitsRecord(text, count);
    }

    // Appends n zero bytes for the caller to fill; returns where they start. Null for a negative n and where
    // external memory has no room.
    void* GetNewBuffer(int n);

    // Opens a size slot: appends 4 bytes that will hold the number of bytes after them, and moves the
    // position on by 4. One slot at a time: opening another one leaves the first as it is. Grows by just the
    // 4 bytes; false where external memory has no room.
    bool BeginPosSizer();
    // Puts n into the slot and cuts the data to n bytes behind it; -1 stands for all that was written behind
    // it. Nothing happens when fewer bytes than n stand there, for other negative n, and without a slot. The
    // slot may be filled again until the data goes, by Clear, say.
    void EndSiezer(int n);

    // ---- Reading from the position

    // In bytes from the start of the data.
    int GetCurPos() const { return m_nCurPos; }
    void SetCurPos(int position) { m_nCurPos = position; } // not checked
    void Reset() { m_nCurPos = 0; }                        // to the start

    // Reads an integer. When fewer than 4 bytes are left it becomes 0, the position stays, and the result is
    // false. Without a buffer `out` is not touched.
    bool Read(int* out) {
        if (!m_pBuf || !out) return false;
        if (!HasBytes(4)) {
            *out = 0;
            return false;
        }
        *out = zyn::LoadInt32(m_pBuf + m_nCurPos);
        m_nCurPos += 4;
        return true;
    }
    bool Read(unsigned int* out) { return Read(reinterpret_cast<int*>(out)); }
    // Copies n bytes. When fewer are left, all n bytes of `out` become zero, the position stays, and the
    // result is false, as it is for n below 1.
    bool Read(void* out, int n);

    // Reads a string record, up to its first zero character. When it fails, `line` is empty and the position
    // is behind the count, if that could be read. In 16-bit mode the text is converted to the code page
    // CzynStringAdapter::m_st_encoding.
    bool ReadStrBuf(CStringA& line) {
        line.Empty();
        std::int32_t count = 0;
        if (!Read(&count)) return false;
        if (count == 0) return true;
        return m_bStoreAnsi ? ReadText(line, count) : ReadUnits(line, count);
    }

    // Reads a text line, up to a line end (CR, LF, CR LF or LF CR), which is left out, or a zero byte, which
    // becomes the line's last character, or the end of the data. False only when no byte is left.
    bool ReadString(CStringA& line);

    char* m_pBuf = nullptr;       // null: nothing is allocated
    std::int32_t m_nSize = 0;     // bytes in use
    bool m_bStoreAnsi = true;     // strings are stored as 8-bit text; may be changed at any time
    std::int32_t m_nMaxSize = 0;  // capacity in bytes
    std::int32_t m_nCurPos = 0;   // where the next read starts
    bool m_bExternalData = false; // the memory is the caller's

protected:
    // Whether n bytes can be read at the position.
    bool HasBytes(std::int32_t n) const { return m_nCurPos >= 0 && n >= 0 && n <= m_nSize - m_nCurPos; }

    // Add, for an own buffer and n above 0.
    int Append(const void* data, std::size_t n) {
        if (n >= static_cast<std::size_t>(m_nMaxSize - m_nSize)) return AppendGrowing(data, n);
        const std::int32_t end = m_nSize + static_cast<std::int32_t>(n);
        char* const to = m_pBuf + m_nSize;
        std::memcpy(to, data, n);
        to[n] = 0;
        m_nSize = end;
        return end;
    }
    int AppendGrowing(const void* data, std::size_t n);
    int AddRecord(std::size_t count, const void* data, std::size_t n) {
        const auto room = static_cast<std::size_t>(m_nMaxSize - m_nSize);
        if (room <= 4 || n >= room - 4) return AddRecordGrowing(count, data, n);
        const std::int32_t end = m_nSize + 4 + static_cast<std::int32_t>(n);
        char* const to = m_pBuf + m_nSize;
        zyn::StoreInt32(to, static_cast<std::int32_t>(count));
        if (n > 0) std::memcpy(to + 4, data, n);
        to[4 + n] = 0;
        m_nSize = end;
        return end;
    }
    int AddRecordGrowing(std::size_t count, const void* data, std::size_t n);
    void CutTo(std::int32_t size) {
        m_nSize = size;
        m_pBuf[size] = 0;
    }
    int AddUnitsRecord(const char* text, std::size_t count);

    // Moves the data to new memory of this capacity; returns the old one for as long as what is to be copied
    // may lie in.
    std::unique_ptr<char[]> Reallocate(std::int64_t capacity);
    // Frees the memory, unless external, and goes on with another one, the position at its start.
    void Replace(void* data, std::int32_t size, std::int32_t capacity, bool external);

    // Read the next n bytes, above 0, or 16-bit units, as text up to the first zero; false, without moving,
    // when there are fewer.
    bool ReadText(CStringA& line, std::int32_t n) {
        const char* const text = static_cast<const char*>(GetCurBuffer(n));
        if (!text) return false;
        if (text[n - 1] == 0) // as written by AddStrBuf
            line = text;
        else
            line.Append(text, static_cast<int>(std::find(text, text + n, '\0') - text));
        return true;
    }
    bool ReadUnits(CStringA& line, std::int32_t n);

    std::int32_t m_nSizerPos = -1; // where the size slot lies; -1: none
    // The capacity that the memory has room for, more than m_nMaxSize tells: its steps are fixed.
    std::int64_t m_nReach = 0;
};
