// SPDX-License-Identifier: MIT
#include "faults/failing_calls.h"
#include "support/temp_folder.h"
#include "zynaggr/ini_transaction.h"
#include "zynplatform/cp1251.h"

#include <cstdio>
#include <optional>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

// fault_sweep: makes every single system call of every kind of edit go wrong in every way, and looks at what
// is left. At every moment the file or its ".bak" must hold a whole text, the one before or the one after the
// edit (the file itself, unless it has a second name and must be overwritten); an edit that answers true has
// reached the file, one that answers false left a text; no descriptor and no temporary file is left; and the
// next edit comes through.

using namespace zynplatform::literals;

namespace {

struct Edit {
    const char* name;
    bool (*run)(CzynINI& ini);
};

bool IsWell(CzynINI& ini) {
    return ini.GetErrDescription().IsEmpty();
}

constexpr Edit edits[] = {
    {"write", [](CzynINI& ini) { return ini.WriteString("s", "k", "new value", nullptr); }},
    {"add", [](CzynINI& ini) { return ini.WriteInt("t", "n", 5, "a comment"); }},
    {"delete", [](CzynINI& ini) { return ini.Delete("s", "k"); }},
    {"create", [](CzynINI& ini) { return ini.GetString("s", "made", "x", true), IsWell(ini); }},
    {"rename group", [](CzynINI& ini) { return ini.RenameGroupe("s", "r"), IsWell(ini); }},
    {"rename key", [](CzynINI& ini) { return ini.RenameParam("s", "k", "l"), IsWell(ini); }},
    {"flush",
     [](CzynINI& ini) {
         ini.SetWriteMode(false);
         const bool edited =
             ini.WriteString("s", "k", "later", nullptr) && ini.WriteString("u", "a", "b", nullptr);
         return ini.Flush() && edited;
     }},
    {"faithful", [](CzynINI& ini) { return ini.SetFaithful(true), ini.WriteStringUtf8("t", "n", "1", "x"); }},
    {"no backup",
     [](CzynINI& ini) { return ini.SetKeepBackup(false), ini.SetFileEncoding(zynEncUTF8, true); }},
    {"transaction",
     [](CzynINI& ini) {
         CzynINITransaction transaction(ini);
         return transaction.IsBegun() && ini.WriteString("s", "k", "committed", nullptr) &&
                transaction.Commit();
     }},
};

// An INI file before an edit.
struct Start {
    const char* name;
    std::string text; // empty: there is no file
    bool hasSecondName;
};

const std::string inCodePage =
    "; \xEF\xE5\xF0\xE2\xE0\xFF\r\n[s]\r\nk=v\r\n" + std::string(3000, 'x') + "\r\n";
const Start starts[] = {
    {"new", "", false},
    {"1251", inCodePage, false},
    {"UTF-8", "\xEF\xBB\xBF; \xD0\x81\r\n[s]\r\nk=v\r\n", false},
    {"UCS-2", std::string("\xFF\xFE[\0s\0]\0\r\0\n\0k\0=\0v\0\r\0\n\0", 22), false},
    {"two names", inCodePage, true},
};

constexpr const char* kindNames[] = {"I/O error", "disk full", "interrupted", "shortened", "killed"};

int CountDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

// Exit statuses of the process that edits.
enum Outcome { done, refused, silent, leaked, otherwise = 100 };

Outcome RunEdit(const Edit& edit, const CStringA& name, int nth, FailingCall::Kind kind) {
    CzynINI ini(name);
    const int before = CountDescriptors();
    std::optional<FailingCall> failing(std::in_place, nth, kind);
    const bool answer = edit.run(ini);
    failing.reset();
    if (CountDescriptors() != before) return leaked;
    if (!answer && ini.GetErrDescription().IsEmpty()) return silent;
    return answer ? done : refused;
}

int runs = 0, faults = 0;

void Prepare(const TempFolder& folder, const Start& start) {
    std::filesystem::create_directory(folder.Native("tmp"));
    if (!start.text.empty()) folder.Write("f.ini", start.text);
    if (start.hasSecondName)
        std::filesystem::create_hard_link(folder.Native("f.ini"), folder.Native("second"));
}

bool IsTidy(const TempFolder& folder) {
    const std::set<std::string> allowed{"f.ini", "f.ini.bak", "second", "tmp"};
    for (const auto& entry : std::filesystem::directory_iterator(folder.Native()))
        if (!allowed.contains(entry.path().filename().string())) return false;
    return true;
}

const char* NextEdit(const TempFolder& folder) {
    CzynINI next(folder.Path("f.ini"));
    if (!next.WriteString("z", "last", "1", nullptr)) return "the next edit is refused";
    if (!CzynINI(folder.Path("f.ini")).isParamSet("z", "last")) return "the next edit is not there";
    return IsTidy(folder) ? nullptr : "the next edit leaves a temporary file";
}

// The n-th call; false when there are fewer.
bool Fail(const Edit& edit, const Start& start, const std::string& after, int nth, FailingCall::Kind kind) {
    const TempFolder folder;
    Prepare(folder, start);
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", folder.Native("tmp").c_str(), 1);
        const Outcome outcome = RunEdit(edit, folder.Path("f.ini"), nth, kind);
        folder.Write("tmp/call", FailingCall::Name());
        _exit(*FailingCall::Name() ? outcome : otherwise + outcome);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const bool happened = WIFSIGNALED(status) || WEXITSTATUS(status) < otherwise;
    const int outcome = WIFSIGNALED(status) ? refused : WEXITSTATUS(status) % otherwise;
    const std::string file = folder.Read("f.ini"), backup = folder.Read("f.ini.bak");
    const bool isWhole = file == start.text || file == after || (start.hasSecondName && backup == start.text);
    const bool isUnsynced = folder.Read("tmp/call") == "fsync" && kind <= FailingCall::noSpace &&
                            !start.hasSecondName; // whose backup may be made elsewhere
    const char* fault = !isWhole                                          ? "no whole text is left"
                        : folder.Has("f.ini.bak") && backup != start.text ? "the backup is not the old text"
                        : outcome == done && file != after                ? "true, but the text is not there"
                        : outcome == done && isUnsynced           ? "true, but the text was not synced"
                        : outcome == silent                       ? "false without a text"
                        : outcome == leaked                       ? "a descriptor is left open"
                        : !WIFSIGNALED(status) && !IsTidy(folder) ? "a temporary file is left"
                        : kind == FailingCall::interrupt && outcome != done ? "an interruption is a failure"
                        : kind == FailingCall::shorten && outcome != done   ? "a short transfer is a failure"
                                                                            : NextEdit(folder);
    ++runs;
    if (!fault) return happened;
    ++faults;
    std::printf("%s of %s, call %d (%s) %s: %s\n", edit.name, start.name, nth,
                folder.Read("tmp/call").c_str(), kindNames[kind], fault);
    return happened;
}

} // namespace

int main() {
    if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1); // a disk would take minutes
    for (const Edit& edit : edits)
        for (const Start& start : starts) {
            std::string after;
            {
                const TempFolder folder;
                Prepare(folder, start);
                CzynINI ini(folder.Path("f.ini"));
                edit.run(ini);
                after = folder.Read("f.ini");
            }
            for (int kind = FailingCall::ioError; kind <= FailingCall::kill; ++kind)
                for (int nth = 1; Fail(edit, start, after, nth, static_cast<FailingCall::Kind>(kind));)
                    ++nth;
        }
    std::printf("%d runs, %d faults\n", runs, faults);
    return faults == 0 ? 0 : 1;
}
