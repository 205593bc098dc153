// SPDX-License-Identifier: MIT
#include "support/encodings.h"
#include "support/failing_new.h"
#include "zynaggr/zynstringfile.h"

#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

const std::string word = "Ёж №"_cp1251;

struct ZynStringFileTest : testing::Test {
    // Opens the file and gives it this content first.
    void Open(const std::string& bytes, unsigned flags = CFile::modeReadWrite | CFile::shareDenyNone,
              zynTextEncoding ifNoMark = zynEncUnknown) {
        file.Close();
        folder.Write("f", bytes);
        file.SetEncodingIfNotBOM(ifNoMark);
        ASSERT_NE(0, file.Open(folder.Path("f"), flags, zynEncUnknown));
    }
    std::string All() {
        CStringA text;
        file.ReadAllDataToString(text);
        return std::string(text.View());
    }

    TempFolder folder;
    CzynStringFile file;
};

TEST_F(ZynStringFileTest, EveryEncodingIsReadAndWrittenBackWithItsMark) {
    for (const Encoding& encoding : encodings)
        for (const bool isMarked : {true, false}) {
            if (!isMarked && (encoding.number == zynEncUCS2LE || encoding.number == zynEncUCS2BE))
                continue; // № is not among the 16-bit characters that are looked for
            const std::string encoded = encoding.Encoded(word);
            Open((isMarked ? encoding.mark : "") + encoded);
            EXPECT_EQ(word, All()) << encoding.name;
            EXPECT_EQ(encoding.number, file.GetFileEncoding());
            EXPECT_EQ(1, file.WriteString("!"));
            file.SetFileEncoding(zynEncCP1251);
            EXPECT_EQ(1, file.Flush());
            EXPECT_EQ(word + "!", folder.Read("f")); // the file ends where the shorter text does
            file.WriteString("\n");
            file.SetFileEncoding(encoding.number);
            file.Close();
            EXPECT_EQ(encoding.mark + encoding.Encoded(word + "!\r\n"), folder.Read("f"));
        }
}

TEST_F(ZynStringFileTest, WithoutAMarkDecidesWhatIsSaidOrElseTheContent) {
    const std::tuple<std::string, zynTextEncoding, zynTextEncoding, std::string> cases[] = {
        {"plain", zynEncUnknown, zynEncCP1251, "plain"},
        {"x", zynEncUnknown, zynEncCP1251, "x"},
        {"\xC3\xA9", zynEncUnknown, zynEncCP1251, "\xC3\xA9"}, // é: not among the characters looked for
        {"\xC3\xA9", zynEncUTF8, zynEncUTF8, "?"},
        {"A\0\x1F\x04"s, zynEncUnknown, zynEncUCS2LE, "A\xCF"},
        {"\0A\x04\x1F"s, zynEncUnknown, zynEncUCS2BE, "A\xCF"},
        {"A\0\0"s, zynEncUnknown, zynEncCP1251, "A\0\0"s}, // not whole units
        {"", zynEncUnknown, zynEncUnknown, ""},
        {"\xD0\x81", zynEncCP1251, zynEncCP1251, "\xD0\x81"},
        {encodings[1].mark + "\xD0\x81", zynEncCP1251, zynEncUTF8, "Ё"_cp1251},
    };
    for (const auto& [bytes, said, found, text] : cases) {
        Open(bytes, CFile::modeReadWrite, said);
        EXPECT_EQ(1, file.Load2Memory());
        EXPECT_EQ(found, file.GetFileEncoding());
        EXPECT_EQ(text, All());
    }
    EXPECT_EQ(1, file.WriteString("!"));
    ASSERT_NE(0, file.Open(folder.Path("g"), CFile::modeCreate, zynEncUnknown)); // closes, and so writes
    EXPECT_EQ(encodings[1].mark + "\xD0\x81!", folder.Read("f"));
}

