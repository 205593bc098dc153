// SPDX-License-Identifier: MIT
#include "zynplatform/syserror.h"

#include "zynplatform/cp1251.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

using namespace zynplatform::literals;

namespace zynplatform {
namespace {

struct ErrnoRow {
    int errnoValue;
    std::uint32_t code;
};

struct TextRow {
    std::uint32_t code;
    const char* text;
};

// clang-format off
constexpr ErrnoRow errnoTable[] = {
    {0, errorSuccess},
    {ENOENT, errorFileNotFound},
    {ENOTDIR, errorPathNotFound},
    {EMFILE, errorTooManyOpenFiles}, {ENFILE, errorTooManyOpenFiles},
    {EACCES, errorAccessDenied},     {EPERM, errorAccessDenied},      {EISDIR, errorAccessDenied},
    {EBADF, errorInvalidHandle},
    {ENOMEM, errorNotEnoughMemory},
    {EXDEV, errorNotSameDevice},
    {EROFS, errorWriteProtected},
    {ENODEV, 20},                    {ENXIO, 20},
    {EBUSY, errorSharingViolation},  {ETXTBSY, errorSharingViolation},
    {ENOLCK, errorLockViolation},    {EDEADLK, errorLockViolation},
    {ENOSYS, errorNotSupported},     {ENOTSUP, errorNotSupported},    {EOPNOTSUPP, errorNotSupported},
    {EEXIST, errorFileExists},
    {EINVAL, errorInvalidParameter},
    {EPIPE, 109},
    {ENOSPC, errorDiskFull},         {EDQUOT, errorDiskFull},         {EFBIG, errorDiskFull},
    {ETIMEDOUT, 121},
    {EILSEQ, errorInvalidName},
    {ESPIPE, 132},
    {ENOTEMPTY, errorDirectoryNotEmpty},
    {ENAMETOOLONG, errorNameTooLong},
    {EINTR, 995},                    {ECANCELED, 995},
    {EFAULT, 998},
    {EIO, errorHardwareInput},
    {EMLINK, 1142},
    {ELOOP, 1921},
};

constexpr TextRow textTable[] = {
    {0, "Операция выполнена успешно."_cp1251},
    {1, "Функция не поддерживается."_cp1251},
    {2, "Файл не найден."_cp1251},
    {3, "Путь не найден."_cp1251},
    {4, "Открыто слишком много файлов."_cp1251},
    {5, "Доступ запрещён."_cp1251},
    {6, "Неверный дескриптор."_cp1251},
    {8, "Недостаточно памяти."_cp1251},
    {11, "Неверный формат файла."_cp1251},
    {12, "Неверный режим доступа."_cp1251},
    {13, "Неверные данные."_cp1251},
    {14, "Память исчерпана."_cp1251},
    {15, "Диск не найден."_cp1251},
    {16, "Текущий каталог нельзя удалить."_cp1251},
    {17, "Файл нельзя переместить на другой диск."_cp1251},
    {18, "Больше файлов нет."_cp1251},
    {19, "Носитель защищён от записи."_cp1251},
    {20, "Устройство не найдено."_cp1251},
    {21, "Устройство не готово."_cp1251},
    {22, "Устройство не распознаёт команду."_cp1251},
    {23, "Ошибка контрольной суммы данных."_cp1251},
    {25, "Позиция на диске не найдена."_cp1251},
    {26, "Формат диска не распознан."_cp1251},
    {29, "Ошибка записи на устройство."_cp1251},
    {30, "Ошибка чтения с устройства."_cp1251},
    {31, "Сбой устройства или системы."_cp1251},
    {32, "Файл занят другим процессом."_cp1251},
    {33, "Часть файла заблокирована другим процессом."_cp1251},
    {38, "Достигнут конец файла."_cp1251},
    {39, "Диск заполнен."_cp1251},
    {50, "Запрос не поддерживается."_cp1251},
    {53, "Сетевой путь не найден."_cp1251},
    {64, "Сетевое имя больше не доступно."_cp1251},
    {65, "Доступ к сети запрещён."_cp1251},
    {67, "Сетевое имя не найдено."_cp1251},
    {80, "Файл уже существует."_cp1251},
    {82, "Не удалось создать файл или каталог."_cp1251},
    {87, "Неверный параметр."_cp1251},
    {108, "Диск занят другим процессом."_cp1251},
    {109, "Канал закрыт."_cp1251},
    {112, "Недостаточно места на диске."_cp1251},
    {121, "Время ожидания истекло."_cp1251},
    {123, "Недопустимое имя файла или каталога."_cp1251},
    {131, "Позиция находится перед началом файла."_cp1251},
    {132, "В этом файле нельзя менять позицию."_cp1251},
    {145, "Каталог не пуст."_cp1251},
    {161, "Неверный путь."_cp1251},
    {170, "Ресурс занят."_cp1251},
    {183, "Объект с таким именем уже существует."_cp1251},
    {206, "Слишком длинное имя файла."_cp1251},
    {267, "Это не каталог."_cp1251},
    {995, "Операция прервана."_cp1251},
    {998, "Неверный адрес памяти."_cp1251},
    {1117, "Ошибка ввода-вывода устройства."_cp1251},
    {1142, "Слишком много ссылок на файл."_cp1251},
    {1921, "Слишком длинная цепочка ссылок."_cp1251},
};
// clang-format on

constexpr const char* FindText(std::uint32_t code) {
    const auto* const row = std::ranges::find(textTable, code, &TextRow::code);
    return row != std::ranges::end(textTable) ? row->text : "";
}

static_assert(std::ranges::all_of(errnoTable, [](const ErrnoRow& row) { return *FindText(row.code) != 0; }));
static_assert(*FindText(errorGeneralFailure) != 0);

std::atomic<const char* (*)(const char*)> translator{nullptr};

} // namespace

std::uint32_t SystemErrorFromErrno(int errnoValue) {
    const auto* const row = std::ranges::find(errnoTable, errnoValue, &ErrnoRow::errnoValue);
    return row != std::ranges::end(errnoTable) ? row->code : errorGeneralFailure;
}

const char* DescribeSystemError(std::uint32_t code) {
    const auto translate = translator.load(std::memory_order_relaxed);
    return translate ? translate(FindText(code)) : FindText(code);
}

void SetErrorTranslator(const char* (*translate)(const char*)) {
    translator = translate;
}

} // namespace zynplatform
