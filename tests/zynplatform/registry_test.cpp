// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/automation.h"
#include "zynplatform/registry.h"

using namespace zynplatform;

// A registry of the test's own, the file not yet there.
class Registry : public testing::Test {
protected:
    void Write(std::string_view text) const { m_folder.Write("registry", text); }
    std::string Text() const { return m_folder.Read("registry"); }

    const TempFolder m_folder;
    const fs::path m_file = m_folder.Native("registry");
    const Variable m_variable{"ZYN_REGISTRY", m_file};
};

TEST_F(Registry, FindsKeysWithoutRegardToCase) {
    Write("\xEF\xBB\xBF[First]\r\n"
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

TEST_F(Registry, NumbersAreReadAndTheRestIsKept) {
    Write("; mine\n[A]\n \"N\" = dword:0000000a \r\n\"Text\"=\"dword:1\"\n\n"
          "[a\\b]\n\"A \\\"q\\\"\"=dword:FFFFFFFF\n\"Bad\"=dword:1x\n\"Long\"=dword:000000001");
    const auto a = RegistryKey::Open("A"), b = RegistryKey::Open("A\\B");
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->GetNumber("n"), 10u);
    EXPECT_EQ(b->GetNumber("a \"Q\""), 0xFFFFFFFFu);
    for (const char* name : {"Text", "Bad", "Long", ""})
        EXPECT_FALSE(a->GetNumber(name) || b->GetNumber(name)) << name;
    ASSERT_TRUE(a->SetNumber("Ё\\"_cp1251, 1) && a->SetNumber("TEXT", 2) && b->SetNumber("New", 3));
    EXPECT_EQ(a->GetNumber("ё\\"_cp1251), 1u);
    const auto made = RegistryKey::OpenOrCreate("A\\Я"_cp1251);
    ASSERT_TRUE(made && RegistryKey::OpenOrCreate("a\\я"_cp1251));
    EXPECT_EQ(Text(),
              "; mine\n[A]\n \"N\" = dword:0000000a \r\n\"TEXT\"=dword:00000002\n\"Ё\\\\\"=dword:00000001\n\n"
              "[a\\b]\n\"A \\\"q\\\"\"=dword:FFFFFFFF\n\"Bad\"=dword:1x\n\"Long\"=dword:000000001\n"
              "\"New\"=dword:00000003\n\n[A\\Я]\n");
    EXPECT_FALSE(RegistryKey::Open("B"));
    fs::remove(m_file);
    EXPECT_FALSE(a->SetNumber("N", 1)); // the key is gone
    EXPECT_FALSE(fs::exists(m_file));
}

TEST_F(Registry, WhatMayNotBeWrittenIsNotThere) {
    Write("[A]\n");
    fs::permissions(m_folder.Native(), fs::perms(0777));
    fs::permissions(m_file, fs::perms(0444));
    const bool root = geteuid() == 0; // who may do everything is not asked
    ASSERT_TRUE(!root || seteuid(65534) == 0);
    EXPECT_TRUE(RegistryKeyExists("A"));
    EXPECT_FALSE(RegistryKey::Open("A") || RegistryKey::OpenOrCreate("A") || RegistryKey::OpenOrCreate("B"));
    ASSERT_TRUE(!root || seteuid(0) == 0);
    EXPECT_EQ(Text(), "[A]\n");
}

TEST_F(Registry, OnlyAPlainFileIsARegistryAndStaysWhatItWas) {
    const auto sets = [] {
        const auto key = RegistryKey::OpenOrCreate("A");
        return key && key->SetNumber("n", 1);
    };
    for (const char* target : {"/dev/null", "no/such/file", "pipe"}) {
        fs::remove(m_file);
        const bool isPipe = target == std::string("pipe");
        isPipe ? static_cast<void>(mkfifo(m_file.c_str(), 0600)) : fs::create_symlink(target, m_file);
        EXPECT_FALSE(sets()) << target;
        EXPECT_EQ(!isPipe, fs::is_symlink(m_file)) << target;
    }
    fs::remove(m_file);
    Write("[A]\n");
    fs::permissions(m_file, fs::perms(0664));
    const bool isRoot = chown(m_file.c_str(), 1234, 2345) == 0;
    const mode_t mask = umask(077);
    EXPECT_TRUE(sets());
    umask(mask);
    struct stat file, lock;
    ASSERT_EQ(0, stat(m_file.c_str(), &file) + stat((m_file.string() + ".lock").c_str(), &lock));
    EXPECT_EQ(0664u, file.st_mode & 07777);
    EXPECT_TRUE(!isRoot || (file.st_uid == 1234 && file.st_gid == 2345 && lock.st_uid == 1234));
}

TEST_F(Registry, ProcessesWritingAtOnceLoseNothing) {
    for (int child = 0; child < 3; ++child) {
        if (fork() != 0) continue;
        bool done = true;
        for (int i = 0; i < 50; ++i) {
            const std::string name = std::to_string(child) + "/" + std::to_string(i);
            const auto key = RegistryKey::OpenOrCreate("Key" + std::to_string(i % 5));
            done = done && key && key->SetNumber(name, static_cast<std::uint32_t>(i));
        }
        _exit(done ? 0 : 1);
    }
    for (int child = 0, status = 0; child < 3; ++child) {
        ASSERT_GT(wait(&status), 0);
        EXPECT_EQ(status, 0);
    }
    for (std::uint32_t i = 0; i < 150; ++i) {
        const auto key = RegistryKey::Open("Key" + std::to_string(i % 5));
        EXPECT_EQ(key->GetNumber(std::to_string(i / 50) + "/" + std::to_string(i % 50)), i % 50);
    }
}

TEST_F(Registry, AutomationServersAreFoundOnThreadsThatInitialised) {
    Write("[software\\classes\\maker.sheet\\clsid]\n");
    const auto found = [] { return FindAutomationServer("Maker.Sheet"); };
    EXPECT_FALSE(found());
    ASSERT_TRUE(InitializeAutomation() && InitializeAutomation());
    EXPECT_TRUE(found() && !FindAutomationServer("Maker.Other"));
    std::thread([&] { EXPECT_FALSE(found()); }).join();
    for (const bool isLeft : {true, false, false}) { // the third time nothing is left to undo
        UninitializeAutomation();
        EXPECT_EQ(found(), isLeft);
    }
    ASSERT_TRUE(InitializeAutomation() && found());
    UninitializeAutomation();
}
