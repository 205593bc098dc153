// SPDX-License-Identifier: MIT

// One edit of an INI file by a library: edit FILE SECTION KEY VALUE. What the library cannot read or write is
// status 1.
//
// Compiled by scripts/compare, once for each peer.

#include <cstdio>
#include <cstdlib>
#include <string>

#if defined PEER_SIMPLEINI
#include <SimpleIni.h>
static bool Edit(const char* file, const char* section, const char* key, const char* value) {
    CSimpleIniA ini(true, true);
    return ini.LoadFile(file) >= 0 && ini.SetValue(section, key, value, nullptr, true) >= 0 &&
           ini.SaveFile(file) >= 0;
}
#elif defined PEER_QSETTINGS
#include <QSettings>
static bool Edit(const char* file, const char* section, const char* key, const char* value) {
    QSettings ini(file, QSettings::IniFormat);
    ini.setIniCodec("UTF-8");
    ini.setValue(QString::fromUtf8(section) + "/" + QString::fromUtf8(key), QString::fromUtf8(value));
    ini.sync();
    return ini.status() != QSettings::AccessError; // comments are errors of the format to it
}
#elif defined PEER_WX
#include <wx/fileconf.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/wfstream.h>
static bool Edit(const char* file, const char* section, const char* key, const char* value) {
    wxInitializer wx;
    wxLogNull quiet;
    wxFileInputStream input(wxString::FromUTF8(file));
    if (!input.IsOk()) return false;
    wxFileConfig ini(input, wxConvUTF8);
    ini.SetPath("/" + wxString::FromUTF8(section));
    if (!ini.Write(wxString::FromUTF8(key), wxString::FromUTF8(value))) return false;
    wxFileOutputStream output(wxString::FromUTF8(file));
    return ini.Save(output, wxConvUTF8);
}
#elif defined PEER_CLASSIC
#include <zynaggr/zynaggr.h>
static bool Edit(const char* file, const char* section, const char* key, const char* value) {
    CzynINI ini;
    ini.SetINI(file, false, 0);
    return ini.WriteString(zynFromUtf8(section), zynFromUtf8(key), zynFromUtf8(value), nullptr);
}
#else
#include <zynaggr/modern/ini.h>
static bool Edit(const char* file, const char* section, const char* key, const char* value) {
    return zyn::Ini(file).Set(section, key, value);
}
#endif

int main(int count, char** arguments) {
    return count == 5 && Edit(arguments[1], arguments[2], arguments[3], arguments[4]) ? 0 : 1;
}
