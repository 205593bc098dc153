// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynsync.h"
#include "zynplatform/tick.h"

TEST(AtomicLong, IsWrittenInExchangeForTheOldValue) {
    CZynAtomicLong counter(5), other(-2), busy(-7);
    const long before[] = {
        counter = 7,         counter.Add(3),  counter.Increment(),
        counter.Decrement(), counter = true,  counter = 9L,
        counter = other,     counter = false, counter.Set(static_cast<long>(0x1'7FFF'FFFFLL)),
        counter.Increment()};
    EXPECT_THAT(before, testing::ElementsAre(5, 7, 11, 10, 10, 1, 9, -2, 0, INT32_MIN)); // 32 bits wide
    {
        CZynAtomicLongReseter outer(&busy), none(nullptr);
        EXPECT_EQ(busy.Get(), 1);
        { CZynAtomicLongReseter inner(&busy); }
        EXPECT_EQ((busy = 3), 0); // a flag and no count
    }
    struct Holder {
        CZynAtomicLong counter;
    } first{7}, second(first), third;
    third = second;
    EXPECT_EQ(busy.Get() + third.counter.Get(), 0 + 7);
}

// Of two threads that each write a number and then read the other one's, with a counter read in between, at
// least one sees what the other has written.
TEST(AtomicLongThreads, ReadingIsAFullBarrier) {
    constexpr int rounds = 100'000;
    const CZynAtomicLong counter;
    struct Side {
        alignas(64) std::atomic<int> round{0};
        alignas(64) std::atomic<int> written{0};
        std::vector<char> isSeen = std::vector<char>(rounds + 1);
    } sides[2];
    const auto work = [&](Side& own, Side& other) {
        for (int i = 1; i <= rounds; ++i) {
            own.round = i;
            for (int tries = 0; other.round < i;)
                if (++tries % 1000 == 0) std::this_thread::yield();
            own.written.store(i, std::memory_order_relaxed);
            counter.Get();
            own.isSeen[static_cast<std::size_t>(i)] = other.written.load(std::memory_order_relaxed) >= i;
        }
    };
    std::jthread first(work, std::ref(sides[0]), std::ref(sides[1]));
    work(sides[1], sides[0]);
    first.join();
    for (std::size_t i = 1; i <= rounds; ++i)
        ASSERT_TRUE(sides[0].isSeen[i] || sides[1].isSeen[i]) << i;
}

static int Depth(const _RTL_CRITICAL_SECTION& section) {
    return section.lock ? section.recursion : 0;
}
struct Section : CZynCriticalSection {
    int Depth() const { return ::Depth(m_section); }
};
static constinit Section constructedAtCompileTime; // does not compile if a constructor had to run
alignas(Section) static unsigned char zeroFilled[sizeof(Section)];

TEST(ZynCriticalSection, CanBeEnteredBeforeConstructionAndAfterDestruction) {
    auto* section = reinterpret_cast<Section*>(zeroFilled);
    for (const bool isDestroyed : {false, true}) {
        if (isDestroyed) (new (section) Section)->~Section();
        section->LeaveZynCriticalSection();
        for (const auto& [isEntered, depth] : {std::pair(true, 1), {true, 2}, {false, 1}, {false, 0}}) {
            isEntered ? section->EnterZynCriticalSection() : section->LeaveZynCriticalSection();
            EXPECT_EQ(section->Depth(), depth);
        }
    }
}

TEST(EnterCriticalSection, HoldsOneSectionAtATimeAndLeavesItExactlyOnce) {
    Section first, second, *const none = nullptr;
    _RTL_CRITICAL_SECTION raw{}, otherRaw{}, *const noRaw = nullptr;
    first.EnterZynCriticalSection(); // a leave too many would show
    zynplatform::EnterCriticalSection(&raw);
    const auto depths = [&] {
        return first.Depth() * 1000 + second.Depth() * 100 + Depth(raw) * 10 + Depth(otherRaw);
    };
    {
        CzynEnterCriticalSection lock(&first), rawLock(&raw), nothing(none);
        const std::pair<std::function<void()>, int> steps[] = {
            {[&] { lock.Set(&second); }, 1120}, {[&] { nothing.Leave(); }, 1120},
            {[&] { lock.Set(none); }, 1020},    {[&] { lock.Set(&otherRaw); }, 1021},
            {[&] { lock.Set(&first); }, 2020}, // the system section must not be taken for the one held
            {[&] { lock.Leave(); }, 1020},      {[&] { lock.Leave(); }, 1020},
            {[&] { rawLock.Leave(); }, 1010},   {[&] { rawLock.Leave(); }, 1010},
            {[&] { lock.Set(&raw); }, 1020},    {[&] { lock.Set(noRaw); }, 1010},
            {[&] { lock.Set(&first); }, 2010},  {[&] { rawLock.Set(&otherRaw); }, 2011},
        };
        EXPECT_EQ(depths(), 2020);
        for (const auto& [step, expected] : steps) {
            step();
            EXPECT_EQ(depths(), expected);
        }
    }
    EXPECT_EQ(depths(), 1010); // left at the end
}

static std::uint32_t tick;

TEST(TimeMeter, MeasuresAcrossTheWrapOfTheTick) {
    zynplatform::SetTickSource([] { return tick; });
    constexpr std::uint32_t half = 0x80000000, small = 1u << 28;
    EXPECT_EQ(CzynTimeMeter::GetHalfDWORD(), half);
    const std::tuple<std::uint32_t, std::uint32_t, std::uint32_t> cases[] = {{5, 5, 0},
                                                                             {5, 1005, 1000},
                                                                             {half, half + 10, 10},
                                                                             {half + 1, half + 11, 10},
                                                                             {0u - small, 256, small + 256},
                                                                             {half - 1, 0xFFFFFFFF, half}};
    for (const auto& [started, now, delta] : cases) {
        const std::uint32_t kept = started > half ? started - half : started;
        SCOPED_TRACE(started);
        tick = 0;
        CzynTimeMeter meter;
        tick = started;
        EXPECT_EQ(meter.Start(), kept);
        tick = now;
        EXPECT_EQ(meter.GetTickDelta(), delta);
        EXPECT_TRUE(!meter.CheckTimeOut(delta) && (delta == 0 || meter.CheckTimeOut(delta - 1)));
        meter.Zero();
        EXPECT_EQ(meter.GetTickDelta(), now);
        EXPECT_TRUE(!meter.CheckTimeOut(now) && meter.CheckTimeOut(now - 1));
    }
    zynplatform::SetTickSource(nullptr);
}
