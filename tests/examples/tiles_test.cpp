/* SPDX-License-Identifier: MIT */
#include <memory>

#include <sqlite3.h>

#include "program.h"
#include "pyramid.h"

using namespace atlas;

namespace {

/* Asks a database, and returns the rows: columns with a bar between them. */
std::vector<std::string> query(const std::filesystem::path &path, const std::string &question)
{
    sqlite3 *opened = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr));
    const std::unique_ptr<sqlite3, int (*)(sqlite3 *)> database(opened, sqlite3_close);
    sqlite3_stmt *prepared = nullptr;
    EXPECT_EQ(SQLITE_OK, sqlite3_prepare_v2(opened, question.c_str(), -1, &prepared, nullptr))
        << sqlite3_errmsg(opened);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(prepared, sqlite3_finalize);
    std::vector<std::string> rows;
    while (sqlite3_step(prepared) == SQLITE_ROW) {
        std::string &row = rows.emplace_back();
        for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(prepared, i));
            row += (i > 0 ? "|" : "") + std::string(static_cast<const char *>(sqlite3_column_blob(prepared, i)), size);
        }
    }
    return rows;
}

using Rows = std::vector<std::string>;

} // namespace

TEST_F(Atlas, WritesTilesThatProgramsForMapsKnow)
{
    const Outcome outcome = run({shipped_path("110m"), "--tiles", "w.mbtiles", "--zoom", "2", "--attribution",
                                 "Natural <Earth> & \"more\"\x1b"});
    EXPECT_EQ("", outcome.err);
    ASSERT_EQ(0, outcome.code);
    EXPECT_EQ(1, scratch_.entries());
    const auto file = scratch_ / "w.mbtiles";
    EXPECT_EQ(Rows({"1297105496"}), query(file, "PRAGMA application_id"));
    EXPECT_EQ(Rows({"ok"}), query(file, "PRAGMA integrity_check"));
    EXPECT_EQ(Rows({"attribution|Natural &#60;Earth> &#38; &#34;more&#34;?", "bounds|-180,-85.051129,180,85.051129",
                    "center|0,0,2", "format|png", "maxzoom|2", "minzoom|0", "name|countries-110m", "type|baselayer",
                    "version|1"}),
              query(file, "SELECT name, value FROM metadata ORDER BY name"));
    EXPECT_EQ(Rows({"name|TEXT", "value|TEXT"}), query(file, "SELECT name, type FROM pragma_table_info('metadata')"));
    EXPECT_EQ(Rows({"zoom_level|INTEGER", "tile_column|INTEGER", "tile_row|INTEGER", "tile_data|BLOB"}),
              query(file, "SELECT name, type FROM pragma_table_info('tiles')"));
    EXPECT_EQ(Rows({"zoom_level", "tile_column", "tile_row"}),
              query(file, "SELECT i.name FROM pragma_index_list('tiles') AS l, pragma_index_info(l.name) AS i "
                          "WHERE l.\"unique\" ORDER BY i.seqno"));
    EXPECT_EQ(Rows({"0|1|0|0|0|0", "1|4|0|1|0|1", "2|16|0|3|0|3"}),
              query(file,
                    "SELECT zoom_level, count(*), min(tile_column), max(tile_column), min(tile_row), max(tile_row) "
                    "FROM tiles GROUP BY zoom_level"));
}

