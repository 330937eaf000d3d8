/* SPDX-License-Identifier: MIT */
/* Has the map read, sort, select, print and draw whatever the bytes say: either it refuses them with an Error, or all of
   that works, and no text that comes of it would move a terminal.

   A byte below 128 stands for itself, one from there on for a word of the map's language, and the last value for the end of
   a part: objects, more arcs than the three that there are, what else the topology has. What a part leaves open is closed, and
   commas are put between words. So most of what is tried is a topology, or nearly one. Bytes that begin with a brace are the
   text itself. */
#include <array>
#include <cstring>
#include <iterator>
#include <sstream>

#include <mova/host/messages.h>
#include <tests/examples/pixels.h>
#include <tests/model/model.h>

#include "countries.h"
#include "messages.h"

namespace {

using namespace atlas;

constexpr std::uint8_t end_of_part = 255;

/* With spaces between them. */
constexpr const char *language =
    R"("countries":{"type":"GeometryCollection","geometries":[ [ [[ ] } 0 -1 1 -2 2 -3 3
       "b":{"type":"MultiLineString","arcs":[[ {"type":"GeometryCollection","geometries":[ {"type":"Polygon","arcs":[[
       "a":{"type":"Polygon","properties":{"name":"Chad\n\u001b[2J\u009b\u202e\u2028\u200d\u206a"},"arcs":[[
       {"type":"LineString","arcs":[ "name": "type": "arcs":[
       {"type":"Polygon","properties":{"name":"Fiji\u009b\u202e\ufeff"},"arcs":[[ {"type":"MultiPolygon","arcs":[[[
       {"type":"MultiLineString","arcs":[[ {"type":"Point","coordinates":[0,0]} "transform":{"scale":[ "translate":[
       "properties":{"name": [[0,0],[10,0],[10,10],[0,0]] [[10,10],[50,10],[50,50],[10,10]] [[1,1],[0,0]]
       [[-170,80],[-60,70],[60,75],[170,70],[-170,80]] [[180,90],[-180,90],[-180,-90],[180,-90],[180,90]] [[5,5],[5,5]]
       [0,0] [1,1] [-180,-90] [180,90] 0.5 1e-9 180 90.0001 359.99999999 -0.00036000036000036 1e308 1e-400 1e999 null
       9223372036854775807 -9223372036854775808 18446744073709551616 true [] "\ud800" )"
    "\"\xc3\xb4\xc2\x9b\xe2\x80\xae\" \xff";

std::vector<std::string> words_of(const char *text)
{
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

/* The text of one part, with an end to all that it begins. */
class part {
public:
    void add(char each)
    {
        text_ += each;
        if (is_escaped_)
            is_escaped_ = false;
        else if (each == '"')
            in_string_ = !in_string_;
        else if (in_string_)
            is_escaped_ = each == '\\';
        else if (each == '[' || each == '{')
            closers_ += each == '[' ? ']' : '}';
        else if (!closers_.empty() && each == closers_.back())
            closers_.pop_back();
    }
    void add(std::string_view word)
    {
        const bool begins = word[0] != ']' && word[0] != '}';
        if (begins && !text_.empty() && !in_string_ && !std::strchr("[{,:", text_.back()))
            text_ += ',';
        for (const char each : word)
            add(each);
    }
    std::string closed() const
    {
        return text_ + (in_string_ ? "\"" : "") + std::string(closers_.rbegin(), closers_.rend());
    }

private:
    std::string text_, closers_;
    bool in_string_ = false, is_escaped_ = false;
};

std::string text_of(std::span<const std::uint8_t> bytes)
{
    if (!bytes.empty() && bytes[0] == '{')
        return {bytes.begin(), bytes.end()};
    std::array<part, 3> parts;
    for (const char *arc :
         {"[[0,0],[60,0],[60,60],[0,60],[0,0]]", "[[170,0],[-170,0],[-170,40],[170,40],[170,0]]", "[[0,0],[1,1]]"})
        parts[1].add(std::string_view(arc));
    static const std::vector<std::string> words = words_of(language);
    std::size_t current = 0;
    for (const std::uint8_t byte : bytes) {
        if (byte < 128)
            parts[current].add(static_cast<char>(byte));
        else if (byte < end_of_part)
            parts[current].add(words[(byte - 128u) % words.size()]);
        else if (current + 1 < parts.size())
            ++current;
    }
    const std::string more = parts[2].closed();
    return R"({"type":"Topology","objects":{)" + parts[0].closed() + R"(},"arcs":[)" + parts[1].closed() + "]" +
           (more.empty() ? "" : "," + more) + "}";
}

void require_plain(const std::string &text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<std::uint8_t>(text[at]) : 0u; };
        mova::test::require(byte(i) >= ' ' && byte(i) != 0x7f, "a control character");
        mova::test::require(byte(i) != 0xc2 || byte(i + 1) >= 0xa0, "a control character of 8 bits");
    }
    for (const char *hidden : {"\u00ad", "\u061c", "\u200b", "\u200c", "\u200d", "\u200e", "\u200f", "\u2028",
                               "\u2029", "\u202a", "\u202b", "\u202c", "\u202d", "\u202e", "\u2060", "\u2066",
                               "\u2067", "\u2068", "\u2069", "\u206a", "\u206f", "\ufeff", "\ufff9", "\U000e0041"})
        mova::test::require(text.find(hidden) == std::string::npos, "a line break, a direction or what hides");
}

void require_plain_lines(const char *text)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        require_plain(line);
}

void read_and_draw(const std::string &text)
{
    Topology topology = decode_topology(text, no_progress);
    for (const std::string &warning : topology.warnings)
        require_plain(printable(warning));
    const Totals all = totals(topology);
    mova::test::require(all.countries > 0 && all.rings + all.lines > 0 && all.points > 1, "nothing was read");
    for (const Country *country : topology.countries) {
        for_each_ring(*country, [](const Ring &ring) {
            mova::test::require(ring.back().end() == ring.front().start(), "a ring is open");
        });
    }
    print(index_by_area(topology));
    draw_map(topology, 64);
    const std::string name = topology.countries.back()->name;
    select_countries(topology, {name, name});
    for (const Country *country : topology.countries)
        mova::test::require(country->name == name, "another country was selected");
    mova::test::require(!topology.countries.empty(), "no country was selected");
}

void run(std::span<const std::uint8_t> bytes)
{
    mova_set_debug_print(require_plain_lines);
    try {
        read_and_draw(text_of(bytes));
    } catch (const Error &error) {
        require_plain(printable(error.what()));
    }
}

const bool added = mova::test::add_model({"map", run, nullptr, {}, {}, {}});

} // namespace
