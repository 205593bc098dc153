#include "zynhost/cstring.h"

#include "support/failing_new.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace zynplatform::literals;

namespace {

TEST(CStringATest, PartsOutsideTheTextAreLeftOut) {
    const CStringA text("abc");
    const struct {
        CStringA got;
        const char* expected;
    } cases[] = {
        {text.Left(2), "ab"},   {text.Left(9), "abc"}, {text.Left(-1), ""},   {text.Right(2), "bc"},
        {text.Right(9), "abc"}, {text.Right(0), ""},   {text.Mid(1), "bc"},   {text.Mid(3), ""},
        {text.Mid(9), ""},      {text.Mid(-1), "abc"}, {text.Mid(1, 1), "b"}, {text.Mid(1, 9), "bc"},
        {text.Mid(1, -1), ""},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(c.expected, c.got);
}

TEST(CStringATest, FoldsAndComparesByTheCodePage) {
    CStringA upper("Ёж ABC №"_cp1251), lower("ёЖ aBc №"_cp1251);
    EXPECT_EQ(0, upper.CompareNoCase(lower));
    EXPECT_NE(0, upper.Compare(lower));
    EXPECT_STREQ("ёж abc №"_cp1251, upper.MakeLower());
    EXPECT_STREQ("ЁЖ ABC №"_cp1251, lower.MakeUpper());
    EXPECT_LT(CStringA("ab").CompareNoCase("ABC"), 0);
    EXPECT_GT(CStringA("я"_cp1251).CompareNoCase("Z"), 0);
    EXPECT_GT(CStringA("x").Compare(nullptr), 0);
}

TEST(CStringATest, TrimsWhiteSpaceOrACharacterAtBothEnds) {
    EXPECT_STREQ("a \t b", CStringA(" \t\r\n\v\fa \t b\n ").Trim());
    EXPECT_STREQ("", CStringA(" \n").Trim());
    EXPECT_STREQ("a\"b", CStringA("\"\"a\"b\"").Trim('"'));
    EXPECT_STREQ("\xA0", CStringA("\xA0").Trim()); // the non-breaking space is a character
}

TEST(CStringATest, FindsAndReplaces) {
    CStringA text("a-b-c");
    EXPECT_EQ(1, text.Find('-'));
    EXPECT_EQ(3, text.Find('-', 2));
    EXPECT_EQ(-1, text.Find("x"));
    EXPECT_EQ(3, text.ReverseFind('-'));
    EXPECT_EQ(2, text.Replace("-", "--"));
    EXPECT_STREQ("a--b--c", text);
    EXPECT_EQ(4, text.Replace('-', '+'));
    EXPECT_EQ(4, text.Remove('+'));
    EXPECT_STREQ("abc", text);
    EXPECT_EQ(0, text.Replace("", "x"));
}

TEST(CStringATest, TokenizeSkipsEmptyPieces) {
    const CStringA text(",a,,b");
    std::vector<std::string> pieces;
    int position = 0;
    for (CStringA piece = text.Tokenize(",", position); position != -1; piece = text.Tokenize(",", position))
        pieces.emplace_back(piece);
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), pieces);
}

TEST(CStringATest, ZeroBytesAndOwnTextSurvive) {
    CStringA text("a\0b", 3);
    text += text;
    EXPECT_EQ(std::string_view("a\0ba\0b", 6), text.View());
    CStringA self("x%s");
    self.Format(self, self.GetString());
    EXPECT_STREQ("xx%s", self);
}

TEST(CStringATest, WideTextIsConvertedWithTheCodePage) {
    EXPECT_STREQ("Ёж №?"_cp1251, CStringA(u"Ёж №\u4E2D"));
    EXPECT_STREQ("", CStringA(static_cast<const WCHAR*>(nullptr)));
}

TEST(CStringATest, LackOfMemoryLeavesTheTextAsItWas) {
    CStringA text(std::string(100, 'x').c_str());
    const CStringA before(text);
    {
        const FailingNew failing(1);
        EXPECT_THROW(text += before, std::bad_alloc);
    }
    EXPECT_EQ(before, text);
    char message[4];
    EXPECT_TRUE(CMemoryException().GetErrorMessage(message, sizeof message));
    EXPECT_STREQ("Нед"_cp1251, message);
}

} // namespace
