#include <algorithm>

#include "run_tool.hpp"

namespace {

using namespace test;

const std::string Prefix = " --prefix ..", Verify = "cache verify ../tb.xml" + Prefix;
const std::string FromCache = " --cache ../tb.xml" + Prefix;

/// The text of a cache from its second line on: the first holds the time.
std::string Body(const std::string& text) { return text.substr(std::min(text.find('\n'), text.size())); }

/// The demo world with a class in it and its cache, tb.xml, in one of the two modes.
struct CacheWorld : DemoWorld {
    Outcome written;

    explicit CacheWorld(const char* mode = "") {
        tool.environment["PATH_MGR_MODE"] = mode;
        tree.Add({"A/sub/"});
        tree.Write("A/@plot/plot.sv", "classdef plot");
        tree.Write("B/private/plot.sv", "classdef plot"); // which is none there
        written = tool.Ask("cache write ../tb.xml --classes" + Prefix);
    }
    std::string File() const { return tree.Read("tb.xml"); }
    std::string Answers(const std::string& options = "") const {
        std::string text;
        for (const char* question : {"which -a plot gfx/plot --from ../B/x.sv", "tree", "dirs", "class plot"})
            text += tool.Ask(question + options).out;
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
                        .out.ends_with(Records({"B\\private\\plot.sv", "B\\plot.p", "B\\plot.sv"})));
        EXPECT_EQ(tool.Json("cache show ../tb.xml")["folders"][1]["folders"].dump(),
                  R"([{"entries":[{"letter":"N","name":"plot.sv"}],"folders":[],"name":"B/private"}])");
        EXPECT_EQ(tool.Ask(Verify).out, "../tb.xml: as on the disk, 5 folders, 8 entries\n");

        const std::string before = world.Answers();
        for (const char* removed : {"A/+gfx", "A/sub", "B/plot.p"})
            tree.Remove(removed);
        tree.Add({"A/behind.sv", "A/sub", "B/@new/new.sv", "B/plot.p -> ../C"});
        tree.Write("A/@plot/plot.sv", "function plot");
        tree.Rename("B/private", "B/public");
        EXPECT_EQ(world.Answers(FromCache), before) << mode;
        EXPECT_NE(world.Answers(), before);
        EXPECT_TRUE(inOtherMode.empty() || before == inOtherMode) << before;
        inOtherMode = before;

        EXPECT_EQ(tool.Ask("which behind draw --scope all" + FromCache).out, "A/@plot/draw.sv\n");
        const std::string counts = tool.Ask("tree --stats" + FromCache).err;
        EXPECT_NE(counts.find(", 1 listings, "), std::string::npos) << "the current directory's: " << counts;
        EXPECT_NE(counts.find(": 0 listings, 0 existence queries"), std::string::npos) << counts;
        EXPECT_EQ(counts.find("cache of 5 folders: ") == std::string::npos, *mode != '\0') << counts;
        const Outcome differs = tool.Ask(Verify);
        EXPECT_EQ(differs.status, 1);
        EXPECT_EQ(differs.out, R"(removed     A/+gfx  (folder)
changed     A/@plot/plot.sv  (class file in the cache, file without a class on the disk)
added       A/behind.sv  (file)
changed     A/sub  (folder in the cache, file on the disk)
added       B/@new  (folder)
changed     B/plot.p  (file in the cache, folder on the disk)
removed     B/private  (folder)
added       B/public  (folder)
)");
        EXPECT_EQ(tool.Json(Verify)["differences"][0].dump(),
                  R"({"change":"removed","in_cache":"folder","on_disk":null,"path":"A/+gfx"})");
        tree.Rename("B", "gone");
        EXPECT_TRUE(tool.Ask(Verify + " -0 -p ../gone").out.ends_with(Records({"", "B", "gone"})));
    }
}

TEST(Cache, ComesFromTheDiskWhereItHoldsNothing) {
    CacheWorld world;
    world.tree.Add({"D/late.sv", "out/"});
    EXPECT_EQ(world.tool.Ask("which late -p ../D" + FromCache).out, "D/late.sv\n");
    EXPECT_EQ(world.tool.Ask("watch --once --interval 1ms -p ../out" + FromCache).out,
              "watching 7 folders every 1 ms: 1 notified, 0 polled, 6 unchecked\n");
}

