// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynencoding.h"
#include "zynhost/cfile.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <cstdint>
#include <memory>
#include <string_view>

// A text file in any of the encodings of zynTextEncoding, seen by its users as text in the system's code page
// (1251).
//
//     CzynStringFile file;
//     if (!file.Open("readme.txt", CFile::modeRead | CFile::shareDenyWrite, zynEncUnknown)) ...
//     for (CStringA line; file.ReadString(line);) ...
//
// Reading takes the whole file into memory at the first read, finds its encoding from its mark or else from
// its content, and converts it. Writing appends to the text in memory; Flush and Close convert it back and
// write the whole of it.
//
// What is not kept: a character that code page 1251 does not have becomes '?', and is '?' when the text is
// written back (but see KeepOriginal). Text written to a file that was not read replaces the file's content:
// read first to append. A text in code page 1251 that begins with "яю" or "юя" looks to its reader as if it
// began with a mark of UCS-2. Files of 1 GiB and more are not read, texts of 2 GiB and more not written.
// Files in code page 866 are named but not converted.
//
// Flush puts the new text under the name in one step: at every moment the name stands for a whole text, the
// old one or the new one, whatever is killed, fails or loses power. Owner, rights and attributes of the file
// stay, links are followed. Where that cannot be done (a hard link beside it, a folder that may not be
// written, somebody else who has the file open for writing, a device) the text is written over the old one,
// once there is known to be room for all of it. zynplatform/replace.h has the details.
//
// A file opened to be emptied (modeCreate without modeNoTruncate) that nobody else can open meanwhile keeps
// its old content until the new text has taken its place, so that a full disk leaves the old file whole. The
// object itself, CFile's operations included, sees it as empty from the start.
//
// An object is for one thread at a time; the static converters may be used by any.
class ZYN_API CzynStringFile : public CFile {
public:
    CzynStringFile();
    CzynStringFile(const char* name, unsigned flags); // opens, encoding unknown
    ~CzynStringFile() override;                       // closes

    // Opens by flags of CFile::OpenFlags, always in binary mode. `encoding` is what a new file is written in;
    // reading finds its own. Non-zero on success; on failure GetErrorMessage tells why. Without share bits
    // the file is exclusive.
    int Open(const char* name, unsigned flags, zynTextEncoding encoding);
    // Writes what was not yet written, and closes, also when writing failed: call Flush first to know.
    void Close();
    bool IsFileOpen() const; // Open succeeded and no Close came since

    // Reads the file into memory: 1, also for an empty file; 0 when there is no open file, it cannot be read
    // (GetLoadFailure) or cannot be converted (the object then forgets everything but the open file). Text
    // that was written before and is not yet flushed comes to stand behind what is read, and is kept when
    // reading fails.
    int Load2Memory();
    // Kinds of failed loads.
    enum LoadFailure {
        loadDone,
        loadNoMemory,
        loadNotRead,    // no open file, an error while reading, or too long
        loadNotDecoded, // read, but it is no text
    };
    // Why the last load failed.
    LoadFailure GetLoadFailure() const { return m_nLoadFailure; }
    // The next line, without its end; a run of line ends (CR, LF, zero bytes) counts as one, so that an empty
    // line is returned only where the position itself stands on a line end. 1, or 0 at the end or when
    // loading fails.
    int ReadString(CStringA& line);
    // Everything from the position to the end; the position stays.
    int ReadAllDataToString(CStringA& text);
    // The same in place: valid until the text in memory changes, empty at the end or when loading fails.
    std::string_view ReadAllData();

    // Appends at the end of the text, wherever the position is; a LF without a CR before it gets one. 1 on
    // success, 0 for an empty text, without an open file or without memory.
    int WriteString(const char* text);
    int WriteString(const char* text, std::size_t length); // a text in which zero bytes may stand
    // Makes the text what the file holds. 1 on success, also when there was nothing to write; 0 when the text
    // cannot be converted or written: it is then still to be written, and GetWriteError tells why.
    int Flush();
    // The same, an empty text included, after the file as it was has become `name`.bak (see
    // CzynFile::CreateBackupFile). For a file that was opened to be emptied, and is closed next: who waits
    // for the end of the save waits for that.
    int FlushWithBackup();
    // The system error number of the last failed Flush; 0 when it could not be converted.
    std::uint32_t GetWriteError() const { return m_nWriteError; }

    // Positions count bytes of the text in memory. SetPosition keeps within the text and returns the new
    // position.
    void SeekToBegin();
    unsigned GetPosition() const { return m_nPosition; }
    unsigned SetPosition(unsigned position);

