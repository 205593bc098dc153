#include "zynaggr/zynstacklogger.h"

#include "zynaggr/zyn_translate.h"
#include "zynaggr/zynerror.h"
#include "zynhost/memory.h"
#include "zynplatform/beep.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/fork.h"
#include "zynplatform/tick.h"
#include "zynplatform/time.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <utility>

using namespace zynplatform::literals;

constinit std::atomic<CGlobalStackLog*> g_pGlobalStackLog{nullptr};

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

// As %0<width>i.
char* PutNumber(char* to, std::int32_t value, int width) {
    char digits[12];
    const char* from = digits;
    const char* const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    if (value < 0) *to++ = *from++;
    to = std::fill_n(to, std::max(0, width - static_cast<int>(end - digits)), '0');
    return std::copy(from, end, to);
}

// As %04X.
char* PutHex(char* to, std::uint32_t value) {
    char digits[8];
    char* const end = digits + sizeof digits;
    char* from = end;
    for (; value != 0 || end - from < 4; value >>= 4)
        *--from = "0123456789ABCDEF"[value & 15];
    return std::copy(from, end, to);
}

char* PutText(char* to, std::string_view text) {
    return std::copy(text.begin(), text.end(), to);
}

// "17:05:09.123 "
using TimeStamp = std::array<char, 13>;

TimeStamp Now() {
    const zynplatform::TimeOfDay time = zynplatform::LocalTimeOfDay();
    TimeStamp stamp{'0', '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', '0', ' '};
    const auto putTwo = [&](std::size_t at, int value) {
        stamp[at] = static_cast<char>('0' + value / 10);
        stamp[at + 1] = static_cast<char>('0' + value % 10);
    };
    putTwo(0, time.hour);
    putTwo(3, time.minute);
    putTwo(6, time.second);
    putTwo(9, time.millisecond / 10);
    stamp[11] = static_cast<char>('0' + time.millisecond % 10);
    return stamp;
}

std::string_view View(const TimeStamp& stamp) {
    return {stamp.data(), stamp.size()};
}

constexpr std::size_t longestPrefix = 48;

// "t0x0A1C L003:1234567 "; returns its end.
char* PutPrefix(char* to, std::uint32_t threadId, std::int32_t depth) {
    to = PutHex(PutText(to, "t0x"), threadId);
    to = PutNumber(PutText(to, " L"), depth, 3);
    to = PutNumber(PutText(to, ":"), static_cast<std::int32_t>(zynplatform::TickCount()), 5);
    return PutText(to, " ");
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

template <class Operation> void BeepWhereItThrowsARecord(Operation operation) {
    try {
        operation();
    } catch (const SzynErrorDescription&) {
        zynplatform::Beep(1000, 100);
        zynplatform::Beep(1400, 100);
    }
}

// The calling thread's element, made where there is none.
StackLoggerThreadEl& ThreadEl(CGlobalStackLog& global) {
    StackLoggerThreadEl* const found = global.FindThreadEl();
    return found ? *found : *new StackLoggerThreadEl(&global);
}

const zynplatform::AtFork atFork([] {
    if (CGlobalStackLog* const global = g_pGlobalStackLog) global->ContinueInForkedChild();
});

} // namespace

// ---- The tracer

bool GlobalStackLogInit(zynStackLogErrorFunction pfnError, zynStackLogTraceFunction pfnTrace) {
    CGlobalStackLog* global = g_pGlobalStackLog;
    if (!global) {
        try {
            auto made = std::make_unique<CGlobalStackLog>();
            if (g_pGlobalStackLog.compare_exchange_strong(global, made.get())) global = made.release();
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const SzynErrorDescription&) { // the array's, when it is asked to throw
            return false;
        }
    }
    CzynEnterCriticalSection lock(global->m_pCS.get());
    global->m_lMode = 1;
    global->m_pfnError = pfnError;
    global->m_pfnTrace = pfnTrace;
    return true;
}

void GlobalStackLogDestroy() {
    delete g_pGlobalStackLog.exchange(nullptr);
}

bool SetStackLoggerMode(bool bOn) {
    CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return false;
    global->m_lMode = bOn;
    return global->m_lMode.Get() > 0;
}

CGlobalStackLog::CGlobalStackLog() : CzynTAggr(8), m_pCS(std::make_unique<CZynCriticalSection>()) {}

CGlobalStackLog::~CGlobalStackLog() = default;

void CGlobalStackLog::AddThreadEl(StackLoggerThreadEl* pEl) {
    CzynEnterCriticalSection lock(m_pCS.get());
    const zynplatform::ForkGuard guard;
    RemoveFinishedThreads();
    if (Add(pEl) < 0) AfxThrowMemoryException();
}

