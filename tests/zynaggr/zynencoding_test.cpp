// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynencoding.h"

#include <climits>
#include <set>

namespace {

const unsigned char* Data(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

using ContentTest = bool (*)(const unsigned char*, int);
bool Passes(ContentTest test, const std::string& text) {
    const std::vector<unsigned char> exact(text.begin(), text.end()); // so that reading on is found out
    const bool passes = test(exact.data(), static_cast<int>(exact.size()));
    EXPECT_EQ(passes, test(Data(text + '\x80'), static_cast<int>(text.size())));
    return passes;
}

// Calls with every text of up to so many of the bytes.
template <class Call> void ForEachText(const std::string& bytes, std::size_t length, Call call) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        call(texts[i]);
        for (std::size_t k = 0; texts[i].size() < length && k < bytes.size(); ++k)
            texts.push_back(texts[i] + bytes[k]);
    }
}

TEST(Encoding, TablesAnswerForEachEncodingAndItsMarkClassifiesAText) {
    const struct {
        int encoding;
        const char* name;
        unsigned least, most;
        std::string mark;
    } rows[] = {
        // clang-format off
        {-1, nullptr, 0, 0, ""},                {0, nullptr, 0, 0, ""},
        {1, "CP1251", 1, 1, ""},                {2, "UTF-8", 1, 2, "\xEF\xBB\xBF"},
        {3, "UCS-2LE", 2, 2, "\xFF\xFE"},       {4, "UCS-2BE", 2, 2, "\xFE\xFF"},
        {5, "UCS-4LE", 4, 4, "\xFF\xFE\0\0"s},  {6, "UCS-4BE", 4, 4, "\0\0\xFE\xFF"s},
        {7, "CP866", 1, 1, ""},                 {8, nullptr, 0, 0, ""},
        {INT_MAX, nullptr, 0, 0, ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        const auto encoding = static_cast<zynTextEncoding>(row.encoding);
        EXPECT_STREQ(zynGetCodingNameForIcov(encoding), row.name);
        EXPECT_EQ(zynGetMinBYTEInCharForEncoding(encoding), row.least) << row.encoding;
        EXPECT_EQ(zynGetMaxBYTEInCharForEncoding(encoding), row.most) << row.encoding;
        unsigned char other = 0, *mark = &other;
        int length = -1;
        GetBomData(encoding, mark, length);
        ASSERT_EQ(length, static_cast<int>(row.mark.size())) << row.encoding;
        ASSERT_EQ(mark == nullptr, length == 0) << row.encoding;
        EXPECT_TRUE(std::equal(row.mark.begin(), row.mark.end(), reinterpret_cast<const char*>(mark)));
        EXPECT_EQ(GetBomLength(encoding, Data(row.mark), INT_MIN), 0);
        EXPECT_EQ(GetBomLength(encoding, nullptr, 4), 0);
    }

    ForEachText("\xFF\xFE\xEF\xBB\xBF\0A"s, 5, [&](const std::string& text) {
        const int size = static_cast<int>(text.size());
        int longest = 0, encoding = text.empty() ? zynEncUnknown : zynEncCP1251, found = -1;
        for (const auto& row : rows) {
            const int length = text.starts_with(row.mark) ? static_cast<int>(row.mark.size()) : 0;
            ASSERT_EQ(GetBomLength(static_cast<zynTextEncoding>(row.encoding), Data(text), size), length);
            if (size < 3 || length <= longest) continue;
            longest = length;
            encoding = row.encoding;
        }
        ASSERT_EQ(zynGetBufferEncodeByBOM(Data(text), size, &found), encoding);
        ASSERT_EQ(found, longest) << testing::PrintToString(text);
        ASSERT_EQ(zynGetBufferEncodeByBOM(Data(text), size, nullptr), encoding);
    });
    for (const auto& [data, length] : {std::pair{Data("\xEF\xBB\xBF"), -1}, {nullptr, 4}}) {
        int found = -1;
        EXPECT_EQ(zynGetBufferEncodeByBOM(data, length, &found), zynEncUnknown);
        EXPECT_EQ(found, 0);
    }
}

// The rule in words: complete sequences, each of a character in the list, and at least one of them.
bool ReferenceIsRussianUtf8(const std::string& text) {
    static const std::set<std::string> accepted = [] {
        std::set<std::string> all{"Ё", "ё", "«", "»", "±", "µ", "Ω", "№", "–", "•", "…"};
        for (int letter = 0x410; letter <= 0x44F; ++letter)
            all.insert({static_cast<char>(0xC0 + letter / 64), static_cast<char>(0x80 + letter % 64)});
        return all;
    }();
    bool hasLetters = false;
    for (std::size_t i = 0, length = 1; i < text.size(); i += length) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte == 0) return false;
        length = byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        if (byte >= 0x80 && !accepted.contains(text.substr(i, length))) return false;
        hasLetters |= byte >= 0x80;
    }
    return hasLetters;
}