/* Rows count from below in the file, and from above beside a page. */
TEST_F(Atlas, HasTheSameTilesInItsFileAndBesideItsPage)
{
    const Outcome outcome = run({shipped_path("110m"), "--tiles=w.mbtiles", "--page=map/", "--zoom=2"});
    EXPECT_EQ("", outcome.err);
    ASSERT_EQ(0, outcome.code);
    const Topology topology = decode(shipped_world("110m"));
    draw_pyramid(
        topology, 2, 1 << 20,
        [&](const Place &place, const std::uint8_t *pixels) {
            Pixels expected(tile_side, tile_side);
            std::copy_n(pixels, expected.bytes().size(), expected.tile().pixels);
            const auto number = [](int value) { return std::to_string(value); };
            const Rows png =
                query(scratch_ / "w.mbtiles", "SELECT tile_data FROM tiles WHERE zoom_level = " + number(place.zoom) +
                                                  " AND tile_column = " + number(place.column) +
                                                  " AND tile_row = " + number((1 << place.zoom) - 1 - place.row));
            ASSERT_EQ(1u, png.size());
            EXPECT_TRUE(pixels_of(expected) == pixels_of(png[0], {tile_side, tile_side}));
            EXPECT_TRUE(png[0] == read_whole(scratch_ / ("map/tiles/" + number(place.zoom) + "/" +
                                                         number(place.column) + "/" + number(place.row) + ".png")));
        },
        no_progress);
}

TEST_F(Atlas, ReportsItsTiles)
{
    const Outcome outcome = run({shipped_path("110m"), "--tiles=w.mbtiles", "--page=map", "--zoom=1", "--out=a.png"});
    const std::string place = std::filesystem::canonical(scratch_.path()).string();
    const std::string bytes = query(scratch_ / "w.mbtiles", "SELECT sum(length(tile_data)) FROM tiles")[0];
    for (const std::string &line :
         {"picture  " + place + "/a.png\nsize     2048 x 1024 pixels, ", "\ntiles    " + place + "/w.mbtiles\n",
          "\npage     " + place + "/map/index.html\n", "\nzoom     0 to 1: 5 tiles, " + bytes + " bytes\ndrawn    177 ",
          std::string("\ncache    1048576 bytes for 148 tiles: 128 evictions, 68 write-backs, 64 fetches, ")})
        EXPECT_NE(std::string::npos, outcome.out.find(line)) << line << outcome.out;
}

TEST_F(Atlas, WritesTheSameTilesWhateverItsCachesBudget)
{
    std::string first;
    for (const char *budget : {"1048576", "32768", "50000", "536870912"}) {
        const Outcome outcome = run({shipped_path("110m"), "--tiles=w.mbtiles", "--zoom=2", "--cache-budget", budget});
        ASSERT_EQ("", outcome.err);
        const std::string file = read_whole(scratch_ / "w.mbtiles");
        EXPECT_TRUE(first.empty() || first == file) << budget;
        first = file;
    }
}

TEST_F(Atlas, ShipsAllThatItsPageNeeds)
{
    ASSERT_EQ(0, run({shipped_path("110m"), "--page=map", "--zoom=0", "--attribution=<b>"}).code);
    const std::string page = read_whole(scratch_ / "map/index.html");
    EXPECT_NE(std::string::npos, page.find("<title>countries-110m</title>"));
    EXPECT_NE(std::string::npos, page.find("<template id=\"attribution\">&#60;b></template>"));
    EXPECT_EQ(std::string::npos, page.find("{title}"));
    EXPECT_EQ(std::string::npos, page.find("{attribution}"));
    EXPECT_EQ(std::string::npos, page.find("{zoom}"));
    const std::filesystem::path shipped = ATLAS_DATA "../page";
    for (const char *name : {"leaflet/leaflet.js", "leaflet/leaflet.css", "leaflet/LICENSE"})
        EXPECT_TRUE(read_whole(shipped / name) == read_whole(scratch_ / "map" / name)) << name;
    EXPECT_EQ(1, scratch_.entries());
}

