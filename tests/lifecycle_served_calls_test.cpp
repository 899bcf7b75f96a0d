// Start and stop, the served LOID calls from client stub through server
// entry to the LOID store, and the list of served calls the library
// carries in its section .ke_ipc_section (read from the file, 32-bit or
// 64-bit ELF alike, and from the library as loaded).
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstring>
#include <string>
#include <vector>

#include "ke_omci_tapi/lifecycle.h"
#include "process.h"
#include "stub_test.h"

namespace {

using ketest::bytes_of;
using Bytes = std::vector<uint8_t>;

class Served : public ketest::StubTest {};

// The store's 36 bytes (LOID then password) as the serial-number read
// returns them.
Bytes stored()
{
    Bytes zeros(720, 0);
    kestub::ipc_script("ke_ke_sysinfo_data_get_call", 0, zeros.data(), zeros.size());
    st_sn_loid rec;
    EXPECT_EQ(ke_omci_tapi_sn_loid_get(&rec), 0u);
    Bytes b = bytes_of(rec);
    return Bytes(b.begin() + 14, b.begin() + 50);
}

// A request of 102 distinct-looking bytes.
st_sn_loid request(uint8_t seed)
{
    st_sn_loid rec;
    for (size_t i = 0; i < sizeof rec; ++i)
        reinterpret_cast<uint8_t *>(&rec)[i] = static_cast<uint8_t>(seed + i * 3);
    return rec;
}

// The store after bytes [off, off + len) of req replaced those of old.
Bytes with(Bytes old, const st_sn_loid &req, size_t off, size_t len)
{
    std::memcpy(old.data() + off - 14, reinterpret_cast<const uint8_t *>(&req) + off, len);
    return old;
}

TEST_F(Served, EachCallStoresOnlyItsOwnFieldWhole)
{
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ke_omci_tapi_init(), 0u);
        ke_omci_tapi_exit();
    }
    Bytes store = stored();
    for (uint8_t seed : {0x11, 0x47, 0x90}) {
        st_sn_loid loid = request(seed), pwd = request(seed + 1);
        EXPECT_EQ(ke_ke_omci_set_loid_call(&loid, sizeof loid), 0u);
        store = with(store, loid, 14, 24);
        EXPECT_EQ(stored(), store) << "LOID " << int(seed);
        EXPECT_EQ(ke_ke_omci_set_loidpwd_call(&pwd, sizeof pwd), 0u);
        store = with(store, pwd, 38, 12);
        EXPECT_EQ(stored(), store) << "password " << int(seed);
    }
    // Reached without the entry's check, a null request keeps the store.
    EXPECT_EQ(ke_ke_omci_set_loid_ipc(nullptr), 0u);
    EXPECT_EQ(ke_ke_omci_set_loidpwd_ipc(nullptr), 0u);
    EXPECT_EQ(stored(), store);
}

// The lengths next to the right one and a null request are refused
// silently and keep the store (the request length's upper bound and the
// multicast dump's refusals are the bounds and dump tests').
TEST_F(Served, EntriesRefuseANullOrShortRequest)
{
    st_sn_loid keep = request(0x20), other = request(0x90);
    ASSERT_EQ(ke_ke_omci_set_loid_call(&keep, sizeof keep), 0u);
    ASSERT_EQ(ke_ke_omci_set_loidpwd_call(&keep, sizeof keep), 0u);
    const Bytes before = stored();
    kestub::log_set(true);
    for (auto entry : {ke_ke_omci_set_loid_call, ke_ke_omci_set_loidpwd_call}) {
        for (uint32_t len : {KE_SET_LOID_REQ_LEN - 1, 0u}) {
            uint32_t ret = 0;
            EXPECT_EQ(ketest::printed([&] { ret = entry(&other, len); }), "");
            EXPECT_EQ(ret, 0x72200008u) << "len " << len;
        }
        EXPECT_EQ(entry(nullptr, KE_SET_LOID_REQ_LEN), 0x72200008u);
    }
    EXPECT_EQ(stored(), before);
}

// Another process's side: the stub sends the caller's record as it is to
// the serving entry (its status passed through untraced is the fault
// sweep's).
TEST_F(Served, StubsSendTheRecordToTheServingEntry)
{
    kestub::ipc_serve("ke_ke_omci_set_loid_call", ke_ke_omci_set_loid_call);
    kestub::ipc_serve("ke_ke_omci_set_loidpwd_call", ke_ke_omci_set_loidpwd_call);
    st_sn_loid loid = request(0x81), pwd = request(0x95);
    EXPECT_EQ(ke_omci_set_loid(&loid), 0u);
    EXPECT_EQ(ke_omci_set_loidpwd(&pwd), 0u);
    EXPECT_EQ(stored(), with(with(Bytes(36), loid, 14, 24), pwd, 38, 12));
    const auto &calls = kestub::ipc_calls();
    ASSERT_EQ(calls.size(), 3u);  // and the serial-number read
    EXPECT_EQ(calls[0].name, "ke_ke_omci_set_loid_call");
    EXPECT_EQ(calls[0].request, bytes_of(loid));
    EXPECT_EQ(calls[1].name, "ke_ke_omci_set_loidpwd_call");
    EXPECT_EQ(calls[1].request, bytes_of(pwd));
}

// ---- The section ------------------------------------------------------

struct Section {
    std::string name;
    uint64_t addr, size, align, flags;
};

template <class Ehdr, class Shdr>
std::vector<Section> sections_of(const std::string &file)
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

TEST(ServedList, SectionListsTheThreeServedEntriesInOrder)
{
    Dl_info lib;
    ASSERT_NE(dladdr(reinterpret_cast<void *>(&ke_omci_tapi_init), &lib), 0);
    const std::string file = ketest::read_file(lib.dli_fname);
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
