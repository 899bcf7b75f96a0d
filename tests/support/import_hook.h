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
#include <string>

namespace ketest {

#if defined(__LP64__)
#define KE_ELF_R_SYM(info) ELF64_R_SYM(info)
#else
#define KE_ELF_R_SYM(info) ELF32_R_SYM(info)
#endif

namespace import_hook_detail {

struct Object {
    const char *path_part;
    ElfW(Addr) base = 0;
    const ElfW(Dyn) *dynamic = nullptr;
    bool found = false;
};

inline int find_object(dl_phdr_info *info, size_t, void *data)
{
    auto *obj = static_cast<Object *>(data);
    if (info->dlpi_name == nullptr || std::strstr(info->dlpi_name, obj->path_part) == nullptr)
        return 0;
    for (ElfW(Half) i = 0; i < info->dlpi_phnum; ++i) {
        if (info->dlpi_phdr[i].p_type == PT_DYNAMIC) {
            obj->base = info->dlpi_addr;
            obj->dynamic =
                reinterpret_cast<const ElfW(Dyn) *>(info->dlpi_addr + info->dlpi_phdr[i].p_vaddr);
            obj->found = true;
            return 1;
        }
    }
    return 0;
}

// The loader relocates most address entries of the dynamic section in
// place; where it does not, they are still offsets from the load address.
inline uintptr_t dyn_address(ElfW(Addr) base, ElfW(Addr) ptr)
{
    return ptr < base ? base + ptr : ptr;
}

// Rewrites one slot from target to replacement, keeping any addend.
inline bool rewrite(uintptr_t slot_addr, uintptr_t target, uintptr_t replacement)
{
    auto *slot = reinterpret_cast<uintptr_t *>(slot_addr);
    uintptr_t addend = *slot - target;
    if (addend > 4096)  // not a slot bound to target: leave it alone
        return false;
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    uintptr_t start = slot_addr & ~(page - 1);
    uintptr_t end = (slot_addr + sizeof(uintptr_t) + page - 1) & ~(page - 1);
    if (mprotect(reinterpret_cast<void *>(start), end - start, PROT_READ | PROT_WRITE) != 0)
        return false;
    *slot = replacement + addend;
    return true;
}

template <class Rel>
inline int rewrite_table(uintptr_t table, size_t bytes, const ElfW(Sym) * symtab,
                         const char *strtab, const char *name, uintptr_t target,
                         uintptr_t replacement, ElfW(Addr) base)
{
    int done = 0;
    const auto *rel = reinterpret_cast<const Rel *>(table);
    for (size_t i = 0; i < bytes / sizeof(Rel); ++i) {
        size_t sym = KE_ELF_R_SYM(rel[i].r_info);
        if (sym == 0 || std::strcmp(strtab + symtab[sym].st_name, name) != 0)
            continue;
        if (rewrite(base + rel[i].r_offset, target, replacement))
            ++done;
    }
    return done;
}

}  // namespace import_hook_detail

// In the loaded object whose path contains path_part, makes every use of
// the imported function name go to replacement.  Answers the function the
// object was bound to (the process's own definition), or nullptr when the
// object is not loaded or does not import name.
inline void *redirect_import(const char *path_part, const char *name, void *replacement)
{
    using namespace import_hook_detail;
    Object obj{path_part};
    dl_iterate_phdr(find_object, &obj);
    void *target = dlsym(RTLD_DEFAULT, name);
    if (!obj.found || target == nullptr)
        return nullptr;

    const ElfW(Sym) *symtab = nullptr;
    const char *strtab = nullptr;
    uintptr_t rel = 0, rela = 0, jmprel = 0;
    size_t relsz = 0, relasz = 0, pltrelsz = 0;
    ElfW(Sxword) pltrel = 0;
    for (const ElfW(Dyn) *d = obj.dynamic; d->d_tag != DT_NULL; ++d) {
        switch (d->d_tag) {
            case DT_SYMTAB:
                symtab = reinterpret_cast<const ElfW(Sym) *>(dyn_address(obj.base, d->d_un.d_ptr));
                break;
            case DT_STRTAB:
                strtab = reinterpret_cast<const char *>(dyn_address(obj.base, d->d_un.d_ptr));
                break;
            case DT_REL:
                rel = dyn_address(obj.base, d->d_un.d_ptr);
                break;
            case DT_RELSZ:
                relsz = d->d_un.d_val;
                break;
            case DT_RELA:
                rela = dyn_address(obj.base, d->d_un.d_ptr);
                break;
            case DT_RELASZ:
                relasz = d->d_un.d_val;
                break;
            case DT_JMPREL:
                jmprel = dyn_address(obj.base, d->d_un.d_ptr);
                break;
            case DT_PLTRELSZ:
                pltrelsz = d->d_un.d_val;
                break;
            case DT_PLTREL:
                pltrel = d->d_un.d_val;
                break;
            default:
                break;
        }
    }
    if (symtab == nullptr || strtab == nullptr)
        return nullptr;

    const auto t = reinterpret_cast<uintptr_t>(target);
    const auto r = reinterpret_cast<uintptr_t>(replacement);
    int done = 0;
    if (rel != 0)
        done += rewrite_table<ElfW(Rel)>(rel, relsz, symtab, strtab, name, t, r, obj.base);
    if (rela != 0)
        done += rewrite_table<ElfW(Rela)>(rela, relasz, symtab, strtab, name, t, r, obj.base);
    if (jmprel != 0) {
        if (pltrel == DT_RELA)
            done +=
                rewrite_table<ElfW(Rela)>(jmprel, pltrelsz, symtab, strtab, name, t, r, obj.base);
        else
            done +=
                rewrite_table<ElfW(Rel)>(jmprel, pltrelsz, symtab, strtab, name, t, r, obj.base);
    }
    return done > 0 ? target : nullptr;
}

}  // namespace ketest

#endif
