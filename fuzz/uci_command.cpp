// The uci stand-in's command line: a configuration file "network" and a
// few commands, each a line of tab-separated words, run against a sandbox
// of its own.  Oracle: a command answers 0, 1 or a usage error; a set or
// add_list that answered 0 is what a later read of the package shows; an
// add appends one anonymous section of the type; a commit changes nothing
// that a read shows and leaves no staged change; the configuration
// directory never holds a file that is not a package.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "commands.h"
#include "input.h"
#include "parse.h"

namespace {

constexpr int kMaxCommands = 12;

const char kFirewall[] = "config zone\n\toption name 'lan'\n\nconfig zone\n\toption name 'wan'\n";

uci::Context g_ctx;

void clear_dir(const std::string &dir)
{
    if (DIR *d = opendir(dir.c_str())) {
        while (const dirent *e = readdir(d))
            if (e->d_name[0] != '.' || (e->d_name[1] != '\0' && e->d_name[1] != '.'))
                unlink((dir + "/" + e->d_name).c_str());
        closedir(d);
    }
}

std::vector<std::string> files_in(const std::string &dir)
{
    std::vector<std::string> names;
    if (DIR *d = opendir(dir.c_str())) {
        while (const dirent *e = readdir(d))
            if (std::string(e->d_name) != "." && std::string(e->d_name) != "..")
                names.push_back(e->d_name);
        closedir(d);
    }
    return names;
}

void write_file(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> split(const std::string &line, char sep)
{
    std::vector<std::string> words;
    size_t start = 0;
    for (;;) {
        size_t at = line.find(sep, start);
        words.push_back(line.substr(start, at - start));
        if (at == std::string::npos)
            return words;
        start = at + 1;
    }
}

std::string describe(const uci::Package &pkg)
{
    std::string out;
    for (const uci::Section &s : pkg.sections) {
        out += s.type + " " + s.name + (s.anonymous ? " anonymous\n" : "\n");
        for (const uci::Option &o : s.options) {
            out += "  " + o.name + (o.is_list ? " list" : "");
            for (const std::string &v : o.values)
                out += " [" + v + "]";
            out += "\n";
        }
    }
    return out;
}

bool load(const std::string &name, uci::Package *pkg)
{
    std::string why;
    return uci::load(g_ctx.store, name, pkg, &why) == uci::LoadResult::Ok;
}

// "config.section.option=value" as the command saw it.
struct Ref {
    std::string package, section, option, value;
};

bool split_ref(const std::string &arg, Ref *ref)
{
    size_t eq = arg.find('=');
    if (eq == std::string::npos)
        return false;
    std::vector<std::string> parts = split(arg.substr(0, eq), '.');
    if (parts.size() != 3)
        return false;
    *ref = {parts[0], parts[1], parts[2], arg.substr(eq + 1)};
    return true;
}

const uci::Option *option_of(const Ref &ref, uci::Package *pkg)
{
    if (!load(ref.package, pkg))
        return nullptr;
    const uci::Section *s = pkg->resolve(ref.section);
    return s != nullptr ? s->find(ref.option) : nullptr;
}

// before: the package the command worked on as read before it (loaded:
// whether it could be read at all).
void check(const std::vector<std::string> &args, int ret, const uci::Package &before,
           bool loaded)
{
    if (ret != 0 && ret != 1 && ret != -1)
        kefuzz::fail("uci command", "answered " + std::to_string(ret));
    for (const std::string &f : files_in(g_ctx.store.config_dir))
        if (!uci::valid_package(f))
            kefuzz::fail("uci command", "stray file in the configuration directory: " + f);
    if (ret != 0 || args.empty())
        return;
    const std::string &cmd = args[0];
    Ref ref;
    uci::Package pkg;
    if ((cmd == "set" || cmd == "add_list") && args.size() == 2 && split_ref(args[1], &ref)) {
        const uci::Option *o = option_of(ref, &pkg);
        bool list = cmd == "add_list";
        if (o == nullptr || o->values.empty() || o->values.back() != ref.value ||
            o->is_list != list || (!list && o->values.size() != 1))
            kefuzz::fail("uci command", "value not read back after " + cmd + " " + args[1] +
                                            ":\n" + describe(pkg));
    } else if (cmd == "add" && args.size() == 3) {
        if (!load(args[1], &pkg) || pkg.sections.size() != before.sections.size() + 1 ||
            pkg.sections.back().type != args[2] || !pkg.sections.back().anonymous)
            kefuzz::fail("uci command", "section not added: " + args[2]);
    } else if (cmd == "commit" && loaded) {
        uci::Package after;
        if (!load("network", &after) || describe(after) != describe(before))
            kefuzz::fail("uci command", "commit changed what reads show:\n" + describe(before) +
                                            "---\n" + describe(after));
        for (const std::string &f : files_in(g_ctx.store.save_dir))
            if (args.size() == 1 || f == args[1])
                kefuzz::fail("uci command", "staged changes left after commit: " + f);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    kefuzz::quiet_stdout();
    char tmpl[] = "/tmp/ke_fuzz_uci_XXXXXX";
    if (mkdtemp(tmpl) == nullptr)
        kefuzz::fail("uci command", "cannot make the sandbox");
    std::string root = tmpl;
    g_ctx.store.config_dir = root + "/config";
    g_ctx.store.save_dir = root + "/staged";
    g_ctx.quiet = true;
    mkdir(g_ctx.store.config_dir.c_str(), 0700);
    mkdir(g_ctx.store.save_dir.c_str(), 0700);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    kefuzz::Input in(data, size);
    clear_dir(g_ctx.store.config_dir);
    clear_dir(g_ctx.store.save_dir);
    write_file(g_ctx.store.config_dir + "/network", in.until('\0'));
    write_file(g_ctx.store.config_dir + "/firewall", kFirewall);

    for (int i = 0; i < kMaxCommands && !in.empty(); ++i) {
        std::vector<std::string> args = split(in.until('\n'), '\t');
        // What the package reads as before the command, for add and commit.
        uci::Package before;
        std::string package = args.size() > 1 ? split(args[1], '.')[0] : "network";
        if (args[0] == "commit")
            package = "network";
        bool loaded = load(package, &before);
        int ret = uci::run_command(g_ctx, args);
        check(args, ret, before, loaded);
    }
    return 0;
}
