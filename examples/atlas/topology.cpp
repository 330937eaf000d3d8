/* SPDX-License-Identifier: MIT */
#include "topology.h"

#include <array>
#include <cmath>
#include <optional>

#include <mova/cxx/id_table.h>
#include <nlohmann/json.hpp>

#include "colours.h"

namespace atlas {

using nlohmann::json;

/* ---- JSON text ---- */

/* No topology nests deeper than this, other than by nesting its collections. */
constexpr std::size_t deepest_json = 64;
constexpr int deepest_collection = 16;

/* Walks over the text, and says every now and then how far it is. */
struct Reader {
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using reference = char;

    static constexpr std::size_t report_every = 65536;

    std::string_view text;
    std::size_t at;
    const Progress &progress;

    char operator*() const { return text[at]; }
    Reader &operator++()
    {
        if (++at % report_every == 0)
            progress("parsing", at, text.size());
        return *this;
    }
    bool operator==(const Reader &other) const { return at == other.at; }
};

/* Builds a value as it is parsed. Of several members of a key the last one counts; the first key that comes again is worth a
   warning. */
class Builder : public nlohmann::json_sax<json> {
public:
    json root;

    Builder(std::size_t size, std::vector<std::string> &warnings) : size_(size), warnings_(warnings) {}

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(std::int64_t value) override { return add(value); }
    bool number_unsigned(std::uint64_t value) override { return add(value); }
    bool number_float(double value, const std::string &) override { return add(value); }
    bool string(std::string &value) override { return add(std::move(value)); }
    bool binary(json::binary_t &) override { return false; }
    bool start_object(std::size_t) override { return open(json::object()); }
    bool start_array(std::size_t) override { return open(json::array()); }
    bool end_object() override { return end_array(); }
    bool end_array() override
    {
        open_.pop_back();
        return true;
    }
    bool key(std::string &name) override
    {
        const auto [member, is_new] = open_.back()->get_ref<json::object_t &>().try_emplace(name);
        if (!is_new && warnings_.empty())
            warnings_.push_back("an object has several \"" + name + "\": the last one counts");
        member_ = &member->second;
        return true;
    }
    bool parse_error(std::size_t byte, const std::string &, const json::exception &error) override
    {
        constexpr int number_overflow = 406;
        if (error.id == number_overflow)
            throw Error("a number is too large");
        if (byte > size_)
            throw Error("the JSON ends too early, after " + std::to_string(size_) + " bytes");
        throw Error("not valid JSON at byte " + std::to_string(byte));
    }

private:
    json *add(json value)
    {
        json &added = open_.empty() ? root : open_.back()->is_array() ? open_.back()->emplace_back() : *member_;
        added = std::move(value);
        return &added;
    }
    bool open(json value)
    {
        if (open_.size() == deepest_json)
            throw Error("nested too deep for a topology");
        open_.push_back(add(std::move(value)));
        return true;
    }

    std::size_t size_; /* of the text */
    std::vector<std::string> &warnings_;
    std::vector<json *> open_; /* the arrays and objects around what comes next */
    json *member_ = nullptr;
};

static json parse_json(std::string_view text, std::vector<std::string> &warnings, const Progress &progress)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first != std::string_view::npos && text[first] != '{' && text[first] != '[')
        throw Error("not JSON");
    Builder builder(text.size(), warnings);
    json::sax_parse(Reader{text, 0, progress}, Reader{text, text.size(), progress}, &builder);
    return std::move(builder.root);
}

