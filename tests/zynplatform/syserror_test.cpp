// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/syserror.h"

#include <cerrno>

using namespace zynplatform;

TEST(SystemError, TranslatesErrnoToTheNumberCallersKnow) {
    // clang-format off
    const std::tuple<int, std::uint32_t> cases[] = {
        {0, 0},            {ENOENT, 2},   {ENOTDIR, 3},  {EMFILE, 4},     {EACCES, 5},    {EPERM, 5},  {EISDIR, 5},
        {EBADF, 6},        {ENOMEM, 8},   {EXDEV, 17},   {EROFS, 19},     {EBUSY, 32},    {EEXIST, 80}, {EINVAL, 87},
        {ENOSPC, 112},     {EDQUOT, 112}, {EFBIG, 112},  {ENOTEMPTY, 145}, {ENAMETOOLONG, 206}, {EIO, 1117},
        {EAGAIN, 31},      {-1, 31},
    };
    // clang-format on
    for (const auto& [error, code] : cases)
        EXPECT_EQ(SystemErrorFromErrno(error), code) << "errno " << error;
}

TEST(SystemError, DescribesKnownNumbersInTheCodePage) {
    EXPECT_STREQ(DescribeSystemError(2), "\xD4\xE0\xE9\xEB \xED\xE5 \xED\xE0\xE9\xE4\xE5\xED.");
    for (const unsigned code :
         {0U,  3U,  4U,  5U,  6U,  8U,  12U, 15U, 17U, 18U,  19U,  20U,  21U,  25U,  26U,  29U,
          30U, 31U, 32U, 33U, 38U, 39U, 80U, 82U, 87U, 112U, 123U, 131U, 145U, 183U, 206U, 1117U})
        EXPECT_STRNE(DescribeSystemError(code), "") << code;
    EXPECT_STREQ(DescribeSystemError(7777), "");
    EXPECT_STREQ(DescribeSystemError(0xFFFFFFFF), "");
}
