// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynstrmap.h"
#include "zynaggr/zynsync.h"
#include "zynaggr/zyntaggr.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"
#include "zynplatform/thread.h"

#include <array>
#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Traces the calls of a host program. A traced function makes a CzynStackLogger as its first object:
//
//     void Foo() {
//         CzynStackLogger logger("Foo", false);
//         logger.SetFunctionInfo("nothing to do");
//         ...
//
// As long as nobody has called GlobalStackLogInit, or the mode is off, this costs next to nothing. Otherwise
// each thread has a stack of the functions it is in, and each entry, exit and message is a line for the trace
// callback:
//
//     17:05:09.123 t0x0A1C L000:1234567 Fun Foo-<
//      17:05:09.123 t0x0A1C L000:1234567 Fun Foo-: nothing to do
//     17:05:09.124 t0x0A1C L000:1234567 Fun Foo->
//
// Local time; then the entry's key: thread id, depth, tick count at entry, name; then what happened: -<
// entered, -> left, -: a message, before which " N 2" counts the repeats so far.
//
// A function that is entered several times in a row is written once. The end of the run is told by a line
// that ends in " in repeated: 2 ", from the next function entered, or " out repeated: 2 ", from the function
// around it left; 2 is the number of entries that were not written. With "log every call" each one is
// written.
//
// Told through the warning callback, with the name of the operation: a depth of 1050, and an exit from a
// function that is not the last one in the stack. From a depth of 1100 on, each entry sounds two beeps and
// writes nothing; the stack goes on. The stack is kept sorted by key, which is the order of depth up to 999;
// exits from a greater depth are therefore told as being out of order.
//
// Threads: a thread's stack is its own, and without callbacks no thread waits for another one. One lock
// serialises what is written, in the order of the times in it, and is held while a callback runs. So a
// callback must not wait for a thread that logs. A logger belongs to the thread that made it, for as long as
// anything of that thread runs: the destructors of its thread-local objects and its keys may log too. No
// other thread may use it, or look at its stack. GlobalStackLogDestroy takes no lock: no other thread may be
// logging.
//
// Callbacks must not throw, nor may a thread be cancelled in one: a logger that is destroyed can't let either
// pass, and the process ends. A callback whose own functions are traced is called for them in turn, and has
// to see to it that this ends; warnings that come up while the thread is in a warning are left out.
//
// The child of a fork goes on with the stack of the thread that forked, under that thread's new id; entries
// made before keep their keys (should the new id sort before the old one, exits of the child are told as
// being out of order). The other threads' stacks are gone.
//
// Memory: an entry that finds none throws std::bad_alloc and is not made; lines and warnings that find none
// are left out.

class CzynStackLogger;
class StackLoggerThreadEl;
template <> inline constexpr bool zyn::isStruct<StackLoggerThreadEl> = true; // as hosts know it

// The host's callbacks, for warnings and for lines. The texts are valid during the call.
using zynStackLogErrorFunction = void (*)(const char* szMessage, const char* szSource, const char* szExtra);
using zynStackLogTraceFunction = void (*)(const char* szLine);

// Starts logging, or goes on with other callbacks; null switches that kind of output off. The extra text of a
// warning is null. False when there is no memory.
ZYN_API bool GlobalStackLogInit(zynStackLogErrorFunction pfnError, zynStackLogTraceFunction pfnTrace);
// Ends logging and forgets all stacks. Loggers that are still active do nothing any more; they must be gone
// before logging is started again.
ZYN_API void GlobalStackLogDestroy();
// Switches logging off and on; returns whether it is on now: never before GlobalStackLogInit. What is
// entered while it is on and left while it is off stays in its thread's stack.
ZYN_API bool SetStackLoggerMode(bool bOn);

// The state of the tracer, for the logger; hosts use the functions above.
class ZYN_API CGlobalStackLog : public CzynTAggr<StackLoggerThreadEl*, StackLoggerThreadEl*, 6> {
public:
    CGlobalStackLog();
    ~CGlobalStackLog() override;

    // The one object, or null while there is none or its mode is off.
    static CGlobalStackLog* Active();

    // Takes a new element over, after deleting those whose threads have ended.
    void AddThreadEl(StackLoggerThreadEl* pEl);
    void RemoveFinishedThreads(); // deletes those
    // The calling thread's element, or null.
    StackLoggerThreadEl* FindThreadEl() const;
    // In the child of a fork: opens the lock, and keeps of the elements that of the thread which forked.
    void ContinueInForkedChild();

    std::unique_ptr<CZynCriticalSection> m_pCS;                 // guards the list, and calls of the callbacks
    std::atomic<zynStackLogErrorFunction> m_pfnError = nullptr; // null: no warnings
    std::atomic<zynStackLogTraceFunction> m_pfnTrace = nullptr; // null: no lines
    // Every logger asks for the mode, and so does without the counter's barrier.
    struct Mode : CZynAtomicLong {
        using CZynAtomicLong::operator=;
        bool IsOn() const { return m_lValue.load(std::memory_order_acquire) > 0; } // above 0
    };
    Mode m_lMode; // logging is on while it is above 0
};

// The one tracer, or null while there is none.
extern ZYN_API std::atomic<CGlobalStackLog*> g_pGlobalStackLog;

inline CGlobalStackLog* CGlobalStackLog::Active() {
    CGlobalStackLog* const pGlobal = g_pGlobalStackLog.load(std::memory_order_acquire);
    return pGlobal && pGlobal->m_lMode.IsOn() ? pGlobal : nullptr;
}

