#include "run_tool.hpp"

namespace {

using namespace test;

TEST(Class, IsFoundByTheTextOfItsFileOrByACommandAndWhatCannotBeReadIsNone) {
    TempTree tree{"a/@Pen/other.p", "b/Loop.sv -> Loop.sv", "b/Pipe.sv -> ../pipe", "b/Zero.sv -> /dev/zero"};
    for (const char* file : {"b/@Pen/Pen.sv", "b/+a/+b/Dotted.sv", "b/Both.p", "b/Both.sv", "b/Locked.sv"})
        tree.Write(file, "classdef Pen");
    tree.Write("a/NoClass.sv", "function NoClass\nx = classdefault");
    tree.Write("b/Plain.sv", "% text\n\n  classdef Plain\nend\n");
    tree.Write("b/Late.sv", std::string(1 << 20, '\n') + "classdef Late"); // behind what is read
    tree.Write("b/Blanks.sv", std::string(2 << 20, ' '));
    tree.Permit("b/Locked.sv", 0);
    ASSERT_EQ(::mkfifo(tree.Path("pipe").c_str(), 0600), 0);
    const Tool tool{.root = tree.Root(), .before = "export OVSEL_PATH=a:b"};
    ExpectAnswers(tool,
                  {{"class Plain Pen a.b.Dotted", "b/Plain.sv\nb/@Pen/Pen.sv\nb/+a/+b/Dotted.sv\n"},
                   {"class Plain -0", "b/Plain.sv\0"s},
                   {"class Both", "b/Both.sv\n"}, // the last extension first
                   {"class Both --ext .sv,.p", "b/Both.p\n"},
                   {"class Both --ext p", "b/Both.p\n"},
                   {"class Pen --ext '*'",
                    "ovsel: class needs a list of extensions, since their order decides\n-> 2\n"},
                   {"class NoClass --classdef-pattern ^x", "a/NoClass.sv\n"},
                   // The command gets the file as its last argument, an empty input and no shell; what it
                   // prints is no answer.
                   {"class NoClass --classdef-command \"grep -q 'x = classdefault'\"", "a/NoClass.sv\n"},
                   {"class Pen --classdef-command 'cat -'", "b/@Pen/Pen.sv\nclassdef Pen"},
                   {"class Pen --classdef-command 'true; touch made'",
                    "ovsel: --classdef-command true;: No such file or directory\n-> 3\n"},
                   {"class Pen --classdef-command ' '",
                    "ovsel: --classdef-command: there is no command in it\n-> 2\n"}});
    EXPECT_EQ(tool("class Pen --classdef-pattern '('").status, 2);
    EXPECT_EQ(tool.Json("class Pen a.Dotted")["answers"].dump(),
              R"([{"found":true,"path":"b/@Pen/Pen.sv","query":"Pen"},)"
              R"({"found":false,"path":null,"query":"a.Dotted"}])");
    for (const std::string name : {"Pipe", "Zero", "Loop", "NoClass", "Missing", "\xC3\xA4", "Locked"})
        for (const char* check : {"", " --classdef-command 'grep -q ^classdef'"})
            ExpectAnswers(tool,
                          {{"class " + name + check, "ovsel: " + name + ": no class of that name\n-> 1\n"}});
    EXPECT_EQ(tool("class Late Blanks").out, "");
}

} // namespace
