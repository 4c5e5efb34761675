#include "run_tool.hpp"

namespace {

using namespace test;

/// The pages of the documentation show more of it, and are held to it.
TEST(Which, AnswersTheDemoWorldInResolutionOrder) {
    const std::pair<const char*, const char*> answers[] = {
        {"which -a plot --no-cwd -p ../B --ext sv --from ../A/caller.sv", // which does not see it
         " 1  constructor (@plot/plot) in path position 2  A/@plot/plot.sv\n"
         " 2  path position 1                              B/plot.sv\n"
         " 3  path position 2                              A/plot.sv\n"},
        {"which -a plot --scope all --ext .sv",
         " 1  path position 1                        A/plot.sv\n"
         " 2  path position 2                        B/plot.sv\n"
         " 3  class folder @plot in path position 1  A/@plot/plot.sv\n"
         " 4  private folder in path position 2      B/private/plot.sv\n"},
        {"which plot --scope path --ext .p", "B/plot.p\n"},
        {"which draw --scope method", "A/@plot/draw.sv\n"},
        {"which plot --scope private --from ../B/x.sv", "B/private/plot.sv\n"},
        {"which plot --scope dir --from ../A/x.sv", "A/plot.sv\n"},
        {"which -a --dirs gfx plot", "gfx\n   1  package folder +gfx in path position 1  A/+gfx\n"
                                     "plot\n   1  class folder @plot in path position 1  A/@plot\n"},
        {"which @plot/draw draw",
         "A/@plot/draw.sv\novsel: draw: not found\n"
         "ovsel: 1 file of that name out of sight from here; --scope all shows it\n-> 1\n"},
        {"which gfx/plott.sv", "ovsel: gfx/plott.sv: not found\novsel: did you mean gfx/plot.sv?\n-> 1\n"},
        {"which --no-cwd --scope path PLOT --ignore-case", "A/plot.sv\n"},
    };
    const DemoWorld world;
    for (const auto& [question, answer] : answers)
        EXPECT_EQ(world.tool(question).All(), answer) << question;
}

TEST(Which, SpeaksJson) {
    const DemoWorld world;
    const Outcome outcome = world.tool("--json which plot plto");
    const json document = json::parse(outcome.out);
    EXPECT_EQ(outcome.err + std::to_string(outcome.status), "1");
    EXPECT_EQ(document["schema"], 1);
    EXPECT_EQ(document["answers"], json::parse(R"([{
        "query": "plot", "found": true, "won_by": "constructor", "winner": {
            "path": "A/@plot/plot.sv", "folder": "A/@plot", "reason": "constructor", "position": 1,
            "detail": "constructor (@plot/plot) in path position 1", "extension_place": 2}}, {
        "query": "plto", "found": false, "won_by": null, "winner": null, "suggestions": ["plot"]}])"));
    const json byCwd = world.tool.Json("which -a plot --ext p")["answers"][0];
    EXPECT_EQ(byCwd["won_by"], "current_directory");
    EXPECT_EQ(byCwd["candidates"].size(), 2U);
}

TEST(Which, GivesNamesInTheLibrarysForm) {
    const DemoWorld world;
    const std::string mount = " gfx/plot --mount X:=" + world.tree.Root() + ":fixed";
    EXPECT_EQ(world.tool.Ask("which -a --form system -0" + mount).out, Records({"X:\\A\\+gfx\\plot.sv"}));
    EXPECT_EQ(world.tool.Ask("which -p x:/A/../A/" + mount).out, "A/+gfx/plot.sv\n");
}

TEST(Tree, DrawsFoldersAndTakesALinkForWhatItLeadsTo) {
    const DemoWorld world;
    EXPECT_EQ(world.tool("tree --depth 0").out,
              "C  (current directory)\nA  (path position 1)\nB  (path position 2)\n");
    EXPECT_EQ(world.tool("tree -0 --depth 1 --no-cwd").out,
              Records({"A", "A/plot.sv", "A/+gfx", "A/@plot", "B", "B/plot.p", "B/plot.sv", "B/private"}));

    const json folders = world.tool.Json("tree")["folders"];
    EXPECT_EQ(folders[1], json::parse(R"({"path": "A", "kind": "path", "position": 1, "files": ["A/plot.sv"],
        "packages": [{"path": "A/+gfx", "files": ["A/+gfx/plot.sv"], "packages": [], "classes": [],
                      "private": null, "subfolders": []}],
        "classes": [{"path": "A/@plot", "files": ["A/@plot/draw.sv", "A/@plot/plot.sv"], "packages": [],
                     "classes": [], "private": null, "subfolders": []}],
        "private": null, "subfolders": []})"));
    EXPECT_EQ(folders[2]["private"]["files"], json::parse(R"(["B/private/plot.sv"])"));

    const TempTree tree{"a/+p/@K/K.p",        "a/private/own.p",       "a/real.p",
                        "a/file.p -> real.p", "a/folder.p -> private", "a/gone.p -> nowhere"};
    const Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    EXPECT_EQ(tool("tree --no-cwd -p a").out,
              "a  (path position 1)\n|-- file.p\n|-- gone.p\n|-- real.p\n|-- +p/\n|   `-- @K/\n"
              "|       `-- K.p\n|-- private/\n|   `-- own.p\n`-- folder.p/\n");
}

TEST(Tree, UsesColoursAndBoxesOnATerminalOnly) {
    DemoWorld world;
    auto& environment = world.tool.environment = {{"TERM", "xterm"}, {"LC_ALL", "C.UTF-8"}};
    const auto holds = [&](const char* text) {
        return world.tool("tree --no-cwd --depth 1 -p ../A").out.find(text) != std::string::npos;
    };
    EXPECT_FALSE(holds("\x1b"));
    world.tool.target = Tool::Stdout::Terminal;
    EXPECT_TRUE(holds("├── \x1b[34m+gfx\x1b[0m/\n"));
    environment["NO_COLOR"] = "1";
    EXPECT_TRUE(holds("├── +gfx/\n"));
    environment["LC_ALL"] = "C";
    EXPECT_TRUE(holds("|-- +gfx/\n"));
}

TEST(Dirs, CountsTheDemoWorld) {
    DemoWorld world;
    world.tree.Add({"A/sub/", "A/+gfx/@pen/pen.sv", "A/@plot/private/help.sv"});
    EXPECT_EQ(world.tool("dirs").out,
              " pos  kind                files classes packages private files sub-folders  folder\n"
              "   0  current directory       1       0        0             0           0  C\n"
              "   1  path                    1       2        1             1           1  A\n"
              "   2  path                    2       0        0             1           0  B\n"
              "      total                   4       2        1             2           1  2 on the path\n");
    EXPECT_EQ(world.tool("dirs -0 --no-cwd").out, Records({"A", "B"}));
    EXPECT_EQ(world.tool.Json("dirs")["totals"].dump(),
              R"({"classes":2,"files":4,"packages":1,"private_files":2,"subfolders":1})");
}

} // namespace
