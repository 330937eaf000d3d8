/* SPDX-License-Identifier: MIT */
/* The checked pools of movable blocks.

   An address in a pool holds until blocks are moved. So the blocks of a checked pool lie in memory of their own, its view, and
   whenever the pool has moved some of them the whole view moves: the same pages at another address. What it leaves can be neither
   read nor written for a while, so that a program which kept an address stops where it touches the block.

       mb_alloc, which moves C     view at 0x…a000  | A | B | C | . |   ->   0x…a000  cannot be touched
                                                                             0x…f000  | A | C | E | . |

   The pool's records name the blocks' addresses: they are corrected. The arena that the pool has asked its host for is never
   written to. With a memory service of the program's own the blocks lie in that one's memory, as ever. */
#include "views.h"

#include <mova/checked/internal/blocks.h>
#include <mova/frame/host.h>
#include <mova/host/internal/block_pool.h>
#include <mova/host/memory_blocks.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>

#include <pthread.h>

extern "C" {
mb_handle mova_plain_mb_alloc(mb_pool *pool, size_t size);
void *mova_plain_mb_get(mb_pool *pool, mb_handle handle);
void mova_plain_mb_free(mb_pool *pool, mb_handle *handle);
mb_statistics mova_plain_mb_pool_statistics(const mb_pool *pool);
mb_pool *mova_plain_mb_create_pool(size_t budget);
void mova_plain_mb_release_pool(mb_pool **pool);
}

/* As the ordinary pools are defined. */
struct mb_pool : mova::block_pool {
    using block_pool::block_pool;
};

namespace {

using namespace mova::checked;

void say(const char *function, const char *what, const void *where)
{
    const block_misuse misuse = {function, what, where, nullptr, 0, nullptr, nullptr};
    if (mova_checked_report_block)
        return mova_checked_report_block(&misuse);
    std::fprintf(stderr, "mova: %s: %s\n", function, what);
    std::abort();
}

/* ---- what is noted of pools ---- */

struct note {
    const mb_pool *pool;
    const void *thread; /* that entered it last: the address of a variable that each has of its own */
    bool edits;         /* whether that came to edit */
    const void *released;
};

/* The notes of many pools, each in the place that its address has; another's may be in it. */
struct notes {
    std::mutex mutex;
    note last[256] = {};

    note &of(const mb_pool *pool)
    {
        const auto address = reinterpret_cast<uintptr_t>(pool);
        return last[(address >> 4 ^ address >> 12) % std::size(last)];
    }
};

constinit notes known;

[[gnu::constructor]] void hold_over_forks()
{
    pthread_atfork([] { known.mutex.lock(); }, [] { known.mutex.unlock(); }, [] { known.mutex.unlock(); });
}

/* A call that uses a pool. */
class visit {
public:
    visit(const char *function, const mb_pool *pool, bool edits, const void *returns_to)
        : function_(function), pool_(pool), returns_to_(returns_to), edits_(edits)
    {
        if (!pool)
            wrong("the pool is null");
        else if (!enter())
            wrong("the pool was released");
    }

    /* Another thread may have been in the pool meanwhile, and one of the two to edit. */
    void end()
    {
        bool met;
        {
            const std::lock_guard lock(known.mutex);
            const note &in = known.of(pool_);
            met = in.pool == pool_ && !in.released && in.thread != &own && (in.edits || edits_);
        }
        if (met)
            wrong("another thread used the pool meanwhile");
    }

    void wrong(const char *what)
    {
        is_wrong_ = true;
        say(function_, what, where());
    }
    bool is_wrong() const { return is_wrong_; }
    const void *where() const { return mova_checked_place_of ? mova_checked_place_of(returns_to_) : returns_to_; }

private:
    /* Returns whether the pool is there. */
    bool enter()
    {
        const std::lock_guard lock(known.mutex);
        note &in = known.of(pool_);
        if (in.pool == pool_ && in.released)
            return false;
        in = {pool_, &own, edits_, nullptr};
        return true;
    }

    static thread_local char own;

