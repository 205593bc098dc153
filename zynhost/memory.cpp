// SPDX-License-Identifier: MIT
#include "zynhost/memory.h"

#include "zynplatform/cp1251.h"

#include <algorithm>
#include <cstring>

using namespace zynplatform::literals;

CMemoryException::~CMemoryException() = default;

const char* CMemoryException::Text() noexcept {
    return "Недостаточно памяти."_cp1251;
}

const char* CMemoryException::what() const noexcept {
    return Text();
}

bool CMemoryException::GetErrorMessage(char* text, unsigned size) const {
    if (!text || size == 0) return false;
    const std::size_t length = std::min<std::size_t>(std::strlen(Text()), size - 1);
    std::memcpy(text, Text(), length);
    text[length] = 0;
    return true;
}

void AfxThrowMemoryException() {
    throw CMemoryException();
}
