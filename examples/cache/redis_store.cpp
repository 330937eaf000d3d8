/* SPDX-License-Identifier: MIT */
/* Records on a Redis server, each a string under "station:NUMBER". The server answers for each record before put() returns,
   because the cache then gives the body's memory to another. A server that runs with `appendonly yes` and
   `appendfsync always` has written it to its disk by then, so commit() has nothing left to do. */
#include "store.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include <hiredis/hiredis.h>

namespace stations {

class redis_store : public store {
public:
    redis_store(const std::string &host, int port, int database, const store_settings &settings)
        : patience_(settings.patience)
    {
        const timeval patience = {settings.patience, 0};
        connection_.reset(port == 0 ? redisConnectUnixWithTimeout(host.c_str(), patience)
                                    : redisConnectWithTimeout(host.c_str(), port, patience));
        if (!connection_ || connection_->err || redisSetTimeout(connection_.get(), patience) != REDIS_OK)
            fail();
        if (const char *password = std::getenv("REDISCLI_AUTH"))
            ask({"AUTH", password});
        ask({"SELECT", std::to_string(database)});
        refuse_forgetful_server();
    }

    std::span<const std::byte> get(std::uint32_t number) override
    {
        ask({"GET", key_of(number)});
        if (answer_->type == REDIS_REPLY_NIL)
            return {};
        return std::as_bytes(std::span(answer_->str, answer_->len));
    }

    void put(std::uint32_t number, std::span<const std::byte> record) override
    {
        ask({"SET", key_of(number), {reinterpret_cast<const char *>(record.data()), record.size()}});
    }

    void commit() override {}

private:
    struct frees {
        void operator()(redisContext *connection) const { redisFree(connection); }
        void operator()(redisReply *answer) const { freeReplyObject(answer); }
    };

    static std::string key_of(std::uint32_t number) { return "station:" + std::to_string(number); }

    [[noreturn]] void fail() const
    {
        if (!connection_)
            throw store_error("out of memory");
        if (connection_->err == REDIS_ERR_IO && errno == EAGAIN)
            throw store_error("the server did not answer within " + std::to_string(patience_) + " s");
        throw store_error(connection_->errstr);
    }

    void ask(std::initializer_list<std::string_view> words)
    {
        const char *texts[4];
        std::size_t sizes[4], count = 0;
        for (const std::string_view word : words) {
            texts[count] = word.data();
            sizes[count++] = word.size();
        }
        answer_.reset(
            static_cast<redisReply *>(redisCommandArgv(connection_.get(), static_cast<int>(count), texts, sizes)));
        if (!answer_)
            fail();
        if (answer_->type == REDIS_REPLY_ERROR)
            throw store_error("the server answers: " + std::string(answer_->str, answer_->len));
    }

    /* A server that makes room by dropping keys is a cache, not a store. */
    void refuse_forgetful_server()
    {
        ask({"INFO", "memory"});
        if (std::string_view(answer_->str, answer_->len).find("maxmemory_policy:allkeys") != std::string_view::npos)
            throw store_error("the server drops keys when it is full: set its maxmemory-policy to noeviction");
    }

    int patience_;
    std::unique_ptr<redisContext, frees> connection_;
    std::unique_ptr<redisReply, frees> answer_;
};

std::unique_ptr<store> open_redis_store(const std::string &host, int port, int database, const store_settings &settings)
{
    return std::make_unique<redis_store>(host, port, database, settings);
}

} // namespace stations
