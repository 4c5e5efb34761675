#include "run_tool.hpp"

namespace {

using namespace test;

TEST(Path, KeepsTheOrderOfTheCommandLineAcrossKindsOfSources) {
    TempTree tree{"a/",         "b/x/y/",      "b/w/", "b/.git/", "b/@C/", "b/+p/in/",
                  "b/private/", "b/z -> ../a", "c/",   "d/",      "e/"};
    tree.Write("list", "# folders\nc\n\nb/../e/\n");
    tree.Add({"one/", "#two\nlines/"});
    tree.Write("records", "one\0#two\nlines\0"s);
    const Tool tool{.root = tree.Root(), .before = "export OVSEL_PATH=d::./e/:a"};
    ExpectSession(tool, "path_order");
}

TEST(Path, WarnsOfUnusableFoldersAndGoesOn) {
    const TempTree tree{"good/a.p", "file", "good/@C/", "good/+p/", "good/private/", "od\\d/"};
    ExpectSession({tree.Root()}, "unusable_folders");
}

TEST(Path, TakesTheCurrentDirectoryThatItIsGiven) {
    const TempTree tree{"here/a.p", "there/a.p", "path/b.p"};
    Tool tool{tree.Root(), tree.Path("here")};
    ExpectSession(tool, "current_directory");
    // The path's first folder must not slip into the place of a current directory that is no more.
    tool.before = "mkdir gone; cd gone; rmdir ../gone";
    ExpectSession(tool, "current_directory_gone");
}

TEST(Path, StandsAThousandNestedFoldersAndPackagesAsDeepAsTheyGo) {
    const auto times = [](int count, const char* element) {
        std::string text;
        while (count-- > 0)
            text += element;
        return text;
    };
    const std::string file = "d" + times(1000, "/d") + "/last.sv",
                      packaged = "p" + times(200, "/+q") + "/last.sv";
    const TempTree tree;
    const Tool tool{.root = tree.Root(),
                    .before =
                        "mkdir -p $(dirname " + file + " " + packaged + "); touch " + file + " " + packaged};
    EXPECT_EQ(tool("which -r d -p p last " + times(200, "q/") + "last").All(), file + "\n" + packaged + "\n");
    EXPECT_EQ(tool.Json("dirs --no-cwd -r d")["totals"]["subfolders"], 1000);
    EXPECT_TRUE(tool("tree --no-cwd -p p").out.ends_with("\n" + std::string(200 * 4, ' ') + "`-- last.sv\n"));
    EXPECT_EQ(tool("tree --json --no-cwd -p p").status, 0);
}

} // namespace