/* Returns the member, or null where there is none; what is no object has none. */
static const json *find(const json &object, const char *key)
{
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

/* Returns the member, or throws. `what` says to people where it was looked for. */
static const json &member(const json &object, const char *key, const char *what)
{
    const json *found = find(object, key);
    if (!found)
        throw Error(std::string(what) + " has no \"" + key + "\"");
    return *found;
}

static const json &array(const json &value, const char *what)
{
    if (!value.is_array())
        throw Error(std::string(what) + " is not an array");
    return value;
}

/* ---- coordinates ---- */

/* A quantised position is a pair of whole numbers q, for translate + q * scale. These are kept with more bits than
   an angle, for q may be large. */
constexpr int fine_bits = 48;
constexpr std::int64_t fine_degree = std::int64_t{1} << fine_bits;
constexpr double largest_number = 720;

static const char *const outside = "a position lies outside the globe";

/* Returns value * 2^fine_bits as an integer. Scaling by a power of two is exact, so this rounds once, and alike
   wherever the number was read alike. */
static std::int64_t fine(const json &value, const char *what)
{
    if (!value.is_number())
        throw Error(std::string(what) + " holds something that is not a number");
    const double number = value.get<double>();
    if (!(std::fabs(number) <= largest_number))
        throw Error(std::string(what) + " holds a number out of range");
    return std::llround(std::ldexp(number, fine_bits));
}

static std::int64_t whole(const json &value, const char *what)
{
    if (!value.is_number_integer())
        throw Error(std::string(what) + " holds something that is not a whole number");
    if (value.is_number_unsigned() && value.get<std::uint64_t>() > INT64_MAX)
        throw Error(std::string(what) + " holds a number out of range");
    return value.get<std::int64_t>();
}

/* Here and below, dimension 0 is longitude, 1 is latitude. */
using Position = std::array<std::int64_t, 2>;
struct Transform {
    Position scale, translate; /* fine */
};

static std::optional<Transform> read_transform(const json &root)
{
    const json *found = find(root, "transform");
    if (!found || found->is_null())
        return std::nullopt;
    const json &scale = array(member(*found, "scale", "the transform"), "the transform's scale");
    const json &translate = array(member(*found, "translate", "the transform"), "the transform's translation");
    if (scale.size() < 2 || translate.size() < 2)
        throw Error("the transform has fewer than two dimensions");
    Transform transform;
    for (const std::size_t i : {0u, 1u}) {
        transform.scale[i] = fine(scale[i], "the transform");
        transform.translate[i] = fine(translate[i], "the transform");
    }
    return transform;
}

/* Rounds to an angle. Requires a limit whose angle fits. */
static Angle rounded(std::int64_t fine_angle, std::int64_t limit)
{
    const std::int64_t half = std::int64_t{1} << (fine_bits - angle_bits - 1);
    if (fine_angle < -limit || fine_angle > limit)
        throw Error(outside);
    return static_cast<Angle>((fine_angle + half) >> (fine_bits - angle_bits));
}

/* Longitudes may go once round the globe, latitudes beyond a pole by what a quantised file may be off. */
static Point point_at(const Position &fine)
{
    const Angle longitude = rounded(fine[0], 360 * fine_degree);
    const Angle latitude = rounded(fine[1], 90 * fine_degree + fine_degree / 1000);
    const Angle turn = longitude > 180 * degree ? -360 : longitude < -180 * degree ? 360 : 0;
    return {longitude + turn * degree, std::clamp(latitude, -90 * degree, 90 * degree)};
}

/* ---- arcs ---- */

/* Each quantised position is a step from the one before it. There may be further dimensions. */
static Points read_points(const json &positions, const std::optional<Transform> &transform)
{
    Points points(positions.size());
    Position quantised = {}, position;
    for (const json &each : positions) {
        if (array(each, "a position").size() < 2)
            throw Error("a position has fewer than two coordinates");
        for (const std::size_t i : {0u, 1u}) {
            if (!transform)
                position[i] = fine(each[i], "a position");
            else if (__builtin_add_overflow(quantised[i], whole(each[i], "a position"), &quantised[i]) ||
                     __builtin_mul_overflow(quantised[i], transform->scale[i], &position[i]) ||
                     __builtin_add_overflow(position[i], transform->translate[i], &position[i]))
                throw Error(outside);
        }
        points.append(point_at(position));
    }
    return points;
}

/* Outlines name arcs by number, from 0 on; their ids count from 1 on. */
using ArcIds = mova::id_table<Arc>;

static void read_arcs(const json &root, Owned<Arc> &arcs, ArcIds &ids, const Progress &progress)
{
    const std::optional<Transform> transform = read_transform(root);
    const json &all = array(member(root, "arcs", "the topology"), "the topology's \"arcs\"");
    for (const json &positions : all) {
        if (array(positions, "an arc").size() < 2)
            throw Error("arc " + std::to_string(arcs.size()) + " has fewer than two positions");
        ids.add(*arcs.append(std::make_unique<Arc>(Arc{read_points(positions, transform)})));
        progress("decoding", arcs.size(), all.size());
    }
}

/* ---- outlines ---- */

static std::string_view read_name(const json &geometry)
{
    const json *properties = find(geometry, "properties");
    const json *name = properties ? find(*properties, "name") : nullptr;
    return name && name->is_string() ? std::string_view(name->get_ref<const std::string &>()) : std::string_view();
}

/* Reads the geometries of an object, as deep as they are nested, into countries. */
class OutlineReader {
public:
    OutlineReader(Topology &topology, ArcIds &arcs) : topology_(topology), arcs_(arcs)
    {
        /* A short file can name a long arc without end. Maps run along an arc once or twice, nested ones a few times
           more. */
        std::size_t points = 0;
        for (const Arc *arc : topology.arcs)
            points += arc->points.size();
        ring_points_left_ = std::min(points * most_runs, most_outline_points);
        line_points_left_ = std::max(ring_points_left_, room_for_lines);
    }

    void read(const json &geometry, int depth = 0)
    {
        if (geometry.is_null())
            return;
        const json &type = member(geometry, "type", "a geometry");
        if (type == "GeometryCollection") {
            if (depth >= deepest_collection)
                throw Error("geometry collections are nested too deep");
            for (const json &each : array(member(geometry, "geometries", "a collection"), "\"geometries\""))
                read(each, depth + 1);
        } else if (!type.is_null() && type != "Point" && type != "MultiPoint") {
            read_country(geometry, type);
        }
    }

private:
    void read_country(const json &geometry, const json &type)
    {
        auto country = std::make_unique<Country>();
        const json &outlines = array(member(geometry, "arcs", "a geometry"), "a geometry's \"arcs\"");
        const auto add_line = [&](const json &numbers) {
            country->lines.append(std::make_unique<Line>(read_line(numbers, line_points_left_, false)));
        };
        if (type == "Polygon")
            read_polygon(outlines, *country);
        else if (type == "MultiPolygon")
            std::ranges::for_each(outlines, [&](const json &each) { read_polygon(each, *country); });
        else if (type == "LineString")
            add_line(outlines);
        else if (type == "MultiLineString")
            std::ranges::for_each(outlines, add_line);
        else
            throw Error("a geometry is of an unknown type");
        if (country->polygons.empty() && country->lines.empty())
            return;
        country->name = read_name(geometry);
        topology_.countries.append(std::move(country));
    }

    void read_polygon(const json &rings, Country &country)
    {
        auto polygon = std::make_unique<Polygon>();
        for (const json &numbers : array(rings, "a polygon"))
            polygon->append(std::make_unique<Ring>(read_line(numbers, ring_points_left_, true).close()));
        if (!polygon->empty())
            country.polygons.append(std::move(polygon));
    }

    Line read_line(const json &numbers, std::size_t &points_left, bool is_ring)
    {
        if (array(numbers, "an outline").empty())
            throw Error("an outline has no arcs");
        Line line;
        for (const json &number : numbers)
            line.append(read_stretch(number));
        const auto apart = [](const Stretch &before, const Stretch &after) { return before.end() != after.start(); };
        if (std::ranges::adjacent_find(line, apart) != line.end())
            throw Error("an outline's arcs do not join");
        if (is_ring && apart(line.back(), line.front()))
            throw Error("a ring is not closed");
        for (const Stretch &stretch : line) {
            if (stretch.arc->points.size() > points_left)
                throw Error("the outlines have too many points: they run along the same arcs again and again");
            points_left -= stretch.arc->points.size();
        }
        return line;
    }

    /* Number n means arc n, and ~n means arc n backwards. */
    Stretch read_stretch(const json &value)
    {
        const std::int64_t number = whole(value, "an outline");
        const std::int64_t index = number < 0 ? ~number : number;
        const std::size_t count = topology_.arcs.size();
        if (static_cast<std::uint64_t>(index) >= count)
            throw Error("an outline refers to arc " + std::to_string(index) + " of " + std::to_string(count));
        return {&arcs_[static_cast<std::int32_t>(index) + 1], number < 0};
    }

    Topology &topology_;
    ArcIds &arcs_;
    std::size_t ring_points_left_, line_points_left_;
};

static void read_objects(const json &objects, OutlineReader &reader)
{
    if (!objects.is_object())
        throw Error("the topology's \"objects\" is not an object");
    if (const json *countries = find(objects, "countries"))
        return reader.read(*countries);
    for (const json &each : objects)
        reader.read(each);
}

/* As a transform makes of any file that scales by nothing. */
static bool is_one_point(const Topology &topology)
{
    const Point *first = nullptr;
    for (const Arc *arc : topology.arcs) {
        if (arc->use == ArcUse::none)
            continue;
        first = first ? first : &arc->points.front();
        if (std::ranges::count(arc->points, *first) != std::ssize(arc->points))
            return false;
    }
    return true;
}

Topology decode_topology(std::string_view text, const Progress &progress)
{
    Topology topology;
    const json root = parse_json(text, topology.warnings, progress);
    const json *type = find(root, "type");
    if (!type || *type != "Topology")
        throw Error("not a TopoJSON topology");
    ArcIds ids;
    read_arcs(root, topology.arcs, ids, progress);
    OutlineReader reader(topology, ids);
    read_objects(member(root, "objects", "the topology"), reader);
    if (topology.countries.empty())
        throw Error("nothing to draw: no geometry has outlines");
    find_borders(topology);
    if (is_one_point(topology))
        topology.warnings.emplace_back("all of its points are one point: there is little to see");
    return topology;
}

Totals totals(const Topology &topology)
{
    Totals sum = {};
    for (const Country *country : topology.countries) {
        ++sum.countries;
        sum.lines += country->lines.size();
        for_each_ring(*country, [&](const Ring &) { ++sum.rings; });
    }
    for (const Arc *arc : topology.arcs)
        sum.points += arc->use == ArcUse::none ? 0 : arc->points.size();
    return sum;
}

} // namespace atlas
