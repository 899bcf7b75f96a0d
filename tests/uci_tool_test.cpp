// The uci stand-in: the file format, staging until commit, section
// references, and its answers to bad commands and bad files.
#include "uci_sandbox.h"

namespace {

using ketest::file_exists;
using ketest::write_file;

class UciTool : public ketest::UciSandbox {};

TEST_F(UciTool, ReadsEveryQuotingOfTheFileFormat)
{
    write_config("net",
                 "# a comment line\n"
                 "package net\n"
                 "\n"
                 "config iface 'lan'   # trailing comment\n"
                 "\toption plain static\n"
                 "\toption single 'a b  c'\n"
                 "\toption quote 'it'\\''s'\n"
                 "\toption double \"say \\\"hi\\\" \\\\ 'x'\"\n"
                 "\toption joined 'a'\"b\"c\n"
                 "\toption escaped x\\ y\n"
                 "\toption empty ''\n"
                 "\toption hash 'a#b'\n"
                 "\toption multi 'one\ntwo'\n"
                 "\tlist dns '1.1.1.1'\n"
                 "\tlist dns 8.8.8.8\n"
                 "config iface\n"
                 "\toption n 1\n");
    struct {
        const char *ref;
        const char *value;
    } cases[] = {
        {"net.lan", "iface"},
        {"net.lan.plain", "static"},
        {"net.lan.single", "a b  c"},
        {"net.lan.quote", "it's"},
        {"net.lan.double", "say \"hi\" \\ 'x'"},
        {"net.lan.joined", "abc"},
        {"net.lan.escaped", "x y"},
        {"net.lan.empty", ""},
        {"net.lan.hash", "a#b"},
        {"net.lan.multi", "one\ntwo"},
        {"net.lan.dns", "1.1.1.1 8.8.8.8"},
        {"net.@iface[1].n", "1"},
    };
    for (const auto &c : cases) {
        ketest::ToolRun r = uci(std::string("get '") + c.ref + "'");
        EXPECT_EQ(r.status, 0) << c.ref << ": " << r.err;
        EXPECT_EQ(r.out, std::string(c.value) + "\n") << c.ref;
    }
}

TEST_F(UciTool, ExportWritesTheCanonicalForm)
{
    write_config("net", "config iface lan\n\toption quote \"it's\"\n\tlist dns a\n\tlist dns b\n"
                        "config dev\n\toption name 'pon.7'\n");
    const char *canonical = "package net\n"
                            "\n"
                            "config iface 'lan'\n"
                            "\toption quote 'it'\\''s'\n"
                            "\tlist dns 'a'\n"
                            "\tlist dns 'b'\n"
                            "\n"
                            "config dev\n"
                            "\toption name 'pon.7'\n";
    ketest::ToolRun r = uci("export net");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, canonical);
}

TEST_F(UciTool, ShowNamesAnonymousSectionsByTypeAndIndex)
{
    write_config("net", "config dev\n\toption name 'a'\nconfig iface 'wan'\n\toption proto dhcp\n"
                        "\tlist dns '1.1.1.1'\n\tlist dns \"it's\"\nconfig dev\n");
    EXPECT_EQ(uci("show net").out, "net.@dev[0]=dev\n"
                                   "net.@dev[0].name='a'\n"
                                   "net.wan=iface\n"
                                   "net.wan.proto='dhcp'\n"
                                   "net.wan.dns='1.1.1.1' 'it'\\''s'\n"
                                   "net.@dev[1]=dev\n");
    EXPECT_EQ(uci("show net.wan.proto").out, "net.wan.proto='dhcp'\n");
    EXPECT_EQ(uci("show 'net.@dev[-2]'").out, "net.@dev[0]=dev\nnet.@dev[0].name='a'\n");
}

TEST_F(UciTool, SectionReferencesCountFromEitherEnd)
{
    write_config("net", "config dev\n\toption name d0\nconfig iface x\nconfig dev\n\toption name d1\n"
                        "config dev\n\toption name d2\n");
    struct {
        const char *ref;
        const char *value;  // nullptr: no such entry
    } cases[] = {
        {"net.@dev[0].name", "d0"},  {"net.@dev[2].name", "d2"},   {"net.@dev[-1].name", "d2"},
        {"net.@dev[-3].name", "d0"}, {"net.@iface[0]", "iface"},   {"net.@dev[3].name", nullptr},
        {"net.@dev[-4].name", nullptr}, {"net.@nope[0]", nullptr}, {"net.@dev[x]", nullptr},
        {"net.@dev[]", nullptr},     {"net.@dev", nullptr},        {"net.dev", nullptr},
    };
    for (const auto &c : cases) {
        ketest::ToolRun r = uci(std::string("get '") + c.ref + "'");
        if (c.value == nullptr) {
            EXPECT_EQ(r.status, 1) << c.ref;
            EXPECT_EQ(r.out, "") << c.ref;
            EXPECT_EQ(r.err, "uci: Entry not found\n") << c.ref;
        } else {
            EXPECT_EQ(r.status, 0) << c.ref << ": " << r.err;
            EXPECT_EQ(r.out, std::string(c.value) + "\n") << c.ref;
        }
    }
}

