/* SPDX-License-Identifier: MIT */
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <tests/support/byte_source.h>

#include "messages.h"
#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

std::string repeated(const std::string &text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

std::string with_transform(const std::string &transform, const std::string &arc)
{
    return R"({"type":"Topology","objects":{"a":{"type":"LineString","arcs":[0]}},"transform":)" + transform +
           R"(,"arcs":[)" + arc + "]}";
}

struct Bad {
    const char *name;
    std::string text;
    const char *message;
};

void PrintTo(const Bad &bad, std::ostream *out)
{
    *out << bad.name;
}

class BadInput : public testing::TestWithParam<Bad> {};

const char *const line = "[[0,0],[1,1]]";
const char *const unit = R"({"scale":[1,1],"translate":[0,0]})";

/* Decodes and draws, or fails with an Error. Returns whether it failed. */
bool fails(const std::string &text)
{
    try {
        draw_map(decode(text), 64);
        return false;
    } catch (const Error &error) {
        EXPECT_EQ(std::string::npos, std::string(error.what()).find('\n'));
        EXPECT_LT(10u, std::string(error.what()).size());
        return true;
    }
}

} // namespace

TEST_P(BadInput, IsAnsweredWithWhatIsWrong)
{
    try {
        decode(GetParam().text);
        FAIL() << "was accepted";
    } catch (const Error &error) {
        EXPECT_STREQ(GetParam().message, error.what());
    }
}

