// SPDX-License-Identifier: MIT
#include "support/test.h"
#include "zynplatform/textsearch_impl.h"

TEST(TextSearch, FindsWhatAPlainSearchFinds) {
    const auto digits = [](unsigned number) { // every text of two letters, by what follows the first digit
        std::u16string text;
        for (; number > 1; number /= 2)
            text += static_cast<char16_t>(u'a' + number % 2);
        return text;
    };
    for (unsigned i = 1; i < 1 << 13; ++i)
        for (unsigned k = 2; k < 1 << 7; ++k) {
            const std::u16string text = digits(i), pattern = digits(k);
            ASSERT_EQ(zynplatform::detail::FindTwoWay<char16_t>(text, pattern, 0), text.find(pattern));
            ASSERT_EQ(zynplatform::FindText<char16_t>(text, pattern, 1), text.find(pattern, 1));
        }
    // The pattern's ends stand everywhere: a search that compares anew at each place takes minutes.
    std::u16string text(1'000'000, u'a'), pattern(500'000, u'a');
    pattern[250'000] = u'b';
    EXPECT_EQ(zynplatform::FindText<char16_t>(text, pattern, 0), text.npos);
    text[750'000] = u'b';
    EXPECT_EQ(zynplatform::FindText<char16_t>(text, pattern, 499'999), 500'000u);
}
