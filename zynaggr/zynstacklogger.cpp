// SPDX-License-Identifier: MIT
#include "zynaggr/zynstacklogger.h"

#include "zynaggr/zynerror.h"
#include "zynhost/memory.h"
#include "zynplatform/beep.h"
#include "zynplatform/fork.h"

#include <algorithm>

constinit std::atomic<CGlobalStackLog*> g_pGlobalStackLog{nullptr};

namespace {

template <class Operation> void BeepWhereItThrowsARecord(Operation operation) {
    try {
        operation();
    } catch (const SzynErrorDescription&) {
        zynplatform::Beep(1000, 100);
        zynplatform::Beep(1400, 100);
    }
}

// What the calling thread found last in the list of a tracer, for as long as no element is deleted. In this
// model it is found without a call; so few bytes find room also when the library is loaded late.
struct LastFound {
    const CGlobalStackLog* tracer;
    StackLoggerThreadEl* el;
    std::uint32_t deletions;
};
[[gnu::tls_model("initial-exec")]] constinit thread_local LastFound lastFound{};
constinit std::atomic<std::uint32_t> deletions{0};

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
        if (GetAt(i)->m_hThread.IsEnded() && GetAt(i)->m_bSettled.load(std::memory_order_acquire)) Remove(i);
}

StackLoggerThreadEl* CGlobalStackLog::FindThreadEl() const {
    const std::uint32_t now = deletions.load(std::memory_order_acquire);
    if (lastFound.tracer == this && lastFound.deletions == now) return lastFound.el;
    CzynEnterCriticalSection lock(m_pCS.get());
    // An ended thread may have had the same id.
    const auto isCurrent = [](const StackLoggerThreadEl* el) { return el->m_hThread.IsCurrent(); };
    StackLoggerThreadEl* const* const found = std::find_if(begin(), end(), isCurrent);
    if (found == end()) return nullptr;
    lastFound = {this, *found, now};
    return *found;
}

void CGlobalStackLog::ContinueInForkedChild() {
    m_pCS->ResetInForkedChild();
    // The others' stacks can't even be deleted: their threads may have been changing them.
    const auto isOthers = [](const StackLoggerThreadEl* el) { return !el->m_hThread.IsCurrent(); };
    m_nSize = static_cast<std::int32_t>(std::remove_if(begin(), end(), isOthers) - begin());
    for (StackLoggerThreadEl* const el : *this) {
        el->m_dwThreadId = zynplatform::CurrentThreadId();
        el->m_hThread = zynplatform::ThreadHandle::OpenCurrent();
    }
}

// ---- The stack of a thread

StackLoggerThreadEl::StackLoggerThreadEl() : StackLoggerThreadEl(g_pGlobalStackLog) {}

StackLoggerThreadEl::StackLoggerThreadEl(CGlobalStackLog* pGlobal)
    : m_dwThreadId(zynplatform::CurrentThreadId()), m_hThread(zynplatform::ThreadHandle::OpenCurrent()) {
    if (pGlobal) pGlobal->AddThreadEl(this);
}

StackLoggerThreadEl::~StackLoggerThreadEl() {
    deletions.fetch_add(1, std::memory_order_release);
}

// ---- The logger

bool CzynStackLogger::IsActive() const {
    return m_pThreadEl && CGlobalStackLog::Active() == m_pGlobal;
}

void CzynStackLogger::Enter(CGlobalStackLog& global, const char* szFunction, bool bLogEveryCall) {
    BeepWhereItThrowsARecord([&] {
        StackLoggerThreadEl& el = ThreadEl(global);
        m_dwThreadId = el.m_dwThreadId;
        m_pGlobal = &global;
        m_pThreadEl = &el;
        el.Enter(m_strKey, "Fun ", szFunction ? szFunction : "", bLogEveryCall);
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
    BeepWhereItThrowsARecord([&] { ThreadEl(*global).Enter(strKey, bLogEveryCall); });
}

void CzynStackLogger::ExternalLeave(CStringA& strKey) {
    CGlobalStackLog* const global = CGlobalStackLog::Active();
    if (!global) return;
    if (StackLoggerThreadEl* const el = global->FindThreadEl())
        BeepWhereItThrowsARecord([&] { el->Leave(strKey); });
}

void CzynStackLogger::ExternalSetFunctionInfo(CStringA& strKey, const char* szMessage) {
    CGlobalStackLog* const global = CGlobalStackLog::Active();
    if (!global) return;
    if (StackLoggerThreadEl* const el = global->FindThreadEl()) el->SetMess(strKey, szMessage);
}
