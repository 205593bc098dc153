#include "zynaggr/zynstring.h"
#include "zynaggr/zynstringw.h"

#include "support/failing_new.h"
#include "zynhost/stringresources.h"
#include "zynplatform/codepage.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace zynplatform::literals;

namespace {

std::string Convert(std::string_view text, char) {
    return std::string(text);
}
std::u16string Convert(std::string_view text, WCHAR) {
    std::u16string wide(text.size(), u'\0');
    zynplatform::ToWide(1251, text.data(), text.size(), wide.data());
    return wide;
}

// Shows the capacity, which is not public but follows rules of its own.
template <class String> struct Open : String {
    using String::String;
    using String::operator=;
    using String::m_nSize;
    using String::SetLength;
    using String::SetSize;
};

template <class C> class StringTest : public testing::Test {
protected:
    using String = Open<zyn::BasicString<C>>;
    using Text = std::basic_string<C>;

    static Text T(std::string_view text) { return Convert(text, C()); }
    static Text Content(const zyn::BasicString<C>& string) {
        EXPECT_EQ(C(0), string.GetCString()[string.GetLength()]);
        return Text(string.GetCString(), static_cast<std::size_t>(string.GetLength()));
    }
    static String Make(std::string_view text) { return String(T(text).c_str()); }
};

using Characters = testing::Types<char, WCHAR>;
TYPED_TEST_SUITE(StringTest, Characters);

TYPED_TEST(StringTest, CapacityFollowsItsRules) {
    typename TestFixture::String empty;
    EXPECT_EQ(1u, empty.m_nSize);
    for (int i = 0; i < 20; ++i) {
        empty += TypeParam('x');
        EXPECT_EQ(i < 15 ? 16u : 31u, empty.m_nSize) << i;
    }
    auto text = this->Make("0123456789");
    EXPECT_EQ(11u, text.m_nSize);
    EXPECT_EQ(100u, text.SetSize(100));
    EXPECT_EQ(100u, text.SetSize(50)); // never shrinks
    text = this->T("abc").c_str();
    EXPECT_EQ(100u, text.m_nSize);
    text.TrimRight(this->T("abc").c_str()); // a set keeps the buffer
    EXPECT_EQ(100u, text.m_nSize);
    text = this->T("aaa").c_str();
    text.TrimRight(TypeParam('a')); // a character gives it up
    EXPECT_EQ(1u, text.m_nSize);
    text.GetBuffer(10);
    EXPECT_EQ(10u, text.m_nSize);
    text.ReleaseBuffer(-1);
    EXPECT_EQ(0, text.GetLength());
    text = this->T("").c_str();
    EXPECT_EQ(1u, text.m_nSize);
    text = TypeParam('x');
    EXPECT_EQ(2u, text.m_nSize);
    EXPECT_EQ(6u, typename TestFixture::String(TypeParam('x'), 5).m_nSize);
    text.GetBufferSetLength(7);
    EXPECT_EQ(8u, text.m_nSize);
    EXPECT_EQ(7, text.GetLength());
}

TYPED_TEST(StringTest, ConversionFromTheOtherWidthAsksForOneMore) {
    using Other = std::conditional_t<std::is_same_v<TypeParam, char>, WCHAR, char>;
    typename TestFixture::String text(Convert("abc", Other()).c_str());
    EXPECT_EQ(5u, text.m_nSize);
    EXPECT_EQ(this->T("abc"), this->Content(text));
    text = Convert("Ёж"_cp1251, Other()).c_str();
    EXPECT_EQ(this->T("Ёж"_cp1251), this->Content(text));
    text = static_cast<const Other*>(nullptr);
    EXPECT_EQ(1u, text.m_nSize);
}

TYPED_TEST(StringTest, PartsAndSearches) {
    const auto abc = this->Make("abc");
    const struct {
        zyn::BasicString<TypeParam> got;
        const char* expected;
    } parts[] = {
        {abc.Left(-1), ""},         {abc.Left(2), "ab"},    {abc.Left(5), "abc"}, {abc.Right(2), "bc"},
        {abc.Right(0), ""},         {abc.Right(9), "abc"},  {abc.Mid(1), "bc"},   {abc.Mid(5), ""},
        {abc.Mid(-2), "abc"},       {abc.Mid(-2, 2), "ab"}, {abc.Mid(2, 9), "c"}, {abc.Mid(0, -1), ""},
        {abc.Mid(2, INT_MAX), "c"},
    };
    for (const auto& part : parts)
        EXPECT_EQ(this->T(part.expected), this->Content(part.got));
    const struct {
        const char* pattern;
        unsigned start;
        int expected;
    } searches[] = {{"", 0, 0},   {"", 5, 0},  {"a", 0, 0},   {"a", 3, -1},           {"abcd", 0, -1},
                    {"bc", 0, 1}, {"c", 2, 2}, {"bc", 2, -1}, {"a", unsigned(-1), -1}};
    for (const auto& search : searches)
        EXPECT_EQ(search.expected, abc.Find(this->T(search.pattern).c_str(), search.start)) << search.pattern;
    EXPECT_EQ(0, abc.Find(static_cast<const TypeParam*>(nullptr), 1));
    EXPECT_EQ(-1, this->Make("").Find(this->T("").c_str(), 0));
    EXPECT_EQ(-1, abc.Find(TypeParam(0), 0));
    EXPECT_EQ(2, this->Make("aba").ReverseFind('a'));
    EXPECT_EQ(-1, abc.ReverseFind('x'));
}

TYPED_TEST(StringTest, EditsReturnTheirCounts) {
    auto abc = this->Make("abc");
    EXPECT_EQ(3, abc.Delete(1, 0));
    EXPECT_EQ(3, abc.Delete(7, 1));
    EXPECT_EQ(2, abc.Delete(1, UINT_MAX));
    EXPECT_EQ(1, abc.Delete(unsigned(-5), 1));
    EXPECT_EQ(0, abc.Delete(0, 1));
    auto ab = this->Make("ab");
    EXPECT_EQ(3, ab.Insert(10, this->T("x").c_str()));
    EXPECT_EQ(4, ab.Insert(-5, TypeParam('y')));
    EXPECT_EQ(this->T("yabx"), this->Content(ab));
    EXPECT_EQ(4, ab.Insert(0, TypeParam(0)));
    EXPECT_EQ(8, ab.Insert(2, ab.GetCString())); // itself
    EXPECT_EQ(this->T("yayabxbx"), this->Content(ab));
    auto aaa = this->Make("aaa");
    EXPECT_EQ(3, aaa.Replace(this->T("a").c_str(), this->T("aa").c_str()));
    EXPECT_EQ(this->T("aaaaaa"), this->Content(aaa));
    EXPECT_EQ(2, aaa.Replace(this->T("aaa").c_str(), aaa.GetCString() + 5)); // a piece of itself
    EXPECT_EQ(this->T("aa"), this->Content(aaa));
    EXPECT_EQ(0, aaa.Replace(this->T("").c_str(), this->T("x").c_str()));
    EXPECT_EQ(2, aaa.Replace('a', TypeParam(0)));
    EXPECT_EQ(2, aaa.GetLength());
    EXPECT_EQ(2, aaa.Remove(0));
}

TYPED_TEST(StringTest, OwnBufferIsASafeArgument) {
    auto text = this->Make("abcdef");
    text = text.GetCString();
    text = text.GetCString() + 3;
    EXPECT_EQ(this->T("def"), this->Content(text));
    text += text.GetCString();
    text += text.GetCString() + 4;
    text.Append(text.GetCString() + 1, 2);
    text += text;
    EXPECT_EQ(this->T("defdefefefdefdefefef"), this->Content(text));
}

TYPED_TEST(StringTest, TrimsOnlyWhatIsAskedFor) {
    EXPECT_EQ(this->T("\ta\t"), this->Content(this->Make(" \ta\t ").Trim()));
    EXPECT_EQ(this->T("ab"), this->Content(this->Make("xyab").TrimLeft(this->T("xy").c_str())));
    EXPECT_EQ(this->T("b"), this->Content(this->Make("aabaa").Trim(TypeParam('a'))));
    EXPECT_EQ(this->T("b"), this->Content(this->Make("acbca").Trim(this->T("ac").c_str())));
    const auto* none = static_cast<const TypeParam*>(nullptr);
    EXPECT_EQ(this->T("a"), this->Content(this->Make("a").Trim(none)));
}

TYPED_TEST(StringTest, TokenizeMovesThePosition) {
    const auto text = this->Make(",a,,b");
    const struct {
        const char* set;
        int position;
        const char* token;
        int after;
    } cases[] = {{",", 0, "a", 3},  {",", 3, "b", 6}, {",", 6, "", -1},   {",", -7, "", -7},
                 {"", 2, ",,b", 2}, {"", 9, "", -1},  {",ab", 0, "", -1}, {"x", 0, ",a,,b", 6}};
    for (const auto& c : cases) {
        int position = c.position;
        EXPECT_EQ(this->T(c.token), this->Content(text.Tokenize(this->T(c.set).c_str(), position)));
        EXPECT_EQ(c.after, position) << c.set << ' ' << c.position;
    }
}

TYPED_TEST(StringTest, FoldsTheRussianAlphabet) {
    auto text = this->Make("Ёлка AZaz №ђ"_cp1251);
    EXPECT_EQ(this->T("ЁЛКА AZAZ №ђ"_cp1251), this->Content(text.MakeUpper()));
    EXPECT_EQ(this->T("ёлка azaz №ђ"_cp1251), this->Content(text.MakeLower()));
}

TYPED_TEST(StringTest, ComparesWithAndWithoutCase) {
    const struct {
        const char* left;
        const char* right;
        int exact, folded;
    } cases[] = {
        {"", "", 0, 0},
        {"", "a", -1, -1},
        {"a", "", 1, 1},
        {"abc", "ABC", 1, 0},
        {"ab", "abc", -1, -1},
        {"abd", "abc", 1, 1},
        {"Ёлка"_cp1251, "ёЛКА"_cp1251, -1, 0},
        // Signed bytes in one class, unsigned units in the other.
        {"я"_cp1251, "b", 1, std::is_same_v<TypeParam, char> ? -1 : 1},
    };
    const auto sign = [](int result) { return (result > 0) - (result < 0); };
    for (const auto& c : cases) {
        auto left = this->Make(c.left);
        const auto right = this->T(c.right);
        EXPECT_EQ(c.exact, sign(left.Compare(right.c_str(), true))) << c.left << ' ' << c.right;
        EXPECT_EQ(c.folded, sign(left.CompareNoCase(right.c_str()))) << c.left << ' ' << c.right;
        EXPECT_EQ(c.exact < 0, left < right.c_str());
        EXPECT_EQ(c.exact >= 0, left >= this->Make(c.right));
    }
    for (std::size_t length = 0; length < 100; ++length) {
        std::string left(length, 'a'), right(length, 'A');
        EXPECT_EQ(0, this->Make(left).CompareNoCase(this->T(right).c_str())) << length;
        EXPECT_EQ(-1, this->Make(left).CompareNoCase(this->T(right + "a").c_str())) << length;
        for (std::size_t i = 0; i < length; ++i) {
            right[i] = 'b';
            EXPECT_EQ(-1, this->Make(left).CompareNoCase(this->T(right).c_str())) << length << ' ' << i;
            right[i] = 'A';
        }
    }
    const auto* null = static_cast<const TypeParam*>(nullptr);
    EXPECT_EQ(1, this->Make("").Compare(null, true));
    EXPECT_EQ((std::is_same_v<TypeParam, char> ? 1 : 0), this->Make("").Compare(null, false));
    EXPECT_EQ(1, this->Make("a").Compare(null, false));
}

TYPED_TEST(StringTest, ZerosInsideAreSeenByLengthAndEndExtraction) {
    typename TestFixture::String text = this->Make("abcd");
    text.Replace('b', TypeParam(0));
    EXPECT_EQ(4, text.GetLength());
    EXPECT_EQ(1, text.Find(TypeParam(0), 0));
    EXPECT_EQ(4, zyn::BasicString<TypeParam>(text).GetLength());
    EXPECT_EQ(1, text.Left(3).GetLength());
    text += text.GetCString();
    EXPECT_EQ(8, text.GetLength());
    const bool wide = !std::is_same_v<TypeParam, char>;
    text.MakeReverse();
    EXPECT_EQ(wide ? 'd' : 'a', text.GetAt(0));
}

TYPED_TEST(StringTest, LackOfMemoryLeavesTheTextAsItWas) {
    typename TestFixture::String text = this->Make("abc");
    const auto whole = this->Make("abc");
    const auto pattern = this->T("b"), with = this->T("a long replacement that needs room");
    const std::vector<std::function<void()>> operations = {
        [&] { text += whole; },
        [&] { text += TypeParam('x'); },
        [&] { text.Insert(1, with.c_str()); },
        [&] { text.Replace(pattern.c_str(), with.c_str()); },
        [&] { text = with.c_str(); },
        [&] { text.Empty(); },
        [&] { text.GetBuffer(1000); },
    };
    for (const auto& operation : operations) {
        {
            const FailingNew failing(1);
            EXPECT_THROW(operation(), std::bad_alloc);
        }
        EXPECT_EQ(this->T("abc"), this->Content(text));
        EXPECT_EQ(4u, text.m_nSize);
    }
    EXPECT_THROW(text.SetLength(UINT_MAX), std::bad_alloc);
}

TYPED_TEST(StringTest, LoadsResourcesAndEnvironment) {
    static const zynStringResource table[] = {{7, "Строка"_cp1251}, {0, nullptr}};
    int module = 0;
    zynSetStringResources(&module, table);
    typename TestFixture::String text = this->Make("old");
    EXPECT_FALSE(text.LoadStringA(&module, 0));
    EXPECT_FALSE(text.LoadStringA(nullptr, 7));
    EXPECT_FALSE(text.LoadStringA(&module, 8));
    EXPECT_EQ(this->T("old"), this->Content(text));
    EXPECT_TRUE(text.LoadStringA(&module, 7));
    EXPECT_EQ(this->T("Строка"_cp1251), this->Content(text));
    zynSetStringResources(&module, nullptr);

    setenv("ZYN_STRING_TEST", "Ёж", 1); // UTF-8, as the system has it
    text.Empty();
    EXPECT_EQ(1, text.GetEnvironmentVariableA(this->T("ZYN_STRING_TEST").c_str()));
    EXPECT_EQ(this->T("Ёж"_cp1251), this->Content(text));
    EXPECT_EQ(4u, text.m_nSize);
    unsetenv("ZYN_STRING_TEST");
    EXPECT_EQ(0, text.GetEnvironmentVariableA(this->T("ZYN_STRING_TEST").c_str()));
    EXPECT_TRUE(text.IsEmpty());
}

TEST(StringFormatTest, IsCutAtItsLimitAndSaysSo) {
    CzynStringA narrow("old");
    EXPECT_EQ(6, narrow.Format("%s-%02d", "abc", 5));
    EXPECT_STREQ("abc-05", narrow);
    EXPECT_EQ(-1, narrow.Format("%5000d", 1));
    EXPECT_EQ(3999, narrow.GetLength());
    EXPECT_EQ(0, narrow.Format(""));
    EXPECT_TRUE(narrow.IsEmpty());
    CzynStringW wide(u"old");
    EXPECT_EQ(0, wide.Format(nullptr));
    EXPECT_EQ(0, wide.Format(u""));
    EXPECT_EQ(3, wide.GetLength());
    EXPECT_EQ(-1, wide.Format(u"%5000d", 1));
    EXPECT_EQ(-1, wide.Find(u"1", 0)); // it stands behind the limit
    EXPECT_EQ(-1, wide.Format(u"%.5000d", 12));
    EXPECT_EQ(-1, wide.Find(u"1", 0));
    EXPECT_EQ(3999, wide.GetLength());
}

TEST(StringFormatTest, WideDirectivesPrintWhatTheCLibraryWould) {
    CzynStringW text;
    const auto check = [&](int result, std::u16string_view expected) {
        EXPECT_EQ(static_cast<int>(expected.size()), result);
        EXPECT_EQ(expected, std::u16string_view(text, static_cast<std::size_t>(text.GetLength())));
    };
    check(text.Format(u"%s|%hs|%S|%c|%C|%%", u"Ёж", "\xA8", "b", u'Ж', 'c'), u"Ёж|Ё|b|Ж|c|%");
    check(text.Format(u"%5s|%-5s|%.1s|%s", u"ab", u"ab", u"ab", static_cast<const WCHAR*>(nullptr)),
          u"   ab|ab   |a|(null)");
    check(text.Format(u"%d %u %x %#X %o %+d %05d", -1, 4000000000u, 255, 255, 8, 7, 42),
          u"-1 4000000000 ff 0XFF 10 +7 00042");
    check(text.Format(u"%lld %I64d %ld %hhd %zu", 1LL << 40, -(1LL << 40), 5L, 257, std::size_t(9)),
          u"1099511627776 -1099511627776 5 1 9");
    check(text.Format(u"%*d|%-*d|%.*f|%g", 4, 7, 4, 7, 2, 3.14159, 0.5), u"   7|7   |3.14|0.5");
    check(text.Format(u"%2$s %1$d %2$s", 3, u"x"), u"x 3 x");
    for (const WCHAR* illFormed : {u"%", u"%n", u"%5", u"%2$d", u"%1$s %1$d", u"%l"})
        EXPECT_EQ(-1, text.Format(illFormed, 1, 2));
}

// The rules again, slow and plain: a text and a capacity.
template <class C> struct Model {
    using Text = std::basic_string<C>;
    Text text;
    std::uint32_t size = 1;

    void Need(std::size_t n) { size = std::max(size, static_cast<std::uint32_t>(n)); }
    void Empty() {
        text.clear();
        size = 1;
    }
    void Assign(const Text& other) {
        if (other.empty()) return Empty();
        text = other;
        Need(text.size() + 1);
    }
    void Append(const Text& other) {
        text += other;
        if (!other.empty()) Need(text.size() + 1);
    }
    void AppendOne(C c) {
        if (text.size() + 2 > size) size = static_cast<std::uint32_t>(text.size() + 16);
        text += c;
    }
    int Replace(const Text& from, const Text& to) {
        int count = 0;
        if (text.empty() || from.empty()) return 0;
        for (std::size_t at = 0; (at = text.find(from, at)) != text.npos; at += to.size(), ++count) {
            text.replace(at, from.size(), to);
            Need(text.size() + 1);
        }
        return count;
    }
    void TrimRight(C c) {
        const std::size_t before = text.size();
        while (!text.empty() && text.back() == c)
            text.pop_back();
        if (text.empty() && before != 0) Empty();
    }
    void TrimLeft(C c) {
        const std::size_t before = text.size();
        while (!text.empty() && text.front() == c)
            text.erase(0, 1);
        if (text.empty() && before != 0) Empty();
    }
};

TYPED_TEST(StringTest, RandomOperationsAgreeWithTheModel) {
    using C = TypeParam;
    std::mt19937 random(7);
    typename TestFixture::String string;
    Model<C> model;
    const auto pick = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    for (int step = 0; step < 100'000; ++step) {
        std::basic_string<C> argument(pick(6), C('a'));
        for (C& c : argument)
            c = static_cast<C>('a' + pick(3));
        const C c = static_cast<C>('a' + pick(3));
        const unsigned index = pick(12);
        switch (pick(14)) {
        case 0:
            string = argument.c_str();
            model.Assign(argument);
            break;
        case 1:
        case 2:
            string += argument.c_str();
            model.Append(argument);
            break;
        case 3:
        case 4:
            string += c;
            model.AppendOne(c);
            break;
        case 5:
            string.Append(argument.c_str(), static_cast<int>(index) - 2);
            model.Append(index < 2 ? argument : argument.substr(0, index - 2));
            break;
        case 6: {
            string.Insert(static_cast<int>(index) - 2, argument.c_str());
            model.text.insert(std::min<std::size_t>(index < 2 ? 0 : index - 2, model.text.size()), argument);
            if (!argument.empty()) model.Need(model.text.size() + 1);
            break;
        }
        case 7: {
            const bool nothing = index >= model.text.size() || argument.empty();
            const auto expected =
                nothing ? model.text.size() : std::min(argument.size(), model.text.size() - index);
            ASSERT_EQ(static_cast<int>(expected),
                      string.Delete(index, static_cast<unsigned>(argument.size())));
            if (!nothing) model.text.erase(index, argument.size());
            break;
        }
        case 8: {
            const std::basic_string<C> from = argument.substr(0, 2), to(pick(4), c);
            ASSERT_EQ(model.Replace(from, to), string.Replace(from.c_str(), to.c_str()));
            break;
        }
        case 9:
            string.TrimLeft(c).TrimRight(c);
            model.TrimLeft(c);
            model.TrimRight(c);
            break;
        case 10: {
            string.Trim(argument.c_str());
            while (!model.text.empty() && argument.find(model.text.back()) != argument.npos)
                model.text.pop_back();
            while (!model.text.empty() && argument.find(model.text.front()) != argument.npos)
                model.text.erase(0, 1);
            break;
        }
        case 11:
            ASSERT_EQ(static_cast<int>(std::erase(model.text, c)), string.Remove(c));
            break;
        case 12:
            string.GetBuffer(static_cast<int>(index) * 3);
            model.Need(index * 3);
            break;
        default:
            string.SetSize(index == 0 ? 0 : index * 5);
            if (index == 0)
                model.Empty();
            else
                model.Need(index * 5);
        }
        ASSERT_EQ(model.text, this->Content(string)) << step;
        ASSERT_EQ(model.size, string.m_nSize) << step;
        if (model.text.size() > 60) {
            string.Empty();
            model.Empty();
        }
    }
}

} // namespace
