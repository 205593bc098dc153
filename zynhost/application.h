// SPDX-License-Identifier: MIT
#pragma once

#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <cstdint>

// The host's application object, and message boxes.
//
// A host that has a user interface derives from CWinApp and overrides what it can do better than the
// defaults; the library then shows its message boxes through it. A process without such an object is fine:
// messages go to standard error and count as answered with OK.
//
//     class App : public CWinApp {
//         int DoMessageBox(const char* text, std::uint32_t style, std::uint32_t) override { ... return IDOK;
//         }
//     } app;

// The button that answers a message box which has no other.
inline constexpr int IDOK = 1;

// Icon of a message box, in its style word.
inline constexpr std::uint32_t MB_ICONHAND = 0x10;        // error
inline constexpr std::uint32_t MB_ICONQUESTION = 0x20;    // no class of its own
inline constexpr std::uint32_t MB_ICONEXCLAMATION = 0x30; // warning
inline constexpr std::uint32_t MB_ICONASTERISK = 0x40;    // information

// The application object: one a process.
class ZYN_API CWinApp {
public:
    // Becomes the process's application object, in place of an earlier one.
    CWinApp();
    // Withdraws itself; the process then has no application object. No other thread may be using it.
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    // Shows a message and returns the identifier of the button pressed. The text is in code page 1251 and
    // never null, the style word is the caller's, 0 means no help context; zynMessageBoxCaption tells the
    // caption. Called on the thread that has something to say. The default writes caption and text to
    // standard error and answers IDOK.
    virtual int DoMessageBox(const char* text, std::uint32_t style, std::uint32_t helpContext);

    // The host's own settings: numbers by section and entry. The default keeps them in the user's registry
    // (zynplatform/registry.h), in the key "Software\<title of the executable>\<section>".
    virtual std::uint32_t GetProfileInt(const char* section, const char* entry, int defaultValue);
    // False when the number could not be stored.
    virtual bool WriteProfileInt(const char* section, const char* entry, int value);

    // The full path of the host's help file. The file need not be there: its folder is where the host's
    // translation dictionaries are. The default is the executable's path with the extension ".hlp".
    virtual CStringA GetHelpFilePath() const;
};

// The process's application object, or null.
ZYN_API CWinApp* AfxGetApp();

// Shows a message through the application object, without one on standard error; returns the button pressed.
// A null text is an empty one.
ZYN_API int AfxMessageBox(const char* text, std::uint32_t style);

// The same with a caption. Does not allocate where there is no application object.
ZYN_API int AfxCaptionMessageBox(const char* text, const char* caption, std::uint32_t style);

// For DoMessageBox: the caption of the box that it is to show, in code page 1251; null for the application's
// own title, and outside of such calls.
ZYN_API const char* zynMessageBoxCaption();
