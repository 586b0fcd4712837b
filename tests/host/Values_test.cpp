// Value types, ranges of frames, and words for faults. Literals are sessions of the command.
#include "fixtures.h"

#include "nodus/host/frames.h"
#include "ports.h"

using namespace fixtures;

namespace {

template <typename... Ports> void expectPacked()
{
    std::size_t end = 0;
    std::vector<std::size_t> offsets;
    for (char const* const name : {nodusmath::typeName<Ports>...})
        offsets.push_back(placePort(*findValueType(name), end));
    offsets.push_back(end);
    auto const& expected = nodusmath::packedOffsets<Ports...>;
    EXPECT_EQ(offsets, std::vector<std::size_t>(expected.begin(), expected.end()));
}

}  // namespace

TEST(ValueTypes, PortsArePlacedAsKernelsExpectThem)
{
    using namespace nodusmath;
    expectPacked<Float3, Quaternion>();
    expectPacked<Int32, Int32, Color, Float>();
    expectPacked<Int32, Int32, UInt8, Float>();
    expectPacked<Bool, String, Double, Float2>();
    expectPacked<Bool, TQS, Bool, Matrix4x4, Bool, Mat44Float, Translation, UInt32, Float4>();
}

TEST(ValueTypes, PathsLeadToLanesAndParts)
{
    struct Row {
        char const *type, *path, *piece;  // no piece: there is none
        std::size_t offset;
    } const rows[] = {
        {"Float", "", "Float", 0},
        {"Float3", "z", "Float", 8},
        {"Color", "a", "Float", 12},
        {"Matrix4x4", "m32", "Float", 56},
        {"Mat44Float", "m11", "Float", 44},
        {"TQS", "q", "Quaternion", 16},
        {"TQS", "s", "Float4", 32},
        {"TQS", "q.w", "Float", 28},
        {"TQS", "t", "Translation", 0},
        {"Quaternion", "", "Quaternion", 0},
        {"Float", "x", "", 0},
        {"Float3", "w", "", 0},
        {"Color", "x", "", 0},
        {"TQS", "q.t", "", 0},
    };
    for (Row const& row : rows) {
        auto const piece = findPiece(*findValueType(row.type), row.path);
        EXPECT_EQ(piece ? piece->type->name : "", row.piece) << row.type << " " << row.path;
        EXPECT_EQ(piece ? piece->offset : 0, row.offset) << row.type << " " << row.path;
    }
}

TEST(Frames, RangesAreCountedWithBothEnds)
{
    struct Row {
        char const* text;
        std::uint64_t count;
        std::int32_t last;
    } const rows[] = {{"5", 1, 5},
                      {"-3:3", 7, 3},
                      {"0:10:4", 3, 8},
                      {"-2147483648:2147483647", 4294967296u, INT32_MAX},
                      {"-2147483648:2147483647:2147483647", 3, INT32_MAX - 1}};
    for (Row const& row : rows) {
        FrameRange const range = parseFrames(row.text);
        EXPECT_EQ(range.count(), row.count) << row.text;
        EXPECT_EQ(range.at(range.count() - 1), row.last) << row.text;
    }
}

TEST(Diagnostics, TheNearestNameIsMeant)
{
    std::vector<std::string> const known{"value", "prefix", "scalar"};
    for (auto const& [wrong, meant] :
         {std::pair("valeu", "value"), {"VALUE", "value"}, {"pefix", "prefix"}})
        EXPECT_EQ(didYouMean(wrong, known), "; did you mean '" + std::string(meant) + "'?");
    EXPECT_EQ(didYouMean("rotation", known), "");
    EXPECT_EQ(printable("a\nb\tc\x7F"), "a?b?c?");
}

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
    EXPECT_EQ(inQuotes(std::string(80, 'a')), "'" + std::string(80, 'a') + "'");
    EXPECT_EQ(inQuotes(std::string(81, 'a')), "'" + std::string(80, 'a') + "...'");
    EXPECT_EQ(shortened("0123456789", 8), "012345 ... 89");
}
