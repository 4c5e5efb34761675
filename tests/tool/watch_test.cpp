#include "run_tool.hpp"

namespace {

using namespace test;

/// Skips to the next object of that event and shows it as `word word ...`, null as `-`; to one that begins
/// so, since a folder made just now may be read again at the first look and its line come early.
std::string Next(RunningTool& tool, const std::string& event, const std::string& begin = "") {
    while (const auto line = tool.NextLine()) {
        const json object = json::parse(*line);
        std::string text;
        for (const char* field : {"folder", "kind", "name", "was", "now", "reason"})
            if (object.contains(field))
                text += (object[field].is_null() ? "-" : object[field].get<std::string>()) + " ";
        if (object.value("event", "") == event && text.starts_with(begin))
            return text;
    }
    return "no such event";
}

TEST(Watch, TellsWhatTheDiskDoesToFoldersAndNames) {
    DemoWorld world;
    TempTree& tree = world.tree;
    RunningTool tool(world.tool, "watch --json --interval 5ms --no-cwd");
    const json first = json::parse(tool.NextLine().value());
    EXPECT_EQ(first["schema"], 1);
    EXPECT_EQ(first["interval_ms"], 5);
    EXPECT_EQ(first["folders"], first["notified"].get<int>() + first["polled"].get<int>());

    tree.Add({"B/news.sv"});
    EXPECT_EQ(Next(tool, "loaded", "B "), "B path ");
    EXPECT_EQ(Next(tool, "meaning"), "news - B/news.sv path ");
    tree.Rename("B/news.sv", "B/moved");
    EXPECT_EQ(Next(tool, "meaning"), "news B/news.sv - - ");
    // Folders are made whole elsewhere, so that they arrive in one look.
    tree.Add({"made/@pen/pen.sv"});
    tree.Rename("made/@pen", "B/@pen");
    EXPECT_EQ(Next(tool, "added"), "B/@pen class ");
    EXPECT_EQ(Next(tool, "meaning"), "pen - B/@pen/pen.sv constructor ");
    tree.Rename("A", "gone");
    EXPECT_EQ(Next(tool, "removed"), "A/+gfx package ");
    EXPECT_EQ(Next(tool, "meaning"), "plot A/@plot/plot.sv B/plot.sv path ");

    const Outcome outcome = tool.Finish(SIGINT);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err.find("ovsel: watched for "), 0U) << outcome.err;
    EXPECT_NE(outcome.err.find(" 4 changes of meaning"), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

TEST(Watch, LooksOnceAtTheNamesAskedForWithTheEyesOfAFile) {
    DemoWorld world;
    RunningTool tool(world.tool, "watch plot gfx/plot --once --interval 500ms --from ../B/caller.sv");
    const std::string first = tool.NextLine().value();
    EXPECT_EQ(first.find("watching 6 folders every 500 ms: "), 0U) << first;
    world.tree.Add({"B/other.sv"}); // nobody asked
    world.tree.Rename("B/private", "private");
    world.tree.Remove("A/+gfx");
    const std::string all = tool.Finish().All();
    EXPECT_NE(all.find("removed  B/private\nloaded   B\n"), std::string::npos) << all;
    EXPECT_TRUE(
        all.ends_with("gfx/plot means nothing any more; it was A/+gfx/plot.sv\nplot now means A/@plot/"
                      "plot.sv (constructor (@plot/plot) in path position 1); it was B/private/plot.sv\n"))
        << all;
    EXPECT_EQ(world.tool("watch --once --interval 1ms -0").out, "");
}

TEST(Watch, SaysOnceWhichFoldersAreNotNotifiedAndDoesNotTellThemAtEachLook) {
    TempTree tree{"a/"};
    const Tool tool{tree.Root()};
    RunningTool running(tool, "watch --json --interval 1ms -p a -p /proc/sys -p /proc/sys/fs"
                              " --mount X:=/proc/sys/kernel:remote -p /proc/sys/kernel/random");
    const json first = json::parse(running.NextLine().value());
    EXPECT_EQ(first["unnotified"], json::parse(R"([
        {"reason": "local_refused", "check": "reread", "folders": 2, "example": "/proc/sys"},
        {"reason": "remote_unsupported", "check": "by_time", "folders": 1, "example": "/proc/sys/kernel/random"}
    ])"));
    tree.Add({"a/late.sv"}); // many looks later than the first one
    EXPECT_EQ(Next(running, "loaded", "a "), "a path ");
    const Outcome outcome = running.Finish(SIGINT);
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 3) << outcome.err;
    EXPECT_NE(outcome.err.find(" (and 1 more such folder)\n"), std::string::npos) << outcome.err;
    EXPECT_EQ(tool("dirs -p /proc/sys").err, "");
    EXPECT_NE(tool("dirs -p a --stats").err.find(" 0 change handles\n"), std::string::npos);
}

TEST(Watch, EndsQuietlyWhenItsReaderGoesAndHeedsASignalWhenItsReaderSleeps) {
    DemoWorld world;
    RunningTool left(world.tool, "watch --interval 5ms");
    ASSERT_TRUE(left.NextLine());
    left.CloseOutput();
    EXPECT_EQ(left.Finish().All(), "");

    RunningTool stuck(world.tool, "watch --json --interval 5ms");
    ASSERT_TRUE(stuck.NextLine());
    // More lines than a pipe holds, arriving in one look; only their beginning is read.
    world.tree.Rename("B", "away");
    for (int i = 0; i < 2000; ++i)
        world.tree.Write("away/f" + std::to_string(i) + ".sv", "");
    world.tree.Rename("away", "B");
    EXPECT_EQ(Next(stuck, "meaning"), "f0 - B/f0.sv path ");
    EXPECT_EQ(stuck.Finish(SIGTERM).status, 0);
}

} // namespace
