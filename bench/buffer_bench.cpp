// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "zynaggr/zyndatabuf.h"
#include "zynaggr/zyndatabufex.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// A million items, integers and short strings in turn, written and read back, against a plain std::string to
// which the same bytes are appended by hand, and which is read with memcpy behind the same checks of counts.
// All measure the texts, which may hold zeros, but for those that are handed to the iterator with their
// lengths.

namespace {

constexpr int itemPairs = 500'000;

const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = [] {
        std::vector<std::string> list;
        for (unsigned i = 0; i < 1024; ++i)
            list.push_back("item " + std::to_string(i * 7919 % 100'003) + std::string(i % 11, '.'));
        return list;
    }();
    return texts;
}

const std::string& Text(int i) {
    return Texts()[static_cast<std::size_t>(i) % 1024];
}

void Write(CzynDataBuf& buffer) {
    for (int i = 0; i < itemPairs; ++i) {
        buffer.Add(&i, 4);
        buffer.AddStrBuf(Text(i).c_str());
    }
}

void Write(CzynDataBufEx& buffer) {
    for (int i = 0; i < itemPairs; ++i) {
        buffer.Add2Iterator(&i, 4);
        const std::string& text = Text(i);
        const int count = static_cast<int>(text.size()) + 1;
        buffer.Add2Iterator(reinterpret_cast<const char*>(&count), 4);
        buffer.Add2Iterator(text.c_str(), count);
    }
}

void Write(std::string& buffer) {
    for (int i = 0; i < itemPairs; ++i) {
        buffer.append(reinterpret_cast<const char*>(&i), 4);
        const char* const text = Text(i).c_str();
        const int count = static_cast<int>(std::strlen(text)) + 1;
        buffer.append(reinterpret_cast<const char*>(&count), 4);
        buffer.append(text, static_cast<std::size_t>(count));
    }
}

// Each returns a sum over all that was read.

long Read(CzynDataBuf& buffer) {
    long sum = 0;
    CStringA text;
    for (int value = 0; buffer.Read(&value) && buffer.ReadStrBuf(text);)
        sum += value + text.GetLength() + text[text.GetLength() - 1];
    return sum;
}

long Read(CzynDataBufEx& buffer) {
    long sum = 0;
    CStringA text;
    for (int value = 0; buffer.ReadFromIterator(&value, 4) == 4 && buffer.ReadStrBuf_TCHAR_r(text) > 0;)
        sum += value + text.GetLength() + text[text.GetLength() - 1];
    return sum;
}

long Read(const std::string& buffer) {
    long sum = 0;
    std::size_t at = 0;
    std::string text;
    for (int value = 0, count = 0; buffer.size() - at >= 8; at += static_cast<std::size_t>(count)) {
        std::memcpy(&value, buffer.data() + at, 4);
        std::memcpy(&count, buffer.data() + at + 4, 4);
        at += 8;
        if (count < 1 || buffer.size() - at < static_cast<std::size_t>(count)) break;
        const char* const start = buffer.data() + at;
        text.assign(start, start[count - 1] == 0 ? std::strlen(start)
                                                 : strnlen(start, static_cast<std::size_t>(count)));
        sum += value + static_cast<int>(text.size()) + text.back();
    }
    return sum;
}

template <class Buffer> void WriteItems(benchmark::State& state) {
    for (auto _ : state) {
        Buffer buffer;
        Write(buffer);
        benchmark::DoNotOptimize(&buffer);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 2 * itemPairs);
}

template <class Buffer> void ReadItems(benchmark::State& state) {
    Buffer buffer;
    Write(buffer);
    for (auto _ : state) {
        buffer.Reset();
        benchmark::DoNotOptimize(Read(buffer));
    }
    state.SetItemsProcessed(state.iterations() * 2 * itemPairs);
}
void ReadItemsStd(benchmark::State& state) {
    std::string buffer;
    Write(buffer);
    for (auto _ : state)
        benchmark::DoNotOptimize(Read(buffer));
    state.SetItemsProcessed(state.iterations() * 2 * itemPairs);
}

// What is compared must be the same work: same bytes written, same values read.
const bool isSameWork = [] {
    KeepMemory();
    CzynDataBuf ours;
    CzynDataBufEx iterator;
    std::string plain;
    Write(ours);
    Write(iterator);
    Write(plain);
    const bool isSame =
        std::string(ours.m_pBuf, static_cast<std::size_t>(ours.m_nSize)) == plain &&
        std::string(iterator.m_pBuf, static_cast<std::size_t>(iterator.m_nSize - 1)) == plain &&
        Read(ours) == Read(plain) && (iterator.Reset(), Read(iterator)) == Read(plain) &&
        Read(plain) > itemPairs;
    if (!isSame) std::abort();
    return isSame;
}();

} // namespace

#define WORKLOAD(workload, function, implementation)                                                         \
    BENCHMARK(function)->Name(workload "/" implementation)->Unit(benchmark::kMillisecond)

WORKLOAD("buffer, write 1 M items", WriteItems<CzynDataBuf>, "ours");
WORKLOAD("buffer, write 1 M items", WriteItems<std::string>, "append to std::string");
WORKLOAD("buffer, write 1 M items at the iterator", WriteItems<CzynDataBufEx>, "ours");
WORKLOAD("buffer, write 1 M items at the iterator", WriteItems<std::string>, "append to std::string");
WORKLOAD("buffer, read 1 M items", ReadItems<CzynDataBuf>, "ours");
WORKLOAD("buffer, read 1 M items", ReadItemsStd, "memcpy from std::string");
WORKLOAD("buffer, read 1 M items at the iterator", ReadItems<CzynDataBufEx>, "ours");
WORKLOAD("buffer, read 1 M items at the iterator", ReadItemsStd, "memcpy from std::string");
