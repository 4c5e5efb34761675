#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>

#include <fmt/format.h>

#include "run_tool.hpp"
#include "tools/ovsel/cache_file.hpp"
#include "tools/ovsel/exit_status.hpp"

namespace {

using nlohmann::json;
using test::DemoWorld;
using test::Outcome;
using test::Records;
using test::RunningTool;
using test::TempTree;
using test::Tool;

using Arguments = std::vector<std::string>;

Arguments operator+(Arguments first, const Arguments& rest) {
    first.insert(first.end(), rest.begin(), rest.end());
    return first;
}

const Arguments Prefix = {"--prefix", ".."};
const Arguments Cache = {"--cache", "../tb.xml", "--prefix", ".."};

/// The text of a cache from its second line on: the first holds the time.
std::string Body(const std::string& text) { return text.substr(std::min(text.find('\n'), text.size())); }

const char* const DemoBody = R"(
 <D name="A">
  <D name="A/+gfx">
   <N name="plot.sv"/>
  </D>
  <D name="A/@plot">
   <N name="draw.sv"/>
   <C name="plot.sv"/>
  </D>
  <N name="plot.sv"/>
  <d name="sub"/>
 </D>
 <D name="B">
  <D name="B/private">
   <N name="plot.sv"/>
  </D>
  <N name="plot.p"/>
  <N name="plot.sv"/>
 </D>
</Quorrant>
)";

