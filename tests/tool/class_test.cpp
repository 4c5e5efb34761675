#include <sys/stat.h>

#include "run_tool.hpp"

namespace {

using namespace test;

struct ClassTool : testing::Test {
    TempTree tree{"a/@Pen/other.p", "b/"};
    Tool tool{.cwd = tree.Root(),
              .environment = {{"OVSEL_PATH", "a:b"}, {"PATH", "/usr/bin:/bin"}},
              .root = tree.Root()};

    ClassTool() {
        tree.Write("a/NoClass.sv", "function NoClass\nx = classdefault");
        tree.Write("b/Plain.sv", "% text\n\n  classdef Plain\nend\n");
        tree.Write("b/@Pen/Pen.sv", "classdef Pen");
        tree.Write("b/+a/+b/Dotted.sv", "classdef Dotted");
        tree.Write("b/Both.p", "classdef Both");
        tree.Write("b/Both.sv", "classdef Both");
        tree.Write("b/Late.sv", std::string(1 << 20, '\n') + "classdef Late");
        tree.Write("b/Blanks.sv", std::string(2 << 20, ' '));
        tree.Write("b/Locked.sv", "classdef Locked");
        tree.Permit("b/Locked.sv", 0);
        tree.Add({"b/Loop.sv -> Loop.sv", "b/Pipe.sv -> ../pipe", "b/Zero.sv -> /dev/zero"});
        ::mkfifo(tree.Path("pipe").c_str(), 0600);
    }
};

TEST_F(ClassTool, FindsTheFileThatDefinesAClassByItsTextTheLastExtensionFirst) {
    const std::pair<const char*, const char*> answers[] = {
        {"class Plain Pen a.b.Dotted", "b/Plain.sv\nb/@Pen/Pen.sv\nb/+a/+b/Dotted.sv\n"},
        {"class NoClass --classdef-pattern ^x", "a/NoClass.sv\n"},
        {"class Both", "b/Both.sv\n"},
        {"class Both --ext .sv,.p", "b/Both.p\n"},
        {"class Both --ext p", "b/Both.p\n"},
    };
    for (const auto& [question, answer] : answers)
        EXPECT_EQ(tool(question).All(), answer) << question;
    EXPECT_EQ(tool("class Plain -0").out, Records({"b/Plain.sv"}));
    const Outcome mixed = tool("class Pen a.Dotted --json");
    EXPECT_EQ(mixed.status, 1);
    EXPECT_EQ(json::parse(mixed.out)["answers"].dump(),
              R"([{"found":true,"path":"b/@Pen/Pen.sv","query":"Pen"},)"
              R"({"found":false,"path":null,"query":"a.Dotted"}])");
}

TEST_F(ClassTool, TakesWhatItCannotReadForNoClassAndDoesNotWaitForIt) {
    for (const char* command : {"--classdef-pattern=^classdef", "--classdef-command=grep -q ^classdef"})
        for (const std::string name : {"Pipe", "Zero", "Loop", "NoClass", "Missing", "\xC3\xA4"}) {
            EXPECT_EQ(tool({"class", name, command}).All(),
                      "ovsel: " + name + ": no class of that name\n-> 1\n")
                << command;
        }
    for (const char* name : {"Late", "Blanks", "Locked"}) // behind what is read, a long way, not readable
        EXPECT_EQ(tool({"class", name}).status, 1);
}

TEST_F(ClassTool, AsksACommandThatGetsTheFileAsItsLastArgumentAndNoShell) {
    const auto ask = [&](const char* name, const char* command) {
        return tool({"class", name, "--classdef-command", command}).All();
    };
    EXPECT_EQ(ask("NoClass", "grep -q 'x = classdefault'"), "a/NoClass.sv\n");
    // What it prints is no answer, and its input is empty.
    EXPECT_EQ(ask("Pen", "cat -"), "b/@Pen/Pen.sv\nclassdef Pen");
    EXPECT_EQ(ask("Pen", "no-such-command"),
              "ovsel: --classdef-command no-such-command: No such file or directory\n-> 3\n");
    EXPECT_TRUE(ask("Pen", "true; touch made").ends_with("-> 3\n"));
    EXPECT_FALSE(std::filesystem::exists(tree.Path("made")));
    EXPECT_TRUE(ask("Pen", " ").ends_with("-> 2\n"));
    EXPECT_EQ(tool("class Pen --classdef-pattern (").status, 2);
    EXPECT_EQ(tool("class Pen --ext *").status, 2);
}

} // namespace
