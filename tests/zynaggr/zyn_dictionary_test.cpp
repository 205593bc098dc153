// SPDX-License-Identifier: MIT
#include "support/host.h"
#include "zynaggr/zyn_translate.h"
#include "zynhost/stringresources.h"

using testing::ElementsAre, testing::HasSubstr, testing::Not;

constexpr std::uint32_t german = 1031, englishUS = 1033, russian = 1049;

using Texts = std::vector<std::string>;

struct OpenTranslate : CzynTranslate {
    using CzynTranslate::LoadXml;
    using CzynTranslate::m_bShowStringId;
};

static std::string List(const std::string& lines, const std::string& encoding = "utf-8") {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n<strings>\n" + lines + "</strings>\n";
}

// Each test begins as a process does: nothing loaded.
struct Dictionary : testing::Test {
    Dictionary() { InitFor(2066, true); } // a locale without a culture: nothing to load
    ~Dictionary() override { InitFor(2066, true); }

    static bool InitFor(std::uint32_t lcid, bool silent) {
        zynplatform::SetThreadLocale(lcid);
        return CzynTranslate::Init(silent, nullptr);
    }
    bool InitWith(const std::string& sources, const std::string& translations, bool silent = false) {
        InitFor(2066, true);
        host.boxes.clear();
        host.folder.Write("translate#a#ru-RU.xml", sources);
        host.folder.Write("translate#a#de-DE.xml", translations);
        return InitFor(german, silent);
    }
    static std::string Translated(const char* text) { return CzynTranslate::Translate(text); }
    Texts Read(const std::string& bytes) {
        host.folder.Write("file", bytes);
        CStringArray texts;
        isRead = OpenTranslate::LoadXml(host.folder.Path("file"), texts, true);
        return texts.GetSize() > 0 ? Texts(&texts[0], &texts[0] + texts.GetSize()) : Texts();
    }

    bool isRead = false;
    Host host{german};
};

TEST(DictionaryText, EscapesAreDecodedInPlace) {
    const std::pair<std::string, std::string> cases[] = {
        {R"(\"\'\?\\|\a\b\f\n\r\t\v|\101\1012\7|\x9z\o101\Ox41\on)", "\"'?\\|\a\b\f\n\r\t\v|AA2\7|\tzAA\n"},
        {R"(\x41\X4a\x4A\x414\501|\oq\o|\q\8\xg\x|end\)", R"(AJJA4A|oqo|\q\8\xg\x|end\)"}, // no ninth bit
        {R"(a\0b)", "a"}};
    for (auto [escaped, text] : cases) {
        EXPECT_EQ(CzynTranslate::ConvertSpecSymbols(escaped.data()), escaped.data());
        EXPECT_EQ(escaped.c_str(), text);
    }
    EXPECT_EQ(CzynTranslate::ConvertSpecSymbols(nullptr), nullptr);
    EXPECT_FALSE(CzynTranslate::Init(true, nullptr)); // no application object: nothing changes
}

TEST_F(Dictionary, FileIsReadLineByLine) {
    const std::string lines = "junk <s>one</s> <s>not this</s>\r\n"
                              "<s id=\"7\">&lt;&amp;quot;&amp;lt;&apos;&gt;\\n\\\"</s>\r\n"
                              "<s/>\n<s>a/>b</s>\n<s no end\n</strings>\n"
                              "<s>spread \r\n over\r\n lines</s><s>nor this</s>\n"
                              "<s></s>\n"
                              "<s>\xD0\x81</s>\n"
                              "<s>never ends\nlast line";
    for (const std::string encoding : {"utf-8", "UTF-8", "x"})
        EXPECT_EQ(Read(List(lines, encoding)), (Texts{"one", "<\"<'>\n\"", "spread  over lines", "",
                                                      encoding == "x" ? "\xD0\x81" : "\xA8"}));
    EXPECT_EQ(Read("encoding=\"utf-8\"\n<strings>\n<s>\xD0\x81</s>"), Texts{"\xD0\x81"}); // at the very start
    EXPECT_TRUE(isRead);
    for (const char* bytes : {"", "<strings>", "<strings>\n<string>\n<s>a</s>\n"})
        EXPECT_TRUE(Read(bytes).empty() && !isRead) << bytes;

    CStringArray none;
    EXPECT_FALSE(OpenTranslate::LoadXml("missing", none, true));
    EXPECT_FALSE(OpenTranslate::LoadXml("missing", none, false) || none.GetSize() != 0);
    EXPECT_THAT(host.boxes, ElementsAre("16 Error open file \"missing\"\n\n Localization impossible! Using "
                                        "Russian interface!"));
}

