// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/file.h"

#include <memory>
#include <string>
#include <string_view>

namespace zynplatform {

// A buffered stream over an open file, as the run-time library has them, with a share mode.
//
// A text stream turns CR LF into LF in everything that is read and LF into CR LF in everything that is
// written; positions and lengths count the file's own bytes either way. Reading and writing may alternate
// freely: bytes read ahead are dropped and bytes not yet written are written out where they must be.
class ZYN_API Stream {
public:
    // What becomes of the file.
    enum class Start {
        read,   // the file must exist
        write,  // made when missing, else emptied
        append, // made when missing; every write goes to the end
    };
    // How to open.
    struct Mode {
        Start start = Start::read;
        bool update = false; // both reading and writing
        bool text = false;
        unsigned deny = accessNone; // FileAccess bits: what others may not do meanwhile
    };

    Stream() = default;
    ~Stream();
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    // A system error number, 0 for success. The stream must not be open.
    std::uint32_t Open(const char* name, const Mode& mode);
    bool IsOpen() const { return m_handle != noFile; } // Open succeeded and no Close came since
    // Closed afterwards whatever is reported; false when something was not written or closing failed.
    bool Close();

    // The number of bytes read: fewer than asked for only at the end of the file or on an error.
    std::size_t Read(void* buffer, std::size_t count);
    // Appends up to `limit` bytes to `line`, up to and including the first line feed; the number of bytes
    // appended.
    std::size_t ReadLine(std::string& line, std::size_t limit);
    // Nothing is left to read.
    bool AtEnd() { return m_next == m_end && !Fill(); }
    // True when all bytes were taken; a full disk may show only at Flush or Close.
    bool Write(const void* buffer, std::size_t count);
    bool Flush();

    // The new position, or -1 with nothing moved.
    std::int64_t Seek(std::int64_t offset, SeekFrom from);
    std::int64_t GetPosition();
    // Cuts or extends the file; what was read ahead is read again.
    bool SetLength(std::int64_t length);

private:
    static constexpr std::size_t bufferSize = std::size_t{16} * 1024;

    bool Fill();
    bool DropReadAhead();
    std::string_view NextRun(std::size_t limit, bool stopAfterLineFeed);
    bool WriteRaw(std::string_view bytes);
    bool WriteNow(std::string_view bytes);

    FileHandle m_handle = noFile;
    unsigned m_access = accessNone;
    bool m_text = false;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_next = 0; // the unread bytes stand at m_next .. m_end
    std::size_t m_end = 0;
    std::size_t m_pending = 0; // the bytes not yet written stand at 0 .. m_pending; then nothing is unread
    bool m_lostBytes = false;
};

} // namespace zynplatform
