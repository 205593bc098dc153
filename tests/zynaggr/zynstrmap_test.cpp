// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynstrmap.h"

#include <map>

namespace {

struct OpenMap : CzynStrMap {
    using CzynStrMap::CzynStrMap;
    using CzynStrMap::m_aItems;
};

} // namespace

// Every index, value and key against std::map, with keys that collide once they are lower-cased.
TEST(StrMap, BehavesLikeASortedMap) {
    std::mt19937 random(7);
    for (const bool caseSensitive : {true, false}) {
        OpenMap map(caseSensitive);
        std::map<std::string, int> model;
        for (int step = 0; step < 3000; ++step) {
            CStringA key;
            for (unsigned n = random() % 4; n > 0; --n)
                key += "aAbBz_~\xC0\xE0\xFF\xB8\xA8"[random() % 12];
            CStringA stored = key;
            if (!caseSensitive) stored.MakeLower();
            const auto known = model.find(stored.GetString());
            const int wanted = known == model.end() ? -1 : known->second;
            ASSERT_EQ(map.Get(key), wanted);
            ASSERT_EQ(map.Find(key.GetString()),
                      known == model.end() ? -1 : std::distance(model.begin(), known));
            if (random() % 3 == 0 && !model.empty()) {
                const int index = static_cast<int>(random() % model.size());
                ASSERT_TRUE(map.Remove(index));
                model.erase(std::next(model.begin(), index));
            } else {
                model[stored.GetString()] = step;
                ASSERT_EQ(map.Add(key, step), std::distance(model.begin(), model.find(stored.GetString())));
            }
            const int size = map.GetSize();
            ASSERT_EQ(size, static_cast<int>(model.size()));
            ASSERT_FALSE(map.GetAt(-1) || map.GetAt(size) || map.SetAt(-1, 1) || map.SetAt(size, 1));
            ASSERT_FALSE(map.Remove(-1) || map.Remove(size));
            for (int index = 0; const auto& [each, value] : model) {
                if (step % 100 < 99) break; // many look-ups in a row: it pays to note the keys
                ASSERT_EQ(map.Find(each.c_str()), index);
                ASSERT_EQ(map.GetAt(index)->m_sKey, each.c_str());
                ASSERT_EQ(map.GetAt(index++)->m_nValue, value);
            }
        }
    }
}

TEST(StrMap, AnswersByValueAndByPointerAndGivesNothingAway) {
    OpenMap map;
    EXPECT_EQ(map.m_aItems.m_nMaxSize, 8);
    EXPECT_EQ(map.GetP("1"), nullptr);
    for (const char* key : {"1", "2", "3", "4", "5", "6", "7", "8", "0"})
        map.Add(key, 7);
    EXPECT_EQ(map.m_aItems.m_nMaxSize, 18);
    EXPECT_EQ(map.Find(7), 0);
    EXPECT_TRUE(map.SetAt(0, 1));
    EXPECT_EQ(map.Find(7), 1);
    map.Add("p", &map);
    EXPECT_EQ(map.GetP("p"), &map);
    OpenMap copy(false);
    copy.Add("x", 1);
    copy = map;
    EXPECT_TRUE(copy.GetSize() == 0 && copy.m_bCaseSensitive && map.GetSize() == 10);
}

TEST(StrMap, SortsByNumberOnRequest) {
    CzynStrMap map;
    for (const char* key : {"9", "100", "10", "-5x"})
        map.Add(key, 0);
    for (const bool asInt : {false, true, false}) {
        map.m_bSortAsInt = asInt;
        map.Sort();
        std::string keys;
        for (int i = 0; i < map.GetSize(); ++i)
            keys += std::string(map.GetAt(i)->m_sKey) + " ";
        EXPECT_EQ(keys, asInt ? "-5x 9 10 100 " : "-5x 10 100 9 ");
    }
}

TEST(StrStrMap, LooksUpBothWays) {
    CzynStrStrMap map;
    const int indexes[] = {map.Add("b", "x"),     map.Add("a", "y"),        map.Add("c", "x"),
                           map.Add("c", nullptr), map.Add("Ё"_cp1251, "z"), map.FindByIn("c"),
                           map.FindByIn("C"),     map.FindByOut("x"),       map.FindByOut("X")};
    EXPECT_THAT(indexes, testing::ElementsAre(0, 0, 2, 2, 3, 2, -1, 1, -1));
    const auto get = [&](const char* key) {
        return std::string(map.Get(key, false)) + '|' + std::string(map.Get(key, true));
    };
    EXPECT_EQ(get("a"), "y|y");
    EXPECT_EQ(get("A"), "|y");
    EXPECT_EQ(get("ё"_cp1251), "|z");
    map.m_bOwnSearch = true;
    EXPECT_EQ(get("A"), "|");
    EXPECT_TRUE(map.SetAt(2, "w"));
    EXPECT_FALSE(map.SetAt(4, "w"));
    EXPECT_EQ(get("c"), "w|w");
}
