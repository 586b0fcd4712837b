// nodus::String: a shared reference of two words whose null reads as the empty string. Counts and
// nulls are held under threads by the logging kernels.
#include "nodus/String.h"

#include <gtest/gtest.h>

using nodus::String;

// Word 0 is the string, word 1 its ownership record: the layout that modules rely on.
TEST(String, CopiesShareTheTextAndLieAsTwoWords)
{
    auto text = std::make_shared<std::string>("shared");
    String const one(text);
    {
        String two;
        two = one;
        EXPECT_EQ(text.use_count(), 3);
        EXPECT_EQ(&static_cast<std::string const&>(two), text.get());
        auto const* const words = reinterpret_cast<void* const*>(&two);
        EXPECT_EQ(words[0], text.get());
        EXPECT_NE(words[1], nullptr);
    }
    EXPECT_EQ(text.use_count(), 2);
}
