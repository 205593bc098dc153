#include "zynplatform/environment.h"

#include "zynplatform/paths.h"

#include <cstdlib>
#include <cstring>

namespace zynplatform {

namespace {

const char* NonEmptyVariable(const char* name) {
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

} // namespace

bool GetEnvironmentPath(const char* name, std::string& value) {
    value.clear();
    if (!name || !*name) return false;
    const char* found = NonEmptyVariable(name);
    if (!found && std::strcmp(name, "TEMP") == 0) found = NonEmptyVariable("TMPDIR");
    if (!found && std::strcmp(name, "USERPROFILE") == 0) found = NonEmptyVariable("HOME");
    if (!found) return false;
    // A value written with backslashes alone is in library form already.
    const bool isLibraryForm = std::strchr(found, '\\') && !std::strchr(found, '/');
    value = isLibraryForm ? found : FromNativePath(found);
    return true;
}

} // namespace zynplatform
