// Redirecting the calls one loaded shared object makes to a function it
// imports: every relocated slot of the object that holds the function's
// address (its PLT and GOT entries, and any data word that takes the
// function's address) is rewritten to point at a replacement.  Calls made
// by the rest of the process are not affected, which is what lets a test
// see, and fail, exactly the platform calls of the library and nobody
// else's.
#ifndef KE_TEST_IMPORT_HOOK_H
#define KE_TEST_IMPORT_HOOK_H

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

namespace ketest {
namespace import_hook_detail {

#if defined(__LP64__)
inline size_t sym_of(ElfW(Xword) info) { return ELF64_R_SYM(info); }
#else
inline size_t sym_of(ElfW(Word) info) { return ELF32_R_SYM(info); }
#endif

// The relocations of one loaded object, as its dynamic section gives them.
struct Relocations {
    const char *path_part;
    ElfW(Addr) base = 0;
    const ElfW(Sym) *symtab = nullptr;
    const char *strtab = nullptr;
    uintptr_t rel = 0, rela = 0, jmprel = 0;
    size_t relsz = 0, relasz = 0, pltrelsz = 0;
    bool plt_is_rela = false;
    bool found = false;
};

// The loader relocates most address entries of the dynamic section in
// place; where it does not, they are still offsets from the load address.
inline uintptr_t dyn_address(ElfW(Addr) base, ElfW(Addr) ptr)
{
    return ptr < base ? base + ptr : ptr;
}

inline int read_dynamic(dl_phdr_info *info, size_t, void *data)
{
    auto *r = static_cast<Relocations *>(data);
    if (info->dlpi_name == nullptr || std::strstr(info->dlpi_name, r->path_part) == nullptr)
        return 0;
    const ElfW(Dyn) *dyn = nullptr;
    for (ElfW(Half) i = 0; i < info->dlpi_phnum; ++i)
        if (info->dlpi_phdr[i].p_type == PT_DYNAMIC)
            dyn = reinterpret_cast<const ElfW(Dyn) *>(info->dlpi_addr + info->dlpi_phdr[i].p_vaddr);
    if (dyn == nullptr)
        return 0;
    r->base = info->dlpi_addr;
    for (; dyn->d_tag != DT_NULL; ++dyn) {
        const uintptr_t ptr = dyn_address(r->base, dyn->d_un.d_ptr);
        switch (dyn->d_tag) {
        case DT_SYMTAB:
            r->symtab = reinterpret_cast<const ElfW(Sym) *>(ptr);
            break;
        case DT_STRTAB:
            r->strtab = reinterpret_cast<const char *>(ptr);
            break;
        case DT_REL:
            r->rel = ptr;
            break;
        case DT_RELA:
            r->rela = ptr;
            break;
        case DT_JMPREL:
            r->jmprel = ptr;
            break;
        case DT_RELSZ:
            r->relsz = dyn->d_un.d_val;
            break;
        case DT_RELASZ:
            r->relasz = dyn->d_un.d_val;
            break;
        case DT_PLTRELSZ:
            r->pltrelsz = dyn->d_un.d_val;
            break;
        case DT_PLTREL:
            r->plt_is_rela = dyn->d_un.d_val == DT_RELA;
            break;
        default:
            break;
        }
    }
    r->found = r->symtab != nullptr && r->strtab != nullptr;
    return 1;
}

// Calls visit(slot address, in the PLT) for every relocation of the object
// at path_part that names the symbol name; answers how many visits
// returned true.
template <class Visit>
inline int for_each_slot(const char *path_part, const char *name, Visit visit)
{
    Relocations r{path_part};
    dl_iterate_phdr(read_dynamic, &r);
    if (!r.found)
        return 0;
    int done = 0;
    auto walk = [&](auto *table, size_t bytes, bool plt) {
        for (size_t i = 0; table != nullptr && i < bytes / sizeof *table; ++i) {
            size_t sym = sym_of(table[i].r_info);
            if (sym != 0 && std::strcmp(r.strtab + r.symtab[sym].st_name, name) == 0 &&
                visit(r.base + table[i].r_offset, plt))
                ++done;
        }
    };
    walk(reinterpret_cast<const ElfW(Rel) *>(r.rel), r.relsz, false);
    walk(reinterpret_cast<const ElfW(Rela) *>(r.rela), r.relasz, false);
    if (r.plt_is_rela)
        walk(reinterpret_cast<const ElfW(Rela) *>(r.jmprel), r.pltrelsz, true);
    else
        walk(reinterpret_cast<const ElfW(Rel) *>(r.jmprel), r.pltrelsz, true);
    return done;
}

// Rewrites one slot so that it holds replacement.  A PLT slot holds the
// function's address alone (or, not yet bound, the lazy binder's stub); a
// data slot bound to target keeps its addend, and one that holds something
// else is left alone.
inline bool rewrite(uintptr_t slot_addr, bool plt, uintptr_t target, uintptr_t replacement)
{
    auto *slot = reinterpret_cast<uintptr_t *>(slot_addr);
    const uintptr_t addend = plt ? 0 : *slot - target;
    if (addend > 4096)
        return false;
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t start = slot_addr & ~(page - 1);
    const uintptr_t end = (slot_addr + sizeof(uintptr_t) + page - 1) & ~(page - 1);
    if (mprotect(reinterpret_cast<void *>(start), end - start, PROT_READ | PROT_WRITE) != 0)
        return false;
    *slot = replacement + addend;
    return true;
}

}  // namespace import_hook_detail

// True when the loaded object whose path contains path_part imports name.
inline bool imports(const char *path_part, const char *name)
{
    return import_hook_detail::for_each_slot(path_part, name,
                                             [](uintptr_t, bool) { return true; }) > 0;
}

// In the loaded object whose path contains path_part, makes every use of
// the imported function name go to replacement.  Answers the function the
// object was bound to (the process's own definition), or nullptr when the
// object is not loaded or does not import name.
inline void *redirect_import(const char *path_part, const char *name, void *replacement)
{
    void *target = dlsym(RTLD_DEFAULT, name);
    if (target == nullptr)
        return nullptr;
    const auto t = reinterpret_cast<uintptr_t>(target);
    const auto r = reinterpret_cast<uintptr_t>(replacement);
    int done = import_hook_detail::for_each_slot(path_part, name, [&](uintptr_t slot, bool plt) {
        return import_hook_detail::rewrite(slot, plt, t, r);
    });
    return done > 0 ? target : nullptr;
}

}  // namespace ketest

#endif
