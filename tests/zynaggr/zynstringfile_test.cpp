#include "zynaggr/zynstringfile.h"

#include "support/failing_new.h"
#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <vector>

using namespace zynplatform::literals;
using namespace std::string_literals;

namespace {

constexpr unsigned update = CFile::modeReadWrite, fresh = CFile::modeCreate | CFile::modeWrite;
constexpr zynTextEncoding encodings[] = {zynEncCP1251, zynEncUTF8,   zynEncUCS2LE,
                                         zynEncUCS2BE, zynEncUCS4LE, zynEncUCS4BE};
const std::string marks[] = {
    "", "", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\xFF\xFE\0\0"s, "\0\0\xFE\xFF"s};

// The text's bytes in an encoding, for ASCII and the letters А to я.
std::string Encode(zynTextEncoding encoding, std::u16string_view text) {
    std::string out;
    for (const unsigned c : text) {
        const std::vector<unsigned> cp1251{c < 0x80 ? c : c - 0x410 + 0xC0};
        const std::vector<unsigned> utf8 = c < 0x80 ? cp1251 : std::vector{0xC0 + c / 64, 0x80 + c % 64};
        const unsigned low = c % 256, high = c / 256;
        const std::vector<unsigned> forms[] = {
            {}, cp1251, utf8, {low, high}, {high, low}, {low, high, 0, 0}, {0, 0, high, low}};
        out.append(forms[encoding].begin(), forms[encoding].end());
    }
    return out;
}

// What a conversion gives; "failed" when it does, with its outputs checked.
template <class Length, class Call> std::string Converted(std::string bytes, Call call) {
    auto* const source = reinterpret_cast<unsigned char*>(bytes.data());
    unsigned char* out = source;
    Length length = 77;
    const bool done = call(source, static_cast<Length>(bytes.size()), out, length);
    if (!done) {
        EXPECT_TRUE(out == nullptr && length == 0);
        return "failed";
    }
    const std::string result(reinterpret_cast<const char*>(out), static_cast<std::size_t>(length));
    CzynStringFile::FreeBuffer(out);
    return result;
}

std::string Convert(zynTextEncoding from, const std::string& bytes, zynTextEncoding to) {
    return Converted<int>(bytes, [=](auto* src, int size, auto*& out, int& length) {
        return CzynStringFile::ConvertEncoding(from, src, size, to, out, length);
    });
}

struct StringFile : testing::Test {
    // Opens a file that holds these bytes.
    void Open(const std::string& bytes, unsigned flags = update) {
        file.Close();
        folder.Write("f", bytes);
        ASSERT_NE(file.Open(folder.Path("f"), flags, zynEncUnknown), 0);
    }
    std::string Text() {
        CStringA text("old");
        return file.ReadAllDataToString(text) ? std::string(text.View())
                                              : "failed" + std::string(text.View());
    }
    std::vector<std::string> Lines() {
        std::vector<std::string> lines;
        CStringA line;
        while (file.ReadString(line))
            lines.emplace_back(line.View());
        EXPECT_STREQ(line, "");
        return lines;
    }

    const TempFolder folder;
    struct : CzynStringFile {
        using CzynStringFile::m_nCapacity;
    } file;
};

TEST_F(StringFile, EveryEncodingIsReadAndWrittenBackWithItsMark) {
    const std::u16string text = u"Елка 1\r\nпять";
    for (const zynTextEncoding encoding : encodings)
        for (const bool marked : {true, false}) {
            SCOPED_TRACE(testing::Message() << encoding << marked);
            Open((marked ? marks[encoding] : "") + Encode(encoding, text));
            EXPECT_EQ(Text(), "Елка 1\r\nпять"_cp1251);
            EXPECT_EQ(file.GetFileEncoding(), encoding);
            EXPECT_TRUE(file.WriteString("\nеще"_cp1251));
            file.Close();
            EXPECT_EQ(folder.Read("f"), marks[encoding] + Encode(encoding, text + u"\r\nеще"));
            ASSERT_TRUE(file.Open(folder.Path("new"), fresh, encoding));
            EXPECT_TRUE(file.WriteString("пять"_cp1251) && file.Flush());
            EXPECT_EQ(folder.Read("new"), marks[encoding] + Encode(encoding, u"пять"));
        }
}

TEST_F(StringFile, EncodingIsFoundByMarkThenByContent) {
    const struct {
        std::string bytes;
        zynTextEncoding encoding;
        std::string text;
    } cases[] = {
        {"plain\r\n", zynEncCP1251, "plain\r\n"},
        {"a\0b\0\0"s, zynEncCP1251, "a\0b\0\0"s},
        {"\xC3\xA9", zynEncCP1251, "\xC3\xA9"}, // a letter that is not Russian
        {"\xEF\xBB\xBF\xC3\xA9\xE2\x82\xAC", zynEncUTF8, "?\x88"},
        {"\xFF\xFE", zynEncCP1251, "\xFF\xFE"},
        {"\xFF\xFE\x1F\x04\x41"s, zynEncUCS2LE, "\xCF"}, // units cut off
        {"\xFF\xFE\0\0\x1F\x04\0\0\x41\0"s, zynEncUCS4LE, "\xCF"},
        // A load that fails forgets all but the open file: above U+FFFF, nothing but a mark.
        {"\xFF\xFE\0\0\x1F\x04\x01\0"s, zynEncUnknown, "failed"},
        {"\0\0\xFE\xFF\0\x01\xF4\0"s, zynEncUnknown, "failed"},
        {"\xEF\xBB\xBF", zynEncUnknown, "failed"},
        {"\xFF\xFE\0\0"s, zynEncUnknown, "failed"},
    };
    for (const auto& c : cases) {
        Open(c.bytes);
        EXPECT_EQ(file.Load2Memory(), c.text != "failed");
        EXPECT_EQ(file.GetFileEncoding(), c.encoding) << testing::PrintToString(c.bytes);
        EXPECT_EQ(Text(), c.text);
        EXPECT_TRUE(file.IsFileOpen());
    }
    Open("");
    EXPECT_EQ(file.Load2Memory(), 1);
    EXPECT_EQ(Text(), "failed");
}

TEST_F(StringFile, EncodingWithoutMarkCanBeSaid) {
    const std::string utf8 = Encode(zynEncUTF8, u"Я");
    file.SetEncodingIfNotBOM(zynEncCP1251);
    folder.Write("f", utf8);
    ASSERT_TRUE(file.Open(folder.Path("f"), update, zynEncUnknown)); // what was said before holds
    EXPECT_EQ(Text(), utf8);
    EXPECT_EQ(file.GetFileEncoding(), zynEncCP1251);
    Open(marks[zynEncUTF8] + utf8);
    file.SetEncodingIfNotBOM(zynEncCP1251);
    EXPECT_EQ(Text(), "Я"_cp1251);
    Open(utf8);
    file.SetEncodingIfNotBOM(zynEncUCS4BE); // not one whole unit: the load fails and forgets it
    EXPECT_EQ(Text(), "failed");
    EXPECT_EQ(Text(), "Я"_cp1251);
#ifdef NDEBUG // asserted otherwise
    Open("x");
    file.SetEncodingIfNotBOM(zynEncCP866);
    EXPECT_EQ(Text(), "failed");
    EXPECT_TRUE(file.WriteString("y"));
    file.SetFileEncoding(zynEncCP866);
    EXPECT_EQ(file.Flush() + file.Flush(), 0);
    EXPECT_EQ(folder.Read("f"), "x");
#endif
}

TEST_F(StringFile, OneGibibyteIsTooLong) {
    for (const unsigned length : {0x40000000u, 0x3FFFFFFFu}) {
        Open("");
        std::filesystem::resize_file(folder.Native("f"), length);
        FailingNew failing(1);
        EXPECT_EQ(file.Load2Memory(), 0);
        EXPECT_EQ(failing.Failures(), length < 0x40000000); // memory is not even asked for
    }
}

TEST_F(StringFile, ARunOfLineEndsCountsAsOne) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"a\r\n\r\nb", {"a", "b"}},     {"\r\na", {"", "a"}}, {"a", {"a"}},
        {"a\rb\nc\n", {"a", "b", "c"}}, {"\n", {""}},         {"a\0b\0\0\r\nc\0"s, {"a", "b", "c"}},
        {"\0\n\r \n"s, {"", " "}},
    };
    for (const auto& [bytes, lines] : cases) {
        Open(bytes, CFile::typeText);
        EXPECT_EQ(Lines(), lines) << testing::PrintToString(bytes);
        EXPECT_EQ(file.GetPosition(), bytes.size());
        EXPECT_EQ(Text(), "failed");
        file.SeekToBegin();
        EXPECT_EQ(Text(), bytes);
        EXPECT_EQ(file._GetCurPos(), 0u);
    }
    Open("012\r\n56789");
    EXPECT_EQ(file.SetPosition(5), 0u); // nothing loaded yet
    file.Load2Memory();
    for (const unsigned position : {0u, 9u, 10u, 1000u})
        EXPECT_EQ(file.SetPosition(position), std::min(position, 9u));
    EXPECT_EQ(Text(), "9");
    file.SetPosition(3);
    EXPECT_EQ(Lines(), (std::vector<std::string>{"", "56789"}));
}

