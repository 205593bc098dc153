#include "support/host.h"
#include "zynaggr/zyn_translate.h"
#include "zynhost/stringresources.h"
#include "zynplatform/cp1251.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace zynplatform::literals;
using testing::ElementsAre;

namespace {

struct OpenTranslate : CzynTranslate {
    using CzynTranslate::LoadXml;
    using CzynTranslate::m_bShowStringId;
};

constexpr std::uint32_t german = 1031, englishUS = 1033, russian = 1049;

std::string List(const std::string& lines, const std::string& encoding = "utf-8") {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n<strings>\n" + lines + "</strings>\n";
}

// Each test begins as a process does: nothing loaded.
class Dictionary : public testing::Test {
protected:
    Dictionary() { Forget(); }
    ~Dictionary() override {
        Forget();
        OpenTranslate::m_bShowStringId = false;
    }
    static void Forget() {
        Host empty(2066); // a locale without a culture: nothing to load
        CzynTranslate::Init(true, nullptr);
    }
    static std::string Translated(const char* text) { return CzynTranslate::Translate(text); }
};

} // namespace

TEST(DictionaryText, EscapesAreDecodedInPlace) {
    const struct {
        const char *escaped, *text;
    } cases[] = {{R"(\"\'\?\\|\a\b\f\n\r\t\v)", "\"'?\\|\a\b\f\n\r\t\v"},
                 {R"(\101\1012\7)", "AA2\7"},
                 {R"(\x41\X4a\x4A\x414)", "AJJA4"},
                 {R"(\501)", "A"}, // bits above the eighth are dropped
                 {R"(\x9z)", "\tz"},
                 {R"(\o101\Ox41\on)", "AA\n"},
                 {R"(\oq\o)", "oqo"},
                 {R"(\q\8\xg\x)", R"(\q\8\xg\x)"},
                 {"end\\", "end\\"},
                 {R"(a\0b)", "a"}};
    for (const auto& [escaped, text] : cases) {
        std::string buffer = escaped;
        EXPECT_EQ(CzynTranslate::ConvertSpecSymbols(buffer.data()), buffer.data());
        EXPECT_STREQ(buffer.c_str(), text) << escaped;
    }
    EXPECT_EQ(CzynTranslate::ConvertSpecSymbols(nullptr), nullptr);
}

TEST_F(Dictionary, FileIsReadLineByLine) {
    Host host(german);
    const std::string lines = "junk <s>one</s> <s>not this</s>\r\n"
                              "<s id=\"7\">&lt;&amp;quot;&amp;lt;&apos;&gt;\\n\\\"</s>\r\n"
                              "<s/>\n<s>a/>b</s>\n<s no end\n</strings>\n"
                              "<s>spread \r\n over\r\n lines</s><s>nor this</s>\n"
                              "<s></s>\n"
                              "<s>\xD0\x81</s>\n"
                              "<s>never ends\nlast line";
    const struct {
        std::string bytes;
        std::vector<std::string> texts;
    } cases[] = {
        {List(lines), {"one", "<\"<'>\n\"", "spread  over lines", "", "\xA8"}},
        {List(lines, "UTF-8"), {"one", "<\"<'>\n\"", "spread  over lines", "", "\xA8"}},
        {List(lines, "x"), {"one", "<\"<'>\n\"", "spread  over lines", "", "\xD0\x81"}},
        {"encoding=\"utf-8\"\n<strings>\n<s>\xD0\x81</s>", {"\xD0\x81"}}, // not at the very start
    };
    for (const auto& [bytes, texts] : cases) {
        host.folder.Write("file", bytes);
        CStringArray read;
        EXPECT_TRUE(OpenTranslate::LoadXml(host.folder.Path("file"), read, false));
        std::vector<std::string> got;
        for (int i = 0; i < read.GetSize(); ++i)
            got.emplace_back(read[i]);
        EXPECT_EQ(got, texts);
    }
    CStringArray none;
    for (const char* bytes : {"", "<strings>", "<strings>\n<string>\n<s>a</s>\n"}) {
        host.folder.Write("file", bytes);
        EXPECT_FALSE(OpenTranslate::LoadXml(host.folder.Path("file"), none, false)) << bytes;
    }
    EXPECT_FALSE(OpenTranslate::LoadXml("missing", none, true));
    EXPECT_FALSE(OpenTranslate::LoadXml("missing", none, false));
    EXPECT_EQ(none.GetSize(), 0);
    EXPECT_THAT(host.boxes, ElementsAre("16 Error open file \"missing\"\n\n Localization impossible! Using "
                                        "Russian interface!"));
}

