// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynaggr/zynmessagenames.h"

TEST(MessageNames, TableIsStillTheOneThatWasComparedRowByRow) {
    std::string names;
    for (unsigned long message = 0; message < 0x11000; ++message)
        names.append(zynGetStringFromMsg(message, true)).append("\n");
    EXPECT_EQ(Hash(names), 17433568481412125283u);
    EXPECT_STREQ(zynGetStringFromMsg(0x001A, true), "WM_WININICHANGE"); // the first of its two names
    EXPECT_STREQ(zynGetStringFromMsg(~0UL, true), "");
    EXPECT_STREQ(zynGetStringFromMsg(static_cast<unsigned long>(0x1'0000'0001), true), "WM_CREATE");
}

TEST(MessageNames, FrequentMessagesAreNamedOnRequestOnly) {
    const std::set<unsigned long> frequent{0x001F, 0x0020, 0x0084, 0x00A0, 0x0118, 0x0121, 0x0132,
                                           0x0133, 0x0134, 0x0135, 0x0136, 0x0137, 0x0138, 0x0200};
    for (unsigned long message = 0; message < 0x0400; ++message)
        EXPECT_STREQ(zynGetStringFromMsg(message, false),
                     frequent.contains(message) ? "" : zynGetStringFromMsg(message, true))
            << std::hex << message;
}
