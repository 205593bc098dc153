// SPDX-License-Identifier: MIT
#include "support/host.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/memorystatus.h"

TEST(Helpers, NumbersAreDigitsBehindASignOrAPrefix) {
    const std::regex decimal("-[0-9]*|[0-9]+"), hex("-[0-9a-fA-F]*|(0x)?[0-9a-fA-F]+");
    for (int n = 0; n < 100'000; ++n) { // every text of up to five of these characters
        std::string text;
        for (int rest = n; rest > 0; rest /= 10)
            if (rest % 10 != 0) text += "-+ 01xXaG"[rest % 10 - 1];
        ASSERT_EQ(IsNumber(text), std::regex_match(text, decimal)) << text;
        ASSERT_EQ(IsNumber(text.c_str(), true), std::regex_match(text, hex)) << text;
    }
    EXPECT_FALSE(IsNumber(CStringA("1\0", 2), false));
    EXPECT_FALSE(IsNumber(static_cast<const char*>(nullptr), true));
    for (int i = 0; i < 256; ++i) {
        const char c = static_cast<char>(i);
        EXPECT_EQ(IsNumber(c, false), std::isdigit(i) != 0) << i;
        EXPECT_EQ(IsNumber(c, true), std::isxdigit(i) != 0) << i;
    }
}

TEST(Helpers, SplitDropsEmptyPiecesAndJoinEmptyElements) {
    const std::tuple<const char*, int, const char*> cases[] = {
        {"", 0, ""}, {",,", 0, ""}, {",a,,b,", 2, "a; b"}, {"a b", 1, "a b"}, {"a,b,c", 3, "a; b; c"}};
    CStringArray array;
    for (const auto& [text, pieces, joined] : cases) {
        CStringSplit(array, text, ',');
        EXPECT_EQ(array.GetSize(), pieces) << text;
        EXPECT_STREQ(CStringJoin(array, "; "), joined);
    }
    array.RemoveAll();
    for (const char* element : {"", "a,x", "", "b", ""})
        array.Add(element);
    EXPECT_STREQ(CStringJoin(array, ";"), "a,x;b");
    EXPECT_STREQ(CStringJoin(array, nullptr), "a,xb");
    CStringSplit(array, array[1], ',');
    EXPECT_STREQ(CStringJoin(array, "|"), "a|x");
}

TEST(Helpers, TemporaryFileNameIsTheFirstFreeOne) {
    const TempFolder parent;
    const fs::path folder = parent.Native("50%s %n"); // no part of the name is a format
    fs::create_directories(folder / "tmp%i2.txt");
    parent.Write("50%s %n/tmp%i1.txt", "x");
    CStringA name;
    for (const std::string& variable : {folder.string(), folder.string() + "/"}) {
        const Variable temp("TEMP", variable);
        zynGetTempPath(name);
        EXPECT_EQ(zynToNativePath(name), folder.string() + "/");
        name = "tmp%i";
        EXPECT_TRUE(zynGetTempFileName(name, "txt", name));
        EXPECT_EQ(zynToNativePath(name), folder.string() + "/tmp%i3.txt");
        EXPECT_FALSE(fs::exists(folder / "tmp%i3.txt"));
    }
    const Variable none("TMPDIR", {});
    EXPECT_TRUE(zynGetTempFileName("zyn_no_such_", "x", name));
    EXPECT_STREQ(name, "zyn_no_such_1.x");
}

TEST(Helpers, ModuleIsTheRunningExecutable) {
    const fs::path executable = fs::read_symlink("/proc/self/exe");
    CStringA name("old"), folder("old");
    ASSERT_TRUE(zynGetModuleFileName(name));
    EXPECT_EQ(zynToNativePath(name), executable.string());
    EXPECT_STREQ(zynFromNativePath(executable.c_str()), name);
    ASSERT_TRUE(zynGetModuleFilePath(folder));
    EXPECT_EQ(zynToNativePath(folder), executable.parent_path().string() + "/");
}

