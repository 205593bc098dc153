// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/temp_folder.h"
#include "zynaggr/zynstringfile.h"

// The input is a text file and a program of calls on it. Lines are compared with a plain reading of the whole
// text, and what is written is what a second reading finds.

namespace {

std::string WithCarriageReturns(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) result += '\r';
        result += text[i];
    }
    return result;
}

std::string InMemory(const CzynStringFile& file) {
    return {reinterpret_cast<const char*>(file._GetBuf()), file._GetDataSize()};
}

void ReadLines(CzynStringFile& file) {
    if (!file.Load2Memory()) return; // another try may take the file for another encoding
    CStringA all;
    file.ReadAllDataToString(all);
    const std::string text(all.View());
    std::size_t at = 0;
    for (CStringA line; file.ReadString(line);) {
        const std::size_t end = std::min(text.find_first_of(std::string_view("\r\n\0", 3), at), text.size());
        Check(line.View() == std::string_view(text).substr(at, end - at));
        at = std::min(text.find_first_not_of(std::string_view("\r\n\0", 3), end), text.size());
    }
    Check(at == text.size());
}

// Whether something was written.
bool Run(CzynStringFile& file, Input input) {
    bool written = false;
    CStringA line;
    for (int steps = 0; steps < 8; ++steps)
        switch (input.Below(7)) {
        case 0:
            return written;
        case 1:
            file.ReadString(line);
            break;
        case 2:
            file.SetPosition(static_cast<unsigned>(input.Number()));
            break;
        case 3:
            file.SeekToBegin();
            break;
        case 4:
            ReadLines(file);
            break;
        case 5:
            file.Flush();
            break;
        default: {
            const std::string before = InMemory(file), text(input.Text(16));
            if (!file.WriteString(text.data(), text.size())) break;
            Check(InMemory(file) == before + WithCarriageReturns(text));
            written = true;
        }
        }
    return written;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr unsigned base = CFile::shareDenyNone;
    constexpr unsigned modes[] = {CFile::modeRead, CFile::modeReadWrite, CFile::modeWrite | CFile::modeCreate,
                                  CFile::modeReadWrite | CFile::modeCreate | CFile::modeNoTruncate};
    static const TempFolder folder;
    static const CStringA name = folder.Path("f");
    Input input(data, size);
    const unsigned mode = modes[input.Below(4)];
    const auto encoding = static_cast<zynTextEncoding>(input.Below(zynEncCP866));
    const auto assumed = static_cast<zynTextEncoding>(input.Below(zynEncCP866));
    const std::string program(input.Text(48));
    folder.Write("f", input.Rest());

    CzynStringFile file;
    file.SetEncodingIfNotBOM(assumed);
    Check(file.Open(name, mode | base, encoding));
    const bool written =
        Run(file, {reinterpret_cast<const std::uint8_t*>(program.data()), program.size()}) && file.Flush();
    const std::string text = InMemory(file);
    const zynTextEncoding writtenAs = file.GetFileEncoding();
    file.Close();
    if (!written || text.empty()) return 0;

    // The first characters may look like a mark in code page 1251, and a zero behind the shorter mark of
    // UCS-2 makes the longer one of UCS-4: such a file is another one to its reader.
    std::string bytes = folder.Read("f");
    const zynTextEncoding marked = CzynStringFile::GetBufferEncode(
        reinterpret_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    if (marked != zynEncUnknown && marked != writtenAs) return 0;

    CzynStringFile again;
    again.SetEncodingIfNotBOM(writtenAs);
    Check(again.Open(name, CFile::modeRead | base, zynEncUnknown) && again.Load2Memory());
    Check(again.GetFileEncoding() == writtenAs && InMemory(again) == text);
    return 0;
}