TEST_F(Atlas, RefusesTilesThatItCannotMake)
{
    const std::string map = shipped_path("110m");
    for (const char *zoom : {"-1", "9", "99", "", "2.5"})
        expect_refusal({map, "--tiles=a", "--zoom", zoom},
                       std::string("--zoom takes a whole number from 0 to 8, not ") + zoom);
    for (const char *option : {"--tiles", "--page", "--attribution", "--out"})
        expect_refusal({map, option, ""}, std::string(option) + " needs a value (see atlas --help)");
    expect_refusal({map, "--tiles=none/a"}, "none/a: cannot be written: No such file or directory");
    expect_refusal({map, "--page=none/a"}, "none/a: cannot be written: No such file or directory");
    expect_refusal({map, "--tiles=."}, ".: cannot be written: not an ordinary file");
    expect_refusal({map, "--page=."}, ".: cannot be written: it is there already");
    std::filesystem::create_directory(scratch_ / "mine");
    expect_refusal({map, "--page=mine/"}, "mine/: cannot be written: it is there already");
    write_whole(scratch_ / "in", shipped_world("110m"));
    expect_refusal({"in", "--tiles=./in"}, "in: the file of tiles would replace the file that it is drawn from");
    EXPECT_EQ(shipped_world("110m"), read_whole(scratch_ / "in"));
}

/* Of both, while the one, the other or both are made. */
TEST_F(Atlas, LeavesNoPartOfItsTilesWhenTheDiskIsFull)
{
    write_whole(scratch_ / "w.mbtiles", "old");
    const TemporaryDirectory temporary(".");
    for (const auto &[options, message] :
         {std::pair("--tiles=w.mbtiles --cache-budget=2097152", "w.mbtiles: cannot be written: disk I/O error"),
          {"--page=map --cache-budget=2097152", "map: cannot be written: File too large"},
          {"--tiles=w.mbtiles --cache-budget=32768",
           "w.mbtiles: the temporary file in . cannot be written: File too large"}}) {
        const Outcome outcome =
            run_command({"sh", "-c", "ulimit -f 16; exec \"$0\" \"$1\" --zoom=3 " + std::string(options), ATLAS_PROGRAM,
                         shipped_path("110m")});
        EXPECT_EQ("atlas: " + std::string(message) + "\n", outcome.err);
        EXPECT_EQ(1, outcome.code);
        EXPECT_EQ("old", read_whole(scratch_ / "w.mbtiles"));
        EXPECT_EQ(1, scratch_.entries());
    }
}

TEST_F(Atlas, LeavesNoPartOfItsTilesWhenItIsStopped)
{
    write_whole(scratch_ / "w.mbtiles", "old");
    const Outcome outcome = run_command(
        {"sh", "-c",
         "\"$0\" \"$1\" --tiles=w.mbtiles --page=map --zoom=8 & until test -e map.*/tiles/4; do sleep 0.01; done;"
         "kill $!; wait $!; exit $?",
         ATLAS_PROGRAM, shipped_path("110m")});
    EXPECT_EQ(128 + SIGTERM, outcome.code);
    EXPECT_EQ("old", read_whole(scratch_ / "w.mbtiles"));
    EXPECT_EQ(1, scratch_.entries());
    EXPECT_EQ(0u, outcome.err.find("atlas: map: stopped\n")) << outcome.err;
}

/* What a shell runs in the background ignores its interrupts. */
TEST_F(Atlas, IsNotStoppedByWhatItIgnores)
{
    const Outcome outcome = run_command(
        {"sh", "-c",
         "trap '' INT; \"$0\" \"$1\" --tiles=w.mbtiles --zoom=4 & until test -e w.mbtiles.*; do sleep 0.01; done;"
         "kill -INT $!; wait $!",
         ATLAS_PROGRAM, shipped_path("110m")});
    EXPECT_EQ("", outcome.err);
    EXPECT_EQ(0, outcome.code);
    EXPECT_EQ(Rows({"341"}), query(scratch_ / "w.mbtiles", "SELECT count(*) FROM tiles"));
}

TEST_F(Atlas, ReplacesOlderTiles)
{
    write_whole(scratch_ / "w.mbtiles", "old");
    EXPECT_EQ(0, run({shipped_path("110m"), "--tiles=w.mbtiles", "--zoom=0"}).code);
    EXPECT_EQ(Rows({"1"}), query(scratch_ / "w.mbtiles", "SELECT count(*) FROM tiles"));
    EXPECT_EQ(1, scratch_.entries());
}
