/* SPDX-License-Identifier: MIT */
/* Where the pyramid's tiles go: into one file, or beside a page that shows them. Either is whole or not there at all. */
#ifndef ATLAS_TILES_H
#define ATLAS_TILES_H

#include "file.h"
#include "pyramid.h"

struct sqlite3;
struct sqlite3_stmt;

namespace atlas {

/* What there is to say about a pyramid, in plain text. */
struct Legend {
    std::string title, attribution; /* which may be empty */
    int zoom;
};

/* Text as a part of HTML. */
std::string as_html(std::string_view text);

/* ---- mbtiles.cpp: MBTiles 1.3, a database of SQLite ---- */

class TileFile {
public:
    /* All three throw Error where they fail. A file of the name gives way in the end. */
    TileFile(const std::string &name, const Legend &legend);
    void put(const Place &place, std::span<const std::uint8_t> png);
    void finish();

private:
    struct Close {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    void run(const char *statements);
    Statement prepare(const char *text);
    void step(const Statement &statement);

    Replacement file_;
    std::unique_ptr<sqlite3, Close> database_;
    Statement insert_;
};

/* ---- page.cpp: a directory of a page, what it needs, and the tiles ---- */

class Page {
public:
    /* All three throw Error where they fail, and the first one where there is anything of the name. */
    Page(const std::string &name, const Legend &legend);
    void put(const Place &place, std::span<const std::uint8_t> png);
    void finish() { directory_.finish(); }

private:
    Replacement directory_;
};

/* The files that come with a page, by their paths in its directory; in the page itself, words in braces stand for its legend. */
struct PageFile {
    const char *path;
    std::string_view text;
};
extern const std::array<PageFile, 4> page_files;

} // namespace atlas

#endif
