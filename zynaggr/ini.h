// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynencoding.h"
#include "zynaggr/zynsync.h"
#include "zynaggr/zyntaggr.h"
#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zyn {
class IniDocument;
class IniIndex;
class IniLines;
class IniUtf8;
} // namespace zyn
namespace zynplatform {
class SaveLock;
}

// One pair of CzynINI::GetListKeysVals.
struct ZYN_API SKeyVal {
    SKeyVal(const char* szKey, const char* szVal) : m_sKey(szKey), m_sVal(szVal) {}

    CStringA m_sKey;
    CStringA m_sVal;
};

// An INI file whose every line survives being edited.
//
//     CzynINI ini("app.ini");                                  // looked for beside the program and elsewhere
//     int port = ini.GetInt("server", "port", 8080, true);     // and written to the file when it was missing
//     if (!ini.WriteString("server", "host", "localhost", "who we are")) show(ini.GetErrDescription());
//
// The whole file is kept in memory as sections of lines: pairs, comments, blank lines, free text, the text
// behind a header. Names of sections and keys are compared as they stand in the file, blanks included,
// without regard to letter case (Latin and Russian letters); of several equal ones the first in the file is
// meant.
//
// Two modes. In write-through mode, the initial one, every edit saves the file at once, and a query or edit
// first reloads it when more than 1000 ms have passed since the last load or save. In deferred mode edits
// collect in memory and nothing is reloaded, until Flush or SetWriteMode(true) saves. The destructor does not
// save.
//
// A save writes the file in the encoding that it was read in (code page 1251 for a new one), every line ended
// by CR LF. Per section it writes the pairs whose keys are decimal numbers first, in ascending order and
// without those whose value is empty, then all other lines as they stood; a header gets a blank line before
// it when the section above ends with a pair. Nothing else is moved.
//
// The new text takes the file's name in one step, and the file as it was becomes "<name>.bak": whatever is
// killed, fails or loses power, the name stands for a whole text, the old one or the new one, and the ".bak"
// for the one before. CzynStringFile tells what stays (owner, rights, links) and where that is impossible;
// the text is then written over the old one, after a copy of that has become the ".bak". Nobody else opens
// the file through this library while it is written; whoever saves it too, in this process or another, waits
// for up to a second and is then refused. A save that answers true is on the disk (see SetSyncToDisk).
//
// A text in UTF-8 or Unicode is worked with in code page 1251, where characters that this does not have are
// '?'. In the file they stay what they are: a save writes every name, value and line that still is what was
// read as the file had it, ill-formed parts included; only what an edit changed is written from the code
// page, and a '?' written over such a character changes nothing. The operations in UTF-8 read and write all
// of them. A file that cannot be decoded counts as empty, and is not saved over until one could be read.
//
// Faithful mode (SetFaithful) goes further: a save changes the lines of the edit and no other byte. Line
// ends, mark or none, blanks, order, numbered keys, empty values, the end of the last line stay as they were;
// a new line is written the way its neighbours are (line end, indent, blanks around "="), a new section gets
// a blank line above it where the file separates its sections so; the lines of a new file end with LF. Names
// are compared without the blanks around them; no name takes the caller's spelling, no later one of the same
// name is marked as a copy, and a rename leaves no comment.
//
// Failure: operations return false (or the default) and GetErrDescription gives the text, translated. A file
// that cannot be read, because of an error or because it has 1 GiB or more, leaves the sections as they were,
// and nothing is edited or saved until it could be. A failed save leaves the old file and does not undo the
// edit in memory; the next successful one empties its text. Running out of memory throws std::bad_alloc.
// Section and key arguments and values may be null, which counts as an empty text.
//
// Threads: one object may be used by several. Several objects or processes on one file never damage it, and
// see each other's edits only by reloading: within the 1000 ms an object works on what it has read, and its
// next save overwrites what another wrote meanwhile. CzynINITransaction (ini_transaction.h) is for edits that
// must not be lost that way. A child of fork may use an object only when no other thread was using it then.
class ZYN_API CzynINI {
    friend class CzynINITransaction;
    friend class zyn::IniUtf8;

public:
    struct SOption;
    struct SSection;
    // What the object and its lists are made of.
    using SectionArray = CzynTAggr<SSection*, SSection*, 4>;
    using OptionArray = CzynTAggr<SOption*, SOption*, 6>;
    using KeyValArray = CzynTAggr<SKeyVal*, SKeyVal*, 4>;

    // ---- The file

    // With a name, calls SetINI(szIniName, bSearchModuleDir, 0).
    CzynINI(const char* szIniName = nullptr, bool bSearchModuleDir = true);
    virtual ~CzynINI();
    CzynINI(const CzynINI&) = delete;
    CzynINI& operator=(const CzynINI&) = delete;

