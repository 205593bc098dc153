// SPDX-License-Identifier: MIT
#include "zynplatform/stream.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zynplatform {

Stream::~Stream() {
    Close();
}

std::uint32_t Stream::Open(const char* name, const Mode& mode) {
    m_access = mode.start == Start::read ? accessRead : accessWrite;
    if (mode.update) m_access = accessRead | accessWrite;
    m_text = mode.text;
    return OpenFile(name,
                    {.access = m_access,
                     .deny = mode.deny,
                     .create = mode.start != Start::read,
                     .truncate = mode.start == Start::write,
                     .append = mode.start == Start::append},
                    m_handle);
}

bool Stream::Close() {
    if (!IsOpen()) return false;
    Flush();
    m_next = m_end = 0;
    return CloseFile(std::exchange(m_handle, noFile)) == 0 && !std::exchange(m_lostBytes, false);
}

// Reads more behind what is unread; false at the end of the file.
bool Stream::Fill() {
    if (!(m_access & accessRead) || !Flush()) return false;
    if (!m_buffer) m_buffer.reset(new char[bufferSize]);
    const std::size_t left = m_end - m_next;
    if (left != 0 && m_next != 0) std::memmove(m_buffer.get(), m_buffer.get() + m_next, left);
    m_next = 0;
    m_end = left;
    std::size_t done = 0;
    ReadFile(m_handle, m_buffer.get() + left, bufferSize - left, done);
    m_end += done;
    return done != 0;
}

// Takes the next unread bytes, translated, as they stand in the buffer: at most `limit`, at least one unless
// the file ends.
std::string_view Stream::NextRun(std::size_t limit, bool stopAfterLineFeed) {
    if (m_next == m_end && !Fill()) return {};
    if (m_text && m_buffer[m_next] == '\r') {
        if (m_end - m_next == 1) Fill();
        if (m_end - m_next > 1 && m_buffer[m_next + 1] == '\n') ++m_next;
        return {&m_buffer[m_next++], 1};
    }
    std::string_view run(&m_buffer[m_next], std::min(limit, m_end - m_next));
    if (const std::size_t lf = stopAfterLineFeed ? run.find('\n') : run.npos; lf != run.npos)
        run = run.substr(0, lf + 1);
    if (m_text) run = run.substr(0, run.find('\r'));
    m_next += run.size();
    return run;
}

std::size_t Stream::Read(void* buffer, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        const std::string_view run = NextRun(count - done, false);
        if (run.empty()) break;
        std::memcpy(static_cast<char*>(buffer) + done, run.data(), run.size());
        done += run.size();
    }
    return done;
}

std::size_t Stream::ReadLine(std::string& line, std::size_t limit) {
    std::size_t done = 0;
    while (done < limit) {
        const std::string_view run = NextRun(limit - done, true);
        if (run.empty()) break;
        line += run;
        done += run.size();
        if (run.back() == '\n') break;
    }
    return done;
}

bool Stream::WriteRaw(std::string_view bytes) {
    if (bytes.size() > bufferSize - m_pending && !Flush()) return false;
    if (bytes.size() >= bufferSize) return WriteNow(bytes);
    if (!m_buffer) m_buffer.reset(new char[bufferSize]);
    std::memcpy(&m_buffer[m_pending], bytes.data(), bytes.size());
    m_pending += bytes.size();
    return true;
}

bool Stream::Write(const void* buffer, std::size_t count) {
    if (!(m_access & accessWrite) || !DropReadAhead()) return false;
    std::string_view rest(static_cast<const char*>(buffer), count);
    while (m_text && !rest.empty()) {
        const std::size_t lf = rest.find('\n');
        if (lf == rest.npos) break;
        if (!WriteRaw(rest.substr(0, lf)) || !WriteRaw("\r\n")) return false;
        rest.remove_prefix(lf + 1);
    }
    return rest.empty() || WriteRaw(rest);
}

bool Stream::Flush() {
    const std::size_t pending = std::exchange(m_pending, 0);
    return pending == 0 || WriteNow({m_buffer.get(), pending});
}

bool Stream::WriteNow(std::string_view bytes) {
    if (WriteFile(m_handle, bytes.data(), bytes.size()) == 0) return true;
    m_lostBytes = true; // how many arrived is not known, so they are not written again
    return false;
}

bool Stream::DropReadAhead() {
    const auto unread = static_cast<std::int64_t>(m_end - m_next);
    m_next = m_end = 0;
    return unread == 0 || SeekFile(m_handle, -unread, SeekFrom::current) >= 0;
}

std::int64_t Stream::Seek(std::int64_t offset, SeekFrom from) {
    return Flush() && DropReadAhead() ? SeekFile(m_handle, offset, from) : -1;
}

std::int64_t Stream::GetPosition() {
    if (!Flush()) return -1;
    const std::int64_t position = SeekFile(m_handle, 0, SeekFrom::current);
    return position < 0 ? -1 : position - static_cast<std::int64_t>(m_end - m_next);
}

bool Stream::SetLength(std::int64_t length) {
    return Flush() && DropReadAhead() && SetFileLength(m_handle, length) == 0;
}

} // namespace zynplatform