TEST(Helpers, NamesOfFilesAreCorrectedOfConnectionsAndDatabasesChecked) {
    CStringA file("a\nb\\c/d:e*f?g\"h<i>j|k.l\r'"), error("old");
    zynCorrectFileName(file, '_');
    EXPECT_STREQ(file, "a_b_c_d_e_f_g_h_i_j_k.l\r'");
    const std::tuple<bool, std::string_view, const char*, const char*> kinds[] = {
        {false, ":\\/=", "Имя подключения должно быть длиной два символа или больше!"_cp1251,
         "Имя подключения не должно включать символы ':', '\\', '/' и '='"_cp1251},
        {true, "\\/<>*?:|\"", "Имя БД должно быть длиной два символа или больше!"_cp1251,
         "Имя БД не должно включать символы '\\', '/', '<', '>', '*', '?', ':', '\"' и '|'!"_cp1251}};
    for (const auto& [database, forbidden, tooShort, message] : kinds) {
        for (const char* name : {"", "x", "="}) {
            EXPECT_FALSE(IsNameCorrect(name, error, database));
            EXPECT_STREQ(error, tooShort);
        }
        for (int c = 1; c < 256; ++c) {
            const bool correct = forbidden.find(static_cast<char>(c)) == std::string::npos;
            EXPECT_EQ(IsNameCorrect(CStringA("x") + static_cast<char>(c), error, database), correct) << c;
            EXPECT_STREQ(error, correct ? "" : message) << c;
        }
    }
}

TEST(Helpers, BufferSizeIsAShareOfTheScarcerMemory) {
    static zynplatform::MemoryStatus given;
    static bool works = true;
    zynplatform::SetMemoryStatusSource([](zynplatform::MemoryStatus& status) {
        status = given;
        return works;
    });
    constexpr std::uint64_t mib = 1 << 20;
    const std::tuple<std::uint64_t, std::uint64_t, unsigned, unsigned> cases[] = {
        {1000 * mib, 2000 * mib, 10, 100 * mib},
        {2000 * mib, 1000 * mib, 10, 100 * mib},
        {1000 * mib, 2000 * mib, 100, 400 * mib},
        {1000 * mib, 2000 * mib, 41, 400 * mib},
        {10240 * mib, 102400 * mib, 40, 0xFFF00000},
        {~0ULL, ~0ULL, 40, 0xFFF00000},
        {1000 * mib - 1, 2000 * mib, 10, 99 * mib}, // whole MiB before and after the percentage
        {mib, mib, 40, 0},
    };
    for (const auto& [physical, addresses, percent, bytes] : cases) {
        given = {physical, addresses};
        EXPECT_EQ(zynGetOptimalBufSize(percent), bytes) << physical << ' ' << percent;
    }
    works = false;
    EXPECT_EQ(zynGetOptimalBufSize(40), 16 * mib);
    zynplatform::SetMemoryStatusSource(nullptr);
}

TEST(Helpers, SpreadsheetCheckReportsWhatIsMissingWhenAsked) {
    Host host(0);
    const std::string file = host.folder.Native("registry");
    const Variable registry("ZYN_REGISTRY", file);
    for (const char* text :
         {"16 Не удалось получить clsid для Microsoft Excel. Попробуйте переустановить MS Excel."_cp1251,
          "16 Не удалось получить инициализировать подсистему OLE-COM!"_cp1251}) {
        EXPECT_FALSE(zynCheckExcel(false) || !host.boxes.empty() || zynCheckExcel(true));
        EXPECT_EQ(std::exchange(host.boxes, {}), std::vector{std::string(text)});
        fs::create_directories(file); // can't be read
    }
    fs::remove(file);

    host.folder.Write("registry", "[Software\\Classes\\Excel.Application\\CLSID]\n");
    const auto isInitialized = [] { return zynplatform::FindAutomationServer("Excel.Application"); };
    EXPECT_FALSE(isInitialized()); // after each failure
    EXPECT_TRUE(zynCheckExcel(true) && isInitialized());
    zynplatform::UninitializeAutomation();
    EXPECT_FALSE(isInitialized());
}
