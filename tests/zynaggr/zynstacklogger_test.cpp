// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/beep.h"
#include "zynplatform/tick.h"
#include "zynplatform/time.h"

#include <barrier>
#include <pthread.h>

using External = CzynStackLogger;

using Texts = std::vector<std::string>;
static Texts traced, warned;
static std::string beeps;
static std::atomic<std::uint32_t> tick;
static std::atomic<int> timeReads;

// Every thread has the same id, and the clocks go on by one with each look at them.
struct StackLogger : testing::Test {
    StackLogger() {
        traced = warned = {};
        beeps.clear();
        tick = 7, timeReads = 0;
        zynplatform::SetThreadIdSource([] { return 0xA1Cu; });
        zynplatform::SetTickSource([] { return tick++; });
        zynplatform::SetTimeSource([] { return std::int64_t{61'509'000} + timeReads++; }); // 17:05:09
        zynplatform::SetBeep([](auto hz, auto ms) { beeps += std::to_string(hz * 1000 + ms) + " "; });
        const auto warn = [](auto text, auto from, auto extra) {
            warned.push_back(std::string(from) + (extra ? "" : " ") + text);
        };
        GlobalStackLogInit(warn, [](auto line) { traced.emplace_back(line); });
    }
    ~StackLogger() override {
        GlobalStackLogDestroy();
        zynplatform::SetThreadIdSource(nullptr);
        zynplatform::SetTickSource(nullptr);
        zynplatform::SetTimeSource(nullptr);
        zynplatform::SetBeep(nullptr);
    }
    const Variable zone{"TZ", "UTC"};
    static StackLoggerThreadEl& Element() { return *g_pGlobalStackLog.load()->GetAt(0); }
    static int Entries() { return Element().m_nDepth * 10'000 + Element().m_mapStack.GetSize(); }
    static std::vector<CStringA> EnterAll(std::size_t count) {
        std::vector<CStringA> keys(count, "F");
        for (CStringA& key : keys)
            External::ExternalEnter(key, true);
        return keys;
    }
};
using StackLoggerThreads = StackLogger;

static void Call(const char* name, const char* message = nullptr, bool logEveryCall = false) {
    CzynStackLogger logger(name, logEveryCall);
    if (message) logger.SetFunctionInfo(message);
}

TEST_F(StackLogger, WritesEveryStepOfANestedProgram) {
    {
        CzynStackLogger foo("Foo", false);
        foo.SetFunctionInfo("one");
        Call("Bar");
        Call("Bar", "again");
        Call("Bar");
        EXPECT_STREQ(foo.GetCurrStackList(), "StackLog:\nt0x0A1C L000:00007 Fun Foo\n");
        Call("Baz", nullptr, true);
        Call("Baz", nullptr, true);
        Call("Baz");
        foo.SetFunctionInfo(nullptr);
    }
    tick = 0xFFFFFFF0;
    Call("Baz"); // the function entered last
    Call("Foo");
    std::string lines;
    for (std::size_t i = 0; i < traced.size(); ++i) {
        const std::string time = "17:05:09." + std::to_string(1000 + i).substr(1) + " t0x0A1C L";
        EXPECT_EQ(traced[i].find(time), traced[i].find("-: ") != std::string::npos) << traced[i]; // at 0 or 1
        lines += traced[i].substr(traced[i].find('L')) + "|";
    }
    EXPECT_EQ(lines,
              "L000:00007 Fun Foo-<|L000:00007 Fun Foo-: one|L001:00008 Fun Bar-<|L001:00008 Fun Bar->|"
              "L001:00009 Fun Bar N 1-: again|"
              "L001:00011 Fun BazFun Bar in repeated: 2 |L001:00011 Fun Baz-<|L001:00011 Fun Baz->|"
              "L001:00012 Fun Baz-<|L001:00012 Fun Baz->|L000:00007 Fun Foo N 1-: |"
              "L000:00007 Fun FooFun Baz out repeated: 1 |L000:00007 Fun Foo->|"
              "L000:-0015 Fun FooFun Baz in repeated: 1 |L000:-0015 Fun Foo-<|L000:-0015 Fun Foo->|");
    EXPECT_EQ(warned, Texts());
}

TEST_F(StackLogger, WarnsOnceOfDepthAndThenRefusesToGoDeeper) {
    Call("Foo", "gone");
    std::vector<CStringA> keys = EnterAll(1050);
    External::ExternalSetFunctionInfo(keys[9], "ten");
    timeReads = 0;
    External::ExternalEnter(keys.emplace_back("deep"), true);
    std::string expected =
        "StackLoggerThreadEl::Enter 17:05:09.000 Глубина стека превысила 1050 !! Функция t0x0A1C L1050:01058 deep\r\nПервые 10 записей: "_cp1251;
    for (std::size_t i = 0; i < 10; ++i)
        expected.append("\r\n").append(keys[i]).append(i == 9 ? " (ten)" : "");
    expected += "\r\nПоследние 10 записей: "_cp1251;
    for (std::size_t i = 998; i > 988; --i)
        expected.append("\r\n").append(keys[i]);
    EXPECT_EQ(warned, (Texts{expected}));

    while (keys.size() < 1105)
        External::ExternalEnter(keys.emplace_back("deeper"), true);
    EXPECT_EQ(Entries(), 1100'1105);
    EXPECT_EQ(beeps.substr(0, 16) + std::to_string(beeps.size()), "1000100 1400100 80");
    try {
        Element().Enter(keys.emplace_back("thrown"), true);
        FAIL();
    } catch (const SzynErrorDescription& error) {
        EXPECT_EQ(error.m_nCode * 10 + error.m_nModule, 1060);
        EXPECT_EQ(error.m_strSrc + error.m_strFun, "zynaggr.cppStackLoggerThreadEl::Enter");
        EXPECT_EQ(error.m_strDescr.Mid(13), "Глубина стека превысила 1100 !! Функция "_cp1251 + keys.back());
    }
    for (; !keys.empty(); keys.pop_back())
        External::ExternalLeave(keys.back());
    EXPECT_EQ(Entries(), 0);
    EXPECT_EQ(warned.size(), 1u + 106u); // beyond 999 the deepest entry is not the last one
}

TEST_F(StackLogger, LeavesAnyEntryAndOnlyThoseAsOftenAsEntered) {
    zynplatform::SetTickSource([] { return 7u; });
    std::vector<CStringA> keys = EnterAll(3);
    CStringA plain("F"), unknown("unknown");
    External::ExternalSetFunctionInfo(keys[1], "why");
    for (CStringA* key : {&plain, &keys[1], &keys[1]})
        External::ExternalLeave(*key);
    const CStringA warning = keys[1] + "(why) Не последняя в стеке, а из нее произведен выход!"_cp1251;
    EXPECT_EQ(warned, (Texts{"StackLoggerThreadEl::Leave 17:05:09.004 " + std::string(warning.View())}));
    EXPECT_EQ(traced.size(), 5u);
    External::ExternalSetFunctionInfo(unknown, "new");
    EXPECT_EQ(Entries(), 2'0003);
    External::ExternalEnter(plain, true);
    EXPECT_EQ(plain, keys[2]); // at the same depth within the same tick
    for (const int entries : {2'0003, 1'0002}) {
        EXPECT_EQ(Element().GetCurrStackList().Find(keys[2] + "\n"), 10 + keys[0].GetLength() + 1);
        External::ExternalLeave(plain);
        EXPECT_EQ(Entries(), entries);
    }
}

TEST_F(StackLogger, DoesNothingWhileOff) {
    CzynStackLogger logger("Foo", false);
    CStringA key("plain");
    EXPECT_FALSE(SetStackLoggerMode(false));
    CzynStackLogger inactive("Bar", false);
    External::ExternalEnter(key, false);
    EXPECT_TRUE(logger.GetCurrStackList().IsEmpty());
    logger.Leave();
    EXPECT_TRUE(SetStackLoggerMode(true));
    inactive.SetFunctionInfo("x");
    EXPECT_TRUE(inactive.GetCurrStackList().IsEmpty());
    EXPECT_EQ(Entries() + static_cast<int>(traced.size()), 1'0002); // it is still in
    GlobalStackLogInit(nullptr, nullptr);
    Call("Foo");
    logger.Leave();
    logger.SetFunctionInfo("x");
    EXPECT_TRUE(Entries() == 0 && Element().m_nRepeat == 1); // the run is kept without a trace callback
    const CzynStackLogger active("Foo", false);
    GlobalStackLogDestroy();
    External::ExternalEnter(key, false);
    EXPECT_TRUE(active.GetCurrStackList().IsEmpty() && !SetStackLoggerMode(true) && key == "plain");
}

TEST_F(StackLogger, CallbacksMayLogThemselves) {
    static std::vector<CStringA> keys;
    keys = EnterAll(3);
    const auto warn = [](auto, auto, auto) { External::ExternalLeave(keys[0]); };
    GlobalStackLogInit(warn, [](auto line) {
        if (std::string_view(line).ends_with("Fun Foo-<")) Call("logs"), Call("logs");
    });
    External::ExternalLeave(keys[1]);
    EXPECT_EQ(Element().GetCurrStackList(), "StackLog:\n" + keys[2] + "\n");
    const CzynStackLogger first("Foo", true), second("Foo", true), repeat("Foo", false);
    EXPECT_EQ(Element().m_nRepeat, 1);
}

TEST_F(StackLogger, SaysSoWhenThereIsNoMemoryToStart) {
    GlobalStackLogDestroy();
    SzynErrorDescription::SetRetranslateMemoryExeption(true); // the array's failures too
    for (long n = 1, failures = 1; failures > 0; ++n) {
        const FailingNew failing(n);
        const bool isOn = GlobalStackLogInit(nullptr, nullptr);
        failures = failing.Failures();
        EXPECT_EQ(isOn, failures == 0) << n;
    }
    SzynErrorDescription::SetRetranslateMemoryExeption(false);
}

TEST_F(StackLoggerThreads, EachHasAStackOfItsOwnAsLongAsAnythingOfItRuns) {
    static std::atomic<int> wrong{0};
    static std::barrier together(8);
    pthread_key_t atTheEnd{}; // the last of a thread to run
    pthread_key_create(&atTheEnd, [](void* outer) {
        std::thread([] { Call("looks for ended threads"); }).join();
        wrong += CzynStackLogger("the end", true).GetCurrStackList().Find("left for good") < 0;
        delete static_cast<CzynStackLogger*>(outer);
    });
    const auto work = [=](int number) {
        const std::string name = "worker" + std::to_string(number);
        pthread_setspecific(atTheEnd, new CzynStackLogger(name.c_str(), true));
        const CzynStackLogger inner(name.c_str(), true);
        CStringA left("left for good"), list = inner.GetCurrStackList();
        wrong += list.Replace(("Fun " + name + "\n").c_str(), "") != 2 || list.Replace('\n', ' ') != 1;
        External::ExternalEnter(left, true);
        together.arrive_and_wait();
    };
    for (int round = 0; round < 20; ++round) {
        if (round == 10) GlobalStackLogInit(nullptr, nullptr); // and no lock
        std::vector<std::jthread> running;
        for (int i = 0; i < 8; ++i)
            running.emplace_back(work, i);
        running.clear();
        g_pGlobalStackLog.load()->RemoveFinishedThreads();
        EXPECT_EQ(g_pGlobalStackLog.load()->GetSize(), 0);
    }
    pthread_key_delete(atTheEnd);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(traced.size(), 8u * 10 * 9);
    EXPECT_TRUE(std::ranges::is_sorted(traced, {}, [](const auto& line) { return line.substr(0, 12); }));
}
