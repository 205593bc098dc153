#pragma once

#include "zynaggr/ini.h"
#include "zynplatform/tick.h"

#include <atomic>
#include <string>

// A clock that stands until the test moves it.
class StandingClock {
public:
    StandingClock() {
        zynplatform::SetTickSource([] { return m_now.load(); });
    }
    ~StandingClock() { zynplatform::SetTickSource(nullptr); }
    StandingClock(const StandingClock&) = delete;
    StandingClock& operator=(const StandingClock&) = delete;

    void Pass(std::uint32_t milliseconds) { m_now += milliseconds; }

private:
    static inline std::atomic<std::uint32_t> m_now{1'000'000};
};

// A CzynINI whose inside can be looked at and called.
class OpenIni : public CzynINI {
public:
    explicit OpenIni(const char* name = nullptr) : CzynINI(name) {}

    using CzynINI::FindCreateOption;
    using CzynINI::InternalSave;
    using CzynINI::m_aSections;
    using CzynINI::m_bReadOnly;
    using CzynINI::m_bWriteMode;
    using CzynINI::m_nEncoding;
    using CzynINI::m_sErr;
    using CzynINI::m_sIniName;
    using CzynINI::Parse;
    using CzynINI::ParseText;
    using CzynINI::PrintInfoWithSaveFlags;

    // The sections as "<name|tail>", each followed by its lines: "{key:value}", "{=:value}" for a pair with
    // an empty key, "{:text}" for a line that is no pair, "{}" for an empty slot. With `state` the insertion
    // point and the header flags follow the name: "<name|tail|3|2>".
    std::string Model(bool state = false) const {
        std::string model;
        for (int i = 0; i < m_aSections.GetSize(); ++i) {
            const SSection& section = *m_aSections.GetAt(i);
            model += "<" + std::string(section.m_sName.View()) + "|" + std::string(section.m_sTail.View());
            if (state)
                model +=
                    "|" + std::to_string(section.m_nInsertPos) + "|" + std::to_string(section.m_nHeaderFlags);
            model += ">";
            for (int k = 0; k < section.m_aOptions.GetSize(); ++k) {
                const SOption* const option = section.m_aOptions.GetAt(k);
                model += option ? "{" + std::string(option->m_bEmptyKey ? "=" : "") +
                                      std::string(option->m_sKey.View()) + ":" +
                                      std::string(option->m_sValue.View()) + "}"
                                : "{}";
            }
        }
        return model;
    }
};
