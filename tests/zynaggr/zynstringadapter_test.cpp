#include "zynaggr/zynstringadapter.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

class Adapter : public CzynStringAdapter {
public:
    using CzynStringAdapter::CzynStringAdapter;
    using CzynStringAdapter::operator=;
    using CzynStringAdapter::SetSizeANSI;
    using CzynStringAdapter::SetSizeUTF;
};

const char* Narrow(CzynStringAdapter& text) {
    return text;
}
std::u16string Wide(CzynStringAdapter& text) {
    const WCHAR* wide = text;
    return wide ? wide : u"(null)";
}

// The code page is one for the whole process.
class StringAdapter : public testing::Test {
protected:
    void TearDown() override { CzynStringAdapter::m_st_encoding = 1251; }
};

TEST_F(StringAdapter, ConvertsOnFirstDemandAndKeepsTheForm) {
    const WCHAR wide[] = u"Ёж №5 漢";
    CzynStringAdapter text(wide);
    EXPECT_EQ(static_cast<const WCHAR*>(text), wide); // borrowed
    const char* narrow = Narrow(text);
    EXPECT_STREQ(narrow, "\xA8\xE6 \xB9"
                         "5 ?");
    EXPECT_EQ(Narrow(text), narrow);
    EXPECT_EQ(static_cast<char*>(text), narrow);

    const char borrowed[] = "\xCF\xF0";
    text = borrowed;
    EXPECT_EQ(Narrow(text), borrowed);
    EXPECT_EQ(Wide(text), u"Пр");
    EXPECT_EQ(static_cast<const WCHAR*>(text), static_cast<WCHAR*>(text));
    EXPECT_FALSE(std::is_copy_constructible_v<CzynStringAdapter> ||
                 std::is_copy_assignable_v<CzynStringAdapter>);
}

TEST_F(StringAdapter, HasNoFormWithoutTextAndEmptyFormsOfEmptyText) {
    CzynStringAdapter none, text(u"x");
    text = static_cast<const char*>(nullptr);
    for (CzynStringAdapter* each : {&none, &text}) {
        EXPECT_EQ(Narrow(*each), nullptr);
        EXPECT_EQ(Wide(*each), u"(null)");
    }
    text = static_cast<const WCHAR*>(nullptr);
    EXPECT_EQ(Narrow(text), nullptr);
    text = u"";
    EXPECT_STREQ(Narrow(text), "");
    text = "";
    EXPECT_EQ(Wide(text), u"");
}

TEST_F(StringAdapter, ConvertsWithTheChosenCodePage) {
    CzynStringAdapter utf8(u"я№😀");
    utf8.m_bUTF8 = true;
    EXPECT_STREQ(Narrow(utf8), "я№😀");
    utf8 = "я№😀";
    EXPECT_EQ(Wide(utf8), u"я№😀");

    CzynStringAdapter::m_st_encoding = 866;
    CzynStringAdapter dos(u"Пр");
    EXPECT_STREQ(Narrow(dos), "\x8F\xE0");
    EXPECT_STREQ(Narrow(utf8), "я№😀"); // UTF-8 has precedence
    CzynStringAdapter::m_st_encoding = 12345;
    CzynStringAdapter unknown(u"Пр");
    EXPECT_STREQ(Narrow(unknown), "");
    unknown = "text";
    EXPECT_EQ(Wide(unknown), u"");
}

} // namespace
