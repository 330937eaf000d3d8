/* SPDX-License-Identifier: MIT */
/* A malloc over the memory service, for real programs to be run on it: LD_PRELOAD=libmova_malloc.so PROGRAM.

   Programs release blocks without saying their size, so each has a header before it:

       +-------+---------+-----------------------+
       | taken | aligned | the program's block   |
       +-------+---------+-----------------------+
         16 bytes

   `taken` is what the service was asked for. `aligned` is 0, or the alignment of a block that the service aligned; then the
   header is the last part of a first piece as large as the alignment. */
#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <unistd.h>

#include <mova/frame/host.h>
#include <mova/host/memory.h>

/* The service reports that memory ran out; here a null says it. */
void EX_raise_exception_line(const char *, int32_t, int32_t)
{
    errno = ENOMEM;
}

namespace {

struct alignas(16) header {
    size_t taken, aligned;
};

constexpr size_t most = PTRDIFF_MAX - 2 * sizeof(header);

header &header_of(void *block)
{
    return static_cast<header *>(block)[-1];
}

size_t with_header(size_t size)
{
    return (size + 15) / 16 * 16 + sizeof(header);
}

size_t room_of(void *block)
{
    const header &of = header_of(block);
    return of.taken - std::max(of.aligned, sizeof(header));
}

/* Whether a size is one that there may be blocks of. If not, errno says so. */
bool may_be_had(size_t size)
{
    if (size > most)
        errno = ENOMEM;
    return size <= most;
}

/* The size of so many pieces together; more than there may be where that is no size_t. */
size_t together(size_t count, size_t each)
{
    size_t size = 0;
    return __builtin_mul_overflow(count, each, &size) ? SIZE_MAX : size;
}

void *begun(void *start, size_t taken)
{
    if (!start)
        return nullptr;
    auto *own = static_cast<header *>(start);
    *own = {taken, 0};
    return own + 1;
}

void *aligned(size_t alignment, size_t size)
{
    if (alignment <= 16)
        return malloc(size);
    const size_t taken = size > most ? size : alignment + size;
    if (!may_be_had(taken))
        return nullptr;
    auto *start = static_cast<char *>(mova_memory_aligned(alignment, taken));
    if (!start)
        return nullptr;
    header_of(start + alignment) = {taken, alignment};
    return start + alignment;
}

bool is_power_of_two(size_t number)
{
    return number != 0 && (number & (number - 1)) == 0;
}

void *moved(void *block, size_t size)
{
    void *copy = malloc(size);
    if (copy) {
        std::memcpy(copy, block, std::min(size, room_of(block)));
        free(block);
    }
    return copy;
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

void *malloc(size_t size)
{
    if (!may_be_had(size))
        return nullptr;
    const size_t taken = with_header(size);
    return begun(MM_alloc_item(taken), taken);
}

void free(void *block)
{
    if (!block)
        return;
    const header &own = header_of(block);
    const int kept = errno;
    if (own.aligned != 0)
        mova_memory_release_aligned(static_cast<char *>(block) - own.aligned, own.aligned, own.taken);
    else
        MM_dealloc_item(&header_of(block), own.taken);
    errno = kept;
}

void *calloc(size_t count, size_t each)
{
    const size_t size = together(count, each);
    if (!may_be_had(size))
        return nullptr;
    const size_t taken = with_header(size);
    return begun(mova_memory_zeroed(taken), taken);
}

void *realloc(void *block, size_t size)
{
    if (!block)
        return malloc(size);
    if (size == 0) {
        free(block);
        return nullptr;
    }
    if (!may_be_had(size))
        return nullptr;
    if (header_of(block).aligned != 0)
        return moved(block, size);
    const size_t taken = with_header(size);
    return begun(MM_realloc_item(&header_of(block), header_of(block).taken, taken), taken);
}

void *reallocarray(void *block, size_t count, size_t each)
{
    return realloc(block, together(count, each));
}

void *memalign(size_t alignment, size_t size)
{
    if (!is_power_of_two(alignment)) {
        errno = EINVAL;
        return nullptr;
    }
    return aligned(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void **block, size_t alignment, size_t size)
{
    if (!is_power_of_two(alignment) || alignment % sizeof(void *) != 0)
        return EINVAL;
    const int kept = errno;
    void *start = aligned(alignment, size);
    errno = kept;
    if (!start)
        return ENOMEM;
    *block = start;
    return 0;
}

void *valloc(size_t size)
{
    return aligned(static_cast<size_t>(sysconf(_SC_PAGESIZE)), size);
}

void *pvalloc(size_t size)
{
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return aligned(page, size > most ? size : (size + page - 1) / page * page);
}

size_t malloc_usable_size(void *block)
{
    return block ? room_of(block) : 0;
}

int malloc_trim(size_t)
{
    mova_memory_trim();
    return 1;
}

} // extern "C"
#pragma GCC visibility pop