TEST_F(Dictionary, TextsAreMatchedById) {
    EXPECT_TRUE(InitWith(List("<s>A</s>\n"                             // 1
                              "<s x=\"1\" id=\"5\" id=\"6\">B</s>\n"   // the first value
                              "<s>C</s>\n"                             // 2
                              "<s id=\"5\">D</s>\n"                    // taken: 3
                              "<s id=12>E</s>\n"                       // no quotes, so no number: 4
                              "<s x=\"1\" my.id=\"\\x37rest\">F</s>\n" // 7: a name is letters and digits
                              "<s id = \" -3 \" y>G</s>\n"             // -3
                              "<s ID=\"9\">H</s>\n<s =\"1\">I</s>\n"), // 6, 8
                         List("<s id=\"4\">e</s>\n<s id=\"7\">f</s>\n<s id=\"-3\">g</s>\n<s>a</s>\n"
                              "<s>c</s>\n<s>d</s>\n<s>b</s>\n<s>h</s>\n<s>i</s>\n")));
    std::string all;
    for (const char* text : {"A", "B", "C", "D", "E", "F", "G", "H", "I", "a"})
        all += Translated(text);
    EXPECT_EQ(all, "abcdefghia");
    EXPECT_TRUE(CzynTranslate::GetGurLocale() == german && host.boxes.empty());

    // Loaded already: no file is read again.
    CzynTranslate::SetShouldTranslate(false);
    fs::remove(host.folder.Native("translate#a#de-DE.xml"));
    EXPECT_TRUE(CzynTranslate::Init(false, nullptr) && Translated("A") == "a");
}

TEST_F(Dictionary, WhatIsMissingOrDoubtfulIsReported) {
    const std::string heading = "16 Could not find translation for strings:\r\n";
    std::string sources = "<s>0</s>\n<s>1</s>\n<s>2</s>\n<s>3</s>\n<s>4</s>\n";
    std::string box = heading + "[#1] 0\r\n[#2] 1\r\n[#3] 2\r\n[#4] 3\r\n[#5] 4\r\n";
    for (int count = 5; count < 7; ++count, sources += "<s>5</s>\n", box += "and other") {
        EXPECT_FALSE(InitWith(List(sources), List("<s id=\"99\">x</s>\n")));
        EXPECT_THAT(host.boxes,
                    ElementsAre(box, "16 Dictionary not found!\nLocalization impossible!\nRussian "
                                     "interface will be used!"));
        EXPECT_FALSE(CzynTranslate::GetGurLocale() != 0 || CzynTranslate::IsNeedTranslate());
        EXPECT_FALSE(CzynTranslate::Init(true, nullptr)); // tries again
        EXPECT_EQ(host.boxes.size(), 2u);
    }

    // Two entries of one text: the translation met first stays.
    std::string shown;
    host.whileShown = [&] { // what was merged is there, and what is added stays
        shown = Translated("A") + Translated("C");
        CzynTranslate::AddStringTranslationPair("C", "c");
    };
    for (const bool showIds : {true, false}) {
        OpenTranslate::m_bShowStringId = showIds;
        EXPECT_TRUE(InitWith(List("<s>A</s>\n<s>A</s>\n<s>A</s>\n<s>B</s>\n<s>C</s>\n"),
                             List("<s>a</s>\n<s>a</s>\n<s>z</s>\n<s>b</s>\n")));
        EXPECT_EQ(Translated("A") + Translated("B") + Translated("C"), showIds ? "[1] a[4] bc" : "abc");
        EXPECT_EQ(shown, showIds ? "[1] aC" : "aC");
        EXPECT_THAT(host.boxes, ElementsAre(heading + "[#5] C\r\n" +
                                            "Found different translation variants in different " +
                                            "files for strings:\r\n\"A\"\n" + (showIds ? "\"A\"\n" : "")));
    }
}

