#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include "run_tool.hpp"

namespace {

using nlohmann::json;
using test::Outcome;
using test::Records;
using test::TempTree;
using test::Tool;

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
    EXPECT_EQ(json::parse(mixed.out)["answers"],
              json::parse(R"([{"query": "Pen", "found": true, "path": "b/@Pen/Pen.sv"},
                              {"query": "a.Dotted", "found": false, "path": null}])"));
}

TEST_F(ClassTool, TakesWhatItCannotReadForNoClassAndDoesNotWaitForIt) {
    for (const char* command : {"--classdef-pattern=^classdef", "--classdef-command=grep -q ^classdef"})
        for (const std::string name : {"Pipe", "Zero", "Loop", "NoClass", "Missing", "\xC3\xA4"}) {
            EXPECT_EQ(tool({"class", name, command}).All(),
                      "ovsel: " + name + ": no class of that name\n-> 1\n")
                << command;
        }
    EXPECT_EQ(tool({"class", "Late"}).status, 1);   // behind what is read
    EXPECT_EQ(tool({"class", "Blanks"}).status, 1); // a long way for an expression
    EXPECT_EQ(tool("class Locked").status, 1);
}

TEST_F(ClassTool, AsksACommandThatGetsTheFileAsItsLastArgumentAndNoShell) {
    EXPECT_EQ(tool({"class", "NoClass", "--classdef-command", "grep -q 'x = classdefault'"}).out,
              "a/NoClass.sv\n");
    // What it prints is no answer, and its input is empty.
    EXPECT_EQ(tool({"class", "Pen", "--classdef-command", "cat -"}).All(), "b/@Pen/Pen.sv\nclassdef Pen");
    EXPECT_EQ(tool({"class", "Pen", "--classdef-command", "true; touch made"}).status, 3);
    EXPECT_FALSE(std::filesystem::exists(tree.Path("made")));
    EXPECT_EQ(tool({"class", "Pen", "--classdef-command", "no-such-command"}).err,
              "ovsel: --classdef-command no-such-command: No such file or directory\n");
    EXPECT_EQ(tool({"class", "Pen", "--classdef-command", " "}).status, 2);
    EXPECT_EQ(tool({"class", "Pen", "--classdef-pattern", "("}).status, 2);
    EXPECT_EQ(tool({"class", "Pen", "--ext", "*"}).status, 2);
}

} // namespace
