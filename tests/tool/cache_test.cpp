#include <algorithm>

#include "run_tool.hpp"

namespace {

using namespace test;

const std::string Prefix = " --prefix ..", Verify = "cache verify ../tb.xml" + Prefix;
const std::string FromCache = " --cache ../tb.xml" + Prefix;

/// The demo world with a class in it and its cache, tb.xml, in one of the two modes.
struct CacheWorld : DemoWorld {
    Outcome written;

    explicit CacheWorld(const std::string& mode = "") {
        tool.before += " PATH_MGR_MODE=" + mode;
        tree.Add({"A/sub/"});
        tree.Write("A/@plot/plot.sv", "classdef plot");
        tree.Write("B/private/plot.sv", "classdef plot"); // which is none there
        written = tool("cache write ../tb.xml --classes" + Prefix);
    }
    std::string Answers(const std::string& options = "") const {
        std::string text;
        for (const char* question : {"which -a plot gfx/plot --from ../B/x.sv", "tree", "dirs", "class plot"})
            text += tool(question + options).out;
        return text;
    }
};

TEST(Cache, IsBelievedWhateverTheDiskHoldsAndVerifyTellsWhatThatIs) {
    std::string inOtherMode;
    for (const char* mode : {"", "vfs"}) {
        CacheWorld world(mode);
        TempTree& tree = world.tree;
        const Tool& tool = world.tool;
        EXPECT_EQ(world.written.out, "../tb.xml: 5 folders, 8 entries\n") << world.written.err;
        EXPECT_TRUE(tool("cache show ../tb.xml -0 --form system")
                        .out.ends_with("B\\private\\plot.sv\0B\\plot.p\0B\\plot.sv\0"s));
        EXPECT_EQ(tool.Json("cache show ../tb.xml")["folders"][1]["folders"].dump(),
                  R"([{"entries":[{"letter":"N","name":"plot.sv"}],"folders":[],"name":"B/private"}])");
        EXPECT_EQ(tool(Verify).out, "../tb.xml: as on the disk, 5 folders, 8 entries\n");

        const std::string before = world.Answers();
        for (const char* removed : {"A/+gfx", "A/sub", "B/plot.p"})
            tree.Remove(removed);
        tree.Add({"A/behind.sv", "A/sub", "B/@new/new.sv", "B/plot.p -> ../C", "D/late.sv"});
        tree.Write("A/@plot/plot.sv", "function plot");
        tree.Rename("B/private", "B/public");
        EXPECT_EQ(world.Answers(FromCache), before) << mode;
        EXPECT_NE(world.Answers(), before);
        EXPECT_TRUE(inOtherMode.empty() || before == inOtherMode) << before;
        inOtherMode = before;
        EXPECT_EQ(tool("which late -p ../D" + FromCache).out, "D/late.sv\n") << "not in it";
        EXPECT_EQ(tool("watch --once --interval 1ms -p ../D" + FromCache).out,
                  "watching 7 folders every 1 ms: 1 notified, 0 polled, 6 unchecked\n");
        const std::string counts = tool("tree --stats" + FromCache).err;
        EXPECT_NE(counts.find(", 1 listings, "), std::string::npos) << "the current directory's: " << counts;
        EXPECT_NE(counts.find(": 0 listings, 0 existence queries"), std::string::npos) << counts;
        EXPECT_EQ(counts.find("cache of 5 folders: ") == std::string::npos, *mode != '\0') << counts;

        ExpectSession(tool, "cache_verify");
        tree.Rename("B", "gone");
        EXPECT_TRUE(tool(Verify + " -0 -p ../gone").out.ends_with("\0B\0gone\0"s));
    }
}

TEST(Cache, TakesAClosedFolderNeitherForEmptyNorForGone) {
    CacheWorld world;
    world.tree.Permit("A/+gfx", 0);
    EXPECT_EQ(world.tool(Verify).out, "unreadable  A/+gfx  (folder)\n");
    EXPECT_EQ(world.tool("cache write ../tb.xml -0" + Prefix).out, "A/+gfx\0"s);
    world.tree.Permit("B", 0);
    EXPECT_EQ(world.tool(Verify + " -0").out, "A/+gfx\0B\0"s);
}

TEST(Cache, RefusesEveryNameThatBothReadersWouldNotReadAsItIs) {
    TempTree tree{"p/fine name>'.sv", "p/@a.b/", "v1.0/"};
    const Tool tool{.root = tree.Root(), .before = "export OVSEL_PATH=p:v1.0"},
        other{.root = tree.Root(), .before = tool.before + " PATH_MGR_MODE=vfs"};
    const std::string write = "cache write tb.xml --prefix .";
    ExpectSession(tool, "cache_odd_names");
    tree.Remove("p/itself.xml");
    EXPECT_EQ(other("which \"fine name>'\" --cache tb.xml --prefix .").out, "p/fine name>'.sv\n");

    std::string longName = "long";
    while (longName.size() < 1281)
        longName += "/" + std::string(std::min<std::size_t>(200, 1280 - longName.size()), 'l');
    tree.Add({"p/a\"b.sv", "p/a&b", "p/a<b", "p/del\x7f", "p/new\nline", "p/\xC3\xA4/", "p/bad\xFF.sv",
              "p/+q/\xC3\xB6.sv", longName + "/"});
    const std::string before = tree.Read("tb.xml");
    EXPECT_EQ(
        tool(write + " 2>/dev/null -0 -p " + longName).All(),
        longName +
            "\0p/a\"b.sv\0p/a&b\0p/a<b\0p/bad\xFF.sv\0p/del\x7f\0p/new\nline\0p/\xC3\xA4\0p/+q/\xC3\xB6.sv\0"s
            "-> 1\n");
    EXPECT_EQ(tree.Read("tb.xml"), before);
    const json reasons = tool.Json(write);
    EXPECT_EQ(reasons["written"], false);
    EXPECT_EQ(reasons["refused"][0].dump(), R"({"path":"p/a\"b.sv","reason":"holds one of \" & <"})");
}

