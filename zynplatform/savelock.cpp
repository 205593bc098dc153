#include "zynplatform/savelock.h"

#include "zynplatform/descriptor_impl.h"
#include "zynplatform/paths.h"
#include "zynplatform/patience_impl.h"
#include "zynplatform/sharelock.h"

#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace zynplatform {

std::uint32_t SaveLock::Take(const char* name, unsigned limitMilliseconds, bool create) {
    Release();
    const std::string nativeName = ToNativePath(name);
    const int flags = O_WRONLY | (create ? O_CREAT : 0) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    for (Patience patience(limitMilliseconds);;) {
        UniqueDescriptor descriptor(Uninterrupted([&] { return open(nativeName.c_str(), flags, 0666); }));
        if (!descriptor) return LastError();
        struct stat opened, named;
        if (fstat(descriptor.Get(), &opened) != 0) return LastError();
        while (S_ISREG(opened.st_mode) && !TakeSavingTurn(descriptor.Get()))
            if (!patience.Wait()) return errorSharingViolation;
        if (stat(nativeName.c_str(), &named) == 0 && IsSameFile(opened, named)) {
            m_handle = HandleOf(descriptor.Release());
            return 0;
        }
        ReleaseLocks(descriptor.Get());
        if (!patience.Wait()) return errorSharingViolation;
    }
}

bool SaveLock::IsWritable() const {
    return IsHeld() && !IsWritingDenied(Descriptor(m_handle));
}

void SaveLock::Release() {
    if (m_handle != noFile) CloseFile(std::exchange(m_handle, noFile));
}

bool IsBeingSaved(const char* name) {
    const UniqueDescriptor descriptor(Uninterrupted(
        [&] { return open(ToNativePath(name).c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
    return descriptor && IsSavingTurnTaken(descriptor.Get());
}

} // namespace zynplatform
