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
    ExpectSession({world.tree.Root(), world.tree.Root(), world.tool.before}, "exit_status");
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
    ExpectSession(tool, "odd_names");
    EXPECT_EQ(tool("which 'new\nline' bad\xFF -0").out, "a/new\nline.p\0a/bad\xFF.p\0"s);
    EXPECT_EQ(tool("which 'no\x1b[2Jsuch\n'").err, "ovsel: $'no\\x1b[2Jsuch\\n': not found\n");
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