TEST(Cache, TakesAClosedFolderNeitherForEmptyNorForGone) {
    CacheWorld world;
    world.tree.Permit("A/+gfx", 0);
    EXPECT_EQ(world.tool.Ask(Verify).out, "unreadable  A/+gfx  (folder)\n");
    EXPECT_EQ(world.tool.Ask("cache write ../tb.xml -0" + Prefix).out, Records({"A/+gfx"}));
    world.tree.Permit("B", 0);
    EXPECT_EQ(world.tool.Ask(Verify + " -0").out, Records({"A/+gfx", "B"}));
}

TEST(Cache, RefusesEveryNameThatBothReadersWouldNotReadAsItIs) {
    TempTree tree{"p/fine name>'.sv", "p/@a.b/", "v1.0/"};
    Tool tool{.cwd = tree.Root(), .environment = {{"OVSEL_PATH", "p:v1.0"}}, .root = tree.Root()};
    const std::string write = "cache write tb.xml --prefix .";
    EXPECT_EQ(tool("cache write p/itself.xml --prefix .").status, 0);
    EXPECT_EQ(tool("cache verify p/itself.xml --prefix .").status, 0);
    tree.Remove("p/itself.xml");
    EXPECT_EQ(tool.Ask(write).All(),
              "tb.xml: 2 folders, 2 entries\n"
              "ovsel: note: p/@a.b has a dot in its name: the storage layer's mode takes it for @a\n"
              "ovsel: note: v1.0 has a dot in its name: with a cache, too, the disk is asked whether it "
              "is there\n");
    for (const char* mode : {"vfs", ""}) {
        tool.environment["PATH_MGR_MODE"] = mode;
        EXPECT_EQ(tool({"which", "fine name>'", "--cache", "tb.xml", "--prefix", "."}).out,
                  "p/fine name>'.sv\n");
    }

    std::string longName = "long";
    while (longName.size() < 1281)
        longName += "/" + std::string(std::min<std::size_t>(200, 1280 - longName.size()), 'l');
    tree.Add({"p/a\"b.sv", "p/a&b", "p/a<b", "p/del\x7f", "p/new\nline", "p/\xC3\xA4/", "p/bad\xFF.sv",
              "p/+q/\xC3\xB6.sv", longName + "/"});
    const std::string before = tree.Read("tb.xml");
    const Outcome refused = tool.Ask(write + " -0 -p " + longName);
    EXPECT_EQ(refused.out, Records({longName, "p/a\"b.sv", "p/a&b", "p/a<b", "p/bad\xFF.sv", "p/del\x7f",
                                    "p/new\nline", "p/\xC3\xA4", "p/+q/\xC3\xB6.sv"}));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(tree.Read("tb.xml"), before);
    const json reasons = tool.Json(write);
    EXPECT_EQ(reasons["written"], false);
    EXPECT_EQ(reasons["refused"][0].dump(), R"({"path":"p/a\"b.sv","reason":"holds one of \" & <"})");
}

/// Everything in the folder but the tree of the demo world.
std::string OthersIn(const TempTree& tree) {
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator(tree.Root()))
        if (const std::string name = entry.path().filename(); name.size() > 1)
            names += name + " ";
    return names;
}