    // What the file is written in: as given to Open or set here, or as a load found it.
    void SetFileEncoding(zynTextEncoding encoding) { m_nFileEncoding = encoding; }
    zynTextEncoding GetFileEncoding() const { return m_nFileEncoding; }
    // What the caller says about encodings. May be set before opening, too; forgotten by Close and by a load
    // that fails to convert. SetEncodingIfNotBOM sets what a file without a mark is read as.
    void SetEncodingChoice(const zynEncodingChoice& choice) { m_choice = choice; }
    zynEncodingChoice GetEncodingChoice() const { return m_choice; }
    void SetEncodingIfNotBOM(zynTextEncoding encoding) { m_choice.m_nUnmarked = encoding; }

    // For who writes back what the code page does not have: said before the load, the bytes of the file stay
    // in memory beside the text until the next load or Close, and a 32-bit file with characters above U+FFFF
    // is read, each as two '?'.
    void KeepOriginal() { m_bKeepsOriginal = true; }
    std::string_view GetOriginal() const; // empty when nothing is loaded
    // How the original begins: with so many bytes of marks.
    std::size_t GetMarkLength() const { return m_nMarkLength; }
    // FlushWithBackup of these bytes as they are, whatever the text in memory is. Without the backup, it is
    // kept all the same where the file must be written over.
    int FlushBytes(std::string_view mark, std::string_view bytes, bool withBackup);

    // Why the last Open failed; kept until the next failure.
    CStringA GetErrorMessage() const { return m_sErrorMessage; }

    // The text in memory, its size in bytes and the position in it; null before the first load or write.
    const unsigned char* _GetBuf() const { return m_pBuffer; }
    unsigned _GetDataSize() const { return m_nDataSize; }
    unsigned _GetCurPos() const { return m_nPosition; }

    // Converters between encodings. The outputs are null and 0 on failure, else a new buffer, which the
    // caller releases with FreeBuffer. False for a pair that is not converted or an empty result; running out
    // of memory throws std::bad_alloc.
    static zynTextEncoding GetBufferEncode(unsigned char* buffer, int length);
    static bool ConvertEncoding(zynTextEncoding from, unsigned char* src, int length, zynTextEncoding to,
                                unsigned char*& out, int& outLength);
    static bool ConvertEncoding2UCS2(zynTextEncoding from, unsigned char* src, int length,
                                     unsigned char*& out, int& outLength);
    static bool ConverUCS2Encoding(unsigned char* src, int length, zynTextEncoding to, unsigned char*& out,
                                   int& outLength);
    // In place, either way; bytes of a last partial unit stay. False only for a null buffer with a length.
    static bool BufConvert_Utf16_BE2LE(unsigned char* buffer, unsigned length);
    static bool BufConvert_Utf32_BE2LE(unsigned char* buffer, unsigned length);
    // Whole units only; the first is false for a character above U+FFFF.
    static bool BufConvert_Utf32le_to_UCS2(unsigned char* src, unsigned length, unsigned char*& out,
                                           unsigned& outLength);
    static bool BufConvert_UCS2_to_Utf32le(unsigned char* src, unsigned length, unsigned char*& out,
                                           unsigned& outLength);
    static void FreeBuffer(unsigned char* buffer); // a converter's output, or null

protected:
    void Reset();
    void FreeBuffer();
    bool SetBufSize(unsigned size);

    bool ConvertLoaded(std::uint32_t offset);
    bool Convert32Bit();
    int LoadFile();
    bool ReadWhole();
    bool ReadToEnd();
    int FailLoad(LoadFailure failure);
    void TakeBuffer(unsigned char* buffer, unsigned length);
    template <class Step> bool WriteText(Step step);
    bool ConvertAndWrite(bool withBackup);
    bool PutInPlace(std::string_view mark, std::string_view text, bool withBackup, bool keepsTurns);

    bool m_bLoaded;
    bool m_bModified;
    LoadFailure m_nLoadFailure;
    std::uint32_t m_nWriteError = 0;
    CStringA m_sName; // of the open file
    zynplatform::OpenMode m_mode;
    unsigned char* m_pBuffer;
    std::uint32_t m_nCapacity;
    std::uint32_t m_nDataSize;
    std::uint32_t m_nPosition;
    zynTextEncoding m_nFileEncoding;
    zynTextEncoding m_nWorkEncoding; // of the buffer
    zynEncodingChoice m_choice;
    bool m_bKeepsOriginal;
    std::unique_ptr<unsigned char[]> m_pOriginal; // null: it is the buffer
    std::uint32_t m_nOriginalSize;
    std::uint32_t m_nMarkLength;
    CStringA m_sErrorMessage;
};
