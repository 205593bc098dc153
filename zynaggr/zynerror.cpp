// SPDX-License-Identifier: MIT
#include "zynaggr/zynerror.h"

#include "zynaggr/zyn_translate.h"
#include "zynplatform/cp1251.h"

#include <memory>
#include <string>
#include <utility>

using namespace zynplatform::literals;

namespace {

using DescriptionProvider = CStringA (*)(int);

constexpr int usualLength = 500; // of the text of a record with another one in its stack

constexpr std::int32_t moduleTransport = 1;
constexpr std::int32_t moduleData = 2;
constexpr std::int32_t moduleTransportClient = 3;
constexpr std::int32_t moduleServer = 4;
constexpr std::int32_t moduleServer2 = 5;

DescriptionProvider transportDescription = nullptr;
DescriptionProvider dataDescription = nullptr;
DescriptionProvider serverDescription = nullptr;
bool retranslateMemoryException = false;

const char* T(const char* text) {
    return CzynTranslate::Translate(text);
}

void Stack(SzynErrorDescription& record, std::unique_ptr<SzynErrorDescription> added) {
    record.m_aStack.Add(added.get());
    (void)added.release();
}

void AppendNumber(CStringA& text, const char* before, std::int32_t number, const char* behind) {
    text += before;
    text += std::to_string(number);
    text += behind;
}

void AppendModule(CStringA& text, std::int32_t module, bool russian) {
    switch (module) {
    case moduleTransport:
        text += russian ? T("транспорт; "_cp1251) : T("Transport; ");
        break;
    case moduleData:
        text += T("CzynData; ");
        break;
    case moduleTransportClient:
        text += T("ZynTransportClient; ");
        break;
    case moduleServer:
    case moduleServer2:
        text += russian ? T("сервер; "_cp1251) : T("Server; ");
        break;
    default:
        AppendNumber(text, " ", module, "; ");
    }
}

// A description of the data layer or the server stands in place of the number, one of the transport before
// it.
void AppendCode(CStringA& text, std::int32_t module, std::int32_t code) {
    if (module == moduleTransport && transportDescription) text += transportDescription(code);
    if (module == moduleData && dataDescription)
        text += dataDescription(code);
    else if (module == moduleServer && serverDescription)
        text += serverDescription(code);
    else
        AppendNumber(text, " ", code, ";");
}

void AppendUnlessEmpty(CStringA& text, const char* label, const CStringA& value) {
    if (value.IsEmpty()) return;
    text += label;
    text += value;
}

void AppendRecord(CStringA& text, const SzynErrorDescription& record, const char* szExtra, bool bRussian) {
    text += bRussian ? T("Модуль: "_cp1251) : "Core: ";
    AppendModule(text, record.m_nModule, bRussian);
    if (record.m_nCode != -1) {
        text += bRussian ? T(" ") : T(" Err: ");
        AppendCode(text, record.m_nModule, record.m_nCode);
    }
    AppendUnlessEmpty(text, bRussian ? T("\r\nФункция: "_cp1251) : "\r\n\t\tFun: ", record.m_strFun);
    if (szExtra) {
        text += T("; ");
        text += szExtra;
    }
    AppendUnlessEmpty(text, bRussian ? "\r\n" : "\r\n\t\tDescr: ", record.m_strDescr);
    AppendUnlessEmpty(text, bRussian ? "\r\n" : "\r\n\t\tAdd: ", record.m_strAdd);
    AppendUnlessEmpty(text, bRussian ? T("\r\nКласс: "_cp1251) : "\r\n\t\tCls: ", record.m_strCls);
    AppendUnlessEmpty(text, bRussian ? T("\r\nИсходный код: "_cp1251) : "\r\n\t\tSrc: ", record.m_strSrc);
    if (!record.m_strSrc.IsEmpty()) AppendUnlessEmpty(text, T(" от "_cp1251), record.m_strSrcDate);
    if (record.m_nLine != 0) AppendNumber(text, " str ", record.m_nLine, "");

    if (!bRussian && !record.m_aStack.IsEmpty()) {
        text += "\r\n\t\tErr stack: ";
        for (const SzynErrorDescription* stacked : record.m_aStack) {
            text += "\r\n\t";
            AppendRecord(text, *stacked, nullptr, false);
        }
    }
}

} // namespace

SzynErrorDescription::SzynErrorDescription(int nCode, const char* szSrc, const char* szSrcDate, int nLine,
                                           const char* szDescr, int nModule, const char* szFun,
                                           const char* szCls, const char* szAdd)
    : m_nCode(nCode),
      m_strSrc(szSrc),
      m_strSrcDate(szSrcDate),
      m_nLine(nLine),
      m_strFun(szFun),
      m_strCls(szCls),
      m_strDescr(szDescr),
      m_strAdd(szAdd),
      m_nModule(nModule) {}

// Both copies delegate, so that the destructor frees a stack half copied when memory runs out.
SzynErrorDescription::SzynErrorDescription(const SzynErrorDescription& other) : SzynErrorDescription() {
    Set(other);
}

SzynErrorDescription::SzynErrorDescription(const SzynErrorDescription& other, const char* szSrc,
                                           const char* szSrcDate, int nLine, const char* szDescr,
                                           const char* szFun, const char* szCls)
    : SzynErrorDescription() {
    Set(other, szSrc, szSrcDate, nLine, szDescr, szFun, szCls);
}

SzynErrorDescription::~SzynErrorDescription() {
    for (const SzynErrorDescription* record : m_aStack)
        delete record;
}

void SzynErrorDescription::Set(const SzynErrorDescription& other) {
    m_nCode = other.m_nCode;
    m_strSrc = other.m_strSrc;
    m_strSrcDate = other.m_strSrcDate;
    m_nLine = other.m_nLine;
    m_strDescr = other.m_strDescr;
    m_nModule = other.m_nModule;
    m_strFun = other.m_strFun;
    m_strCls = other.m_strCls;
    m_strAdd = other.m_strAdd;
    // `other` may be this record: its stack grows meanwhile.
    const int count = other.m_aStack.GetSize();
    for (int i = 0; i < count; ++i)
        Stack(*this, std::make_unique<SzynErrorDescription>(*other.m_aStack[i]));
}

void SzynErrorDescription::Set(const SzynErrorDescription& other, const char* szSrc, const char* szSrcDate,
                               int nLine, const char* szDescr, const char* szFun, const char* szCls) {
    // First: the texts may be this record's own.
    auto place =
        std::make_unique<SzynErrorDescription>(-1, szSrc, szSrcDate, nLine, szDescr, 0, szFun, szCls, "");
    Set(other);
    Stack(*this, std::move(place));
}

CStringA SzynErrorDescription::Print(const char* szExtra, bool bRussian) const {
    CStringA text;
    text.Preallocate(usualLength);
    AppendRecord(text, *this, szExtra, bRussian);
    return text;
}

bool SzynErrorDescription::GetRetranslateMemoryExeption() {
    return retranslateMemoryException;
}

void SzynErrorDescription::SetRetranslateMemoryExeption(bool bRetranslate) {
    retranslateMemoryException = bRetranslate;
}

void SetGetTransportErrorDescription(CStringA (*pfnDescription)(int nCode)) {
    transportDescription = pfnDescription;
}

void SetGetStepDataErrorDescription(CStringA (*pfnDescription)(int nCode)) {
    dataDescription = pfnDescription;
}

void SetGetServerErrorDescription(CStringA (*pfnDescription)(int nCode)) {
    serverDescription = pfnDescription;
}
