// SPDX-License-Identifier: MIT
#include "zynplatform/environment.h"

#include "zynplatform/codepage.h"
#include "zynplatform/paths.h"

#include <cstdlib>
#include <cstring>

namespace zynplatform {

bool GetEnvironmentValue(const char* name, std::string& value) {
    value.clear();
    if (!name || !*name) return false;
    const char* found = std::getenv(name);
    if (!found || !*found) {
        const char* const substitute = std::strcmp(name, "TEMP") == 0          ? std::getenv("TMPDIR")
                                       : std::strcmp(name, "USERPROFILE") == 0 ? std::getenv("HOME")
                                                                               : nullptr;
        if (substitute) found = substitute;
    }
    if (!found) return false;
    value = found;
    return true;
}

bool GetEnvironmentPath(const char* name, std::string& value) {
    const std::string nativeName = Recode(name ? name : "", ansiCodePage, utf8CodePage);
    std::string found;
    GetEnvironmentValue(nativeName.c_str(), found);
    // A value written with backslashes alone is in library form already.
    const bool isLibraryForm = found.find('\\') != found.npos && found.find('/') == found.npos;
    value = isLibraryForm ? found : FromNativePath(found);
    return !value.empty();
}

std::string GetTempFolder() {
    std::string folder;
    if (GetEnvironmentPath("TEMP", folder) && !folder.ends_with('\\')) folder += '\\';
    return folder;
}

} // namespace zynplatform
