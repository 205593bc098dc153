// SPDX-License-Identifier: MIT
#include "zynaggr/zyntaggr.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynhost/application.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

using namespace zynplatform::literals;

namespace {

constexpr int memoryErrorCode = 27;
constexpr int reportedLine = 1024; // whatever the line is: records are recognised by it

[[noreturn]] void ThrowRecord(const char* message, const zyn::ArrayFailure& array) {
    const char* key = array.elementIsStruct ? "struct" : "class";
    const int length = static_cast<int>(array.element.size());
    const char* name = array.element.data();
    CStringA function;
    function.Format("CzynTAggr<%s %.*s *,%s %.*s *,%i>::SetSize", key, length, name, key, length, name,
                    array.policy);
    throw SzynErrorDescription(memoryErrorCode, "zynaggr.h", __DATE__, reportedLine, message, 0, function,
                               nullptr, nullptr);
}

} // namespace

bool zyn::ReportArrayFailure(const std::bad_alloc& failure, const ArrayFailure& array) {
    // Everything up to the message box is on the stack if it fits: memory has just run out.
    char reason[255];
    std::snprintf(reason, sizeof(reason), "%s", CMemoryException::Text());
    if (const auto* hostFailure = dynamic_cast<const CMemoryException*>(&failure))
        hostFailure->GetErrorMessage(reason, sizeof(reason));

    const auto format = [&](char* to, std::size_t room) {
        const int length = std::snprintf(
            to, room,
            CzynTranslate::TranslateFormat(
                "Ошибка при выделении памяти в CzynTAggr<...>::SetSize: %s\r\n Size: %i  max_size: %i"_cp1251),
            reason, array.size, array.wanted);
        return static_cast<std::size_t>(std::max(0, length)) + 1;
    };
    char usual[1024];
    const std::size_t room = format(usual, sizeof(usual));
    const std::unique_ptr<char[]> longer(room > sizeof(usual) ? new (std::nothrow) char[room] : nullptr);
    if (longer) format(longer.get(), room);
    const char* const message = longer ? longer.get() : usual;

    if (SzynErrorDescription::GetRetranslateMemoryExeption()) ThrowRecord(message, array);
    AfxCaptionMessageBox(message, CzynTranslate::Translate("Ошибка"_cp1251), MB_ICONHAND);
    return false;
}
