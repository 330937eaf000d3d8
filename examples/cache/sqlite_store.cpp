/* SPDX-License-Identifier: MIT */
/* Records in a table of an SQLite database. What is put goes into a transaction, which commit() ends. A transaction that was
   not ended has not happened, whatever the program ended by. */
#include "store.h"

#include <cstring>
#include <filesystem>
#include <vector>

#include <sqlite3.h>

namespace stations {

/* The mark of our databases among all others: "Stns". */
constexpr int our_id = 0x53746e73;

class sqlite_store : public store {
public:
    sqlite_store(const std::string &path, std::int64_t most_bytes, const store_settings &settings)
    {
        /* As an absolute path none of the names that SQLite takes for something else, ":memory:" or an empty one. */
        const std::string file = std::filesystem::absolute(path).string();
        const int flags = SQLITE_OPEN_READWRITE | (settings.may_create ? SQLITE_OPEN_CREATE : 0);
        sqlite3 *opened = nullptr;
        const int result = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
        database_.reset(opened);
        expect(SQLITE_OK, result);
        sqlite3_busy_timeout(opened, settings.patience * 1000);
        if (number_of("PRAGMA application_id") != our_id)
            create_table();
        /* A commit is a write to the log's end, and lasts when it returns; reading needs no lock of the file. */
        run("PRAGMA journal_mode = WAL");
        run("PRAGMA synchronous = FULL");
        if (most_bytes > 0)
            run("PRAGMA max_page_count = " + std::to_string(most_bytes / number_of("PRAGMA page_size")));
        get_ = prepare("SELECT record FROM body WHERE number = ?");
        put_ = prepare("INSERT OR REPLACE INTO body VALUES (?, ?)");
    }

    std::span<const std::byte> get(std::uint32_t number) override
    {
        expect(SQLITE_OK, sqlite3_bind_int64(get_.get(), 1, number));
        const int result = sqlite3_step(get_.get());
        record_.clear();
        if (result == SQLITE_ROW) {
            const auto *bytes = static_cast<const std::byte *>(sqlite3_column_blob(get_.get(), 0));
            record_.assign(bytes, bytes + sqlite3_column_bytes(get_.get(), 0));
        } else {
            expect(SQLITE_DONE, result);
        }
        expect(SQLITE_OK, sqlite3_reset(get_.get()));
        return record_;
    }

    void put(std::uint32_t number, std::span<const std::byte> record) override
    {
        if (sqlite3_get_autocommit(database_.get()))
            run("BEGIN IMMEDIATE");
        expect(SQLITE_OK, sqlite3_bind_int64(put_.get(), 1, number));
        expect(SQLITE_OK, sqlite3_bind_blob64(put_.get(), 2, record.data(), record.size(), SQLITE_STATIC));
        expect(SQLITE_DONE, sqlite3_step(put_.get()));
        expect(SQLITE_OK, sqlite3_reset(put_.get()));
    }

    void commit() override
    {
        if (!sqlite3_get_autocommit(database_.get()))
            run("COMMIT");
    }

private:
    struct closes {
        void operator()(sqlite3 *database) const { sqlite3_close(database); }
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    using statement = std::unique_ptr<sqlite3_stmt, closes>;

    void expect(int expected, int result)
    {
        if (result == expected)
            return;
        std::string text = sqlite3_errmsg(database_.get());
        const int kind = sqlite3_errcode(database_.get()) & 0xff;
        if (kind == SQLITE_CANTOPEN)
            text += std::string(": ") + std::strerror(sqlite3_system_errno(database_.get()));
        if (kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB)
            throw damage_error(text);
        throw store_error(text);
    }

    statement prepare(const std::string &text)
    {
        sqlite3_stmt *prepared = nullptr;
        expect(SQLITE_OK, sqlite3_prepare_v2(database_.get(), text.c_str(), -1, &prepared, nullptr));
        return statement(prepared);
    }

    void run(const std::string &text)
    {
        expect(SQLITE_OK, sqlite3_exec(database_.get(), text.c_str(), nullptr, nullptr, nullptr));
    }

    std::int64_t number_of(const std::string &question)
    {
        const statement asked = prepare(question);
        expect(SQLITE_ROW, sqlite3_step(asked.get()));
        return sqlite3_column_int64(asked.get(), 0);
    }

    /* In a database that is new. What another program keeps there stays alone. */
    void create_table()
    {
        run("BEGIN IMMEDIATE");
        const std::int64_t id = number_of("PRAGMA application_id");
        if (id == 0 && number_of("SELECT count(*) FROM sqlite_master") == 0) {
            run("PRAGMA application_id = " + std::to_string(our_id));
            run("CREATE TABLE body (number INTEGER PRIMARY KEY, record BLOB NOT NULL)");
        } else if (id != our_id) {
            throw store_error("is a database of another program");
        }
        run("COMMIT");
    }

    std::unique_ptr<sqlite3, closes> database_; /* outlives its statements */
    statement get_, put_;
    std::vector<std::byte> record_;
};

std::unique_ptr<store> open_sqlite_store(const std::string &path, std::int64_t most_bytes,
                                         const store_settings &settings)
{
    return std::make_unique<sqlite_store>(path, most_bytes, settings);
}

} // namespace stations