TEST_F(StringFile, WritingAppendsAndPutsCarriageReturnsBeforeBareLineFeeds) {
    EXPECT_FALSE(file.WriteString("x") || file.Flush() || file.Load2Memory()); // not open
    Open("gone");
    EXPECT_FALSE(file.WriteString(nullptr) || file.WriteString(""));
    std::string expected;
    const char* const cases[][2] = {{"a\nb", "a\r\nb"},
                                    {"a\r\nb\r", "a\r\nb\r"},
                                    {"\n\n\r\n", "\r\n\r\n\r\n"}, // the CR of the text before does not count
                                    {"\r\r\n\n", "\r\r\n\r\n"}};
    for (const auto& [text, stored] : cases) {
        EXPECT_TRUE(file.WriteString(text));
        expected += stored;
        EXPECT_EQ(reinterpret_cast<const char*>(file._GetBuf()), expected);
        EXPECT_EQ(file._GetDataSize(), expected.size());
    }
    const std::pair<std::size_t, unsigned> capacities[] = {{4095, 4096}, {4096, 8192}, {20'000, 20'001}};
    for (const auto& [size, capacity] : capacities) {
        expected.resize(size, 'x');
        EXPECT_TRUE(file.WriteString(expected.c_str() + file._GetDataSize()));
        EXPECT_EQ(file.m_nCapacity, capacity);
    }
    EXPECT_EQ(file.Flush(), 1);
    EXPECT_EQ(file.GetFileEncoding(), zynEncCP1251);
    EXPECT_EQ(folder.Read("f"), expected);
}

