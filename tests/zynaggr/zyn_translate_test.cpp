#include "zynaggr/zyn_translate.h"

#include <gtest/gtest.h>

namespace {

TEST(Translate, WithoutADictionaryEveryTextIsItsOwnTranslation) {
    EXPECT_FALSE(CzynTranslate::IsNeedTranslate());
    for (const bool translate : {true, false}) {
        CzynTranslate::SetShouldTranslate(translate);
        EXPECT_EQ(CzynTranslate::IsNeedTranslate(), translate);
        for (const char* text : {static_cast<const char*>(nullptr), "", "text %i"})
            EXPECT_EQ(static_cast<const void*>(CzynTranslate::Translate(text)), text);
    }
}

} // namespace
