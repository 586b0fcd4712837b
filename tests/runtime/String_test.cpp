// nodus::String: a shared reference of two words whose null reads as the empty string.
#include "nodus/String.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

using nodus::String;

TEST(String, NullReadsAsTheOneEmptyString)
{
    std::string const& first = String();
    std::string const& second = String(std::shared_ptr<std::string>());
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(&first, &second);
}

TEST(String, CopiesShareTheTextAndKeepItAlive)
{
    auto text = std::make_shared<std::string>("shared");
    String const one(text);
    {
        String two;
        two = one;
        EXPECT_EQ(text.use_count(), 3);
        EXPECT_EQ(&static_cast<std::string const&>(two), text.get());
    }
    EXPECT_EQ(text.use_count(), 2);
}

// Word 0 is the string, word 1 its ownership record: the layout that modules rely on.
TEST(String, LiesAsTwoWords)
{
    auto text = std::make_shared<std::string>("text");
    String const one(text);
    void* words[2];
    std::memcpy(words, &one, sizeof words);
    EXPECT_EQ(words[0], text.get());
    EXPECT_NE(words[1], nullptr);
}

TEST(String, CountsBalanceUnderThreads)
{
    auto text = std::make_shared<std::string>("counted");
    String const shared(text);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread)
        threads.emplace_back([&shared] {
            String mine;
            for (int round = 0; round < 20000; ++round) {
                mine = shared;
                mine = String();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(text.use_count(), 2);
}
