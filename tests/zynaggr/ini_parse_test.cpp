#include "support/ini_model.h"
#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/file.h"
#include "zynplatform/syserror.h"

#include <gtest/gtest.h>
#include <random>
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
class SlowReader {
public:
    struct Line {
        std::string key, value;
        bool emptyKey = false;
    };
    struct Section {
        std::string name, tail;
        std::vector<Line> lines;
        int insertPos = 0;
        int flags = 0;
    };

    std::string Read(const std::string& text) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const char before = i > 0 ? text[i - 1] : 'x';
            const char after = i + 1 < text.size() ? text[i + 1] : 'x';
            Take(text[i], before, after);
        }
        std::string model;
        for (const Section& s : m_sections) {
            model += "<" + s.name + "|" + s.tail + "|" + std::to_string(s.insertPos) + "|" +
                     std::to_string(s.flags) + ">";
            for (const Line& line : s.lines)
                model += "{" + std::string(line.emptyKey ? "=" : "") + line.key + ":" + line.value + "}";
        }
        return model;
    }

private:
    void Take(char ch, char before, char after) {
        if (ch == ';' || ch == '#') {
            if (!m_value && !m_header) m_comment = true;
            m_token += ch;
        } else if (ch == '[') {
            if (m_value || m_comment) {
                m_token += ch;
                return;
            }
            if (m_hasSection && !m_header) m_hasSection = false;
            m_header = true;
            if (!m_hasSection) {
                Create("");
                m_sections.back().flags |= 1;
            } else {
                m_token += ch;
            }
        } else if (ch == ']') {
            if (m_value || m_comment) {
                m_token += ch;
                return;
            }
            if (m_hasSection && !m_header) m_hasSection = false;
            m_header = true;
            if (!m_hasSection) Create(m_token);
            m_sections.back().flags |= 2;
            m_sections.back().name = m_token;
            m_token = "";
        } else if (ch == '=') {
            if (m_header || m_comment || m_value) {
                m_token += ch;
                return;
            }
            m_value = true;
            AddLine(m_token);
            m_sections.back().lines.back().emptyKey = m_token == "";
            m_hasLine = true;
            m_token = "";
        } else if (ch == '\r' && (after == '\n' || before == '\n')) {
        } else if (ch == '\r' || ch == '\n') {
            EndLine();
        } else {
            m_token += ch;
        }
    }

    void EndLine() {
        m_value = m_comment = false;
        if (m_header) {
            Section& s = m_sections.back();
            if (s.flags & 2)
                s.tail = m_token;
            else
                s.name = m_token;
        } else {
            if (!m_hasLine) AddLine("");
            while (m_token != "" && IsBlank(m_token.back()))
                m_token.pop_back();
            while (m_token != "" && IsBlank(m_token.front()))
                m_token.erase(0, 1);
            m_sections.back().lines.back().value = m_token;
            m_hasLine = false;
        }
        m_token = "";
        m_header = false;
    }

    void Create(const std::string& name) {
        m_sections.push_back({name, "", {}});
        m_hasSection = true;
    }
    void AddLine(const std::string& key) {
        if (!m_hasSection) Create("");
        Section& s = m_sections.back();
        s.lines.push_back({key, ""});
        if (key != "") s.insertPos = static_cast<int>(s.lines.size());
    }
    static bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    std::vector<Section> m_sections;
    bool m_hasSection = false, m_hasLine = false, m_header = false, m_value = false, m_comment = false;
    std::string m_token;
};

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

struct IniReloadTest : testing::Test {
    IniReloadTest() {
        folder.Write("f.ini", "[s]\na=1\n");
        ini.SetINI(folder.Path("f.ini"), false, 0);
        EXPECT_EQ("a,", Keys(ini));
        folder.Write("f.ini", "[s]\nb=1\n");
    }
    StandingClock clock;
    TempFolder folder;
    OpenIni ini;
};

} // namespace

