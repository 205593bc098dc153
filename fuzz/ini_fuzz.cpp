// SPDX-License-Identifier: MIT
#include "fuzz.h"

#include "support/ini_model.h"
#include "support/ini_reference.h"
#include "zynaggr/zynstringfile.h"

#include <vector>

// The input is an INI file, read as the reference of the rules reads it. Saved and read again it gives the
// same lines, but for what saving is there to change; in faithful mode the same bytes.

namespace {

// The text of a file in the code page, as far as it can be decoded.
std::string Decoded(const CStringA& name) {
    CzynStringFile file;
    file.KeepOriginal();
    Check(file.Open(name, CFile::modeRead | CFile::shareDenyNone, zynEncUnknown));
    return std::string(file.ReadAllData());
}

// What a file in the code page holds may look like another encoding, having no mark; and a zero behind the
// shorter mark makes the longer one.
bool IsTakenForAnother(const std::string& text, zynTextEncoding encoding) {
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    const auto length = static_cast<int>(text.size());
    const zynTextEncoding marked = zynGetBufferEncodeByBOM(bytes, length, nullptr);
    if (encoding > zynEncCP1251) return !text.empty() && marked != encoding;
    return marked > zynEncCP1251 || IsBufUCS4BE(bytes, length) || IsBufUCS4LE(bytes, length) ||
           IsBufUtf8(bytes, length) || IsBufUCS2(bytes, length) || IsBufUCS2BE(bytes, length);
}

} // namespace

namespace {

void CheckFaithfulness(const TempFolder& folder, const std::string& bytes, bool prefersUtf8) {
    CzynINI ini;
    zynEncodingChoice choice;
    choice.m_bPreferUtf8 = prefersUtf8;
    ini.SetEncodingChoice(choice);
    ini.SetFaithful(true);
    ini.SetINI(folder.Path("f.ini"), false, 0);
    ini.SetWriteMode(false);
    std::vector<std::string> keys;
    const bool isNew = !ini.GetListKeysUtf8("none", keys);
    if (isNew) Check(ini.WriteStringUtf8("none", "k", "v", "note") && ini.DeleteGroupeUtf8("none"));
    const std::string key = "zz";
    std::string value;
    if (!ini.GetStringUtf8("", key, value) && ini.WriteStringUtf8("", key, "v"))
        Check(ini.DeleteUtf8("", key));
    static_cast<void>(ini.Flush()); // refused for what could not be decoded
    Check(folder.Read("f.ini") == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TempFolder folder;
    static const StandingClock clock;
    folder.Write("f.ini", {reinterpret_cast<const char*>(data), size});
    CheckFaithfulness(folder, std::string(data, data + size), size % 2);
    OpenIni ini(folder.Path("f.ini"));
    Check(ini.Parse());
    const std::string text = Decoded(folder.Path("f.ini"));
    if (text.empty() && size != 0) { // what cannot be decoded is not saved over
        Check(ini.Model().empty() && !ini.InternalSave() && !ini.m_sErr.IsEmpty());
        Check(folder.Read("f.ini") == std::string(data, data + size));
        return 0;
    }
    IniReference reference(text);
    for (int round = 0; round < 2; ++round) {
        Check(ini.Model(true) == reference.Model());
        const std::string before = folder.Read("f.ini");
        Check(ini.InternalSave() && ini.m_sErr.IsEmpty());
        Check(folder.Read("f.ini.bak") == before);
        if (IsTakenForAnother(folder.Read("f.ini"), ini.m_nEncoding)) break;
        reference = IniReference(reference.Text());
        ini.SetNeedReload();
        Check(ini.Parse());
    }
    return 0;
}
