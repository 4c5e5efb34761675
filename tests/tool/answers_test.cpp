#include "run_tool.hpp"

namespace {

using namespace test;

/// The pages of the documentation show more of it, and are held to it.
TEST(Tool, AnswersTheDemoWorldInResolutionOrder) {
    const DemoWorld world;
    const std::string mount = " gfx/plot --mount X:=" + world.tree.Root() + ":fixed";
    ExpectAnswers(
        world.tool,
        {{"which -a plot --no-cwd -p ../B --ext sv --from ../A/caller.sv", // which does not see it
          " 1  constructor (@plot/plot) in path position 2  A/@plot/plot.sv\n"
          " 2  path position 1                              B/plot.sv\n"
          " 3  path position 2                              A/plot.sv\n"},
         {"which plot --scope path --ext .p", "B/plot.p\n"},
         {"which draw --scope method", "A/@plot/draw.sv\n"},
         {"which draw --scope all", "A/@plot/draw.sv\n"},
         {"which plot --scope private --from ../B/x.sv", "B/private/plot.sv\n"},
         {"which plot --scope dir --from ../A/x.sv", "A/plot.sv\n"},
         {"which -a --dirs gfx plot", "gfx\n   1  package folder +gfx in path position 1  A/+gfx\n"
                                      "plot\n   1  class folder @plot in path position 1  A/@plot\n"},
         {"which @plot/draw draw",
          "A/@plot/draw.sv\novsel: draw: not found\n"
          "ovsel: 1 file of that name out of sight from here; --scope all shows it\n-> 1\n"},
         {"which gfx/plott.sv", "ovsel: gfx/plott.sv: not found\novsel: did you mean gfx/plot.sv?\n-> 1\n"},
         {"which --no-cwd --scope path PLOT --ignore-case", "A/plot.sv\n"},
         {"which -a --form system -0" + mount, "X:\\A\\+gfx\\plot.sv\0"s},
         {"which -p x:/A/../A/" + mount, "A/+gfx/plot.sv\n"},
         {"tree --depth 0", "C  (current directory)\nA  (path position 1)\nB  (path position 2)\n"},
         {"tree -0 --depth 1 --no-cwd",
          "A\0A/plot.sv\0A/+gfx\0A/@plot\0B\0B/plot.p\0B/plot.sv\0B/private\0"s},
         {"dirs -0 --no-cwd", "A\0B\0"s}});
}

TEST(Tool, SpeaksJson) {
    // A line, the part of its answer that is looked at, and what that is.
    const std::tuple<const char*, const char*, const char*> answers[] = {
        {"which plot plto", "", R"({"schema": 1, "command": "which", "answers": [{
            "query": "plot", "found": true, "won_by": "constructor", "winner": {
                "path": "A/@plot/plot.sv", "folder": "A/@plot", "reason": "constructor", "position": 1,
                "detail": "constructor (@plot/plot) in path position 1", "extension_place": 2}}, {
            "query": "plto", "found": false, "won_by": null, "winner": null, "suggestions": ["plot"]}]})"},
        {"which -a plot --ext p", "/answers/0/won_by", R"("current_directory")"},
        {"which -a plot --ext p", "/answers/0/candidates/1/path", R"("B/plot.p")"},
        {"tree", "/folders/2", R"({"path": "B", "kind": "path", "position": 2,
            "files": ["B/plot.p", "B/plot.sv"], "packages": [], "classes": [], "private": {
                "path": "B/private", "files": ["B/private/plot.sv"], "packages": [], "classes": [],
                "private": null, "subfolders": []},
            "subfolders": []})"},
        {"tree", "/folders/1/packages/0/files", R"(["A/+gfx/plot.sv"])"},
        {"tree", "/folders/1/classes/0/path", R"("A/@plot")"},
        {"dirs", "/totals",
         R"({"classes": 1, "files": 4, "packages": 1, "private_files": 1, "subfolders": 0})"},
    };
    const DemoWorld world;
    for (const auto& [line, part, answer] : answers)
        EXPECT_EQ(world.tool.Json(line)[json::json_pointer(part)], json::parse(answer)) << line;
}

TEST(Folders, AreDrawnAndCountedALinkForWhatItLeadsTo) {
    const TempTree tree{"a/+p/@K/K.p",        "a/@K/private/own.p",    "a/private/own.p",    "a/real.p",
                        "a/file.p -> real.p", "a/folder.p -> private", "a/gone.p -> nowhere"};
    ExpectAnswers(
        {tree.Root(), tree.Path("a")},
        {{"tree --no-cwd -p .",
          "a  (path position 1)\n|-- file.p\n|-- gone.p\n|-- real.p\n|-- +p/\n|   `-- @K/\n"
          "|       `-- K.p\n|-- @K/\n|   `-- private/\n|       `-- own.p\n"
          "|-- private/\n|   `-- own.p\n`-- folder.p/\n"},
         {"dirs -p .",
          " pos  kind                files classes packages private files sub-folders  folder\n"
          "   0  current directory       3       2        1             2           1  a\n"
          "   1  path                    3       2        1             2           1  a\n"
          "      total                   6       4        2             4           2  1 on the path\n"}});
}

TEST(Tree, UsesColoursAndBoxesOnATerminalOnly) {
    DemoWorld world;
    world.tool.before += " TERM=xterm LC_ALL=C.UTF-8";
    const auto holds = [&](const char* text) {
        return world.tool("tree --no-cwd --depth 1").out.find(text) != std::string::npos;
    };
    EXPECT_FALSE(holds("\x1b"));
    world.tool.onTerminal = true;
    EXPECT_TRUE(holds("├── \x1b[34m+gfx\x1b[0m/\r\n"));
    world.tool.before += " NO_COLOR=1";
    EXPECT_TRUE(holds("├── +gfx/\r\n"));
    world.tool.before += " LC_ALL=C";
    EXPECT_TRUE(holds("|-- +gfx/\r\n"));
}

} // namespace