const char* const DemoDrawing = R"(
A
|-- D +gfx/
|   `-- N plot.sv
|-- D @plot/
|   |-- N draw.sv
|   `-- C plot.sv
|-- N plot.sv
`-- d sub/
B
|-- D private/
|   `-- N plot.sv
|-- N plot.p
`-- N plot.sv
)";

/// The demo world with a class in it and its cache, tb.xml, in one of the two modes.
struct CacheWorld : DemoWorld {
    Outcome written;

    explicit CacheWorld(const char* mode = "") {
        tool.environment["PATH_MGR_MODE"] = mode;
        tree.Add({"A/sub/"});
        tree.Write("A/@plot/plot.sv", "classdef plot");
        tree.Write("B/private/plot.sv", "classdef plot"); // which is none there
        written = tool(Arguments{"cache", "write", "../tb.xml", "--classes"} + Prefix);
    }
    std::string File() const { return Tool::Content(tree.Path("tb.xml")); }
    std::string Answers(const Arguments& more) const {
        std::string text;
        for (const Arguments& question : {Arguments{"which", "-a", "plot", "gfx/plot", "--from", "../B/x.sv"},
                                          {"tree"},
                                          {"dirs"},
                                          {"class", "plot"}})
            text += tool(question + more).out;
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
        EXPECT_EQ(Body(world.File()), DemoBody);
        EXPECT_EQ(Body(tool({"cache", "show", "../tb.xml"}).out), DemoDrawing);
        EXPECT_TRUE(tool({"cache", "show", "../tb.xml", "-0", "--form", "system"})
                        .out.ends_with(
                            Records({"B", "B\\private", "B\\private\\plot.sv", "B\\plot.p", "B\\plot.sv"})));
        EXPECT_EQ(
            json::parse(tool({"cache", "show", "../tb.xml", "--json"}).out)["folders"][1]["folders"],
            json::parse(
                R"([{"name": "B/private", "folders": [], "entries": [{"letter": "N", "name": "plot.sv"}]}])"));
        const Arguments verify = Arguments{"cache", "verify", "../tb.xml"} + Prefix;
        EXPECT_EQ(tool(verify).out, "../tb.xml: as on the disk, 5 folders, 8 entries\n");

        const std::string before = world.Answers({});
        tree.Add({"A/behind.sv", "B/@new/new.sv"});
        tree.Remove("A/+gfx");
        tree.Remove("A/sub");
        tree.Write("A/sub", "");
        tree.Write("A/@plot/plot.sv", "function plot");
        tree.Rename("B/private", "B/public");
        tree.Remove("B/plot.p");
        tree.Add({"B/plot.p -> ../C"});
        EXPECT_EQ(world.Answers(Cache), before) << mode;
        EXPECT_NE(world.Answers({}), before);
        if (!inOtherMode.empty())
            EXPECT_EQ(before, inOtherMode);
        inOtherMode = before;

        EXPECT_EQ(tool(Arguments{"which", "behind", "draw", "--scope", "all"} + Cache).out,
                  "A/@plot/draw.sv\n");
        const std::string counts = tool(Arguments{"tree", "--stats"} + Cache).err;
        EXPECT_NE(counts.find(", 1 listings, "), std::string::npos)
            << "that of the current directory: " << counts;
        EXPECT_NE(counts.find(": 0 listings, 0 existence queries"), std::string::npos) << counts;
        EXPECT_EQ(counts.find("cache of 5 folders: ") == std::string::npos, *mode != '\0') << counts;
        const Outcome differs = tool(verify);
        EXPECT_EQ(differs.status, 1);
        EXPECT_EQ(differs.out,
                  "removed     A/+gfx  (folder)\n"
                  "changed     A/@plot/plot.sv  (class file in the cache, file without a class on the "
                  "disk)\n"
                  "added       A/behind.sv  (file)\n"
                  "changed     A/sub  (folder in the cache, file on the disk)\n"
                  "added       B/@new  (folder)\n"
                  "changed     B/plot.p  (file in the cache, folder on the disk)\n"
                  "removed     B/private  (folder)\n"
                  "added       B/public  (folder)\n");
        EXPECT_EQ(
            json::parse(tool(verify + Arguments{"--json"}).out)["differences"][0],
            json::parse(R"({"change": "removed", "path": "A/+gfx", "in_cache": "folder", "on_disk": null})"));
        tree.Rename("B", "gone");
        const Outcome vanished = tool(verify + Arguments{"-0", "-p", "../gone"});
        EXPECT_EQ(vanished.out.substr(vanished.out.size() - 7), Records({"B", "gone"}));
    }
}

TEST(Cache, ComesFromTheDiskWhereItHoldsNothing) {
    CacheWorld world;
    world.tree.Add({"D/late.sv", "out/"});
    const Tool& tool = world.tool;
    EXPECT_EQ(tool(Arguments{"which", "late", "-p", "../D", "--stats"} + Cache).out, "D/late.sv\n");
    RunningTool watch(tool, Arguments{"watch", "--once", "--interval", "1ms", "-p", "../out"} + Cache);
    EXPECT_EQ(watch.NextLine(), "watching 7 folders every 1 ms: 1 notified, 0 polled, 6 unchecked");
}

TEST(Cache, RefusesEveryNameThatBothReadersWouldNotReadAsItIs) {
    TempTree tree{"p/fine name>'.sv", "p/[x].p", "p/@a.b/", "v1.0/"};
    const Tool tool{.cwd = tree.Root(), .environment = {{"OVSEL_PATH", "p:v1.0"}}, .root = tree.Root()};
    const Arguments write = {"cache", "write", "tb.xml", "--prefix", "."};
    EXPECT_EQ(tool({"cache", "write", "p/itself.xml", "--prefix", "."}).status, 0);
    EXPECT_EQ(tool({"cache", "verify", "p/itself.xml", "--prefix", "."}).status, 0);
    tree.Remove("p/itself.xml");
    const Outcome fine = tool(write);
    EXPECT_EQ(fine.out, "tb.xml: 2 folders, 3 entries\n");
    EXPECT_EQ(fine.err,
              "ovsel: note: p/@a.b has a dot in its name: the storage layer's mode takes it for @a\n"
              "ovsel: note: v1.0 has a dot in its name: with a cache, too, the disk is asked whether it "
              "is there\n");
    for (const char* mode : {"", "vfs"}) {
        Tool user = tool;
        user.environment["PATH_MGR_MODE"] = mode;
        EXPECT_EQ(user({"which", "[x].p", "fine name>'", "--cache", "tb.xml", "--prefix", "."}).out,
                  "p/[x].p\np/fine name>'.sv\n");
    }

    std::string deep = "p";
    for (int level = 1; level < 255; ++level)
        deep += "/+q";
    std::string longName = "long";
    while (longName.size() < 1281)
        longName += "/" + std::string(std::min<std::size_t>(200, 1280 - longName.size()), 'l');
    tree.Add({"p/a\"b.sv", "p/a&b", "p/a<b", "p/del\x7f", "p/new\nline", "p/\xC3\xA4/", "p/bad\xFF.sv",
              "p/+q/\xC3\xB6.sv", deep + "/", longName + "/"});
    const std::string before = Tool::Content(tree.Path("tb.xml"));
    const Outcome refused = tool(write + Arguments{"-0", "-p", longName});
    EXPECT_EQ(refused.out, Records({longName, "p/a\"b.sv", "p/a&b", "p/a<b", "p/bad\xFF.sv", "p/del\x7f",
                                    "p/new\nline", "p/\xC3\xA4", "p/+q/\xC3\xB6.sv", deep}));
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(Tool::Content(tree.Path("tb.xml")), before);
    const json reasons = json::parse(tool(write + Arguments{"--json"}).out);
    EXPECT_EQ(reasons["written"], false);
    EXPECT_EQ(reasons["refused"][0],
              json::parse(R"({"path": "p/a\"b.sv", "reason": "holds one of \" & <"})"));
}

TEST(Cache, TakesAClosedFolderNeitherForEmptyNorForGone) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "every folder is open to root";
    CacheWorld world;
    world.tree.Permit("A/+gfx", 0);
    EXPECT_EQ(world.tool(Arguments{"cache", "verify", "../tb.xml"} + Prefix).out,
              "unreadable  A/+gfx  (folder)\n");
    EXPECT_EQ(world.tool(Arguments{"cache", "write", "../tb.xml", "-0"} + Prefix).out, Records({"A/+gfx"}));
    world.tree.Permit("B", 0);
    EXPECT_EQ(world.tool(Arguments{"cache", "verify", "../tb.xml", "-0"} + Prefix).out,
              Records({"A/+gfx", "B"}));
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
    struct Case {
        const char* file;
        const char* message;
    };
    const Case cases[] = {
        {"../tb.xml", "../tb.xml: File too large"},
        {"../A", "../A: this is a folder"},
        {"/", "/: this is a folder"},
        {"../B/link", "../B/link: this is a link; give the file that it leads to"},
        {"../B/pipe", "../B/pipe: this is no regular file"},
        {"/dev/full", "/dev/full: this is no regular file"},
        {"../missing/tb.xml", "../missing/tb.xml: its folder cannot be opened: No such file or directory"},
        {"../C/plot.p/tb.xml", "../C/plot.p/tb.xml: its folder cannot be opened: Not a directory"},
        {"/proc/tb.xml", nullptr},
    };
    CacheWorld world;
    world.tree.Add({"B/link -> ../tb.xml"});
    ASSERT_EQ(::mkfifo(world.tree.Path("B/pipe").c_str(), 0600), 0);
    world.tree.Permit("tb.xml", 0640);
    const std::string before = world.File();
    world.tool.fileSizeLimit = 300;
    for (const Case& item : cases) {
        const Outcome outcome = world.tool(Arguments{"cache", "write", item.file} + Prefix);
        EXPECT_EQ(outcome.status, 3) << item.file;
        if (item.message != nullptr)
            EXPECT_EQ(outcome.err, std::string("ovsel: ") + item.message + "\n");
    }
    EXPECT_EQ(world.File(), before);
    EXPECT_EQ(OthersIn(world.tree), "tb.xml ");
    world.tool.fileSizeLimit.reset();
    EXPECT_EQ(world.tool(Arguments{"cache", "write", "../tb.xml"} + Prefix).status, 0);
    EXPECT_EQ(std::filesystem::status(world.tree.Path("tb.xml")).permissions(), std::filesystem::perms(0640));
}

TEST(Cache, IsTheOldOneOrTheNewOneWheneverItsWriterIsKilled) {
    using Clock = std::chrono::steady_clock;
    TempTree tree{"p/"};
    for (int i = 0; i < 600; ++i)
        tree.Write("p/" + std::string(200, 'x') + std::to_string(i) + ".sv", "");
    const Tool tool{.cwd = tree.Root(), .environment = {{"OVSEL_PATH", "p"}}};
    const Arguments write = {"cache", "write", "tb.xml", "--prefix", "."};
    std::mt19937 random(1);
    std::string whole;
    Clock::duration length{}; // of the time in which the folder changes
    for (int run = 0; run < 30; ++run) {
        tree.Write("tb.xml", "old");
        const std::string others = OthersIn(tree);
        RunningTool writer(tool, write);
        auto begin = Clock::now();
        for (const auto limit = begin + std::chrono::seconds(20);
             begin < limit && OthersIn(tree) == others && Tool::Content(tree.Path("tb.xml")) == "old";)
            begin = Clock::now();
        if (run == 0) {
            ASSERT_EQ(writer.Finish().status, 0);
            length = Clock::now() - begin;
            whole = Body(Tool::Content(tree.Path("tb.xml")));
            continue;
        }
        for (const auto end = begin + length * (random() % 1000) / 1000; Clock::now() < end;) {
        }
        const bool isPolite = run % 2 == 0;
        writer.Finish(isPolite ? SIGTERM : SIGKILL);
        const std::string text = Tool::Content(tree.Path("tb.xml"));
        EXPECT_TRUE(text == "old" || Body(text) == whole) << text.substr(0, 200);
        if (isPolite)
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
    struct Case {
        std::string text;
        const char* message;
        int usable; ///< exit status of a command that uses it
        int usableInStorageMode;
    };
    const Case cases[] = {
        {"", "line 1: this is no path cache", 3, 3},
        {"<?xml version=\"1.0\"?>\n<a><b/></a>\n", "line 1: this is no path cache", 3, 3},
        {good.substr(0, good.find(" name=\"sub\"")), "line 11: cut off", 3, 3},
        {good.substr(0, good.find(" <D name=\"B\"")), "line 13: missing: the file has been cut off", 3, 3},
        {with("1.2", "1.3"), "line 1: version 1.3; only 1.2 is known", 0, 0},
        {with("<d", "<e"), "line 11: no line of a path cache, or not indented as it must be here", 3, 3},
        {with("  <d", "<d"), "line 11: no line of a path cache, or not indented as it must be here", 0, 0},
        {with("sub", "s&lt;"), "line 11: the name holds one of \" & <", 0, 0},
        {with("sub", ""), "line 11: the name is empty", 0, 0},
        {with("name=\"B\"", "name=\"A\""), "line 13: the folder A has been there before", 0, 3},
        {with("A/+gfx", "B/+gfx"), "line 3: the folder does not lie in the one around it", 0, 0},
        {with("\"B\"", "\"../B\""), "line 13: the name of a folder leads from the prefix downwards", 0, 0},
        {with("plot.p", "x/plot.p"), "line 17: an entry has a bare name, without its folder", 0, 0},
        {good + "\n", "line 21: nothing may stand behind the end", 0, 0},
    };
    for (const Case& item : cases) {
        world.tree.Write("tb.xml", item.text);
        for (const char* command : {"show", "verify"}) {
            const Outcome read = world.tool(Arguments{"cache", command, "../tb.xml"} + Prefix);
            EXPECT_EQ(read.err, std::string("ovsel: ../tb.xml: ") + item.message + "\n");
            EXPECT_EQ(read.status, 1);
        }
        for (const char* mode : {"", "vfs"}) {
            world.tool.environment["PATH_MGR_MODE"] = mode;
            const Outcome used = world.tool(Arguments{"dirs"} + Cache);
            EXPECT_EQ(used.status, *mode == '\0' ? item.usable : item.usableInStorageMode) << item.message;
            if (used.status != 0)
                EXPECT_NE(used.err.find(std::string("--cache ../tb.xml: ") + item.message),
                          std::string::npos);
        }
        world.tool.environment.erase("PATH_MGR_MODE");
    }
    // Whatever is missing, the line where it ends is named.
    for (std::size_t length = 0; length < good.size(); ++length) {
        const auto line = 1 + std::count(good.begin(), good.begin() + static_cast<long>(length), '\n');
        try {
            tool::ParseCache(good.substr(0, length), "f");
            ADD_FAILURE() << length;
        } catch (const tool::FindingError& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("f: line " + std::to_string(line)))
                << error.what();
        }
    }
}

TEST(Cache, IsNotWaitedForWhereItIsNoFileAndItsPrefixIsChecked) {
    CacheWorld world;
    ASSERT_EQ(::mkfifo(world.tree.Path("pipe").c_str(), 0600), 0);
    world.tree.Write("locked", world.File());
    world.tree.Permit("locked", 0);
    const std::pair<const char*, const char*> files[] = {{"../missing", "No such file or directory"},
                                                         {"../A", "Is a directory"},
                                                         {"../pipe", "this is no regular file"},
                                                         {"/dev/zero", "this is no regular file"},
                                                         {"../locked", "Permission denied"}};
    for (const auto& [file, reason] : files) {
        if (std::string(file) == "../locked" && ::geteuid() == 0)
            continue;
        for (const Arguments& command :
             {Arguments{"cache", "show", file}, {"cache", "verify", file}, {"dirs", "--cache", file}}) {
            const Outcome outcome = world.tool(command + (command[1] == "show" ? Arguments{} : Prefix));
            EXPECT_EQ(outcome.err,
                      fmt::format("ovsel: {}{}: {}\n", command[0] == "dirs" ? "--cache " : "", file, reason));
            EXPECT_EQ(outcome.status, 3);
        }
    }
    const std::string unused =
        "ovsel: note: no folder of the path lies under --prefix, so that nothing comes from the cache\n";
    struct Case {
        Arguments arguments;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"dirs", "--cache", "../tb.xml", "--prefix", "..///"}, 0, ""},
        {{"dirs", "--cache", "../tb.xml", "--prefix", world.tree.Root() + "/a/../"}, 0, ""},
        {{"dirs", "--cache", "../tb.xml", "--prefix", "../a"}, 0, unused},
        {{"dirs", "--cache", "../tb.xml", "--prefix", "../A"}, 0, unused},
        {{"cache", "verify", "../tb.xml", "--prefix", "../B"}, 1, ""},
        {{"dirs", "--cache", "../tb.xml", "--prefix", "/" + std::string(1020, 'x')},
         2,
         "ovsel: --prefix: longer than 1022 characters\n"},
        {{"dirs", "--cache", "../tb.xml", "--prefix", "/"},
         2,
         "ovsel: --prefix /: a whole root cannot be a prefix\n"},
        {{"dirs", "--cache", "../tb.xml"},
         2,
         "ovsel: --cache needs --prefix DIR, the folder that it was written for\n"},
        {{"dirs", "--prefix", ".."}, 2, "ovsel: --prefix needs --cache FILE\n"},
        {{"cache", "verify", "../tb.xml"},
         2,
         "ovsel: a cache is written and verified with --prefix DIR, the folder that it is about\n"},
        {{"cache", "write", "../n.xml", "--prefix", "../A"},
         3,
         "ovsel: note: the folder of --prefix itself is not part of a cache; with the one above as prefix it "
         "is\novsel: no folder of the path lies under --prefix ../A; nothing is written\n"},
        {{"cache", "wirte", "../n.xml"},
         2,
         "ovsel: there is no command wirte\novsel: did you mean write?\novsel: ovsel --help shows how it is "
         "used\n"},
    };
    for (const Case& item : cases) {
        const Outcome outcome = world.tool(item.arguments);
        EXPECT_EQ(outcome.status, item.status) << testing::PrintToString(item.arguments);
        EXPECT_EQ(outcome.err, item.message);
    }
}

} // namespace
