// SPDX-License-Identifier: MIT
#include "zynaggr/zynsync.h"

#include "zynplatform/tick.h"

#include <cassert>

CZynCriticalSection::~CZynCriticalSection() {
    if (!IsInit()) return;
    zynplatform::DeleteCriticalSection(&m_section);
    std::atomic_ref<bool>(m_bInit).store(false, std::memory_order_relaxed);
}

// Without the flag the object is zero-filled storage whose constructor is still to come, or is destroyed:
// either way its section is free and usable as it stands, and resetting it would break in on a thread that
// has just entered.
void CZynCriticalSection::Init() {
    std::atomic_ref<bool>(m_bInit).store(true, std::memory_order_relaxed);
}

bool CZynCriticalSection::IsInit() {
    return std::atomic_ref<bool>(m_bInit).load(std::memory_order_relaxed);
}

void CZynCriticalSection::EnterZynCriticalSection() {
    if (!IsInit()) Init();
    zynplatform::EnterCriticalSection(&m_section);
}

void CZynCriticalSection::LeaveZynCriticalSection() {
    if (IsInit()) zynplatform::LeaveCriticalSection(&m_section);
}

CzynEnterCriticalSection::CzynEnterCriticalSection(_RTL_CRITICAL_SECTION* pCS) : m_pRawCS(pCS) {
    zynplatform::EnterCriticalSection(m_pRawCS);
    m_nHold = 1;
}

CzynEnterCriticalSection::CzynEnterCriticalSection(CZynCriticalSection* pCS) {
    if (pCS) Set(pCS);
}

CzynEnterCriticalSection::~CzynEnterCriticalSection() {
    if (m_nHold > 0) LeaveHeld();
}

void CzynEnterCriticalSection::Set(_RTL_CRITICAL_SECTION* pCS) {
    assert(!m_pCS);
    if (m_nHold > 0) Leave();
    m_pRawCS = pCS;
    if (!pCS) return;
    zynplatform::EnterCriticalSection(pCS);
    m_nHold = 1;
}

void CzynEnterCriticalSection::Set(CZynCriticalSection* pCS) {
    if (m_nHold > 0) Leave();
    m_pRawCS = nullptr;
    m_pCS = pCS;
    if (!pCS) return;
    pCS->EnterZynCriticalSection();
    m_nHold = 1;
}

void CzynEnterCriticalSection::Leave() {
    if (m_nHold <= 0) return;
    LeaveHeld();
    if (--m_nHold <= 0) m_pCS = nullptr;
}

void CzynEnterCriticalSection::LeaveHeld() {
    if (m_pRawCS)
        zynplatform::LeaveCriticalSection(m_pRawCS);
    else if (m_pCS)
        m_pCS->LeaveZynCriticalSection();
}

CzynTimeMeter::CzynTimeMeter() {
    Start();
}

unsigned long CzynTimeMeter::Start() {
    const auto half = static_cast<std::uint32_t>(GetHalfDWORD());
    const std::uint32_t tick = zynplatform::TickCount();
    const std::uint32_t shift = tick > half ? half : 0;
    m_nStartAndShift = std::uint64_t{shift} << 32 | (tick - shift);
    return tick - shift;
}

void CzynTimeMeter::Zero() {
    m_nStartAndShift = 0;
}

unsigned long CzynTimeMeter::GetTickDelta() {
    const std::uint64_t both = m_nStartAndShift;
    return zynplatform::TickCount() - static_cast<std::uint32_t>(both >> 32) -
           static_cast<std::uint32_t>(both);
}

bool CzynTimeMeter::CheckTimeOut(unsigned long dwMs) {
    const std::uint64_t both = m_nStartAndShift;
    const auto start = static_cast<std::uint32_t>(both), shift = static_cast<std::uint32_t>(both >> 32);
    return start + static_cast<std::uint32_t>(dwMs) < zynplatform::TickCount() - shift;
}
