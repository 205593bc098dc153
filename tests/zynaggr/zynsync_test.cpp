#include "zynaggr/zynsync.h"

#include "zynplatform/tick.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <new>
#include <tuple>

namespace {

TEST(AtomicLong, AssignmentsReturnTheOldValue) {
    CZynAtomicLong counter(5);
    CZynAtomicLong other(-2);
    EXPECT_EQ((counter = 7), 5);
    EXPECT_EQ(counter.Add(3), 7);
    EXPECT_EQ(counter.Increment(), 11);
    EXPECT_EQ(counter.Decrement(), 10);
    EXPECT_EQ((counter = true), 10);
    EXPECT_EQ((counter = 9L), 1);
    EXPECT_EQ((counter = other), 9);
    EXPECT_EQ((counter = false), -2);
    EXPECT_EQ(counter.Set(static_cast<long>(0x1'7FFF'FFFFLL)), 0);
    EXPECT_EQ(counter.Increment(), std::numeric_limits<std::int32_t>::min()); // 32 bits wide
}

TEST(AtomicLongReseter, IsABusyFlagAndNoCount) {
    CZynAtomicLong busy(-7);
    {
        CZynAtomicLongReseter outer(&busy), none(nullptr);
        EXPECT_EQ(busy.Get(), 1);
        { CZynAtomicLongReseter inner(&busy); }
        EXPECT_EQ((busy = 3), 0);
    }
    EXPECT_EQ(busy.Get(), 0);
}

int Depth(const _RTL_CRITICAL_SECTION& section) {
    return section.lock ? section.recursion : 0;
}
struct Section : CZynCriticalSection {
    int Depth() const { return ::Depth(m_section); }
};
constinit Section constructedAtCompileTime; // does not compile if a constructor had to run
alignas(Section) unsigned char zeroFilled[sizeof(Section)];

TEST(ZynCriticalSection, CanBeEnteredBeforeConstructionAndAfterDestruction) {
    auto* section = reinterpret_cast<Section*>(zeroFilled);
    const auto enterTwiceAndLeave = [&] {
        section->LeaveZynCriticalSection();
        section->EnterZynCriticalSection();
        section->EnterZynCriticalSection();
        EXPECT_EQ(section->Depth(), 2);
        section->LeaveZynCriticalSection();
        section->LeaveZynCriticalSection();
        EXPECT_EQ(section->Depth(), 0);
    };
    enterTwiceAndLeave();
    new (section) Section;
    section->~Section();
    enterTwiceAndLeave();
}

TEST(EnterCriticalSection, HoldsOneSectionAtATimeAndLeavesItExactlyOnce) {
    Section first, second;
    _RTL_CRITICAL_SECTION raw{}, otherRaw{};
    first.EnterZynCriticalSection(); // a leave too many would show
    zynplatform::EnterCriticalSection(&raw);
    using Depths = std::array<int, 4>;
    const auto depths = [&] { return Depths{first.Depth(), second.Depth(), Depth(raw), Depth(otherRaw)}; };
    {
        CzynEnterCriticalSection lock(&first);
        EXPECT_EQ(depths(), (Depths{2, 0, 1, 0}));
        lock.Set(&second);
        EXPECT_EQ(depths(), (Depths{1, 1, 1, 0}));
        lock.Set(static_cast<CZynCriticalSection*>(nullptr));
        lock.Set(&otherRaw);
        EXPECT_EQ(depths(), (Depths{1, 0, 1, 1}));
        lock.Set(&first); // the system section must not be taken for the one held
        EXPECT_EQ(depths(), (Depths{2, 0, 1, 0}));
        lock.Leave();
        lock.Leave();
        lock.Set(&raw);
        lock.Set(static_cast<_RTL_CRITICAL_SECTION*>(nullptr));
        EXPECT_EQ(depths(), (Depths{1, 0, 1, 0}));
        CzynEnterCriticalSection atEnd(&first), rawAtEnd(&raw);
        EXPECT_EQ(depths(), (Depths{2, 0, 2, 0}));
        rawAtEnd.Leave();
        rawAtEnd.Leave();
        CzynEnterCriticalSection none(static_cast<CZynCriticalSection*>(nullptr));
        none.Leave();
    }
    EXPECT_EQ(depths(), (Depths{1, 0, 1, 0}));
}

std::uint32_t tick;

TEST(TimeMeter, MeasuresAcrossTheWrapOfTheTick) {
    zynplatform::SetTickSource([] { return tick; });
    const std::uint32_t half = 0x80000000;
    const std::uint32_t small = 1u << 28;
    const struct {
        std::uint32_t started, kept, now, delta;
    } cases[] = {
        {5, 5, 5, 0},
        {5, 5, 1005, 1000},
        {half, half, half + 10, 10},
        {half + 1, 1, half + 11, 10},
        {0u - small, half - small, 256, small + 256},
        {half - 1, half - 1, 0xFFFFFFFF, half},
    };
    EXPECT_EQ(CzynTimeMeter::GetHalfDWORD(), half);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.started);
        tick = 0;
        CzynTimeMeter meter;
        tick = c.started;
        EXPECT_EQ(meter.Start(), c.kept);
        tick = c.now;
        EXPECT_EQ(meter.GetTickDelta(), c.delta);
        EXPECT_FALSE(meter.CheckTimeOut(c.delta));
        EXPECT_TRUE(c.delta == 0 || meter.CheckTimeOut(c.delta - 1));
        meter.Zero();
        EXPECT_EQ(meter.GetTickDelta(), c.now);
        EXPECT_TRUE(meter.CheckTimeOut(c.now - 1));
        EXPECT_FALSE(meter.CheckTimeOut(c.now));
    }
    zynplatform::SetTickSource(nullptr);
}

} // namespace
