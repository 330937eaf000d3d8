/* SPDX-License-Identifier: MIT */
#include "store.h"

#include <charconv>
#include <regex>

namespace stations {

/* Returns what a part of the URL says, or `usual` where it is left out. */
static std::int64_t number_of(const std::ssub_match &part, std::int64_t usual, std::int64_t most)
{
    if (!part.matched)
        return usual;
    const std::string digits = part.str();
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || number > most)
        throw store_error("the number " + digits + " in this URL is more than " + std::to_string(most));
    return number;
}

std::unique_ptr<store> open_store(const std::string &url, const store_settings &settings)
{
    static const std::regex file("sqlite:(.+?)(?:[?]max=([0-9]+))?"), socket("redis[+]unix:(.+)"),
        server(R"(redis://([^/:@\[\]]+|\[[0-9A-Fa-f:.]+\])(?::([0-9]+))?(?:/([0-9]+)?)?)");
    std::smatch part;
    if (std::regex_match(url, part, file))
        return open_sqlite_store(part[1], number_of(part[2], 0, INT64_MAX), settings);
    if (std::regex_match(url, part, socket))
        return open_redis_store(part[1], 0, 0, settings);
    if (!std::regex_match(url, part, server))
        throw store_error("is not the URL of a store: that is sqlite:PATH, redis://HOST[:PORT][/N] or redis+unix:PATH");
    std::string host = part[1];
    if (host.front() == '[')
        host = host.substr(1, host.size() - 2);
    return open_redis_store(host, static_cast<int>(number_of(part[2], 6379, 65535)),
                            static_cast<int>(number_of(part[3], 0, INT32_MAX)), settings);
}

} // namespace stations
