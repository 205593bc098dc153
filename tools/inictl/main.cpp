// SPDX-License-Identifier: MIT

// inictl: reads and edits INI files from the command line, and changes no byte that it was not asked to.

#include "options.h"

#include <zynplatform/console.h>
#include <zynplatform/cp1251.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

using namespace zynplatform::literals;

namespace {

constexpr const char* help =
    "inictl: файлы ini, в которых не меняется ничего, кроме того, о чём попросили\n"
    "\n"
    "использование: inictl КОМАНДА ФАЙЛ ... [ПАРАМЕТРЫ]   (ФАЙЛ \"-\": стандартный ввод и вывод)\n"
    "\n"
    "  get ФАЙЛ СЕКЦИЯ КЛЮЧ [--default=ТЕКСТ]     значение\n"
    "  has ФАЙЛ СЕКЦИЯ [КЛЮЧ]                     есть ли такая запись\n"
    "  list ФАЙЛ [СЕКЦИЯ] [--sections|--keys] [--format=text|json|sh|tsv]\n"
    "  set ФАЙЛ СЕКЦИЯ КЛЮЧ ЗНАЧЕНИЕ [--comment=ТЕКСТ]\n"
    "  delete ФАЙЛ СЕКЦИЯ [КЛЮЧ]\n"
    "  rename ФАЙЛ СЕКЦИЯ [КЛЮЧ] НОВОЕ\n"
    "  merge ФАЙЛ ДРУГОЙ                          взять всё из другого файла\n"
    "  edit ФАЙЛ                                  команды set, delete и rename со стандартного ввода\n"
    "  diff ФАЙЛ ДРУГОЙ [--format=text|edit]      чем отличаются ключи и значения\n"
    "  convert ФАЙЛ --to=КОДИРОВКА [--mark]\n"
    "  check ФАЙЛ                                 кодировка, концы строк, странные строки\n"
    "\n"
    "при изменениях: --dry-run (показать разницу), --backup (оставить ФАЙЛ.bak), --classic (переписать файл\n"
    "  целиком), --lossy (чего нет в кодировке, становится \"?\")\n"
    "везде: --encoding=КОДИРОВКА (utf-8, cp1251, utf-16le, utf-16be, utf-32le, utf-32be)\n"
    "\n"
    "код завершения: 0 сделано, 1 нет такого, 2 ошибка в команде, 3 отказ: файл не вместит, 4 ошибка файла"_cp1251;

Status Run(int count, char** arguments) {
    const Options options = ParseOptions(count, arguments);
    if (options.version) PrintLine("inictl " INICTL_VERSION);
    if (options.help) PrintLine(Message(help));
    return options.run ? options.run(options) : statusDone;
}

Status Tell(Status status, std::string_view message) {
    if (!message.empty()) std::fprintf(stderr, "inictl: %s\n", zynplatform::Utf8ToTerminal(message).c_str());
    return status;
}

} // namespace

int main(int count, char** arguments) {
    try {
        Status status = Run(count, arguments);
        if (std::fflush(stdout) != 0) status = Tell(statusFile, std::strerror(errno));
        return status;
    } catch (const Failure& failure) {
        return Tell(failure.status, failure.message);
    } catch (const std::exception& failure) {
        return Tell(statusFile, failure.what());
    }
}
