// SPDX-License-Identifier: MIT
#include "zynaggr/zynmessage.h"

#include "zynaggr/zynsync.h"
#include "zynhost/application.h"
#include "zynplatform/console.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/fork.h"
#include "zynplatform/moduleentry.h"

#include <atomic>
#include <cassert>

using namespace zynplatform::literals;

bool g_bShow_zynMessageBox_Error = true;
bool g_bShow_zynMessageBox_Warning = true;
bool g_bShow_zynMessageBox_Information = true;
bool g_bShow_zynMessageBox_WaitEnter = true;
bool g_bShow_zynMessageBox_InRussian = false;

namespace {

struct MessageClass {
    bool* show; // null: always
    const char* prefix;
    const char* russianPrefix;
    unsigned attribute;
};

constexpr unsigned usualAttribute = 15;

// clang-format off
constexpr MessageClass warningClass    {&g_bShow_zynMessageBox_Warning,     "\n\nzyn Warning: ", "\n\nПредупреждение: "_cp1251, 14};
constexpr MessageClass errorClass      {&g_bShow_zynMessageBox_Error,       "\n\nzyn Error: ",   "\n\nОшибка: "_cp1251,         12};
constexpr MessageClass informationClass{&g_bShow_zynMessageBox_Information, "\n\nzyn Info: ",    "\n\n ",                       usualAttribute};
constexpr MessageClass plainClass      {nullptr,                            "\n\n",              "\n\n",                        usualAttribute};
// clang-format on

std::atomic<bool> russianPrefixes{false};
zynplatform::UntilUnload<CZynCriticalSection> outputLock;
const zynplatform::AtFork atFork([] { outputLock->ResetInForkedChild(); });

const MessageClass& Classify(std::uint32_t style) {
    if ((style & MB_ICONEXCLAMATION) == MB_ICONEXCLAMATION) return warningClass;
    if (style & MB_ICONHAND) return errorClass;
    if (style & MB_ICONASTERISK) return informationClass;
    return plainClass;
}

bool IsSwallowed(const MessageClass& messageClass) {
    return messageClass.show && !std::atomic_ref(*messageClass.show).load(std::memory_order_relaxed);
}

} // namespace

int zynMessagePrint(const char* szText, std::uint32_t uStyle) {
    if (g_bShow_zynMessageBox_InRussian) russianPrefixes = true;
    const MessageClass& messageClass = Classify(uStyle);
    if (IsSwallowed(messageClass) || !szText || !*szText) return IDOK;

    CzynEnterCriticalSection lock(&*outputLock);
    zynplatform::SetTextAttribute(messageClass.attribute);
    zynplatform::Write(russianPrefixes ? messageClass.russianPrefix : messageClass.prefix);
    zynplatform::Write(szText);
    zynplatform::SetTextAttribute(usualAttribute);
    zynplatform::Flush();
    return IDOK;
}

int zynMessageBoxConsole(const char* szText, std::uint32_t uStyle) {
    assert((uStyle & 7) == 0);
    if (IsSwallowed(Classify(uStyle))) return IDOK;
    return AfxMessageBox(szText, uStyle);
}
