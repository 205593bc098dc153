// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// The locks that files are shared by, on open descriptors. All of them bind only those who ask, belong to the
// open file description and end when the descriptor and every copy of it is closed, or by ReleaseLocks. Where
// the file system has no locks, taking one succeeds.

namespace zynplatform {

// Announces what the descriptor's open does and denies (FileAccess bits). 0, or error 32 when it conflicts
// with another open; the caller then closes the descriptor.
std::uint32_t TakeShareLock(int descriptor, unsigned access, unsigned deny);
// The same for a file that nobody else can have opened.
void AnnounceShare(int descriptor, unsigned access, unsigned deny);
// Whether another open denies writing, or writes.
bool IsWritingDenied(int descriptor);
bool IsWrittenByOthers(int descriptor);

// Turns, which have nothing to do with the share modes: the one saves the file, the other reads or writes its
// text. Alone takes a descriptor that is open for writing, with others who do not want it alone one that is
// open for reading. Taking a turn never waits: false when others have it.
enum class Turn { saving, text };
bool TakeTurn(int descriptor, Turn turn, bool isAlone = true);
void ReleaseTurn(int descriptor, Turn turn);
// Tells those who have the turn that it is waited for; `mayLockShared`: the descriptor is open for reading.
void BeginWaiting(int descriptor, bool mayLockShared);
void EndWaiting(int descriptor);
bool IsWaitedFor(int descriptor);

// Takes back whatever the descriptor has announced or taken.
void ReleaseLocks(int descriptor);

} // namespace zynplatform
