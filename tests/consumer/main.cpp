#include <zynaggr/zynaggr.h>

int main() {
    CzynINI ini(zynFromNativePath("./consumer.ini"));
    return ini.GetInt("greeting", "times", 3, false) == 3 ? 0 : 1;
}
