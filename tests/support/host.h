// SPDX-License-Identifier: MIT
#pragma once

#include "support/test.h"
#include "zynhost/application.h"
#include "zynplatform/locale.h"

#include <map>

// A host with a folder of its own, that notes the message boxes it is asked for.
class Host : public CWinApp {
public:
    explicit Host(std::uint32_t lcid) { zynplatform::SetThreadLocale(lcid); }
    ~Host() override { zynplatform::SetThreadLocale(0); }

    int DoMessageBox(const char* text, std::uint32_t style, std::uint32_t help) override {
        boxes.push_back(std::to_string(style + help) + " " + text);
        whileShown();
        return answer;
    }
    CStringA GetHelpFilePath() const override { return folder.Path("host.hlp"); }
    std::uint32_t GetProfileInt(const char* section, const char* entry, int defaultValue) override {
        const auto found = profile.find(std::string(section) + "/" + entry);
        return static_cast<std::uint32_t>(found == profile.end() ? defaultValue : found->second);
    }
    bool WriteProfileInt(const char* section, const char* entry, int value) override {
        profile[std::string(section) + "/" + entry] = value;
        return true;
    }

    TempFolder folder;
    std::vector<std::string> boxes;
    int answer = IDOK;
    std::function<void()> whileShown = [] {};
    std::map<std::string, int> profile;
};
