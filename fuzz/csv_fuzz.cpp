// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/csv_model.h"
#include "support/temp_folder.h"
#include "zynaggr/zyncsv.h"
#include "zynaggr/zyncsvwriter.h"

// The input is a separator and a file of records. Each record is split as the slow model splits it.

namespace {

// The records of a file: a line with an odd number of quotes goes on in the next.
std::vector<std::string> RecordsOf(std::string text) {
    std::vector<std::string> records;
    if (text.ends_with('\r')) text += '\r'; // not part of a line end
    if (!text.empty() && text.back() != '\n') text += '\n';
    std::string record;
    bool isOpen = false;
    for (std::size_t end; (end = text.find('\n')) != text.npos; text.erase(0, end + 1)) {
        std::string line = text.substr(0, end);
        if (line.ends_with('\r')) line.pop_back();
        const bool wasOpen = isOpen;
        if (std::count(line.begin(), line.end(), '"') % 2 != 0) isOpen = !isOpen;
        record += line;
        if (wasOpen || isOpen) record += ' ';
        if (isOpen) continue;
        records.push_back(record);
        record.clear();
    }
    return records;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder;
    static const CStringA name = folder.Path("f");
    Input input(data, size);
    const auto separator = static_cast<char>(std::max(input.Byte(), 1u)); // the model ends texts at 0
    const std::string text(input.Rest().substr(0, 1000));                 // the model is slow
    CStringArray fields;
    for (const bool escapes : {false, true}) {
        Check(CzynCSV::StrToArray(text.c_str(), fields, separator, escapes));
        Check(Texts(fields) == SplitPlainly(text.c_str(), separator, escapes));
    }
    folder.Write("f", text);
    CzynCSV csv(separator);
    Check(csv.OpenFile(name));
    for (const std::string& record : RecordsOf(text))
        Check(csv.ReadString(fields) && Texts(fields) == SplitPlainly(record, separator, false));
    Check(!csv.ReadString(fields));

    // By the rules of other programs, what was read is written so that it is read again.
    if (separator == '"' || separator == '\r' || separator == '\n') return 0;
    csv.SetRFC4180(true);
    Check(csv.OpenFile(name));
    while (csv.ReadString(fields)) {
        CStringArray again;
        CzynCSV::StrToArrayRFC4180(CzynCSVWriter::ArrayToStr(fields, separator).View(), again, separator);
        Check(Texts(again) == Texts(fields));
    }
    return 0;
}