TEST_F(Dictionary, FilesOfOneRunShareTheirIds) {
    // Which of the two comes first is the file system's choice; the outcome is the same.
    host.folder.Write("translate#b#ru-RU.xml", List("<s id=\"1\">b1</s>\n<s id=\"2\">b2</s>\n"));
    host.folder.Write("translate#b#de-DE.xml", List("<s id=\"1\">one</s>\n<s id=\"2\">two</s>\n"));
    host.folder.Write("translate#c#ru-RU.xml", List("<s>untranslated</s>\n"));
    host.folder.Write("translate#d#ru-RU.xml", "no dictionary\n");
    EXPECT_TRUE(InitWith(List("<s id=\"1\">a1</s>\n<s id=\"2\">a2</s>\n"),
                         List("<s id=\"1\">one</s>\n<s id=\"2\">two</s>\n")));
    EXPECT_EQ(Translated("a1") + Translated("b1") + Translated("a2") + Translated("b2"), "oneonetwotwo");
    EXPECT_THAT(host.boxes, ElementsAre("48 Could not find translation data file!\n\n" +
                                        std::string(host.folder.Path("translate#c#de-DE.xml"))));
    // Whatever was met first stays, also when a box was shown since.
    fs::remove(host.folder.Native("translate#c#ru-RU.xml"));
    host.folder.Write("translate#b#ru-RU.xml", List("<s id=\"1\">S</s>\n<s id=\"8\">x</s>\n"));
    host.folder.Write("translate#b#de-DE.xml", List("<s id=\"1\">t</s>\n"));
    EXPECT_TRUE(InitWith(List("<s id=\"1\">S</s>\n<s id=\"9\">y</s>\n"), List("<s id=\"1\">s</s>\n")));
    EXPECT_THAT(host.boxes, ElementsAre(Not(HasSubstr("\"S\"")), HasSubstr("\"S\"")));

    std::set<int> languages{1};
    EXPECT_EQ(CzynTranslate::GetTranslateFiles(host.folder.Path(), languages), 2);
    EXPECT_THAT(languages, ElementsAre(76, 137));
    for (const char* name : {"translate#en-US.XML", "translate#x#En-us.xml", "other#fr-FR.xml"})
        host.folder.Write(name, "");
    EXPECT_EQ(CzynTranslate::GetTranslateFiles(host.folder.Native().c_str(), languages), 3);
    EXPECT_FALSE(CzynTranslate::GetTranslateFiles(nullptr, languages) != 0 || !languages.empty());
}

TEST_F(Dictionary, LocaleDecidesWhichFileIsRead) {
    const std::tuple<std::uint32_t, std::string, std::string, std::uint32_t> cases[] = {
        {9, "en-US", "A", 0},           {9, "en", "en", 9},    {englishUS, "", "en-US", englishUS},
        {1053, "sv-SE", "sv-SE", 1053}, {russian, "", "A", 0}, {1036, "", "A", 0}};
    host.folder.Write("translate#ru-RU.xml", List("<s>A</s>\n"));
    for (const auto& [lcid, file, translated, current] : cases) {
        if (!file.empty()) host.folder.Write("translate#" + file + ".xml", List("<s>" + file + "</s>\n"));
        EXPECT_EQ(InitFor(lcid, true), current != 0 || lcid == russian) << lcid;
        EXPECT_EQ(Translated("A"), translated);
        EXPECT_EQ(CzynTranslate::GetGurLocale(), current) << lcid;
    }
    static const zynStringResource englishEdition[] = {{3001, "ENGLISH"}, {0, nullptr}};
    static const zynStringResource russianEdition[] = {{3001, "Русский"_cp1251}, {0, nullptr}};
    zynSetStringResources(zynLibraryModule(), englishEdition);
    EXPECT_TRUE(InitFor(russian, true) && Translated("A") == "en-US");
    EXPECT_EQ(CzynTranslate::GetGurLocale(), englishUS);
    zynSetStringResources(zynLibraryModule(), russianEdition);
}

// Whatever is cut off, the entries that are left are whole; whatever is damaged, reading ends well.
TEST_F(Dictionary, DamagedFilesAreReadAsFarAsTheyGo) {
    const std::string whole =
        List("<s id=\"1\">\xD0\xAF &amp;\\x41</s>\n<s id = \"2\" x>two\n\\101\\o</s>\n");
    const Texts texts = {"\xDF &A", "twoAo"};
    EXPECT_EQ(Read(whole), texts);
    for (std::size_t i = 0; i < whole.size(); ++i) {
        for (const char flip : {'\x20', '\xFF'}) {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ flip);
            InitWith(damaged, damaged, true);
            ASSERT_LE(Read(damaged).size(), 2u) << i;
        }
        const std::string cut = whole.substr(0, i);
        InitWith(cut, cut, true);
        const Texts read = Read(cut);
        ASSERT_TRUE(read.empty() || read == Texts{texts[0]} || read == texts) << i;
    }
}
