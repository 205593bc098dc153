#include <zynaggr/zynaggr.h>

#include <cstdio>

// What crosses the library's border in each way: code in line, a template's instance, an exception.
int main() {
    CzynINI ini(zynFromNativePath("./consumer.ini"));
    CzynStringW text(u"да");
    CzynDataBufEx empty;
    CStringA nothing;
    try {
        empty.ReadStrBuf_TCHAR_(nothing);
    } catch (const SzynErrorDescription& error) {
        const bool works = ini.GetInt("greeting", "times", 3, false) == 3 &&
                           text.MakeUpper().Find(u"ДА", 0) == 0 && error.m_nCode == 101;
        std::puts(works ? "works" : "does not work");
        return works ? 0 : 1;
    }
    return 1;
}
