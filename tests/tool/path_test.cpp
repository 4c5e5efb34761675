#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "run_tool.hpp"

namespace {

using nlohmann::json;
using test::Outcome;
using test::Records;
using test::TempTree;
using test::Tool;

/// The folders of the path in order, separated by blanks, the current directory left out.
std::string PathOf(const Tool& tool, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"dirs", "--json"});
    const json document = json::parse(tool(arguments).out);
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
    struct Case {
        std::vector<std::string> arguments;
        const char* path;
    };
    const Case cases[] = {
        {{"-p", "c", "-r", "b", "-p", "a"}, "c b b/w b/x b/x/y a d e "},
        {{"-r", "b", "--path-file", "list", "--path=a"}, "b b/w b/x b/x/y c e a d "},
        {{"-p", "./a//", "-p", tree.Path("a"), "-p", "c/../a/."}, "a d e "},
        {{"-p", "C:" + tree.Root() + "/e"}, "e d a "},
    };
    for (const Case& item : cases)
        EXPECT_EQ(PathOf(tool, item.arguments), item.path);
    EXPECT_EQ(tool({"-p", "c", "dirs", "-0", "-p", "b"}).out.substr(tree.Root().size() + 1),
              Records({"c", "b", "d", "e", "a"}))
        << "options may stand before the command as well";
}

TEST(Path, ReadsListsWithNulAndFromStandardInput) {
    TempTree tree{"one/", "#two\nlines/"};
    Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    tool.input = Records({"one", "#two\nlines"});
    EXPECT_EQ(tool({"dirs", "-0", "--no-cwd", "--path-file", "-"}).out, Records({"one", "#two\nlines"}));
    const Outcome outcome = tool({"dirs", "--path-file", "-"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "ovsel: --path-file -: there is a NUL in it; -0 reads such lists\n");
}

TEST(Path, WarnsOfUnusableFoldersAndGoesOn) {
    TempTree tree{"good/a.p", "file", "good/@C/", "good/+p/", "good/private/", "od\\d/"};
    const Tool tool{.cwd = tree.Root(), .root = tree.Root()};
    const auto name = [&](const char* leaf) {
        std::string system = "C:" + tree.Path(leaf);
        std::replace(system.begin(), system.end(), '/', '\\');
        return system + "\n";
    };
    const Outcome outcome = tool({"which", "a", "-p", "missing", "-p", "file", "-p", "good/@C", "-p",
                                  "good/+p", "-p", "good/private", "-p", "od\\d", "-p", "good"});
    EXPECT_EQ(outcome.out, "good/a.p\n");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(
        outcome.err,
        "ovsel: missing: Name is nonexistent or not a directory: " + name("missing") +
            "ovsel: file: Name is nonexistent or not a directory: " + name("file") +
            "ovsel: good/@C: Class directories are not allowed on the path: " + name("good/@C") +
            "ovsel: good/+p: Package directories are not allowed on the path: " + name("good/+p") +
            "ovsel: good/private: Private directories are not allowed on the path: " + name("good/private") +
            "ovsel: od\\d: left out: no mapped root holds it, or there is a \\ or : in its name\n");
    const Outcome nothing = tool({"which", "a", "-p", "missing", "-p", "file"});
    EXPECT_EQ(nothing.status, 3);
    EXPECT_EQ(nothing.out, "");
    EXPECT_NE(nothing.err.find("ovsel: none of the 2 folders given could be used\n"), std::string::npos);
}

TEST(Path, TakesTheCurrentDirectoryThatItIsGiven) {
    TempTree tree{"here/a.p", "there/a.p", "path/b.p"};
    const Tool tool{.cwd = tree.Path("here"), .root = tree.Root()};
    EXPECT_EQ(tool({"which", "a", "b", "--cwd", "../there", "-p", "../path"}).out, "there/a.p\npath/b.p\n");
    EXPECT_EQ(tool({"which", "a", "--no-cwd", "-p", "../path"}).status, 1);
    EXPECT_EQ(tool({"which", "a", "--cwd", "/missing"}).err,
              "ovsel: --cwd /missing: Name is nonexistent or not a directory\n");
    // The path's first folder must not slip into the place of a current directory that is no more.
    const Outcome orphan = Tool{.cwd = tree.Path("here"), .root = tree.Root(), .losesCwd = true}(
        {"dirs", "-0", "-p", tree.Path("path"), "-p", tree.Path("there")});
    EXPECT_EQ(orphan.out, Records({"path", "there"}));
    EXPECT_EQ(orphan.err, "ovsel: the current directory cannot be used; going on without it\n");
}

TEST(Path, StandsAThousandNestedFoldersAndAFolderOfManyFiles) {
    TempTree tree;
    std::string nested = "deep";
    for (int level = 0; level < 1000; ++level) {
        nested += "/d";
        if (level % 500 == 0)
            std::filesystem::create_directories(
                tree.Path(nested)); // more at once is refused by the standard library
    }
    tree.Write(nested + "/last.p", "");
    for (int i = 0; i < 2000; ++i)
        tree.Write("many/f" + std::to_string(i) + ".p", "");
    const Tool tool{.cwd = tree.Path("many"), .root = tree.Root()};
    const Outcome found = tool({"which", "-r", tree.Path("deep"), "last", "f1999", "--no-cwd", "-p", "."});
    EXPECT_EQ(found.out, nested + "/last.p\nmany/f1999.p\n");
    EXPECT_EQ(found.err, "");
    const json totals = json::parse(tool({"dirs", "--json", "-r", tree.Path("deep")}).out)["totals"];
    EXPECT_EQ(totals, json::parse(R"({"files": 2001, "classes": 0, "packages": 0, "private_files": 0,
                                      "subfolders": 1000})"));
}

TEST(Path, FollowsPackagesAsDeepAsTheyGo) {
    TempTree tree;
    std::string nested = "p";
    std::string name;
    for (int level = 0; level < 200; ++level) {
        nested += "/+q";
        name += "q/";
    }
    tree.Write(nested + "/f.sv", "");
    const Tool tool{.root = tree.Root()};
    EXPECT_EQ(tool({"which", name + "f", "-p", tree.Path("p")}).out, nested + "/f.sv\n");
    const std::string drawing = tool({"tree", "--no-cwd", "-p", tree.Path("p")}).out;
    EXPECT_EQ(drawing.substr(drawing.rfind('\n', drawing.size() - 2)),
              "\n" + std::string(200 * 4, ' ') + "`-- f.sv\n");
    EXPECT_EQ(tool({"tree", "--json", "--no-cwd", "-p", tree.Path("p")}).status, 0);
}

} // namespace
