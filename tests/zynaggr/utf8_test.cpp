#include "support/test.h"
#include "zynaggr/utf8.h"

TEST(Utf8, ConvertsBothWaysAndSaysWhatIsLost) {
    const std::tuple<std::string, std::string, bool> cases[] = {
        {"", "", false},
        {"a\0?"s, "a\0?"s, false},
        {"Ёж № €", "Ёж № €"_cp1251, false},
        {"Müller 日本 😀", "M?ller ?? ??", true},
        {"x\xFFy\xD0", "x?y?", true},
    };
    for (const auto& [utf8, text, wanted] : cases) {
        bool isLost = !wanted;
        EXPECT_EQ(text, zynFromUtf8(utf8, &isLost).View());
        EXPECT_EQ(wanted, isLost) << utf8;
        EXPECT_EQ(wanted, utf8 != zynToUtf8(CStringA(std::string_view(text))));
    }
}