// The stack of one thread, for the logger. Make it with new, on its thread: it adds itself to the tracer,
// which deletes it. The operations do nothing while there is no tracer; the mode does not matter to them.
// They and the fields are for this thread alone.
class ZYN_API StackLoggerThreadEl {
public:
    // The keys of the entries with their messages. An entry that leaves it is kept, up to some, for the next
    // one.
    class ZYN_API Stack : public CzynStrStrMap {
    public:
        // As Add with an empty text, fast for a key behind all others.
        ZYN_LOCAL int Push(const CStringA& key);
        // A string with the room of a key that has left.
        ZYN_LOCAL CStringA TakeSpareKey();
        ZYN_LOCAL bool Remove(int index);

    protected:
        std::array<std::unique_ptr<CzynStrStrMapItem>, 16> m_aSpare;
        std::size_t m_nSpare = 0;
    };

    StackLoggerThreadEl();
    // For this tracer, or none, which g_pGlobalStackLog may have ceased to be.
    explicit StackLoggerThreadEl(CGlobalStackLog* pGlobal);
    ~StackLoggerThreadEl();
    StackLoggerThreadEl(const StackLoggerThreadEl&) = delete;
    StackLoggerThreadEl& operator=(const StackLoggerThreadEl&) = delete;

    // Puts thread id, depth and tick before the key and adds it to the stack. From a depth of 1100 on it
    // throws a SzynErrorDescription with code 106; the key is in the stack all the same, the depth as it was.
    void Enter(CStringA& strKey, bool bLogEveryCall);
    // Takes a key out as Enter left it, once for each time that it was entered. Nothing happens when it isn't
    // in the stack.
    void Leave(CStringA& strKey);
    // Replaces the message of a key; one that isn't in the stack is added, which does not raise the depth.
    void SetMess(CStringA& strKey, const char* szMessage);
    // "StackLog:" and the keys in their order, each on a line of its own, with a line feed at the end.
    CStringA GetCurrStackList() const;

    std::uint32_t m_dwThreadId;          // the thread it was made on
    zynplatform::ThreadHandle m_hThread; // the same
    std::int32_t m_nDepth = 0;           // entries not yet left; never below 0
    Stack m_mapStack;                    // key and message of each entry
    CStringA m_strLastFun;            // the function entered last: its key without what Enter puts before it
    std::int32_t m_nRepeat = 0;       // entries of the run that were not written
    std::uint32_t m_nRepeatDepth = 0; // where the run of repeats is
    // Stored behind each change: who finds the thread ended, and deletes this, sees all that it did.
    std::atomic<bool> m_bSettled = true;

protected:
    using Item = CzynStrStrMap::CzynStrStrMapItem;

    friend CzynStackLogger;

    // As Enter, for the key that the two pieces make; the second one may be the key as it is.
    ZYN_LOCAL void Enter(CStringA& strKey, std::string_view lead, std::string_view name, bool bLogEveryCall);
    // Adds the entry for a key whose last characters, so many, are the plain one. It throws with all as it
    // was.
    ZYN_LOCAL void AddEntry(const CStringA& strKey, std::size_t plainLength);
    ZYN_LOCAL bool IsTooDeep() const;

    void WarnOfDepth(const CStringA& strKey) const;
    void WarnOfOrder(const Item& entry) const;
    // Calls the warning callback with the time and what `build` appends.
    template <class Build> void Warn(const char* szOperation, Build build) const;
    // Writes a line: the lead, the time, the pieces.
    void Trace(const char* szLead, std::initializer_list<std::string_view> pieces);

    std::string m_strLine; // keeps its room from line to line
    // One for each entry whose key was there already: of a function that is entered twice within a tick.
    std::vector<const Item*> m_aAgain;
    mutable bool m_bWarning = false; // in a warning callback
};

// An entry in the stack of the thread, for as long as it lives or until Leave. Made while logging is off it
// is inactive and does nothing, also when logging is switched on later.
class ZYN_API CzynStackLogger {
public:
    // The name must not be null.
    CzynStackLogger(const char* szFunction, bool bLogEveryCall) : m_strKey(' ') {
        assert(szFunction);
        if (CGlobalStackLog* const pGlobal = CGlobalStackLog::Active())
            Enter(*pGlobal, szFunction, bLogEveryCall);
    }
    ~CzynStackLogger() { Leave(); }
    CzynStackLogger(const CzynStackLogger&) = delete;
    CzynStackLogger& operator=(const CzynStackLogger&) = delete;

    // Leaves before the end of the scope; a second call does nothing.
    void Leave() {
        if (m_pThreadEl) LeaveStack();
    }
    // Attaches a message to the entry and writes it.
    void SetFunctionInfo(const char* szMessage);
    // The stack of this thread, as StackLoggerThreadEl has it; empty when inactive or logging is off.
    CStringA GetCurrStackList() const;

    // The same steps without a logger object. ExternalEnter takes the key as it is, without "Fun ", and puts
    // thread id, depth and tick before it: pass this variable to the other two, which know the entry by it.
    static void ExternalEnter(CStringA& strKey, bool bLogEveryCall);
    static void ExternalLeave(CStringA& strKey);
    static void ExternalSetFunctionInfo(CStringA& strKey, const char* szMessage);

protected:
    void Enter(CGlobalStackLog& global, const char* szFunction, bool bLogEveryCall);
    void LeaveStack();
    bool IsActive() const;

    CStringA m_strKey; // " " while inactive
    std::uint32_t m_dwThreadId = 0;
    StackLoggerThreadEl* m_pThreadEl = nullptr; // null while inactive and after Leave
    CGlobalStackLog* m_pGlobal = nullptr;
};
