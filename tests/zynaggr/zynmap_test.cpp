#include "zynaggr/zynmap.h"

#include "support/failing_new.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <vector>

namespace {

void Fill(CzynMap& map, const std::vector<int>& keys) {
    for (const int key : keys)
        map.Add(key, 100 * key);
}

TEST(PairMap, CapacityGrowsByItsRuleAndIsKeptByClear) {
    CzynMap map(0);
    EXPECT_EQ(map.m_pData, nullptr);
    for (const int capacity : {32, 66, 134}) {
        map.Add(1, 1);
        EXPECT_EQ(map.m_nMaxSize, capacity);
        Fill(map, std::vector<int>(static_cast<std::size_t>(capacity - map.GetSize()), 1));
        EXPECT_EQ(map.m_nMaxSize, capacity);
    }
    EXPECT_FALSE(map.SetSize(133));
    map.Clear();
    EXPECT_TRUE(map.SetSize(0)); // the size in use: nothing to do
    EXPECT_EQ(map.m_nMaxSize, 134);
    EXPECT_TRUE(map.SetSize(2));
    EXPECT_EQ(map.m_nMaxSize, 32);
    map.RemoveAll();
    EXPECT_EQ(map.m_pData, nullptr);
    EXPECT_FALSE(map.m_bSorted);
    EXPECT_EQ(CzynMap(40).m_nMaxSize, 40);
}

TEST(PairMap, FindsWhatAPlainListFindsAndSortsFromTenPairsOn) {
    std::mt19937 random(11);
    for (int round = 0; round < 60; ++round) {
        CzynMap map;
        std::multimap<std::intptr_t, std::intptr_t> model;
        std::vector<std::intptr_t> added;
        for (int i = 0; i < round / 2; ++i) {
            const int key = static_cast<int>(random() % 40) - 20;
            added.push_back(key);
            EXPECT_EQ(map.Add(key, i), i);
            model.emplace(key, i);
        }
        for (int key = -21; key <= 20; ++key) {
            const int index = map.QFindByIn(key);
            ASSERT_EQ(index >= 0, model.contains(key));
            ASSERT_EQ(index < 0 ? key : map[index].in, key);
        }
        if (added.size() >= 10) std::stable_sort(added.begin(), added.end());
        for (int i = 0; i < map.GetSize(); ++i)
            ASSERT_EQ(map[i].in, added[static_cast<std::size_t>(i)]);
        map.SortIn();
        int index = 0;
        for (const auto& pair : model) // equal keys in the order in which they were added
            ASSERT_EQ(map[index++].out, pair.second);
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
    EXPECT_EQ(map.GetByOut(300), 7); // the first of two
    EXPECT_EQ(map.GetByOut(301), -1);
}

TEST(PairMap, WhichPairIsFoundFollowsTheHalving) {
    const struct {
        std::vector<int> keys; // as they stand
        int key, index;
        bool linearToo = false;
    } cases[] = {
        {{0, 1, 2, 2, 2, 2, 2, 7, 8, 9}, 2, 4},  {{0, 1, 2, 3, 4, 5, 6, 7, 9, 9}, 9, 8},
        {{0, 0, 0, 3, 4, 5, 6, 7, 8, 9}, 0, 2},  {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 9, 9},
        {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, 0, 0},  {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 1, 8},
        {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 9, 0},  {{9, 8, 7, 6, 5, 4, 3, 2, 1, 0}, 10, -1},
        {{5, 6, 1, 2, 3, 4, 0, 7, 8, 9}, 5, -1}, {{5, 6, 1, 2, 3, 4, 0, 7, 8, 9}, 5, 0, true},
    };
    for (const auto& c : cases) {
        CzynMap map;
        Fill(map, c.keys);
        map.m_bSorted = true;
        map.m_bNoLinearSearch = !c.linearToo;
        EXPECT_EQ(map.QFindByIn(c.key), c.index) << c.key;
    }
}

TEST(PairMap, AutoSortReplacesAndInsertsLikeAMap) {
    std::mt19937 random(7);
    CzynMap map;
    map.m_bAutoSort = true;
    std::map<std::intptr_t, int> model;
    for (int i = 0; i < 3000; ++i) {
        const int key = static_cast<int>(random() % 200) - 100;
        model[key] = i;
        ASSERT_EQ(map.Add(key, i), std::distance(model.begin(), model.find(key)));
        if (i % 7 == 0) {
            const int index = static_cast<int>(random() % model.size());
            model.erase(std::next(model.begin(), index));
            ASSERT_TRUE(map.Remove(index));
        }
        ASSERT_EQ(map.GetSize(), static_cast<int>(model.size()));
    }
    int index = 0;
    for (const auto& [key, value] : model) {
        EXPECT_EQ(map[index].in, key);
        EXPECT_EQ(map[index++].out, value);
    }
    EXPECT_FALSE(map.Remove(-1));
    EXPECT_FALSE(map.Remove(index));

    map.SetSize(map.GetSize() + 1);
    map.Add(1000, 0);
    const int full = map.m_nMaxSize;
    map.Add(1000, 1); // only a replacement, but the room is made first
    EXPECT_EQ(map.GetSize(), full);
    EXPECT_EQ(map.m_nMaxSize, 2 * full + 2);
}

TEST(PairMap, OutOfMemoryThrowsAndChangesNothing) {
    CzynMap map;
    Fill(map, std::vector<int>(32, 1));
    map.m_bSorted = true;
    {
        FailingNew failing(1);
        EXPECT_THROW(map.Add(2, 2), std::bad_alloc);
    }
    EXPECT_TRUE(map.m_bSorted);
    EXPECT_EQ(map.Add(2, 2), 32);

    map.RemoveAll();
    map.m_nSize = map.m_nMaxSize = std::numeric_limits<std::int32_t>::max();
    EXPECT_THROW(map.Add(1, 1), std::bad_alloc);
    map.m_nSize = map.m_nMaxSize = 0;
}

} // namespace