void CGlobalStackLog::RemoveFinishedThreads() {
    CzynEnterCriticalSection lock(m_pCS.get());
    const zynplatform::ForkGuard guard;
    for (int i = GetSize() - 1; i >= 0; --i)
        if (GetAt(i)->m_hThread.IsEnded()) Remove(i);
}

StackLoggerThreadEl* CGlobalStackLog::FindThreadEl() const {
    const std::uint32_t id = zynplatform::CurrentThreadId();
    // An ended thread may have had the same id.
    const auto isCurrent = [&](const StackLoggerThreadEl* el) {
        return el->m_dwThreadId == id && el->m_hThread.IsCurrent();
    };
    StackLoggerThreadEl* const* const found = std::find_if(m_pData, m_pData + m_nSize, isCurrent);
    return found == m_pData + m_nSize ? nullptr : *found;
}

void CGlobalStackLog::ContinueInForkedChild() {
    // A stack that another thread was changing can't even be deleted.
    const bool leaveAlone = m_pCS->ResetInForkedChild();
    const auto isLeft = [&](StackLoggerThreadEl* el) {
        if (!el->m_hThread.IsCurrent()) return !leaveAlone;
        el->m_dwThreadId = zynplatform::CurrentThreadId();
        el->m_hThread = zynplatform::ThreadHandle::OpenCurrent();
        return true;
    };
    m_nSize = static_cast<std::int32_t>(std::stable_partition(m_pData, m_pData + m_nSize, isLeft) - m_pData);
}

// ---- The stack of a thread

StackLoggerThreadEl::StackLoggerThreadEl() : StackLoggerThreadEl(g_pGlobalStackLog) {}

StackLoggerThreadEl::StackLoggerThreadEl(CGlobalStackLog* pGlobal)
    : m_dwThreadId(zynplatform::CurrentThreadId()), m_hThread(zynplatform::ThreadHandle::OpenCurrent()) {
    if (pGlobal) pGlobal->AddThreadEl(this);
}

StackLoggerThreadEl::~StackLoggerThreadEl() = default;

void StackLoggerThreadEl::Enter(CStringA& strKey, bool bLogEveryCall) {
    CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());

    char prefix[longestPrefix];
    const auto prefixLength = static_cast<std::size_t>(PutPrefix(prefix, m_dwThreadId, m_nDepth) - prefix);
    const std::size_t plainLength = strKey.View().size();
    if (plainLength > std::numeric_limits<int>::max() - longestPrefix) AfxThrowMemoryException();
    const auto keyLength = static_cast<int>(prefixLength + plainLength);
    char* const text = strKey.GetBuffer(keyLength);
    std::memmove(text + prefixLength, text, plainLength);
    std::memcpy(text, prefix, prefixLength);
    // Looked up anew each time: a callback may change the caller's variable.
    const auto plainKey = [&] { return strKey.View().substr(std::min(prefixLength, strKey.View().size())); };
    const bool isTooDeep = static_cast<std::uint32_t>(m_nDepth) >= depthLimit;

    const std::int32_t entries = m_mapStack.GetSize();
    int index = -1;
    try {
        // Room for the last function's name and for one entry more now: once the entry is in, nothing may
        // fail.
        const int lastLength = m_strLastFun.GetLength();
        m_strLastFun.GetBuffer(static_cast<int>(plainLength));
        m_strLastFun.ReleaseBuffer(lastLength);
        m_aAgain.reserve(m_aAgain.size() + 1);
        index = m_mapStack.Add(strKey, "");
        if (index < 0) AfxThrowMemoryException();
    } catch (const std::bad_alloc&) { // the caller's key stays what it was
        std::memmove(text, text + prefixLength, plainLength);
        strKey.ReleaseBuffer(static_cast<int>(plainLength));
        throw;
    }
    if (m_mapStack.GetSize() == entries && !isTooDeep) m_aAgain.push_back(m_mapStack.GetAt(index));
    if (m_nDepth == warningDepth) WarnOfDepth(strKey);
    if (isTooDeep) {
        std::string description(View(Now()));
        AppendTooDeep(description, m_nDepth, strKey);
        throw SzynErrorDescription(tooDeep, "zynaggr.cpp", __DATE__, __LINE__, description.c_str(), 0,
                                   enterName, nullptr, nullptr);
    }

    const std::int32_t ended = m_nRepeat;
    const bool isRepeat = !bLogEveryCall && plainKey() == m_strLastFun.View();
    m_nRepeat = isRepeat ? ended + 1 : 0;
    m_nRepeatDepth = isRepeat ? static_cast<std::uint32_t>(m_nDepth) : 0;
    ++m_nDepth;
    if (isRepeat) return;
    if (ended > 0)
        Trace("", {strKey.View(), m_strLastFun.View(), " in repeated: ", std::to_string(ended), " "});
    Trace("", {strKey.View(), "-<"});
    // A callback may have entered functions in between.
    m_nRepeat = 0;
    m_nRepeatDepth = 0;
    if (m_strLastFun.View() == plainKey()) return;
    m_strLastFun.Empty();
    m_strLastFun.Append(plainKey());
}

