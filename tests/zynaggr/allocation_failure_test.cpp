// SPDX-License-Identifier: MIT
#include "support/failing_new.h"
#include "support/host.h"
#include "zynaggr/zynaggr.h"
#include "zynplatform/tick.h"

#include <sstream>

// Calls that may run out of memory, one after the other on the same objects. For each call and each of its
// allocations fresh objects are brought to that call, and there the allocation fails, it alone or with all
// that follow. A call that throws, or answers false, has changed nothing and comes through later; one that
// answers true in spite of the failure has done all its work.

static const std::string longText(1900, 'x');
static const char* const text = longText.c_str();

struct Objects : Host {
    Objects() : Host(1049) {
        folder.Write("translate#a#ru-RU.xml", "encoding\n<strings>\n<s>one</s>\n<s>two</s>\n");
        folder.Write("translate#a#en.xml", "encoding\n<strings>\n<s>three</s>\n<s>" + longText + "</s>\n");
        folder.Write("f", "a, line\n\"two\nlines\",x\n");
        CzynTranslate::Init(true, nullptr); // forgets the dictionary
        zynplatform::SetThreadLocale(9);
        zynplatform::SetTickSource([] { return 7u; });
        GlobalStackLogInit(nullptr, [](const char*) {});
    }
    ~Objects() override {
        GlobalStackLogDestroy();
        zynplatform::SetTickSource(nullptr);
    }
    std::string State() const {
        std::ostringstream state;
        state << result << folder.Read("f") << folder.Read("f.bak") << record->Print(nullptr, false) << key
              << std::string_view(buffer.m_pBuf, static_cast<std::size_t>(buffer.m_nSize))
              << numbers.GetSize();
        for (const char* original : {"one", "two", "new", "z"})
            state << CzynTranslate::Translate(original);
        for (int i = 0; i < texts.GetSize(); ++i)
            state << texts.GetAt(i)->m_sKey << texts.GetAt(i)->m_sValue;
        const StackLoggerThreadEl* const el = g_pGlobalStackLog.load()->FindThreadEl();
        if (el && el->m_mapStack.GetSize() > 0) state << el->GetCurrStackList() << el->m_mapStack.GetSize();
        return state.str();
    }
    // A new value takes the old one's place once it is made.
    bool Keep(const CStringA& value) { return std::string(value.View()).swap(result), true; }

    CStringA name = folder.Path("f"), key{text}, source{text};
    CzynStrMap numbers{false};
    CzynStrStrMap texts;
    CzynFile file;
    CzynCSV csv;
    CStringArray fields;
    std::vector<std::vector<CStringA>> rows;
    CzynDataBufEx buffer;
    std::unique_ptr<SzynErrorDescription> record = std::make_unique<SzynErrorDescription>();
    std::string result;
};

static const std::vector<bool (*)(Objects&)> steps{
    [](Objects& o) { return o.numbers.Add(text, 1) >= 0; },
    [](Objects& o) { return o.texts.Add("a", text) >= 0; },
    [](Objects& o) { return o.texts.Add("a", o.texts.GetAt(0)->m_sValue + "y") >= 0; },
    [](Objects& o) { return CStringSplit(o.fields, "one,two", ','), o.Keep(CStringJoin(o.fields, text)); },
    [](Objects& o) { return o.csv.OpenFile(o.name) && o.csv.ReadString(o.fields) && o.Keep(o.fields[1]); },
    [](Objects& o) { return o.csv.ReadFile(o.name, o.rows), o.Keep(o.rows[1][0]); },
    [](Objects& o) {
        return o.file.Open(o.name, CFile::modeWrite, nullptr) && o.file.Write(text, 9) && o.file.Close();
    },
    [](Objects& o) { return CzynFile::CreateBackupFile(o.name, 2); },
    [](Objects&) { return CzynTranslate::Init(true, nullptr); },
    [](Objects&) { return CzynTranslate::AddStringTranslationPair("new", text), true; },
    [](Objects&) { // the dictionary grows now and then
        for (std::string key(1, 'a'); key[0] <= 'z'; ++key[0])
            CzynTranslate::AddStringTranslationPair(key.c_str(), text);
        return true;
    },
    [](Objects& o) { return o.buffer.AddStrBuf(text) > 0; },
    [](Objects& o) { return o.buffer.GetNewBuffer(5000) != nullptr; },
    [](Objects& o) { return o.buffer.SetCurPos(6000), o.buffer.Utf8StringAdd2Iterator(o.source); },
    [](Objects& o) { return o.buffer.SetSize(o.buffer.m_nSize + 1) && o.buffer.BeginPosSizer(); },
    [](Objects& o) { return o.buffer.SetCurPos(7000), o.buffer.AddStrBuf_TCHAR_2Iterator(o.source) > 0; },
    [](Objects& o) { return o.buffer.m_bStoreAnsi = false, o.buffer.AddStrBuf(text) > 10'000; },
    [](Objects& o) {
        CStringA read;
        o.buffer.SetCurPos(0);
        o.buffer.m_bStoreAnsi = true;
        return o.buffer.ReadStrBuf(read) && o.Keep(read);
    },
    [](Objects& o) { return CzynStackLogger::ExternalEnter(o.key, false), true; },
    [](Objects& o) { return CzynStackLogger::ExternalSetFunctionInfo(o.key, text), true; },
    [](Objects& o) { return o.Keep(CzynStackLogger("function of a long name", true).GetCurrStackList()); },
    [](Objects& o) { return CzynStackLogger::ExternalLeave(o.key), true; },
    [](Objects& o) {
        auto made = std::make_unique<SzynErrorDescription>(27, text, text, 1, text, 0, text, text, text);
        made->Set(SzynErrorDescription(*made, text, text, 2, text, text, text));
        return o.record = std::move(made), true;
    },
};

static std::string After(std::size_t count, Objects& objects) {
    for (std::size_t i = 0; i < count; ++i)
        EXPECT_TRUE(steps[i](objects)) << i;
    return objects.State();
}

TEST(AllocationFailure, ChangesNothing) {
    for (std::size_t i = 0; i < 2 * steps.size(); ++i) {
        const std::string whole = After(i / 2 + 1, *std::make_unique<Objects>());
        for (long n = 1, failures = 1; failures > 0; ++n) {
            Objects objects;
            const std::string before = After(i / 2, objects);
            bool done = false;
            {
                const FailingNew failing(n, i % 2 ? FailingNew::once : FailingNew::onwards);
                try {
                    done = steps[i / 2](objects);
                } catch (const std::bad_alloc&) {
                }
                failures = failing.Failures();
            }
            SCOPED_TRACE(std::to_string(i / 2) + ", allocation " + std::to_string(n));
            ASSERT_TRUE(done || (failures > 0 && objects.State() == before));
            ASSERT_TRUE(done || steps[i / 2](objects));
            ASSERT_TRUE(objects.State() == whole);
        }
    }
}
