// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/test.h"
#include "zynaggr/zynmap.h"

#include <limits>

namespace {

TEST(PairMap, StaysAsItIsWithoutMemoryAndChangesItsCapacityOnRequest) {
    CzynMap map(0);
    EXPECT_EQ(map.m_pData, nullptr);
    for (int key = 0; key < 32; ++key)
        map.Add(key, 1);
    map.m_bSorted = true;
    {
        FailingNew failing(1);
        EXPECT_THROW(map.Add(2, 2), std::bad_alloc);
    }
    EXPECT_TRUE(map.m_bSorted && map.GetSize() == 32 && !map.SetSize(31));
    map.Clear();
    EXPECT_TRUE(map.SetSize(0) && map.m_nMaxSize == 32); // the size in use: nothing to do
    EXPECT_TRUE(map.SetSize(40) && map.m_nMaxSize == 40 && map.SetSize(2) && map.m_nMaxSize == 32);
    map.RemoveAll();
    EXPECT_EQ(map.m_pData, nullptr);
    map.m_nSize = map.m_nMaxSize = std::numeric_limits<std::int32_t>::max();
    EXPECT_THROW(map.Add(1, 1), std::bad_alloc);
    map.m_nSize = map.m_nMaxSize = 0;
}

using Pair = std::pair<std::intptr_t, std::intptr_t>;
std::vector<Pair> Content(const CzynMap& map) {
    std::vector<Pair> pairs;
    for (int i = 0; i < map.GetSize(); ++i)
        pairs.emplace_back(map[i].in, map[i].out);
    return pairs;
}

// The steps of a look-up, of which the pair that is found depends.
int Find(std::vector<Pair>& pairs, bool& sorted, bool linearToo, std::intptr_t key) {
    const auto isWanted = [&](const Pair& pair) { return pair.first == key; };
    const auto first = std::ranges::find_if(pairs, isWanted);
    const int linear = first == pairs.end() ? -1 : static_cast<int>(first - pairs.begin());
    if (pairs.size() < 10) return linear;
    if (!std::exchange(sorted, true)) std::ranges::stable_sort(pairs, {}, &Pair::first);
    const bool ascending = pairs[0].first <= pairs[1].first;
    std::size_t low = 0, high = pairs.size() - 1, middle = 0, before = 0;
    while (before = middle, (middle = (low + high) / 2) != before) {
        if (isWanted(pairs[middle])) return static_cast<int>(middle);
        ((key > pairs[middle].first) == ascending ? low : high) = middle;
    }
    if (isWanted(pairs[high])) return static_cast<int>(high);
    if (isWanted(pairs[low])) return static_cast<int>(low);
    return linearToo ? linear : -1;
}

// Keys as they come, with equal ones among them, or one pair a key in order; the caller may say that the
// order is one that it isn't, or turn it round.
TEST(PairMap, HoldsAndFindsWhatAModelDoes) {
    std::mt19937 random(11);
    for (int round = 0; round < 1000; ++round) {
        CzynMap map;
        std::vector<Pair> model;
        bool sorted = true;
        int room = map.m_nMaxSize;
        map.m_bAutoSort = round % 4 == 0;
        map.m_bNoLinearSearch = round % 3 > 0;
        const auto range = 2U << random() % 9;
        for (int i = 0; i < 160; ++i) {
            const int key = static_cast<int>(random() % range) - static_cast<int>(range / 2);
            const auto kind = random() % 32;
            if (kind < 12) {
                ASSERT_EQ(map.QFindByIn(key), Find(model, sorted, !map.m_bNoLinearSearch, key));
            } else if (kind < 14 && !model.empty()) {
                const auto index = static_cast<int>(random() % model.size());
                model.erase(model.begin() + index);
                ASSERT_TRUE(map.Remove(index));
                ASSERT_FALSE(map.Remove(-1) || map.Remove(static_cast<int>(model.size())));
            } else if (kind == 14 && !map.m_bAutoSort) {
                map.m_bSorted = sorted = random() % 2 == 0;
            } else if (kind == 15 && sorted && !map.m_bAutoSort) {
                std::reverse(map.m_pData, map.m_pData + map.m_nSize);
                std::ranges::reverse(model);
            } else if (kind == 16) {
                map.SortIn(); // equal keys in the order in which they were added
                std::ranges::stable_sort(model, {}, &Pair::first);
                sorted = sorted || model.size() > 1;
            } else {
                if (map.m_nSize == room) room = std::max(32, 2 * room + 2); // also for what is only replaced
                auto place = model.end();
                if (map.m_bAutoSort) {
                    place = std::ranges::lower_bound(model, key, {}, &Pair::first);
                    if (place != model.end() && place->first == key) place = model.erase(place);
                } else {
                    sorted = false;
                }
                place = model.insert(place, {key, i});
                ASSERT_EQ(map.Add(key, i), place - model.begin());
            }
            ASSERT_EQ(Content(map), model) << round << " " << i;
            ASSERT_EQ(map.m_nMaxSize, room);
        }
    }
}

TEST(PairMap, WordsKeepPointersWhole) {
    CzynMap map;
    int values[2];
    map.Add(&values[0], &values[1]);
    map.Add(7, 300);
    map.Add(&values[1], 300);
    EXPECT_EQ(map.QGetPointerByIn(&values[0]), &values[1]);
    EXPECT_EQ(map.QGetByIn(&values[1]), 300);
    EXPECT_EQ(map.GetByInP(6), nullptr);
    EXPECT_EQ(map.GetByIn(6), -1);
    map.Add(NULL, &values[1]); // an integer or a pointer
    EXPECT_EQ(map.GetByInP(NULL), &values[1]);
    EXPECT_EQ(map.GetByOut(300), 7); // the first of two
    EXPECT_EQ(map.GetByOut(301), -1);
}

} // namespace