void StackLoggerThreadEl::Leave(CStringA& strKey) {
    CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());

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
    if (m_nRepeat != 0 && static_cast<std::uint32_t>(m_nDepth) < m_nRepeatDepth) {
        Trace("", {strKey.View(), m_strLastFun.View(), " out repeated: ", std::to_string(m_nRepeat), " "});
        m_nRepeat = 0;
        m_nRepeatDepth = 0;
    }
    if (m_nRepeat == 0) Trace("", {strKey.View(), "->"});
}

void StackLoggerThreadEl::SetMess(CStringA& strKey, const char* szMessage) {
    CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    m_mapStack.Add(strKey, szMessage);
    const std::string repeats = m_nRepeat > 0 ? " N " + std::to_string(m_nRepeat) : "";
    Trace(" ", {strKey.View(), repeats, "-: ", szMessage ? szMessage : ""});
}

CStringA StackLoggerThreadEl::GetCurrStackList() const {
    CGlobalStackLog* const global = g_pGlobalStackLog;
    if (!global) return {};
    CzynEnterCriticalSection lock(global->m_pCS.get());
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
    if (m_bWarning || !global || !global->m_pfnError) return;
    std::string warning;
    try {
        warning = View(Now());
        build(warning);
    } catch (const std::bad_alloc&) {
        return;
    }
    m_bWarning = true;
    global->m_pfnError(warning.c_str(), szOperation, nullptr);
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
    const TimeStamp stamp = Now();
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
    line += View(stamp);
    for (const std::string_view piece : pieces)
        line += piece;
    global->m_pfnTrace(line.c_str());
    m_strLine = std::move(line);
}

// ---- The logger

bool CzynStackLogger::IsActive() const {
    return m_pThreadEl && CGlobalStackLog::Active() == m_pGlobal;
}

void CzynStackLogger::Enter(CGlobalStackLog& global, const char* szFunction, bool bLogEveryCall) {
    CzynEnterCriticalSection lock(global.m_pCS.get());
    BeepWhereItThrowsARecord([&] {
        StackLoggerThreadEl& el = ThreadEl(global);
        // One allocation for the key as it will be in the stack, if the name is of a usual length.
        const std::string_view name(szFunction ? szFunction : "");
        m_strKey.GetBuffer(static_cast<int>(std::min<std::size_t>(name.size(), 1000) + longestPrefix));
        m_strKey.ReleaseBuffer(0);
        m_strKey += "Fun ";
        m_strKey.Append(name);
        m_dwThreadId = el.m_dwThreadId;
        m_pGlobal = &global;
        m_pThreadEl = &el;
        el.Enter(m_strKey, bLogEveryCall);
    });
}

void CzynStackLogger::LeaveStack() {
    if (!IsActive()) return;
    BeepWhereItThrowsARecord([&] { m_pThreadEl->Leave(m_strKey); });
    m_pThreadEl = nullptr;
}

void CzynStackLogger::SetFunctionInfo(const char* szMessage) {
    if (!IsActive()) return;
    m_pThreadEl->SetMess(m_strKey, szMessage);
}

CStringA CzynStackLogger::GetCurrStackList() const {
    return IsActive() ? m_pThreadEl->GetCurrStackList() : CStringA();
}

void CzynStackLogger::ExternalEnter(CStringA& strKey, bool bLogEveryCall) {
    CGlobalStackLog* const global = CGlobalStackLog::Active();
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    BeepWhereItThrowsARecord([&] { ThreadEl(*global).Enter(strKey, bLogEveryCall); });
}

void CzynStackLogger::ExternalLeave(CStringA& strKey) {
    CGlobalStackLog* const global = CGlobalStackLog::Active();
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    if (StackLoggerThreadEl* const el = global->FindThreadEl())
        BeepWhereItThrowsARecord([&] { el->Leave(strKey); });
}

void CzynStackLogger::ExternalSetFunctionInfo(CStringA& strKey, const char* szMessage) {
    CGlobalStackLog* const global = CGlobalStackLog::Active();
    if (!global) return;
    CzynEnterCriticalSection lock(global->m_pCS.get());
    if (StackLoggerThreadEl* const el = global->FindThreadEl()) el->SetMess(strKey, szMessage);
}
