#include <linux_hooks/linux_hooks.hpp>
#include <linux_host/linux_host.hpp>
#include <ovsel/ovsel.hpp>

#include "run_tool.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/suggest.hpp"

namespace {

using namespace test;

TEST(ExitStatus, TellsTheOutcomesApart) {
    // Arguments, the status, and the first line of standard error behind the tool's name.
    const std::tuple<std::vector<std::string>, int, const char*> cases[] = {
        {{"tree"}, 0, ""},
        {{"--version"}, 0, ""},
        {{"which", "--help"}, 0, ""},
        {{"which", "plot", "nothing"}, 1, "nothing: not found"},
        {{"which", "[plot].p"}, 1, "[plot].p: not found"},
        {{}, 2, "A subcommand is required"},
        {{"wich", "plot"}, 2, "there is no command wich"},
        {{"which"}, 2, "NAME is required"},
        {{"which", ""}, 2, "an empty NAME would stand for every file"},
        {{"which", "[plot]"}, 2, "a NAME in brackets, [plot], needs its extension"},
        {{"which", "x", "--scope", "y"}, 2, "--scope is one of all|dir|method|path|private|visible, not y"},
        {{"which", "plot", "--scope", "dir"}, 2, "--scope private and --scope dir need --from FILE"},
        {{"tree", "--depth", "-1"}, 2, ""},
        {{"tree", "--mount", "X"}, 2, "--mount: X is not ROOT=FOLDER[:fixed|remote|detect]"},
        {{"tree", "--mount", "X:=/:y"}, 2, "--mount: X:=/:y does not end in fixed, remote or detect"},
        {{"tree", "--mount", "XY=/"}, 2, "--mount: XY is no root such as X: or \\\\server\\share"},
        {{"dirs", "--json", "-0"}, 2, "--json and -0 exclude each other"},
        {{"dirs", "--ext", "\xC3\xA4"}, 2, "--ext: extensions are ASCII"},
        {{"dirs", "--path-file", "missing"}, 3, "--path-file missing: No such file or directory"},
        {{"dirs", "--path-file", "A"}, 3, "--path-file A: Is a directory"},
        {{"dirs", "--cwd", "A/plot.sv"}, 3, "--cwd A/plot.sv: Name is nonexistent or not a directory"},
    };
    DemoWorld world;
    world.tool.cwd = world.tree.Root();
    for (const auto& [arguments, status, firstLine] : cases) {
        const Outcome outcome = world.tool(arguments);
        const std::string label = testing::PrintToString(arguments) + outcome.err;
        EXPECT_EQ(outcome.status, status) << label;
        EXPECT_EQ(outcome.err.empty(), status == 0) << label;
        const std::string line = *firstLine ? "ovsel: " + std::string(firstLine) + "\n" : "";
        EXPECT_TRUE(outcome.err.starts_with(line)) << label;
    }
    EXPECT_NE(world.tool("wich plot").err.find("did you mean which or watch?\n"), std::string::npos);
}

TEST(ExitStatus, OfAFaultIsFourUnlessACacheMayBeItsReason) {
    TempTree tree;
    tree.Write("c", "<Quorrant>\n</Quorrant>\n");
    linux_hooks::InstallDefaultHooks();
    const ovPath path = ovCreatePath(0, "cached");
    const auto ask = []() -> int { throw std::out_of_range("basic_string::substr"); };
    EXPECT_EQ(tool::Guard(ask), 4);
    EXPECT_EQ(tool::Guard([]() -> int { throw 1; }), 4);
    EXPECT_EQ(tool::Guard([]() -> int { throw tool::ReaderGone(); }), 0);
    ovUseToolboxCache(path, linux_host::DriveMap::ToName(tree.Path("c")).value(), u"C:\\x", false);
    EXPECT_EQ(tool::Guard(ask), 3);
    ovRevertFromToolboxCache(path);
}

TEST(Output, EndsQuietlyWhenTheReaderHasGoneAndLoudlyWhenTheDiskIsFull) {
    DemoWorld world;
    world.tool.target = Tool::Stdout::ClosedPipe;
    const Outcome gone = world.tool("tree");
    EXPECT_EQ(gone.err, "");
    EXPECT_TRUE(gone.status == 0 || gone.status == 128 + SIGPIPE) << gone.status;
    world.tool.ignoresBrokenPipes = true;
    EXPECT_EQ(world.tool("tree").All(), "");
    world.tool.target = Tool::Stdout::FullDisk;
    EXPECT_EQ(world.tool("tree").All(),
              "ovsel: standard output cannot be written: No space left on device\n-> 3\n");
}

TEST(Output, NeverLetsOddNamesThrough) {
    const TempTree tree{"a/new\nline.p",   "a/bad\xFF.p",          "a/it's $x.p",
                        "a/esc\x1b[31m.p", "a/flip\xE2\x80\xAE.p", "a/\xC3\xA4.p"};
    const Tool tool{.cwd = tree.Path("a"), .root = tree.Root()};
    EXPECT_EQ(tool("tree --no-cwd -p .").out, "a  (path position 1)\n"
                                              "|-- $'bad\\xff.p'\n"
                                              "|-- $'esc\\x1b[31m.p'\n"
                                              "|-- $'flip\\xe2\\x80\\xae.p'\n"
                                              "|-- it's $x.p\n"
                                              "|-- $'new\\nline.p'\n"
                                              "`-- \xC3\xA4.p\n");
    EXPECT_EQ(tool({"which", "new\nline", "bad\xFF", "-0"}).out, Records({"a/new\nline.p", "a/bad\xFF.p"}));
    const json answers = tool.Json("which bad\xFF \xC3\xA4")["answers"];
    EXPECT_EQ(answers[0]["query"], json::parse(R"({"bytes": "YmFk/w=="})"));
    EXPECT_TRUE(answers[0]["winner"]["path"].contains("bytes"));
    EXPECT_EQ(answers[1]["winner"]["path"], "a/\xC3\xA4.p");
    EXPECT_EQ(tool({"which", "no\x1b[2Jsuch\n"}).err, "ovsel: $'no\\x1b[2Jsuch\\n': not found\n");
    EXPECT_EQ(tool({"tree", "-p", "\x1b[2J", "-p", "."}).err.find('\x1b'), std::string::npos);
}

TEST(Suggestions, AreTheNearestThreeWithinTwoEdits) {
    const std::vector<std::string> known = {"plot", "plod", "slot", "plotter", "pilot", "draw", "flat"};
    EXPECT_EQ(tool::ClosestNames("plot_", known), (std::vector<std::string>{"plot", "pilot", "plod"}));
    EXPECT_EQ(tool::ClosestNames("drwa", known), (std::vector<std::string>{"draw"}));
    EXPECT_EQ(tool::ClosestNames("ab", known), std::vector<std::string>());
}

} // namespace
