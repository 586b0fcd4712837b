// Value types, literals, ranges of frames, and words for faults.
#include "fixtures.h"

#include "nodus/host/frames.h"
#include "nodus/host/literals.h"
#include "ports.h"

#include <bit>
#include <cstring>

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
        char const *type, *path, *piece;
        std::size_t offset;
    } const rows[] = {
        {"Float", "", "Float", 0},          {"Float3", "z", "Float", 8},
        {"Color", "a", "Float", 12},        {"Matrix4x4", "m32", "Float", 56},
        {"Mat44Float", "m11", "Float", 44}, {"TQS", "q", "Quaternion", 16},
        {"TQS", "s", "Float4", 32},         {"TQS", "q.w", "Float", 28},
        {"TQS", "t", "Translation", 0},     {"Quaternion", "", "Quaternion", 0},
    };
    for (Row const& row : rows) {
        auto const piece = findPiece(*findValueType(row.type), row.path);
        ASSERT_TRUE(piece) << row.type << " " << row.path;
        EXPECT_EQ(piece->type->name, row.piece);
        EXPECT_EQ(piece->offset, row.offset);
    }
    for (auto const& [type, path] :
         {std::pair("Float", "x"), {"Float3", "w"}, {"Color", "x"}, {"TQS", "q.t"}})
        EXPECT_FALSE(findPiece(*findValueType(type), path)) << type << " " << path;
}

// Decimal to float once: going by way of double would round twice and miss by one place.
TEST(Literals, NumbersAreRoundedOnce)
{
    struct Row {
        char const *text, *type;
        std::uint64_t bits;
    } const rows[] = {
        // A hair above the middle of two floats: in double it is the middle, and ties go to even.
        {"1.00000005960464477540000001", "Float", 0x3F800001},
        {"0.1", "Float", std::bit_cast<std::uint32_t>(0.1f)},
        {"0.1", "Double", std::bit_cast<std::uint64_t>(0.1)},
        {"1e-50", "Float", 0},
        {"-1e-50", "Float", 0x80000000},
        {"1e-45", "Float", 1},
        {"-0.0", "Float", 0x80000000},
        {"-inf", "Float", 0xFF800000},
        {"7.0", "Int32", 7},
        {"1e3", "Int32", 1000},
        {"-2147483648", "Int32", 0x80000000},
        {"4294967295", "UInt32", 0xFFFFFFFF},
    };
    for (Row const& row : rows) {
        std::byte bytes[8]{};
        ASSERT_EQ(readNumber(row.text, *findValueType(row.type), bytes), "") << row.text;
        std::uint64_t bits = 0;
        std::memcpy(&bits, bytes, sizeof bits);
        EXPECT_EQ(bits, row.bits) << row.type << " " << row.text;
    }
    std::byte bytes[8];
    for (char const* const text : {"", " 1", "1 ", "0x10", "1,5", "--1", "1e", "abc"})
        EXPECT_NE(readNumber(text, *findValueType("Float"), bytes), "") << text;
}

TEST(Literals, ArgumentsAreReadLikeAGraphsInputs)
{
    struct Row {
        char const *type, *argument, *expected;
    } const rows[] = {
        {"Float", "2.5", "2.5"},
        {"Float", "nan", "nan"},
        {"Bool", "true", "true"},
        {"String", "a, b", "a, b"},
        {"String", "\"a\\tb\"", "a\tb"},
        {"Float3", "1, 2,-3e2", "(1, 2, -300)"},
        {"Float3", "[1, 2, 3]", "(1, 2, 3)"},
        {"TQS", R"({"t": [1, 2, 3, 4]})", "t (1, 2, 3, 4), q (0, 0, 0, 1), s (1, 1, 1, 1)"},
        {"Float3", "1,2", "wants Float3 (an array of 3 numbers), not an array of 2"},
        {"Float3", "1,,2", "lane y: wants Float (a number), not the text ''"},
        {"Float", "2,5", "wants Float (a number), not an array of 2"},
        {"Bool", "1", "wants Bool (true or false), not 1"},
        {"UInt8", "256", "'256' is outside UInt8 (0 to 255)"},
    };
    for (Row const& row : rows) {
        Value value = neutralValue(*findValueType(row.type));
        std::string told = readValue(literalFromArgument(row.argument, *value.type), value);
        if (told.empty())
            told = valueText(*value.type, value.bytes.data(), value.text);
        EXPECT_EQ(told, row.expected) << row.type << " " << row.argument;
    }
}

TEST(Frames, RangesAndTheirFaults)
{
    struct Row {
        char const* text;
        std::int32_t first, last, step;
        std::uint64_t count;
    } const rows[] = {{"5", 5, 5, 1, 1},
                      {"-3:3", -3, 3, 1, 7},
                      {"0:10:4", 0, 10, 4, 3},
                      {"-2147483648:2147483647", INT32_MIN, INT32_MAX, 1, 4294967296u},
                      {"-2147483648:2147483647:2147483647", INT32_MIN, INT32_MAX, INT32_MAX, 3}};
    for (Row const& row : rows) {
        FrameRange const range = parseFrames(row.text);
        EXPECT_EQ(range.first, row.first) << row.text;
        EXPECT_EQ(range.last, row.last) << row.text;
        EXPECT_EQ(range.step, row.step) << row.text;
        EXPECT_EQ(range.count(), row.count) << row.text;
        EXPECT_LE(range.at(range.count() - 1), row.last) << row.text;
    }
    for (auto const& [text, told] : std::initializer_list<std::pair<char const*, char const*>>{
             {"5:1", "the last frame comes before the first"},
             {"1:5:0", "the step is 0"},
             {"1:5:-1", "the step is -1"},
             {"a", "'a' is not a whole number"},
             {"", "'' is not a whole number"},
             {"1:", "'' is not a whole number"},
             {"1:2.5", "'2.5' is not a whole number"},
             {"1:2:3:4", "wants FIRST:LAST or FIRST:LAST:STEP"},
             {"0:2147483648", "'2147483648' is outside Int32"}}) {
        std::string const faults = faultsOf([range = text] { parseFrames(range); });
        EXPECT_NE(faults.find(told), faults.npos) << text << ": " << faults;
    }
}

TEST(Diagnostics, TheNearestNameIsMeant)
{
    std::vector<std::string> const known{"value", "prefix", "scalar"};
    EXPECT_EQ(didYouMean("valeu", known), "; did you mean 'value'?");
    EXPECT_EQ(didYouMean("VALUE", known), "; did you mean 'value'?");
    EXPECT_EQ(didYouMean("pefix", known), "; did you mean 'prefix'?");
    EXPECT_EQ(didYouMean("rotation", known), "");
    EXPECT_EQ(printable("a\nb\tc\x7F"), "a?b?c?");
}
