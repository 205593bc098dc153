#pragma once

#include "support/temp_folder.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <tuple>
#include <vector>

// What nearly every test needs: names, text of the code page, a folder of its own, variables of the environment.

namespace fs = std::filesystem;
using namespace std::string_literals;
using namespace zynplatform::literals;

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
