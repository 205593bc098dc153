// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zynaggr.h"
#include "zynhost/memory.h"

#include <limits>

namespace sample {
int alive = 0;
struct Item {
    Item() { ++alive; }
    ~Item() { --alive; }
};
} // namespace sample
template <> inline constexpr bool zyn::isStruct<sample::Item> = true;

namespace {

using sample::alive;
using sample::Item;
using Plain = CzynTAggr<Item*, Item*, 2>;
using Fixed = CzynTAggr<Item*, Item*, 4>;
using Owner = CzynTAggr<Item*, Item*, 6>;
using List = std::vector<Item*>;

Item items[2];
Item *const a = &items[0], *const b = &items[1];

List Elements(const Plain& array) {
    return List(array.begin(), array.end());
}

TEST(PointerArray, CapacityFollowsTheRules) {
    for (const auto& [asked, capacity] : {std::pair{-3, 16}, {0, 16}, {8, 8}})
        EXPECT_EQ(Plain(asked).m_nMaxSize, capacity);
    Plain array;
    const auto expect = [&](bool done, int capacity, bool expected = true) {
        EXPECT_EQ(done, expected);
        EXPECT_EQ(array.m_nMaxSize, capacity);
    };
    for (const int capacity : {34, 70}) {
        while (array.GetSize() < array.m_nMaxSize)
            array.Add(nullptr);
        expect(array.Add(nullptr) >= 0, capacity);
    }
    expect(array.SetSize(34), 70, false);
    expect(array.SetSize(35), 70); // the size in use: the capacity stays
    expect(array.SetSize(36), 36);
    array.RemoveAll();
    expect(array.InsertAt(35, a), 36);
    expect(array.InsertAt(40, a), 41); // beyond the capacity: exactly the room for it
    expect(array.InsertAt(0, b), 84);  // full, but the index is in it

    Plain unique(2);
    unique.m_bUnique = true;
    for (const auto& [item, index] : {std::pair{a, 0}, {b, 1}, {b, 1}})
        EXPECT_EQ(unique.Add(item), index);
    EXPECT_EQ(unique.m_nMaxSize, 2);
    EXPECT_FALSE(unique.InsertAt(9, b)); // but the room is made first
    EXPECT_EQ(unique.m_nMaxSize, 10);
    EXPECT_TRUE(unique.InsertAt(1, b)); // only another slot counts
    EXPECT_EQ(Elements(unique), (List{a, b, b}));
}

TEST(PointerArray, DeletesWhatItOwnsAndOnlyThat) {
    const int before = alive;
    {
        Owner array(4);
        for (int i = 0; i < 3; ++i)
            array.Add(new Item);
        array.InsertAt(4, new Item);
        EXPECT_TRUE(array.Remove(0) && array.Remove(2)); // a null slot
        EXPECT_FALSE(array.Remove(3) || array.Remove(-1));
        EXPECT_EQ(alive, before + 3);
        array.RemoveAll();
        EXPECT_EQ(alive, before);
        array.Add(new Item);

        Fixed fixed(1);
        fixed.Add(new Item);
        EXPECT_FALSE(fixed.Remove(0));
        EXPECT_EQ(alive, before + 2);
    }
    EXPECT_EQ(alive, before);
}

TEST(PointerArray, AssignmentAndAppendRespectOwnership) {
    Plain source(4), target(16);
    for (Item* item : List{a, nullptr, a})
        source.Add(item);
    target.m_bUnique = true;
    target.Add(b);
    target = source; // appended under the old flags: once each
    EXPECT_EQ(Elements(target), (List{a, nullptr}));
    EXPECT_FALSE(target.m_bUnique);
    EXPECT_EQ(target.m_nMaxSize, 3);
    target.Append(target);
    EXPECT_EQ(Elements(target), (List{a, nullptr, a, nullptr}));

    const int before = alive;
    Owner owner(2), other(2);
    owner.Add(new Item);
    other.Add(new Item);
    owner.m_bCanRemove = false;
    other = owner;
    EXPECT_TRUE(other.GetSize() == 0 && other.m_bOwner && !other.m_bCanRemove);
    EXPECT_EQ(alive, before + 1);
}

std::string FailureText(int size, int wanted) {
    return "Ошибка при выделении памяти в CzynTAggr<...>::SetSize: "_cp1251 +
           std::string(CMemoryException::Text()) + "\r\n Size: " + std::to_string(size) +
           "  max_size: " + std::to_string(wanted);
}

TEST(PointerArrayWithoutMemory, ShowsAMessageBoxWithoutAllocatingAndStaysAsItWas) {
    constexpr int most = std::numeric_limits<int>::max();
    testing::internal::CaptureStderr();
    g_bShow_zynMessageBox_Error = false; // does not concern this box
    Plain array(2), full(0);
    array.Add(a);
    array.Add(b);
    long failures = 0;
    bool added = true;
    {
        FailingNew failing(1, FailingNew::onwards);
        added = array.Add(a) != -1 || array.InsertAt(7, a) || array.SetSize(3);
        array.Append(array); // one refusal, and one more for each element
        failures = failing.Failures();
        added = added || full.InsertAt(most, a); // more than the index type can count, memory or not
    }
    full.m_nSize = full.m_nMaxSize = most;
    EXPECT_EQ(full.Add(a), -1);
    full.m_nSize = full.m_nMaxSize = 0;
    g_bShow_zynMessageBox_Error = true;
    std::string shown;
    for (const auto& [size, wanted] :
         {std::pair{2, 6}, {2, 8}, {2, 3}, {2, 4}, {2, 6}, {2, 6}, {0, most}, {most, most}})
        shown += "Ошибка: "_cp1251 + FailureText(size, wanted) + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), shown);
    EXPECT_EQ(failures, 6); // the slots alone
    EXPECT_FALSE(added);
    EXPECT_EQ(array.m_nMaxSize, 2);
    EXPECT_EQ(array.Add(a), 2);
    EXPECT_EQ(Elements(array), (List{a, b, a}));
}

