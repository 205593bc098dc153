// SPDX-License-Identifier: MIT

// pricelist: prints a price list as a table and what the stock is worth, and traces its own calls to standard
// error.
//
// The list is a CSV file in code page 1251 with semicolons: a line of headings, then rows of which the last
// two fields are the price and the stock. FromTerminal, ToTerminal and zynplatform::Write stand between the
// library's texts and the terminal's encoding.

#include <zynaggr/zyncsv.h>
#include <zynaggr/zynhelpers.h>
#include <zynaggr/zynmessage.h>
#include <zynaggr/zynstacklogger.h>
#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string>
#include <vector>

using namespace zynplatform::literals;

namespace {

constexpr std::uint32_t errorStyle = 0x10;

using Row = std::vector<CStringA>;
using Table = std::vector<Row>;

void TraceLine(const char* line) {
    std::fprintf(stderr, "%s\n", zynplatform::ToTerminal(line).c_str());
}

void TraceWarning(const char* message, const char* source, const char* /*extra*/) {
    std::fprintf(stderr, "%s: %s\n", source, zynplatform::ToTerminal(message).c_str());
}

bool Load(const CStringA& name, Table& table) {
    CzynStackLogger logger("Load", false);
    CzynCSV csv(';');
    if (!csv.ReadFile(name, table)) return false;
    // A record of several lines has a blank behind each of them.
    for (Row& row : table)
        for (CStringA& field : row)
            field.TrimRight();
    logger.SetFunctionInfo("rows: " + CStringA(std::to_string(table.size()).c_str()));
    return true;
}

std::vector<int> Widths(const Table& table) {
    const CzynStackLogger logger("Widths", false);
    std::vector<int> widths(table.front().size());
    for (const Row& row : table)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].GetLength());
    return widths;
}

// Texts to the left, the two numbers at the end to the right.
void PrintRow(const Row& row, const std::vector<int>& widths) {
    const CzynStackLogger logger("PrintRow", false);
    CStringA line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const bool isNumber = i + 2 >= row.size();
        line.AppendFormat(isNumber ? "%*s  " : "%-*s  ", widths[i], row[i].GetString());
    }
    zynplatform::Write(line.TrimRight().View());
    zynplatform::Write("\n");
}

// "1 250,00" is 125000 kopecks, "12" is 12.
long Digits(CStringA text) {
    text.Remove(' ');
    text.Remove(',');
    long value = 0;
    std::from_chars(text.View().data(), text.View().data() + text.View().size(), value);
    return value;
}

void PrintWorth(const Table& table) {
    CzynStackLogger logger("PrintWorth", false);
    long kopecks = 0;
    for (auto row = table.begin() + 1; row != table.end(); ++row)
        if (row->size() >= 2) kopecks += Digits((*row)[row->size() - 2]) * Digits(row->back());
    CStringA text;
    text.Format("\nНа складе товара на %ld,%02ld руб.\n"_cp1251, kopecks / 100, kopecks % 100);
    logger.SetFunctionInfo(text.Mid(1, text.GetLength() - 2));
    zynplatform::Write(text.View());
}

bool Run(const CStringA& name) {
    const CzynStackLogger logger("Run", false);
    Table table;
    if (!Load(name, table) || table.empty()) {
        zynMessagePrint("Не удалось прочитать прейскурант "_cp1251 + name, errorStyle);
        zynplatform::Write("\n");
        return false;
    }
    const std::vector<int> widths = Widths(table);
    for (const Row& row : table)
        PrintRow(row, widths);
    PrintWorth(table);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: pricelist FILE\n", stderr);
        return 1;
    }
    zynplatform::UseTerminalEncoding(true);
    GlobalStackLogInit(TraceWarning, TraceLine);
    const bool done = Run(zynFromNativePath(argv[1]));
    zynplatform::Flush();
    return done ? 0 : 1;
}
