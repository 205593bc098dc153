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

// Makes this descriptor, which must be open for writing, the one that saves the file: false, at once, when
// another one is. The share modes have nothing to do with it.
bool TakeSavingTurn(int descriptor);
bool IsSavingTurnTaken(int descriptor); // by another one

// Takes back whatever the descriptor has announced or taken.
void ReleaseLocks(int descriptor);
void ReleaseSavingTurn(int descriptor);

} // namespace zynplatform
