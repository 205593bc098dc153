#include "zynaggr/zyncsv.h"
#include "zynaggr/zynhelpers.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Reading a whole file of 32 MB, 10 columns, a third of the fields quoted, into a table; against a plain
// reader that knows std::getline and the common quoting rules. The file is such that both give the same
// table, which is checked.

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

void ReadFile(benchmark::State& state) {
    const CStringA name = zynFromNativePath(TestFileName().c_str());
    CzynCSV csv;
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

void ReadFilePlainly(benchmark::State& state) {
    Table table;
    for (auto _ : state) {
        table = {};
        table = ReadPlainly(TestFileName());
        benchmark::DoNotOptimize(table.data());
    }
    SetBytes(state);
}

} // namespace

BENCHMARK(ReadFile)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(ReadFilePlainly)->Unit(benchmark::kMillisecond)->MinTime(2);
