// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zyn_langs.h"
#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <cstdint>
#include <map>
#include <set>

// Translation of the library's texts, and the user's choice of the interface language.
//
// Every text that the library shows or stores for the user is written in Russian and passes through
// CzynTranslate::Translate at the place where it is shown or stored, a format string through TranslateFormat
// before its arguments are put in. A translation must therefore keep the format's placeholders in their
// order. Hosts may pass their own texts through them too.
//
//     App app;                            // a CWinApp: its help file's folder has the dictionaries
//     CzynTranslate::Init(false, nullptr); // the language of the thread's locale
//     puts(CzynTranslate::Translate("Файл не найден"_cp1251));
//
// Dictionaries are pairs of files, "translate#<name>#ru-RU.xml" with the Russian texts and
// "translate#<name>#<culture>.xml" with their translations (cultures: zyn_langs; "#en.xml" too for the plain
// English locale 9):
//
//     <?xml version="1.0" encoding="utf-8"?>
//     <strings>
//     <s id="1">Ошибка при записи файла ini</s>
//     <s id="2">Разделитель:\t&quot;;&quot;</s>
//     </strings>
//
// The reader goes by lines, it knows no XML beyond this: the second line opens the list, then each line holds
// one entry, whose text may run on over further lines (they are joined with nothing between them) up to
// "</s>". A line with "/>" behind its "<s" is passed over, and so is an entry that never ends. Without
// encoding="utf-8" the text is in code page 1251. In a text the five named entities, then the escapes of
// ConvertSpecSymbols are decoded. A letter that code page 1251 does not have becomes '?', also in a file in
// UTF-8: write "laesst" for "lässt". Texts of the two files belong together by id; an entry without an id, or
// with one that is taken, gets the lowest free number from 1, so that two files in the same order need none.
// scripts/check-dictionary shows a translator what will be lost, is missing, or does not fit.
//
// All state is static and process-wide and not guarded: Init, AddStringTranslationPair and the operations
// that set something must not run while other threads use the library. The registry is the one of
// zynplatform/registry.h, a key in it that may not be written counts as absent. Nothing here reports an
// error but by its result; running out of memory throws std::bad_alloc.
class ZYN_API CzynTranslate {
public:
    CzynTranslate() = default;
    CzynTranslate(const CzynTranslate&) = default;
    CzynTranslate& operator=(const CzynTranslate&) = default;
    virtual ~CzynTranslate();

    // ---- Translating

    // The dictionary's translation of exactly this text, letter case included; the argument itself, the same
    // pointer, when translation is off, when the text is null or empty, or when the dictionary does not have
    // it. The text returned belongs to the dictionary and stays valid until that is changed.
    static const char* Translate(const char* szText);

    // The same for a format as printf takes it: the format itself, too, when its translation would not read
    // the same arguments in the same order (number, order and types of the directives; flags, widths and the
    // notation of a number may differ). So a slip in a dictionary cannot harm the process. "%n" is no
    // directive.
    static const char* TranslateFormat(const char* szFormat);

    // Whether translation is in force; at first it is not. Setting it does not touch the dictionary.
    static bool IsNeedTranslate() { return m_bTranslate; }
    static void SetShouldTranslate(bool bTranslate) { m_bTranslate = bTranslate; }

    // Adds a translation to the dictionary, or replaces the one it has.
    static void AddStringTranslationPair(const CStringA& sText, const CStringA& sTranslation);

    // ---- Dictionaries

    // Loads the dictionary for the thread's locale, unless that is loaded already, and switches translation
    // on. On Russian the texts stay as they are: true, with translation off. False, with Russian in force,
    // when no translation was found, and when the process has no application object (nothing changes then).
    // Unless silent, message boxes say what is missing. The second argument is not used.
    //
    // While a box is shown, the dictionary has what was read so far, and what the host adds to it stays.
    //
    // A text that two files translate differently keeps the translation that was met first. The Russian texts
    // of a file without a translation are forgotten. With string ids shown, translations begin with "[id] ".
    static bool Init(bool bSilent, CStringA* psUnused);

    // The positions in zyn_langs of the languages for which a folder holds a dictionary file; returns how
    // many. A null folder has none.
    static int GetTranslateFiles(const char* szFolder, std::set<int>& aLanguages);

    // Decodes escapes in place and returns its argument, which may be null: \" \' \? \\ \a \b \f \n \r \t
    // \v, one to three octal digits, x or X and one or two hexadecimal digits. An o before one of these is
    // skipped. Anything else stays as it is, also an x without a digit.
    static char* ConvertSpecSymbols(char* szText);

    // ---- The interface language; locales are LCIDs

    // The thread's locale, or 0xFFFFFFFF in a process without an application object.
    static unsigned long GetSystemLocale();
    // The locale whose dictionary is loaded; 0: none, the interface is Russian; 0xFFFFFFFF: Init has not been
    // called yet.
    static unsigned long GetGurLocale();
    // Whether translations show their ids; at first they do not. Set by ReadUILangFromReg.
    static bool GetShowStringId() { return m_bShowStringId; }

    // The language in the registry (0 when none is stored), or, when the registry has no such key, the one in
    // the host's profile.
    static unsigned long GetGlobalUILang();
    // Stores a language in the registry's key, where that exists, and on request in the host's profile.
    static void SetGlobalUILang(unsigned long nLCID, bool bAlsoProfile);
    // The user's language: from the user's key, else the fallback key, else the host's profile; 0 when none
    // is stored. Also reads whether ids are to be shown.
    static unsigned long ReadUILangFromReg();
    // Stores the user's language, in a key that is made if need be.
    static void SaveUILangToReg(unsigned long nLCID);
    // Stores whether ids are to be shown, where the key exists; in force from the next ReadUILangFromReg on.
    static void SaveShowStringId(bool bShow);
    // Does nothing; false.
    static bool SetCurLocaleFromReg(bool bUnused, CStringA* psUnused);

protected:
    // Read a dictionary file: the texts in their order, or by id into a map whose ids are taken already.
    // False when it cannot be opened or is no dictionary file; unless silent, a message box says so in the
    // first case.
    static bool LoadXml(const char* szFile, CStringArray& aTexts, bool bSilent);
    ZYN_LOCAL static bool LoadXmlMap(const char* szFile, std::map<int, CStringA>& aTexts, bool bSilent);

    static bool m_bTranslate;
    static bool m_bShowStringId;
};