TEST_F(StringFile, FlushWritesWhatIsPendingOnceAndEndsTheFileThere) {
    const std::string old = Encode(zynEncUCS4LE, u"много");
    Open(old);
    EXPECT_TRUE(file.Load2Memory() && file.Flush());
    EXPECT_EQ(folder.Read("f"), old); // without a mark as it was: nothing was written
    file.SetPosition(3);
    EXPECT_TRUE(file.WriteString("!"));
    {
        FailingNew failing(1);
        EXPECT_EQ(file.Flush(), 0); // nothing to convert into
    }
    EXPECT_EQ(folder.Read("f"), old);
    file.SetFileEncoding(zynEncUTF8);
    EXPECT_EQ(file.Flush(), 1);
    EXPECT_EQ(folder.Read("f"), marks[zynEncUTF8] + Encode(zynEncUTF8, u"много!"));
    EXPECT_EQ(Text(), "го!"_cp1251);
    folder.Write("f", "somebody else's");
    file.Close();
    EXPECT_EQ(folder.Read("f"), "somebody else's");
}

TEST_F(StringFile, ReadingThrowsNoPendingTextAway) {
    Open("old content");
    EXPECT_TRUE(file.WriteString("new"));
    EXPECT_EQ(file.Load2Memory(), 0);
    EXPECT_EQ(Text(), "failed");
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(Text(), "new");
    EXPECT_TRUE(file.WriteString("er"));
    ASSERT_TRUE(file.Open(folder.Path("g"), fresh, zynEncUTF8)); // closes, and so writes
    EXPECT_EQ(folder.Read("f"), "newer");
    EXPECT_EQ(file._GetDataSize(), 0u);
    EXPECT_EQ(file.GetFileEncoding(), zynEncUTF8);
}

