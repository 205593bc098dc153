// SPDX-License-Identifier: MIT
#include <zynaggr/modern/ini.h>
#include <zynaggr/zynaggr.h>
#include <zynhost/extensionmodule.h>

#include <cstdio>

// What crosses the library's border in each way: code in line, a template's instance, an exception, and the
// module's own start and end.
int main() {
    zynSetTraceOutput([](const char* text) { std::fputs(text, stdout); });
    CzynINI ini(zynFromNativePath("./consumer.ini"));
    CzynStringW text(u"да");
    CzynDataBufEx empty;
    CStringA nothing;
    try {
        empty.ReadStrBuf_TCHAR_(nothing);
    } catch (const SzynErrorDescription& error) {
        const bool works = CDynLinkLibrary::First() && ini.GetInt("greeting", "times", 3, false) == 3 &&
                           zyn::Ini("consumer.ini").Get("greeting", "times", 3) == 3 &&
                           text.MakeUpper().Find(u"ДА", 0) == 0 && error.m_nCode == 101;
        std::puts(works ? "works" : "does not work");
        return works ? 0 : 1;
    }
    return 1;
}
