#include "commands.h"

#include <cstdio>

#include "parse.h"

namespace uci {
namespace {

constexpr int kUsage = -1;

int fail(const Context &ctx, const std::string &what)
{
    if (!ctx.quiet)
        std::fprintf(stderr, "uci: %s\n", what.c_str());
    return 1;
}

// "config[.section[.option]][=value]"
struct Ref {
    std::string package, section, option, value;
    bool has_value = false;
};

bool parse_ref(const std::string &text, Ref *ref)
{
    std::string path = text;
    size_t eq = text.find('=');
    if (eq != std::string::npos) {
        path = text.substr(0, eq);
        ref->value = text.substr(eq + 1);
        ref->has_value = true;
    }
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        size_t dot = path.find('.', start);
        parts.push_back(path.substr(start, dot - start));
        if (dot == std::string::npos)
            break;
        start = dot + 1;
    }
    if (parts.size() > 3)
        return false;
    for (const std::string &p : parts)
        if (p.empty())
            return false;
    ref->package = parts[0];
    ref->section = parts.size() > 1 ? parts[1] : "";
    ref->option = parts.size() > 2 ? parts[2] : "";
    return ref->option.empty() || valid_name(ref->option);
}

// Loads the package a command works on, reporting why it cannot.
bool open_package(const Context &ctx, const std::string &name, Package *pkg)
{
    std::string why;
    switch (load(ctx.store, name, pkg, &why)) {
    case LoadResult::Ok:
        return true;
    case LoadResult::NotFound:
        fail(ctx, "Entry not found");
        return false;
    case LoadResult::Invalid:
        fail(ctx, "Invalid argument");
        return false;
    case LoadResult::ParseFailed:
        fail(ctx, "Parse error (" + why + ")");
        return false;
    }
    return false;
}

std::string joined_values(const Option &o, bool quoted)
{
    std::string out;
    for (const std::string &v : o.values)
        out += (out.empty() ? "" : " ") + (quoted ? quote(v) : v);
    return out;
}

int stage_change(const Context &ctx, const std::string &package,
                 const std::vector<std::string> &words)
{
    return stage(ctx.store, package, words) ? 0 : fail(ctx, "I/O error: cannot stage the change");
}

int cmd_get(const Context &ctx, const std::vector<std::string> &args)
{
    Ref ref;
    if (args.size() != 1 || !parse_ref(args[0], &ref) || ref.has_value || ref.section.empty())
        return kUsage;
    Package pkg;
    if (!open_package(ctx, ref.package, &pkg))
        return 1;
    const Section *s = pkg.resolve(ref.section);
    if (s == nullptr)
        return fail(ctx, "Entry not found");
    if (ref.option.empty()) {
        std::printf("%s\n", s->type.c_str());
        return 0;
    }
    const Option *o = s->find(ref.option);
    if (o == nullptr)
        return fail(ctx, "Entry not found");
    std::printf("%s\n", joined_values(*o, false).c_str());
    return 0;
}

// set: "config.section=type" names (or retypes) a section;
// "config.section.option=value" sets an option of an existing section.
// add_list appends a value to a list option.
int cmd_set(const Context &ctx, const std::vector<std::string> &args, bool as_list)
{
    Ref ref;
    if (args.size() != 1 || !parse_ref(args[0], &ref) || !ref.has_value || ref.section.empty() ||
        (as_list && ref.option.empty()))
        return kUsage;
    Package pkg;
    if (!open_package(ctx, ref.package, &pkg))
        return 1;
    Section *s = pkg.resolve(ref.section);
    if (ref.option.empty()) {
        if (!valid_type(ref.value) || (s == nullptr && !valid_name(ref.section)))
            return fail(ctx, "Invalid argument");
        return stage_change(ctx, pkg.name, {"section", s ? s->name : ref.section, ref.value});
    }
    if (s == nullptr)
        return fail(ctx, "Entry not found");
    return stage_change(ctx, pkg.name, {as_list ? "list" : "set", s->name, ref.option, ref.value});
}

int cmd_add(const Context &ctx, const std::vector<std::string> &args)
{
    if (args.size() != 2)
        return kUsage;
    Package pkg;
    if (!open_package(ctx, args[0], &pkg))
        return 1;
    if (!valid_type(args[1]))
        return fail(ctx, "Invalid argument");
    const Section &s = pkg.append(args[1], "", true);
    if (stage_change(ctx, pkg.name, {"add", s.name, s.type}) != 0)
        return 1;
    std::printf("%s\n", s.name.c_str());
    return 0;
}

int cmd_commit(const Context &ctx, const std::vector<std::string> &args)
{
    if (args.size() > 1)
        return kUsage;
    std::vector<std::string> names = args.empty() ? packages_in(ctx.store.save_dir) : args;
    int ret = 0;
    for (const std::string &name : names) {
        Package pkg;
        if (!open_package(ctx, name, &pkg))
            ret = 1;
        else if (!commit(ctx.store, pkg))
            ret = fail(ctx, "I/O error: cannot write " + name);
    }
    return ret;
}

void show_section(const Package &pkg, const Section &s, const std::string &option)
{
    std::string head = pkg.name + "." + pkg.display_name(s);
    if (option.empty())
        std::printf("%s=%s\n", head.c_str(), s.type.c_str());
    for (const Option &o : s.options)
        if (option.empty() || o.name == option)
            std::printf("%s.%s=%s\n", head.c_str(), o.name.c_str(),
                        joined_values(o, true).c_str());
}

int cmd_show(const Context &ctx, const std::vector<std::string> &args)
{
    Ref ref;
    if (args.size() > 1 || (args.size() == 1 && (!parse_ref(args[0], &ref) || ref.has_value)))
        return kUsage;
    std::vector<std::string> names =
        args.empty() ? packages_in(ctx.store.config_dir) : std::vector<std::string>{ref.package};
    for (const std::string &name : names) {
        Package pkg;
        if (!open_package(ctx, name, &pkg))
            return 1;
        if (ref.section.empty()) {
            for (const Section &s : pkg.sections)
                show_section(pkg, s, "");
            continue;
        }
        const Section *s = pkg.resolve(ref.section);
        if (s == nullptr || (!ref.option.empty() && s->find(ref.option) == nullptr))
            return fail(ctx, "Entry not found");
        show_section(pkg, *s, ref.option);
    }
    return 0;
}

int cmd_export(const Context &ctx, const std::vector<std::string> &args)
{
    if (args.size() > 1)
        return kUsage;
    std::vector<std::string> names = args.empty() ? packages_in(ctx.store.config_dir) : args;
    for (size_t i = 0; i < names.size(); ++i) {
        Package pkg;
        if (!open_package(ctx, names[i], &pkg))
            return 1;
        std::string body = format_package(pkg);
        std::printf("%spackage %s\n%s%s", i == 0 ? "" : "\n", pkg.name.c_str(),
                    body.empty() ? "" : "\n", body.c_str());
    }
    return 0;
}

}  // namespace

int run_command(const Context &ctx, const std::vector<std::string> &args)
{
    if (args.empty())
        return kUsage;
    const std::string &cmd = args[0];
    std::vector<std::string> rest(args.begin() + 1, args.end());
    if (cmd == "get")
        return cmd_get(ctx, rest);
    if (cmd == "set")
        return cmd_set(ctx, rest, false);
    if (cmd == "add_list")
        return cmd_set(ctx, rest, true);
    if (cmd == "add")
        return cmd_add(ctx, rest);
    if (cmd == "commit")
        return cmd_commit(ctx, rest);
    if (cmd == "show")
        return cmd_show(ctx, rest);
    if (cmd == "export")
        return cmd_export(ctx, rest);
    return kUsage;
}

}  // namespace uci