TEST(IniParseTest, EveryKindOfLineIsKept) {
    const struct {
        const char* text;
        const char* model;
    } cases[] = {
        {"[s]\nkey=value\n", "<s|>{key:value}"},
        {"[ s ] ; tail \nk=v\n", "< s | ; tail >{k:v}"},
        {" [s]\n", "< s|>"},
        {"before[s]after\n", "<befores|after>"},
        {"[name without end \n", "<name without end |>"},
        {"name] tail\n", "<name| tail>"},
        {"[a]b]\n", "<b|>"},
        {"[a[b]\n", "<a[b|>"},
        {"[a=b;c#d]e=f\n", "<a=b;c#d|e=f>"},
        {"[]\n", "<|>"},
        {" key = value \n", "<|>{ key :value}"},
        {"k=\t a;b#c=[d] \t\n", "<|>{k:a;b#c=[d]}"},
        {"= v\n", "<|>{=:v}"},
        {"=\n", "<|>{=:}"},
        {"==\n", "<|>{=:=}"},
        {" ; [a]=b \n", "<|>{:; [a]=b}"},
        {"key # not = a pair\n", "<|>{:key # not = a pair}"},
        {" free text \n", "<|>{:free text}"},
        {"\n \n", "<|>{:}{:}"},
        {"a=1\n[s]\na=2\n[s]\na=3\na=4\n", "<|>{a:1}<s|>{a:2}<s|>{a:3}{a:4}"},
        {"a=1\r\nb=2\rc=3\nd=4\n\re=5\n", "<|>{a:1}{b:2}{c:3}{d:4}{e:5}"},
        {"a\r\rb\n", "<|>{:a}{:}{:b}"},
        {"a\n\r\nb\n", "<|>{:a}{:}{:b}"},
        {"[a]\n[b\n]c\n", "<a|><b|><|c>"},
        {"x=1\n]\n", "<|>{x:1}<|>"},
        {"", ""},
    };
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
        ASSERT_EQ(SlowReader().Read(text), Parsed(text, true)) << testing::PrintToString(text);
    }
}

TEST(IniParseTest, LastLineNeedsNoLineEnd) {
    const TempFolder folder;
    const struct {
        const char* text;
        const char* model;
    } cases[] = {
        {"[s]\nk=v", "<s|>{k:v}"},
        {"[s", "<s|>"},
        {"k=v\r", "<|>{k:v}"},
        {"\r\n", "<|>{:}"},
    };
    for (const auto& c : cases) {
        folder.Write("f.ini", c.text);
        OpenIni ini(folder.Path("f.ini"));
        EXPECT_TRUE(ini.Parse());
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
    zynplatform::FileHandle other;
    ASSERT_EQ(0u, zynplatform::OpenFile(folder.Path("f.ini"), {.deny = zynplatform::accessRead}, other));
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ("failed", Keys(ini));
        EXPECT_EQ("<s|>{a:1}", ini.Model());
        EXPECT_EQ(CStringA("Ошибка при открытии файла: "_cp1251) +
                      zynplatform::DescribeSystemError(zynplatform::errorSharingViolation),
                  ini.GetErrDescription());
    }
    zynplatform::CloseFile(other);
    EXPECT_EQ("b,", Keys(ini));
    EXPECT_TRUE(ini.GetErrDescription().IsEmpty());
}

TEST_F(IniReloadTest, UnreadableContentEmptiesTheModelAndLeavesTheEncoding) {
    const std::string beyond("\xFF\xFE\0\0\0\xF6\1\0\n\0\0\0", 12); // U+1F600 in UCS-4
    for (const std::string& content : {""s, beyond}) {
        folder.Write("f.ini", "\xEF\xBB\xBF[s]\na=1\n");
        ini.SetNeedReload();
        EXPECT_EQ("a,", Keys(ini));
        folder.Write("f.ini", content);
        ini.SetNeedReload();
        EXPECT_TRUE(ini.Parse());
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
    OpenIni late;
    late.SetINI(folder.Path("late.ini"), false, 0);
    EXPECT_FALSE(late.isFileExist());
    folder.Write("late.ini", "[s]\n");
    zynplatform::FileHandle other;
    ASSERT_EQ(0u, zynplatform::OpenFile(folder.Path("late.ini"), {.deny = zynplatform::accessWrite}, other));
    EXPECT_TRUE(late.Parse());
    EXPECT_TRUE(late.isFileExist());
    EXPECT_TRUE(late.m_bReadOnly);
    zynplatform::CloseFile(other);
    clock.Pass(1001);
    EXPECT_TRUE(late.Parse());
    EXPECT_FALSE(late.m_bReadOnly);
}