    // Points the object at a file; always true. A name with a backslash, or a native absolute path, is the
    // file. A bare name is looked for in this order, and the first that exists is taken:
    //   1. only with bSearchModuleDir: the program's own directory; the place that the environment variable
    //      named by SetEnvForFind gives (the file itself when the value ends in ".ini", else its directory);
    //      up to nUpLevels directories upwards: the parents of the program's directory, or, with the variable
    //      set, the directory of the file that it gave and the parents of that, the root excepted;
    //   2. the current directory;
    //   3. the user's profile directory (USERPROFILE, here HOME);
    //   4. the directory named by SystemRoot, whether it exists there or not.
    // The file is read by the next query or edit, and sections read from an earlier file stay until then (and
    // for good when the new file does not exist).
    virtual bool SetINI(const char* szIniName, bool bSearchModuleDir, int nUpLevels);
    void SetEnvForFind(const char* szEnvName); // for the next SetINI

    CStringA GetRealIniName();            // full name of the file
    void GetRealIniName(CStringA& sName); // the same
    CStringA GetRealIniPath();            // its directory with a backslash at the end; empty without one
    bool isFileExist();                   // SetINI found it, or it was read since
    bool IsHomeDir();                     // SetINI found it in the user's profile directory

    // Faithful mode, initially off. It takes effect when the file is next read, which this makes due, or at
    // once when nothing has been read: set it before.
    void SetFaithful(bool bFaithful);
    bool IsFaithful(); // as it was set

    // What the caller says about encodings; makes a reload due. In faithful mode zynMarkUsual keeps the mark
    // or none that the file has.
    void SetEncodingChoice(const zynEncodingChoice& choice);
    zynEncodingChoice GetEncodingChoice();
    // What the file was found to be in, or zynEncUnknown when nothing was read. Reads it when that is due.
    zynTextEncoding GetFileEncoding();
    // Puts the file into another encoding, with or without its mark (where the choice says neither always nor
    // never), and saves that as other edits are saved. Refused, with a text, when the encoding lacks a
    // character of the file, or the file is ill-formed in its own; with bLossy such a character becomes '?'
    // or U+FFFD.
    bool SetFileEncoding(zynTextEncoding encoding, bool bMark, bool bLossy = false);

    // Whether the file can be opened for writing. A missing file is made, empty.
    bool CheckWrite();
    // Makes the next query or edit in write-through mode read the file.
    void SetNeedReload();

    // ---- Queries

    // The value as a decimal number, cut to 32 bits; the default when there is none or it is no number. With
    // bCreate, what is missing or no number is replaced by the default and saved, as by GetString.
    virtual int GetInt(const char* szSection, const char* szKey, int nDefault, bool bCreate);
    // The value, or the default when there is no such entry or the file cannot be read. With bCreate, a
    // missing entry is made and an empty value filled with the default, and the file saved at once, in either
    // mode; later sections and entries of the same name get "___copy" added to theirs, and the found ones
    // take the caller's spelling (saved with the next save).
    virtual CStringA GetString(const char* szSection, const char* szKey, const char* szDefault, bool bCreate);
    // A comment in the place of bCreate would count as true: comments are for WriteString.
    template <class C>
    CStringA GetString(const char* szSection, const char* szKey, const char* szDefault,
                       const C* szComment) = delete;
    CStringA GetString(const char* szSection, const char* szKey, const char* szDefault,
                       const CStringA& sComment) = delete;
    // The same; false when the file cannot be read. Without bCreate, an empty value is returned as it is.
    virtual bool GetString(const char* szSection, const char* szKey, CStringA& sValue, const char* szDefault,
                           bool bCreate);

    // The keys, or pairs, of a section in the order of the file, repeated ones included. False when there is
    // no such section; what the container held is gone in any case.
    bool GetListKeys(const char* szSection, CStringArray& keys);
    bool GetListKeysVals(const char* szSection, KeyValArray& list);
    // The names of the sections in the order of the file, repeated ones included, without the empty one of
    // lines before the first header. False when the file cannot be read.
    bool GetListSections(CStringArray& sections);
    bool isParamSet(const char* szSection, const char* szKey); // there is such an entry
    bool isGroupeSet(const char* szSection);                   // there is such a section

    // ---- Edits

