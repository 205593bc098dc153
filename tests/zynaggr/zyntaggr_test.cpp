#include "zynaggr/zyntaggr.h"

#include "support/failing_new.h"
#include "zynaggr/zynerror.h"
#include "zynaggr/zynmessage.h"
#include "zynhost/memory.h"
#include "zynplatform/cp1251.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace zynplatform::literals;

namespace sample {
int alive = 0;
struct Item {
    Item() { ++alive; }
    ~Item() { --alive; }
};
struct Holder {
    class Node {};
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

Item items[8];
Item *const a = &items[0], *const b = &items[1];

List Elements(const Plain& array) {
    return List(array.m_pData, array.m_pData + array.GetSize());
}

TEST(PointerArray, CapacityFollowsTheRules) {
    for (const auto& [asked, capacity] : {std::pair{-3, 16}, {0, 16}, {8, 8}})
        EXPECT_EQ(Plain(asked).m_nMaxSize, capacity);

    Plain array(0);
    for (const int capacity : {34, 70}) {
        while (array.GetSize() < array.m_nMaxSize)
            array.Add(nullptr);
        array.Add(nullptr);
        EXPECT_EQ(array.m_nMaxSize, capacity);
    }
    EXPECT_FALSE(array.SetSize(34));
    EXPECT_TRUE(array.SetSize(35)); // the size in use: the capacity stays
    EXPECT_EQ(array.m_nMaxSize, 70);
    EXPECT_TRUE(array.SetSize(36));
    EXPECT_EQ(array.m_nMaxSize, 36);
    array.RemoveAll();
    EXPECT_TRUE(array.InsertAt(35, a));
    EXPECT_EQ(array.m_nMaxSize, 36);
    EXPECT_TRUE(array.InsertAt(40, a)); // beyond the capacity: exactly the room for it
    EXPECT_EQ(array.m_nMaxSize, 41);
    EXPECT_TRUE(array.InsertAt(0, b)); // full, but the index is in it
    EXPECT_EQ(array.m_nMaxSize, 84);
}

TEST(PointerArray, UniqueRefusesWhatIsThereButMakesTheRoomFirst) {
    Plain array(2);
    array.m_bUnique = true;
    EXPECT_EQ(array.Add(a), 0);
    EXPECT_EQ(array.Add(b), 1);
    EXPECT_EQ(array.Add(b), 1);
    EXPECT_EQ(array.m_nMaxSize, 2);
    EXPECT_FALSE(array.InsertAt(9, b));
    EXPECT_EQ(array.m_nMaxSize, 10);
    EXPECT_TRUE(array.InsertAt(1, b)); // only another slot counts
    EXPECT_EQ(Elements(array), (List{a, b, b}));
}

TEST(PointerArray, DeletesWhatItOwnsAndOnlyThat) {
    const int before = alive;
    {
        Owner array(4);
        for (int i = 0; i < 3; ++i)
            array.Add(new Item);
        array.InsertAt(4, new Item);
        EXPECT_TRUE(array.Remove(0));
        EXPECT_FALSE(array.Remove(4));
        EXPECT_FALSE(array.Remove(-1));
        EXPECT_TRUE(array.Remove(2)); // a null slot
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
    EXPECT_EQ(other.GetSize(), 0);
    EXPECT_TRUE(other.m_bOwner);
    EXPECT_FALSE(other.m_bCanRemove);
    EXPECT_EQ(alive, before + 1);
}

std::string FailureText(int size, int wanted) {
    return "Ошибка при выделении памяти в CzynTAggr<...>::SetSize: "_cp1251 +
           std::string(CMemoryException::Text()) + "\r\n Size: " + std::to_string(size) +
           "  max_size: " + std::to_string(wanted);
}

TEST(PointerArrayWithoutMemory, ShowsAMessageBoxWithoutAllocatingAndStaysAsItWas) {
    testing::internal::CaptureStderr();
    g_bShow_zynMessageBox_Error = false; // does not concern this box
    Plain array(2);
    array.Add(a);
    array.Add(b);
    long failures = 0;
    bool added = true;
    {
        FailingNew failing(1, FailingNew::onwards);
        added = array.Add(a) != -1 || array.InsertAt(7, a) || array.SetSize(3);
        array.Append(array); // one refusal, and one more for each element
        failures = failing.Failures();
    }
    g_bShow_zynMessageBox_Error = true;
    std::string shown;
    for (const int wanted : {6, 8, 3, 4, 6, 6})
        shown += "Ошибка: "_cp1251 + FailureText(2, wanted) + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), shown);
    EXPECT_EQ(failures, 6); // the slots alone
    EXPECT_FALSE(added);
    EXPECT_EQ(array.m_nMaxSize, 2);
    EXPECT_EQ(array.Add(a), 2);
    EXPECT_EQ(Elements(array), (List{a, b, a}));
}

template <class Array> SzynErrorDescription Thrown(Array& array) {
    SzynErrorDescription::SetRetranslateMemoryExeption(true);
    SzynErrorDescription thrown;
    try {
        FailingNew failing(1);
        array.SetSize(20);
    } catch (const SzynErrorDescription& record) {
        thrown.Set(record);
    }
    SzynErrorDescription::SetRetranslateMemoryExeption(false);
    return thrown;
}

TEST(PointerArrayWithoutMemory, ThrowsARecordOnRequest) {
    Plain array(1);
    array.Add(a);
    const SzynErrorDescription record = Thrown(array);
    const SzynErrorDescription expected(
        27, "zynaggr.h", record.m_strSrcDate, 1024, FailureText(1, 20).c_str(), 0,
        "CzynTAggr<struct sample::Item *,struct sample::Item *,2>::SetSize", "", "");
    EXPECT_EQ(record.Print("", false), expected.Print("", false));
    EXPECT_FALSE(record.m_strSrcDate.IsEmpty());
    EXPECT_EQ(array.m_nMaxSize, 1);
    EXPECT_EQ(array.Add(b), 1);

    using Node = sample::Holder::Node;
    CzynTAggr<Node*, Node*, 6> nodes(8);
    EXPECT_EQ(Thrown(nodes).m_strFun,
              "CzynTAggr<class sample::Holder::Node *,class sample::Holder::Node *,6>::SetSize");
}

TEST(PointerArrayWithoutMemory, IsWhatSizesBeyondTheIndexTypeAmountTo) {
    constexpr int most = std::numeric_limits<int>::max();
    Plain array(1);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(array.InsertAt(most, a));
    array.m_nSize = array.m_nMaxSize = most;
    EXPECT_EQ(array.Add(a), -1);
    array.m_nSize = array.m_nMaxSize = 0;
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
}

} // namespace
