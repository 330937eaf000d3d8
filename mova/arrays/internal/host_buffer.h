/* SPDX-License-Identifier: MIT */
#ifndef MOVA_ARRAYS_INTERNAL_HOST_BUFFER_H
#define MOVA_ARRAYS_INTERNAL_HOST_BUFFER_H

#include <mova/frame/host.h>

namespace mova {

/* A block of the host's for as long as it is in scope. The host must not refuse it. */
class host_buffer {
public:
    explicit host_buffer(size_t bytes) : block_(MM_alloc_item(bytes)), bytes_(bytes) {}
    ~host_buffer() { MM_dealloc_item(block_, bytes_); }
    host_buffer(const host_buffer &) = delete;
    host_buffer &operator=(const host_buffer &) = delete;

    void *block() const { return block_; }

private:
    void *block_;
    size_t bytes_;
};

} // namespace mova

#endif
