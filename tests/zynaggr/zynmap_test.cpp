#include "zynaggr/zynmap.h"

#include "support/failing_new.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>
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
    CzynMap full(40);
    full.m_bAutoSort = true;
    for (int key = 0; key < 40; ++key)
        full.Add(key, 0);
    EXPECT_EQ(full.m_nMaxSize, 40);
    full.Add(39, 1); // only a replacement, but the room is made first
    EXPECT_EQ(full.GetSize(), 40);
    EXPECT_EQ(full.m_nMaxSize, 82);
}

using Pair = std::pair<std::intptr_t, std::intptr_t>;
std::vector<Pair> Content(const CzynMap& map) {
    std::vector<Pair> pairs;
    for (int i = 0; i < map.GetSize(); ++i)
        pairs.emplace_back(map[i].in, map[i].out);
    return pairs;
}

// Keys as they come, with equal ones among them, or one pair a key in order.
TEST(PairMap, HoldsAndFindsWhatAModelDoesAndSortsFromTenPairsOn) {
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round) {
        CzynMap map;
        map.m_bAutoSort = round % 2 == 0;
        std::vector<Pair> model;
        for (int i = 0; i < round / 2; ++i) {
            const Pair pair(static_cast<int>(random() % 80) - 40, i);
            auto place = model.end();
            if (map.m_bAutoSort) {
                place = std::ranges::lower_bound(model, pair.first, {}, &Pair::first);
                if (place != model.end() && place->first == pair.first) place = model.erase(place);
            }
            place = model.insert(place, pair);
            ASSERT_EQ(map.Add(static_cast<int>(pair.first), i), place - model.begin());
            if (i % 7 != 6) continue;
            const auto index = static_cast<int>(random() % model.size());
            model.erase(model.begin() + index);
            ASSERT_TRUE(map.Remove(index));
            ASSERT_FALSE(map.Remove(-1) || map.Remove(static_cast<int>(model.size())));
        }
        ASSERT_EQ(Content(map), model);
        for (int key = -41; key <= 40; ++key) {
            const int index = map.QFindByIn(key);
            ASSERT_EQ(index >= 0, std::ranges::count(model, key, &Pair::first) > 0);
            ASSERT_EQ(index < 0 ? key : map[index].in, key);
        }
        if (model.size() >= 10) std::ranges::stable_sort(model, {}, &Pair::first);
        ASSERT_EQ(Content(map), model);
        map.SortIn(); // equal keys in the order in which they were added
        std::ranges::stable_sort(model, {}, &Pair::first);
        ASSERT_EQ(Content(map), model);
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
