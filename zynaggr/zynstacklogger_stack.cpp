// SPDX-License-Identifier: MIT
#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynaggr/zynstacklogger.h"
#include "zynaggr/zynstacklogger_impl.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace zynplatform::literals;

namespace {

constexpr std::int32_t warningDepth = 1050;
constexpr std::uint32_t depthLimit = 1100;
constexpr int tooDeep = 106; // error code
constexpr int listed = 10;   // entries at either end of the stack in a warning
constexpr const char* enterName = "StackLoggerThreadEl::Enter";
constexpr const char* leaveName = "StackLoggerThreadEl::Leave";

const char* T(const char* text) {
    return CzynTranslate::Translate(text);
}

void AppendTooDeep(std::string& text, std::int32_t depth, const CStringA& key) {
    CStringA message;
    message.Format(CzynTranslate::TranslateFormat("Глубина стека превысила %i !! Функция "_cp1251), depth);
    text.append(message.View()).append(key.View());
}

void AppendEntry(std::string& text, const CzynStrStrMap::CzynStrStrMapItem& entry) {
    text.append("\r\n").append(entry.m_sKey.View());
    if (!entry.m_sValue.IsEmpty()) text.append(" (").append(entry.m_sValue.View()).append(")");
}

// The deepest entry is usually the one.
int FindEntry(const CzynStrStrMap& stack, const CStringA& key) {
    const int last = stack.GetSize() - 1;
    return last >= 0 && stack.GetAt(last)->m_sKey == key ? last : stack.FindByIn(key);
}

struct Settling {
    explicit Settling(std::atomic<bool>& mark) : settled(mark) {}
    ~Settling() { settled.store(true, std::memory_order_release); }
    std::atomic<bool>& settled;
};

} // namespace

CStringA StackLoggerThreadEl::Stack::TakeSpareKey() {
    return m_nSpare != 0 ? std::move(m_aSpare[m_nSpare - 1]->m_sKey) : CStringA();
}

int StackLoggerThreadEl::Stack::Push(const CStringA& key) {
    const int last = GetSize() - 1;
    if (m_nSpare == 0 || (last >= 0 && GetAt(last)->m_sKey.View() >= key.View())) return Add(key, "");
    std::unique_ptr<CzynStrStrMapItem>& item = m_aSpare[m_nSpare - 1];
    item->m_sKey = key;
    item->m_sValue.Empty();
    const int index = m_aItems.Add(item.get());
    if (index < 0) return -1;
    static_cast<void>(item.release());
    --m_nSpare;
    return index;
}

bool StackLoggerThreadEl::Stack::Remove(int index) {
    CzynStrStrMapItem* const item = GetAt(index);
    if (item && m_nSpare < m_aSpare.size()) {
        m_aSpare[m_nSpare++].reset(item);
        m_aItems.m_pData[index] = nullptr;
    }
    return m_aItems.Remove(index);
}

void StackLoggerThreadEl::Enter(CStringA& strKey, bool bLogEveryCall) {
    Enter(strKey, {}, strKey.View(), bLogEveryCall);
}

void StackLoggerThreadEl::Enter(CStringA& strKey, std::string_view lead, std::string_view name,
                                bool bLogEveryCall) {
    const Settling settling(m_bSettled);
    const CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return;

    const auto prefix = zyn::StackPrefix(m_dwThreadId, m_nDepth);
    const std::size_t prefixLength = prefix[0].size() + prefix[1].size() + prefix[2].size();
    const std::size_t plainLength = lead.size() + name.size();
    if (plainLength > std::numeric_limits<int>::max() - zyn::longestStackPrefix) AfxThrowMemoryException();
    CStringA key = m_mapStack.TakeSpareKey();
    char* to = key.GetBuffer(static_cast<int>(prefixLength + plainLength));
    for (const std::string_view piece : {prefix[0], prefix[1], prefix[2], lead, name})
        to = std::copy(piece.begin(), piece.end(), to);
    key.ReleaseBuffer(static_cast<int>(prefixLength + plainLength));
    AddEntry(key, plainLength);
    strKey = std::move(key); // nothing may fail any more
    if (m_nDepth == warningDepth) WarnOfDepth(strKey);
    if (IsTooDeep()) {
        std::string description = zyn::StackTime();
        AppendTooDeep(description, m_nDepth, strKey);
        throw SzynErrorDescription(tooDeep, "zynaggr.cpp", __DATE__, __LINE__, description.c_str(), 0,
                                   enterName, nullptr, nullptr);
    }

    // Looked up anew each time: a callback may change the caller's variable.
    const auto plainKey = [&] { return strKey.View().substr(std::min(prefixLength, strKey.View().size())); };
    const std::int32_t ended = m_nRepeat;
    const bool isRepeat = !bLogEveryCall && plainKey() == m_strLastFun.View();
    m_nRepeat = isRepeat ? ended + 1 : 0;
    m_nRepeatDepth = isRepeat ? static_cast<std::uint32_t>(m_nDepth) : 0;
    ++m_nDepth;
    if (isRepeat) return;
    if (global->m_pfnTrace) {
        CzynEnterCriticalSection lock(global->m_pCS.get());
        if (ended > 0)
            Trace("", {strKey.View(), m_strLastFun.View(), " in repeated: ", std::to_string(ended), " "});
        Trace("", {strKey.View(), "-<"});
        // The callback may have entered functions.
        m_nRepeat = 0;
        m_nRepeatDepth = 0;
    }
    if (m_strLastFun.View() == plainKey()) return;
    m_strLastFun = plainKey();
}

