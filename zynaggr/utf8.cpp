// SPDX-License-Identifier: MIT
#include "zynaggr/utf8.h"

#include "zynaggr/filetext_impl.h"
#include "zynplatform/codepage.h"

std::string zynToUtf8(const CStringA& text) {
    const std::string_view bytes = text.View();
    std::string utf8(3 * bytes.size(), '\0');
    utf8.resize(zynplatform::From1251ToUtf8(bytes.data(), bytes.size(), utf8.data()));
    return utf8;
}

CStringA zynFromUtf8(std::string_view utf8, bool* isLost) {
    std::string bytes(utf8.size(), '\0');
    bytes.resize(zynplatform::Utf8To1251(utf8.data(), utf8.size(), bytes.data()));
    CStringA text{std::string_view(bytes)};
    if (isLost) *isLost = zynToUtf8(text) != utf8;
    return text;
}

std::string zynFileToUtf8(std::string_view bytes, const zynEncodingChoice& choice, zynTextEncoding* found) {
    std::size_t markLength = 0;
    const zynTextEncoding encoding = zyn::FindEncoding(bytes, choice, markLength);
    if (found) *found = encoding;
    return zyn::EncodeText(zynEncUTF8, zyn::DecodeText(encoding, bytes.substr(markLength)));
}
