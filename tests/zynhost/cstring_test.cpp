// SPDX-License-Identifier: MIT
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

// Texts that take each other over and are changed, each beside a std::string, which shares nothing; of
// lengths on both sides of what an object holds in itself.
TEST(CStringATest, CopiesThatShareATextChangeApart) {
    std::mt19937 random(1);
    CStringA texts[3];
    std::string models[3];
    for (int round = 0; round < 20'000; ++round) {
        const auto from = random() % 3, at = random() % 3;
        const std::size_t length = random() % 30;
        const auto n = static_cast<int>(length);
        CStringA& text = texts[at];
        std::string& model = models[at];
        if (model.size() > 100) text = text.Left(n), model.resize(length);
        const std::string taken = models[from], added(length, 'a'), rest = model.substr(model.size() / 2);
        const char* const ownRest = text.GetString() + model.size() / 2;
        const std::function<void()> steps[] = {
            [&] { text = texts[from], model = taken; },
            [&] { text = texts[from].GetString(), model = taken; },
            [&] { text = CStringA(std::move(texts[from])), models[from].clear(), model = taken; },
            [&] { text += texts[from], model += taken; },
            [&] { text = ownRest, model = rest; },
            [&] { text += ownRest, model += rest; },
            [&] { text = added, model = added; },
            [&] { text.Preallocate(2 * n), (text += added) += 'b', model += added + 'b'; },
            [&] { text.Empty(), model.clear(); },
            [&] {
                text.ReleaseBuffer(std::min(n, text.GetLength())),
                    model.resize(std::min(length, model.size()));
            },
            [&] { text.Replace('a', 'c'), std::ranges::replace(model, 'a', 'c'); },
            [&] {
                char* const lent = text.GetBuffer(n);
                const CStringA copy(text), copyOfCopy(copy);
                std::fill_n(lent, n, 'd');
                model.resize(std::max(length, model.size()));
                EXPECT_EQ(model, copyOfCopy.View()); // as it was before it was written to
                model.replace(0, length, length, 'd');
                text.ReleaseBuffer(text.GetLength());
            },
        };
        steps[random() % std::size(steps)]();
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(texts[i].View() == models[i] && texts[i].GetString()[models[i].size()] == 0) << round;
    }
}

TEST(CStringAThreadsTest, CopiesOfOneTextAreTheirThreadsOwn) {
    const CStringA text('x', 100);
    InFourThreads([&](char c) {
        for (int i = 0; i < 1000; ++i) {
            const CStringA copy(text);
            CStringA changed(copy);
            changed.SetAt(i % 100, c);
            EXPECT_TRUE(changed[i % 100] == c && copy == text);
        }
    });
    EXPECT_EQ(std::string(100, 'x'), text.View());
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
