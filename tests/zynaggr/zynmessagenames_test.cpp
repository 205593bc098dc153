#include "zynaggr/zynmessagenames.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

// The first and last of each run of neighbouring identifiers, and those that stand alone.
TEST(MessageNames, NamesStandAtTheirIdentifiers) {
    // clang-format off
    const struct {
        unsigned long message;
        const char* name;
    } cases[] = {
        {0x0001, "WM_CREATE"},             {0x0003, "WM_MOVE"},               {0x0005, "WM_SIZE"},
        {0x0008, "WM_KILLFOCUS"},          {0x000A, "WM_ENABLE"},             {0x0016, "WM_ENDSESSION"},
        {0x0018, "WM_SHOWWINDOW"},         {0x001A, "WM_WININICHANGE"},       {0x0024, "WM_GETMINMAXINFO"},
        {0x0027, "WM_ICONERASEBKGND"},     {0x0028, "WM_NEXTDLGCTL"},         {0x002A, "WM_SPOOLERSTATUS"},
        {0x0032, "WM_SETHOTKEY"},          {0x0037, "WM_QUERYDRAGICON"},      {0x0039, "WM_COMPAREITEM"},
        {0x0041, "WM_COMPACTING"},         {0x0046, "WM_WINDOWPOSCHANGING"},  {0x0048, "WM_POWER"},
        {0x004A, "WM_COPYDATA"},           {0x004E, "WM_NOTIFY"},             {0x0052, "WM_TCARD"},
        {0x0053, "WM_HELP"},               {0x007B, "WM_CONTEXTMENU"},        {0x0087, "WM_GETDLGCODE"},
        {0x00A0, "WM_NCMOUSEMOVE"},        {0x00A9, "WM_NCMBUTTONDBLCLK"},    {0x0100, "WM_KEYDOWN"},
        {0x0107, "WM_SYSDEADCHAR"},        {0x0109, "WM_KEYLAST"},            {0x0110, "WM_INITDIALOG"},
        {0x0117, "WM_INITMENUPOPUP"},      {0x011F, "WM_MENUSELECT"},         {0x0121, "WM_ENTERIDLE"},
        {0x0132, "WM_CTLCOLORMSGBOX"},     {0x0138, "WM_CTLCOLORSTATIC"},     {0x0200, "WM_MOUSEMOVE"},
        {0x020A, "WM_MOUSEWHEEL"},         {0x0210, "WM_PARENTNOTIFY"},       {0x0212, "WM_EXITMENULOOP"},
        {0x0214, "WM_SIZING"},             {0x0216, "WM_MOVING"},             {0x0219, "WM_DEVICECHANGE"},
        {0x0220, "WM_MDICREATE"},          {0x0229, "WM_MDIGETACTIVE"},       {0x0230, "WM_MDISETMENU"},
        {0x0233, "WM_DROPFILES"},          {0x0234, "WM_MDIREFRESHMENU"},     {0x0300, "WM_CUT"},
        {0x0312, "WM_HOTKEY"},             {0x0317, "WM_PRINT"},              {0x0318, "WM_PRINTCLIENT"},
        {0x0361, "WM_SIZEPARENT"},         {0x0367, "WM_EXITHELPMODE"},       {0x03E0, "WM_DDE_INITIATE"},
        {0x03E8, "WM_DDE_EXECUTE"},        {0x0000, ""},                      {0x0118, ""},
        {0x0400, ""},                      {0x10001, ""},                     {~0UL, ""},
        {static_cast<unsigned long>(0x1'0000'0001), "WM_CREATE"},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_STREQ(zynGetStringFromMsg(c.message, true), c.name) << std::hex << c.message;
}

TEST(MessageNames, FrequentMessagesAreNamedOnRequestOnly) {
    const std::set<unsigned long> frequent{0x001F, 0x0020, 0x0084, 0x00A0, 0x0118, 0x0121, 0x0132,
                                           0x0133, 0x0134, 0x0135, 0x0136, 0x0137, 0x0138, 0x0200};
    for (unsigned long message = 0; message < 0x0400; ++message)
        EXPECT_STREQ(zynGetStringFromMsg(message, false),
                     frequent.contains(message) ? "" : zynGetStringFromMsg(message, true))
            << std::hex << message;
}
