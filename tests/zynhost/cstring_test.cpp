#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zynhelpers.h"
#include "zynhost/cstring.h"
#include "zynhost/memory.h"

TEST(CStringATest, PartsOutsideTheTextAreLeftOut) {
    const std::string_view text("abc");
    const CStringA abc("abc");
    for (const int n : {-1, 0, 1, 2, 3, 9}) {
        const auto inside = static_cast<std::size_t>(std::clamp(n, 0, 3));
        EXPECT_EQ(text.substr(0, inside), abc.Left(n).View()) << n;
        EXPECT_EQ(text.substr(3 - inside), abc.Right(n).View()) << n;
        EXPECT_EQ(text.substr(inside), abc.Mid(n).View()) << n;
        for (const int count : {-1, 1, 9})
            EXPECT_EQ(text.substr(inside, static_cast<std::size_t>(std::max(count, 0))),
                      abc.Mid(n, count).View())
                << n << count;
    }
}

TEST(CStringATest, ChangesAndFindsByTheCodePage) {
    CStringA upper("Ёж ABC №"_cp1251), lower("ёЖ aBc №"_cp1251);
    CStringA edited("a-b-c"), self("x%s"), zero("a\0b", 3);
    EXPECT_TRUE(CStringA("ab").CompareNoCase("ABC") < 0 && CStringA("я"_cp1251).CompareNoCase("Z") > 0);
    EXPECT_TRUE(upper.CompareNoCase(lower) == 0 && upper.Compare(lower) != 0 && upper.Compare(nullptr) > 0);
    const int numbers[] = {edited.Find('-'),        edited.Find('-', 2),       edited.Find("x"),
                           edited.ReverseFind('-'), edited.Replace("-", "--"), edited.Replace('-', '+'),
                           edited.Replace("", "x"), edited.Remove('+')};
    EXPECT_THAT(numbers, testing::ElementsAre(1, 3, -1, 3, 2, 4, 0, 4));
    self.Format(self, self.GetString());
    zero += zero;
    EXPECT_EQ(std::string_view("a\0ba\0b", 6), zero.View());
    const CStringA pieces(",a,,b");
    int position = 0;
    const std::pair<CStringA, const char*> texts[] = {
        {pieces.Tokenize(",", position), "a"}, // empty ones are skipped
        {pieces.Tokenize(",", position), "b"},
        {pieces.Tokenize(",", position), ""},
        {upper.MakeLower(), "ёж abc №"_cp1251},
        {lower.MakeUpper(), "ЁЖ ABC №"_cp1251},
        {CStringA(" \t\r\n\v\fa \t b\n ").Trim(), "a \t b"},
        {CStringA(" \n").Trim(), ""},
        {CStringA("\"\"a\"b\"").Trim('"'), "a\"b"},
        {CStringA("\xA0").Trim(), "\xA0"}, // the non-breaking space is a character
        {edited, "abc"},
        {self, "xx%s"},
        {CStringA(u"Ёж №\u4E2D"), "Ёж №?"_cp1251},
        {CStringA(static_cast<const WCHAR*>(nullptr)), ""},
        {CStringA(nullptr, 3).Append(nullptr, 3), ""},
    };
    for (const auto& [got, expected] : texts)
        EXPECT_STREQ(expected, got);
    EXPECT_EQ(-1, position);
}

TEST(CStringATest, TakesStandardTextsWithAllTheirBytes) {
    const std::string text("b\0c", 3);
    CStringA copy;
    (copy = text) += text;
    copy.Append(copy).Append(static_cast<const char*>(nullptr));
    EXPECT_EQ(copy + text, text + text + text + text + text);
    EXPECT_TRUE(copy.Find(text.substr(1), 2) == 4 && copy.Compare(text) > 0 && copy == copy.View());
    EXPECT_TRUE(copy.Find(""s, 12) == 12 && copy.Find(""s, 13) == -1 && IsNumber("0x1F"s, true));
}

TEST(CStringATest, LackOfMemoryLeavesTheTextAsItWas) {
    CStringA text(std::string(100, 'x').c_str());
    const CStringA before(text);
    {
        const FailingNew failing(1);
        EXPECT_THROW(text += before, std::bad_alloc);
    }
    EXPECT_THROW(text = CStringA(std::string_view("x", std::size_t{1} << 31)), std::bad_alloc); // not read
    EXPECT_EQ(before, text);
    char message[4];
    EXPECT_TRUE(CMemoryException().GetErrorMessage(message, sizeof message));
    EXPECT_STREQ("Нед"_cp1251, message);
}