TEST_F(ZynStringFileTest, FailedLoadForgetsWhatWasToldAndLeavesTheFileOpen) {
    const std::string aboveFFFF = "\xFF\xFE\0\0\0\0\1\0"s, nothingButAMark = encodings[1].mark;
    for (const std::string& bytes : {aboveFFFF, nothingButAMark}) {
        Open(bytes);
        file.SetFileEncoding(zynEncUTF8);
        EXPECT_EQ(0, file.Load2Memory());
        EXPECT_EQ(zynEncUnknown, file.GetFileEncoding());
        EXPECT_TRUE(file.IsFileOpen());
        EXPECT_EQ(nullptr, file._GetBuf());
    }
#ifdef NDEBUG
    Open("x", CFile::modeReadWrite, zynEncCP866);
    EXPECT_EQ(0, file.Load2Memory());
#endif
    for (const unsigned length : {0x40000000u, 0x3FFFFFFFu}) {
        Open("");
        fs::resize_file(folder.Native("f"), length);
        const FailingNew failing(1);
        EXPECT_EQ(0, file.Load2Memory());
        EXPECT_EQ(length < 0x40000000 ? 1 : 0, failing.Failures()); // too long: memory is not asked for
    }
}

TEST_F(ZynStringFileTest, RunOfLineEndsCountsAsOne) {
    const std::tuple<std::string, std::vector<std::string>> cases[] = {
        {"a\r\n\r\nb", {"a", "b"}},  {"a\nb\n", {"a", "b"}}, {"a\rb\r", {"a", "b"}}, {"\r\na", {"", "a"}},
        {"a\n\0\r\nb"s, {"a", "b"}}, {"a\0b"s, {"a", "b"}},  {"\n", {""}},           {"", {}},
    };
    for (const auto& [bytes, expected] : cases) {
        Open(bytes);
        std::vector<std::string> lines;
        for (CStringA line; file.ReadString(line);)
            lines.emplace_back(line.View());
        EXPECT_EQ(expected, lines) << testing::PrintToString(bytes);
    }
}

TEST_F(ZynStringFileTest, PositionsStayInTheTextAndTheBufferGrowsInSteps) {
    Open("0123456789");
    EXPECT_EQ(0u, file.SetPosition(5)); // nothing loaded yet
    file.Load2Memory();
    EXPECT_EQ(9u, file.SetPosition(1000));
    EXPECT_EQ("9", All());
    EXPECT_EQ(9u, file.GetPosition());
    file.SeekToBegin();
    EXPECT_EQ("0123456789", All());
    CStringA text;
    EXPECT_EQ(1, file.ReadString(text));
    for (const bool isLine : {true, false}) {
        text = "old";
        EXPECT_EQ(0, isLine ? file.ReadString(text) : file.ReadAllDataToString(text));
        EXPECT_STREQ("", text);
    }

    EXPECT_EQ(1, file.WriteString("b"));
    const unsigned char* const buffer = file._GetBuf();
    EXPECT_EQ(1, file.WriteString(std::string(4094, 'x').c_str()));
    EXPECT_EQ(buffer, file._GetBuf()); // 10 + 4096 bytes are had, the last for a zero
    EXPECT_EQ(4105u, std::strlen(reinterpret_cast<const char*>(buffer)));
    EXPECT_EQ(1, file.WriteString("x"));
    EXPECT_NE(buffer, file._GetBuf());
}

TEST_F(ZynStringFileTest, WritingInsertsCarriageReturnsAndAppendsAtTheEnd) {
    EXPECT_EQ(0, file.WriteString("x")); // not open
    EXPECT_EQ(0, file.Flush());
    Open("old");
    file.Load2Memory();
    EXPECT_EQ(0, file.WriteString(""));
    EXPECT_EQ(0, file.WriteString(nullptr));
    EXPECT_EQ(1, file.Flush()); // nothing to write
    for (const char* text : {"\na\n\nb\r\nc\r", "\nd"})
        EXPECT_EQ(1, file.WriteString(text));
    EXPECT_EQ(1, file.WriteString("e\0f", 3));
    EXPECT_EQ(1, file.Flush());
    EXPECT_EQ("old\r\na\r\n\r\nb\r\nc\r\r\nde\0f"s, folder.Read("f"));

    Open("old"); // written text comes to stand behind what is read
    CStringA line;
    EXPECT_TRUE(file.WriteString("n\n") && file.ReadString(line) && line == "oldn");
    EXPECT_EQ(1, file.WriteString(reinterpret_cast<const char*>(file._GetBuf()))); // its own text
    EXPECT_EQ(1, file.Flush());
    EXPECT_EQ("oldn\r\noldn\r\n", folder.Read("f"));
}

