/* SPDX-License-Identifier: MIT */
#include <mova/host/errors.h>

#include <atomic>
#include <cstdio>

#include <mova/frame/host.h>

namespace {

constinit std::atomic<mova_error_handler> error_handler{nullptr};

const char *meaning(int32_t code)
{
    switch (code) {
    case MOVA_ALLOCATION_FAILED: return "memory ran out";
    case MOVA_PRECONDITION_BROKEN: return "a precondition was broken";
    case MOVA_ID_NOT_FOUND: return "an id or a pointer was not found";
    default: return "an error was raised";
    }
}

} // namespace

namespace mova {

error::error(const char *module, int32_t line, int32_t code) noexcept : module_(module), line_(line), code_(code)
{
    mova_error_text(text_, sizeof text_, module, line, code);
}

const char *error::what() const noexcept
{
    return text_;
}

} // namespace mova

mova_error_handler mova_set_error_handler(mova_error_handler handler)
{
    return error_handler.exchange(handler, std::memory_order_acq_rel);
}

size_t mova_error_text(char *buffer, size_t size, const char *module, int32_t line, int32_t code)
{
    const char *description = mova_error_description(module, line);
    const int length = std::snprintf(buffer, size, "%s, line %d: %s (%d)%s%s", module, line, meaning(code), code,
                                     description ? ". " : "", description ? description : "");
    return length < 0 ? 0 : static_cast<size_t>(length);
}

void EX_raise_exception_line(const char *module, int32_t line, int32_t code)
{
    const mova_error_handler handler = error_handler.load(std::memory_order_acquire);
    if (!handler)
        throw mova::error(module, line, code);
    handler(module, line, code);
}
