// SPDX-License-Identifier: MIT
#include "zynaggr/zynstrmap.h"

#include "zynaggr/hash_impl.h"
#include "zynaggr/key_index_impl.h"
#include "zynhost/decimal.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace {

// Byte by byte, eight at a time: most keys are too short for a call to pay.
int Compare(std::string_view left, std::string_view right) {
    const std::size_t common = std::min(left.size(), right.size());
    if (common < 8 || std::endian::native != std::endian::little) return left.compare(right);
    for (std::size_t i = 0; i < common; i += 8) {
        i = std::min(i, common - 8); // the last block overlaps the one before
        const std::uint64_t a = zyn::LoadBlock<std::uint64_t>(left.data() + i);
        const std::uint64_t b = zyn::LoadBlock<std::uint64_t>(right.data() + i);
        if (a != b) return __builtin_bswap64(a) < __builtin_bswap64(b) ? -1 : 1;
    }
    return left.size() < right.size() ? -1 : left.size() > right.size();
}

// How an item's key stands to a key: negative when it comes before.
struct ByCase {
    std::string_view key;
    static std::uint64_t Hash(std::string_view text) {
        return zyn::HashText(text, [](std::uint64_t block) { return block; });
    }
    template <class Item> int operator()(const Item* item) const { return Compare(item->m_sKey.View(), key); }
};
struct IgnoringCase {
    const char* key;
    static std::uint64_t Hash(std::string_view text) { return zyn::HashText(text, zyn::FoldedBlock); }
    template <class Item> int operator()(const Item* item) const { return item->m_sKey.CompareNoCase(key); }
};

std::string_view Text(const char* text) {
    return text ? text : "";
}

struct Place {
    int index;
    bool found;
};

// Where a key stands, or where it is to be inserted.
template <class Items, class Order> Place PlaceOf(const Items& items, Order order) {
    const int last = items.GetSize() - 1;
    if (last < 0) return {0, false};
    if (const int first = order(items.m_pData[0]); first >= 0) return {0, first == 0};
    if (const int end = order(items.m_pData[last]); end <= 0) return {end == 0 ? last : last + 1, end == 0};
    int low = 0, high = last;
    while (high - low >= 2) {
        const int middle = (low + high) / 2;
        const int at = order(items.m_pData[middle]);
        if (at == 0) return {middle, true};
        (at < 0 ? low : high) = middle;
    }
    return {high, order(items.m_pData[high]) == 0};
}

// The index of a key, or -1. In an array that is not sorted it finds what the halving happens to meet.
template <class Items, class Order> int FindIn(const Items& items, Order order) {
    if (items.GetSize() == 0) return -1;
    int low = 0, high = items.GetSize() - 1;
    for (int middle = 0;;) {
        const int before = middle;
        middle = (low + high) / 2;
        if (middle == before) break;
        // One of these is next.
        __builtin_prefetch(items.m_pData[(low + middle) / 2]);
        __builtin_prefetch(items.m_pData[(middle + high) / 2]);
        const int at = order(items.m_pData[middle]);
        if (at == 0) return middle;
        (at < 0 ? low : high) = middle;
    }
    if (order(items.m_pData[high]) == 0) return high;
    return order(items.m_pData[low]) == 0 ? low : -1;
}

// The same, from the index where that knows it. Once searching has cost about as much as making the index, it
// is made.
template <class Items, class Order>
int FindIn(const Items& items, Order order, std::string_view key, const zyn::KeyIndex& index) {
    constexpr int fewest = 64; // items that it pays for
    const int size = items.GetSize();
    if (size < fewest) return FindIn(items, order);
    if (const auto* const table = index.m_table.load(std::memory_order_acquire)) {
        const auto isKey = [&](int place) { return place < size && order(items.m_pData[place]) == 0; };
        const int place = table->Find(Order::Hash(key), isKey);
        return place >= 0 ? place : FindIn(items, order);
    }
    const int searches = index.m_searches.load(std::memory_order_relaxed);
    if (searches != index.stopped && searches <= size / 4) // else it counts on for ever
        index.m_searches.store(searches + 1, std::memory_order_relaxed);
    if (searches == size / 4) {
        try {
            auto table = std::make_unique<zyn::KeyIndex::Table>(static_cast<std::size_t>(size));
            for (int place = 0; place < size; ++place)
                table->Put(Order::Hash(items.m_pData[place]->m_sKey.View()), place);
            zyn::KeyIndex::Table* expected = nullptr; // another thread may have been faster
            if (index.m_table.compare_exchange_strong(expected, table.get()))
                static_cast<void>(table.release());
        } catch (const std::bad_alloc&) { // it is only a help
        }
    }
    return FindIn(items, order);
}

// Hands an item over to the array; -1, and the item deleted, when there is no room.
template <class Order, class Items, class Item>
int Insert(Items& items, zyn::KeyIndex& index, int place, std::unique_ptr<Item> item) {
    const bool isLast = place == items.GetSize();
    if (isLast ? items.Add(item.get()) < 0 : !items.InsertAt(place, item.get())) return -1;
    auto* const table = index.m_table.load(std::memory_order_relaxed);
    if (!isLast || (table && !table->Put(Order::Hash(item->m_sKey.View()), place))) index.Forget();
    static_cast<void>(item.release());
    return place;
}

template <class Items> void SortItems(Items& items, int (*compare)(const void*, const void*)) {
    if (items.GetSize() < 2) return;
    std::qsort(items.m_pData, static_cast<std::size_t>(items.GetSize()), sizeof(void*), compare);
}

