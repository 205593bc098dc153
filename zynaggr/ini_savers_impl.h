#pragma once

#include "zynplatform/patience_impl.h"
#include "zynplatform/savelock.h"

namespace zyn {

// Opens a file in spite of saves that are under way: whoever saves it has it to himself for a moment. `open`
// tells whether it could; what else denies the opening is not waited for.
template <class Open> bool OpenBesideSavers(const char* name, Open open) {
    zynplatform::Patience patience(zynplatform::saveLockLimit);
    for (int failures = 0; !open(); ++failures) {
        if (zynplatform::IsBeingSaved(name)) {
            failures = 0;
            if (!patience.Wait()) return false;
        } else if (failures > 0) { // the first may have been a save that is over by now
            return false;
        }
    }
    return true;
}

} // namespace zyn
