#include "support/ini_model.h"
#include "support/temp_folder.h"
#include "zynaggr/zynhelpers.h"
#include "zynplatform/file.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

CStringA Library(const fs::path& native) {
    return zynFromNativePath(native.c_str());
}

// Folders in which a bare name is looked for, all of the test's own but the program's. Environment and
// current folder are put back in the end.
class IniLocateTest : public testing::Test {
protected:
    IniLocateTest() {
        for (const char* place : {"up/env", "current", "profile", "system"})
            fs::create_directories(folder.Native(place));
        fs::current_path(folder.Native("current"));
        Set("HOME", folder.Native("profile"));
        Set("USERPROFILE", {});
        Set("SystemRoot", folder.Native("system"));
        Set("ZYN_TEST_INI", {});
    }
    ~IniLocateTest() override {
        fs::current_path(before);
        for (const auto& [variable, value] : variables)
            value ? setenv(variable.c_str(), value->c_str(), 1) : unsetenv(variable.c_str());
        for (const fs::path& file : made)
            fs::remove(file);
    }

    void Set(const std::string& variable, const std::string& value) {
        const char* const old = getenv(variable.c_str());
        variables.try_emplace(variable, old ? std::optional<std::string>(old) : std::nullopt);
        value.empty() ? unsetenv(variable.c_str()) : setenv(variable.c_str(), value.c_str(), 1);
    }
    void Make(const fs::path& file) {
        std::ofstream(file) << "[s]\n";
        made.push_back(file);
    }
    // Where the name is found while the file stands in all the places, then in all but the first, and so on.
    void ExpectOrder(OpenIni& ini, bool moduleDir, int upLevels, const std::vector<fs::path>& places) {
        for (const fs::path& place : places)
            Make(place / name);
        for (const fs::path& place : places) {
            EXPECT_TRUE(ini.SetINI(name.c_str(), moduleDir, upLevels));
            EXPECT_EQ(Library(place / name), ini.GetRealIniName());
            EXPECT_EQ(Library(place) + "\\", ini.GetRealIniPath());
            EXPECT_TRUE(ini.isFileExist());
            EXPECT_EQ(place == folder.Native("profile"), ini.IsHomeDir()) << place;
            fs::remove(place / name);
        }
        ini.SetINI(name.c_str(), moduleDir, upLevels);
        EXPECT_EQ(Library(folder.Native("system") / name), ini.GetRealIniName());
        EXPECT_FALSE(ini.isFileExist());
        EXPECT_FALSE(ini.IsHomeDir());
    }

    const TempFolder folder;
    const fs::path before = fs::current_path();
    const fs::path module = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string name = "zynaggr_locate_" + std::to_string(getpid()) + ".ini";
    std::map<std::string, std::optional<std::string>> variables;
    std::vector<fs::path> made;
};

} // namespace

TEST_F(IniLocateTest, BareNameIsFoundInTheFirstOfThePlaces) {
    OpenIni ini;
    const fs::path current = fs::current_path(), profile = folder.Native("profile"),
                   system = folder.Native("system"), env = folder.Native("up/env");
    ExpectOrder(ini, false, 9, {current, profile, system});
    ExpectOrder(ini, true, 0, {module, current, profile, system});
    const fs::path above = module.parent_path();
    if (above != "/") ExpectOrder(ini, true, 1, {module, above, current});
    if (above.parent_path() != "/") ExpectOrder(ini, true, 2, {module, above, above.parent_path(), current});

    ini.SetEnvForFind("ZYN_TEST_INI"); // not set
    ExpectOrder(ini, true, 0, {module, current});
    // The walk up starts from the variable's value with the name behind it: its own directory comes first.
    for (const std::string& value : {env.string(), "  " + env.string() + "/\t"}) {
        Set("ZYN_TEST_INI", value);
        ExpectOrder(ini, true, 1, {module, env, current});
        ExpectOrder(ini, true, 2, {module, env, folder.Native("up"), current, profile});
        ExpectOrder(ini, false, 2, {current, profile});
    }
}

TEST_F(IniLocateTest, VariableMayNameTheFileItself) {
    OpenIni ini;
    ini.SetEnvForFind("ZYN_TEST_INI");
    for (const char* other : {"up/env/other.ini", "up/env/OTHER.INI"}) {
        Make(folder.Native(other));
        Set("ZYN_TEST_INI", " " + folder.Native(other).string());
        ini.SetINI(name.c_str(), true, 2);
        EXPECT_EQ(folder.Path(other), ini.GetRealIniName());
        fs::remove(folder.Native(other));
    }
    ExpectOrder(ini, true, 2, {module, folder.Native("up/env"), folder.Native("up"), fs::current_path()});
}

