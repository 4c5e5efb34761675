#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

#include "run_tool.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/suggest.hpp"

namespace {

using namespace test;

TEST(ExitStatus, TellsTheOutcomesApart) {
    const DemoWorld world;
    const std::string usage = "\novsel: ovsel --help shows how it is used\n-> 2\n";
    ExpectAnswers(
        {world.tree.Root(), world.tree.Root(), world.tool.before},
        {{"tree >/dev/null", ""},
         {"--version >/dev/null", ""},
         {"which --help >/dev/null", ""},
         {"which plot nothing", "A/@plot/plot.sv\novsel: nothing: not found\n-> 1\n"},
         {"which '[plot].p'", "ovsel: [plot].p: not found\novsel: did you mean plot.p?\n-> 1\n"},
         {"", "ovsel: A subcommand is required" + usage},
         {"wich plot", "ovsel: there is no command wich\novsel: did you mean which or watch?" + usage},
         {"which", "ovsel: NAME is required" + usage},
         {"which ''", "ovsel: an empty NAME would stand for every file\n-> 2\n"},
         {"which '[plot]'", "ovsel: a NAME in brackets, [plot], needs its extension\n-> 2\n"},
         {"which x --scope y", "ovsel: --scope is one of all|dir|method|path|private|visible, not y\n-> 2\n"},
         {"which plot --scope dir", "ovsel: --scope private and --scope dir need --from FILE\n-> 2\n"},
         {"tree --depth -1", "ovsel: Could not convert: --depth = -1" + usage},
         {"tree --mount X", "ovsel: --mount: X is not ROOT=FOLDER[:fixed|remote|detect]\n-> 2\n"},
         {"tree --mount X:=/:y", "ovsel: --mount: X:=/:y does not end in fixed, remote or detect\n-> 2\n"},
         {"tree --mount XY=/", "ovsel: --mount: XY is no root such as X: or \\\\server\\share\n-> 2\n"},
         {"dirs --json -0", "ovsel: --json and -0 exclude each other\n-> 2\n"},
         {"dirs --ext \xC3\xA4", "ovsel: --ext: extensions are ASCII\n-> 2\n"},
         {"dirs --path-file missing", "ovsel: --path-file missing: No such file or directory\n-> 3\n"},
         {"dirs --path-file A", "ovsel: --path-file A: Is a directory\n-> 3\n"},
         {"dirs --cwd A/plot.sv", "ovsel: --cwd A/plot.sv: Name is nonexistent or not a directory\n-> 3\n"},
         {"tree >/dev/full", "ovsel: standard output cannot be written: No space left on device\n-> 3\n"}});
}

TEST(ExitStatus, OfAFaultIsFourUnlessACacheMayBeItsReason) {
    TempTree tree;
    tree.Write("c", "<Quorrant>\n</Quorrant>\n");
    linux_hooks::InstallDefaultHooks();
    const ovPath path = ovCreatePath(0, "cached");
    const auto ask = []() -> int { throw std::out_of_range("basic_string::substr"); };
    EXPECT_EQ(tool::Guard(ask), 4);
    EXPECT_EQ(tool::Guard([]() -> int { throw 1; }), 4);
    ovUseToolboxCache(path, linux_host::DriveMap::ToName(tree.Path("c")).value(), u"C:\\x", false);
    EXPECT_EQ(tool::Guard(ask), 3);
    ovRevertFromToolboxCache(path);
}

TEST(Output, EndsQuietlyWhenTheReaderHasGone) {
    DemoWorld world;
    ASSERT_EQ(::mkfifo(world.tree.Path("pipe").c_str(), 0600), 0);
    world.tool.before += "\nexec 3<>../pipe >../pipe 3>&-";
    EXPECT_EQ(world.tool("tree").err, "");
    world.tool.before += "\ntrap '' PIPE";
    EXPECT_EQ(world.tool("tree").All(), "");
}

TEST(Output, NeverLetsOddNamesThrough) {
    const TempTree tree{"a/new\nline.p",   "a/bad\xFF.p",          "a/it's $x.p",
                        "a/esc\x1b[31m.p", "a/flip\xE2\x80\xAE.p", "a/\xC3\xA4.p"};
    const Tool tool{tree.Root(), tree.Path("a")};
    ExpectAnswers(tool, {{"tree --no-cwd -p .", "a  (path position 1)\n"
                                                "|-- $'bad\\xff.p'\n"
                                                "|-- $'esc\\x1b[31m.p'\n"
                                                "|-- $'flip\\xe2\\x80\\xae.p'\n"
                                                "|-- it's $x.p\n"
                                                "|-- $'new\\nline.p'\n"
                                                "`-- \xC3\xA4.p\n"},
                         {"which 'new\nline' bad\xFF -0", "a/new\nline.p\0a/bad\xFF.p\0"s},
                         {"which 'no\x1b[2Jsuch\n'", "ovsel: $'no\\x1b[2Jsuch\\n': not found\n-> 1\n"}});
    const json answers = tool.Json("which bad\xFF \xC3\xA4")["answers"];
    EXPECT_EQ(answers[0]["query"], json::parse(R"({"bytes": "YmFk/w=="})"));
    EXPECT_TRUE(answers[0]["winner"]["path"].contains("bytes"));
    EXPECT_EQ(answers[1]["winner"]["path"], "a/\xC3\xA4.p");
    EXPECT_EQ(tool("tree -p '\x1b[2J' -p .").err.find('\x1b'), std::string::npos);
}

TEST(Suggestions, AreTheNearestThreeWithinTwoEdits) {
    const std::vector<std::string> known = {"plot", "plod", "slot", "plotter", "pilot", "draw", "flat"};
    EXPECT_EQ(Join(tool::ClosestNames("plot_", known)), "plot | pilot | plod");
    EXPECT_EQ(Join(tool::ClosestNames("drwa", known)), "draw");
    EXPECT_EQ(Join(tool::ClosestNames("ab", known)), "");
}

} // namespace
