// SPDX-License-Identifier: MIT
#pragma once

#include "zynplatform/export.h"
#include "zynplatform/file.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// Putting a new text into a file so that no failure leaves a torn one.
//
// A Replacement writes the text to a temporary file beside the old one (".<name>.zynsave"), syncs it, and
// gives it the name by a rename: at every moment, whatever is killed, fails or loses power, the name stands
// for a whole text, the old or the new one. The new file is to everybody what the old one was: owner, group,
// permission bits, access list, attributes, the open handle and its share mode; symbolic links are followed.
// No temporary is left after anything but a kill, and the next replacement removes what a kill left.
//
// Where that is impossible or would change something it says so (errorNotSupported), and OverwriteFile is the
// way: a second name (hard link) of the file, a folder that may not be written, an owner or an attribute that
// cannot be given, somebody else who writes the file, a pipe or a device.

namespace zynplatform {

// A text in pieces, written one behind the other.
using TextPieces = std::initializer_list<std::string_view>;

// A new text on its way to the place of an old one.
class ZYN_API Replacement {
public:
    Replacement() = default;
    ~Replacement(); // removes the temporary file, unless committed
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    // Writes the new text aside. `file` is open for writing under that name and mode, and stays as it is.
    // 0; errorNotSupported when the file cannot be replaced; errorSharingViolation when another process has
    // been replacing it for a second; or what has failed: nothing has changed then. `ownNames`, when they
    // stand for the same file, do not count as hard links: an interrupted save may have left them.
    std::uint32_t Prepare(FileHandle file, const char* name, const OpenMode& mode, TextPieces text,
                          std::initializer_list<const char*> ownNames = {});

    // Gives the old file a second name, so that it outlives the replacement; what has that name must not be
    // needed. False when that cannot be had.
    bool LinkOldFile(const char* secondName) const;

    // The new file takes the name, and `file` becomes the handle of it. errorNotSupported when the name
    // cannot be given after all; other errors: the text may or may not survive a loss of power.
    // With `keepsTurns` the handle has the new file's locks of savelock.h until it is closed: whoever waits
    // for the end of the save waits until then.
    std::uint32_t Commit(FileHandle& file, bool keepsTurns);

private:
    std::uint32_t MakeTemporary(unsigned access);
    std::uint32_t RemoveStale() const;
    bool HasName(const std::string& name, int descriptor) const;

    int m_folder = -1; // its descriptor
    FileHandle m_temporary = noFile;
    std::string m_name;          // in the folder, native
    std::string m_temporaryName; // likewise
};

// Writes the text over what the file holds and cuts it behind that. Nothing is written before there is known
// to be room for all of it; a kill meanwhile leaves a torn text.
ZYN_API std::uint32_t OverwriteFile(FileHandle file, TextPieces text);

// Copies an open file, whatever its share mode, to a new one: what has that name is removed first, and never
// opened. The copy gets the file's rights as far as they can be given, and never gives rights to other
// people; with `isPrivate` it is its owner's alone. Synced.
ZYN_API std::uint32_t CopyToNewFile(FileHandle from, const char* to, bool isPrivate);

// Whether what is written above is forced to the disk (initially yes). Without it a loss of power, not the
// death of the process, can leave an empty or torn file. For the whole process.
ZYN_API void SetSyncToDisk(bool isSynced);
ZYN_API bool IsSyncedToDisk();

} // namespace zynplatform
