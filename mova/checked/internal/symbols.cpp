/* SPDX-License-Identifier: MIT */
#include "symbols.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <type_traits>

#include <cxxabi.h>
#include <dlfcn.h>
#include <pthread.h>
#include <sys/auxv.h>
#include <unistd.h>
#include <unwind.h>

#if __has_include(<elfutils/libdwfl.h>)
#include <elfutils/libdwfl.h>
#define CAN_READ_DEBUG_INFORMATION
#endif

namespace mova::checked {

namespace {

const char *last_part(const char *path)
{
    const char *slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

/* What the dynamic linker knows. */
source_place module_place(uintptr_t address)
{
    source_place found = {"?", "?", false, false};
    Dl_info module;
    if (!dladdr(reinterpret_cast<void *>(address), &module) || !module.dli_fname) {
        std::snprintf(found.line, sizeof found.line, "%#lx", static_cast<unsigned long>(address));
        return found;
    }
    std::snprintf(found.function, sizeof found.function, "%s", last_part(module.dli_fname));
    std::snprintf(found.line, sizeof found.line, "+%#lx",
                  static_cast<unsigned long>(address - reinterpret_cast<uintptr_t>(module.dli_fbase)));
    return found;
}

#ifdef CAN_READ_DEBUG_INFORMATION

/* The library's functions, from where it is loaded: a program that makes no mistake never loads it. It is not made for several
   threads: one reads at a time. Where reading itself faults, the fault is explained by the thread that holds the lock. */
class debug_reader {
public:
    static debug_reader &get()
    {
        static debug_reader reader;
        return reader;
    }

    /* Returns false where there is no debug information for the address. */
    bool find(uintptr_t address, source_place &found)
    {
        const std::lock_guard lock(mutex_);
        Dwfl_Module *const module = module_of(address);
        if (!module)
            return false;
        Dwarf_Addr bias = 0;
        Dwarf_Die *const unit = unit_of(module, address, bias);
        Dwarf_Line *const at = unit ? getsrc_(unit, address - bias) : nullptr;
        int line = 0;
        const char *file = at ? linesrc_(at, nullptr, nullptr) : nullptr;
        if (!file || lineno_(at, &line) != 0)
            return false;
        const char *name = addrname_(module, address);
        look_at_scopes(unit, address - bias, name, file, line);
        char *const readable = name ? abi::__cxa_demangle(name, nullptr, nullptr, nullptr) : nullptr;
        std::snprintf(found.function, sizeof found.function, "%s", readable ? readable : name ? name : "?");
        std::free(readable);
        std::snprintf(found.line, sizeof found.line, "%s:%d", last_part(file), line);
        found.has_line = true;
        found.is_in_layer = is_in_layer(file);
        return true;
    }

private:
    /* A child of a process that forks must not find the lock held by a thread that it does not have. */
    debug_reader()
    {
        pthread_atfork([] { get().mutex_.lock(); }, [] { get().mutex_.unlock(); }, [] { get().mutex_.unlock(); });
        /* A program that the dynamic linker did not start has none for its libraries. */
        void *const library = getauxval(AT_BASE) != 0 ? dlopen("libdw.so.1", RTLD_LAZY | RTLD_LOCAL) : nullptr;
        if (!library)
            return;
        bool all = true;
        const auto take = [&](auto &function, const char *name) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(dlsym(library, name));
            all &= function != nullptr;
        };
        take(begin_, "dwfl_begin");
        take(report_, "dwfl_linux_proc_report");
        take(report_begin_, "dwfl_report_begin");
        take(report_end_, "dwfl_report_end");
        take(addrmodule_, "dwfl_addrmodule");
        take(addrdie_, "dwfl_module_addrdie");
        take(addrname_, "dwfl_module_addrname");
        take(nextcu_, "dwfl_module_nextcu");
        take(haspc_, "dwarf_haspc");
        take(getsrc_, "dwarf_getsrc_die");
        take(linesrc_, "dwarf_linesrc");
        take(lineno_, "dwarf_lineno");
        take(find_elf_, "dwfl_linux_proc_find_elf");
        take(find_debuginfo_, "dwfl_standard_find_debuginfo");
        take(child_, "dwarf_child");
        take(sibling_, "dwarf_siblingof");
        take(tag_, "dwarf_tag");
        take(attribute_, "dwarf_attr_integrate");
        take(diename_, "dwarf_diename");
        take(number_, "dwarf_formudata");
        take(files_, "dwarf_getsrcfiles");
        take(filesrc_, "dwarf_filesrc");
        if (!all)
            return;
        callbacks_.find_elf = find_elf_;
        callbacks_.find_debuginfo = find_debuginfo_;
        callbacks_.debuginfo_path = &search_path_;
        session_ = begin_(&callbacks_);
    }

    /* Modules may have been loaded since the last time: asked once more where none is found. */
    Dwfl_Module *module_of(uintptr_t address)
    {
        if (!session_)
            return nullptr;
        if (Dwfl_Module *const known = addrmodule_(session_, address))
            return known;
        report_begin_(session_);
        report_(session_, getpid());
        report_end_(session_, nullptr, nullptr);
        return addrmodule_(session_, address);
    }

    /* Not every compiler writes the index that the first way goes by, which then may lead to a neighbour. */
    Dwarf_Die *unit_of(Dwfl_Module *module, uintptr_t address, Dwarf_Addr &bias)
    {
        Dwarf_Die *const indexed = addrdie_(module, address, &bias);
        if (indexed && haspc_(indexed, address - bias) > 0)
            return indexed;
        for (Dwarf_Die *unit = nullptr; (unit = nextcu_(module, unit, &bias));) {
            if (haspc_(unit, address - bias) > 0)
                return unit;
        }
        return nullptr;
    }

    /* The typed layer's headers, and those of the standard library that call them. */
    static bool is_in_layer(const char *file) { return std::strstr(file, "mova/cxx/") || std::strstr(file, "/c++/"); }

    bool number_of(Dwarf_Die *die, unsigned attribute, Dwarf_Word &number)
    {
        Dwarf_Attribute found;
        return attribute_(die, attribute, &found) && number_(&found, &number) == 0;
    }

    /* What the attributes say of the scope, as far as they are there. */
    void take_place(Dwarf_Die *unit, Dwarf_Die *scope, unsigned in_file, unsigned at_line, const char *&file, int &line)
    {
        Dwarf_Word number = 0;
        if (number_of(scope, at_line, number))
            line = static_cast<int>(number);
        Dwarf_Files *files = nullptr;
        if (number_of(scope, in_file, number) && files_(unit, &files, nullptr) == 0) {
            if (const char *const named = filesrc_(files, static_cast<size_t>(number), nullptr, nullptr))
                file = named;
        }
    }

    static constexpr int inlined_subroutine = 0x1d, subprogram = 0x2e, lexical_block = 0x0b, namespace_of_names = 0x39;

    struct scope_chain {
        Dwarf_Die scopes[32]; /* the function, and what was put into it, each into the one before */
        int count;
    };

    /* The scopes of the code at the address. (libdw's own search does not look into namespaces, and leaves the code for the source
       where it comes to what was put in.) */
    void find_scopes(Dwarf_Die *in, Dwarf_Addr address, scope_chain &found)
    {
        Dwarf_Die each;
        const int around = found.count;
        for (int more = child_(in, &each); more == 0 && found.count == around; more = sibling_(&each, &each)) {
            const int tag = tag_(&each);
            const bool is_code = tag == subprogram || tag == inlined_subroutine || tag == lexical_block;
            if (tag == namespace_of_names)
                find_scopes(&each, address, found);
            else if (is_code && found.count < static_cast<int>(std::size(found.scopes)) && haspc_(&each, address) > 0) {
                if (tag != lexical_block)
                    found.scopes[found.count++] = each;
                return find_scopes(&each, address, found);
            }
        }
    }

    /* From the innermost scope outwards: the function that the line is in, and while that is the typed layer's, the one that
       it was put into. */
    void look_at_scopes(Dwarf_Die *unit, Dwarf_Addr address, const char *&name, const char *&file, int &line)
    {
        constexpr unsigned call_file = 0x58, call_line = 0x59, decl_file = 0x3a, decl_line = 0x3b;
        scope_chain around = {};
        find_scopes(unit, address, around);
        for (int i = around.count - 1; i >= 0; --i) {
            Dwarf_Die *const scope = &around.scopes[i];
            const int tag = tag_(scope);
            if (const char *const own = diename_(scope))
                name = own;
            if (!is_in_layer(file))
                break;
            if (tag == subprogram) {
                const char *own_file = file;
                int own_line = line;
                take_place(unit, scope, decl_file, decl_line, own_file, own_line);
                /* A compiler has lost the steps: the function's own place is what is left. */
                if (!is_in_layer(own_file)) {
                    file = own_file;
                    line = own_line;
                }
                break;
            }
            take_place(unit, scope, call_file, call_line, file, line);
        }
    }

    std::recursive_mutex mutex_;
    Dwfl_Callbacks callbacks_ = {};
    char *search_path_ = nullptr;
    Dwfl *session_ = nullptr;
    decltype(&dwfl_begin) begin_ = nullptr;
    decltype(&dwfl_linux_proc_report) report_ = nullptr;
    decltype(&dwfl_report_begin) report_begin_ = nullptr;
    decltype(&dwfl_report_end) report_end_ = nullptr;
    decltype(&dwfl_addrmodule) addrmodule_ = nullptr;
    decltype(&dwfl_module_addrdie) addrdie_ = nullptr;
    decltype(&dwfl_module_addrname) addrname_ = nullptr;
    decltype(&dwfl_module_nextcu) nextcu_ = nullptr;
    decltype(&dwarf_haspc) haspc_ = nullptr;
    decltype(&dwarf_getsrc_die) getsrc_ = nullptr;
    decltype(&dwarf_linesrc) linesrc_ = nullptr;
    decltype(&dwarf_lineno) lineno_ = nullptr;
    decltype(&dwfl_linux_proc_find_elf) find_elf_ = nullptr;
    decltype(&dwfl_standard_find_debuginfo) find_debuginfo_ = nullptr;
    decltype(&dwarf_child) child_ = nullptr;
    decltype(&dwarf_siblingof) sibling_ = nullptr;
    decltype(&dwarf_tag) tag_ = nullptr;
    decltype(&dwarf_attr_integrate) attribute_ = nullptr;
    decltype(&dwarf_diename) diename_ = nullptr;
    decltype(&dwarf_formudata) number_ = nullptr;
    decltype(&dwarf_getsrcfiles) files_ = nullptr;
    decltype(&dwarf_filesrc) filesrc_ = nullptr;
};

#endif

} // namespace

/* The call is before the place that it returns to. */
source_place module_of(place where)
{
    return module_place(reinterpret_cast<uintptr_t>(where) - 1);
}

source_place source_of(place where)
{
    source_place found = module_of(where);
#ifdef CAN_READ_DEBUG_INFORMATION
    debug_reader::get().find(reinterpret_cast<uintptr_t>(where) - 1, found);
#endif
    return found;
}

source_place source_of_running(place where)
{
    struct walk {
        uintptr_t from;
        source_place found;
        bool has_begun;
    };
    walk out = {reinterpret_cast<uintptr_t>(where), source_of(where), false};
    if (!out.found.is_in_layer)
        return out.found;
    _Unwind_Backtrace(
        [](_Unwind_Context *frame, void *argument) {
            auto *const to = static_cast<walk *>(argument);
            const uintptr_t returns_to = _Unwind_GetIP(frame);
            to->has_begun |= returns_to == to->from;
            if (to->has_begun)
                to->found = source_of(reinterpret_cast<place>(returns_to));
            return to->has_begun && !to->found.is_in_layer ? _URC_END_OF_STACK : _URC_NO_REASON;
        },
        &out);
    return out.found;
}

} // namespace mova::checked