    // Set a value, trimmed. A missing entry is made behind the last pair of its section, with a comment line
    // above it when szComment has at least two characters (";" is put before it where it has none). Comment
    // lines inserted since the file was read do not move that place: the next new entry comes to stand so
    // many lines higher. Repeated names are treated as by GetString with bCreate. WriteInt fails without
    // changing anything when the file is read-only; WriteString fails then at the save.
    virtual bool WriteInt(const char* szSection, const char* szKey, int nValue, const char* szComment);
    virtual bool WriteString(const char* szSection, const char* szKey, const char* szValue,
                             const char* szComment);
    // Removes every entry with this key from the first section of this name; true also when there is none.
    virtual bool Delete(const char* szSection, const char* szKey);
    // Rename the first section or entry of a name and leave a comment above it that says so. Saved at once in
    // either mode.
    virtual void RenameGroupe(const char* szOldName, const char* szNewName);
    virtual void RenameParam(const char* szSection, const char* szOldName, const char* szNewName);

    // ---- The same in UTF-8
    //
    // With every character that the file's encoding holds, found and stored exactly: a name that has a
    // character outside code page 1251 is another one than with '?' in its place, and what is ill-formed in
    // the file is read as U+FFFD. Otherwise as above, but for what is told here. An empty key is the key of
    // no entry. Names that are found stay spelled as they are, later ones of the same name are not marked,
    // and a new entry without a section comes before all headers.

    // Whether there is such an entry; if not, the value is emptied.
    bool GetStringUtf8(std::string_view section, std::string_view key, std::string& value);
    bool GetListSectionsUtf8(std::vector<std::string>& sections);
    bool GetListKeysUtf8(std::string_view section, std::vector<std::string>& keys);
    bool GetListKeysValsUtf8(std::string_view section,
                             std::vector<std::pair<std::string, std::string>>& pairs);
    // What would be read back as anything else is refused, with a text, and nothing is changed: a character
    // that the file's encoding does not have, ill-formed UTF-8, a line end or a zero byte, a "=" in a key,
    // ...
    bool WriteStringUtf8(std::string_view section, std::string_view key, std::string_view value,
                         std::string_view comment = {});
    bool DeleteUtf8(std::string_view section, std::string_view key);
    // Removes the first section of this name with all its lines; true also when there is none.
    bool DeleteGroupeUtf8(std::string_view section);
    // Without a comment, and saved as the other edits are. Refused also when there is no such section or
    // entry, or there is one of the new name; letter case and all may be changed.
    bool RenameGroupeUtf8(std::string_view oldName, std::string_view newName);
    bool RenameParamUtf8(std::string_view section, std::string_view oldName, std::string_view newName);

    // ---- Modes, paths, messages

    // false begins to collect edits (the file is read first), true saves what was collected. The mode changes
    // also when that fails.
    void SetWriteMode(bool bWrite);
    // Saves what was collected and returns to write-through mode, also when the save fails.
    bool Flush();
    // Whether saves, of text files and the registry too, are forced to the disk before they answer: for the
    // whole process, initially yes. Without it a save is some times faster, and a loss of power, not the
    // death of the process, may leave an empty or torn file.
    static void SetSyncToDisk(bool bSync);
    // Whether a save keeps the file as it was as "<name>.bak": initially yes. Where the new text must be
    // written over the old one, it is kept in any case.
    void SetKeepBackup(bool bKeep);

    // Expands a path from the file: ".\" and "..\" at its start mean the directory of the INI file and the
    // one above (one "..\" only); quotes around the result are removed. Every other path stays as it is.
    CStringA ExpandPath(const char* szPath);

    // The text of the last failure, and notices and warnings collected since; a successful load empties it.
    CStringA GetErrDescription();

    // Notices of ExpandPath are printed (true) or collected for GetErrDescription (false). Warnings are both.
    bool m_bPrintInfo = true;

protected:
    // Loads the file into m_aSections when a reload is due. True also when none is due or there is no file;
    // false when it cannot be opened or read.
    virtual bool Parse();
    // Writes m_aSections to the file; false, with a text, when they are not known to be there.
    virtual bool InternalSave();

    // For a derived class that lets the library keep an index. The library cannot see whether a class of a
    // host's changes the model: m_aSections, what hangs on it, or a key through the pointer that
    // FindCreateOption returns. So its queries go through all names, every time. A class that calls
    // ModelChanged, say in its constructor, promises to call it again before the next query or edit whenever
    // it has changed a name, or has added, removed or moved a section or an entry; values don't matter. Its
    // queries then cost the same however long the file is; an edit elsewhere than at the end of a section has
    // the index of that section made anew.
    void ModelChanged();

    // The entry, or null. With bCreate it is made when missing, its section too.
    SOption* FindCreateOption(const char* szSection, const char* szKey, bool bCreate, const char* szComment);
    zyn::IniIndex& Index();
    SSection* FindSection(const char* szSection);
    SOption* FindOption(const char* szSection, const char* szKey);
    bool FailEntryCreation();
    bool FailSectionLookup();
    bool SaveEdit();
    zyn::IniLines* AddSection(const char* szSection, bool bUnnamedFirst);
    SOption* AddOption(zyn::IniLines& lines, const char* szKey, const CStringA& sComment,
                       SOption** ppComment = nullptr);
    void AddRenameComment(SSection& section, const SOption& option, const CStringA& sOld);
    zyn::IniDocument& Document();
    template <class Visit> bool VisitPairs(const char* szSection, Visit visit);