TEST(Encoding, TextIsUtf8ByTheListOfCharacters) {
    for (int two = 0; two < 0x10000; ++two) {
        const std::string text{static_cast<char>(two / 256), static_cast<char>(two)};
        ASSERT_EQ(Passes(IsBufUtf8, text), ReferenceIsRussianUtf8(text)) << two;
    }
    // clang-format off
    const std::vector<std::string> pieces{
        "а", "п", "р", "Я", " ", // what blocks are made of
        "Ё", "ё", "№", "–", "•", "…", "«", "±", "Ω",
        "—", "\0"s, "\xE2\x84", "\xD1\x8F\x80", "\xF0\x9F\x98\x80", "\xD0", "\xD1", "\xC2", "\xD0\x80", "\xD1\xBF"};
    // clang-format on
    std::mt19937 random(3);
    int passed = 0;
    for (int round = 0; round < 60000; ++round) {
        std::string text;
        for (std::size_t count = random() % 90; count > 0; --count) {
            const bool isAny = random() % 200 == 0;
            text += pieces[random() % (isAny ? pieces.size() : random() % 40 == 0 ? 14 : 5)];
            if (isAny) text += static_cast<char>(random());
        }
        if (!text.empty() && random() % 4 == 0) text.pop_back();
        ASSERT_EQ(Passes(IsBufUtf8, text), ReferenceIsRussianUtf8(text)) << testing::PrintToString(text);
        passed += Passes(IsBufUtf8, text);
    }
    EXPECT_GT(passed, 10000);
    EXPECT_LT(passed, 50000);
}

TEST(Encoding, UnitsOf16And32BitsAreRecognisedInBothOrders) {
    const auto check = [](const std::string& text) { // low bytes first
        std::string swapped = text, reversed = text;
        bool is16 = text.size() % 2 == 0, is32 = text.size() % 4 == 0;
        for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
            const int unit = static_cast<unsigned char>(text[i]) + 256 * text[i + 1];
            is16 = is16 && ((unit >= 1 && unit <= 0x7F) || (unit >= 0x401 && unit <= 0x4FF));
            is32 = is32 && (i % 4 == 0 || unit == 0);
            std::swap(swapped[i], swapped[i + 1]);
        }
        for (std::size_t i = 0; i + 3 < text.size(); i += 4)
            std::reverse(&reversed[i], &reversed[i] + 4);
        ASSERT_EQ(Passes(IsBufUCS2, text), is16 && !text.empty()) << testing::PrintToString(text);
        ASSERT_EQ(Passes(IsBufUCS2BE, swapped), is16 && !text.empty()) << testing::PrintToString(text);
        ASSERT_EQ(Passes(IsBufUCS4LE, text), is32 && !text.empty()) << testing::PrintToString(text);
        ASSERT_EQ(Passes(IsBufUCS4BE, reversed), is32 && !text.empty()) << testing::PrintToString(text);
    };
    ForEachText("\0\x01\x04\x05\x7F\x80\xFF"s, 4, check);
    ForEachText("\0\x01"s, 8, check);
    const std::string text = "\x41\0\0\0"s + std::string("\xD0\xBF");
    for (const ContentTest test : {IsBufUtf8, IsBufUCS2, IsBufUCS2BE, IsBufUCS4LE, IsBufUCS4BE}) {
        for (const int length : {0, -1, -2, -4, INT_MIN})
            EXPECT_FALSE(test(Data(text), length));
        EXPECT_FALSE(test(nullptr, 4));
    }
}

} // namespace
