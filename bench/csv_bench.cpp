// SPDX-License-Identifier: MIT
#include "keep_memory.h"
#include "zynaggr/zyncsv.h"
#include "zynaggr/zynhelpers.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#if __has_include(<libfccp/csv.h>)
#include <libfccp/csv.h>
#define HAVE_FCCP
#endif

// Reading a whole file of 32 MB, 10 columns, a third of the fields quoted, into a table; against a
// parser that users pick for its speed and a plain reader that knows std::getline and the common quoting
// rules. The file is such that all give the same table, which is checked.

namespace {

using Table = std::vector<std::vector<std::string>>;

std::string TestFile() {
    std::string text;
    for (unsigned i = 0; text.size() < 32'000'000; ++i) {
        const unsigned column = i % 10;
        const std::string field = std::string(column % 4 * 4, 'x').append(std::to_string(i * 7919));
        if (i % 3 == 0) // two quoted fields side by side would be one
            text.append("\"").append(field).append(i % 30 == 0 ? "\"\"y;\"" : "; y\"");
        else
            text.append(field);
        text.append(column == 9 ? "\r\n" : ",");
    }
    text.resize(text.rfind('\n') + 1);
    std::string name = (std::filesystem::temp_directory_path() / "zynaggr_csv_bench.csv").string();
    std::ofstream(name, std::ios::binary) << text;
    return name;
}

const std::string& TestFileName() {
    struct File {
        ~File() { std::filesystem::remove(name); }
        std::string name = TestFile();
    };
    static const File file;
    return file.name;
}

std::vector<std::string> SplitPlainly(const std::string& line) {
    std::vector<std::string> row(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"')
            row.back() += line[++i];
        else if (c == '"')
            quoted = !quoted;
        else if (c == ',' && !quoted)
            row.emplace_back();
        else
            row.back() += c;
    }
    return row;
}

Table ReadPlainly(const std::string& name) {
    std::ifstream file(name);
    Table table;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r')) line.pop_back();
        table.push_back(SplitPlainly(line));
    }
    return table;
}

bool IsSame(const std::vector<std::vector<CStringA>>& rows, const Table& table) {
    return std::equal(
        rows.begin(), rows.end(), table.begin(), table.end(), [](const auto& left, const auto& right) {
            return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                              [](const CStringA& a, const std::string& b) { return a.View() == b; });
        });
}

void SetBytes(benchmark::State& state) {
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(TestFileName()));
    state.SetBytesProcessed(state.iterations() * size);
}

template <bool isRfc> void ReadFile(benchmark::State& state) {
    const CStringA name = zynFromNativePath(TestFileName().c_str());
    CzynCSV csv;
    csv.SetRFC4180(isRfc);
    std::vector<std::vector<CStringA>> rows;
    if (!csv.ReadFile(name, rows) || !IsSame(rows, ReadPlainly(TestFileName()))) {
        state.SkipWithError("the two tables differ");
        return;
    }
    for (auto _ : state) {
        rows = {};
        benchmark::DoNotOptimize(csv.ReadFile(name, rows));
    }
    SetBytes(state);
}

template <Table read(const std::string&)> void ReadFileAs(benchmark::State& state) {
    Table table = read(TestFileName());
    if (table != ReadPlainly(TestFileName())) {
        state.SkipWithError("the two tables differ");
        return;
    }
    for (auto _ : state) {
        table = {};
        table = read(TestFileName());
        benchmark::DoNotOptimize(table.data());
    }
    SetBytes(state);
}

#ifdef HAVE_FCCP
Table ReadWithFccp(const std::string& name) {
    io::CSVReader<10, io::trim_chars<>, io::double_quote_escape<',', '"'>> reader(name);
    Table table;
    for (std::vector<std::string> row(10);
         reader.read_row(row[0], row[1], row[2], row[3], row[4], row[5], row[6], row[7], row[8], row[9]);)
        table.push_back(row);
    return table;
}
#endif

const bool keepsMemory = KeepMemory();

#define WORKLOAD(function, implementation)                                                                   \
    BENCHMARK(function)->Name("CSV, read 32 MB/" implementation)->Unit(benchmark::kMillisecond)

WORKLOAD(ReadFile<false>, "ours");
WORKLOAD(ReadFile<true>, "ours, RFC 4180");
#ifdef HAVE_FCCP
WORKLOAD(ReadFileAs<ReadWithFccp>, "fast-cpp-csv-parser");
#endif
WORKLOAD(ReadFileAs<ReadPlainly>, "std::getline");

} // namespace
