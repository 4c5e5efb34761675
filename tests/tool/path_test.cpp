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
    TempTree tree{"good/a.p", "file", "good/@C/", "good/+p/", "good/private/", "od\\d/"};
    const Tool tool{tree.Root()};
    std::string warnings;
    for (const auto& [folder, reason] :
         {std::pair("missing", "Name is nonexistent or not a directory"),
          {"file", "Name is nonexistent or not a directory"},
          {"good/@C", "Class directories are not allowed on the path"},
          {"good/+p", "Package directories are not allowed on the path"},
          {"good/private", "Private directories are not allowed on the path"}}) {
        std::string name = "C:" + tree.Path(folder);
        std::replace(name.begin(), name.end(), '/', '\\');
        warnings += fmt::format("ovsel: {}: {}: {}\n", folder, reason, name);
    }
    EXPECT_EQ(
        tool("which a -p missing -p file -p good/@C -p good/+p -p good/private -p 'od\\d' -p good").All(),
        "good/a.p\n" + warnings +
            "ovsel: od\\d: left out: no mapped root holds it, or there is a \\ or : in its name\n");
    EXPECT_TRUE(tool("which a -p missing -p file")
                    .All()
                    .ends_with("ovsel: none of the 2 folders given could be used\n-> 3\n"));
}

TEST(Path, TakesTheCurrentDirectoryThatItIsGiven) {
    const TempTree tree{"here/a.p", "there/a.p", "path/b.p"};
    Tool tool{tree.Root(), tree.Path("here")};
    ExpectSession(tool, "current_directory");
    // The path's first folder must not slip into the place of a current directory that is no more.
    tool.before = "mkdir gone; cd gone; rmdir ../gone";
    EXPECT_EQ(tool("dirs -0 -p " + tree.Path("path") + " -p " + tree.Path("there")).All(),
              "path\0there\0"s + "ovsel: the current directory cannot be used; going on without it\n");
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
