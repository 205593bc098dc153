// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"

#include <cstdint>

// Windows error numbers are the library's vocabulary for failures of the operating system: file exceptions
// carry them, their causes are derived from them, and callers may compare them with the numbers they know.
// This is where errno becomes such a number and where a number becomes a text.

namespace zynplatform {

// The numbers that this system's failures become.
inline constexpr std::uint32_t errorSuccess = 0;
inline constexpr std::uint32_t errorFileNotFound = 2;
inline constexpr std::uint32_t errorPathNotFound = 3;
inline constexpr std::uint32_t errorTooManyOpenFiles = 4;
inline constexpr std::uint32_t errorAccessDenied = 5;
inline constexpr std::uint32_t errorInvalidHandle = 6;
inline constexpr std::uint32_t errorNotEnoughMemory = 8;
inline constexpr std::uint32_t errorNotSameDevice = 17;
inline constexpr std::uint32_t errorWriteProtected = 19;
inline constexpr std::uint32_t errorGeneralFailure = 31;
inline constexpr std::uint32_t errorSharingViolation = 32;
inline constexpr std::uint32_t errorLockViolation = 33;
inline constexpr std::uint32_t errorNotSupported = 50;
inline constexpr std::uint32_t errorFileExists = 80;
inline constexpr std::uint32_t errorInvalidParameter = 87;
inline constexpr std::uint32_t errorDiskFull = 112;
inline constexpr std::uint32_t errorInvalidName = 123;
inline constexpr std::uint32_t errorNegativeSeek = 131;
inline constexpr std::uint32_t errorDirectoryNotEmpty = 145;
inline constexpr std::uint32_t errorNameTooLong = 206;
inline constexpr std::uint32_t errorHardwareInput = 1117;

// The number for an errno value: 0 for 0, errorGeneralFailure (31) for a value without a number of its own.
//
// errno alone does not tell everything, so two numbers are the caller's to give: ENOENT answers
// errorFileNotFound (2) also when it is the parent directory that is missing (3), and EAGAIN from a lock that
// another opening holds means errorSharingViolation (32), while here it is one of those without a number.
ZYN_API std::uint32_t SystemErrorFromErrno(int errnoValue);

// A short description in the library's code page, one line without a line end, never null, empty for a number
// without a description. Every number that SystemErrorFromErrno gives has one. It is static text in Russian,
// or what the translator has made of that.
ZYN_API const char* DescribeSystemError(std::uint32_t code);

// What puts the descriptions into the user's language; CzynTranslate sets it. Null for nothing.
ZYN_API void SetErrorTranslator(const char* (*translate)(const char* text));

} // namespace zynplatform
