// The flash: two image sections and the boot flag, kept as files in the
// run directory's flash/ (section0.bin, section1.bin, boot_flag), so that
// a person can check a written image byte for byte and the flash outlives
// the simulator as a device's does.
//
// The boot flag names the section the device starts from (1: section 1,
// anything else: section 0).  A download opens the other section, empties
// it, appends every shard's bytes (exactly the shard's length, with one
// unbuffered write, so that the file holds it once the reply is out) and
// ends when the flag is written.  The booted section cannot be written; shards
// outside a download, or of another download, are refused.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "sim.h"

namespace smlsim {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;

constexpr char kFlagFile[] = "boot_flag";

uint32_t booted_section(uint32_t flag) { return flag == 1 ? 1 : 0; }

std::string path_of(const FlashState &f, const std::string &file) { return f.dir + "/" + file; }

// The directory and those above it that are missing.
bool make_dir(const std::string &dir)
{
    for (size_t slash = dir.find('/', 1); slash != std::string::npos; slash = dir.find('/', slash + 1))
        ::mkdir(dir.substr(0, slash).c_str(), 0755);
    return ::mkdir(dir.c_str(), 0755) == 0 || errno == EEXIST;
}

// The flag file holds the flag in decimal; without one the flash still has
// the flag it started with.
uint32_t &flag_of(FlashState &f)
{
    if (!f.flag_loaded) {
        f.flag_loaded = true;
        if (FILE *in = std::fopen(path_of(f, kFlagFile).c_str(), "r")) {
            unsigned v;
            if (std::fscanf(in, "%u", &v) == 1)
                f.boot_flag = v;
            std::fclose(in);
        }
    }
    return f.boot_flag;
}

// Writes a whole file; false when the flash cannot take it.
bool write_file(const std::string &path, const void *data, size_t len)
{
    FILE *out = std::fopen(path.c_str(), "wb");
    if (out == nullptr)
        return false;
    bool ok = len == 0 || std::fwrite(data, 1, len, out) == len;
    return std::fclose(out) == 0 && ok;
}

uint32_t flag_get(SimState &s, uint32_t &flag)
{
    flag = flag_of(s.flash);
    return 0;
}

// Appends len bytes to the open section; false when the flash cannot
// take them.
bool append(int fd, const uint8_t *data, size_t len)
{
    while (len > 0) {
        ssize_t n = ::write(fd, data, len);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        len -= static_cast<size_t>(n);
    }
    return true;
}

uint32_t flag_set(SimState &s, uint32_t &flag)
{
    if (flag > 1)
        return kBadValue;
    FlashState &f = s.flash;
    std::string text = std::to_string(flag) + "\n";
    if (!make_dir(f.dir) || !write_file(path_of(f, kFlagFile), text.data(), text.size()))
        return kFull;
    flag_of(f) = flag;
    f.open_section = -1;
    f.section.reset();
    return 0;
}

uint32_t start(SimState &s, st_upgrade_start &rec)
{
    FlashState &f = s.flash;
    if (rec.ui_section > 1)
        return kBadValue;
    if (rec.ui_section == booted_section(flag_of(f)))
        return kInUse;
    f.section.reset();
    int fd = -1;
    if (make_dir(f.dir))
        fd = ::open(section_path(f, rec.ui_section).c_str(),
                    O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return kFull;
    f.section.reset(fd);
    f.open_section = static_cast<int>(rec.ui_section);
    f.word = rec.ui_upgrade_word;
    f.written = 0;
    return 0;
}

uint32_t shard_write(SimState &s, st_upgrade_shard &rec)
{
    FlashState &f = s.flash;
    if (f.open_section < 0)
        return kNoObject;
    if (rec.ui_upgrade_word != f.word || rec.ui_len > UPGRADE_SHARD_MAX)
        return kBadValue;
    if (!append(f.section.fd(), rec.auc_data, rec.ui_len))
        return kFull;
    f.written += rec.ui_len;
    return 0;
}

constexpr std::array<Field, 1> kFlagFields = {{{"flag", 0, 4, Kind::U32}}};
constexpr std::array<Field, 4> kStartFields = {{
    {"section", 0, 4, Kind::U32},
    {"word", 4, 4, Kind::U32},
    {"info_2", 8, 4, Kind::U32},
    {"info", 12, KE_UPGRADE_INFO_LEN, Kind::Bytes},
}};
constexpr std::array<Field, 3> kShardFields = {{
    {"word", 0, 4, Kind::U32},
    {"len", 4, 4, Kind::U32},
    {"data", 8, UPGRADE_SHARD_MAX, Kind::Bytes},
}};

constexpr Layout kFlag = ketool::make_layout("boot_flag", 4, kFlagFields);
constexpr Layout kStart =
    ketool::make_layout("st_upgrade_start", sizeof(st_upgrade_start), kStartFields);
constexpr Layout kShard =
    ketool::make_layout("st_upgrade_shard", sizeof(st_upgrade_shard), kShardFields);

constexpr std::array<Procedure, 4> kRows = {{
    row<uint32_t, flag_get>("ke_ke_upgrade_flag_get_call", &kFlag),
    row<uint32_t, flag_set>("ke_ke_upgrade_flag_set_call", &kFlag),
    row<st_upgrade_start, start>("ke_ke_upgrade_sharding_start_call", &kStart),
    row<st_upgrade_shard, shard_write>("ke_ke_upgrade_image_sharding_write_call", &kShard),
}};

}  // namespace

std::string section_path(const FlashState &f, uint32_t section)
{
    return path_of(f, "section" + std::to_string(section) + ".bin");
}

const ProcedureList kFlashProcedures = ketool::rows_of(kRows);

}  // namespace smlsim
