// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynfile.h"
#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

#include <string_view>
#include <vector>

// Reads text files with separated fields, record by record or as a table, and splits single texts.
//
//     CzynCSV csv(';');
//     std::vector<std::vector<CStringA>> table;
//     if (csv.ReadFile("prices.csv", table)) ...
//
// The quoting rules are the library's own. They differ from what is usual elsewhere:
//
// - Spaces before the first field and after each separator are dropped, all others stay, also those between a
//   closing quote and the separator. Tabs outside quotes are dropped.
// - Quotes may open and close anywhere in a field: a"b,c"d is the field ab,cd. A quote that is not closed
//   reaches to the end.
// - Inside quotes a doubled quote is one quote; where it is the field's end, spaces behind it are dropped.
// - Inside quotes quote, comma, quote, with or without spaces around the comma, are the text ","; so "a","b"
//   is ONE field, a","b, whatever the separator is. Leave out the quotes of one of two such neighbours.
// - A pair of quotes that begins a field is an empty text when a separator follows, spaces apart. Otherwise
//   it is one quote in a text that is still open, and so are three quotes in a row.
// - A line with an odd number of quotes goes on in the next line: the record is its lines with a space behind
//   each one, the last included. A file that ends before the quotes are balanced loses that record.
//
// Only the character 0x20 is a space. The separator may be any character, and where it is one that has a
// meaning of its own, it is the separator: a tab-separated file is read with '\t'. A quote as separator
// leaves no way to quote.
//
// Files of other programs are read after SetRFC4180(true), by the rules that are usual elsewhere: a field
// that begins with a quote reaches to the next quote that is not doubled, separators and line ends inside are
// part of it, and nothing is dropped or joined. What stands between such a quote and the separator belongs to
// the field as well; a quote within another field is a character; a quote that is never closed reaches to the
// end of the file. A mark of UTF-8 at the start of the file is no part of the first field. CzynCSVWriter
// writes such files.
//
// The lines of a file end in LF or CR LF. Bytes are taken as they are, in whatever code page. Nothing throws
// but running out of memory. An object is for one thread at a time; a copy reads on in the same open file.
class ZYN_API CzynCSV {
public:
    // The separator of the files that this object reads.
    explicit CzynCSV(char separator = ',') : m_cSeparator(separator) {}

    // Which rules hold: those of RFC 4180 or, initially, the library's own. To be set before a file is
    // opened.
    void SetRFC4180(bool bOn) { m_bRFC4180 = bOn; }
    bool IsRFC4180() const { return m_bRFC4180; }

    // Opens a file for ReadString, in place of one that is open; others may meanwhile read it, not write.
    // False when there is none, or it can't be read.
    bool OpenFile(const char* name);
    void CloseFile(); // nothing happens when none is open
    // The next record is the first one again.
    void SeekToBegin();

    // Reads the next record into `fields`, in place of what they held: at least one, as an empty line has one
    // empty field. False, with no fields, at the end of the file. Backslashes are ordinary characters.
    bool ReadString(CStringArray& fields);

    // Reads a whole file into a row for each record, in place of what `rows` held. False when it could not be
    // opened, which leaves `rows` as it was, and when not all rows have the same number of fields: this is
    // shown in a message box, and the rows are kept. A file that is open here already is closed.
    bool ReadFile(const char* name, std::vector<std::vector<CStringA>>& rows);

    // Splits one record into `fields`, in place of what they held; an empty text is one empty field. False,
    // with no fields, only for a null text. With `escapes`, a backslash opens quotes where none are open;
    // inside, \\ is a backslash and \n a line feed, and before anything else a backslash closes the quotes.
    static bool StrToArray(const char* text, CStringArray& fields, char separator, bool escapes);
    // The same by the rules of RFC 4180; a line end at the end of the text is no part of it.
    static void StrToArrayRFC4180(std::string_view text, CStringArray& fields, char separator);

protected:
    // Reads a line and those that continue it, as one.
    bool ReadRecord(CStringA& record);
    template <class Add> void Split(const CStringA& record, Add add) const;

    char m_cSeparator;
    CzynFile m_file;
    bool m_bRFC4180 = false;
    bool m_bAtStart = false; // the next record may begin with a mark
};
