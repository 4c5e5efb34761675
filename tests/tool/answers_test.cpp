#include "run_tool.hpp"

namespace {

using namespace test;

/// The pages of the documentation show more of it, and are held to it.
TEST(Tool, AnswersTheDemoWorldInResolutionOrder) { ExpectSession(DemoWorld().tool, "demo_world"); }

TEST(Tool, SpeaksJson) { ExpectSession(DemoWorld().tool, "json"); }

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
