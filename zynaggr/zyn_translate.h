#pragma once

#include "zynplatform/export.h"

// Translation of the library's texts.
//
// Every text that the library shows or stores for the user is written in Russian and passes through
// CzynTranslate::Translate at the place where it is shown or stored, a format string before its arguments are
// put in. A translation must therefore keep the format's placeholders in their order.
//
// All state is static and process-wide and not guarded: set the switch up before other threads use the
// library.
class ZYN_API CzynTranslate {
public:
    CzynTranslate() = default;
    CzynTranslate(const CzynTranslate&) = default;
    CzynTranslate& operator=(const CzynTranslate&) = default;
    virtual ~CzynTranslate();

    // The dictionary's translation of exactly this text, letter case included; the argument itself, the same
    // pointer, when translation is off, when the text is null or empty, or when the dictionary does not have
    // it. The text returned belongs to the dictionary and stays valid until that is changed.
    static const char* Translate(const char* szText);

    // Whether translation is in force; at first it is not. Setting it does not touch the dictionary.
    static bool IsNeedTranslate() { return m_bTranslate; }
    static void SetShouldTranslate(bool bTranslate) { m_bTranslate = bTranslate; }

protected:
    static bool m_bTranslate;
};