bool StackLoggerThreadEl::IsTooDeep() const {
    return static_cast<std::uint32_t>(m_nDepth) >= depthLimit;
}

void StackLoggerThreadEl::AddEntry(const CStringA& strKey, std::size_t plainLength) {
    // Room for the last function's name and for one entry more now: once the entry is in, nothing may fail.
    m_strLastFun.Preallocate(static_cast<int>(plainLength));
    m_aAgain.reserve(m_aAgain.size() + 1);
    const std::int32_t entries = m_mapStack.GetSize();
    const int index = m_mapStack.Push(strKey);
    if (index < 0) AfxThrowMemoryException();
    if (m_mapStack.GetSize() == entries && !IsTooDeep()) m_aAgain.push_back(m_mapStack.GetAt(index));
}

void StackLoggerThreadEl::Leave(CStringA& strKey) {
    const Settling settling(m_bSettled);
    const CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return;

    int index = FindEntry(m_mapStack, strKey);
    if (index >= 0 && index != m_mapStack.GetSize() - 1) {
        WarnOfOrder(*m_mapStack.GetAt(index));
        index = FindEntry(m_mapStack, strKey); // a callback may have entered and left functions
    }
    if (index < 0) return;
    const auto again = std::ranges::find(m_aAgain, m_mapStack.GetAt(index));
    if (again != m_aAgain.end())
        m_aAgain.erase(again);
    else
        m_mapStack.Remove(index);
    // An entry that was too deep did not raise the depth.
    if (m_nDepth > 0) --m_nDepth;
    if (!global->m_pfnTrace) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    if (m_nRepeat != 0 && static_cast<std::uint32_t>(m_nDepth) < m_nRepeatDepth) {
        Trace("", {strKey.View(), m_strLastFun.View(), " out repeated: ", std::to_string(m_nRepeat), " "});
        m_nRepeat = 0;
        m_nRepeatDepth = 0;
    }
    if (m_nRepeat == 0) Trace("", {strKey.View(), "->"});
}

void StackLoggerThreadEl::SetMess(CStringA& strKey, const char* szMessage) {
    const Settling settling(m_bSettled);
    if (!g_pGlobalStackLog) return;
    m_mapStack.Add(strKey, szMessage);
    const std::string repeats = m_nRepeat > 0 ? " N " + std::to_string(m_nRepeat) : "";
    Trace(" ", {strKey.View(), repeats, "-: ", szMessage ? szMessage : ""});
}

CStringA StackLoggerThreadEl::GetCurrStackList() const {
    if (!g_pGlobalStackLog) return {};
    CStringA list("StackLog:");
    const int count = std::min(m_nDepth, m_mapStack.GetSize());
    for (int i = 0; i < count; ++i) {
        list += '\n';
        list += m_mapStack.GetAt(i)->m_sKey;
    }
    list += '\n';
    return list;
}

template <class Build> void StackLoggerThreadEl::Warn(const char* szOperation, Build build) const {
    const CGlobalStackLog* const global = g_pGlobalStackLog;
    if (m_bWarning || !global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    const zynStackLogErrorFunction pfnError = global->m_pfnError;
    if (!pfnError) return;
    std::string warning;
    try {
        warning = zyn::StackTime();
        build(warning);
    } catch (const std::bad_alloc&) {
        return;
    }
    m_bWarning = true;
    pfnError(warning.c_str(), szOperation, nullptr);
    m_bWarning = false;
}

void StackLoggerThreadEl::WarnOfDepth(const CStringA& strKey) const {
    Warn(enterName, [&](std::string& text) {
        AppendTooDeep(text, m_nDepth, strKey);
        const int last = m_mapStack.GetSize() - 1;
        text += T("\r\nПервые 10 записей: "_cp1251);
        for (int i = 0; i <= std::min(last, listed - 1); ++i)
            AppendEntry(text, *m_mapStack.GetAt(i));
        text += T("\r\nПоследние 10 записей: "_cp1251);
        for (int i = last - 1; i >= std::max(0, last - listed); --i)
            AppendEntry(text, *m_mapStack.GetAt(i));
    });
}

void StackLoggerThreadEl::WarnOfOrder(const Item& entry) const {
    Warn(leaveName, [&](std::string& text) {
        text.append(entry.m_sKey.View());
        if (!entry.m_sValue.IsEmpty()) text.append("(").append(entry.m_sValue.View()).append(")");
        text += T(" Не последняя в стеке, а из нее произведен выход!"_cp1251);
    });
}

void StackLoggerThreadEl::Trace(const char* szLead, std::initializer_list<std::string_view> pieces) {
    const CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global || !global->m_pfnTrace) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    const zynStackLogTraceFunction pfnTrace = global->m_pfnTrace;
    if (!pfnTrace) return;
    const std::string stamp = zyn::StackTime();
    std::size_t length = stamp.size();
    for (const std::string_view piece : pieces)
        length += piece.size();
    std::string line = std::move(m_strLine); // a callback that logs all the same finds another one
    try {
        line = szLead;
        line.reserve(line.size() + length);
    } catch (const std::bad_alloc&) {
        return;
    }
    line += stamp;
    for (const std::string_view piece : pieces)
        line += piece;
    pfnTrace(line.c_str());
    m_strLine = std::move(line);
}
