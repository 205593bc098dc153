#include "support/ini_model.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/syserror.h"

#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <vector>

using namespace std::string_literals;
using namespace zynplatform::literals;

namespace {

std::string Parsed(std::string_view text, bool state = false) {
    OpenIni ini;
    EXPECT_TRUE(ini.ParseText(text));
    return ini.Model(state);
}

// The rules of the format, one character at a time, with nothing shared with the library.
std::string ReadSlowly(const std::string& text) {
    struct Section {
        std::string name, tail, lines;
        int count = 0, insertPos = 0, flags = 0;
    };
    std::vector<Section> sections;
    bool hasSection = false, hasLine = false, header = false, value = false, comment = false;
    std::string token;
    const auto create = [&] {
        sections.emplace_back();
        hasSection = true;
    };
    const auto addLine = [&](const std::string& key, const char* mark) {
        if (!hasSection) create();
        Section& section = sections.back();
        section.lines += "{" + (mark + key) + ":";
        ++section.count;
        if (key != "") section.insertPos = section.count;
        hasLine = true;
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char ch = text[i], before = i > 0 ? text[i - 1] : 'x', after = text.c_str()[i + 1];
        if (ch == ';' || ch == '#') {
            if (!value && !header) comment = true;
            token += ch;
        } else if ((ch == '[' || ch == ']') && !value && !comment) {
            if (!header) hasSection = false;
            header = true;
            const bool isSecond = hasSection;
            if (!hasSection) create();
            sections.back().flags |= ch == ']' ? 2 : isSecond ? 0 : 1;
            if (ch == ']')
                sections.back().name = std::exchange(token, "");
            else if (isSecond)
                token += ch;
        } else if (ch == '=' && !header && !comment && !value) {
            value = true;
            addLine(token, token == "" ? "=" : "");
            token = "";
        } else if (ch == '\r' && (after == '\n' || before == '\n')) {
        } else if (ch == '\r' || ch == '\n') {
            if (header) {
                Section& section = sections.back();
                (section.flags & 2 ? section.tail : section.name) = token;
            } else {
                if (!hasLine) addLine("", "");
                const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
                while (token != "" && isBlank(token.back()))
                    token.pop_back();
                while (token != "" && isBlank(token.front()))
                    token.erase(0, 1);
                sections.back().lines += token + "}";
            }
            token = "";
            hasLine = header = value = comment = false;
        } else {
            token += ch;
        }
    }
    std::string model;
    for (const Section& s : sections)
        model += "<" + s.name + "|" + s.tail + "|" + std::to_string(s.insertPos) + "|" +
                 std::to_string(s.flags) + ">" + s.lines;
    return model;
}

// The keys of a file, loaded if that is due, as "a,b,"; "failed" when the load failed.
std::string Keys(OpenIni& ini) {
    if (!ini.Parse()) return "failed";
    CStringArray keys;
    ini.GetListKeys("s", keys);
    std::string all;
    for (int i = 0; i < keys.GetSize(); ++i)
        all += std::string(keys[i].View()) + ",";
    return all;
}

class IniReloadTest : public IniFileTest {
protected:
    IniReloadTest() {
        Load("[s]\na=1\n");
        folder.Write("f.ini", "[s]\nb=1\n");
    }
};

} // namespace

TEST(IniParseTest, EveryKindOfLineIsKept) {
    // clang-format off
    const struct {
        const char* text;
        const char* model;
    } cases[] = {
        {"[s]\nkey=value\n", "<s|>{key:value}"},       {"[ s ] ; tail \nk=v\n", "< s | ; tail >{k:v}"},
        {" [s]\n", "< s|>"},                           {"before[s]after\n", "<befores|after>"},
        {"[no end \n", "<no end |>"},                  {"name] tail\n", "<name| tail>"},
        {"[a]b]\n", "<b|>"},                           {"[a[b]\n", "<a[b|>"},
        {"[]\n", "<|>"},                               {"[a=b;c#d]e=f\n", "<a=b;c#d|e=f>"},
        {" key = value \n", "<|>{ key :value}"},       {"k=\t a;b#c=[d] \t\n", "<|>{k:a;b#c=[d]}"},
        {"= v\n", "<|>{=:v}"},                         {"==\n", "<|>{=:=}"},
        {"=\n", "<|>{=:}"},                            {" ; [a]=b \n", "<|>{:; [a]=b}"},
        {" free text \n", "<|>{:free text}"},          {"key # not = a pair\n", "<|>{:key # not = a pair}"},
        {"\n \n", "<|>{:}{:}"},                        {"a=1\r\nb=2\rc=3\nd=4\n\re=5\n", "<|>{a:1}{b:2}{c:3}{d:4}{e:5}"},
        {"a\r\rb\n", "<|>{:a}{:}{:b}"},               {"a\n\r\nb\n", "<|>{:a}{:}{:b}"},
        {"x=1\n]\n", "<|>{x:1}<|>"},                   {"[a]\n[b\n]c\n", "<a|><b|><|c>"},
        {"", ""},                                      {"a=1\n[s]\na=2\n[s]\na=3\na=4\n", "<|>{a:1}<s|>{a:2}<s|>{a:3}{a:4}"},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(c.model, Parsed(c.text)) << testing::PrintToString(c.text);
}

TEST(IniParseTest, AgreesWithTheRulesOnRandomTexts) {
    const std::string letters = "[];#=\r\n \ta\0"s + "\xC8" + "[]=\n\r";
    std::mt19937 random(20240607);
    for (int round = 0; round < 60'000; ++round) {
        std::string text;
        for (std::size_t length = random() % 24; text.size() < length;)
            text += letters[random() % letters.size()];
        text += '\n';
        ASSERT_EQ(ReadSlowly(text), Parsed(text, true)) << testing::PrintToString(text);
    }
}

TEST_F(IniReloadTest, LastLineNeedsNoLineEnd) {
    const struct {
        const char* text;
        const char* model;
    } cases[] = {{"[s]\nk=v", "<s|>{k:v}"}, {"[s", "<s|>"}, {"k=v\r", "<|>{k:v}"}, {"\r\n", "<|>{:}"}};
    for (const auto& c : cases) {
        Load(c.text);
        EXPECT_EQ(c.model, ini.Model()) << testing::PrintToString(c.text);
    }
}

TEST_F(IniReloadTest, HappensWhenMoreThanASecondHasPassed) {
    clock.Pass(1000);
    EXPECT_EQ("a,", Keys(ini));
    clock.Pass(1);
    EXPECT_EQ("b,", Keys(ini));
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000); // counted from the reload
    EXPECT_EQ("b,", Keys(ini));
}

