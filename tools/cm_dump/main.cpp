// cm-dump: the configuration manager's tables in a database, decoded.
#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

#include "cm_table.h"
#include "cli.h"
#include "kestub.h"
#include "tables.h"
#include "text.h"

namespace {

constexpr char kUsage[] =
    "usage: cm-dump [options] [TABLE...]\n"
    "Prints the configuration manager's tables kept in a database: every\n"
    "table (or the TABLE ids given), each entry field by field where the\n"
    "table's layout is known, and the bytes no field names.\n"
    "\n"
    "  --db PATH        the database (default: $KE_CM_DB, else <run dir>/cm.db)\n"
    "  --run-dir DIR    run directory (default: $KE_RUN_DIR, else /tmp/ke_omci_run-<uid>)\n"
    "  --raw            also every entry's bytes in hex\n"
    "  --help           this text\n";

int usage_error(const std::string &why) { return ketool::usage_error("cm-dump", kUsage, why); }

void dump_raw(const std::vector<uint8_t> &rec)
{
    for (size_t off = 0; off < rec.size(); off += 16) {
        size_t n = rec.size() - off < 16 ? rec.size() - off : 16;
        std::printf("    %04zx: %s\n", off, ketool::hex(rec.data() + off, n).c_str());
    }
}

void dump_table(uint32_t table, bool raw)
{
    const ke::cm::TableInfo &info = ke::cm::table_info(table);
    const ketool::Layout *layout = ketool::table_layout(table);
    std::vector<std::vector<uint8_t>> entries = kestub::cm_entries(table);
    std::printf("table %u %s: %zu %s\n", static_cast<unsigned>(table),
                info.size != 0 ? info.name : "(not in the library's index)", entries.size(),
                entries.size() == 1 ? "entry" : "entries");
    for (size_t i = 0; i < entries.size(); ++i) {
        const std::vector<uint8_t> &rec = entries[i];
        std::printf("  entry %zu: %zu bytes%s\n", i, rec.size(),
                    info.size != 0 && rec.size() != info.size ? " (not the table's size)" : "");
        if (layout != nullptr)
            for (const std::string &line : ketool::decode(*layout, rec.data(), rec.size()))
                std::printf("    %s\n", line.c_str());
        if (layout == nullptr || raw)
            dump_raw(rec);
    }
}

}  // namespace

int main(int argc, char **argv)
{
    std::string db;
    bool raw = false;
    std::vector<uint32_t> tables;
    for (int i = 1; i < argc; ++i) {
        std::string opt = argv[i];
        uint32_t id = 0;
        if (opt == "--help") {
            std::fputs(kUsage, stdout);
            return 0;
        } else if (opt == "--raw") {
            raw = true;
        } else if (opt == "--db" && i + 1 < argc) {
            db = argv[++i];
        } else if (opt == "--run-dir" && i + 1 < argc) {
            setenv("KE_RUN_DIR", argv[++i], 1);
        } else if (ketool::parse_u32(opt, &id)) {
            tables.push_back(id);
        } else {
            return usage_error("unknown option or missing value: " + opt);
        }
    }
    if (db.empty()) {
        const char *env = std::getenv("KE_CM_DB");
        db = env != nullptr && env[0] != '\0' ? env : kestub::run_dir() + "/cm.db";
    }
    struct stat st;
    if (stat(db.c_str(), &st) != 0) {
        std::fprintf(stderr, "cm-dump: no database at %s\n", db.c_str());
        return 1;
    }
    if (!kestub::cm_use_db(db.c_str()))
        return 1;
    std::printf("database %s\n", db.c_str());
    if (tables.empty())
        tables = kestub::cm_tables();
    for (uint32_t table : tables)
        dump_table(table, raw);
    return 0;
}
