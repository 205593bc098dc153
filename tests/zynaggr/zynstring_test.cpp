// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zynstring.h"
#include "zynaggr/zynstringw.h"
#include "zynhost/stringresources.h"
#include "zynplatform/codepage.h"
#include "zynplatform/vectorcode_impl.h"

#include <climits>
#include <sys/mman.h>

namespace {

std::string Convert(std::string_view text, char) {
    return std::string(text);
}
std::u16string Convert(std::string_view text, WCHAR) {
    std::u16string wide(text.size(), u'\0');
    zynplatform::ToWide(1251, text.data(), text.size(), wide.data());
    return wide;
}

// A value and what it should be, one pair after the other.
void ExpectEach(std::initializer_list<std::pair<int, int>> values) {
    int row = 0;
    for (const auto& [got, expected] : values)
        EXPECT_EQ(expected, got) << "value " << row++;
}

// Shows the capacity, which is not public but follows rules of its own.
template <class String> struct Open : String {
    using String::String, String::operator=, String::m_nSize, String::SetLength, String::SetSize;
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

TYPED_TEST(StringTest, CapacityIsWhatWasAskedForAndConversionAsksForOneMore) {
    EXPECT_EQ(6u, typename TestFixture::String(TypeParam('x'), 5).m_nSize);
    auto asked = this->Make("0123456789");
    EXPECT_EQ(11u, asked.m_nSize);
    asked.GetBufferSetLength(11);
    asked.ReleaseBuffer(-1); // changes nothing
    ExpectEach({{asked.m_nSize, 12}, {asked.GetLength(), 11}});
    EXPECT_THROW(asked.SetLength(UINT_MAX), std::bad_alloc);
    constexpr bool isWide = requires {
        asked.SetAt(1, TypeParam('x'));
    }; // only there
    static_assert(isWide != std::is_same_v<TypeParam, char>);
    if constexpr (isWide) asked.SetAt(1, 'x');
    EXPECT_EQ(asked[1L], isWide ? 'x' : '1');

    using Other = std::conditional_t<std::is_same_v<TypeParam, char>, WCHAR, char>;
    typename TestFixture::String text(Convert("Ёжи"_cp1251, Other()).c_str());
    EXPECT_EQ(5u, text.m_nSize);
    EXPECT_EQ(this->T("Ёжи"_cp1251), this->Content(text));
    text = static_cast<const Other*>(nullptr);
    EXPECT_EQ(1u, text.m_nSize);
}

TYPED_TEST(StringTest, TrimsFoldsAndTreatsNothingsByRulesOfItsOwn) {
    constexpr bool isNarrow = std::is_same_v<TypeParam, char>;
    const auto* const null = static_cast<const TypeParam*>(nullptr);
    const std::pair<zyn::BasicString<TypeParam>, const char*> texts[] = {
        {this->Make(" \ta\t ").Trim(), "\ta\t"},
        {this->Make("a").Trim(null), "a"},
        {this->Make("Ёлка AZaz №ђ"_cp1251).MakeUpper(), "ЁЛКА AZAZ №ђ"_cp1251},
        {this->Make("ЁлКА AZaz №ђ"_cp1251).MakeLower(), "ёлка azaz №ђ"_cp1251},
    };
    for (const auto& [got, expected] : texts)
        EXPECT_EQ(this->T(expected), this->Content(got));
    auto abc = this->Make("abc"), empty = this->Make("");
    ExpectEach({{abc[static_cast<unsigned short>(2)], 'c'},
                {abc.Find(null, 1), 0},
                {empty.Find(this->T("").c_str(), 0), -1},
                {abc.Find(TypeParam(0), 0), -1},
                {this->Make("aba").ReverseFind('a'), 2},
                {abc.ReverseFind('x'), -1},
                {empty.Compare(null, true), 1},
                {empty.Compare(null, false), isNarrow ? 1 : 0},
                {abc.Compare(null, false), 1},
                {abc.Insert(-5, TypeParam('y')), 4},
                {abc.Insert(0, TypeParam(0)), 4},
                {abc.Delete(1, UINT_MAX), 3},
                {abc.Delete(unsigned(-5), 1), 1},
                {abc.GetLength(), 0}});

    // Zeros inside are seen by the length and end what is taken out.
    typename TestFixture::String text = this->Make("abcd");
    ExpectEach({{text.Replace('b', TypeParam(0)), 1},
                {text.Find(TypeParam(0), 0), 1},
                {zyn::BasicString<TypeParam>(text).GetLength(), 4},
                {text.Left(3).GetLength(), 1},
                {(text += text.GetCString()).GetLength(), 8},
                {text.MakeReverse().GetAt(0), isNarrow ? 'a' : 'd'},
                {text.Replace(text.GetAt(0), TypeParam(0)), 2},
                {(text += text.GetCString()).GetLength(), 8},
                {text.Remove(0), 4}});
}

TYPED_TEST(StringTest, TokenizeMovesThePosition) {
    const auto text = this->Make(",a,,b");
    const std::tuple<const char*, int, const char*, int> cases[] = {
        {",", 0, "a", 3},  {",", 3, "b", 6}, {",", 6, "", -1},   {",", -7, "", -7},
        {"", 2, ",,b", 2}, {"", 9, "", -1},  {",ab", 0, "", -1}, {"x", 0, ",a,,b", 6}};
    for (const auto& [set, before, token, after] : cases) {
        int position = before;
        EXPECT_EQ(this->T(token), this->Content(text.Tokenize(this->T(set).c_str(), position)));
        EXPECT_EQ(after, position) << set << ' ' << before;
    }
}

// Where the memory ends.
char* EndOfMemory() {
    constexpr std::size_t size = 1 << 16;
    void* const memory = mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    char* const end = static_cast<char*>(memory) + size;
    EXPECT_EQ(0, mprotect(end, size, PROT_NONE));
    return end;
}

// Texts that have much in common, by each kind of instructions.
TYPED_TEST(StringTest, SearchesAndComparesTextsThatEndWithTheMemory) {
    using C = TypeParam;
    using namespace zynplatform;
    static char* const end = EndOfMemory();
    const std::string_view letters = "aAzZ[`{@яЯаАёЁч8ЧъЪјЉ"_cp1251;
    std::mt19937 random(3);
    for (int round = 0; round < 30000; ++round) {
        UseInstructions(static_cast<Instructions>(random() % 3));
        std::string one, other;
        for (std::size_t length = random() % (random() % 8 == 0 ? 400 : 70); other.size() < length;) {
            const char c = letters[random() % letters.size()];
            one += c;
            other += random() % 2 == 0 ? Cp1251Lower(c) : Cp1251Upper(c);
        }
        if (random() % 2 == 0) one = other;
        if (!one.empty() && random() % 2 == 0)
            one[random() % one.size()] ^= static_cast<char>(random() % 2 == 0 ? 0x20 : 0x10);
        for (std::string* text : {&one, &other})
            if (random() % 4 == 0) text->resize(random() % (text->size() + 1));
        const auto left = this->Make(one);
        const auto text = this->T(other);
        C* const right = reinterpret_cast<C*>(end) - text.size() - 1;
        std::copy_n(text.c_str(), text.size() + 1, right);

        ASSERT_EQ(text, this->Content(zyn::BasicString<C>(right)));
        ASSERT_EQ(this->T(one) <=> text, left.Compare(right, true) <=> 0) << one << '|' << other;
        ASSERT_EQ(this->T(one) < text, left < right);
        ASSERT_EQ(this->T(one) >= text, left >= this->Make(other));
        for (std::string* string : {&one, &other})
            std::ranges::transform(*string, string->begin(), Cp1251Upper);
        const auto l = this->T(one), r = this->T(other);
        const auto order = [](C a, C b) {
            return std::is_same_v<C, char> ? static_cast<signed char>(a) <=> static_cast<signed char>(b)
                                           : a <=> b;
        };
        ASSERT_EQ(std::lexicographical_compare_three_way(l.begin(), l.end(), r.begin(), r.end(), order),
                  left.CompareNoCase(right) <=> 0)
            << one << '|' << other;
        const C wanted = this->T(letters)[random() % letters.size()];
        const unsigned start = static_cast<unsigned>(random() % 9) - 1; // before the text is far behind it
        const auto all = this->Content(left), part = text.substr(random() % (text.size() + 1), random() % 30);
        ASSERT_EQ(static_cast<int>(all.find(wanted, start)), left.Find(wanted, start));
        ASSERT_EQ(all.empty()    ? -1
                  : part.empty() ? 0
                                 : static_cast<int>(all.find(part, start)),
                  left.Find(part.c_str(), start));
    }
    UseInstructions(BestInstructions());
}

TYPED_TEST(StringTest, LoadsResourcesAndEnvironment) {
    static const zynStringResource table[] = {{7, "Строка"_cp1251}, {0, nullptr}};
    int module = 0;
    zynSetStringResources(&module, table);
    typename TestFixture::String text = this->Make("old");
    EXPECT_FALSE(text.LoadStringA(&module, 0) || text.LoadStringA(nullptr, 7) ||
                 text.LoadStringA(&module, 8));
    EXPECT_EQ(this->T("old"), this->Content(text));
    EXPECT_TRUE(text.LoadStringA(&module, 7));
    EXPECT_EQ(this->T("Строка"_cp1251), this->Content(text));
    zynSetStringResources(&module, nullptr);

    const auto name = this->T("ПЕРЕМЕННАЯ"_cp1251);
    const Variable variable("ПЕРЕМЕННАЯ", "Ёж"); // UTF-8, as the system has it
    EXPECT_EQ(1, text.GetEnvironmentVariableA(name.c_str()));
    EXPECT_EQ(this->T("Ёж"_cp1251), this->Content(text));
    EXPECT_EQ(4u, text.m_nSize);
    variable.Set({});
    EXPECT_EQ(0, text.GetEnvironmentVariableA(name.c_str()));
    EXPECT_TRUE(text.IsEmpty());
}

TYPED_TEST(StringTest, FormatsLikeTheCLibraryWithTextOfBothKinds) {
    constexpr bool isNarrow = std::is_same_v<TypeParam, char>;
    typename TestFixture::String text = this->Make("old");
    const auto check = [&](std::string_view expected, const char* format, auto... arguments) {
        const int length = text.Format(this->T(format).c_str(), arguments...);
        EXPECT_EQ(static_cast<int>(expected.size()), length) << format;
        EXPECT_EQ(this->T(expected), this->Content(text)) << format;
    };
    const void* const narrow = "Ёж"_cp1251;
    const void* const wide = u"Ёж";
    check("Ёж|Ёж|Ж|Ж|%"_cp1251, isNarrow ? "%s|%S|%c|%C|%%" : "%S|%s|%C|%c|%%", narrow, wide, "Ж"_cp1251[0],
          u'Ж');
    check("Ёж|Ёж|Ж|Ж|Ё"_cp1251, "%hs|%ls|%hc|%lc|%.1ws", narrow, wide, "Ж"_cp1251[0], u'Ж', wide);
    check("  Ёж|Ёж  |(null)"_cp1251, "%4ls|%-4ls|%ls", wide, wide, nullptr);
    check("-1 4000000000 ff 0XFF 10 +7 00042", "%d %u %x %#X %o %+d %05d", -1, 4000000000u, 255, 255, 8, 7,
          42);
    check("1099511627776 -1099511627776 5 1 9 7", "%lld %I64d %ld %hhd %zu %I32d", 1LL << 40, -(1LL << 40),
          5L, 257, std::size_t(9), 7);
    check("   7|7   |3.14|0.5|7", "%*d|%-*d|%.*f|%g|%Iu", 4, 7, 4, 7, 2, 3.14159, 0.5, std::size_t(7));
    check("Ёж 3 Ёж"_cp1251, "%2$ls %1$I64d %2$ls", 3LL, wide);

    for (const char* illFormed : {"%n", "%I", "%I32d%", "%I32d%5", "%Id%l", "%2$I64d", "%1$ls %1$d"})
        EXPECT_EQ(-1, text.Format(this->T(illFormed).c_str(), nullptr, nullptr)) << illFormed;
    for (const char* tooWide : {"%5000d", "%5000I32d", "%.5000I32d"}) // the digit stands behind the limit
        ExpectEach({{text.Format(this->T(tooWide).c_str(), 1), -1},
                    {text.Find(TypeParam('1'), 0), -1},
                    {text.GetLength(), 3999}});
    ExpectEach({{text.Format(nullptr), 0}, {text.GetLength(), isNarrow ? 0 : 3999}});
}

// The rules again, slow and plain: a text and a capacity.
template <class C> struct Model {
    using Text = std::basic_string<C>;
    Text text;
    std::uint32_t size = 1;

    int GetLength() const { return static_cast<int>(text.size()); }
    void GetBuffer(int room) { size = std::max(size, static_cast<std::uint32_t>(room)); }
    void SetSize(unsigned room) {
        if (room == 0) text.clear();
        size = room == 0 ? 1 : std::max(size, room);
    }
    void Become(const Text& other) {
        text = other;
        GetBuffer(GetLength() + 1);
    }
    void operator=(const C* other) { *other ? Become(other) : SetSize(0); }
    void operator=(C c) { Become(Text(1, c)); }
    void operator+=(const Model& other) { Become(text + other.text); }
    void operator+=(const C* other) { Become(text + other); }
    void operator+=(C c) {
        if (text.size() + 2 > size) GetBuffer(GetLength() + 16);
        text += c;
    }
    void Append(const C* other, int count) {
        Become(text + Text(other).substr(0, static_cast<std::size_t>(count)));
    }
    int Insert(int at, const C* other) {
        Become(Text(text).insert(static_cast<std::size_t>(std::clamp(at, 0, GetLength())), other));
        return GetLength();
    }
    int Delete(unsigned at, unsigned count) {
        const std::size_t before = text.size();
        if (at < before) text.erase(at, count);
        return static_cast<int>(text.size() < before ? before - text.size() : before);
    }
    int Replace(const C* from, const C* to) {
        int count = 0;
        const Text pattern = from, with = to;
        if (pattern.empty()) return 0;
        for (std::size_t at = 0; (at = text.find(pattern, at)) != text.npos; at += with.size(), ++count)
            Become(Text(text).replace(at, pattern.size(), with));
        return count;
    }
    int Remove(C c) { return static_cast<int>(std::erase(text, c)); }
    void Cut(std::size_t at, std::size_t count) {
        if (!text.empty() && text.erase(at, count).empty()) size = 1;
    }
    void TrimLeft(C c) { Cut(0, text.find_first_not_of(c)); }
    void TrimRight(C c) { Cut(text.find_last_not_of(c) + 1, text.npos); }
    void Trim(const C* set) {
        text.erase(text.find_last_not_of(set) + 1);
        text.erase(0, text.find_first_not_of(set));
    }
};

// One step of the string and of its model.
template <class S, class C> int Change(S& s, unsigned step, const C* text, const C* other, C c, int n) {
    if (step == 0) s = text;
    if (step == 1) s = c;
    if (step == 2) s += text;
    if (step == 3) s += s;
    if (step == 4) s += c;
    if (step == 5) s.Append(text, n - 2);
    if (step == 6) return s.Insert(n - 2, text);
    if (step == 7) return s.Delete(static_cast<unsigned>(n), static_cast<unsigned>(c - 'a') * 2);
    if (step == 8) return s.Replace(text, other);
    if (step == 9) return s.Replace(other, text);
    if (step == 10) return s.Remove(c);
    if (step == 11) s.TrimLeft(c);
    if (step == 12) s.TrimRight(c);
    if (step == 13) s.Trim(text);
    if (step == 14) s.GetBuffer(n * 3);
    if (step == 15) s.SetSize(static_cast<unsigned>(n) * 5);
    return s.GetLength();
}

// An operation for which memory is lacking leaves text and capacity as they were.
TYPED_TEST(StringTest, RandomOperationsAgreeWithTheModel) {
    using C = TypeParam;
    std::mt19937 random(7);
    const auto pick = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    const auto pickText = [&](unsigned length) {
        std::basic_string<C> text;
        while (text.size() < length)
            text += static_cast<C>('a' + pick(3));
        return text;
    };
    typename TestFixture::String string;
    Model<C> model;
    for (int round = 0; round < 100'000; ++round) {
        std::basic_string<C> text = pickText(pick(6)), other = pickText(pick(4));
        const C* own = nullptr; // a piece of the string itself now and then, or of the room behind it
        const std::size_t end = model.text.size() + 1;
        if (pick(4) == 0)
            text = own = string.GetCString() + pick(static_cast<unsigned>(end));
        else if (pick(4) == 0 && model.size - end > text.size())
            own = std::char_traits<C>::copy(string.GetBuffer(0) + end, text.c_str(), text.size() + 1);
        const C c = static_cast<C>('a' + pick(3));
        const unsigned step = pick(16);
        const int n = static_cast<int>(pick(12));
        std::optional<int> result;
        try {
            const FailingNew failing(pick(4) == 0 ? 1 : LONG_MAX);
            result = Change(string, step, own ? own : text.c_str(), other.c_str(), c, n);
        } catch (const std::bad_alloc&) {
        }
        if (result) {
            ASSERT_EQ(Change(model, step, text.c_str(), other.c_str(), c, n), *result);
        }
        ASSERT_EQ(model.text, this->Content(string)) << round << ", step " << step;
        ASSERT_EQ(model.size, string.m_nSize) << round << ", step " << step;
        const int at = std::array{INT_MIN, -1, 0, 1, n, INT_MAX}[pick(6)], count = n == 11 ? INT_MAX : n - 2;
        const auto size = model.text.size();
        const auto inside = at < 0 ? 0 : std::min(size, static_cast<std::size_t>(at));
        ASSERT_EQ(model.text.substr(0, inside), this->Content(string.Left(at))) << at;
        ASSERT_EQ(model.text.substr(size - inside), this->Content(string.Right(at))) << at;
        ASSERT_EQ(model.text.substr(inside), this->Content(string.Mid(at))) << at;
        ASSERT_EQ(model.text.substr(inside, static_cast<std::size_t>(std::max(count, 0))),
                  this->Content(string.Mid(at, count)));
        if (model.text.size() <= (round % 16 == 0 ? 60 : 600)) continue;
        string.Empty();
        model.SetSize(0);
    }
}

} // namespace
