// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zyndatabufex.h"
#include "zynaggr/zynerror.h"

static std::string Bytes(const CzynDataBuf& buffer) {
    return {buffer.m_pBuf, buffer.m_pBuf + buffer.m_nSize};
}

// Every way to write, at random, in own and external memory, against a string and the rules of growth.
TEST(IteratorBuffer, WritesWhatAPlainModelWrites) {
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        char memory[300];
        CzynDataBufEx buffer;
        if (round % 2) buffer.SetExternalData(memory, 0, 300);
        std::string data;
        int capacity = round % 2 ? 300 : 4096, at = 0, slot = -1;
        for (int step = 0; step < 100; ++step) {
            const int size = static_cast<int>(data.size()), written = size - slot - 4;
            const int full = capacity - (step % 2 ? at : size) - static_cast<int>(random() % 8);
            const int any = 1 + static_cast<int>(random() % (step ? 40 : 9000));
            const int n = step % 5 == 4 && full > 0 && full < 9000 ? full : any, end = at + n;
            const std::string bytes(static_cast<std::size_t>(n), "abcdefg"[step % 7]);
            const int needed[] = {size + n + 1, size + n, size + 4, end + 2, 0, size + n + 6};
            const auto way = random() % 6;
            const bool grows = needed[way] > capacity, possible = round % 2 == 0 || (way % 5 > 0 && !grows);
            if (way == 5 && possible && size + 5 > capacity) capacity = 2 * capacity + 2; // for its count
            const int twice = 2 * capacity + 2, wanted[] = {twice, twice, 0, end + 100, 0, twice};
            if (needed[way] > capacity && possible) capacity = std::max(needed[way], wanted[way]);
            if (way == 4) {
                const int cut = n % 3 ? n : -n / 3, count = cut == -1 ? written : cut;
                buffer.EndSiezer(cut);
                if (slot < 0 || count < 0 || count > written) continue;
                data.resize(static_cast<std::size_t>(slot + 4 + count));
                zyn::StoreInt32(data.data() + slot, count);
                buffer.SetCurPos(at = static_cast<int>(random() % (data.size() + 1)));
            } else {
                ASSERT_EQ(possible, way == 0   ? buffer.Add(bytes.data(), n) == size + n
                                    : way == 1 ? buffer.GetNewBuffer(n) != nullptr
                                    : way == 2 ? buffer.BeginPosSizer()
                                    : way == 5 ? buffer.AddStrBuf(bytes.c_str()) == size + n + 5
                                               : buffer.Add2Iterator(bytes.data(), n) == end);
                if (!possible) continue;
                if (way == 2) slot = size, at += 4;
                if (way == 3) data.resize(static_cast<std::size_t>(std::exchange(at, end)));
                if (way == 5) zyn::StoreInt32(data.insert(data.size(), 4, 0).data() + size, n + 1);
                data += way == 5  ? bytes + '\0'
                        : way % 3 ? std::string(way == 1 ? bytes.size() : 4, '\0')
                        : way     ? bytes + '\0'
                                  : bytes;
            }
            ASSERT_TRUE(Bytes(buffer) == data && buffer.GetMaxSize() == capacity && buffer.GetCurPos() == at);
        }
    }
}

TEST(IteratorBuffer, WritesTextsInTheirWireForm) {
    CzynDataBufEx buffer;
    CStringA text("\xC4\xE0"), read;
    EXPECT_EQ(buffer.AddStrBuf_TCHAR_2Iterator(text), 7);
    EXPECT_TRUE(buffer.Utf8StringAdd2Iterator(text) && buffer.Utf8StringAdd2Iterator(""));
    EXPECT_EQ(Bytes(buffer), "\3\0\0\0\xC4\xE0\0\4\0\0\0\xD0\x94\xD0\xB0\0\0\0\0\0"s);
    buffer.SetCurPos(7);
    EXPECT_TRUE(buffer.Utf8StringReadFromIterator(read) && read == text);
    EXPECT_TRUE(buffer.GetBytes(11, 6, read, true) && read == text);
    const std::string external[] = {"\0\0\0\0\0"s, "\0\0\0\0\0"s, "\3\0\0\0\0"s, "\3\0\0\0\xC4\xE0\0\0"s};
    for (int capacity = 5; capacity < 10; ++capacity) {
        char memory[9];
        buffer.SetExternalData(memory, 0, capacity);
        EXPECT_EQ(buffer.AddStrBuf_TCHAR_2Iterator(text), capacity / 2 == 3 ? 4 : capacity == 9 ? 7 : 0);
        EXPECT_EQ(Bytes(buffer), capacity == 5 ? "" : external[capacity - 6]);
    }
}

