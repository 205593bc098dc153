#include "zynplatform/textsearch_impl.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Every text of two letters up to that length.
std::vector<std::u16string> Texts(std::size_t longest) {
    std::vector<std::u16string> texts{u""};
    for (std::size_t i = 0; texts[i].size() < longest; ++i)
        for (const char16_t c : {u'a', u'b'})
            texts.push_back(texts[i] + c);
    return texts;
}

TEST(TextSearch, FindsWhatAPlainSearchFinds) {
    for (const std::u16string& text : Texts(12))
        for (const std::u16string& pattern : Texts(6)) {
            if (pattern.empty()) continue;
            ASSERT_EQ(zynplatform::detail::FindTwoWay<char16_t>(text, pattern, 0), text.find(pattern));
            ASSERT_EQ(zynplatform::FindText<char16_t>(text, pattern, 1), text.find(pattern, 1));
        }
    // What begins the pattern stands everywhere: a search that compares anew at each place takes minutes.
    const std::u16string text(1'000'000, u'a'), pattern = text.substr(0, 500'000) + u'b';
    EXPECT_EQ(zynplatform::FindText<char16_t>(text, pattern, 0), text.npos);
    EXPECT_EQ(zynplatform::FindText<char16_t>(text + u'b', pattern, 499'999), 500'000u);
}

} // namespace