TEST_F(IniReloadTest, HappensAtOnceWhenAskedForOrForAnotherFile) {
    ini.SetNeedReload();
    EXPECT_EQ("b,", Keys(ini));
    folder.Write("g.ini", "[s]\nother=1\n");
    ini.SetINI(folder.Path("g.ini"), false, 0);
    EXPECT_EQ("<s|>{b:1}", ini.Model());
    EXPECT_EQ("other,", Keys(ini));
}

TEST_F(IniReloadTest, WaitsASecondAfterASave) {
    clock.Pass(900);
    EXPECT_TRUE(ini.WriteString("s", "k", "v", nullptr));
    folder.Write("f.ini", "[s]\nc=1\n");
    clock.Pass(1000);
    EXPECT_EQ("a,k,", Keys(ini));
    clock.Pass(1);
    EXPECT_EQ("c,", Keys(ini));
}

TEST_F(IniReloadTest, DoesNotHappenInDeferredMode) {
    ini.SetNeedReload();
    ini.SetWriteMode(false); // reads once more
    folder.Write("f.ini", "[s]\nc=1\n");
    ini.SetNeedReload();
    clock.Pass(100'000);
    EXPECT_EQ("b,", Keys(ini));
}

TEST_F(IniReloadTest, FailedOpenKeepsTheModelAndIsTriedAgainAtOnce) {
    clock.Pass(1001);
    for (int attempt = 0; attempt < 2; ++attempt) {
        const OtherHandle other(folder.Path("f.ini"), {.deny = zynplatform::accessRead});
        EXPECT_EQ("failed", Keys(ini));
        EXPECT_EQ("<s|>{a:1}", ini.Model());
        EXPECT_EQ(CStringA("Ошибка при открытии файла: "_cp1251) +
                      zynplatform::DescribeSystemError(zynplatform::errorSharingViolation),
                  ini.GetErrDescription());
    }
    EXPECT_EQ("b,", Keys(ini));
    EXPECT_TRUE(ini.GetErrDescription().IsEmpty());
}

TEST_F(IniReloadTest, UnreadableContentEmptiesTheModelAndLeavesTheEncoding) {
    const std::string beyond("\xFF\xFE\0\0\0\xF6\1\0\n\0\0\0", 12); // U+1F600 in UCS-4
    for (const std::string& content : {""s, beyond}) {
        Load("\xEF\xBB\xBF[s]\na=1\n");
        EXPECT_EQ("<s|>{a:1}", ini.Model());
        Load(content);
        EXPECT_EQ("", ini.Model());
        EXPECT_EQ(zynEncUTF8, ini.m_nEncoding);
    }
}

TEST_F(IniReloadTest, MissingFileChangesNothingAndIsNotMade) {
    clock.Pass(1001);
    std::filesystem::remove(folder.Native("f.ini"));
    ini.m_sErr = "kept";
    EXPECT_EQ("a,", Keys(ini));
    EXPECT_EQ("kept", ini.GetErrDescription());
    EXPECT_FALSE(folder.Has("f.ini"));
    folder.Write("f.ini", "[s]\nd=1\n"); // and it is still due
    EXPECT_EQ("d,", Keys(ini));
}

TEST_F(IniReloadTest, FindsOutWhetherTheFileIsThereAndWritable) {
    ini.SetINI(folder.Path("late.ini"), false, 0);
    EXPECT_FALSE(ini.isFileExist());
    folder.Write("late.ini", "[s]\n");
    {
        const OtherHandle other(folder.Path("late.ini"), {.deny = zynplatform::accessWrite});
        EXPECT_TRUE(ini.Parse());
    }
    EXPECT_TRUE(ini.isFileExist());
    EXPECT_TRUE(ini.m_bReadOnly);
    clock.Pass(1001);
    EXPECT_TRUE(ini.Parse());
    EXPECT_FALSE(ini.m_bReadOnly);
}
