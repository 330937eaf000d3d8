/* SPDX-License-Identifier: MIT */
/* What the tests of the map share: small worlds, the shipped ones, and places to write to. */
#ifndef TESTS_EXAMPLES_WORLD_H
#define TESTS_EXAMPLES_WORLD_H

#include <cstdlib>
#include <optional>
#include <string>

#include "file.h"
#include "scratch.h"
#include "topology.h"

inline std::string shipped_path(const std::string &scale)
{
    return ATLAS_DATA "countries-" + scale + ".json";
}

inline std::string shipped_world(const std::string &scale)
{
    return atlas::read_file(shipped_path(scale), atlas::no_progress);
}

inline atlas::Topology decode(const std::string &text)
{
    return atlas::decode_topology(text, atlas::no_progress);
}

/* A topology without a transform, of the objects and the arcs given as JSON. */
inline std::string world(const std::string &objects, const std::string &arcs)
{
    return R"({"type":"Topology","objects":{)" + objects + R"(},"arcs":[)" + arcs + "]}";
}

/* A topology of one geometry. */
inline std::string world_of(const std::string &type, const std::string &numbers, const std::string &arcs)
{
    return world(R"("land":{"type":")" + type + R"(","arcs":)" + numbers + "}", arcs);
}

/* Has temporary files made elsewhere while it lives. */
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(const std::string &path)
    {
        if (const char *before = std::getenv("TMPDIR"))
            before_ = before;
        setenv("TMPDIR", path.c_str(), 1);
    }
    ~TemporaryDirectory()
    {
        if (before_)
            setenv("TMPDIR", before_->c_str(), 1);
        else
            unsetenv("TMPDIR");
    }
    TemporaryDirectory(const TemporaryDirectory &) = delete;
    TemporaryDirectory &operator=(const TemporaryDirectory &) = delete;

private:
    std::optional<std::string> before_;
};

#endif
