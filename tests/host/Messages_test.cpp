// Words for faults: readable in every terminal, no longer than need be, and with the nearest name.
#include "nodus/host/diagnostics.h"

#include <gtest/gtest.h>

using namespace nodus::host;

TEST(Messages, AreReadableAndNoLongerThanNeedBe)
{
    struct Row {
        std::string_view text, shown;
    } const rows[] = {
        {"one\ntwo\x7f", "one?two?"},
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x99\x82", "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x99\x82"},
        {"\xC2\x9B"
         "31m",
         "??31m"},                            // a control character of two bytes
        {"\xC0\xAF \xE0\x80\xAF", "?? ???"},  // longer forms than need be
        {"\xED\xA0\x80 \xF4\x90\x80\x80", "??? ????"},
        {"cut \xE2\x82", "cut ??"},
        {"\xFFx\xC3(", "?x?("},
    };
    for (Row const& row : rows)
        EXPECT_EQ(printable(row.text), row.shown);
    std::string const known = "value";
    for (std::string const meant : {"valeu", "VALUE", "vlue"})
        EXPECT_EQ(didYouMean(meant, std::vector{known}), "; did you mean 'value'?");
    EXPECT_EQ(didYouMean("rotation", std::vector{known}), "");
    EXPECT_EQ(inQuotes(std::string(80, 'a')), "'" + std::string(80, 'a') + "'");
    EXPECT_EQ(inQuotes(std::string(81, 'a')), "'" + std::string(80, 'a') + "...'");
    EXPECT_EQ(shortened("0123456789", 8), "012345 ... 89");
}