    void PrintInfoWithSaveFlags(const char* szMsg);
    void PrintWarningWithSaveFlags(const char* szMsg);
    void AppendToErr(const char* szMsg);

    bool IsLoadDue();
    bool FailLoad(const CStringA& sErr);
    bool FailSave(const CStringA& sErr);
    bool IsSafeToSave();
    bool WaitForTurn(zynplatform::SaveLock& turn);
    bool WriteModel();
    void ForgetSaveFailure();
    bool ForgetComments();

    bool TryFile(const CStringA& sName);
    void LocateBareName(const CStringA& sName, bool bSearchModuleDir, int nUpLevels);
    bool LocateByModuleDir(const CStringA& sName, int nUpLevels);
    bool ParseText(std::string_view text);
    CStringA ComposeText();
    bool IsMarked() const;
    bool IsReadAlike(std::string_view bytes) const;

    bool m_bTellsChanges = false; // ModelChanged was called
    CStringA m_sEnvForFind;       // name of an environment variable that may point at the file
    CStringA m_sIniName;
    CStringA m_sIniPath;
    zynTextEncoding m_nEncoding = zynEncUnknown; // found at the last load; used when writing
    CStringA m_sErr;
    std::atomic<bool> m_bWriteMode = true;
    bool m_bReadOnly = false; // the last write check failed
    std::atomic<bool> m_bFileExist = false;
    std::atomic<bool> m_bHomeDir = false;
    SectionArray m_aSections{8}; // in file order
    CzynTimeMeter m_TimeMeter;   // time since the last load or save
    CZynCriticalSection m_CS;

    // What is known of m_aSections and the file.
    enum LoadState { loadNotTried, loadDone, loadFailed, loadNotDecoded };
    std::atomic<LoadState> m_nLoadState = loadNotTried;
    std::atomic<bool> m_bReloadDue = true;        // whatever m_TimeMeter says
    CStringA m_sSaveErr;                          // the text of the last save, when it failed
    bool m_bInTransaction = false;                // saving waits for the end of a CzynINITransaction
    zynplatform::SaveLock* m_pSaveLock = nullptr; // of the transaction that is being committed
    std::unique_ptr<zyn::IniIndex> m_pIndex;      // of m_aSections
    bool m_bFaithful = false;                     // how m_aSections was read
    bool m_bWantsFaithful = false;
    zynEncodingChoice m_choice;
    bool m_bMarkFound = false; // by the last load
    bool m_bKeepBackup = true;
    // The file's own bytes, where they are needed: in faithful mode, or when they hold what the code page
    // does not have.
    std::unique_ptr<zyn::IniDocument> m_pDocument;
};

// A line of a section.
struct ZYN_API CzynINI::SOption {
    explicit SOption(const char* szKey) : m_sKey(szKey) {}

    CStringA m_sKey;           // as it stands before the first "="; empty for a line that is no pair
    CStringA m_sValue;         // trimmed: the value of a pair, or the whole line
    bool m_bEmptyKey = false;  // a pair whose key is empty: it is written with its "="
    std::int32_t m_nLine = -1; // of the document that it was read from; -1: of none
};

// A section. Lines before the first header belong to one with an empty name, which writes no header.
struct ZYN_API CzynINI::SSection {
    // Appends itself to the array, which owns it.
    SSection(SectionArray& aSections, const char* szName);
    SSection(const SSection&) = delete;
    SSection& operator=(const SSection&) = delete;

    // Appends an entry, which the section then owns; its index, or -1 for null.
    int Add(SOption* pOpt);
    // Puts an entry at an index, or at m_nInsertPos for -1; the index, or -1 for null.
    int Insert(SOption* pOpt, int nPos);

    CStringA m_sName;                // as it stands between the brackets
    CStringA m_sTail;                // the rest of the header's line
    CStringA m_sComment;             // written above the header by the next save, and then gone
    OptionArray m_aOptions{8};       // in file order
    std::int32_t m_nInsertPos = 0;   // where a new pair goes: behind the last one
    std::uint8_t m_nHeaderFlags = 0; // 1: "[" was read, 2: "]" was read
    std::int32_t m_nLine = -1;       // of the header; as that of an entry
};

template <> inline constexpr bool zyn::isStruct<SKeyVal> = true;
template <> inline constexpr bool zyn::isStruct<CzynINI::SOption> = true;
template <> inline constexpr bool zyn::isStruct<CzynINI::SSection> = true;