TEST_F(Dictionary, TextsAreMatchedById) {
    Host host(german);
    host.folder.Write("translate#a#ru-RU.xml",
                      List("<s>A</s>\n"                              // 1
                           "<s x=\"1\" id=\"5\" id=\"6\">B</s>\n"    // the first value
                           "<s>C</s>\n"                              // 2
                           "<s id=\"5\">D</s>\n"                     // taken: 3
                           "<s id=12>E</s>\n"                        // no quotes, so no number: 4
                           "<s x=\"1\" my.id=\"\\x37rest\">F</s>\n"  // 7: a name is letters and digits
                           "<s id = \" -3 \" y>G</s>\n"              // -3
                           "<s ID=\"9\">H</s>\n<s =\"1\">I</s>\n")); // 6, 8
    host.folder.Write("translate#a#de-DE.xml",
                      List("<s id=\"4\">e</s>\n<s id=\"7\">f</s>\n<s id=\"-3\">g</s>\n<s>a</s>\n<s>c</s>\n"
                           "<s>d</s>\n<s>b</s>\n<s>h</s>\n<s>i</s>\n"));
    EXPECT_TRUE(CzynTranslate::Init(false, nullptr));
    EXPECT_EQ(CzynTranslate::GetGurLocale(), german);
    EXPECT_TRUE(CzynTranslate::IsNeedTranslate());
    std::string all;
    for (const char* text : {"A", "B", "C", "D", "E", "F", "G", "H", "I", "a"})
        all += Translated(text);
    EXPECT_EQ(all, "abcdefghia");
    EXPECT_TRUE(host.boxes.empty());

    // Loaded already: no file is read again.
    CzynTranslate::SetShouldTranslate(false);
    std::filesystem::remove(host.folder.Native("translate#a#de-DE.xml"));
    EXPECT_TRUE(CzynTranslate::Init(false, nullptr));
    EXPECT_EQ(Translated("A"), "a");
}

TEST_F(Dictionary, WhatIsMissingOrDoubtfulIsReported) {
    const auto entries = [](int count, const char* text) {
        std::string lines;
        for (int i = 0; i < count; ++i)
            lines += "<s>" + (text + std::to_string(i)) + "</s>\n";
        return List(lines);
    };
    const std::string heading = "16 Could not find translation for strings:\r\n";
    const std::string five = "[#1] A0\r\n[#2] A1\r\n[#3] A2\r\n[#4] A3\r\n[#5] A4\r\n";
    const struct {
        int count;
        std::string box;
    } cases[] = {{5, heading + five}, {6, heading + five + "and other"}};
    for (const auto& [count, box] : cases) {
        Forget();
        Host host(german);
        host.folder.Write("translate#a#ru-RU.xml", entries(count, "A"));
        host.folder.Write("translate#a#de-DE.xml", List("<s id=\"99\">x</s>\n"));
        EXPECT_FALSE(CzynTranslate::Init(false, nullptr));
        EXPECT_THAT(host.boxes,
                    ElementsAre(box, "16 Dictionary not found!\nLocalization impossible!\nRussian "
                                     "interface will be used!"));
        EXPECT_EQ(CzynTranslate::GetGurLocale(), 0u);
        EXPECT_FALSE(CzynTranslate::IsNeedTranslate());
        EXPECT_FALSE(CzynTranslate::Init(true, nullptr)); // tries again
        EXPECT_EQ(host.boxes.size(), 2u);
    }

    // Two entries of one text: the translation met first stays.
    for (const bool showIds : {false, true}) {
        Forget();
        OpenTranslate::m_bShowStringId = showIds;
        Host host(german);
        host.folder.Write("translate#a#ru-RU.xml",
                          List("<s>A</s>\n<s>A</s>\n<s>A</s>\n<s>B</s>\n<s>C</s>\n"));
        host.folder.Write("translate#a#de-DE.xml", List("<s>a</s>\n<s>a</s>\n<s>z</s>\n<s>b</s>\n"));
        EXPECT_TRUE(CzynTranslate::Init(false, nullptr));
        EXPECT_EQ(Translated("A"), showIds ? "[1] a" : "a");
        EXPECT_EQ(Translated("B"), showIds ? "[4] b" : "b");
        EXPECT_THAT(host.boxes, ElementsAre(heading + "[#5] C\r\n" +
                                            "Found different translation variants in different " +
                                            "files for strings:\r\n\"A\"\n" + (showIds ? "\"A\"\n" : "")));
    }
}

