#include "support/encodings.h"
#include "support/failing_new.h"
#include "zynaggr/zynstringfile.h"

#include <cstring>
#include <fcntl.h>
#include <new>
#include <span>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <thread>

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
    EXPECT_EQ(0u, file.SetPosition(0));
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
    EXPECT_EQ(1, file.WriteString("n\n"));
    EXPECT_EQ(1, file.ReadString(line));
    EXPECT_STREQ("oldn", line);
    EXPECT_EQ(1, file.WriteString(reinterpret_cast<const char*>(file._GetBuf()))); // its own text
    EXPECT_EQ(1, file.Flush());
    EXPECT_EQ("oldn\r\noldn\r\n", folder.Read("f"));
}

constexpr unsigned emptying = CFile::modeCreate | CFile::modeWrite;

TEST_F(ZynStringFileTest, FileOpenedToBeEmptiedIsExclusiveAndKeepsItsContentUntilClosed) {
    Open("old content", emptying);
    CzynStringFile other;
    EXPECT_EQ(0, other.Open(folder.Path("f"), CFile::shareDenyNone, zynEncUnknown));
    EXPECT_STREQ("Ошибка при открытии файла: Файл занят другим процессом."_cp1251, other.GetErrorMessage());
    EXPECT_EQ("old content", folder.Read("f"));
    EXPECT_EQ(1, file.Load2Memory()); // it is empty to its user
    EXPECT_EQ(0u, file._GetDataSize());
    file.Close();
    EXPECT_EQ("", folder.Read("f"));
    EXPECT_EQ(0, file.Open(folder.Path("none/f"), emptying, zynEncUnknown));
    EXPECT_STREQ("Ошибка при открытии файла: Путь не найден."_cp1251, file.GetErrorMessage());
}

TEST_F(ZynStringFileTest, FileOpenedToBeEmptiedIsEmptyToEveryOperationOfItsOwn) {
    enum Act { nothing, raw, length, text };
    const std::tuple<unsigned, Act, std::string> cases[] = {
        {emptying, nothing, ""},
        {emptying, raw, "raw bytes"},
        {emptying, length, "\0\0\0\0"s},
        {emptying, text, "text"},
        {emptying | CFile::shareDenyNone, text, "text"},
        {CFile::modeCreate | CFile::modeRead, raw, ""}, // for reading only
    };
    for (const auto& [flags, act, after] : cases) {
        Open("old content", flags);
        EXPECT_EQ(0, file.GetLength());
        char byte;
        EXPECT_EQ(0u, file.Read(&byte, 1));
        const bool isDone = act == raw      ? file.Write("raw bytes", 9)
                            : act == length ? file.SetLength(4)
                            : act == text   ? file.WriteString("text") != 0
                                            : false;
        EXPECT_EQ(!after.empty(), isDone);
        file.Close();
        EXPECT_EQ(after, folder.Read("f")) << flags << act;
    }
    Open("old content");
    std::filesystem::remove(folder.Native("f")); // and a file that is deleted meanwhile comes back
    EXPECT_TRUE(file.WriteString("again") && file.Flush());
    EXPECT_EQ("again", folder.Read("f"));
    Open("old content", emptying | CFile::shareDenyNone); // the one that writes nothing destroys nothing
    CzynStringFile other(folder.Path("f"), emptying | CFile::shareDenyNone);
    EXPECT_TRUE(other.WriteString("text") && other.Flush());
    file.Close();
    EXPECT_EQ("text", folder.Read("f"));
}

// What the file is to everybody else stays, whether it can be replaced or must be written over.
TEST_F(ZynStringFileTest, FlushChangesNothingButTheText) {
    const auto path = [&](const char* name) { return folder.Native(name); };
    const std::tuple<std::string, bool, void (*)(const TempFolder&)> cases[] = {
        {"a file", true, [](const TempFolder&) {}},
        {"a link", true,
         [](const TempFolder& in) {
             fs::create_directory(in.Native("d"));
             fs::rename(in.Native("f"), in.Native("d/target"));
             fs::create_symlink("d/target", in.Native("f"));
         }},
        {"the temporary of a killed process", true,
         [](const TempFolder& in) { in.Write(".f.zynsave", "half"); }},
        {"a foreign folder in the temporary's place", false,
         [](const TempFolder& in) { fs::create_directory(in.Native(".f.zynsave")); }},
        {"a second name", false,
         [](const TempFolder& in) { fs::create_hard_link(in.Native("f"), in.Native("g")); }},
    };
    for (const auto& [name, isReplaced, prepare] : cases) {
        file.Close();
        for (const auto& entry : fs::directory_iterator(folder.Native()))
            fs::remove_all(entry);
        folder.Write("f", "the old content");
        prepare(folder);
        const std::string f = path("f").string();
        const bool isRoot = chown(f.c_str(), 1234, 2345) == 0;
        chmod(f.c_str(), 0604);
        setxattr(f.c_str(), "user.note", "mine", 4, 0);
        const auto before = fs::hard_link_count(f);
        struct stat old, now;
        ASSERT_EQ(0, stat(f.c_str(), &old));
        ASSERT_NE(0, file.Open(folder.Path("f"), CFile::modeReadWrite, zynEncUnknown)) << name;
        EXPECT_TRUE(file.WriteString("text") && file.Load2Memory() && file.Flush());
        EXPECT_EQ("the old contenttext", folder.Read("f"));
        ASSERT_EQ(0, stat(f.c_str(), &now));
        EXPECT_EQ(isReplaced, old.st_ino != now.st_ino) << name;
        EXPECT_TRUE(now.st_mode == old.st_mode && (!isRoot || (now.st_uid == 1234 && now.st_gid == 2345)));
        char note[5] = {};
        EXPECT_TRUE(getxattr(f.c_str(), "user.note", note, 4) <= 0 || note == "mine"s);
        EXPECT_EQ(before, fs::hard_link_count(f));
        EXPECT_EQ(name == "a link"s, fs::is_symlink(f));
        EXPECT_FALSE(fs::is_regular_file(path(".f.zynsave")));
        CzynStringFile other; // the handle is exclusive as before
        EXPECT_EQ(0, other.Open(folder.Path("f"), CFile::shareDenyNone, zynEncUnknown)) << name;
        EXPECT_TRUE(file.WriteString("more") && file.Flush());
        EXPECT_EQ("the old contenttextmore", folder.Read("f"));
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
    for (const auto encoding : {zynEncCP1251, zynEncUCS4LE})
        for (const bool isWrittenLater : {false, true}) {
            Open("old content", emptying);
            file.SetFileEncoding(encoding);
            file.WriteString(std::string(2000, 'x').c_str());
            {
                const FullDisk full(1000);
                EXPECT_EQ(0, file.Flush());
                if (!isWrittenLater) file.Close();
            }
            EXPECT_EQ("old content", folder.Read("f"));
            EXPECT_EQ(isWrittenLater, file.Flush());
            const std::size_t written = encoding == zynEncCP1251 ? 2000 : 8004;
            EXPECT_EQ(isWrittenLater ? written : 11, folder.Read("f").size());
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