constexpr unsigned emptying = CFile::modeCreate | CFile::modeWrite;

TEST_F(ZynStringFileTest, FileOpenedToBeEmptiedIsEmptyToItsUserAloneUntilItIsWritten) {
    const auto nothing = [](CzynStringFile&) { return false; };
    const auto raw = [](CzynStringFile& f) { return f.Write("raw bytes", 9); };
    const auto text = [](CzynStringFile& f) { return f.WriteString("text") != 0; };
    constexpr unsigned shared = emptying | CFile::shareDenyNone;
    const std::tuple<unsigned, bool (*)(CzynStringFile&), std::string> cases[] = {
        {emptying, nothing, ""},
        {emptying, raw, "raw bytes"},
        {emptying, [](CzynStringFile& f) { return f.SetLength(4); }, "\0\0\0\0"s},
        {emptying, text, "text"},
        {shared, text, "text"},
        {CFile::modeCreate | CFile::modeRead, raw, ""}, // for reading only
    };
    CzynStringFile other;
    for (const auto& [flags, act, after] : cases) {
        Open("old content", flags);
        const bool isExclusive = flags == emptying;
        EXPECT_EQ(isExclusive ? "old content" : "", folder.Read("f"));
        char byte;
        EXPECT_TRUE(file.GetLength() == 0 && file.Read(&byte, 1) == 0);
        if (isExclusive) {
            EXPECT_TRUE(!other.Open(folder.Path("f"), CFile::shareDenyNone, zynEncUnknown));
            EXPECT_TRUE(file.Load2Memory() && file._GetDataSize() == 0);
        }
        EXPECT_EQ(!after.empty(), act(file));
        file.Close();
        EXPECT_EQ(after, folder.Read("f")) << flags;
    }
    EXPECT_STREQ("Ошибка при открытии файла: Файл занят другим процессом."_cp1251, other.GetErrorMessage());
    Open("old content");
    fs::remove(folder.Native("f")); // and a file that is deleted meanwhile comes back
    EXPECT_TRUE(file.WriteString("again") && file.Flush());
    EXPECT_EQ("again", folder.Read("f"));
    Open("old content", shared); // the one that writes nothing destroys nothing
    ASSERT_NE(0, other.Open(folder.Path("f"), shared, zynEncUnknown));
    EXPECT_TRUE(other.WriteString("text") && other.Flush());
    file.Close();
    EXPECT_EQ("text", folder.Read("f"));
}

