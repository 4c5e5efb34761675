#include "run_tool.hpp"

namespace {

using namespace test;

/// The pages of the documentation show more of it, and are held to it.
TEST(Tool, AnswersTheDemoWorldInResolutionOrder) { ExpectSession(DemoWorld().tool, "demo_world"); }

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
    ExpectSession({tree.Root(), tree.Path("a")}, "folders");
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