    const char *function_;
    const mb_pool *pool_;
    const void *returns_to_;
    bool edits_, is_wrong_ = false;
};

constinit thread_local char visit::own = 0;

/* ---- views ---- */

char *view_of(const mb_pool *pool)
{
    char *const begin = pool->place_of(mb_pool::origin).address;
    return begin == pool->arena() ? nullptr : begin;
}

/* A pool without a budget has room for blocks of size 0. */
size_t view_bytes(const mb_pool *pool)
{
    return pool->statistics().budget + MB_UNIT;
}

/* All blocks lie there from now on, each as far from the others as before. */
void correct_addresses(const mb_pool *pool, char *view)
{
    const char *const before = pool->place_of(mb_pool::origin).address;
    mb_handle each = mb_pool::origin;
    do {
        char *&address = const_cast<mb_pool::place &>(pool->place_of(each)).address;
        address = view + (address - before);
        each = pool->block_of(each).next;
    } while (each != mb_pool::origin);
}

/* The size of the block, rounded as it is in the pool. */
size_t bytes_of(const mb_pool *pool, mb_handle handle)
{
    return pool->block_of(handle).size;
}

} // namespace

extern "C" {

mb_handle mb_alloc(mb_pool *pool, size_t size)
{
    visit made("mb_alloc", pool, true, __builtin_return_address(0));
    const uint64_t moves = pool->statistics().moves;
    const mb_handle handle = mova_plain_mb_alloc(pool, size);
    if (char *const view = pool->statistics().moves != moves ? view_of(pool) : nullptr) {
        const std::lock_guard lock(known.mutex);
        correct_addresses(pool, move_view(view, view_bytes(pool), made.where()));
    }
    made.end();
    return handle;
}

/* Under a name that no program's own service takes the place of. */
__attribute__((visibility("hidden"))) void *mova_checked_own_mb_get(mb_pool *pool, mb_handle handle)
{
    visit made("mb_get", pool, false, __builtin_return_address(0));
    void *const block = mova_plain_mb_get(pool, handle);
    made.end();
    return block;
}

__attribute__((alias("mova_checked_own_mb_get"))) void *mb_get(mb_pool *pool, mb_handle handle);

/* A handle that is not live is an error of the service's own, which is raised after this. */
void mb_free(mb_pool *pool, mb_handle *handle)
{
    visit made("mb_free", pool, true, __builtin_return_address(0));
    if (!handle)
        made.wrong("the handle is null");
    else if (*handle != 0 && !mova_plain_mb_get(pool, *handle))
        made.wrong("the block was freed, or is none of this pool");
    else if (*handle != 0 && view_of(pool))
        std::memset(mova_plain_mb_get(pool, *handle), pattern_of_the_released, bytes_of(pool, *handle));
    mova_plain_mb_free(pool, handle);
    made.end();
}

mb_statistics mb_pool_statistics(const mb_pool *pool)
{
    visit made("mb_pool_statistics", pool, false, __builtin_return_address(0));
    return mova_plain_mb_pool_statistics(pool);
}

mb_pool *mb_create_pool(size_t budget)
{
    mb_pool *const pool = mova_plain_mb_create_pool(budget);
    if (!pool)
        return nullptr;
    const std::lock_guard lock(known.mutex);
    known.of(pool) = {};
    if (mova_checked_is_service && mova_checked_is_service(&MM_alloc_item)) {
        if (char *const view = make_view(view_bytes(pool)))
            correct_addresses(pool, view);
    }
    return pool;
}

void mb_release_pool(mb_pool **pool)
{
    mb_pool *const released = pool ? *pool : nullptr;
    if (released) {
        visit made("mb_release_pool", released, true, __builtin_return_address(0));
        const std::lock_guard lock(known.mutex);
        known.of(released) = {released, nullptr, false, made.where()};
        char *const view = made.is_wrong() ? nullptr : view_of(released);
        if (view) {
            correct_addresses(released, const_cast<char *>(released->arena()));
            leave_view(view, view_bytes(released), made.where());
        }
    }
    mova_plain_mb_release_pool(pool);
}
}

bool mova_checked_pool_was_released(const void *pool, const void **where)
{
    const std::lock_guard lock(known.mutex);
    const note &in = known.of(static_cast<const mb_pool *>(pool));
    const bool was_released = pool && in.pool == pool && in.released;
    if (was_released)
        *where = in.released;
    return was_released;
}

bool mova_checked_is_pool_service(void *(*get)(mb_pool *, mb_handle))
{
    return get == &mova_checked_own_mb_get;
}

void *mova_checked_look_at_block(mb_pool *pool, mb_handle handle)
{
    return mova_plain_mb_get(pool, handle);
}
