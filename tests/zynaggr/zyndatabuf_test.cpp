// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zyndatabuf.h"
#include "zynaggr/zynstringadapter.h"
#include "zynhost/memory.h"

// Strings of 16 bits are converted by the adapter's code page, which is UTF-8 here, records by the system's.
TEST(DataBuffer, WritesItsItemsInTheirWireForm) {
    using B = CzynDataBuf;
    static constexpr int value = -2; // as this machine holds it, low byte first
    const auto bytes = [](const B& b) { return std::string(b.m_pBuf, b.m_pBuf + b.m_nSize); };
    const std::tuple<int (*)(B&), std::string, std::string> cases[] = {
        {[](B& b) { return b.Add(&value, 4); }, "\xFE\xFF\xFF\xFF", "\xFE\xFF\xFF\xFF"},
        {[](B& b) { return b.AddStr("a\xC4"); }, "a\xC4", "a\xC4"},
        {[](B& b) { return b.AddStr(""); }, "", ""},
        {[](B& b) { return b.AddStr(u"a\u0414\u4E2D"); }, "a\xD0\x94", "a\0\x14\4\x2D\x4E"s},
        {[](B& b) { return b.AddStrBuf("a\xC4"); }, "\3\0\0\0a\xC4\0"s, "\3\0\0\0a\0\x14\4\0\0"s},
        {[](B& b) { return b.AddStrBuf(nullptr); }, "\0\0\0\0"s, "\0\0\0\0"s},
    };
    CStringA text;
    for (int i = 0; i < 12; ++i) {
        const auto& [write, narrow, wide] = cases[i / 2];
        char memory[10];
        B buffer, external(memory, 10);
        CzynStringAdapter::m_st_encoding = 65001;
        buffer.m_bStoreAnsi = i % 2 == 0;
        EXPECT_EQ(write(external), narrow.empty() ? 10 : -1);
        EXPECT_EQ(write(buffer), buffer.m_nSize);
        EXPECT_EQ(bytes(buffer), i % 2 ? wide : narrow) << i;
        EXPECT_TRUE(i != 9 || (buffer.ReadStrBuf(text) && text == "a\xD0\x94"));
        CzynStringAdapter::m_st_encoding = 424242; // unknown: converts to nothing, which is filled up
        EXPECT_TRUE(i != 4 || (buffer.AddStr(u"abc") == 3 && bytes(buffer) == "\0\0\0"s));
    }
    CzynStringAdapter::m_st_encoding = 1251;
}

TEST(DataBuffer, ReadsValuesBytesAndLinesWithinItsData) {
    std::string data("\xFE\xFF\xFF\xFFx\r\ny\n\r\r\0\n\nz\0e", 17), lines;
    CzynDataBuf buffer(data.data(), 17);
    unsigned value = 0;
    EXPECT_TRUE(buffer.Read(&value) && value == 0xFFFFFFFE && !CzynDataBuf(0).Read(&value) && value != 0);
    for (CStringA line; buffer.ReadString(line);)
        lines.append(line.View()).append("|");
    EXPECT_EQ(lines, std::string("x|y||\0|||z\0|e|", 14));
    char bytes[3] = {};
    for (const int position : {-1, 15, 18, 0x7FFFFFFF, -0x7FFFFFFF}) {
        buffer.SetCurPos(position);
        int number = bytes[1] = 7;
        EXPECT_FALSE(buffer.Read(&number) || buffer.Read(bytes, 3) || buffer.GetCurBuffer(3));
        EXPECT_TRUE(number == 0 && bytes[1] == 0 && buffer.GetCurPos() == position);
    }
    buffer.SetCurPos(14);
    EXPECT_FALSE(buffer.Read(bytes, 0) || buffer.GetCurBuffer(-1));
    EXPECT_TRUE(buffer.Read(bytes, 3) && bytes[0] == 'z' && bytes[2] == 'e');
}

TEST(DataBuffer, OutOfMemoryIsShownByAddAndThrownByTheOthers) {
    CzynDataBuf buffer(5);
    testing::internal::CaptureStderr();
    {
        FailingNew failing(1, FailingNew::onwards);
        EXPECT_EQ(buffer.AddStrBuf("z"), 0); // has to grow for the text: no count stays
        EXPECT_THROW(buffer.GetNewBuffer(9), std::bad_alloc);
    }
    buffer.m_nSize = buffer.m_nMaxSize = 0x7FFFFFFF;
    EXPECT_EQ(buffer.Add("1", 1), 0x7FFFFFFF);
    const auto shown = CStringA("Memory exeption in CzynDataBuf::Add : ") + CMemoryException::Text() + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), (shown + shown).GetString());
}
