/* SPDX-License-Identifier: MIT */
/* The default error service: how a raised error reaches the program.

   A raise names the module, the line that identifies the check, and a code. What becomes of it:

       no handler set     EX_raise_exception_line throws mova::error, which carries all three and whose text reads
                          "gentree, line 481: a precondition was broken (4297). GT_remove_item: the comparisons do
                          not lead to the node". Where nobody catches it, the program ends through
                          std::terminate with that text on stderr.
       a handler set      the handler is called. It may throw or longjmp, out of the container function and
                          through C callers; it may end the program; or it may record the error and return, and
                          then the container function goes on as its description says.

   The handler is the whole program's. It may be set at any time and from any thread; a raise that another thread
   has begun may still go to the handler before it.

   A program that defines EX_raise_exception_line itself replaces this group. Of what is declared here it then uses
   mova_error_description alone: the rest would, in a static link, bring in the default a second time.

   Ownership: names of modules and descriptions are constant texts of the library, which nobody frees; a buffer is the
   caller's.

   docs/errors.md lists every raise of the library. */
#ifndef MOVA_HOST_ERRORS_H
#define MOVA_HOST_ERRORS_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#include <exception>

extern "C" {
#endif
#pragma GCC visibility push(default)

/* Receives a raised error. `module` is a constant string that is never freed. */
typedef void (*mova_error_handler)(const char *module, int32_t line, int32_t code);

/* Sets the handler. Null restores the default, the exception. Returns the handler before, null for the default. */
mova_error_handler mova_set_error_handler(mova_error_handler handler);

/* Returns what the library's raise with this module and line means: the function and what was wrong, as in
   "GT_remove_item: the comparisons do not lead to the node". The text is constant. Null for any other module or line.
   Linear in the number of raises. */
const char *mova_error_description(const char *module, int32_t line) __attribute__((nonnull));

/* Writes the text of an error into `buffer`: the module, the line, what the code means, the code, and the description of
   the library's own raises. It is cut to `size` bytes with the closing zero. Returns the length of the whole text without that
   zero, as snprintf does: a result of `size` or more says that it was cut. With a size of 0 nothing is written and
   `buffer` may be null. */
size_t mova_error_text(char *buffer, size_t size, const char *module, int32_t line, int32_t code);

#pragma GCC visibility pop
#ifdef __cplusplus
}

namespace mova {

/* A raised error, as an exception. It holds its text in itself, so that it can report that memory ran out. */
class __attribute__((visibility("default"))) error : public std::exception {
public:
    /* Keeps `module` as it is: the string must outlive the exception. */
    error(const char *module, int32_t line, int32_t code) noexcept;

    /* The text of mova_error_text, cut to 159 characters, which hold every text of the library's own raises. */
    const char *what() const noexcept override;

    /* The name of the module that found it: a constant text. */
    const char *module() const noexcept { return module_; }
    /* The line that identifies the check. */
    int32_t line() const noexcept { return line_; }
    /* One of the codes of mova/frame/host.h. */
    int32_t code() const noexcept { return code_; }

private:
    const char *module_;
    int32_t line_;
    int32_t code_;
    char text_[160];
};

} // namespace mova
#endif

#endif
