#include "zynaggr/zynhelpers.h"

#include "zynhost/application.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/memorystatus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace zynplatform::literals;

namespace {

// The functions that look at variables and files, with both of the test's own.
class HelpersInFolder : public testing::Test {
protected:
    HelpersInFolder() { fs::create_directories(m_folder); }
    ~HelpersInFolder() override {
        for (const char* name : {"TEMP", "TMPDIR", "ZYN_REGISTRY"})
            unsetenv(name);
        fs::remove_all(m_folder);
    }

    fs::path m_folder = fs::temp_directory_path() / ("zyn_helpers_test" + std::to_string(getpid()));
};

class RecordingApplication : public CWinApp {
public:
    int DoMessageBox(const char* text, std::uint32_t style, std::uint32_t) override {
        m_texts.emplace_back(text);
        m_style = style;
        return IDOK;
    }

    std::vector<std::string> m_texts;
    std::uint32_t m_style = 0;
};

} // namespace

TEST(Helpers, NumbersAreDigitsBehindASignOrAPrefix) {
    const CStringA withZero("1\0", 2);
    // clang-format off
    const struct {
        CStringA text;
        bool decimal, hex;
    } cases[] = {
        {"", false, false},     {"-", true, true},      {"--1", false, false},   {"0123456789", true, true},
        {"-12", true, true},    {"1-2", false, false},  {"+1", false, false},    {" 1", false, false},
        {"1F", false, true},    {"-aBf", false, true},  {"1G", false, false},    {"0x1F", false, true},
        {"0x", false, false},   {"0X1", false, false},  {"-0x1", false, false},  {"0x-1", false, false},
        {"0x0x1", false, false}, {withZero, false, false},
    };
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(IsNumber(c.text, false), c.decimal) << c.text.GetString();
        EXPECT_EQ(IsNumber(c.text, true), c.hex) << c.text.GetString();
    }
    EXPECT_TRUE(IsNumber("0x1F", true));
    EXPECT_FALSE(IsNumber(static_cast<const char*>(nullptr), true));
    for (int c = 0; c < 256; ++c) {
        const auto in = [c](const std::string& set) {
            return set.find(static_cast<char>(c)) != std::string::npos;
        };
        EXPECT_EQ(IsNumber(static_cast<char>(c), false), in("0123456789")) << c;
        EXPECT_EQ(IsNumber(static_cast<char>(c), true), in("0123456789abcdefABCDEF")) << c;
    }
}

TEST(Helpers, SplitDropsEmptyPiecesAndJoinEmptyElements) {
    const struct {
        const char* text;
        const char* joined;
        int pieces;
    } cases[] = {
        {"", "", 0}, {",,", "", 0}, {",a,,b,", "a; b", 2}, {"a b", "a b", 1}, {"a,b,c", "a; b; c", 3}};
    for (const auto& c : cases) {
        CStringArray pieces;
        pieces.Add("old");
        CStringSplit(pieces, c.text, ',');
        EXPECT_EQ(pieces.GetSize(), c.pieces) << c.text;
        EXPECT_STREQ(CStringJoin(pieces, "; "), c.joined);
    }
    CStringArray array;
    for (const char* element : {"", "a,x", "", "b", ""})
        array.Add(element);
    EXPECT_STREQ(CStringJoin(array, ";"), "a,x;b");
    EXPECT_STREQ(CStringJoin(array, nullptr), "a,xb");
    CStringSplit(array, array[1], ',');
    EXPECT_STREQ(CStringJoin(array, "|"), "a|x");
}

