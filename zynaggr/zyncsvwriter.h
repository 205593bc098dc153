// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/zynfile.h"
#include "zynhost/carray.h"
#include "zynhost/cstring.h"
#include "zynplatform/export.h"

// Writes files with separated fields by the rules of RFC 4180, as other programs read them and CzynCSV does
// after SetRFC4180(true).
//
//     CzynCSVWriter csv(';');
//     if (!csv.CreateFile("prices.csv") || !csv.Write(fields) || !csv.CloseFile()) ...
//
// A field in which the separator, a quote or a line end stands, or which begins like a mark of UTF-8, is put
// in quotes, and quotes in it are doubled; every record ends in CR LF. Bytes are written as they are, in
// whatever code page. An object is for one thread at a time.
class ZYN_API CzynCSVWriter {
public:
    // Any character may separate fields but a quote, CR and LF.
    explicit CzynCSVWriter(char separator = ',') : m_cSeparator(separator) {}

    // Makes a file, or empties one, in place of a file that is open here; others may meanwhile read it, not
    // write.
    bool CreateFile(const char* name);
    // One record; no fields give an empty line, which is read as one empty field. A full disk may show only
    // in CloseFile.
    bool Write(const CStringArray& fields);
    // False when no file is open or something did not reach it.
    bool CloseFile();

    // The record as a text, without a line end.
    static CStringA ArrayToStr(const CStringArray& fields, char separator);

protected:
    char m_cSeparator;
    CzynFile m_file;
};
