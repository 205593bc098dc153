// inictl: reads and edits an INI file from the command line, and shows how a host program uses the library.
//
// Arguments and output are in the terminal's encoding, the library's texts in code page 1251: FromTerminal
// and zynplatform::Write stand between the two. Messages are in the language of the user's locale, from the
// dictionaries "translate#*.xml" beside the program, and Russian where there is none.

#include <zynaggr/zynaggr.h>
#include <zynhost/application.h>
#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace zynplatform::literals;

namespace {

constexpr const char* usage = "использование: inictl ФАЙЛ list [СЕКЦИЯ]\n"
                              "               inictl ФАЙЛ get СЕКЦИЯ КЛЮЧ [ПО-УМОЛЧАНИЮ]\n"
                              "               inictl ФАЙЛ set СЕКЦИЯ КЛЮЧ ЗНАЧЕНИЕ [КОММЕНТАРИЙ]\n"
                              "               inictl ФАЙЛ delete СЕКЦИЯ КЛЮЧ\n"
                              "               inictl ФАЙЛ rename-section СТАРАЯ НОВАЯ\n"
                              "               inictl ФАЙЛ rename-key СЕКЦИЯ СТАРЫЙ НОВЫЙ\n"
                              "               inictl ФАЙЛ expand ПУТЬ"_cp1251;

constexpr std::uint32_t errorStyle = 0x10;

using Arguments = std::vector<CStringA>;

// The engine has no listing of sections: a host that wants one looks into the model from a derived class.
class Settings : public CzynINI {
public:
    bool Load() { return Parse(); }

    std::vector<CStringA> SectionNames() const {
        std::vector<CStringA> names;
        for (int i = 0; i < m_aSections.GetSize(); ++i)
            names.push_back(m_aSections.GetAt(i)->m_sName);
        return names;
    }
};

void PrintLine(const CStringA& line) {
    zynplatform::Write(line.View());
    zynplatform::Write("\n");
}

// Says what went wrong; false, for main.
bool Fail(const CStringA& message) {
    zynMessagePrint(message, errorStyle);
    zynplatform::Write("\n");
    return false;
}

// The same with a format in Russian that takes a file name.
bool Fail(const char* format, const CStringA& fileName) {
    CStringA message;
    message.Format(CzynTranslate::TranslateFormat(format), fileName.GetString());
    return Fail(message);
}

bool List(Settings& ini, const Arguments& arguments) {
    if (arguments.empty()) {
        for (const CStringA& name : ini.SectionNames())
            PrintLine("[" + name + "]");
        return true;
    }
    CzynINI::KeyValArray pairs(16);
    if (!ini.GetListKeysVals(arguments[0], pairs)) return false;
    for (int i = 0; i < pairs.GetSize(); ++i)
        PrintLine(pairs.GetAt(i)->m_sKey + "=" + pairs.GetAt(i)->m_sVal);
    return true;
}

bool Get(Settings& ini, const Arguments& arguments) {
    const bool hasDefault = arguments.size() > 2;
    if (!hasDefault && !ini.isParamSet(arguments[0], arguments[1])) return false;
    PrintLine(ini.GetString(arguments[0], arguments[1], hasDefault ? arguments[2].GetString() : "", false));
    return true;
}

bool Set(Settings& ini, const Arguments& arguments) {
    const char* comment = arguments.size() > 3 ? arguments[3].GetString() : nullptr;
    return ini.WriteString(arguments[0], arguments[1], arguments[2], comment);
}

bool Delete(Settings& ini, const Arguments& arguments) {
    return ini.Delete(arguments[0], arguments[1]);
}

bool RenameSection(Settings& ini, const Arguments& arguments) {
    ini.RenameGroupe(arguments[0], arguments[1]);
    return ini.isGroupeSet(arguments[1]);
}

bool RenameKey(Settings& ini, const Arguments& arguments) {
    ini.RenameParam(arguments[0], arguments[1], arguments[2]);
    return ini.isParamSet(arguments[0], arguments[2]);
}

bool Expand(Settings& ini, const Arguments& arguments) {
    ini.m_bPrintInfo = false; // the path itself is enough
    PrintLine(ini.ExpandPath(arguments[0]));
    return true;
}

constexpr struct Command {
    const char* name;
    std::size_t fewest, most; // arguments behind the name
    bool edits;
    bool (*run)(Settings&, const Arguments&);
} commands[] = {
    {"list", 0, 1, false, List},
    {"get", 2, 3, false, Get},
    {"set", 3, 4, true, Set},
    {"delete", 2, 2, true, Delete},
    {"rename-section", 2, 2, true, RenameSection},
    {"rename-key", 3, 3, true, RenameKey},
    {"expand", 1, 1, false, Expand},
};

bool Run(const Command& command, const char* fileName, const Arguments& arguments) {
    Settings ini;
    // An absolute path, so that it is this file and not one that is searched for.
    ini.SetINI(std::filesystem::absolute(fileName).c_str(), false, 0);
    if (!ini.isFileExist() && !command.edits)
        return Fail("Нет такого файла: %s"_cp1251, ini.GetRealIniName());
    if (!ini.Load()) return Fail(ini.GetErrDescription());
    const bool done = command.run(ini, arguments);
    const CStringA error = ini.GetErrDescription();
    if (!done)
        return error.IsEmpty() ? Fail("Нет такой записи в файле %s"_cp1251, ini.GetRealIniName())
                               : Fail(error);
    // A save that found the disk full is not refused, but leaves a text.
    return !command.edits || error.IsEmpty() || Fail(error);
}

} // namespace

int main(int argc, char** argv) {
    const CWinApp app; // its folder is where the dictionaries are looked for
    CzynTranslate::Init(true, nullptr);
    zynplatform::UseTerminalEncoding(true);
    Arguments arguments;
    for (int i = 3; i < argc; ++i)
        arguments.emplace_back(std::string_view(zynplatform::FromTerminal(argv[i])));
    for (const Command& command : commands) {
        if (argc < 3 || std::string(argv[2]) != command.name) continue;
        if (arguments.size() < command.fewest || arguments.size() > command.most) break;
        const bool done = Run(command, argv[1], arguments);
        zynplatform::Flush();
        return done ? 0 : 1;
    }
    zynplatform::ShowMessage(CzynTranslate::Translate(usage), nullptr);
    return 1;
}
