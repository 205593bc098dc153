#include "zynaggr/zyntaggr.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynhost/application.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <cstdio>

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
    // Everything up to the message box is on the stack: memory has just run out.
    char reason[255];
    std::snprintf(reason, sizeof(reason), "%s", CMemoryException::Text());
    if (const auto* hostFailure = dynamic_cast<const CMemoryException*>(&failure))
        hostFailure->GetErrorMessage(reason, sizeof(reason));

    char message[1024];
    std::snprintf(
        message, sizeof(message),
        CzynTranslate::TranslateFormat(
            "Ошибка при выделении памяти в CzynTAggr<...>::SetSize: %s\r\n Size: %i  max_size: %i"_cp1251),
        reason, array.size, array.wanted);

    if (SzynErrorDescription::GetRetranslateMemoryExeption()) ThrowRecord(message, array);
    AfxCaptionMessageBox(message, CzynTranslate::Translate("Ошибка"_cp1251), MB_ICONHAND);
    return false;
}