TEST_F(UciTool, ChangesAreStagedVisibleAndCommittedOnlyByCommit)
{
    const std::string original = "config iface 'lan'\n\toption proto 'static'\n";
    write_config("net", original);
    write_config("fw", "config zone\nconfig zone\n\toption name 'wan'\n");

    ketest::ToolRun add = uci("add net dev");
    ASSERT_EQ(add.status, 0) << add.err;
    ASSERT_FALSE(add.out.empty());
    std::string dev = add.out.substr(0, add.out.size() - 1);
    EXPECT_FALSE(dev.empty());
    EXPECT_EQ(dev.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_"), std::string::npos);
    EXPECT_NE(uci("add net dev").out, add.out);  // every new section its own name

    for (const char *args : {"set net.lan.proto=dhcp", "set net.wan=iface",
                             "set net.wan.ifname=pon.7", "add_list net.wan.dns=1.1.1.1",
                             "add_list net.wan.dns=8.8.8.8", "add_list 'fw.@zone[1].network=pon_1'"})
        EXPECT_EQ(uci(args).status, 0) << args;
    EXPECT_EQ(uci("set net." + dev + ".name=pon.7").status, 0);
    EXPECT_EQ(uci("add_list net." + dev + ".map=0:5").status, 0);

    // Seen by every later read, while the file stays as it was.
    EXPECT_EQ(uci_get("net.lan.proto"), "dhcp");
    EXPECT_EQ(uci_get("net.wan.dns"), "1.1.1.1 8.8.8.8");
    EXPECT_EQ(uci_get("net.@dev[0].name"), "pon.7");
    EXPECT_EQ(uci_get("fw.@zone[1].network"), "pon_1");
    EXPECT_EQ(config("net"), original);
    EXPECT_TRUE(file_exists(save_dir_ + "/net"));

    // Committing one package leaves the other's changes staged.
    EXPECT_EQ(uci("commit net").status, 0);
    EXPECT_EQ(config("net"), "config iface 'lan'\n"
                             "\toption proto 'dhcp'\n"
                             "\n"
                             "config dev\n"
                             "\toption name 'pon.7'\n"
                             "\tlist map '0:5'\n"
                             "\n"
                             "config dev\n"
                             "\n"
                             "config iface 'wan'\n"
                             "\toption ifname 'pon.7'\n"
                             "\tlist dns '1.1.1.1'\n"
                             "\tlist dns '8.8.8.8'\n");
    EXPECT_FALSE(file_exists(save_dir_ + "/net"));
    EXPECT_EQ(config("fw"), "config zone\nconfig zone\n\toption name 'wan'\n");

    // The name add gave still reaches the section after the commit.
    EXPECT_EQ(uci_get("net." + dev + ".name"), "pon.7");

    // commit without a name commits every package with staged changes.
    EXPECT_EQ(uci("commit").status, 0);
    EXPECT_EQ(uci("-q get fw.@zone[1].network").out, "pon_1\n");
    EXPECT_NE(config("fw").find("\tlist network 'pon_1'\n"), std::string::npos);
    EXPECT_FALSE(file_exists(save_dir_ + "/fw"));
}

TEST_F(UciTool, AddListAfterAPlainOptionMakesAList)
{
    write_config("net", "config iface 'wan'\n\toption dns '1.1.1.1'\n");
    EXPECT_EQ(uci("add_list net.wan.dns=2.2.2.2").status, 0);
    EXPECT_EQ(uci("set net.wan.proto=\"it's\"").status, 0);
    EXPECT_EQ(uci("commit net").status, 0);
    EXPECT_EQ(config("net"), "config iface 'wan'\n"
                             "\tlist dns '1.1.1.1'\n"
                             "\tlist dns '2.2.2.2'\n"
                             "\toption proto 'it'\\''s'\n");
    // set replaces a list by one value.
    EXPECT_EQ(uci("set net.wan.dns=3.3.3.3").status, 0);
    EXPECT_EQ(uci_get("net.wan.dns"), "3.3.3.3");
}

TEST_F(UciTool, RefusesBadCommandsWithAMessageAndNonzeroExit)
{
    write_config("net", "config iface 'lan'\n");
    struct {
        const char *args;
        const char *err_start;  // what stderr begins with
    } cases[] = {
        {"frobnicate", "Usage: uci"},
        {"", "Usage: uci"},
        {"get", "Usage: uci"},
        {"get net", "Usage: uci"},
        {"get net.lan.a.b", "Usage: uci"},
        {"set net.lan.proto", "Usage: uci"},
        {"add net", "Usage: uci"},
        {"add_list net.lan=x", "Usage: uci"},
        {"-x get net.lan", "Usage: uci"},
        {"get net.lan.nope", "uci: Entry not found\n"},
        {"get nope.lan", "uci: Entry not found\n"},
        {"get a/b.lan", "uci: Invalid argument\n"},
        {"set net.nope.proto=dhcp", "uci: Entry not found\n"},
        {"set 'net.bad-name=iface'", "uci: Invalid argument\n"},
        {"set 'net.x=bad type'", "uci: Invalid argument\n"},
        {"add net 'bad type'", "uci: Invalid argument\n"},
        {"commit nope", "uci: Entry not found\n"},
    };
    for (const auto &c : cases) {
        ketest::ToolRun r = uci(c.args);
        EXPECT_NE(r.status, 0) << c.args;
        EXPECT_EQ(r.out, "") << c.args;
        EXPECT_EQ(r.err.rfind(c.err_start, 0), 0u) << c.args << ": " << r.err;
        // -q silences the errors, not the usage text or the exit status.
        ketest::ToolRun quiet = uci(std::string("-q ") + c.args);
        EXPECT_EQ(quiet.status, r.status) << c.args;
        EXPECT_EQ(quiet.err, c.err_start[0] == 'U' ? r.err : "") << c.args;
    }
    // None of them staged anything.
    EXPECT_FALSE(file_exists(save_dir_ + "/net"));
}

TEST_F(UciTool, MalformedFilesAreRefusedNamingTheLine)
{
    struct {
        const char *text;
        const char *why;
        int line;
    } cases[] = {
        {"config iface 'lan'\n\tbogus x y\n", "unknown keyword 'bogus'", 2},
        {"\toption a b\n", "option outside a section", 1},
        {"config iface 'lan'\n\n\toption a 'open\n", "unterminated quote", 3},
        {"config iface 'lan'\n\toption a \"open\n", "unterminated quote", 2},
        {"config\n", "invalid config line", 1},
        {"config 'a b'\n", "invalid section type 'a b'", 1},
        {"config iface 'a b'\n", "invalid section name 'a b'", 1},
        {"config iface lan extra\n", "invalid config line", 1},
        {"config iface lan\n\toption a b c\n", "invalid option line", 2},
        {"config iface lan\n\tlist 'a-b' c\n", "invalid list line", 2},
        {"config iface lan\n\toption a\n", "invalid option line", 2},
        {"config iface lan\n\toption a b\\", "backslash at end of file", 2},
    };
    for (const auto &c : cases) {
        write_config("net", c.text);
        std::string want = "uci: Parse error (" + std::string(c.why) + " at line " +
                           std::to_string(c.line) + " of " + config_dir_ + "/net)\n";
        for (const char *args : {"get net.lan", "show net", "export net", "add net dev"}) {
            ketest::ToolRun r = uci(args);
            EXPECT_EQ(r.status, 1) << c.text << args;
            EXPECT_EQ(r.err, want) << args;
            EXPECT_EQ(r.out, "") << args;
            EXPECT_EQ(uci(std::string("-q ") + args).err, "") << args;
        }
    }
}

TEST_F(UciTool, DirectoriesComeFromOptionsBeforeTheEnvironment)
{
    std::string other = dir_ + "/other";
    std::string other_save = dir_ + "/other_save";
    std::filesystem::create_directory(other);
    write_file(other + "/net", "config iface 'lan'\n\toption proto 'ppp'\n");
    write_config("net", "config iface 'lan'\n\toption proto 'dhcp'\n");

    EXPECT_EQ(uci("-q get net.lan.proto").out, "dhcp\n");
    EXPECT_EQ(uci("-c " + other + " -q get net.lan.proto").out, "ppp\n");

    EXPECT_EQ(uci("-c " + other + " -P " + other_save + " set net.lan.proto=static").status, 0);
    EXPECT_TRUE(file_exists(other_save + "/net"));
    EXPECT_FALSE(file_exists(save_dir_ + "/net"));
    EXPECT_EQ(uci("-c " + other + " -P " + other_save + " get net.lan.proto").out, "static\n");
    EXPECT_EQ(uci("-c " + other + " get net.lan.proto").out, "ppp\n");

    ketest::ToolRun help = uci("");
    EXPECT_NE(help.err.find("UCI_CONFIG_DIR"), std::string::npos);
    EXPECT_NE(help.err.find("UCI_SAVE_DIR"), std::string::npos);
    help = uci("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.out.rfind("Usage: uci [<options>] <command>", 0), 0u) << help.out;
}

}  // namespace
