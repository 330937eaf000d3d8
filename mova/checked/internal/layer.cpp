/* SPDX-License-Identifier: MIT */
/* Which functions of the program are the typed layer's. Without optimisation they are not put inline, and a container is made in
   one of them, in a header that its user has not written. */
#include "symbols.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <unwind.h>

namespace mova::checked {

namespace {

/* A file, as long as it is looked at. */
class mapped_file {
public:
    explicit mapped_file(const char *path)
    {
        const int file = open(path, O_RDONLY | O_CLOEXEC);
        struct stat is;
        if (file >= 0 && fstat(file, &is) == 0 && is.st_size > 0) {
            size_ = static_cast<size_t>(is.st_size);
            void *const mapped = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file, 0);
            bytes_ = mapped != MAP_FAILED ? static_cast<const char *>(mapped) : nullptr;
        }
        if (file >= 0)
            close(file);
    }
    ~mapped_file()
    {
        if (bytes_)
            munmap(const_cast<char *>(bytes_), size_);
    }
    mapped_file(const mapped_file &) = delete;
    mapped_file &operator=(const mapped_file &) = delete;

    /* So many records from there on, or null where the file does not reach so far. */
    template <class Record>
    const Record *at(uint64_t offset, uint64_t count = 1) const
    {
        const bool is_there = bytes_ && offset <= size_ && count <= (size_ - offset) / sizeof(Record);
        return is_there ? reinterpret_cast<const Record *>(bytes_ + offset) : nullptr;
    }

private:
    const char *bytes_ = nullptr;
    size_t size_ = 0;
};

/* A function of the layer's, or of the standard library's, which may have called that. */
bool is_layers_name(const char *name)
{
    constexpr const char *beginnings[] = {"_ZN4mova", "_ZNK4mova", "_ZSt", "_ZNSt", "_ZNKSt"};
    return std::any_of(std::begin(beginnings), std::end(beginnings),
                       [name](const char *each) { return std::strncmp(name, each, std::strlen(each)) == 0; });
}

/* Whether the table of symbols has a function of the layer around the address, which is given as the file has it. */
bool has_layers_function(const mapped_file &file, const ElfW(Shdr) & table, const ElfW(Shdr) & names, uintptr_t address)
{
    const uint64_t count = table.sh_size / sizeof(ElfW(Sym));
    const auto *const symbols = file.at<ElfW(Sym)>(table.sh_offset, count);
    const char *const texts = file.at<char>(names.sh_offset, names.sh_size);
    for (uint64_t i = 0; symbols && texts && i < count; ++i) {
        const ElfW(Sym) &each = symbols[i];
        if ((each.st_info & 15) == STT_FUNC && address - each.st_value < each.st_size && each.st_name < names.sh_size)
            return is_layers_name(texts + each.st_name);
    }
    return false;
}

bool look_up(uintptr_t address)
{
    Dl_info module;
    if (!dladdr(reinterpret_cast<void *>(address), &module) || !module.dli_fname)
        return false;
    const mapped_file file(module.dli_fname);
    const auto *const head = file.at<ElfW(Ehdr)>(0);
    const auto *const sections = head ? file.at<ElfW(Shdr)>(head->e_shoff, head->e_shnum) : nullptr;
    if (!sections || std::memcmp(head->e_ident, ELFMAG, SELFMAG) != 0)
        return false;
    const uintptr_t base = head->e_type == ET_DYN ? reinterpret_cast<uintptr_t>(module.dli_fbase) : 0;
    for (unsigned i = 0; i < head->e_shnum; ++i) {
        if (sections[i].sh_type == SHT_SYMTAB && sections[i].sh_link < head->e_shnum)
            return has_layers_function(file, sections[i], sections[sections[i].sh_link], address - base);
    }
    return false;
}

/* Of the places that were asked for of late it is known: those in the layer, and those that are not. */
bool is_in_layer(place where)
{
    static std::atomic<place> inside[256], outside[256];
    const auto address = reinterpret_cast<uintptr_t>(where);
    const size_t slot = (address ^ address >> 8) % std::size(inside);
    if (outside[slot].load(std::memory_order_relaxed) == where)
        return false;
    if (inside[slot].load(std::memory_order_relaxed) == where)
        return true;
    const bool is_it = look_up(address - 1);
    (is_it ? inside : outside)[slot].store(where, std::memory_order_relaxed);
    return is_it;
}

} // namespace

place lasting_place(place where)
{
    if (!is_in_layer(where))
        return where;
    struct walk {
        place from, found;
        bool has_begun;
    };
    walk out = {where, where, false};
    _Unwind_Backtrace(
        [](_Unwind_Context *frame, void *argument) {
            auto *const to = static_cast<walk *>(argument);
            const auto *const returns_to = reinterpret_cast<place>(_Unwind_GetIP(frame));
            to->has_begun |= returns_to == to->from;
            if (!to->has_begun || is_in_layer(returns_to))
                return _URC_NO_REASON;
            to->found = returns_to;
            return _URC_END_OF_STACK;
        },
        &out);
    return out.found;
}

} // namespace mova::checked