TEST(Cache, LeavesTheOldFileAndNothingElseWhenItCannotBeWritten) {
    const std::pair<const char*, const char*> cases[] = {
        {"../tb.xml", "File too large"},
        {"../A", "this is a folder"},
        {"/", "this is a folder"},
        {"../B/link", "this is a link; give the file that it leads to"},
        {"../B/pipe", "this is no regular file"},
        {"/dev/full", "this is no regular file"},
        {"../missing/tb.xml", "its folder cannot be opened: No such file or directory"},
        {"../C/plot.p/tb.xml", "its folder cannot be opened: Not a directory"},
        {"/proc/tb.xml", nullptr},
    };
    CacheWorld world;
    world.tree.Add({"B/link -> ../tb.xml"});
    ASSERT_EQ(::mkfifo(world.tree.Path("B/pipe").c_str(), 0600), 0);
    world.tree.Permit("tb.xml", 0640);
    const std::string before = world.File();
    world.tool.fileSizeLimit = 300;
    for (const auto& [file, message] : cases) {
        const Outcome outcome = world.tool.Ask(std::string("cache write ") + file + Prefix);
        EXPECT_EQ(outcome.status, 3) << file;
        if (message != nullptr)
            EXPECT_EQ(outcome.err, fmt::format("ovsel: {}: {}\n", file, message));
    }
    EXPECT_EQ(world.File(), before);
    EXPECT_EQ(OthersIn(world.tree), "tb.xml ");
    world.tool.fileSizeLimit.reset();
    EXPECT_EQ(world.tool.Ask("cache write ../tb.xml" + Prefix).status, 0);
    EXPECT_EQ(std::filesystem::status(world.tree.Path("tb.xml")).permissions(), std::filesystem::perms(0640));
}

TEST(Cache, IsTheOldOneOrTheNewOneWheneverItsWriterIsKilled) {
    using Clock = std::chrono::steady_clock;
    TempTree tree{"p/"};
    for (int i = 0; i < 600; ++i)
        tree.Write("p/" + std::string(200, 'x') + std::to_string(i) + ".sv", "");
    const Tool tool{.cwd = tree.Root(), .environment = {{"OVSEL_PATH", "p"}}};
    std::string whole;
    Clock::duration length{}; // of the time in which the folder changes
    for (int run = 0; run < 30; ++run) {
        tree.Write("tb.xml", "old");
        const std::string others = OthersIn(tree);
        RunningTool writer(tool, {"cache", "write", "tb.xml", "--prefix", "."});
        auto begin = Clock::now();
        for (const auto limit = begin + std::chrono::seconds(20);
             begin < limit && OthersIn(tree) == others && tree.Read("tb.xml") == "old";)
            begin = Clock::now();
        for (const auto end = begin + length * run / 30; Clock::now() < end;) {
        }
        const int signal = run == 0 ? 0 : run % 2 == 0 ? SIGTERM : SIGKILL;
        const int status = writer.Finish(signal).status;
        const std::string text = tree.Read("tb.xml");
        if (run == 0) {
            length = Clock::now() - begin;
            whole = Body(text);
            ASSERT_EQ(status, 0);
        }
        EXPECT_TRUE(text == "old" || Body(text) == whole) << text.substr(0, 200);
        if (signal != SIGKILL)
            EXPECT_EQ(OthersIn(tree), others);
    }
}

TEST(Cache, IsReadStrictlyByTheToolAndUsedAsFarAsTheLibraryUnderstandsIt) {
    CacheWorld world;
    const std::string good = world.File();
    const auto with = [&](const std::string& old, const std::string& changed) {
        std::string text = good;
        return text.replace(text.find(old), old.size(), changed);
    };
    const std::string odd = "no line of a path cache, or not indented as it must be here";
    // What a file holds, what is wrong with it, and the exit statuses of a command that uses it in both
    // modes.
    const std::tuple<std::string, std::string, const char*> cases[] = {
        {"", "line 1: this is no path cache", "33"},
        {good.substr(0, good.find(" name=\"sub\"")), "line 11: cut off", "33"},
        {good.substr(0, good.find(" <D name=\"B\"")), "line 13: missing: the file has been cut off", "33"},
        {with("1.2", "1.3"), "line 1: version 1.3; only 1.2 is known", "00"},
        {with("<d", "<e"), "line 11: " + odd, "33"},
        {with("  <d", "<d"), "line 11: " + odd, "00"},
        {with("sub", "s&lt;"), "line 11: the name holds one of \" & <", "00"},
        {with("sub", ""), "line 11: the name is empty", "00"},
        {with("name=\"B\"", "name=\"A\""), "line 13: the folder A has been there before", "03"},
        {with("A/+gfx", "B/+gfx"), "line 3: the folder does not lie in the one around it", "00"},
        {with("\"B\"", "\"../B\""), "line 13: the name of a folder leads from the prefix downwards", "00"},
        {with("plot.p", "x/plot.p"), "line 17: an entry has a bare name, without its folder", "00"},
        {good + "\n", "line 21: nothing may stand behind the end", "00"},
    };
    for (const auto& [text, message, usable] : cases) {
        world.tree.Write("tb.xml", text);
        const std::string answer = "ovsel: ../tb.xml: " + message + "\n-> 1\n";
        EXPECT_EQ(world.tool("cache show ../tb.xml").All() + world.tool.Ask(Verify).All(), answer + answer);
        std::string statuses;
        for (const char* mode : {"vfs", ""}) {
            world.tool.environment["PATH_MGR_MODE"] = mode;
            const Outcome used = world.tool.Ask("dirs" + FromCache);
            statuses.insert(0, std::to_string(used.status));
            EXPECT_EQ(used.err.find("--cache ../tb.xml: " + message) != std::string::npos, used.status != 0);
        }
        EXPECT_EQ(statuses, usable) << message;
    }
}

