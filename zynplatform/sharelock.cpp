// SPDX-License-Identifier: MIT
#include "zynplatform/sharelock.h"

#include "zynplatform/descriptor_impl.h"
#include "zynplatform/patience_impl.h"
#include "zynplatform/syserror.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

// How the share modes are kept. Four facts can hold about a file: somebody reads it, somebody writes it,
// somebody denies reading, somebody denies writing. Each fact has a range of byte locks far beyond any file's
// end. An open announces a fact by a lock somewhere in the fact's range, and finds out whether somebody else
// has announced one by asking for a lock on the whole range. The locks belong to the open file description,
// so closing another handle on the file does not release them.
//
// A descriptor open for reading can only take shared locks, one open for writing only exclusive ones. Shared
// locks all stand on one byte; an exclusive one stands on a byte picked at random, so that any number of
// writers find room.
//
// That somebody waits for his turn is a fifth fact; the turns are one byte each behind the ranges.

namespace zynplatform {

namespace {

constexpr off_t rangeSize = off_t{1} << 20;
constexpr off_t rangesStart = off_t{1} << 62;

enum Fact { reads, writes, deniesReading, deniesWriting, waits };

constexpr off_t RangeOf(Fact fact) {
    return rangesStart + fact * rangeSize;
}

struct flock LockOf(short type, off_t start, off_t length) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

void Announce(int descriptor, Fact fact, bool mayLockShared) {
    if (mayLockShared) {
        struct flock lock = LockOf(F_RDLCK, RangeOf(fact), 1);
        fcntl(descriptor, F_OFD_SETLK, &lock);
        return;
    }
    static std::atomic<std::uint32_t> counter{0};
    std::uint32_t place = static_cast<std::uint32_t>(getpid()) * 2654435761u + counter++;
    for (int attempts = 0; attempts < 100; ++attempts) {
        place = place * 1664525u + 1013904223u; // scatters the places of all openers over the range
        struct flock lock = LockOf(F_WRLCK, RangeOf(fact) + 1 + (place >> 13), 1);
        if (fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES)) return;
    }
}

bool IsAnnouncedByOthers(int descriptor, Fact fact) {
    struct flock lock = LockOf(F_WRLCK, RangeOf(fact), rangeSize);
    return fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Remembers the last file whose whole-file lock a stranger holds, so that it is waited for only once in a
// while: one operation opens its file several times.
class Stranger {
public:
    bool Holds(int descriptor) const {
        const std::uint64_t file = FileOf(descriptor);
        return file != 0 && m_file.load() == file && Patience::Now() - m_since.load() < 5000;
    }
    void Remember(int descriptor) {
        m_since = Patience::Now();
        m_file = FileOf(descriptor);
    }

private:
    static std::uint64_t FileOf(int descriptor) {
        struct stat status;
        if (fstat(descriptor, &status) != 0) return 0;
        return (static_cast<std::uint64_t>(status.st_dev) * 0x9E3779B97F4A7C15) ^ status.st_ino;
    }

    std::atomic<std::uint64_t> m_file{0};
    std::atomic<std::int64_t> m_since{0};
};

constinit Stranger stranger;

// Holds the file's other, whole-file lock while facts are announced and looked up, so that of two opens at
// the same moment exactly one wins. Somebody else's lock of that kind is not waited for longer than a moment:
// without the gate two opens at once may both lose, and nothing worse.
class Gate {
public:
    explicit Gate(int descriptor) : m_descriptor(descriptor) {
        Patience patience(200);
        while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            const bool isHeld = errno == EWOULDBLOCK;
            if (isHeld && !stranger.Holds(descriptor) && patience.Wait()) continue;
            if (isHeld) stranger.Remember(descriptor);
            m_descriptor = -1;
            return;
        }
    }
    ~Gate() {
        if (m_descriptor >= 0) flock(m_descriptor, LOCK_UN);
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

private:
    int m_descriptor;
};

// A fact is announced when the open's access or what it denies has this bit, and conflicts with the opposite.
struct Rule {
    Fact fact;
    unsigned accessBit, denyBit;
    Fact opposite;

    bool AppliesTo(unsigned access, unsigned deny) const {
        return (access & accessBit) != 0 || (deny & denyBit) != 0;
    }
};

constexpr Rule rules[] = {
    {reads, accessRead, 0, deniesReading},
    {writes, accessWrite, 0, deniesWriting},
    {deniesReading, 0, accessRead, reads},
    {deniesWriting, 0, accessWrite, writes},
};

} // namespace

void AnnounceShare(int descriptor, unsigned access, unsigned deny) {
    for (const Rule& rule : rules)
        if (rule.AppliesTo(access, deny)) Announce(descriptor, rule.fact, (access & accessRead) != 0);
}

std::uint32_t TakeShareLock(int descriptor, unsigned access, unsigned deny) {
    const Gate gate(descriptor);
    AnnounceShare(descriptor, access, deny);
    for (const Rule& rule : rules)
        if (rule.AppliesTo(access, deny) && IsAnnouncedByOthers(descriptor, rule.opposite))
            return errorSharingViolation;
    return 0;
}

bool IsWritingDenied(int descriptor) {
    return IsAnnouncedByOthers(descriptor, deniesWriting);
}

bool IsWrittenByOthers(int descriptor) {
    return IsAnnouncedByOthers(descriptor, writes);
}

namespace {

struct flock TurnLock(short type, Turn turn) {
    return LockOf(type, RangeOf(waits) + rangeSize + static_cast<off_t>(turn), 1);
}

} // namespace

bool TakeTurn(int descriptor, Turn turn, bool isAlone) {
    struct flock lock = TurnLock(isAlone ? F_WRLCK : F_RDLCK, turn);
    return fcntl(descriptor, F_OFD_SETLK, &lock) == 0 || (errno != EAGAIN && errno != EACCES);
}

void ReleaseTurn(int descriptor, Turn turn) {
    struct flock lock = TurnLock(F_UNLCK, turn);
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

void BeginWaiting(int descriptor, bool mayLockShared) {
    Announce(descriptor, waits, mayLockShared);
}

void EndWaiting(int descriptor) {
    struct flock lock = LockOf(F_UNLCK, RangeOf(waits), rangeSize);
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

bool IsWaitedFor(int descriptor) {
    return IsAnnouncedByOthers(descriptor, waits);
}

void ReleaseLocks(int descriptor) {
    struct flock lock = LockOf(F_UNLCK, rangesStart, 0);
    fcntl(descriptor, F_OFD_SETLK, &lock);
}

} // namespace zynplatform
