/* SPDX-License-Identifier: MIT */
#include "tiles.h"

#include <sqlite3.h>

namespace atlas {

/* Until it is finished nobody else sees the file: it needs no journal, and no syncing for that. The id is MBTiles'. */
constexpr const char *start = R"(
    PRAGMA journal_mode = OFF;
    PRAGMA synchronous = OFF;
    PRAGMA application_id = 0x4d504258;
    BEGIN;
    CREATE TABLE metadata (name TEXT, value TEXT);
    CREATE UNIQUE INDEX metadata_index ON metadata (name);
    CREATE TABLE tiles (zoom_level INTEGER, tile_column INTEGER, tile_row INTEGER, tile_data BLOB);
    CREATE UNIQUE INDEX tile_index ON tiles (zoom_level, tile_column, tile_row);)";

void TileFile::Close::operator()(sqlite3 *database) const
{
    sqlite3_close(database);
}

void TileFile::Close::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

static void check(int result)
{
    if (result != SQLITE_OK && result != SQLITE_DONE)
        throw Error(std::string("cannot be written: ") + sqlite3_errstr(result));
}

void TileFile::run(const char *statements)
{
    check(sqlite3_exec(database_.get(), statements, nullptr, nullptr, nullptr));
}

TileFile::Statement TileFile::prepare(const char *text)
{
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v2(database_.get(), text, -1, &statement, nullptr));
    return Statement(statement);
}

void TileFile::step(const Statement &statement)
{
    check(sqlite3_step(statement.get()));
    check(sqlite3_reset(statement.get()));
}

TileFile::TileFile(const std::string &name, const Legend &legend) : file_(name, Replacement::file)
{
    sqlite3 *database = nullptr;
    const int result = sqlite3_open(file_.path().c_str(), &database);
    database_.reset(database);
    check(result);
    run(start);
    const Statement insert = prepare("INSERT INTO metadata VALUES (?, ?)");
    const std::string zoom = std::to_string(legend.zoom);
    for (const auto &[key, value] : {std::pair<const char *, std::string>("name", printable(legend.title)),
                                     {"format", "png"},
                                     {"type", "baselayer"},
                                     {"version", "1"},
                                     {"minzoom", "0"},
                                     {"maxzoom", zoom},
                                     {"bounds", "-180,-85.051129,180,85.051129"},
                                     {"center", "0,0," + std::min<std::string>(zoom, "2")},
                                     {"attribution", as_html(legend.attribution)}}) {
        if (value.empty())
            continue;
        sqlite3_bind_text(insert.get(), 1, key, -1, SQLITE_STATIC);
        sqlite3_bind_text(insert.get(), 2, value.c_str(), -1, SQLITE_STATIC);
        step(insert);
    }
    insert_ = prepare("INSERT INTO tiles VALUES (?, ?, ?, ?)");
}

/* MBTiles counts rows from below. */
void TileFile::put(const Place &place, std::span<const std::uint8_t> png)
{
    sqlite3_bind_int(insert_.get(), 1, place.zoom);
    sqlite3_bind_int(insert_.get(), 2, place.column);
    sqlite3_bind_int(insert_.get(), 3, (1 << place.zoom) - 1 - place.row);
    sqlite3_bind_blob(insert_.get(), 4, png.data(), static_cast<int>(png.size()), SQLITE_STATIC);
    step(insert_);
}

void TileFile::finish()
{
    run("COMMIT");
    insert_.reset();
    check(sqlite3_close(database_.release()));
    file_.finish();
}

} // namespace atlas
