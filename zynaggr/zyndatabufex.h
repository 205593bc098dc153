// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zyndatabuf.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// A buffer with an iterator: the base class's position, at which this one also writes. A block is built front
// to back, rewound and read, or written anew from a given point.
//
//     CzynDataBufEx buffer;
//     buffer.Add2Iterator("xyz", 3);      // 3; the data is x y z 0
//     buffer.Reset();
//     int n = buffer.ReadFromIterator(bytes, 10);     // 4
//
// A write at the iterator cuts off whatever lay behind it and ends the data with a zero byte, which counts in
// the size and which the next write overwrites. Where the iterator was set beyond the data, what lies between
// is not initialised. Own memory grows to 100 bytes beyond the write; external memory is not written when it
// would have to grow, and it must always have two bytes to spare.
//
// Integers have their low byte first. All that the base class says of memory, hostile data and threads holds
// here too.
class ZYN_API CzynDataBufEx : public CzynDataBuf {
public:
    CzynDataBufEx() = default;
    ~CzynDataBufEx() override;

    // Whether the memory is the caller's.
    bool IsExternalData() const { return m_bExternalData; }
    // Wraps external memory of `capacity` bytes, of which `size` are data; 0 stands for a capacity of `size`.
    void SetExternalData(void* data, int size, int capacity = 0);
    // Begins a new block in the same memory.
    void Set2Begin();

    // ---- At the iterator

    // Writes n bytes, which may be the buffer's own. Returns the new iterator; -1 for null, a negative n or a
    // negative iterator; 0 where external memory has no room.
    int Add2Iterator(void* data, int n) { return Write(data, n); }
    int Add2Iterator(const char* data, int n) { return Write(data, n); }
    // Reads up to n bytes; returns how many. 0 for n below 1, without a buffer and at the end of the data; a
    // negative number when the iterator lies beyond it.
    int ReadFromIterator(void* out, int n) {
        if (!m_pBuf || !out || n < 1 || m_nCurPos < 0) return 0;
        const int count = std::min(n, m_nSize - m_nCurPos);
        if (count < 1) return count;
        std::memcpy(out, m_pBuf + m_nCurPos, static_cast<std::size_t>(count));
        m_nCurPos += count;
        return count;
    }

    // Writes a string record as CzynDataBuf::AddStrBuf does in 8-bit mode, whatever the mode; returns the new
    // iterator. Where external memory has no room for the record, a count of 0 is written instead if there is
    // room for that, else nothing; 0 says that the last write found no room. Just the last byte lacking, the
    // count stays without its text.
    int AddStrBuf_TCHAR_2Iterator(CStringA& text);
    // Reads a string record up to its first zero byte; returns its count, 0 for the record of a null. When it
    // fails, `text` is empty and the iterator is behind the count, if that could be read; the first one
    // returns -1, the second one throws a SzynErrorDescription with code 101 and module 4.
    int ReadStrBuf_TCHAR_r(CStringA& text) {
        text.Empty();
        std::int32_t count = 0;
        if (!Read(&count)) return -1;
        return count == 0 || ReadText(text, count) ? count : -1;
    }
    int ReadStrBuf_TCHAR_(CStringA& text);

    // Writes the text, which is in the code page CzynStringAdapter::m_st_encoding, as UTF-8: the number of
    // bytes as 4 bytes, then the bytes, no terminator. Always true: look for room in external memory before,
    // since count and text are written each if there is room for it.
    bool Utf8StringAdd2Iterator(CStringA text);
    // Reads such a text up to its first zero byte. False when the count is negative or not covered by the
    // data; true, with `text` empty, when not even the count is there. The iterator moves over what there is.
    bool Utf8StringReadFromIterator(CStringA& text);

    // ---- At an offset; size and iterator stay

    // Overwrites bytes within the capacity, also beyond the data. False when they don't fit.
    bool CopyDataTo(int offset, void* data, int n);
    // The lowest offset from `from` on at which the data holds the n bytes, or -1. Nothing (n = 0) is found
    // at `from`, if that is within the data or its end.
    int FindBytes(int from, void* pattern, int n) const;
    // Makes `out` a view: external data over these bytes of this buffer, size and capacity n. It is valid
    // until this buffer grows, is cleared or hands its memory over. False, with `out` emptied, when the bytes
    // are not all within the data, n is below 1 or `out` is this buffer.
    bool GetBytes(int from, int n, CzynDataBufEx& out);
    // Takes the bytes, up to the first zero, as text in the system's code page, or as UTF-8 that is converted
    // to it. False, with `text` empty, for bytes as above.
    bool GetBytes(int from, int n, CStringA& text, bool utf8) const;
    // XORs the data from `from` on with the mask, which is walked backwards: its last byte first, and again
    // after its first. Done twice, it restores the data. False for `from` outside the data and an empty mask.
    bool EnMaskTail(int from, const char* mask, int maskLength);

    // Hands the memory over: `target` then owns it, size and capacity as the size here; for a size of 0 it
    // becomes an empty buffer of capacity 4096. This buffer goes on, empty, with a capacity of 100. False for
    // external memory, without memory and for this buffer itself.
    bool MoveData2DBuf(CzynDataBuf& target);

protected:
    static constexpr std::int32_t spareOnGrowth = 100;
    // The capacity for data up to `end`.
    ZYN_LOCAL static std::int64_t GrownFor(std::int64_t end);

    int Write(const void* data, std::int64_t n) {
        if (!data || n < 0 || m_nCurPos < 0) return -1;
        const std::int64_t end = m_nCurPos + n;
        const std::int64_t capacity = end + 1 < m_nMaxSize ? m_nMaxSize : end + spareOnGrowth;
        if (capacity > m_nReach) return WriteGrowing(data, n);
        m_nMaxSize = static_cast<std::int32_t>(capacity);
        return WriteWithin(data, n);
    }
    int WriteWithin(const void* data, std::int64_t n) {
        const auto end = static_cast<std::int32_t>(m_nCurPos + n);
        char* const to = m_pBuf + m_nCurPos;
        std::memmove(to, data, static_cast<std::size_t>(n));
        to[n] = 0;
        m_nCurPos = end;
        m_nSize = end + 1;
        return end;
    }
    int WriteGrowing(const void* data, std::int64_t n);
    int WriteCount(std::int64_t count);
    ZYN_LOCAL void ReserveRecord(std::int64_t n);
    bool IsWithin(int from, int n) const;
};
