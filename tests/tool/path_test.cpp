#include "run_tool.hpp"

namespace {

using namespace test;

/// The folders of the path in order, separated by blanks, the current directory left out.
std::string PathOf(const Tool& tool, const std::string& arguments) {
    const json document = tool.Json("dirs " + arguments);
    std::string names;
    for (const json& folder : document["folders"])
        if (folder["kind"] == "path")
            names += folder["path"].get<std::string>() + " ";
    return names;
}

TEST(Path, KeepsTheOrderOfTheCommandLineAcrossKindsOfSources) {
    TempTree tree{"a/",         "b/x/y/",      "b/w/", "b/.git/", "b/@C/", "b/+p/in/",
                  "b/private/", "b/z -> ../a", "c/",   "d/",      "e/"};
    Tool tool{.cwd = tree.Root(), .environment = {{"OVSEL_PATH", "d::./e/:a"}}, .root = tree.Root()};
    tree.Write("list", "# folders\nc\n\nb/../e/\n");
    const std::pair<std::string, const char*> cases[] = {
        {"-p c -r b -p a", "c b b/w b/x b/x/y a d e "},
        {"-r b --path-file list --path=a", "b b/w b/x b/x/y c e a d "},
        {"-p ./a// -p " + tree.Path("a") + " -p c/../a/.", "a d e "},
        {"-p C:" + tree.Root() + "/e", "e d a "},
    };
    for (const auto& [arguments, path] : cases)
        EXPECT_EQ(PathOf(tool, arguments), path);
    EXPECT_EQ(tool("-p c dirs -0 -p b").out.substr(tree.Root().size() + 1),
              Records({"c", "b", "d", "e", "a"}))
        << "options may stand before the command as well";
}

TEST(Path, ReadsListsWithNulAndFromStandardInput) {
    TempTree tree{"one/", "#two\nlines/"};
    Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    tool.input = Records({"one", "#two\nlines"});
    EXPECT_EQ(tool({"dirs", "-0", "--no-cwd", "--path-file", "-"}).out, Records({"one", "#two\nlines"}));
    EXPECT_EQ(tool("dirs --path-file -").All(),
              "ovsel: --path-file -: there is a NUL in it; -0 reads such lists\n-> 2\n");
}

TEST(Path, WarnsOfUnusableFoldersAndGoesOn) {
    TempTree tree{"good/a.p", "file", "good/@C/", "good/+p/", "good/private/", "od\\d/"};
    const Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    const auto name = [&](const char* leaf) {
        std::string system = "C:" + tree.Path(leaf);
        std::replace(system.begin(), system.end(), '/', '\\');
        return system + "\n";
    };
    std::string warnings;
    for (const auto& [folder, reason] : {std::pair("missing", "Name is nonexistent or not a directory"),
                                         {"file", "Name is nonexistent or not a directory"},
                                         {"good/@C", "Class directories are not allowed on the path"},
                                         {"good/+p", "Package directories are not allowed on the path"},
                                         {"good/private", "Private directories are not allowed on the path"}})
        warnings += "ovsel: " + std::string(folder) + ": " + reason + ": " + name(folder);
    EXPECT_EQ(tool("which a -p missing -p file -p good/@C -p good/+p -p good/private -p od\\d -p good").All(),
              "good/a.p\n" + warnings +
                  "ovsel: od\\d: left out: no mapped root holds it, or there is a \\ or : in its name\n");
    const Outcome nothing = tool("which a -p missing -p file");
    EXPECT_EQ(nothing.status, 3);
    EXPECT_EQ(nothing.out, "");
    EXPECT_NE(nothing.err.find("ovsel: none of the 2 folders given could be used\n"), std::string::npos);
}

TEST(Path, TakesTheCurrentDirectoryThatItIsGiven) {
    TempTree tree{"here/a.p", "there/a.p", "path/b.p"};
    const Tool tool{.cwd = tree.Path("here"), .root = tree.Root()};
    EXPECT_EQ(tool("which a b --cwd ../there -p ../path").out, "there/a.p\npath/b.p\n");
    EXPECT_EQ(tool("which a --no-cwd -p ../path").status, 1);
    // The path's first folder must not slip into the place of a current directory that is no more.
    const Tool orphan{.cwd = tree.Path("here"), .root = tree.Root(), .losesCwd = true};
    EXPECT_EQ(orphan({"dirs", "-0", "-p", tree.Path("path"), "-p", tree.Path("there")}).All(),
              Records({"path", "there"}) +
                  "ovsel: the current directory cannot be used; going on without it\n");
}

TEST(Path, StandsAThousandNestedFoldersAndPackagesAsDeepAsTheyGo) {
    TempTree tree;
    const auto nest = [&](std::string folder, const char* element, int depth) {
        for (int level = 1; level <= depth; ++level) {
            folder += element;
            if (level % 200 == 0) // more at once is refused by the standard library
                std::filesystem::create_directories(tree.Path(folder));
        }
        tree.Write(folder + "/last.sv", "");
        return folder + "/last.sv\n";
    };
    const std::string file = nest("d", "/d", 1000), packaged = nest("p", "/+q", 200);
    std::string name;
    for (int level = 0; level < 200; ++level)
        name += "q/";
    const Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    EXPECT_EQ(tool({"which", "last", name + "last", "-r", "d", "-p", "p"}).All(), file + packaged);
    EXPECT_EQ(tool.Json("dirs --no-cwd -r d")["totals"].dump(),
              R"({"classes":0,"files":1,"packages":0,"private_files":0,"subfolders":1000})");
    EXPECT_TRUE(tool("tree --no-cwd -p p").out.ends_with("\n" + std::string(200 * 4, ' ') + "`-- last.sv\n"));
    EXPECT_EQ(tool("tree --json --no-cwd -p p").status, 0);
}

} // namespace