TEST_F(IniLocateTest, WalkUpEndsBelowTheRoot) {
    OpenIni ini;
    ini.SetEnvForFind("ZYN_TEST_INI");
    Set("ZYN_TEST_INI", "/");
    ini.SetINI(name.c_str(), true, 5);
    EXPECT_EQ(folder.Path("system") + "\\" + name.c_str(), ini.GetRealIniName());
    ini.SetINI(name.c_str(), true, -1);
    EXPECT_EQ(folder.Path("system") + "\\" + name.c_str(), ini.GetRealIniName());
}

TEST_F(IniLocateTest, NameThatIsAPathIsTheFile) {
    Make(folder.Native("current") / "here.ini");
    const struct {
        CStringA given, name, path;
        bool exists;
    } cases[] = {
        {folder.Path("x.ini"), folder.Path("x.ini"), folder.Path() + "\\", false},
        {folder.Native("x.ini").c_str(), folder.Path("x.ini"), folder.Path() + "\\", false},
        {".\\here.ini", ".\\here.ini", ".\\", true},
        {"no\\such\\f.ini", "no\\such\\f.ini", "no\\such\\", false},
    };
    for (const auto& c : cases) {
        OpenIni ini(c.given);
        CStringA byReference;
        ini.GetRealIniName(byReference);
        EXPECT_EQ(c.name, ini.GetRealIniName());
        EXPECT_EQ(c.name, byReference);
        EXPECT_EQ(c.path, ini.GetRealIniPath());
        EXPECT_EQ(c.exists, ini.isFileExist()) << c.given;
    }
}

TEST_F(IniLocateTest, WithoutAnyVariableOnlyTheNameIsLeft) {
    for (const char* variable : {"HOME", "SystemRoot"})
        Set(variable, {});
    OpenIni ini(name.c_str());
    EXPECT_EQ(name.c_str(), ini.GetRealIniName());
    EXPECT_TRUE(ini.GetRealIniPath().IsEmpty());
    Set("USERPROFILE", "\\no\\such\\folder\\");
    Set("SystemRoot", folder.Path("system").GetString());
    ini.SetINI(name.c_str(), false, 0);
    EXPECT_EQ(folder.Path("system") + "\\" + name.c_str(), ini.GetRealIniName());
}

TEST_F(IniLocateTest, NewFileIsMadeInTheSystemFolderByASave) {
    OpenIni ini(name.c_str());
    EXPECT_TRUE(ini.WriteString("s", "k", "v", nullptr));
    EXPECT_EQ("[s]\r\nk=v\r\n", folder.Read("system/" + name));
}

TEST_F(IniLocateTest, WriteCheckMakesAMissingFileAndChangesNoOther) {
    const struct {
        const char* file;
        bool writable;
        const char* content;
    } cases[] = {{"new.ini", true, ""}, {"old.ini", true, "text"}, {"no/folder.ini", false, ""}};
    folder.Write("old.ini", "text");
    for (const auto& c : cases) {
        OpenIni ini;
        ini.SetINI(folder.Path(c.file), false, 0);
        ini.m_bReadOnly = c.writable;
        EXPECT_EQ(c.writable, ini.CheckWrite()) << c.file;
        EXPECT_EQ(!c.writable, ini.m_bReadOnly) << c.file;
        EXPECT_EQ(c.writable, folder.Has(c.file)) << c.file;
        EXPECT_EQ(c.content, folder.Read(c.file)) << c.file;
    }
    OpenIni nameless;
    nameless.m_bReadOnly = true;
    EXPECT_FALSE(nameless.CheckWrite());
    EXPECT_TRUE(nameless.m_bReadOnly);
}

TEST_F(IniLocateTest, WriteCheckFailsWithoutTheRightToWriteAndSharesWithAll) {
    folder.Write("f.ini", "text");
    OpenIni ini(folder.Path("f.ini"));
    zynplatform::FileHandle other;
    ASSERT_EQ(0u, zynplatform::OpenFile(folder.Path("f.ini"), {.access = zynplatform::accessWrite}, other));
    EXPECT_TRUE(ini.CheckWrite());
    zynplatform::CloseFile(other);

    fs::permissions(folder.Native(), fs::perms{0755});
    fs::permissions(folder.Native("f.ini"), fs::perms{0444});
    if (geteuid() == 0 && (setegid(65534) != 0 || seteuid(65534) != 0)) GTEST_SKIP();
    const bool writable = ini.CheckWrite();
    if (getuid() == 0) {
        ASSERT_EQ(0, seteuid(0) + setegid(0));
    }
    EXPECT_TRUE(ini.isFileExist());
    EXPECT_FALSE(writable);
    EXPECT_TRUE(ini.m_bReadOnly);
}
