// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynerror.h"

using Record = SzynErrorDescription;

static const Record full(27, "S", "May 22 2025", 1024, "D", 0, "F", "C", "A");

static std::string Print(const Record& record, bool russian, const char* extra = nullptr) {
    return record.Print(extra, russian).GetString();
}

TEST(ErrorRecord, PrintsBothForms) {
    EXPECT_EQ(Print(Record(), false), "Core:  -1; ");
    EXPECT_EQ(
        Print(full, false),
        "Core:  0;  Err:  27;\r\n\t\tFun: F\r\n\t\tDescr: D\r\n\t\tAdd: A\r\n\t\tCls: C\r\n\t\tSrc: S от May "
        "22 2025 str 1024"_cp1251);
    EXPECT_EQ(
        Print(full, true, "X%i"),
        "Модуль:  0;   27;\r\nФункция: F; X%i\r\nD\r\nA\r\nКласс: C\r\nИсходный код: S от May 22 2025 str "
        "1024"_cp1251);
    EXPECT_EQ(Print(Record(-1, nullptr, "date", -3, "", 7, nullptr, nullptr, nullptr), false, ""),
              "Core:  7; ;  str -3");
}

TEST(ErrorRecord, ProvidersReplaceOrPrecedeTheNumber) {
    const std::tuple<int, const char*, const char*, const char*> cases[] = {
        {1, "Transport; ", "транспорт; "_cp1251, "T5 5;"},
        {2, "CzynData; ", "CzynData; ", "D5"},
        {3, "ZynTransportClient; ", "ZynTransportClient; ", " 5;"},
        {4, "Server; ", "сервер; "_cp1251, "S5"},
        {5, "Server; ", "сервер; "_cp1251, " 5;"},
        {6, " 6; ", " 6; ", " 5;"}};
    for (const bool isDescribed : {false, true}) {
        for (const auto& [module, name, russianName, described] : cases) {
            const Record record(5, "", "", 0, "", module, "", "", "");
            const std::string code = isDescribed ? described : " 5;";
            EXPECT_EQ(Print(record, false), std::string("Core: ") + name + " Err: " + code);
            EXPECT_EQ(Print(record, true), std::string("Модуль: "_cp1251) + russianName + " " + code);
        }
        SetGetTransportErrorDescription([](int code) { return CStringA("T" + std::to_string(code)); });
        SetGetStepDataErrorDescription([](int code) { return CStringA("D" + std::to_string(code)); });
        SetGetServerErrorDescription([](int code) { return CStringA("S" + std::to_string(code)); });
    }
    SetGetTransportErrorDescription(nullptr);
    SetGetStepDataErrorDescription(nullptr);
    SetGetServerErrorDescription(nullptr);
}

TEST(ErrorRecord, StackIsCopiedDeeplyAndPrintedOnlyInTheTechnicalForm) {
    Record copy(1, "s2", "d", 1, "second", 0, "f2", "c2", "");
    copy.Set(Record(full, "s1", "d", 1, "first", "f1", nullptr), copy.m_strSrc, copy.m_strSrcDate, 2,
             copy.m_strDescr, copy.m_strFun, copy.m_strCls); // with texts of its own
    copy.Set(copy);
    const std::string first =
        "\r\n\tCore:  0; \r\n\t\tFun: f1\r\n\t\tDescr: first\r\n\t\tSrc: s1 от d str 1"_cp1251;
    const std::string second =
        "\r\n\tCore:  0; \r\n\t\tFun: f2\r\n\t\tDescr: second\r\n\t\tCls: c2\r\n\t\tSrc: s2 от d str 2"_cp1251;
    const std::string own = Print(full, false) + "\r\n\t\tErr stack: ";
    EXPECT_EQ(Print(copy, false), own + first + second + first + second);
    EXPECT_EQ(Print(copy, true), Print(full, true));

    Record nested;
    nested.m_aStack.Add(new Record(copy));
    EXPECT_EQ(Print(nested, false), "Core:  -1; \r\n\t\tErr stack: \r\n\t" + Print(copy, false));
}
