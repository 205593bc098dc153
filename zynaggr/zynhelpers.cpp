// SPDX-License-Identifier: MIT
#include "zynaggr/zynhelpers.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynmessage.h"
#include "zynhost/application.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/environment.h"
#include "zynplatform/filesystem.h"
#include "zynplatform/memorystatus.h"
#include "zynplatform/paths.h"
#include "zynplatform/syserror.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string_view>
#include <utility>

using namespace zynplatform::literals;

namespace {

constexpr std::size_t moduleNameRoom = 260; // the terminating zero included

} // namespace

bool IsNumber(char character, bool hex) {
    if (character >= '0' && character <= '9') return true;
    return hex && ((character >= 'A' && character <= 'F') || (character >= 'a' && character <= 'f'));
}

bool IsNumber(std::string_view text, bool hex) {
    if (text.empty()) return false;
    if (text.starts_with('-'))
        text.remove_prefix(1);
    else if (hex && text.size() >= 3 && text.starts_with("0x"))
        text.remove_prefix(2);
    return std::ranges::all_of(text, [hex](char c) { return IsNumber(c, hex); });
}

bool IsNumber(const CStringA& text, bool hex) {
    return IsNumber(text.View(), hex);
}

bool IsNumber(const char* text, bool hex) {
    return text && IsNumber(std::string_view(text), hex);
}

bool zynIsStringEmpty(const char* text) {
    return !text || !*text;
}

int _sprintf(char* destination, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int count = std::vsprintf(destination, format, arguments);
    va_end(arguments);
    return count;
}

void CStringSplit(CStringArray& out, const CStringA& text, char separator) {
    CStringArray pieces; // `text` may be an element of `out`
    std::string_view rest = text.View();
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(separator), rest.size());
        if (length > 0) pieces.Add(CStringA(rest.substr(0, length)));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    out = std::move(pieces);
}

CStringA CStringJoin(const CStringArray& array, const char* separator) {
    CStringA joined;
    for (const CStringA& text : array) {
        if (text.IsEmpty()) continue;
        if (!joined.IsEmpty()) joined += separator;
        joined += text;
    }
    return joined;
}

void zynGetTempPath(CStringA& out) {
    out = CStringA(zynplatform::GetTempFolder());
}

bool zynGetTempFileName(const char* prefix, const char* extension, CStringA& out) {
    CStringA stem;
    zynGetTempPath(stem);
    stem += prefix;
    const CStringA tail = CStringA(".") + extension;
    std::uint64_t number = 0;
    do {
        out = stem + CStringA(std::to_string(++number)) + tail;
    } while (zynplatform::PathExists(out));
    return true;
}

bool zynGetModuleFileName(CStringA& out) {
    out.Empty();
    std::string name;
    if (!zynplatform::GetExecutableFileName(name) || name.size() >= moduleNameRoom) return false;
    out = CStringA(name);
    return true;
}

bool zynGetModuleFilePath(CStringA& out) {
    if (!zynGetModuleFileName(out)) return false;
    out = out.Left(out.ReverseFind('\\') + 1);
    return true;
}

void zynCorrectFileName(CStringA& name, char replacement) {
    for (const char forbidden : std::string_view("\n\\/:*?\"<>|"))
        name.Replace(forbidden, replacement);
}

bool IsNameCorrect(const CStringA& name, CStringA& error, bool database) {
    error.Empty();
    const char* message = nullptr;
    if (name.GetLength() < 2)
        message = database ? "Имя БД должно быть длиной два символа или больше!"_cp1251
                           : "Имя подключения должно быть длиной два символа или больше!"_cp1251;
    else if (!database && name.View().find_first_of(":\\/=") != std::string_view::npos)
        message = "Имя подключения не должно включать символы ':', '\\', '/' и '='"_cp1251;
    else if (database && name.View().find_first_of("\\/<>*?:|\"") != std::string_view::npos)
        message = "Имя БД не должно включать символы '\\', '/', '<', '>', '*', '?', ':', '\"' и '|'!"_cp1251;
    if (!message) return true;
    error = CzynTranslate::Translate(message);
    return false;
}

CStringA zynFromNativePath(const char* nativePath) {
    return zynFromNativePath(std::string_view(nativePath ? nativePath : ""));
}

CStringA zynFromNativePath(std::string_view nativePath) {
    return CStringA(zynplatform::FromNativePath(nativePath));
}

std::string zynToNativePath(const char* path) {
    return zynToNativePath(std::string_view(path ? path : ""));
}

std::string zynToNativePath(std::string_view path) {
    return zynplatform::ToNativePath(path);
}

void zynGetDescriptionSystemError(int code, CStringA& out, bool withCode) {
    const char* const text = zynplatform::DescribeSystemError(static_cast<std::uint32_t>(code));
    if (withCode)
        out.Format(CzynTranslate::TranslateFormat("Код ошибки: %i;\nОписание ошибки: %s"_cp1251), code, text);
    else
        out.Format(CzynTranslate::TranslateFormat("Описание ошибки: %s"_cp1251), text);
    out.Remove('\r');
}

unsigned zynGetOptimalBufSize(unsigned percent) {
    constexpr std::uint64_t mib = 1U << 20;
    constexpr std::uint64_t largest = 4095; // MiB: what 32 bits of bytes can hold
    zynplatform::MemoryStatus status;
    if (!zynplatform::GetMemoryStatus(status)) return 16 * mib;
    const std::uint64_t available = std::min(status.availableVirtual / mib, status.availablePhysical / mib);
    const std::uint64_t share = available * std::min(percent, 40U) / 100;
    return static_cast<unsigned>(std::min(share, largest) * mib);
}

int InitializeExcell(IDispatch*& /*dispatch*/, bool showMessages) {
    const auto fail = [showMessages](const char* message) {
        if (showMessages) zynMessageBoxConsole(CzynTranslate::Translate(message), MB_ICONHAND);
        return 1;
    };
    if (!zynplatform::InitializeAutomation())
        return fail("Не удалось получить инициализировать подсистему OLE-COM!"_cp1251);
    if (!zynplatform::FindAutomationServer("Excel.Application")) {
        const int result =
            fail("Не удалось получить clsid для Microsoft Excel. Попробуйте переустановить MS Excel."_cp1251);
        zynplatform::UninitializeAutomation();
        return result;
    }
    return 0;
}

bool zynCheckExcel(bool showMessages) {
    IDispatch* dispatch = nullptr;
    const bool found = InitializeExcell(dispatch, showMessages) == 0;
    if (dispatch) {
        dispatch->Release();
        zynplatform::UninitializeAutomation();
    }
    return found;
}