static const Bad bad_inputs[] = {
    {"Nothing", "", "the JSON ends too early, after 0 bytes"},
    {"NoJson", "hello", "not JSON"},
    {"NoJsonAfterSpaces", " \n\t<svg>", "not JSON"},
    {"HardlyJson", "{hello", "not valid JSON at byte 2"},
    {"HalfAnObject", R"({"type":)", "the JSON ends too early, after 8 bytes"},
    {"TextAfterTheEnd", R"({} x)", "not valid JSON at byte 4"},
    {"NotUtf8", "{\"\xff\":1}", "not valid JSON at byte 3"},
    {"AnArray", "[]", "not a TopoJSON topology"},
    {"GeoJson", R"({"type":"FeatureCollection","features":[]})", "not a TopoJSON topology"},
    {"NumberAsType", R"({"type":7})", "not a TopoJSON topology"},
    {"NoArcs", R"({"type":"Topology","objects":{}})", "the topology has no \"arcs\""},
    {"ArcsAreNoArray", R"({"type":"Topology","objects":{},"arcs":{}})", "the topology's \"arcs\" is not an array"},
    {"NoObjects", R"({"type":"Topology","arcs":[]})", "the topology has no \"objects\""},
    {"ObjectsAreNoObject", R"({"type":"Topology","objects":[],"arcs":[]})",
     "the topology's \"objects\" is not an object"},
    {"EmptyTopology", world("", ""), "nothing to draw: no geometry has outlines"},
    {"PointsOnly", world(R"("a":{"type":"Point","coordinates":[0,0]})", ""),
     "nothing to draw: no geometry has outlines"},
    {"GeometryIsNoObject", world(R"("a":5)", ""), "a geometry has no \"type\""},
    {"UnknownGeometry", world_of("Blob", "[0]", line), "a geometry is of an unknown type"},
    {"TypeIsNoText", world(R"("a":{"type":["Polygon"],"arcs":[]})", ""), "a geometry is of an unknown type"},
    {"GeometryWithoutArcs", world(R"("a":{"type":"Polygon"})", ""), "a geometry has no \"arcs\""},
    {"PolygonOfNumbers", world_of("Polygon", "[0]", line), "an outline is not an array"},
    {"MultiPolygonOfNumbers", world_of("MultiPolygon", "[0]", line), "a polygon is not an array"},
    {"LineOfArrays", world_of("LineString", "[[0]]", line), "an outline holds something that is not a whole number"},
    {"CollectionWithoutGeometries", world(R"("a":{"type":"GeometryCollection"})", ""),
     "a collection has no \"geometries\""},
    {"ArcNumberTooLarge", world_of("LineString", "[1]", line), "an outline refers to arc 1 of 1"},
    {"ArcNumberTooSmall", world_of("LineString", "[-2]", line), "an outline refers to arc 1 of 1"},
    {"ArcNumberSmallest", world_of("LineString", "[-9223372036854775808]", line),
     "an outline refers to arc 9223372036854775807 of 1"},
    {"ArcNumberHuge", world_of("LineString", "[18446744073709551615]", line), "an outline holds a number out of range"},
    {"ArcNumberFraction", world_of("LineString", "[0.5]", line),
     "an outline holds something that is not a whole number"},
    {"OutlineWithoutArcs", world_of("Polygon", "[[]]", line), "an outline has no arcs"},
    {"OpenRing", world_of("Polygon", "[[0]]", line), "a ring is not closed"},
    {"ArcsApart", world_of("LineString", "[0,0]", line), "an outline's arcs do not join"},
    {"EmptyArc", world_of("LineString", "[0]", "[]"), "arc 0 has fewer than two positions"},
    {"ArcOfOnePosition", world_of("LineString", "[0]", std::string(line) + ",[[0,0]]"),
     "arc 1 has fewer than two positions"},
    {"ArcIsNoArray", world_of("LineString", "[0]", "7"), "an arc is not an array"},
    {"PositionIsNoArray", world_of("LineString", "[0]", "[1,2]"), "a position is not an array"},
    {"PositionOfOneNumber", world_of("LineString", "[0]", "[[1],[2]]"), "a position has fewer than two coordinates"},
    {"CoordinateIsText", world_of("LineString", "[0]", R"([["0",0],[1,1]])"),
     "a position holds something that is not a number"},
    {"CoordinateIsNull", world_of("LineString", "[0]", "[[0,null],[1,1]]"),
     "a position holds something that is not a number"},
    {"NotANumber", world_of("LineString", "[0]", "[[0,NaN],[1,1]]"), "not valid JSON at byte 84"},
    {"TooLargeForADouble", world_of("LineString", "[0]", "[[0,1e999],[1,1]]"), "a number is too large"},
    {"HugeCoordinate", world_of("LineString", "[0]", "[[0,1e308],[1,1]]"), "a position holds a number out of range"},
    {"BeyondThePole", world_of("LineString", "[0]", "[[0,90.1],[1,1]]"), "a position lies outside the globe"},
    {"TwiceRoundTheGlobe", world_of("LineString", "[0]", "[[0,0],[-360.1,1]]"), "a position lies outside the globe"},
    {"TransformIsText", with_transform(R"("unit")", line), "the transform has no \"scale\""},
    {"TransformWithoutTranslate", with_transform(R"({"scale":[1,1]})", line), "the transform has no \"translate\""},
    {"TransformOfOneDimension", with_transform(R"({"scale":[1],"translate":[0]})", line),
     "the transform has fewer than two dimensions"},
    {"HugeScale", with_transform(R"({"scale":[1e30,1],"translate":[0,0]})", line),
     "the transform holds a number out of range"},
    {"QuantisedFraction", with_transform(unit, "[[0,0.5],[1,1]]"),
     "a position holds something that is not a whole number"},
    {"QuantisedHuge", with_transform(unit, "[[0,9223372036854775808],[1,1]]"),
     "a position holds a number out of range"},
    {"QuantisedSumOverflows",
     with_transform(R"({"scale":[0,0],"translate":[0,0]})", "[[9223372036854775807,0],[9223372036854775807,0]]"),
     "a position lies outside the globe"},
    {"QuantisedProductOverflows", with_transform(unit, "[[0,-9223372036854775808],[1,1]]"),
     "a position lies outside the globe"},
    {"QuantisedOutside", with_transform(unit, "[[0,0],[0,91]]"), "a position lies outside the globe"},
    {"EndlessRing",
     world_of("Polygon", "[[0" + repeated(",0", 4096) + "]]", "[[0,0]" + repeated(",[1,1],[0,0]", 2048) + "]"),
     "the outlines have too many points: they run along the same arcs again and again"},
    {"EndlessLine",
     world_of("LineString", "[0" + repeated(",0", 4096) + "]", "[[0,0]" + repeated(",[1,1],[0,0]", 2048) + "]"),
     "the outlines have too many points: they run along the same arcs again and again"},
    {"CollectionsTooDeep",
     world(R"("a":)" + repeated(R"({"type":"GeometryCollection","geometries":[)", 17) + repeated("]}", 17), ""),
     "geometry collections are nested too deep"},
    {"JsonTooDeep", repeated("[", 1000000), "nested too deep for a topology"},
    {"ObjectsTooDeep", repeated(R"({"a":)", 100000), "nested too deep for a topology"},
};

