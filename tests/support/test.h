// SPDX-License-Identifier: MIT
#pragma once

#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iconv.h>
#include <optional>
#include <random>
#include <regex>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <vector>

// What nearly every test needs: names, text of the code page, a folder of its own, variables of the
// environment.

namespace fs = std::filesystem;
using namespace std::literals;
using namespace zynplatform::literals;

// The text in another encoding, as the system converts it; empty when it can't.
inline std::string Converted(std::string text, const char* from, const char* to) {
    const iconv_t converter = iconv_open(to, from);
    std::string result(4 * text.size(), 0);
    char *in = text.data(), *out = result.data();
    std::size_t inLeft = text.size(), outLeft = result.size();
    const bool isDone = iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
    iconv_close(converter);
    return isDone ? result.substr(0, result.size() - outLeft) : "";
}

// A date or span of this status.
template <class Value> Value WithStatus(Value value, auto status) {
    value.SetStatus(status);
    return value;
}

// FNV-1a.
inline std::uint64_t Hash(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    return hash;
}

// Has threads of the names 'a' to 'd' do their work at once.
inline void InFourThreads(const std::function<void(char)>& work) {
    const std::jthread threads[] = {std::jthread(work, 'a'), std::jthread(work, 'b'), std::jthread(work, 'c'),
                                    std::jthread(work, 'd')};
}

// Until the end of the scope no file can become longer.
class FullDisk {
public:
    explicit FullDisk(std::size_t room) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit lowered{room, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before;
};

// A variable of the environment, which has a value of the test's own, or none, until the end of the scope.
class Variable {
public:
    Variable(const char* name, const std::optional<std::string>& value) : m_name(name) {
        if (const char* const before = std::getenv(name)) m_before = before;
        Set(value);
    }
    ~Variable() { Set(m_before); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    void Set(const std::optional<std::string>& value) const {
        value ? setenv(m_name, value->c_str(), 1) : unsetenv(m_name);
    }

private:
    const char* const m_name;
    std::optional<std::string> m_before;
};
