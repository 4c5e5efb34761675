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
    // A command gets the file as its last argument, an empty input and no shell; what it prints is no answer.
    ExpectSession(tool, "classes");
    EXPECT_EQ(tool.Json("class Pen a.Dotted")["answers"].dump(),
              R"([{"found":true,"path":"b/@Pen/Pen.sv","query":"Pen"},)"
              R"({"found":false,"path":null,"query":"a.Dotted"}])");
}

} // namespace
