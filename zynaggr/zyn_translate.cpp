#include "zynaggr/zyn_translate.h"

bool CzynTranslate::m_bTranslate = false;

CzynTranslate::~CzynTranslate() = default;

// The dictionary is empty as long as none can be loaded, so every text is its own translation.
const char* CzynTranslate::Translate(const char* szText) {
    return szText;
}
