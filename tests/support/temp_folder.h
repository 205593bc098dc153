// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/paths.h"

#include <filesystem>
#include <fstream>
#include <unistd.h>

// A folder of the test's own, removed with all that is in it.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zynaggr-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::filesystem::path Native(std::string_view name = {}) const {
        return name.empty() ? m_path : m_path / name;
    }
    // The same in the library's form.
    CStringA Path(std::string_view name = {}) const {
        return CStringA(std::string_view(zynplatform::FromNativePath(Native(name).string())));
    }
    void Write(std::string_view name, std::string_view bytes) const {
        std::ofstream(Native(name), std::ios::binary) << bytes;
    }
    std::string Read(std::string_view name) const {
        std::ifstream file(Native(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Has(std::string_view name) const { return std::filesystem::exists(Native(name)); }

private:
    std::filesystem::path m_path;
};