/// How many entries the folder itself has.
auto EntriesIn(const TempTree& tree) {
    return std::distance(std::filesystem::directory_iterator(tree.Root()), {});
}

TEST(Cache, LeavesTheOldFileAndNothingElseWhenItCannotBeWritten) {
    CacheWorld world;
    world.tree.Add({"B/link -> ../tb.xml"});
    ASSERT_EQ(::mkfifo(world.tree.Path("B/pipe").c_str(), 0600), 0);
    world.tree.Permit("tb.xml", 0640);
    const std::string before = world.tree.Read("tb.xml");
    const auto entries = EntriesIn(world.tree);
    ExpectSession({world.tool.root, world.tool.cwd, world.tool.before + "\nulimit -f 0"}, "cache_unwritable");
    EXPECT_EQ(world.tool("cache write /proc/tb.xml" + Prefix).status, 3);
    EXPECT_EQ(world.tree.Read("tb.xml"), before);
    EXPECT_EQ(EntriesIn(world.tree), entries);
    EXPECT_EQ(world.tool("cache write ../tb.xml" + Prefix).status, 0);
    EXPECT_EQ(std::filesystem::status(world.tree.Path("tb.xml")).permissions(), std::filesystem::perms(0640));
}

TEST(Cache, IsTheOldOneOrTheNewOneWheneverItsWriterIsKilled) {
    TempTree tree{"p/"};
    for (int i = 0; i < 600; ++i)
        tree.Write("p/" + std::string(200, 'x') + std::to_string(i) + ".sv", "");
    const Tool tool{tree.Root()};
    const std::string write = "cache write tb.xml --prefix . -p p";
    ASSERT_EQ(tool(write).status, 0);
    const std::string text = tree.Read("tb.xml"), whole = text.substr(text.find('\n')); // behind the time
    for (int run = 0; run < 30; ++run) {
        tree.Write("tb.xml", "old");
        const auto entries = EntriesIn(tree);
        RunningTool writer(tool, write);
        // Each run looks at the changed folder once more often than the one before.
        for (int looks = 0, changes = 0; looks < 100000 && changes <= run; ++looks)
            changes += EntriesIn(tree) != entries || tree.Read("tb.xml") != "old";
        const int signal = run % 2 == 0 ? SIGTERM : SIGKILL;
        writer.Finish(signal);
        const std::string left = tree.Read("tb.xml");
        EXPECT_TRUE(left == "old" || left.ends_with(whole)) << left.substr(0, 200);
        if (signal == SIGTERM)
            EXPECT_EQ(EntriesIn(tree), entries);
    }
}

TEST(Cache, IsShownAndVerifiedOnlyAsItIsWritten) {
    CacheWorld world;
    const std::string good = world.tree.Read("tb.xml");
    const auto with = [&](const std::string& old, const std::string& changed) {
        std::string text = good;
        return text.replace(text.find(old), old.size(), changed);
    };
    const std::string odd = "no line of a path cache, or not indented as it must be here";
    const std::pair<std::string, std::string> cases[] = {
        {"", "line 1: this is no path cache"},
        {good.substr(0, good.find(" name=\"sub\"")), "line 11: cut off"},
        {good.substr(0, good.find(" <D name=\"B\"")), "line 13: missing: the file has been cut off"},
        {with("1.2", "1.3"), "line 1: version 1.3; only 1.2 is known"},
        {with("<d", "<e"), "line 11: " + odd},
        {with("  <d", "<d"), "line 11: " + odd},
        {with("sub", "s&lt;"), "line 11: the name holds one of \" & <"},
        {with("sub", ""), "line 11: the name is empty"},
        {with("name=\"B\"", "name=\"A\""), "line 13: the folder A has been there before"},
        {with("A/+gfx", "B/+gfx"), "line 3: the folder does not lie in the one around it"},
        {with("\"B\"", "\"../B\""), "line 13: the name of a folder leads from the prefix downwards"},
        {with("plot.p", "x/plot.p"), "line 17: an entry has a bare name, without its folder"},
        {good + "\n", "line 21: nothing may stand behind the end"},
    };
    for (const auto& [text, message] : cases) {
        world.tree.Write("tb.xml", text);
        const std::string answer = "ovsel: ../tb.xml: " + message + "\n-> 1\n";
        for (const std::string& reader : {"cache show ../tb.xml"s, Verify})
            EXPECT_EQ(world.tool(reader).All(), answer);
    }
}

TEST(Cache, IsNotWaitedForWhereItIsNoFileAndItsPrefixIsChecked) {
    CacheWorld world;
    ASSERT_EQ(::mkfifo(world.tree.Path("pipe").c_str(), 0600), 0);
    world.tree.Add({"locked"});
    world.tree.Permit("locked", 0);
    ExpectSession(world.tool, "cache_options");
}

} // namespace
