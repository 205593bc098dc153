// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynstringadapter.h"

namespace {

const char* Narrow(CzynStringAdapter& text) {
    return text;
}
std::u16string Wide(CzynStringAdapter& text) {
    const WCHAR* wide = text;
    return wide ? wide : u"(null)";
}

static_assert(!std::is_copy_constructible_v<CzynStringAdapter>);

TEST(StringAdapter, ConvertsOnFirstDemandAndKeepsTheForm) {
    const WCHAR wide[] = u"Ёж №5 漢";
    CzynStringAdapter text(wide);
    EXPECT_EQ(static_cast<const WCHAR*>(text), wide); // borrowed
    const char* narrow = Narrow(text);
    EXPECT_STREQ(narrow, "Ёж №5 ?"_cp1251);
    EXPECT_TRUE(Narrow(text) == narrow && static_cast<char*>(text) == narrow);

    const char borrowed[] = "\xCF\xF0";
    text = borrowed;
    EXPECT_EQ(Narrow(text), borrowed);
    EXPECT_EQ(Wide(text), u"Пр");
    EXPECT_EQ(static_cast<const WCHAR*>(text), static_cast<WCHAR*>(text));
    EXPECT_STREQ(Narrow(text = u""), "");
    EXPECT_EQ(Wide(text = ""), u"");
    EXPECT_EQ(Wide(text = static_cast<const char*>(nullptr)), u"(null)");
    EXPECT_EQ(Narrow(text = static_cast<const WCHAR*>(nullptr)), nullptr);
    CzynStringAdapter none;
    EXPECT_TRUE(!Narrow(none) && Wide(none) == u"(null)");
}

TEST(StringAdapter, ConvertsWithTheChosenCodePage) {
    const struct {
        std::uint32_t page;
        bool isUtf8; // which has precedence
        const WCHAR* wide;
        const char* narrow;
    } cases[] = {{866, true, u"я№😀", "я№😀"},
                 {866, false, u"Пр", "\x8F\xE0"},
                 {1258, false, u"Hello", "Hello"},
                 {12345, false, u"", "unknown"},
                 {12345, false, u"unknown", ""}};
    CzynStringAdapter text;
    for (const auto& [page, isUtf8, wide, narrow] : cases) {
        CzynStringAdapter::m_st_encoding = page;
        text.m_bUTF8 = isUtf8;
        EXPECT_TRUE(!*wide || Narrow(text = wide) == std::string(narrow)) << page;
        EXPECT_TRUE(!*narrow || Wide(text = narrow) == wide) << page;
    }
    CzynStringAdapter::m_st_encoding = 1251;
}

} // namespace
