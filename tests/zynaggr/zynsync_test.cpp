#include "zynaggr/zynsync.h"

#include "zynplatform/tick.h"

#include <gmock/gmock.h>

#include <new>

namespace {

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
    for (const bool isDestroyed : {false, true}) {
        if (isDestroyed) (new (section) Section)->~Section();
        section->LeaveZynCriticalSection();
        for (const int depth : {1, 2}) {
            section->EnterZynCriticalSection();
            EXPECT_EQ(section->Depth(), depth);
        }
        for (const int depth : {1, 0}) {
            section->LeaveZynCriticalSection();
            EXPECT_EQ(section->Depth(), depth);
        }
    }
}

TEST(EnterCriticalSection, HoldsOneSectionAtATimeAndLeavesItExactlyOnce) {
    CZynCriticalSection* const nothing = nullptr;
    Section first, second;
    _RTL_CRITICAL_SECTION raw{}, otherRaw{};
    first.EnterZynCriticalSection(); // a leave too many would show
    zynplatform::EnterCriticalSection(&raw);
    const auto depths = [&] {
        return first.Depth() * 1000 + second.Depth() * 100 + Depth(raw) * 10 + Depth(otherRaw);
    };
    {
        CzynEnterCriticalSection lock(&first);
        EXPECT_EQ(depths(), 2010);
        lock.Set(&second);
        EXPECT_EQ(depths(), 1110);
        lock.Set(nothing);
        lock.Set(&otherRaw);
        EXPECT_EQ(depths(), 1011);
        lock.Set(&first); // the system section must not be taken for the one held
        EXPECT_EQ(depths(), 2010);
        lock.Leave();
        lock.Leave();
        lock.Set(&raw);
        lock.Set(static_cast<_RTL_CRITICAL_SECTION*>(nullptr));
        EXPECT_EQ(depths(), 1010);
        CzynEnterCriticalSection atEnd(&first), rawAtEnd(&raw), none(nothing);
        EXPECT_EQ(depths(), 2020);
        rawAtEnd.Leave();
        rawAtEnd.Leave();
        none.Leave();
    }
    EXPECT_EQ(depths(), 1010);
}

std::uint32_t tick;

TEST(TimeMeter, MeasuresAcrossTheWrapOfTheTick) {
    zynplatform::SetTickSource([] { return tick; });
    constexpr std::uint32_t half = 0x80000000, small = 1u << 28;
    EXPECT_EQ(CzynTimeMeter::GetHalfDWORD(), half);
    const std::uint32_t cases[][4] = {{5, 5, 5, 0},
                                      {5, 5, 1005, 1000},
                                      {half, half, half + 10, 10},
                                      {half + 1, 1, half + 11, 10},
                                      {0u - small, half - small, 256, small + 256},
                                      {half - 1, half - 1, 0xFFFFFFFF, half}};
    for (const auto& [started, kept, now, delta] : cases) {
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

} // namespace
