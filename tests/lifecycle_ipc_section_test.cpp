// The section .ke_ipc_section of the built library, read from the file
// (32-bit or 64-bit ELF alike) and from the library as loaded.
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ke_omci_tapi/lifecycle.h"
#include "stub_test.h"

namespace {

struct Section {
    std::string name;
    uint64_t addr, size, align, flags;
};

template <class Ehdr, class Shdr>
std::vector<Section> sections_of(const std::vector<char> &file)
{
    std::vector<Section> out;
    Ehdr eh;
    std::memcpy(&eh, file.data(), sizeof eh);
    auto header = [&](size_t i) {
        Shdr sh{};
        if (eh.e_shoff + (i + 1) * sizeof sh <= file.size())
            std::memcpy(&sh, file.data() + eh.e_shoff + i * sizeof sh, sizeof sh);
        return sh;
    };
    const Shdr names = header(eh.e_shstrndx);
    for (size_t i = 0; i < eh.e_shnum; ++i) {
        Shdr sh = header(i);
        size_t at = names.sh_offset + sh.sh_name;
        out.push_back({at < file.size() ? std::string(file.data() + at) : "", sh.sh_addr,
                       sh.sh_size, sh.sh_addralign, sh.sh_flags});
    }
    return out;
}

TEST(IpcSection, ListsTheThreeServedEntriesInOrder)
{
    Dl_info lib;
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&ke_omci_tapi_init), &lib), 0);
    std::ifstream in(lib.dli_fname, std::ios::binary);
    std::vector<char> file{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    ASSERT_GT(file.size(), size_t{EI_NIDENT});
    ASSERT_EQ(std::memcmp(file.data(), ELFMAG, SELFMAG), 0);
    const bool is_64 = file[EI_CLASS] == ELFCLASS64;
    const auto sections = is_64 ? sections_of<Elf64_Ehdr, Elf64_Shdr>(file)
                                : sections_of<Elf32_Ehdr, Elf32_Shdr>(file);
    const size_t pointer = is_64 ? 8 : 4;

    const Section *list = nullptr;
    for (const Section &s : sections)
        if (s.name == ".ke_ipc_section")
            list = &s;
    ASSERT_NE(list, nullptr) << lib.dli_fname;
    EXPECT_EQ(list->flags & (SHF_WRITE | SHF_ALLOC | SHF_EXECINSTR),
              static_cast<uint64_t>(SHF_WRITE | SHF_ALLOC));
    EXPECT_EQ(list->align, 4u);
    ASSERT_EQ(list->size, 3 * pointer);
    ASSERT_EQ(pointer, sizeof(void *));

    // The pointers as the loader relocated them in this process.
    void *handle = dlopen(lib.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    link_map *map = nullptr;
    ASSERT_EQ(dlinfo(handle, RTLD_DI_LINKMAP, &map), 0);
    const char *expected[] = {"ke_ke_omci_mc_param_get_call", "ke_ke_omci_set_loidpwd_call",
                              "ke_ke_omci_set_loid_call"};
    for (size_t slot = 0; slot < 3; ++slot) {
        const char *name = nullptr;
        std::memcpy(&name, reinterpret_cast<const char *>(map->l_addr + list->addr) + slot * pointer,
                    pointer);
        ASSERT_NE(name, nullptr);
        EXPECT_STREQ(name, expected[slot]) << "slot " << slot;

        // Each name sits in read-only data of the library ...
        uint64_t at = reinterpret_cast<uintptr_t>(name) - map->l_addr;
        bool read_only = false;
        for (const Section &s : sections)
            if ((s.flags & SHF_ALLOC) && at >= s.addr && at < s.addr + s.size)
                read_only = (s.flags & (SHF_WRITE | SHF_EXECINSTR)) == 0;
        EXPECT_TRUE(read_only) << name;

        // ... and names an exported function of the library.
        void *entry = dlsym(handle, name);
        ASSERT_NE(entry, nullptr) << name;
        Dl_info found;
        void *sym_entry = nullptr;
        ASSERT_NE(dladdr1(entry, &found, &sym_entry, RTLD_DL_SYMENT), 0);
        const auto *sym = static_cast<const ElfW(Sym) *>(sym_entry);
        EXPECT_STREQ(found.dli_fname, lib.dli_fname);
        EXPECT_STREQ(found.dli_sname, name);
        ASSERT_NE(sym, nullptr);
        EXPECT_EQ(ELF64_ST_TYPE(sym->st_info), STT_FUNC) << name;
    }
    dlclose(handle);
}

}  // namespace
