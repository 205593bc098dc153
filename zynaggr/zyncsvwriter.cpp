// SPDX-License-Identifier: MIT
#include "zynaggr/zyncsvwriter.h"

#include <algorithm>
#include <string_view>

namespace {

void AppendField(CStringA& record, std::string_view field, char separator) {
    const char special[] = {separator, '"', '\r', '\n'};
    const bool isQuoted = field.find_first_of(std::string_view(special, sizeof special)) != field.npos ||
                          field.starts_with("\xEF\xBB\xBF");
    if (!isQuoted) {
        record.Append(field);
        return;
    }
    record += '"';
    for (std::size_t at = 0; at < field.size();) {
        const std::size_t next = std::min(field.find('"', at), field.size() - 1) + 1;
        record.Append(field.substr(at, next - at));
        if (field[next - 1] == '"') record += '"';
        at = next;
    }
    record += '"';
}

} // namespace

CStringA CzynCSVWriter::ArrayToStr(const CStringArray& fields, char separator) {
    CStringA record;
    for (int i = 0; i < fields.GetSize(); ++i) {
        if (i > 0) record += separator;
        AppendField(record, fields[i].View(), separator);
    }
    return record;
}

bool CzynCSVWriter::CreateFile(const char* name) {
    CloseFile();
    return m_file.Open(name, CFile::modeCreate | CFile::modeWrite | CFile::shareDenyWrite, nullptr) == 1;
}

bool CzynCSVWriter::Write(const CStringArray& fields) {
    const CStringA record = ArrayToStr(fields, m_cSeparator) + "\r\n";
    return m_file.Write(record.GetString(), static_cast<unsigned>(record.GetLength()));
}

bool CzynCSVWriter::CloseFile() {
    return m_file.Close();
}
