// SPDX-License-Identifier: MIT
#pragma once

#include "support/test.h"
#include "zynaggr/ini.h"
#include "zynplatform/file.h"
#include "zynplatform/syserror.h"
#include "zynplatform/tick.h"

#include <atomic>
#include <sstream>

inline const CStringA readOnlyText("Файл ini доступен только для чтения"_cp1251);
inline const CStringA openFailedText = CStringA("Ошибка при открытии файла: "_cp1251) +
                                       zynplatform::DescribeSystemError(zynplatform::errorSharingViolation);

// A clock that stands until the test moves it.
class StandingClock {
public:
    StandingClock() {
        zynplatform::SetTickSource([] { return m_now.load(); });
    }
    ~StandingClock() { zynplatform::SetTickSource(nullptr); }

    void Pass(std::uint32_t milliseconds) { m_now += milliseconds; }

private:
    static inline std::atomic<std::uint32_t> m_now{1'000'000};
};

// A CzynINI whose inside can be looked at and called.
class OpenIni : public CzynINI {
public:
    explicit OpenIni(const char* name = nullptr) : CzynINI(name) {}

    using CzynINI::ComposeText, CzynINI::FindCreateOption, CzynINI::InternalSave, CzynINI::m_aSections,
        CzynINI::m_bReadOnly, CzynINI::m_bWriteMode, CzynINI::m_nEncoding, CzynINI::m_sErr,
        CzynINI::m_sIniName, CzynINI::ModelChanged, CzynINI::Parse, CzynINI::ParseText;

    // The sections as "<name|tail>", each followed by its lines: "{key:value}", "{=:value}" for a pair with
    // an empty key, "{:text}" for a line that is no pair, "{}" for an empty slot. With `state` the insertion
    // point and the header flags follow the name: "<name|tail|3|2>".
    std::string Model(bool state = false) const {
        std::ostringstream model;
        for (const SSection* const section : m_aSections) {
            model << '<' << section->m_sName.View() << '|' << section->m_sTail.View();
            if (state) model << '|' << section->m_nInsertPos << '|' << +section->m_nHeaderFlags;
            model << '>';
            for (const SOption* const option : section->m_aOptions) {
                model << (option && option->m_bEmptyKey ? "{=" : "{");
                if (option) model << option->m_sKey.View() << ':' << option->m_sValue.View();
                model << '}';
            }
        }
        return model.str();
    }
};

// An INI file "f.ini" of the test's own, under a standing clock.
class IniFileTest : public testing::Test {
protected:
    IniFileTest() { ini.SetINI(folder.Path("f.ini"), false, 0); }

    // Has the object work on a new text.
    void Load(std::string_view bytes) {
        folder.Write("f.ini", bytes);
        ini.SetNeedReload();
        EXPECT_TRUE(ini.Parse());
    }
    std::string File() const { return folder.Read("f.ini"); }
    std::string Backup() const { return folder.Read("f.ini.bak"); }

    StandingClock clock;
    TempFolder folder;
    OpenIni ini;
};

// Somebody else has the file open, as the mode says.
class OtherHandle {
public:
    OtherHandle(const CStringA& name, const zynplatform::OpenMode& mode) {
        EXPECT_EQ(0u, zynplatform::OpenFile(name, mode, m_handle));
    }
    ~OtherHandle() { zynplatform::CloseFile(m_handle); }

private:
    zynplatform::FileHandle m_handle = zynplatform::noFile;
};