template <class T, int policy> void ExpectThrown(const std::string& name) {
    CzynTAggr<T*, T*, policy> array(8);
    SzynErrorDescription::SetRetranslateMemoryExeption(true);
    SzynErrorDescription thrown;
    try {
        FailingNew failing(1);
        array.SetSize(20);
    } catch (const SzynErrorDescription& record) {
        thrown.Set(record);
    }
    SzynErrorDescription::SetRetranslateMemoryExeption(false);
    const std::string function = "CzynTAggr<" + name + " *," + name + " *," + std::to_string(policy);
    const SzynErrorDescription expected(27, "zynaggr.h", thrown.m_strSrcDate, 1024,
                                        FailureText(0, 20).c_str(), 0, (function + ">::SetSize").c_str(), "",
                                        "");
    EXPECT_EQ(thrown.Print("", false), expected.Print("", false));
    EXPECT_FALSE(thrown.m_strSrcDate.IsEmpty());
    EXPECT_EQ(array.m_nMaxSize, 8);
}

TEST(PointerArrayWithoutMemory, ThrowsARecordOnRequestThatNamesTheElement) {
    ExpectThrown<sample::Item, 2>("struct sample::Item");
    ExpectThrown<CzynStrMap::CzynStrMapItem, 6>("class CzynStrMap::CzynStrMapItem");
    ExpectThrown<CzynStrStrMap::CzynStrStrMapItem, 6>("class CzynStrStrMap::CzynStrStrMapItem");
    ExpectThrown<CzynINI::SOption, 6>("struct CzynINI::SOption");
    ExpectThrown<CzynINI::SSection, 4>("struct CzynINI::SSection");
    ExpectThrown<SKeyVal, 4>("struct SKeyVal");
    ExpectThrown<StackLoggerThreadEl, 6>("struct StackLoggerThreadEl");
}

TEST(PointerArrayWithoutMemory, ShowsALongTranslationWhole) {
    const std::string longText(3000, 'x');
    CzynTranslate::AddStringTranslationPair(
        "Ошибка при выделении памяти в CzynTAggr<...>::SetSize: %s\r\n Size: %i  max_size: %i"_cp1251,
        (longText + "%s %i %i").c_str());
    CzynTranslate::SetShouldTranslate(true);
    testing::internal::CaptureStderr();
    Plain array(8);
    {
        FailingNew failing(1);
        array.SetSize(20);
    }
    CzynTranslate::SetShouldTranslate(false);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Ошибка: "_cp1251 + longText + CMemoryException::Text() + " 0 20\n");
}

} // namespace