INSTANTIATE_TEST_SUITE_P(Of, BadInput, testing::ValuesIn(bad_inputs),
                         [](const auto &bad) { return std::string(bad.param.name); });

TEST(BracketsInText, AreNotNested)
{
    const std::string brackets = repeated(R"([{\"[\\)", 100);
    EXPECT_FALSE(fails(world_of("LineString", R"([0],"properties":{"name":")" + brackets + "\"}", line)));
}

TEST(Decoding, WarnsOfWhatIsOdd)
{
    const std::string collapsed = R"({"scale":[0,0],"translate":[7,7]})";
    const std::string twice =
        R"({"type":"Topology","type":"Topology",)" + world_of("LineString", "[0]", line).substr(1);
    const std::string one_point = "all of its points are one point: there is little to see";
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {world_of("LineString", "[0]", line), {}},
        {with_transform(unit, line), {}},
        {with_transform(collapsed, line), {one_point}},
        {world_of("LineString", "[0]", "[[3,4],[3,4]]"), {one_point}},
        {world_of("LineString", "[1]", "[[0,0],[1,1]],[[3,4],[3,4]]"), {one_point}},
        {world_of("MultiLineString", "[[0],[1]]", "[[0,0],[0,0]],[[3,4],[3,4]]"), {}},
        {twice, {"an object has several \"type\": the last one counts"}}};
    for (const auto &[text, warnings] : cases)
        EXPECT_EQ(warnings, decode(text).warnings) << text;
}

TEST(Decoding, TakesTheLastOfSeveralMembersOfAKey)
{
    const Topology topology = decode(
        world(R"("a":{"type":"LineString","arcs":[0],"properties":{"name":{"x":[1]},"name":"y","name":"z"}})", line));
    EXPECT_EQ("z", topology.countries.front()->name);
}

TEST(DamagedWorld, ThatIsCutShortIsRefusedWhereverTheCutIs)
{
    const std::string whole = shipped_world("110m");
    for (std::size_t length = 0; length < 40; ++length)
        EXPECT_TRUE(fails(whole.substr(0, length))) << "cut after " << length;
    const std::size_t last = whole.find_last_of('}');
    for (std::size_t length = 40; length < last; length += 997)
        EXPECT_TRUE(fails(whole.substr(0, length))) << "cut after " << length;
    EXPECT_TRUE(fails(whole.substr(0, last)));
    EXPECT_FALSE(fails(whole));
}

/* Bytes are replaced by bytes that JSON is made of, so that many of the texts stay valid JSON. */
TEST(DamagedWorld, IsDrawnOrRefused)
{
    const std::string whole = shipped_world("110m"), bytes = "0123456789-,.:[]{}\"e \\ntu\xff";
    const std::uint32_t seed = mova::test::test_seed(1);
    std::mt19937 engine(seed);
    int drawn = 0;
    for (int run = 0; run < 250; ++run) {
        SCOPED_TRACE("MOVA_TEST_SEED=" + std::to_string(seed) + ", run " + std::to_string(run));
        std::string damaged = whole;
        for (int i = 0; i < 1 + run % 3; ++i)
            damaged[engine() % whole.size()] = bytes[engine() % (run % 2 ? 10 : bytes.size())];
        drawn += !fails(damaged);
    }
    EXPECT_LT(0, drawn);
    EXPECT_GT(250, drawn);
}