TEST_F(StringFile, FailedOpenKeepsItsMessageUntilTheNextFailure) {
    CzynStringFile other(folder.Path("none"), CFile::modeRead);
    EXPECT_STREQ(other.GetErrorMessage(), "Ошибка при открытии файла: Файл не найден."_cp1251);
    Open("x"); // exclusive without share bits
    EXPECT_EQ(other.Open(folder.Path("f"), CFile::modeRead | CFile::shareDenyNone, zynEncUnknown), 0);
    const char* const busy = "Ошибка при открытии файла: Файл занят другим процессом."_cp1251;
    EXPECT_STREQ(other.GetErrorMessage(), busy);
    EXPECT_NE(other.Open(folder.Path("new"), fresh, zynEncUnknown), 0);
    other.Close();
    EXPECT_FALSE(other.IsFileOpen());
    EXPECT_STREQ(other.GetErrorMessage(), busy);
}

TEST_F(StringFile, FileOpenedToBeEmptiedKeepsItsContentUntilItIsReplaced) {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit lowered{100, limit.rlim_max};
    for (const zynTextEncoding encoding : {zynEncCP1251, zynEncUCS2LE}) {
        Open("precious content", fresh);
        file.SetFileEncoding(encoding);
        EXPECT_TRUE(file.WriteString(std::string(101, 'x').c_str()));
        setrlimit(RLIMIT_FSIZE, &lowered);
        EXPECT_EQ(file.Flush(), 0);
        file.Close();
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(folder.Read("f"), "precious content");
    }
    Open("precious content", fresh);
    file.SetFileEncoding(zynEncUTF8);
    EXPECT_TRUE(file.WriteString("x"));
    {
        FailingNew failing(1, FailingNew::onwards);
        file.Close(); // cannot convert
    }
    EXPECT_EQ(folder.Read("f"), "precious content");
    Open("precious content", CFile::modeCreate | update);
    EXPECT_EQ(Text(), "failed"); // empty to its opener
    EXPECT_TRUE(file.Load2Memory() && file.WriteString("new") && file.Flush());
    EXPECT_EQ(folder.Read("f"), "new");
    Open("old", fresh);
    file.Close();
    EXPECT_EQ(folder.Read("f"), "");
}

TEST_F(StringFile, RunningOutOfMemoryAnywhereLeavesTheOldFileOrTheNew) {
    const std::string before = marks[zynEncUCS4BE] + Encode(zynEncUCS4BE, u"раз\r\nдва");
    const std::string after = before + Encode(zynEncUCS4BE, u"\r\nтри");
    const CStringA name = folder.Path("f");
    for (long n = 1, failures = 1; failures > 0; ++n) {
        ASSERT_LT(n, 100);
        folder.Write("f", before);
        bool written = false;
        {
            FailingNew failing(n);
            try {
                CzynStringFile text(name, update);
                CStringA line;
                written = text.ReadString(line) && text.WriteString("\nтри"_cp1251) && text.Flush();
            } catch (const std::bad_alloc&) {
            }
            failures = failing.Failures();
        }
        const std::string now = folder.Read("f");
        EXPECT_TRUE(now == after || (now == before && !written)) << n;
        EXPECT_TRUE(written || failures > 0);
    }
}

