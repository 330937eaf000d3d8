/* SPDX-License-Identifier: MIT */
/* Where bodies live when they are not in memory: records of bytes, each under a number.

   put() gives a record to the store, and get() finds it from then on. commit() makes what was put last, whatever happens to
   this program, the store's, or the machine:

       put 1   put 2   commit   put 3   put 4   | killed, full, unplugged
       '--------- safe -------'  '-- may be there or not, each of them whole or not at all

   To add a store of your own, write a class like these two and name it in open_store(). */
#ifndef STATIONS_STORE_H
#define STATIONS_STORE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

namespace stations {

/* The store cannot do what it was asked for. What was committed before is safe. The text is for people. */
class store_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/* What the store holds is not what was put there. */
class damage_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class store {
public:
    store() = default;
    store(const store &) = delete;
    virtual ~store() = default;

    /* Returns the record, which holds until the next call of the store; an empty one where there is none. */
    virtual std::span<const std::byte> get(std::uint32_t number) = 0;
    /* Puts a record of one byte or more, or another in its place. The store has it when this returns: the caller may forget
       it. */
    virtual void put(std::uint32_t number, std::span<const std::byte> record) = 0;
    virtual void commit() = 0;
    /* Of all three: throws store_error or damage_error, and then nothing but the destructor may be called. */
};

struct store_settings {
    int patience;    /* seconds that the store may take to answer */
    bool may_create; /* where there is none yet */
};

/* Opens the store that the URL names:

       sqlite:PATH[?max=BYTES]       a file, which is to stay below that size
       redis://HOST[:PORT][/N]       database N of a server
       redis+unix:PATH               of one on this machine, by its socket

   Throws as the store does. */
std::unique_ptr<store> open_store(const std::string &url, const store_settings &settings);

/* The stores themselves. A server whose host has no name has its socket in the host's place, and no port. */
std::unique_ptr<store> open_sqlite_store(const std::string &path, std::int64_t most_bytes,
                                         const store_settings &settings);
std::unique_ptr<store> open_redis_store(const std::string &host, int port, int database,
                                        const store_settings &settings);

} // namespace stations

#endif
