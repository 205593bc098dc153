// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

// Text encodings: the enumeration shared by the whole library, byte-order marks, tests that recognise an
// encoding by its content, and tables of widths and names.
//
// To find out what a file is in, ask for its mark first; text without one is tested from the strictest test
// to the most tolerant, and what passes none is in the 8-bit code page:
//
//     int mark = 0;
//     zynTextEncoding encoding = zynGetBufferEncodeByBOM(data, length, &mark);
//     if (mark == 0) {
//         if (IsBufUCS4BE(data, length)) encoding = zynEncUCS4BE;
//         else if (IsBufUCS4LE(data, length)) encoding = zynEncUCS4LE;
//         else if (IsBufUtf8(data, length)) encoding = zynEncUTF8;
//         else if (IsBufUCS2(data, length)) encoding = zynEncUCS2LE;
//         else if (IsBufUCS2BE(data, length)) encoding = zynEncUCS2BE;
//     }
//
// Lengths are in bytes; a null buffer and a length of 0 or less are empty input, of which nothing is said:
// the tests answer false, the mark functions "none". Buffers are only read. All functions are safe from
// several threads.

// The values are stored and passed as these numbers. A value outside the enumeration is taken as
// zynEncUnknown.
enum zynTextEncoding : int {
    zynEncUnknown = 0, // no encoding decided
    zynEncCP1251 = 1,  // the 8-bit code page, in which the library works
    zynEncUTF8 = 2,
    zynEncUCS2LE = 3, // 16-bit units, low byte first
    zynEncUCS2BE = 4, // 16-bit units, high byte first
    zynEncUCS4LE = 5, // 32-bit units, low byte first
    zynEncUCS4BE = 6, // 32-bit units, high byte first
    zynEncCP866 = 7,  // the DOS code page; it is named only, nothing in the library converts it
};

// --- Byte-order marks ---

// Classifies a buffer by its mark alone; `bomLength`, unless null, receives the mark's bytes, 0 for none.
// Without a mark the answer is zynEncCP1251; for empty input it is zynEncUnknown. Fewer than three bytes have
// no mark. FF FE is the mark of zynEncUCS2LE unless two zero bytes follow.
ZYN_API zynTextEncoding zynGetBufferEncodeByBOM(const unsigned char* buffer, int length, int* bomLength);

// The mark of an encoding: static bytes, not to be changed or freed. Null and 0 where there is none.
ZYN_API void GetBomData(zynTextEncoding encoding, unsigned char*& bom, int& bomLength);

// The length of the encoding's mark when the buffer begins with it, else 0. Only this one encoding is looked
// at: FF FE 00 00 begins with the mark of zynEncUCS2LE as well.
ZYN_API int GetBomLength(zynTextEncoding encoding, const unsigned char* buffer, int length);

// --- Content tests ---
//
// They are made for Russian text: what is well-formed but holds other letters does not pass. The whole buffer
// is read, a mark included, which passes none of them. A length that is not a whole number of units is not of
// the encoding.

// UTF-8 with at least one character that is not ASCII, every one of these among А-я, Ё, ё and « » ± µ Ω № – •
// …, and without a zero byte.
ZYN_API bool IsBufUtf8(const unsigned char* buffer, int length);

// 16-bit units, low byte first or high byte first: ASCII, or U+0400 to U+04FF. A unit whose low byte is zero
// does not pass.
ZYN_API bool IsBufUCS2(const unsigned char* buffer, int length);
ZYN_API bool IsBufUCS2BE(const unsigned char* buffer, int length);

// 32-bit units of which none is above U+FFFF; the lower half of a unit is not looked at.
ZYN_API bool IsBufUCS4LE(const unsigned char* buffer, int length);
ZYN_API bool IsBufUCS4BE(const unsigned char* buffer, int length);

// --- What a caller says ---

// When a text is written with the mark of its encoding.
enum zynMarkChoice : int {
    zynMarkUsual = 0, // always, where the encoding has one; in the faithful mode of CzynINI as it was found
    zynMarkAsFound,   // when the file that was read has one; a new file gets none
    zynMarkAlways,    // where the encoding has one
    zynMarkNever,     // not in UTF-8; the others are hardly known without
};

// What a caller knows about the encoding of files, the same for every class that reads or writes text:
//
//     zynEncodingChoice choice;
//     choice.m_bPreferUtf8 = true; // what most files of this system are in
//     choice.m_nNewFile = zynEncUTF8;
//     choice.m_nMark = zynMarkAsFound;
//     ini.SetEncodingChoice(choice);
//
// A mark in a file always decides what it is read as. The initial values are what each class does unasked.
struct zynEncodingChoice {
    // What a file without a mark is read as; zynEncUnknown: what its content looks like.
    zynTextEncoding m_nUnmarked = zynEncUnknown;
    // Such a file is read as UTF-8 before that, when it is well-formed (ASCII is) and has no zero byte.
    bool m_bPreferUtf8 = false;
    // What a new file is written in; zynEncUnknown: the 8-bit code page.
    zynTextEncoding m_nNewFile = zynEncUnknown;
    zynMarkChoice m_nMark = zynMarkUsual;
};

// --- Tables ---

// The fewest and the most bytes that one character takes, 0 for zynEncUnknown. For UTF-8 these are 1 and 2:
// the most that the text recognised as Russian usually takes.
ZYN_API unsigned zynGetMinBYTEInCharForEncoding(zynTextEncoding encoding);
ZYN_API unsigned zynGetMaxBYTEInCharForEncoding(zynTextEncoding encoding);

// The name under which converters know the encoding, such as "UCS-2LE": static text. Null for zynEncUnknown.
ZYN_API const char* zynGetCodingNameForIcov(zynTextEncoding encoding);