TEST(StringFileConverters, EveryPairAgreesWithTheEncoders) {
    const std::u16string text = u"Еж - АЯая\n";
    for (const zynTextEncoding to : encodings)
        for (const zynTextEncoding from : encodings) {
            const bool converts = from == to || from < zynEncUCS4LE;
#ifndef NDEBUG
            if (!converts) continue; // asserted
#endif
            EXPECT_EQ(Convert(from, Encode(from, text), to), converts ? Encode(to, text) : "failed")
                << from << to;
            EXPECT_EQ(Convert(from, "", to) + Convert(zynEncUnknown, "a", to) +
                          Convert(from, "a", zynEncUnknown),
                      "failedfailedfailed");
            EXPECT_EQ(Converted<int>("abcd",
                                     [=](auto*, int, auto*& out, int& length) {
                                         return CzynStringFile::ConvertEncoding(from, nullptr, 4, to, out,
                                                                                length);
                                     }),
                      "failed");
        }
    EXPECT_EQ(Convert(zynEncCP866, "a", zynEncCP866), "a");
    EXPECT_EQ(Convert(zynEncUnknown, "a", zynEncUnknown), "failed");
}

TEST(StringFileConverters, MarksOddLengthsAndCharactersWithoutAPlace) {
    const struct {
        zynTextEncoding from;
        std::string bytes;
        zynTextEncoding to;
        std::string result;
    } cases[] = {
        {zynEncUCS2LE, "\xFF\xFE\x10\x04"s, zynEncCP1251, "\xC0"}, // the mark skipped, or kept
        {zynEncUCS2LE, "\xFF\xFE\x10\x04"s, zynEncUTF8, "\xD0\x90"},
        {zynEncUCS2LE, "\xFF\xFE\x10\x04"s, zynEncUCS2BE, "\xFE\xFF\x04\x10"},
        {zynEncUCS2LE, "\xFF\xFE\x10\x04"s, zynEncUCS4LE, "\xFF\xFE\0\0\x10\x04\0\0"s},
        {zynEncUCS2LE, "\xFF\xFE"s, zynEncUTF8, "failed"},
        {zynEncUCS2LE, "A\0B"s, zynEncUTF8, "A"},
        {zynEncUCS2LE, "A\0B"s, zynEncUCS4BE, "\0\0\0A"s},
        {zynEncUCS2LE, "A"s, zynEncCP1251, "failed"},
        {zynEncUCS2LE, "\xE9\0A\0\x2D\x4E"s, zynEncCP1251, "?A?"},
        {zynEncUCS2LE, "\x3D\xD8\0\xDE"s, zynEncUTF8, "\xF0\x9F\x98\x80"},
        {zynEncUCS2LE, "\x3D\xD8\0\xDE"s, zynEncUCS4LE, "\x3D\xD8\0\0\0\xDE\0\0"s}, // pairs stay pairs
        {zynEncUTF8, "\xF0\x9F\x98\x80", zynEncUCS2LE, "\x3D\xD8\0\xDE"s},
        {zynEncCP1251, "a\0b"s, zynEncUTF8, "a\0b"s},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Convert(c.from, c.bytes, c.to), c.result) << testing::PrintToString(c.bytes) << c.to;
}

TEST(StringFileConverters, UnitsAreTurnedAndWidened) {
    const auto turned = [](auto turn, std::string bytes) {
        EXPECT_TRUE(
            turn(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned>(bytes.size())));
        EXPECT_TRUE(turn(nullptr, 0) && !turn(nullptr, 4));
        return bytes;
    };
    EXPECT_EQ(turned(CzynStringFile::BufConvert_Utf16_BE2LE, "abcde"), "badce");
    EXPECT_EQ(turned(CzynStringFile::BufConvert_Utf32_BE2LE, "abcdefghijk"), "dcbahgfeijk");
    const auto narrow = CzynStringFile::BufConvert_Utf32le_to_UCS2,
               widen = CzynStringFile::BufConvert_UCS2_to_Utf32le;
    const std::pair<std::string, std::string> cases[] = {{"ab\0\0cd\0\0ef\0"s, "abcd"},
                                                         {"ab\0\0cd\x01\0"s, "failed"},
                                                         {"ab\0\x01"s, "failed"},
                                                         {"abc", ""},
                                                         {"", ""}};
    for (const auto& [bytes, result] : cases)
        EXPECT_EQ(Converted<unsigned>(bytes, narrow), result);
    EXPECT_EQ(Converted<unsigned>("abcde", widen) + Converted<unsigned>("", widen), "ab\0\0cd\0\0"s);
}

} // namespace
