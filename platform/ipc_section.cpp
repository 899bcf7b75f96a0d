// The served-call list of a loaded library: the names that the pointers of
// its .ke_ipc_section point at.  The section is found in the object's file
// (its section headers name it); its content is read from memory, where the
// loader has already relocated the pointers.
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

#include <cstring>

#include "kestub.h"
#include "state.h"

namespace kestub {
namespace {

constexpr char kSectionName[] = ".ke_ipc_section";
constexpr size_t kMaxName = 255;

struct Segment {
    uintptr_t begin;
    uintptr_t end;
};

struct LoadedObject {
    std::string path;  // "" for the program itself
    uintptr_t base;
    std::vector<Segment> segments;
};

int collect(struct dl_phdr_info *info, size_t, void *data)
{
    auto *objects = static_cast<std::vector<LoadedObject> *>(data);
    LoadedObject obj{info->dlpi_name != nullptr ? info->dlpi_name : "", info->dlpi_addr, {}};
    for (ElfW(Half) i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr) &ph = info->dlpi_phdr[i];
        if (ph.p_type == PT_LOAD)
            obj.segments.push_back({info->dlpi_addr + ph.p_vaddr,
                                    info->dlpi_addr + ph.p_vaddr + ph.p_memsz});
    }
    // The program comes first with an empty name; other nameless entries
    // (the vDSO) have no file to read.
    if (!obj.path.empty() || objects->empty())
        objects->push_back(std::move(obj));
    return 0;
}

// The segment holding [addr, addr + len), or nullptr.
const Segment *segment_of(const LoadedObject &obj, uintptr_t addr, size_t len)
{
    for (const Segment &s : obj.segments)
        if (addr >= s.begin && addr <= s.end && len <= s.end - addr)
            return &s;
    return nullptr;
}

bool read_at(int fd, off_t off, void *dst, size_t len)
{
    auto *out = static_cast<uint8_t *>(dst);
    while (len > 0) {
        ssize_t n = pread(fd, out, len, off);
        if (n <= 0)
            return false;
        out += n;
        off += n;
        len -= static_cast<size_t>(n);
    }
    return true;
}

// Address and size of the object's .ke_ipc_section as its file describes
// it; false when the file is unreadable, foreign or has no such section.
bool find_section(const std::string &file, ElfW(Addr) *addr, ElfW(Xword) *size)
{
    int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    bool found = false;
    ElfW(Ehdr) eh;
    if (read_at(fd, 0, &eh, sizeof eh) && std::memcmp(eh.e_ident, ELFMAG, SELFMAG) == 0 &&
        eh.e_ident[EI_CLASS] == (sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32) &&
        eh.e_shentsize == sizeof(ElfW(Shdr)) && eh.e_shoff != 0) {
        ElfW(Shdr) first;
        size_t count = eh.e_shnum;
        size_t strndx = eh.e_shstrndx;
        if (read_at(fd, static_cast<off_t>(eh.e_shoff), &first, sizeof first)) {
            if (count == 0)
                count = first.sh_size;  // more sections than e_shnum holds
            if (strndx == SHN_XINDEX)
                strndx = first.sh_link;
        }
        std::vector<ElfW(Shdr)> sh(count < 65536 ? count : 0);
        bool ok = !sh.empty() && strndx < sh.size() &&
                  read_at(fd, static_cast<off_t>(eh.e_shoff), sh.data(), sh.size() * sizeof sh[0]);
        std::vector<char> names;
        if (ok && sh[strndx].sh_size < (1u << 20)) {
            names.resize(sh[strndx].sh_size + 1, '\0');
            ok = read_at(fd, static_cast<off_t>(sh[strndx].sh_offset), names.data(),
                         names.size() - 1);
        }
        for (size_t i = 0; ok && !found && i < sh.size(); ++i) {
            if (sh[i].sh_name >= names.size() || !(sh[i].sh_flags & SHF_ALLOC))
                continue;
            if (std::strcmp(names.data() + sh[i].sh_name, kSectionName) == 0) {
                *addr = sh[i].sh_addr;
                *size = sh[i].sh_size;
                found = true;
            }
        }
    }
    close(fd);
    return found;
}

// The names the section's pointers point at, each checked to lie in the
// object's own memory and to end within kMaxName bytes.
std::vector<std::string> names_in(const LoadedObject &obj, ElfW(Addr) addr, ElfW(Xword) size)
{
    std::vector<std::string> names;
    uintptr_t at = obj.base + addr;
    if (size == 0 || size % sizeof(uintptr_t) != 0 || segment_of(obj, at, size) == nullptr)
        return names;
    for (ElfW(Xword) off = 0; off < size; off += sizeof(uintptr_t)) {
        uintptr_t ptr;
        std::memcpy(&ptr, reinterpret_cast<const void *>(at + off), sizeof ptr);
        const Segment *seg = segment_of(obj, ptr, 1);
        if (seg == nullptr)
            continue;
        const char *text = reinterpret_cast<const char *>(ptr);
        size_t room = seg->end - ptr < kMaxName + 1 ? seg->end - ptr : kMaxName + 1;
        size_t len = strnlen(text, room);
        if (len > 0 && len < room)
            names.emplace_back(text, len);
    }
    return names;
}

}  // namespace

std::vector<SectionName> section_names()
{
    std::vector<LoadedObject> objects;
    dl_iterate_phdr(collect, &objects);
    std::vector<SectionName> out;
    for (const LoadedObject &obj : objects) {
        ElfW(Addr) addr = 0;
        ElfW(Xword) size = 0;
        if (!find_section(obj.path.empty() ? "/proc/self/exe" : obj.path, &addr, &size))
            continue;
        for (std::string &name : names_in(obj, addr, size))
            out.push_back({obj.path, std::move(name)});
    }
    return out;
}

// The exported function called name in the object at path.
IpcHandler section_entry(const std::string &path, const std::string &name)
{
    void *lib = dlopen(path.empty() ? nullptr : path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (lib == nullptr)
        return nullptr;
    void *sym = dlsym(lib, name.c_str());
    dlclose(lib);
    IpcHandler entry = nullptr;
    static_assert(sizeof entry == sizeof sym, "function and data pointers differ");
    std::memcpy(&entry, &sym, sizeof entry);
    return entry;
}

}  // namespace kestub