// What the file is to everybody else stays, whether it can be replaced or must be written over.
TEST_F(ZynStringFileTest, FlushChangesNothingButTheText) {
    const std::pair<std::string, bool> cases[] = {
        {"true", true},
        {"mkdir d && mv f d/target && ln -s d/target f", true},
        {"echo half >.f.zynsave", true}, // of a process that was killed
        {"mkdir .f.zynsave", false},
        {"ln f second", false},
    };
    for (unsigned i = 0; i < 2 * std::size(cases); ++i) {
        const auto& [prepare, isReplaced] = cases[i / 2];
        SCOPED_TRACE(prepare);
        const bool keepsOld = i % 2; // as a backup
        const TempFolder in;
        CzynStringFile text, other;
        in.Write("f", "the old content");
        ASSERT_EQ(0, std::system(("cd " + in.Native().string() + " && " + prepare).c_str()));
        const std::string f = in.Native("f").string(), bak = f + ".bak";
        const bool isLink = fs::is_symlink(f);
        const bool isRoot = chown(f.c_str(), 1234, 2345) == 0;
        chmod(f.c_str(), 0604);
        setxattr(f.c_str(), "user.note", "mine", 4, 0);
        struct stat old, now, backup;
        ASSERT_EQ(0, stat(f.c_str(), &old));
        ASSERT_NE(0, text.Open(in.Path("f"), keepsOld ? emptying : CFile::modeReadWrite, zynEncUnknown));
        EXPECT_TRUE(text.WriteString("text") && text.Load2Memory() &&
                    (keepsOld ? text.FlushWithBackup() : text.Flush()));
        EXPECT_EQ(keepsOld ? "text" : "the old contenttext", in.Read("f"));
        EXPECT_EQ(keepsOld ? "the old content" : "", in.Read("f.bak"));
        ASSERT_EQ(0, stat(f.c_str(), &now) + stat((keepsOld ? bak : f).c_str(), &backup));
        for (const struct stat& one : {old, now, backup})
            EXPECT_TRUE((one.st_mode & 07777) == 0604 &&
                        (!isRoot || (one.st_uid == 1234 && one.st_gid == 2345)));
        char note[5] = {};
        EXPECT_TRUE(getxattr(f.c_str(), "user.note", note, 4) <= 0 || note == "mine"s);
        EXPECT_TRUE(isReplaced == (old.st_ino != now.st_ino) && now.st_nlink == old.st_nlink);
        EXPECT_EQ(isLink, fs::is_symlink(f));
        EXPECT_FALSE(fs::is_regular_file(in.Native(".f.zynsave")));
        if (keepsOld) continue;
        EXPECT_EQ(0, other.Open(in.Path("f"), CFile::shareDenyNone, zynEncUnknown)); // exclusive as before
        EXPECT_TRUE(text.WriteString("more") && text.Flush());
        EXPECT_EQ("the old contenttextmore", in.Read("f"));
    }
}

