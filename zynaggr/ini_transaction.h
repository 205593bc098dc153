// SPDX-License-Identifier: MIT
#pragma once

#include "zynaggr/ini.h"
#include "zynaggr/zynsync.h"
#include "zynplatform/export.h"

#include <memory>

namespace zynplatform {
class SaveLock;
}

// Edits of an INI file that several processes edit, without losing any:
//
//     CzynINITransaction edits(ini);
//     if (!edits.IsBegun()) show(ini.GetErrDescription());
//     int visits = ini.GetInt("counters", "visits", 0, false);
//     ini.WriteInt("counters", "visits", visits + 1, nullptr);
//     if (!edits.Commit()) show(ini.GetErrDescription());
//
// It waits until nobody else saves the file or has a transaction on it, reads the file, collects the edits of
// the object and saves them together. Until its end no other process and no other object of this one saves
// the file; they may read it. What the object saves at once otherwise (GetString and GetInt with bCreate, the
// renames) is collected too, and SetWriteMode and Flush do nothing. A missing file is made, empty.
//
// Without Commit the edits are dropped at the end of the scope, and the object reads the file again. All of
// it is for one thread, and other threads' calls of the object wait for its end; one transaction an object.
class ZYN_API CzynINITransaction {
public:
    // Begins, after at most so many milliseconds of waiting. The object must be in write-through mode, and
    // outlive this.
    explicit CzynINITransaction(CzynINI& ini, unsigned limitMs = 10'000);
    ~CzynINITransaction();
    CzynINITransaction(const CzynINITransaction&) = delete;
    CzynINITransaction& operator=(const CzynINITransaction&) = delete;

    // The file is this object's alone and was read. Otherwise nothing is collected, edits of the object are
    // what they are without a transaction, and GetErrDescription of the object tells why.
    bool IsBegun() const { return m_bBegun; }

    // Saves the edits and ends the transaction. False when none is begun or nothing was saved: the text tells
    // why, and the transaction goes on, so that it can be tried again.
    bool Commit();

protected:
    void End();

    CzynINI& m_ini;
    CzynEnterCriticalSection m_lock;
    std::unique_ptr<zynplatform::SaveLock> m_pTurn;
    CStringA m_sIniName; // of the file that the turn is for
    bool m_bBegun = false;
};