// Every reader over a record of five characters, cut at every byte, and with every count byte changed.
TEST(IteratorBuffer, ReadsHostileRecordsAsFarAsTheyGo) {
    for (std::size_t i = 0; i < 2 * (24 + 4 * 255); ++i) {
        const std::size_t width = i % 2 + 1, cut = std::min<std::size_t>(i / 2, 4 + 10 * width);
        const std::int64_t change = i / 2 < 24 ? 0 : static_cast<int>(i / 2 - 24) / 4 + 1;
        const std::int64_t count = 5 ^ change << i / 2 % 4 * 8, end = 4 + count * (i % 2 ? 2 : 1);
        std::string bytes(4, '\0');
        zyn::StoreInt32(bytes.data(), static_cast<std::int32_t>(count));
        bytes += width == 1 ? "ab\0dexyz?!"s : "a\0b\0\0\0d\0e\0x\0y\0z\0?\0!\0"s;
        std::vector<char> block(bytes.data(), bytes.data() + cut); // in memory of just its size
        const bool counted = block.size() >= 4, whole = counted && end <= std::ssize(block);
        const auto expected = "ab"s.substr(0, whole ? static_cast<std::size_t>(count) : 0);
        CzynDataBufEx buffer;
        buffer.SetExternalData(block.data(), static_cast<int>(block.size()));
        buffer.m_bStoreAnsi = width == 1;
        for (int reader = width == 1 ? 0 : 2; reader < 3; ++reader) {
            CStringA text("old");
            buffer.Reset();
            ASSERT_TRUE(reader == 0   ? buffer.Utf8StringReadFromIterator(text) == (whole || !counted)
                        : reader == 1 ? buffer.ReadStrBuf_TCHAR_r(text) == (whole ? count : -1)
                                      : buffer.ReadStrBuf(text) == whole);
            std::int64_t position = whole ? end : counted ? 4 : 0;
            if (reader == 0 && !whole && (!counted || count <= 0x7FFFFFFF)) position = std::ssize(block);
            ASSERT_TRUE(text.View() == expected && buffer.GetCurPos() == position) << i;
        }
    }
}

TEST(IteratorBuffer, FindsViewsMasksAndOverwritesWithinItsData) {
    char b[] = "bab";
    CzynDataBufEx buffer, view;
    CStringA text;
    buffer.BeginPosSizer();
    buffer.Clear();
    buffer.Add("abbab", 5);
    buffer.EndSiezer(-1); // the slot went with the data
    for (const auto& [from, n, found] : {std::array{0, 3, 2}, {3, 1, 4}, {4, 2, -1}, {5, 0, 5}, {-1, 1, -1}})
        EXPECT_EQ(buffer.FindBytes(from, b, n), found) << from;
    EXPECT_TRUE(buffer.GetBytes(3, 2, view) && view.IsExternalData() && view.m_pBuf == buffer.m_pBuf + 3);
    EXPECT_TRUE(view.GetMaxSize() == 2 && view.GetBytes(1, 1, text, false) && text == "b");
    for (const auto& [from, n] : {std::pair(-1, 2), {4, 2}, {5, 0}, {0x7FFFFFFF, 0x7FFFFFFF}})
        EXPECT_FALSE(buffer.GetBytes(from, n, view) || buffer.GetBytes(from, n, text, true) ||
                     view.IsExternalData());
    EXPECT_FALSE(buffer.EnMaskTail(5, b, 1) || buffer.EnMaskTail(-1, b, 1) || buffer.CopyDataTo(-1, b, 1));
    EXPECT_TRUE(buffer.EnMaskTail(1, "\1\2", 2) && Bytes(buffer) == "a`ccc");
    EXPECT_TRUE(buffer.CopyDataTo(4, b, 3) && buffer.CopyDataTo(4093, b, 3) && Bytes(buffer) == "a`ccb");
    EXPECT_FALSE(buffer.CopyDataTo(4094, b, 3) || buffer.GetBytes(0, 5, buffer));
}

TEST(IteratorBuffer, HandsItsMemoryOverAndRefusesAnIteratorOutsideIt) {
    CzynDataBufEx buffer;
    CzynDataBuf target;
    CStringA text;
    for (const int n : {0, 10}) {
        buffer.Add("0123456789", n);
        EXPECT_TRUE(!buffer.MoveData2DBuf(buffer) && buffer.MoveData2DBuf(target) && target.m_nSize == n);
        EXPECT_TRUE(buffer.GetMaxSize() == 100 && target.GetMaxSize() == (n ? n : 4096));
    }
    EXPECT_EQ(target.Add(target.m_pBuf, 10), 20); // its own data, which moves meanwhile
    EXPECT_EQ(Bytes(target), "01234567890123456789");
    buffer.SetCurPos(0x7FFFFFFF);
    EXPECT_EQ(buffer.ReadFromIterator(&target, 1), -0x7FFFFFFF);
    EXPECT_THROW(buffer.Add2Iterator("x", 1), std::bad_alloc);
    buffer.SetCurPos(-1);
    EXPECT_TRUE(buffer.ReadFromIterator(&target, 1) == 0 && buffer.Add2Iterator("x", 1) == -1);
    EXPECT_THAT([&] { buffer.ReadStrBuf_TCHAR_(text); },
                testing::Throws<SzynErrorDescription>(testing::Field(&SzynErrorDescription::m_nCode, 101)));
}