template <class Item> const Item& ItemAt(const void* slot) {
    return **static_cast<Item* const*>(slot);
}

} // namespace

void zyn::KeyIndex::Forget() {
    if (m_table.load(std::memory_order_relaxed)) delete m_table.exchange(nullptr);
    if (m_searches.load(std::memory_order_relaxed) != stopped) m_searches.store(0, std::memory_order_relaxed);
}

void zyn::KeyIndex::Restart() {
    Forget();
    m_searches.store(0, std::memory_order_relaxed);
}

int CzynStrMap::AddWord(const char* key, std::intptr_t value) {
    CStringA sKey(key);
    if (!m_bCaseSensitive) sKey.MakeLower();
    const auto add = [&](auto order) {
        const Place place = PlaceOf(m_aItems, order);
        if (!place.found)
            return Insert<decltype(order)>(
                m_aItems, m_index, place.index,
                std::unique_ptr<CzynStrMapItem>(new CzynStrMapItem{std::move(sKey), value}));
        m_aItems.m_pData[place.index]->m_nValue = value;
        return place.index;
    };
    return m_bCaseSensitive ? add(ByCase{sKey.View()}) : add(IgnoringCase{sKey});
}

void CzynStrMap::Sort() {
    SortItems(m_aItems, m_bSortAsInt       ? compare_CzynStrMapItem_AsInt
                        : m_bCaseSensitive ? compare_CzynStrMapItem
                                           : compare_CzynStrMapItem_NoCase);
    m_index.Restart();
    if (m_bSortAsInt) m_index.m_searches = m_index.stopped; // searches miss what isn't in order, always
}

int CzynStrMap::Find(const char* key) const {
    const std::string_view text = Text(key);
    return m_bCaseSensitive ? FindIn(m_aItems, ByCase{text}, text, m_index)
                            : FindIn(m_aItems, IgnoringCase{key}, text, m_index);
}

int CzynStrMap::Find(int value) const {
    for (int i = 0; i < m_aItems.GetSize(); ++i)
        if (m_aItems.m_pData[i]->m_nValue == value) return i;
    return -1;
}

long CzynStrMap::Get(const char* key) const {
    const int index = Find(key);
    return index < 0 ? -1 : m_aItems.m_pData[index]->m_nValue;
}

void* CzynStrMap::GetP(const char* key) const {
    const int index = Find(key);
    if (index < 0) return nullptr;
    return reinterpret_cast<void*>(m_aItems.m_pData[index]->m_nValue); // NOLINT(performance-no-int-to-ptr)
}

bool CzynStrMap::SetAt(int index, int value) {
    CzynStrMapItem* const item = GetAt(index);
    if (item) item->m_nValue = value;
    return item != nullptr;
}

int CzynStrMap::compare_CzynStrMapItem(const void* left, const void* right) {
    return ItemAt<CzynStrMapItem>(left).m_sKey.Compare(ItemAt<CzynStrMapItem>(right).m_sKey);
}

int CzynStrMap::compare_CzynStrMapItem_NoCase(const void* left, const void* right) {
    return ItemAt<CzynStrMapItem>(left).m_sKey.CompareNoCase(ItemAt<CzynStrMapItem>(right).m_sKey);
}

int CzynStrMap::compare_CzynStrMapItem_AsInt(const void* left, const void* right) {
    const std::int32_t a = zyn::DecimalValue(ItemAt<CzynStrMapItem>(left).m_sKey);
    const std::int32_t b = zyn::DecimalValue(ItemAt<CzynStrMapItem>(right).m_sKey);
    return (a > b) - (a < b);
}

int CzynStrStrMap::Add(const char* key, const char* value) {
    const Place place = PlaceOf(m_aItems, ByCase{Text(key)});
    if (!place.found)
        return Insert<ByCase>(m_aItems, m_index, place.index,
                              std::unique_ptr<CzynStrStrMapItem>(new CzynStrStrMapItem{key, value}));
    m_aItems.m_pData[place.index]->m_sValue = value;
    return place.index;
}

void CzynStrStrMap::Sort() {
    SortItems(m_aItems, compare_CzynStrStrMapItem);
    m_index.Restart();
}

int CzynStrStrMap::FindByIn(const char* key) const {
    const std::string_view text = Text(key);
    return FindIn(m_aItems, ByCase{text}, text, m_index);
}

int CzynStrStrMap::FindByOut(const char* value) const {
    for (int i = 0; i < m_aItems.GetSize(); ++i)
        if (m_aItems.m_pData[i]->m_sValue == value) return i;
    return -1;
}

CStringA CzynStrStrMap::Get(const char* key, bool bNoCase) const {
    const int index = bNoCase && !m_bOwnSearch ? FindIn(m_aItems, IgnoringCase{key}) : FindByIn(key);
    return index < 0 ? CStringA() : m_aItems.m_pData[index]->m_sValue;
}

bool CzynStrStrMap::SetAt(int index, const char* value) {
    CzynStrStrMapItem* const item = GetAt(index);
    if (item) item->m_sValue = value;
    return item != nullptr;
}

int CzynStrStrMap::compare_CzynStrStrMapItem(const void* left, const void* right) {
    return ItemAt<CzynStrStrMapItem>(left).m_sKey.Compare(ItemAt<CzynStrStrMapItem>(right).m_sKey);
}

int CzynStrStrMap::compareNoCase_CzynStrStrMapItem(const void* left, const void* right) {
    return ItemAt<CzynStrStrMapItem>(left).m_sKey.CompareNoCase(ItemAt<CzynStrStrMapItem>(right).m_sKey);
}
