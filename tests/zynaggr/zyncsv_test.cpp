// SPDX-License-Identifier: MIT
#include "zynaggr/zyncsv.h"
#include "zynaggr/zyncsvwriter.h"

#include "support/csv_model.h"
#include "support/host.h"

TEST(Csv, SplitsAsTheRulesDoOneCharacterAtATime) {
    CStringArray fields;
    const auto split = [&](const std::string& text, char separator, bool escapes) {
        fields.Add("old");
        EXPECT_TRUE(CzynCSV::StrToArray(text.c_str(), fields, separator, escapes));
        return Texts(fields);
    };
    EXPECT_FALSE(CzynCSV::StrToArray(nullptr, fields, ',', false) || fields.GetSize() != 0);

    std::mt19937 random(42);
    const std::string alphabet = "\"\"\"\"\",,,,;;   \t\\nab";
    for (int i = 0; i < 100'000; ++i) {
        std::string text(random() % 18, ' ');
        for (char& c : text)
            c = alphabet[random() % alphabet.size()];
        const char separator = ",;,;,;\t\\ \""[i / 2 % 10];
        SCOPED_TRACE(text + "  separator " + separator);
        ASSERT_EQ(split(text, separator, i % 2 != 0), SplitPlainly(text, separator, i % 2 != 0));
    }
}

TEST(Csv, ReadsRecordsThatRunOverSeveralLines) {
    const TempFolder folder;
    const CStringA name = folder.Path("f");
    CzynCSV csv(';'), copy;
    CStringArray fields;
    EXPECT_FALSE(csv.OpenFile(nullptr) || csv.OpenFile(name) || csv.ReadString(fields));
    folder.Write("f", "\"a\r\nb\"\r\n\n\\n;z\0;\r;x\n\"1\n2\",\"3\n4\",5\r\n6,\"\n7,\n8"s);
    ASSERT_TRUE(csv.OpenFile(name));
    EXPECT_FALSE(CzynFile().Open(name, CFile::modeReadWrite | CFile::shareDenyNone, nullptr));
    for (int round = 0; round < 2; ++round) {
        copy = csv; // which reads on in the same file
        for (const Row& record : {Row{"a b "}, {""}, {"\\n", {"z\0", 2}, "\r", "x"}, {"1 2\",\"3 4,5 "}})
            EXPECT_TRUE(copy.ReadString(fields) && Texts(fields) == record) << record[0];
        EXPECT_FALSE(csv.ReadString(fields) || fields.GetSize() != 0); // the last record is still open
        csv.SeekToBegin();
    }
    csv.CloseFile();
    EXPECT_FALSE(copy.ReadString(fields));
}

TEST(Csv, FilesOfOtherProgramsAreReadAsTheyMeanThem) {
    const std::pair<std::string, std::vector<Row>> cases[] = {
        {"a,b,c\r\n1,\"\",\"\"\r\n2,3,\r\n", {{"a", "b", "c"}, {"1", "", ""}, {"2", "3", ""}}},
        {"a\n\"Once \nupon\r\n\na time\",5\r\n7", {{"a"}, {"Once \nupon\r\n\na time", "5"}, {"7"}}},
        {"\xEF\xBB\xBF\"a\",\"b\",\"c\"\n \xCA\xA4 , \"x\" \n\n",
         {{"a", "b", "c"}, {" \xCA\xA4 ", " \"x\" "}, {""}}},
        {"\"a\"b\"c,d\"e\n\"open,\nend\r", {{"ab\"c", "d\"e"}, {"open,\nend\r"}}},
        {"", {}},
    };
    const TempFolder folder;
    CzynCSV csv;
    csv.SetRFC4180(true);
    CStringArray fields;
    const auto rowsOf = [&](const char* file) {
        std::vector<Row> rows;
        EXPECT_TRUE(csv.OpenFile(folder.Path(file)));
        while (csv.ReadString(fields))
            rows.push_back(Texts(fields));
        csv.CloseFile();
        return rows;
    };
    for (const auto& [text, expected] : cases) {
        folder.Write("f", text);
        EXPECT_EQ(rowsOf("f"), expected) << text;
    }
    // What is written is read again.
    std::mt19937 random(7);
    const std::string alphabet = "\"\"\",;\r\n \xEF\xBB\xBF"
                                 "ab";
    std::vector<Row> rows(2000);
    CzynCSVWriter writer;
    ASSERT_TRUE(writer.CreateFile(folder.Path("w")));
    for (Row& row : rows) {
        row.resize(1 + random() % 4);
        fields.RemoveAll();
        for (std::string& field : row) {
            for (std::size_t size = random() % 6; field.size() < size;)
                field += alphabet[random() % alphabet.size()];
            fields.Add(CStringA(std::string_view(field)));
        }
        EXPECT_TRUE(writer.Write(fields));
        CStringArray again;
        CzynCSV::StrToArrayRFC4180(CzynCSVWriter::ArrayToStr(fields, ';').View(), again, ';');
        EXPECT_EQ(Texts(again), row);
    }
    EXPECT_TRUE(writer.CloseFile() && !writer.CloseFile());
    EXPECT_EQ(rowsOf("w"), rows);
}

TEST(Csv, ReadsATableAndKeepsItWhenTheColumnsDiffer) {
    const Host host(1049);
    const CStringA name = host.folder.Path("f");
    CzynCSV csv;
    std::vector<std::vector<CStringA>> rows(1);
    EXPECT_FALSE(csv.ReadFile(name, rows) || csv.ReadFile(nullptr, rows) || rows.size() != 1);
    const std::pair<const char*, decltype(rows)> cases[] = {
        {"", {}},
        {"a,b\n\"c\"\"\n,\",d\n", {{"a", "b"}, {"c\"", ",d "}}},
        {"1,2\n3\n4,5", {{"1", "2"}, {"3"}, {"4", "5"}}}};
    for (const auto& [text, expected] : cases) {
        host.folder.Write("f", text);
        EXPECT_EQ(csv.ReadFile(name, rows), expected.size() != 3);
        EXPECT_EQ(rows, expected);
        EXPECT_EQ(host.boxes.size(), expected.size() / 3);
        EXPECT_TRUE(CzynFile().Open(name, CFile::modeReadWrite | CFile::shareExclusive, nullptr));
    }
    EXPECT_STREQ(host.boxes.back().c_str(), "16 Количество колонок в строках неодинаково!"_cp1251);
}