TEST_F(ZynStringFileTest, PipesAndDevicesAreReadAndWrittenAsTheyAre) {
    ASSERT_NE(0, file.Open("/dev/null", emptying, zynEncUTF8));
    EXPECT_TRUE(file.WriteString("text") && file.Flush());
    ASSERT_NE(0, file.Open("/dev/full", emptying, zynEncUTF8));
    EXPECT_TRUE(file.WriteString("text") && !file.Flush());
    ASSERT_NE(0,
              file.Open("/proc/self/status", CFile::shareDenyNone, zynEncUnknown)); // says that it is empty
    CStringA line;
    EXPECT_TRUE(file.ReadString(line) && line.Find("Name:") == 0);
    mkfifo(folder.Native("pipe").c_str(), 0600);
    const int end = open(folder.Native("pipe").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_NE(0, file.Open(folder.Path("pipe"), CFile::shareDenyNone, zynEncUnknown));
    std::thread slow([&] {
        usleep(20'000);
        EXPECT_EQ(7, write(end, "a\nslow\n", 7));
        close(end);
    });
    EXPECT_TRUE(file.ReadString(line) && file.ReadString(line));
    EXPECT_STREQ("slow", line);
    slow.join();
}

TEST_F(ZynStringFileTest, TextForWhichThereIsNoRoomStaysPendingAndTheOldFileWhole) {
    for (const bool isWrittenLater : {false, true}) {
        Open("old content", emptying);
        file.SetFileEncoding(zynEncUCS4LE);
        file.WriteString(std::string(500, 'x').c_str());
        {
            const FullDisk full(1000);
            EXPECT_EQ(0, file.Flush());
            if (!isWrittenLater) file.Close();
        }
        EXPECT_EQ("old content", folder.Read("f"));
        EXPECT_EQ(isWrittenLater, file.Flush());
        EXPECT_EQ(isWrittenLater ? 2004u : 11u, folder.Read("f").size());
    }
}

TEST_F(ZynStringFileTest, FailedAllocationIsAResultAndLosesNothing) {
    const std::string bytes = encodings[3].mark + encodings[3].Encoded(word);
    for (const unsigned flags : {unsigned{CFile::modeReadWrite}, emptying})
        for (const auto kind : {FailingNew::once, FailingNew::onwards})
            for (long n = 1, failures = 1; failures != 0; ++n) {
                folder.Write("f", bytes);
                try {
                    const FailingNew failing(n, kind);
                    CzynStringFile text(folder.Path("f"), flags);
                    text.SetFileEncoding(zynEncUCS2BE);
                    if (text.Load2Memory() && text.WriteString("!")) text.Flush();
                    text.Close();
                    failures = failing.Failures();
                } catch (const std::bad_alloc&) {
                }
                const std::string after = folder.Read("f");
                const std::string whole = (flags == emptying ? encodings[3].mark : bytes) + "\0!"s;
                EXPECT_TRUE(after == whole || (failures != 0 && after == bytes)) << flags << ' ' << n;
            }
}

// What a converter makes of the bytes; "-" for a refusal.
template <class Length> std::string Result(std::string bytes, auto convert) {
    auto* const source = reinterpret_cast<unsigned char*>(bytes.data());
    unsigned char* out = source;
    Length length = 77;
    const bool done = convert(source, static_cast<Length>(bytes.size()), out, length);
    EXPECT_TRUE(done || (out == nullptr && length == 0));
    const std::string result = done ? std::string(out, out + length) : "-";
    CzynStringFile::FreeBuffer(out);
    return result;
}

TEST(ConvertersTest, EveryPairConvertsOrSaysNo) {
    const auto convert = [](zynTextEncoding from, const std::string& bytes, zynTextEncoding to, int cut = 0) {
        return Result<int>(bytes, [=](unsigned char* source, int size, unsigned char*& out, int& length) {
            const bool done = CzynStringFile::ConvertEncoding(from, source, size - cut, to, out, length);
            EXPECT_EQ(done, out != nullptr);
            return done;
        });
    };
    std::string text = word;
    for (int doubled = 0; doubled < 12; ++doubled, text += text)
        for (const Encoding& from : std::span(encodings).first(4))
            for (const Encoding& to : encodings)
                EXPECT_EQ(to.Encoded(text), convert(from.number, from.Encoded(text), to.number))
                    << from.name << to.name;
    EXPECT_EQ(word, convert(zynEncUCS2LE, encodings[2].mark + encodings[2].Encoded(word),
                            zynEncCP1251)); // mark skipped
    EXPECT_EQ("?\xCF", convert(zynEncUTF8, "\xC3\xA9\xD0\x9F", zynEncCP1251));
    EXPECT_EQ("-", convert(zynEncUCS2LE, "A", zynEncCP1251)); // no whole unit
    EXPECT_EQ("-", convert(zynEncCP1251, "A", zynEncUTF8, 1));
    EXPECT_EQ("-", convert(zynEncUnknown, "A", zynEncUTF8));
    EXPECT_EQ("-", convert(zynEncUnknown, "A", zynEncUnknown));
    EXPECT_EQ("A", convert(zynEncCP866, "A", zynEncCP866));
#ifdef NDEBUG
    EXPECT_EQ("-", convert(zynEncUCS4LE, encodings[4].Encoded(word), zynEncUTF8));
    EXPECT_EQ("-", convert(zynEncCP866, "A", zynEncUTF8));
#endif

    const auto narrow = CzynStringFile::BufConvert_Utf32le_to_UCS2;
    const auto widen = CzynStringFile::BufConvert_UCS2_to_Utf32le;
    EXPECT_EQ("abcd", Result<unsigned>("ab\0\0cd\0\0ef\0"s, narrow));
    EXPECT_EQ("-", Result<unsigned>("ab\x01\0"s, narrow)); // refused whole
    EXPECT_EQ("-", Result<unsigned>("ab\0\x01"s, narrow));
    EXPECT_EQ("", Result<unsigned>("", narrow));
    EXPECT_EQ("ab\0\0cd\0\0"s, Result<unsigned>("abcde", widen));
    EXPECT_EQ("", Result<unsigned>("", widen));

    unsigned char odd[] = {1, 2, 3, 4, 5};
    EXPECT_TRUE(CzynStringFile::BufConvert_Utf16_BE2LE(odd, 5));
    EXPECT_TRUE(CzynStringFile::BufConvert_Utf32_BE2LE(odd, 5));
    EXPECT_EQ(0, std::memcmp(odd, "\x03\x04\x01\x02\x05", 5));
    EXPECT_FALSE(CzynStringFile::BufConvert_Utf16_BE2LE(nullptr, 2));
    EXPECT_TRUE(CzynStringFile::BufConvert_Utf16_BE2LE(nullptr, 0));
}

} // namespace
