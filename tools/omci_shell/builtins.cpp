// The built-in commands that do more than one call: a whole firmware
// download, and the configuration records another part of the device would
// write or read.
#include <fstream>
#include <iterator>

#include "cm_table.h"
#include "ke_omci_tapi/device.h"
#include "kestub.h"
#include "platform.h"
#include "shell.h"
#include "tables.h"
#include "text.h"

namespace omcishell {
namespace {

constexpr int kBarWidth = 32;

// "\rdownload [#####-----]  42%  1.3/3.0 MiB", drawn again only when the
// percentage changes.
void draw_progress(FILE *progress, uint64_t done, uint64_t total, int *last_percent)
{
    if (progress == nullptr)
        return;
    int percent = total == 0 ? 100 : static_cast<int>(done * 100 / total);
    if (percent == *last_percent)
        return;
    *last_percent = percent;
    int filled = percent * kBarWidth / 100;
    std::fprintf(progress, "\rdownload [%s%s] %3d%% %5.1f/%.1f MiB",
                 std::string(filled, '#').c_str(), std::string(kBarWidth - filled, '-').c_str(),
                 percent, done / 1048576.0, total / 1048576.0);
    if (done == total)
        std::fputc('\n', progress);
    std::fflush(progress);
}

// One library call under the serving lock.
template <class Call>
uint32_t locked(Call call)
{
    kestub::serve_lock();
    uint32_t status = call();
    kestub::serve_unlock();
    return status;
}

}  // namespace

void Shell::download(const std::vector<std::string> &words)
{
    uint32_t word = 0;
    std::vector<uint8_t> info;
    if (words.size() >= 3 && !ketool::parse_u32(words[2], &word)) {
        fail("download: not a 32-bit number: " + words[2]);
        return;
    }
    if (words.size() == 4 &&
        (!ketool::parse_hex(words[3], &info) || info.size() > KE_UPGRADE_INFO_LEN)) {
        fail("download: expected up to 24 hex bytes of information: " + words[3]);
        return;
    }
    info.resize(KE_UPGRADE_INFO_LEN, 0);
    std::ifstream in(words[1], std::ios::binary);
    if (!in) {
        fail("download: cannot read " + words[1]);
        return;
    }
    std::vector<uint8_t> image((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());

    last_status_ = locked([&] { return ke_omci_tapi_upgrade_start(word, info.data()); });
    if (last_status_ != 0) {
        std::fprintf(out_, "download: upgrade start failed, status 0x%x\n",
                     static_cast<unsigned>(last_status_));
        return;
    }
    int percent = -1;
    size_t shards = 0;
    for (size_t at = 0; at < image.size(); at += UPGRADE_SHARD_MAX, ++shards) {
        size_t n = image.size() - at < UPGRADE_SHARD_MAX ? image.size() - at : UPGRADE_SHARD_MAX;
        last_status_ = locked([&] {
            return ke_omci_tapi_upgrade_write(image.data() + at, static_cast<uint32_t>(n));
        });
        if (last_status_ != 0) {
            if (progress_ != nullptr)
                std::fputc('\n', progress_);
            std::fprintf(out_, "download: write of shard %zu failed, status 0x%x; not stopped\n",
                         shards, static_cast<unsigned>(last_status_));
            return;
        }
        draw_progress(progress_, at + n, image.size(), &percent);
    }
    last_status_ = locked([] { return ke_omci_tapi_upgrade_stop(); });
    std::fflush(stdout);
    std::fprintf(out_, "download: %zu bytes in %zu shards, status 0x%x\n", image.size(), shards,
                 static_cast<unsigned>(last_status_));
}

void Shell::table(const std::vector<std::string> &words, bool set)
{
    uint32_t id = 0;
    if (!ketool::parse_u32(words[1], &id) || ke::cm::table_info(id).size == 0) {
        fail(words[0] + ": not a table of the library's index: " + words[1]);
        return;
    }
    const ke::cm::TableInfo &info = ke::cm::table_info(id);
    const ketool::Layout *layout = ketool::table_layout(id);
    if (layout == nullptr) {
        fail(words[0] + ": no layout of table " + words[1]);
        return;
    }
    std::vector<uint8_t> rec(info.size, 0);
    std::string why;
    for (size_t i = 2; i < words.size(); ++i)
        if (!ketool::assign(*layout, rec.data(), words[i], &why)) {
            fail(words[0] + ": " + why);
            return;
        }
    last_status_ = locked([&] {
        return set ? igdCmConfSet(id, rec.data(), info.size) : igdCmConfGet(id, rec.data(), info.size);
    });
    std::fprintf(out_, "%s %u %s: status 0x%x\n", words[0].c_str(), static_cast<unsigned>(id),
                 info.name, static_cast<unsigned>(last_status_));
    if (!set && last_status_ == 0) {
        outputs_.clear();
        keep_lines("", ketool::decode(*layout, rec.data(), rec.size()), "  ");
    }
}

}  // namespace omcishell
