// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/criticalsection.h"
#include "zynplatform/export.h"

#include <atomic>
#include <cstdint>

// What threads share state with: an atomic counter and a busy flag on it, critical sections and a guard for
// them, and a stopwatch.

// A signed 32-bit counter, safe from any thread; each operation is a full barrier, reading too. Values wrap
// at 2^32; what is wider is cut to 32 bits.
//
// Every assignment returns the OLD value, not the new one and not a reference:
//
//     CZynAtomicLong counter(5);
//     long before = (counter = 7);   // 5
//
// As a condition the counter is true when it is greater than 0. Read it into a `long`: assigned to an `int`
// it would convert through bool.
class ZYN_API CZynAtomicLong {
public:
    // With the low 32 bits of a value.
    CZynAtomicLong(long lValue = 0) : m_lValue(static_cast<std::int32_t>(lValue)) {}
    CZynAtomicLong(const CZynAtomicLong& other) : CZynAtomicLong(other.Get()) {}

    // The value now.
    long Get() const { return m_lValue.fetch_add(0); }
    // Both return the value before.
    long Set(long lValue) { return m_lValue.exchange(static_cast<std::int32_t>(lValue)); }
    long Add(long lValue) { return m_lValue.fetch_add(static_cast<std::int32_t>(lValue)); }
    // Both return the value after.
    long Increment() { return ++m_lValue; }
    long Decrement() { return --m_lValue; }

    // Reads the other counter, then sets this one: two atomic steps, not one.
    long operator=(const CZynAtomicLong& other) { return Set(other.Get()); }
    long operator=(const int& nValue) { return Set(nValue); }
    long operator=(const long& lValue) { return Set(lValue); }
    long operator=(const bool& bValue) { return Set(bValue ? 1 : 0); }

    // The value; whether it is greater than 0.
    operator long() const { return Get(); }
    operator bool() const { return Get() > 0; }

    // Each counter is read atomically by itself.
    bool operator==(const CZynAtomicLong& other) const { return Get() == other.Get(); }
    bool operator!=(const CZynAtomicLong& other) const { return Get() != other.Get(); }
    bool operator==(const int& nValue) const { return Get() == nValue; }
    bool operator!=(const int& nValue) const { return Get() != nValue; }
    bool operator<(const int& nValue) const { return Get() < nValue; }
    bool operator<=(const int& nValue) const { return Get() <= nValue; }
    bool operator>(const int& nValue) const { return Get() > nValue; }
    bool operator>=(const int& nValue) const { return Get() >= nValue; }

protected:
    mutable std::atomic<std::int32_t> m_lValue;
};

// Sets a counter to 1 for the length of a scope and to 0 at its end; null is allowed and does nothing. A busy
// flag, not a count: of two on one counter the inner one's end leaves it 0.
class ZYN_API CZynAtomicLongReseter {
public:
    // The counter must outlive it.
    explicit CZynAtomicLongReseter(CZynAtomicLong* pTarget) : m_pTarget(pTarget) {
        if (m_pTarget) m_pTarget->Set(1);
    }
    ~CZynAtomicLongReseter() {
        if (m_pTarget) m_pTarget->Set(0);
    }
    CZynAtomicLongReseter(const CZynAtomicLongReseter&) = delete;
    CZynAtomicLongReseter& operator=(const CZynAtomicLongReseter&) = delete;

protected:
    CZynAtomicLong* m_pTarget; // not owned
};

// A critical section: the thread that holds it may enter again, and leaves as often as it entered. Leaving in
// a thread that does not hold it does nothing. Use it through CzynEnterCriticalSection.
//
// A section of static storage can be entered before constructors have run: the constructor is evaluated at
// compile time and nothing runs later that could reset it. Where it is part of a larger static object whose
// constructor does run at start-up, it works before as well, but the constructor then makes it a free
// section, also if some thread holds it at that moment. After destruction at exit it can still be entered.
//
// In the child of a fork a section that another thread held stays held for good. The library's own ones are
// opened there; those of a host's objects, a CzynINI for instance, are the host's: the child must not use an
// object that other threads were using when the process forked.
class ZYN_API CZynCriticalSection {
public:
    constexpr CZynCriticalSection() : m_section{}, m_bInit(true) {}
    ~CZynCriticalSection();
    CZynCriticalSection(const CZynCriticalSection&) = delete;
    CZynCriticalSection& operator=(const CZynCriticalSection&) = delete;

    // Enter waits until the section is free or the thread's own; Leave undoes one Enter.
    void EnterZynCriticalSection();
    void LeaveZynCriticalSection();
    // In the child of a fork: makes the section free if another thread held it; true if so. What it guards
    // may then be half changed. Only while the child has no second thread.
    bool ResetInForkedChild() { return zynplatform::ResetInForkedChild(&m_section); }

protected:
    void Init();
    bool IsInit();

    _RTL_CRITICAL_SECTION m_section;
    bool m_bInit = false; // the section may be left and deleted
};

// Holds a critical section, of either kind or none, for the length of a scope and leaves it exactly once.
//
//     CzynEnterCriticalSection lock(&m_CS);
//
// It belongs to one thread and one scope, and does not own the section, which must outlive it.
class ZYN_API CzynEnterCriticalSection {
public:
    // Not null.
    explicit CzynEnterCriticalSection(_RTL_CRITICAL_SECTION* pCS);
    // Null gives a guard that holds nothing.
    explicit CzynEnterCriticalSection(CZynCriticalSection* pCS);
    ~CzynEnterCriticalSection();
    CzynEnterCriticalSection(const CzynEnterCriticalSection&) = delete;
    CzynEnterCriticalSection& operator=(const CzynEnterCriticalSection&) = delete;

    // Leaves what is held, then enters the given section; null just leaves. A system section may be set only
    // where no CZynCriticalSection is stored: Leave first.
    void Set(_RTL_CRITICAL_SECTION* pCS);
    void Set(CZynCriticalSection* pCS);

    // Leaves before the end of the scope; a second call does nothing.
    void Leave();

protected:
    void LeaveHeld();

    std::int32_t m_nHold = 0; // 1 while a section is held, else 0
    _RTL_CRITICAL_SECTION* m_pRawCS =
        nullptr; // the one that is left when both are set; stays set after Leave
    CZynCriticalSection* m_pCS = nullptr;
};

// A stopwatch in milliseconds on the system's tick count, safe from any thread. It measures up to 49.7 days;
// times are 32-bit values and right across the wrap of the tick count. CheckTimeOut compares with its
// argument added to the start, so it is meant for limits below 2^31.
class ZYN_API CzynTimeMeter {
public:
    // Starts it.
    CzynTimeMeter();
    CzynTimeMeter(const CzynTimeMeter&) = delete;
    CzynTimeMeter& operator=(const CzynTimeMeter&) = delete;

    // Starts anew from now; returns the start as it is kept (see m_nStartAndShift).
    unsigned long Start();
    // Counts from tick 0: any limit that the tick count exceeds is then over.
    void Zero();
    // Milliseconds since the start.
    unsigned long GetTickDelta();
    // True once more than `dwMs` milliseconds have passed; not yet when exactly so many have.
    bool CheckTimeOut(unsigned long dwMs);

    // 2^31.
    static unsigned long GetHalfDWORD() { return 0x80000000; }

protected:
    // Both at once, so that asking needs no lock. Low half: tick of the start without the shift, at most
    // 2^31; high half: the shift, 0 or 2^31, taken off every tick, which keeps sums with the start from
    // wrapping.
    std::atomic<std::uint64_t> m_nStartAndShift = 0;
};