TEST_F(HelpersInFolder, TemporaryFileNameIsTheFirstFreeOne) {
    const fs::path folder = m_folder / "50%s %n"; // no part of the name is a format
    fs::create_directories(folder / "tmp%i2.txt");
    std::ofstream(folder / "tmp%i1.txt") << "x";
    for (const std::string& variable : {folder.string(), folder.string() + "/"}) {
        setenv("TEMP", variable.c_str(), 1);
        CStringA path("old"), name("tmp%i");
        zynGetTempPath(path);
        EXPECT_EQ(zynToNativePath(path), folder.string() + "/");
        EXPECT_TRUE(zynGetTempFileName(name, "txt", name));
        EXPECT_EQ(zynToNativePath(name), folder.string() + "/tmp%i3.txt");
        EXPECT_FALSE(fs::exists(folder / "tmp%i3.txt"));
    }
    unsetenv("TEMP");
    unsetenv("TMPDIR");
    CStringA name;
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

TEST(Helpers, ForbiddenCharactersOfAFileNameAreReplaced) {
    CStringA name("a\nb\\c/d:e*f?g\"h<i>j|k.l\r'");
    zynCorrectFileName(name, '_');
    EXPECT_STREQ(name, "a_b_c_d_e_f_g_h_i_j_k.l\r'");
}

TEST(Helpers, NamesOfConnectionsAndDatabasesAreChecked) {
    const struct {
        bool database;
        std::string forbidden;
        const char* tooShort;
        const char* message;
    } kinds[] = {
        {false, ":\\/=", "Имя подключения должно быть длиной два символа или больше!"_cp1251,
         "Имя подключения не должно включать символы ':', '\\', '/' и '='"_cp1251},
        {true, "\\/<>*?:|\"", "Имя БД должно быть длиной два символа или больше!"_cp1251,
         "Имя БД не должно включать символы '\\', '/', '<', '>', '*', '?', ':', '\"' и '|'!"_cp1251}};
    for (const auto& kind : kinds) {
        CStringA error("old");
        for (const char* name : {"", "x", "="}) {
            EXPECT_FALSE(IsNameCorrect(name, error, kind.database));
            EXPECT_STREQ(error, kind.tooShort);
        }
        for (int c = 1; c < 256; ++c) {
            const bool correct = kind.forbidden.find(static_cast<char>(c)) == std::string::npos;
            EXPECT_EQ(IsNameCorrect(CStringA("x") + static_cast<char>(c), error, kind.database), correct)
                << c;
            EXPECT_STREQ(error, correct ? "" : kind.message) << c;
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
    // clang-format off
    const struct {
        std::uint64_t physical, addresses;
        unsigned percent, bytes;
    } cases[] = {
        {1000 * mib, 2000 * mib, 10, 100 * mib},     {2000 * mib, 1000 * mib, 10, 100 * mib},
        {1000 * mib, 2000 * mib, 100, 400 * mib},    {1000 * mib, 2000 * mib, 41, 400 * mib},
        {1000 * mib - 1, 2000 * mib, 10, 99 * mib},  {mib, mib, 40, 0}, // whole MiB before and after the percentage
        {10240 * mib, 102400 * mib, 40, 0xFFF00000}, {~0ULL, ~0ULL, 40, 0xFFF00000},
    };
    // clang-format on
    for (const auto& c : cases) {
        given = {c.physical, c.addresses};
        EXPECT_EQ(zynGetOptimalBufSize(c.percent), c.bytes) << c.physical << ' ' << c.percent;
    }
    works = false;
    EXPECT_EQ(zynGetOptimalBufSize(40), 16 * mib);
    zynplatform::SetMemoryStatusSource(nullptr);
}

TEST_F(HelpersInFolder, SpreadsheetCheckReportsWhatIsMissingWhenAsked) {
    const fs::path file = m_folder / "registry";
    setenv("ZYN_REGISTRY", file.c_str(), 1);
    RecordingApplication application;
    const auto expectMessage = [&](const char* text) {
        application.m_texts.clear();
        EXPECT_FALSE(zynCheckExcel(false));
        EXPECT_TRUE(application.m_texts.empty());
        EXPECT_FALSE(zynCheckExcel(true));
        EXPECT_EQ(application.m_texts, std::vector<std::string>{text});
        EXPECT_EQ(application.m_style, 0x10U);
    };
    expectMessage(
        "Не удалось получить clsid для Microsoft Excel. Попробуйте переустановить MS Excel."_cp1251);
    fs::create_directories(file);
    expectMessage("Не удалось получить инициализировать подсистему OLE-COM!"_cp1251);
    fs::remove(file);

    std::ofstream(file) << "[Software\\Classes\\Excel.Application\\CLSID]\n";
    const auto isInitialized = [] { return zynplatform::FindAutomationServer("Excel.Application"); };
    EXPECT_FALSE(isInitialized()); // after each failure
    EXPECT_TRUE(zynCheckExcel(true));
    EXPECT_TRUE(isInitialized()); // and after the success until it is undone
    zynplatform::UninitializeAutomation();
    EXPECT_FALSE(isInitialized());
}
