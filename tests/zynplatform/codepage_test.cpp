// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/codepage.h"
#include "zynplatform/vectorcode_impl.h"

#include <map>

namespace {

constexpr unsigned unknownPage = 12345;

// The text stands at any address and ends with its buffer, the target has the length announced; what lies
// behind it has to stay. By each kind of instructions that the processor has the result is the same.
template <class To, class From>
std::basic_string<To> EachWay(std::basic_string_view<From> text, auto announce, auto convert) {
    using zynplatform::Instructions;
    static std::size_t before = 0;
    std::vector<From> buffer(before = (before + 1) % 32);
    buffer.insert(buffer.end(), text.begin(), text.end());
    const From* const source = buffer.data() + before;
    const std::size_t length = announce(source, text.size());
    std::basic_string<To> common, target;
    for (int kind = 0; kind <= static_cast<int>(zynplatform::BestInstructions()); ++kind) {
        zynplatform::UseInstructions(static_cast<Instructions>(kind));
        target.assign(length + 40, To(0x5A));
        EXPECT_EQ(convert(source, text.size(), target.data()), length);
        EXPECT_EQ(target.find_first_not_of(To(0x5A), length), target.npos);
        target.resize(length);
        if (kind == 0) common = target;
        EXPECT_TRUE(target == common) << kind;
    }
    return target;
}
std::u16string Wide(unsigned page, std::string_view text) {
    return EachWay<WCHAR>(text, std::bind_front(zynplatform::WideLength, page),
                          std::bind_front(zynplatform::ToWide, page));
}
std::string Narrow(unsigned page, std::u16string_view text) {
    return EachWay<char>(text, std::bind_front(zynplatform::NarrowLength, page),
                         std::bind_front(zynplatform::ToNarrow, page));
}

// The rule for UTF-8 as its table of well-formed sequences: their length, the ranges of the first and of the
// second byte. Others are from 80 to BF.
struct WellFormed {
    std::size_t length;
    unsigned first[2], second[2];
};
constexpr WellFormed wellFormed[] = {
    {1, {0x00, 0x7F}, {}},           {2, {0xC2, 0xDF}, {0x80, 0xBF}}, {3, {0xE0, 0xE0}, {0xA0, 0xBF}},
    {3, {0xE1, 0xEC}, {0x80, 0xBF}}, {3, {0xED, 0xED}, {0x80, 0x9F}}, {3, {0xEE, 0xEF}, {0x80, 0xBF}},
    {4, {0xF0, 0xF0}, {0x90, 0xBF}}, {4, {0xF1, 0xF3}, {0x80, 0xBF}}, {4, {0xF4, 0xF4}, {0x80, 0x8F}},
};

// The text as 16-bit units, and as bytes in which U+FFFD stands for what is ill-formed.
std::pair<std::u16string, std::string> Reference(std::string_view text) {
    constexpr unsigned leadBase[]{0, 0, 0xC0, 0xE0, 0xF0}, any[]{0x80, 0xBF};
    std::u16string wide;
    std::string bytes;
    while (!text.empty()) {
        std::size_t best = 1;
        unsigned long character = 0xFFFD;
        for (const WellFormed& form : wellFormed) {
            std::size_t matched = 0;
            unsigned long value = 0;
            for (; matched < std::min(form.length, text.size()); ++matched) {
                const auto& [low, high] = matched == 0 ? form.first : matched == 1 ? form.second : any;
                const unsigned byte = static_cast<unsigned char>(text[matched]);
                if (byte < low || byte > high) break;
                value = value * 64 + byte - (matched == 0 ? leadBase[form.length] : 0x80);
            }
            if (matched == form.length) character = value;
            best = std::max(best, matched);
        }
        bytes += character == 0xFFFD ? "\xEF\xBF\xBD" : text.substr(0, best);
        if (character >= 0x10000) {
            wide += static_cast<char16_t>(0xD800 + (character - 0x10000) / 0x400);
            character = 0xDC00 + (character - 0x10000) % 0x400;
        }
        wide += static_cast<char16_t>(character);
        text.remove_prefix(best);
    }
    return {wide, bytes};
}

TEST(CodePage, BytesOf1251AreTheCharactersTheSystemKnows) {
    std::map<char16_t, char> byteOf;
    std::u16string unitOf;
    for (int i = 0; i < 256; ++i) {
        const std::string byte(1, static_cast<char>(i)), unit = Converted(byte, "CP1251", "UTF-16BE");
        EXPECT_EQ(unit.empty(), i == 0x98); // the one byte that the system leaves undefined
        unitOf += unit.empty() ? u'\x98' : static_cast<char16_t>(unit[0] << 8 | (unit[1] & 0xFF));
        EXPECT_EQ(Wide(1251, byte), unitOf.substr(unitOf.size() - 1)) << i;
        byteOf[unitOf.back()] = byte[0];
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const char16_t character = static_cast<char16_t>(unit);
        const auto found = byteOf.find(character);
        const char expected = found == byteOf.end() ? '?' : found->second;
        for (const std::size_t copies : {1u, 32u})
            ASSERT_EQ(Narrow(1251, std::u16string(copies, character)), std::string(copies, expected)) << unit;
    }
    std::mt19937 random(1);
    for (std::size_t length = 0; length < 200; ++length) {
        std::string text;
        std::u16string wide;
        while (text.size() < length) { // mostly Latin and Russian
            const bool isOther = random() % 40 == 0;
            const unsigned byte = isOther ? 0x80 + random() % 64 : random() % 2 * 0xC0 + random() % 64;
            text += static_cast<char>(byte);
            wide += unitOf[byte];
        }
        ASSERT_EQ(Wide(1251, text), wide);
        ASSERT_EQ(Narrow(1251, wide), text);
    }
}

// Text mostly of one kind, so that whole blocks and single characters are converted, cut anywhere.
std::string RandomUtf8(std::mt19937& random) {
    static const std::vector<std::string> pieces{
        "a", "z",    "я",    "Ж",        "Ё",        "\x7F", "\xDF\xBF",     "ё",   "№", "«", "漢", "\xED",
        "😀", "\xC0", "\x80", "\xF4\x8F", "\xE0\xA0", "\xC2", "\xED\xA0\x80", "\xFF"};
    const std::size_t common = std::array<std::size_t, 4>{2, 5, 8, pieces.size()}[random() % 4];
    const unsigned rareness = random() % 2 == 0 ? 100 : 1000;
    std::string text;
    const std::size_t length = random() % (random() % 20 == 0 ? 800 : 200);
    while (text.size() < length)
        text += pieces[random() % (random() % rareness == 0 ? pieces.size() : common)];
    text.resize(length);
    for (std::size_t changes = random() % 20 == 0 ? 3 : 0; changes > 0 && length > 0; --changes)
        text[random() % length] = static_cast<char>(random());
    return text;
}

TEST(CodePage, Utf8ConvertsAsTheTableOfWellFormedSequencesSays) {
    std::mt19937 random(2);
    for (int round = 0; round < 30000; ++round) {
        const std::string text = RandomUtf8(random);
        const std::size_t offset = text.empty() ? 0 : random() % std::min<std::size_t>(text.size(), 70);
        const std::string_view part = std::string_view(text).substr(offset);
        const auto [wide, mended] = Reference(part);
        ASSERT_EQ(Wide(65001, part), wide) << testing::PrintToString(text) << offset;
        ASSERT_EQ(Narrow(65001, wide), mended) << testing::PrintToString(text) << offset;
        const std::string bytes = Narrow(1251, wide), back = Narrow(65001, Wide(1251, bytes));
        const std::string_view narrow = bytes;
        ASSERT_EQ(EachWay<char>(
                      part, [&](auto...) { return bytes.size(); }, zynplatform::Utf8To1251),
                  bytes);
        ASSERT_EQ(EachWay<char>(
                      narrow, [&](auto...) { return back.size(); }, zynplatform::From1251ToUtf8),
                  back);
    }
    std::u16string all = u"\xD83D\xD83D\xDE00\xDE00", whole = u"\xFFFD\xD83D\xDE00\xFFFD";
    for (unsigned unit = 0; unit < 0x10000; ++unit) // every unit alone, and blocks of it
        for (const std::size_t copies : {1u, 70u}) {
            (all += u' ').append(copies, static_cast<char16_t>(unit));
            (whole += u' ').append(copies, static_cast<char16_t>(unit / 0x800 == 0x1B ? 0xFFFD : unit));
        }
    const std::string units(reinterpret_cast<const char*>(whole.data()), 2 * whole.size());
    const std::string bytes = Converted(units, "UTF-16LE", "UTF-8");
    EXPECT_TRUE(Narrow(65001, all) == bytes && Wide(65001, bytes) == whole);
}

TEST(CodePage, OtherPagesAreTheSystemsAndUnknownOnesGiveNothing) {
    // '>': to wide, '<': to narrow, '=': both
    const std::tuple<unsigned, char, std::string_view, std::u16string_view> cases[] = {
        {866, '=', "\x8F\xE0\0\xF1"sv, u"Пр\0ё"sv},
        {1252, '>', "\x80\xE9\x81|", u"€é\xFFFD|"},
        {932, '>', "\x93\xFA\x93", u"日\xFFFD"},
        {1258, '=', "Hello", u"Hello"}, // the converter waits for a mark that may follow
        {1258, '>', "a\x81\xCC|e\x81", u"a\xFFFD\x300|e\xFFFD"},
        {1252, '<', "\x80\xE9?|??|?|??|?", u"€éя|😀|\xD800|\xDB40\xDC41|\xDB40"},
        {54936, '=', "\x81\x30\x81\x30|\xD3\x36\x9C\x33", u"\x80|\xDB40\xDC41"},
        {65000, '=', "A+BC8-+20DcQQ-z", u"AЯ\xDB40\xDC41z"},
        {20127, '<', "A?", u"Aя"},
        {0, '=', "\xFF", u"я"},
        {1, '=', "\xEF", u"я"},
        {2, '=', "\xDF", u"я"},
        {3, '=', "\xFF", u"я"},
    };
    for (const auto& [page, way, narrow, wide] : cases)
        for (const int copies : {1, 1500}) { // the second in several pieces
            std::string bytes;
            std::u16string units;
            for (int i = 0; i < copies; ++i) {
                (bytes += i > 0 ? "\n" : "") += narrow;
                (units += i > 0 ? u"\n" : u"") += wide;
            }
            EXPECT_TRUE(way == '<' || Wide(page, bytes) == units) << page;
            EXPECT_TRUE(way == '>' || Narrow(page, units) == bytes) << page;
        }
    EXPECT_TRUE(Wide(unknownPage, "text").empty() && Narrow(unknownPage, u"text").empty());
    using namespace zynplatform;
    for (const unsigned page : {1251u, 65001u, 866u, unknownPage}) // null is an empty text
        EXPECT_EQ(WideLength(page, nullptr, 0) + ToWide(page, nullptr, 0, nullptr) +
                      NarrowLength(page, nullptr, 0) + ToNarrow(page, nullptr, 0, nullptr),
                  0u);
}

} // namespace