TEST(Cache, IsNotWaitedForWhereItIsNoFileAndItsPrefixIsChecked) {
    CacheWorld world;
    ASSERT_EQ(::mkfifo(world.tree.Path("pipe").c_str(), 0600), 0);
    world.tree.Write("locked", world.File());
    world.tree.Permit("locked", 0);
    const std::pair<std::string, const char*> files[] = {{"../missing", "No such file or directory"},
                                                         {"../A", "Is a directory"},
                                                         {"../pipe", "this is no regular file"},
                                                         {"/dev/zero", "this is no regular file"},
                                                         {"../locked", "Permission denied"}};
    for (const auto& [file, reason] : files) {
        const std::string answer = fmt::format("{}: {}\n-> 3\n", file, reason);
        EXPECT_EQ(world.tool.Ask("cache show " + file).All(), "ovsel: " + answer);
        EXPECT_EQ(world.tool.Ask("cache verify " + file + Prefix).All(), "ovsel: " + answer);
        EXPECT_EQ(world.tool.Ask("dirs --cache " + file + Prefix).All(), "ovsel: --cache " + answer);
    }
    const std::string dirs = "dirs --cache ../tb.xml";
    const std::string unused =
        "note: no folder of the path lies under --prefix, so that nothing comes from the cache\n";
    const std::tuple<std::string, int, std::string> cases[] = {
        {dirs + " --prefix ..///", 0, ""},
        {dirs + " --prefix " + world.tree.Root() + "/a/../", 0, ""},
        {dirs + " --prefix ../A", 0, unused},
        {"cache verify ../tb.xml --prefix ../B", 1, ""},
        {dirs + " --prefix /" + std::string(1020, 'x'), 2, "--prefix: longer than 1022 characters\n"},
        {dirs + " --prefix /", 2, "--prefix /: a whole root cannot be a prefix\n"},
        {dirs, 2, "--cache needs --prefix DIR, the folder that it was written for\n"},
        {"dirs --prefix ..", 2, "--prefix needs --cache FILE\n"},
        {"cache verify ../tb.xml", 2,
         "a cache is written and verified with --prefix DIR, the folder that it is about\n"},
        {"cache write ../n.xml --prefix ../A", 3,
         "note: the folder of --prefix itself is not part of a cache; with the one above as prefix it is\n"
         "ovsel: no folder of the path lies under --prefix ../A; nothing is written\n"},
        {"cache wirte ../n.xml", 2,
         "there is no command wirte\novsel: did you mean write?\novsel: ovsel --help shows how it is used\n"},
    };
    for (const auto& [command, status, message] : cases) {
        const Outcome outcome = world.tool.Ask(command);
        EXPECT_EQ(outcome.status, status) << command;
        EXPECT_EQ(outcome.err, message.empty() ? "" : "ovsel: " + message);
    }
}

} // namespace