TEST_F(Dictionary, FilesOfOneRunShareTheirIds) {
    Host host(german);
    // Which of the two comes first is the file system's choice; the outcome is the same.
    for (const std::string name : {"a", "b"}) {
        host.folder.Write("translate#" + name + "#ru-RU.xml",
                          List("<s id=\"1\">" + name + "1</s>\n<s id=\"2\">" + name + "2</s>\n"));
        host.folder.Write("translate#" + name + "#de-DE.xml",
                          List("<s id=\"1\">one</s>\n<s id=\"2\">two</s>\n"));
    }
    host.folder.Write("translate#c#ru-RU.xml", List("<s>untranslated</s>\n"));
    host.folder.Write("translate#d#ru-RU.xml", "no dictionary\n");
    EXPECT_TRUE(CzynTranslate::Init(false, nullptr));
    for (const char* text : {"a1", "b1", "a2", "b2"})
        EXPECT_EQ(Translated(text), text[1] == '1' ? "one" : "two");
    EXPECT_EQ(host.boxes.size(), 1u);
    EXPECT_EQ(host.boxes[0], "48 Could not find translation data file!\n\n" +
                                 std::string(host.folder.Path("translate#c#de-DE.xml")));
    std::set<int> languages{1};
    EXPECT_EQ(CzynTranslate::GetTranslateFiles(host.folder.Path(), languages), 2);
    EXPECT_THAT(languages, ElementsAre(76, 137));
    for (const char* name : {"translate#en-US.XML", "translate#x#En-us.xml", "other#fr-FR.xml"})
        host.folder.Write(name, "");
    EXPECT_EQ(CzynTranslate::GetTranslateFiles(host.folder.Native().c_str(), languages), 3);
    EXPECT_EQ(CzynTranslate::GetTranslateFiles(nullptr, languages), 0);
    EXPECT_TRUE(languages.empty());
}

TEST_F(Dictionary, LocaleDecidesWhichFileIsRead) {
    EXPECT_FALSE(CzynTranslate::Init(true, nullptr)); // no application object: nothing changes
    EXPECT_EQ(CzynTranslate::GetGurLocale(), 0u);

    Host host(9);
    host.folder.Write("translate#ru-RU.xml", List("<s>A</s>\n"));
    host.folder.Write("translate#en-US.xml", List("<s>us</s>\n"));
    host.folder.Write("translate#sv-SE.xml", List("<s>sv</s>\n"));
    const auto translated = [](std::uint32_t lcid) {
        zynplatform::SetThreadLocale(lcid);
        const bool done = CzynTranslate::Init(true, nullptr);
        return std::to_string(done) + Translated("A");
    };
    EXPECT_EQ(translated(9), "0A");
    host.folder.Write("translate#en.xml", List("<s>en</s>\n"));
    EXPECT_EQ(translated(9), "1en");
    EXPECT_EQ(translated(englishUS), "1us");
    EXPECT_EQ(translated(1053), "1sv");
    EXPECT_EQ(translated(russian), "1A");
    EXPECT_EQ(CzynTranslate::GetGurLocale(), 0u);
    EXPECT_EQ(translated(1036), "0A");

    static const zynStringResource englishEdition[] = {{3001, "ENGLISH"}, {0, nullptr}};
    static const zynStringResource russianEdition[] = {{3001, "Русский"_cp1251}, {0, nullptr}};
    zynSetStringResources(zynLibraryModule(), englishEdition);
    EXPECT_EQ(translated(russian), "1us");
    EXPECT_EQ(CzynTranslate::GetGurLocale(), englishUS);
    zynSetStringResources(zynLibraryModule(), russianEdition);
}

// Whatever is cut off, the entries that are left are whole; whatever is damaged, reading ends well.
TEST_F(Dictionary, DamagedFilesAreReadAsFarAsTheyGo) {
    const std::string whole =
        List("<s id=\"1\">\xD0\xAF &amp;\\x41</s>\n<s id = \"2\" x>two\n\\101\\o</s>\n");
    const std::vector<std::string> texts = {"\xDF &A", "twoAo"};
    Host host(german);
    const auto read = [&](const std::string& bytes) {
        host.folder.Write("translate#ru-RU.xml", bytes);
        host.folder.Write("translate#de-DE.xml", bytes);
        zynplatform::SetThreadLocale(german);
        CzynTranslate::Init(true, nullptr);
        zynplatform::SetThreadLocale(russian);
        CzynTranslate::Init(true, nullptr);
        CStringArray array;
        OpenTranslate::LoadXml(host.folder.Path("translate#ru-RU.xml"), array, true);
        return array;
    };
    for (std::size_t i = 0; i <= whole.size(); ++i) {
        const CStringArray cut = read(whole.substr(0, i));
        ASSERT_LE(cut.GetSize(), 2);
        ASSERT_TRUE(i < whole.size() || cut.GetSize() == 2);
        for (int k = 0; k < cut.GetSize(); ++k)
            ASSERT_EQ(cut[k], texts[static_cast<std::size_t>(k)].c_str()) << i;
    }
    for (const char flip : {'\x20', '\xFF'})
        for (std::size_t i = 0; i < whole.size(); ++i) {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ flip);
            ASSERT_LE(read(damaged).GetSize(), 2) << i;
        }
}
