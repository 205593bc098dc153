// SPDX-License-Identifier: MIT
#include "support/ini_model.h"
#include "zynaggr/zynhelpers.h"

namespace {

CStringA Library(const fs::path& native) {
    return zynFromNativePath(native.c_str());
}

// Folders in which a bare name is looked for, all of the test's own but the program's.
class IniLocateTest : public IniFileTest {
protected:
    IniLocateTest() {
        for (const char* place : {"up/env", "current", "profile", "system"})
            fs::create_directories(folder.Native(place));
        fs::current_path(current);
        ini.SetEnvForFind("ZYN_TEST_INI");
    }
    ~IniLocateTest() override { fs::current_path(currentBefore); }

    // Where the name is found while the file stands in all the places, then in all but the first, and so on.
    void ExpectOrder(bool moduleDir, int upLevels, const std::vector<fs::path>& places) {
        for (const fs::path& place : places)
            std::ofstream(place / name) << "[s]\n";
        for (const fs::path& place : places) {
            EXPECT_TRUE(ini.SetINI(name.c_str(), moduleDir, upLevels) && ini.isFileExist());
            EXPECT_EQ(Library(place / name), ini.GetRealIniName());
            EXPECT_EQ(Library(place) + "\\", ini.GetRealIniPath());
            EXPECT_EQ(place == profile, ini.IsHomeDir()) << place;
            fs::remove(place / name);
        }
        ini.SetINI(name.c_str(), moduleDir, upLevels);
        EXPECT_EQ(inSystem, ini.GetRealIniName());
        EXPECT_FALSE(ini.isFileExist() || ini.IsHomeDir());
    }

    const fs::path currentBefore = fs::current_path();
    const fs::path module = fs::read_symlink("/proc/self/exe").parent_path();
    const fs::path up = folder.Native("up"), env = folder.Native("up/env"),
                   profile = folder.Native("profile"), current = folder.Native("current"),
                   system = folder.Native("system");
    const std::string name = "zynaggr_locate_" + std::to_string(getpid()) + ".ini";
    const CStringA inSystem = Library(system / name);
    const Variable home{"HOME", profile}, systemRoot{"SystemRoot", system}, named{"ZYN_TEST_INI", {}};
};

} // namespace

TEST_F(IniLocateTest, BareNameIsFoundInTheFirstOfThePlaces) {
    std::ofstream(module / name) << "not asked for";
    ExpectOrder(false, 9, {current, profile, system});
    ExpectOrder(true, 0, {module, current, profile, system});
    const fs::path above = module.parent_path();
    if (above.parent_path() != "/") ExpectOrder(true, 2, {module, above, above.parent_path(), current});

    // The walk up starts from the variable's value with the name behind it: its own directory comes first.
    named.Set("  " + env.string() + "/\t");
    std::ofstream(up / name) << "out of reach";
    ExpectOrder(true, 1, {module, env, current});
    named.Set(env);
    ExpectOrder(true, 2, {module, env, up, current, profile});
}

TEST_F(IniLocateTest, VariableMayNameTheFileItself) {
    for (const char* other : {"up/env/other.ini", "up/env/OTHER.INI"}) {
        folder.Write(other, "");
        named.Set(" " + folder.Native(other).string());
        ini.SetINI(name.c_str(), true, 2);
        EXPECT_EQ(folder.Path(other), ini.GetRealIniName());
        fs::remove(folder.Native(other));
    }
    ExpectOrder(true, 2, {module, env, up, current});
}

TEST_F(IniLocateTest, LastPlaceIsTakenUntestedAndMadeByASave) {
    named.Set("/"); // the walk up ends below the root
    for (const int upLevels : {5, -1}) {
        ini.SetINI(name.c_str(), true, upLevels);
        EXPECT_EQ(inSystem, ini.GetRealIniName());
    }
    EXPECT_TRUE(ini.WriteString("s", "k", "v", nullptr));
    EXPECT_EQ("[s]\r\nk=v\r\n", folder.Read("system/" + name));

    home.Set({});
    systemRoot.Set({});
    ini.SetINI("none.ini", true, 0);
    EXPECT_EQ("none.ini", ini.GetRealIniName());
    EXPECT_TRUE(ini.GetRealIniPath().IsEmpty());
}

TEST_F(IniLocateTest, NameThatIsAPathIsTheFile) {
    folder.Write("current/here.ini", "");
    const std::tuple<CStringA, CStringA, CStringA, bool> cases[] = {
        {folder.Native("x.ini").c_str(), folder.Path("x.ini"), folder.Path() + "\\", false},
        {".\\here.ini", ".\\here.ini", ".\\", true},
        {"no\\such\\f.ini", "no\\such\\f.ini", "no\\such\\", false},
    };
    for (const auto& [given, real, path, exists] : cases) {
        CzynINI constructed(given);
        CStringA found;
        constructed.GetRealIniName(found);
        EXPECT_EQ(std::tuple(real, path, exists),
                  std::tuple(found, constructed.GetRealIniPath(), constructed.isFileExist()));
    }
}

TEST_F(IniLocateTest, WriteCheckMakesAMissingFileAndChangesNoOther) {
    folder.Write("old.ini", "text");
    const OtherHandle other(folder.Path("old.ini"), {.access = zynplatform::accessWrite}); // shared with all
    for (const std::string file : {"new.ini", "old.ini", "no/folder.ini"}) {
        const bool writable = file != "no/folder.ini";
        ini.SetINI(folder.Path(file), false, 0);
        ini.m_bReadOnly = writable;
        EXPECT_TRUE(ini.CheckWrite() == writable && ini.m_bReadOnly == !writable) << file;
        EXPECT_EQ(writable, folder.Has(file)) << file;
        EXPECT_EQ(file == "old.ini" ? "text" : "", folder.Read(file)) << file;
    }
    OpenIni nameless;
    nameless.m_bReadOnly = true;
    EXPECT_TRUE(!nameless.CheckWrite() && nameless.m_bReadOnly);
}
