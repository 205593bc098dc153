#include "zynplatform/automation.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <unistd.h>

using namespace zynplatform;
using namespace zynplatform::literals;

namespace {

// A registry of the test's own, the file not yet there.
class Registry : public testing::Test {
protected:
    Registry() { setenv("ZYN_REGISTRY", m_file.c_str(), 1); }
    ~Registry() override {
        unsetenv("ZYN_REGISTRY");
        std::filesystem::remove_all(m_folder);
    }
    static void Write(const std::filesystem::path& file, const std::string& text) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
    }

    std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("zyn_registry_test" + std::to_string(getpid()));
    std::filesystem::path m_file = m_folder / "registry";
};

} // namespace

TEST_F(Registry, FindsKeysWithoutRegardToCase) {
    Write(m_file, "\xEF\xBB\xBF[First]\r\n"
                  "; [Comment]\n\n"
                  "\"[Value]\"=dword:0000000a\n"
                  "\"Text\"=\"[a \\\"quoted\\\" C:\\\\x]\"\n"
                  "  [Software\\Maker\\Модуль Ёж\\Settings] \r\n"
                  "[Unclosed\n"
                  "[Last]");
    for (const char* key :
         {"First", "fIRST", "Last", "Software", // the last one above a key that is written down
          "Software\\Maker\\мОДУЛЬ ёЖ\\settings"_cp1251})
        EXPECT_TRUE(RegistryKeyExists(key)) << key;
    for (const char* key : {"Soft", "First\\Below", "Comment", "Value", "Unclosed", "Missing",
                            "Software\\Maker\\Модуль Еж\\Settings"_cp1251})
        EXPECT_FALSE(RegistryKeyExists(key)) << key;
}

TEST_F(Registry, MissingFileIsEmptyAndUnreadableOneIsAFailure) {
    EXPECT_TRUE(RegistryIsReadable());
    EXPECT_FALSE(RegistryKeyExists("Any"));
    std::filesystem::create_directories(m_file); // a folder in the file's place can be opened but not read
    EXPECT_FALSE(RegistryIsReadable());
    EXPECT_FALSE(InitializeAutomation());
}

TEST_F(Registry, AutomationServersAreFoundOnThreadsThatInitialised) {
    Write(m_file, "[software\\classes\\maker.sheet\\clsid]\n");
    const auto found = [] { return FindAutomationServer("Maker.Sheet"); };
    EXPECT_FALSE(found());
    ASSERT_TRUE(InitializeAutomation());
    ASSERT_TRUE(InitializeAutomation());
    EXPECT_TRUE(found());
    EXPECT_FALSE(FindAutomationServer("Maker.Other"));
    std::thread([&] { EXPECT_FALSE(found()); }).join();
    UninitializeAutomation();
    EXPECT_TRUE(found());
    UninitializeAutomation();
    EXPECT_FALSE(found());
    UninitializeAutomation(); // nothing left to undo
    ASSERT_TRUE(InitializeAutomation());
    EXPECT_TRUE(found());
    UninitializeAutomation();
}
