#include "zynaggr/zynstringadapter.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using namespace zynplatform::literals;

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
    EXPECT_EQ(Narrow(text), narrow);
    EXPECT_EQ(static_cast<char*>(text), narrow);

    const char borrowed[] = "\xCF\xF0";
    text = borrowed;
    EXPECT_EQ(Narrow(text), borrowed);
    EXPECT_EQ(Wide(text), u"Пр");
    EXPECT_EQ(static_cast<const WCHAR*>(text), static_cast<WCHAR*>(text));

    text = u"";
    EXPECT_STREQ(Narrow(text), "");
    text = "";
    EXPECT_EQ(Wide(text), u"");
    text = static_cast<const char*>(nullptr);
    EXPECT_EQ(Wide(text), u"(null)");
    text = static_cast<const WCHAR*>(nullptr);
    EXPECT_EQ(Narrow(text), nullptr);
    CzynStringAdapter none;
    EXPECT_EQ(Narrow(none), nullptr);
    EXPECT_EQ(Wide(none), u"(null)");
}

TEST(StringAdapter, ConvertsWithTheChosenCodePage) {
    const struct {
        std::uint32_t page;
        bool isUtf8; // which has precedence
        const WCHAR* wide;
        const char* narrow;
    } cases[] = {{1251, true, u"я№😀", "я№😀"}, {866, true, u"я№😀", "я№😀"}, {866, false, u"Пр", "\x8F\xE0"}};
    CzynStringAdapter text;
    for (const auto& c : cases) {
        CzynStringAdapter::m_st_encoding = c.page;
        text.m_bUTF8 = c.isUtf8;
        text = c.wide;
        EXPECT_STREQ(Narrow(text), c.narrow);
        text = c.narrow;
        EXPECT_EQ(Wide(text), c.wide);
    }
    CzynStringAdapter::m_st_encoding = 12345; // unknown
    text = u"Пр";
    EXPECT_STREQ(Narrow(text), "");
    text = "text";
    EXPECT_EQ(Wide(text), u"");
    CzynStringAdapter::m_st_encoding = 1251;
}

} // namespace
