#include "support/path_fixture.hpp"

#include <set>

#include <boost/numeric/conversion/cast.hpp>

#include "ovsel/model/pathfileiteminfo.hpp"

namespace {

class ClassFiles : public PathFixture {
  protected:
    ClassFiles() { ovSetIsClassFcn(&Ask); }
    ~ClassFiles() override { ovSetIsClassFcn(nullptr); }

    /// The hook: a file is a class if its name is among these.
    static bool Ask(const ustring& file) {
        ++asked;
        return classes.count(N(file)) != 0;
    }
    std::string Where(const char* name) {
        ustring file = u"untouched";
        const bool found = ovGetClassFile(path, name, file, extensions);
        EXPECT_EQ(found, ovDoesClassFileExist(path, name, extensions)) << name;
        return found ? N(file) : "";
    }
    static inline std::set<std::string> classes;
    static inline int asked = 0;
    const Extensions extensions{"svapp", "svx", "sv", "p"};
};

TEST_F(ClassFiles, AreFoundInFoldersAndAmongPlainFiles) {
    disk.Put("C:",
             "A/ { @Both/ { Both.sv Both.p method.sv } Both.sv Text.txt Odd.sv } B/ { @Odd/ { Odd.sv } }");
    Add("C:\\A"), Add("C:\\B");
    classes = {"C:\\A\\@Both\\Both.p", "C:\\A\\Both.sv", "C:\\A\\Text.txt", "C:\\B\\@Odd\\Odd.sv"};
    // At one place the folder wins, and in it the later extension; `.txt` is not in the list; a plain file
    // that is no class hides nothing.
    for (const char* row :
         {"Both | C:\\A\\@Both\\Both.p", "Text | ", "Odd | C:\\B\\@Odd\\Odd.sv", "B\xc3\xb6th | ", " | "})
        EXPECT_EQ(row, Fields(row)[0] + " | " + Where(Fields(row)[0].c_str()));
    classes.insert("C:\\A\\Odd.sv");
    EXPECT_EQ("C:\\B\\@Odd\\Odd.sv", Where("Odd")) << "the host's answer is remembered";
    ovRemoveDir(Find("C:\\A")), Add("C:\\A", ovDirAddAtBegin);
    EXPECT_EQ("C:\\A\\Odd.sv", Where("Odd")) << "a plain class file earlier on the path wins";
}

TEST_F(ClassFiles, InPackagesAreFoundByDottedNames) {
    disk.Put("C:", "A/ { +a/ { +b/ { N.sv } } } B/ { +a/ { +b/ { N.sv @M/ { M.sv } } } }");
    Add("C:\\A"), Add("C:\\B");
    classes = {"C:\\B\\+a\\+b\\N.sv", "C:\\B\\+a\\+b\\@M\\M.sv"};
    EXPECT_EQ("C:\\B\\+a\\+b\\@M\\M.sv", Where("a.b.M"));
    // Only the first plain file in path order counts, and it is no class.
    for (const char* name : {"a.b.N", "x.N", "a..N", ".N", "a.", ".", "b.N"})
        EXPECT_EQ("", Where(name)) << name;
}

TEST_F(ClassFiles, DoNotCountInACurrentDirectoryThatIsItselfSpecial) {
    disk.Put("C:\\@X", "Here.sv");
    classes = {"C:\\@X\\Here.sv"};
    ovSetCWDName(path, u"C:\\@X");
    EXPECT_EQ("", Where("Here"));
}

TEST_F(ClassFiles, AskTheHostOnceUntilTheDirectoryIsReadAgain) {
    disk.Put("C:\\A", "@K/ { K.sv } N.sv:C O.sv:N T.txt");
    const ovDir dir = Add("C:\\A");
    classes = {"C:\\A\\@K\\K.sv", "C:\\A\\O.sv", "anything"};
    ovSetIsClassFcn(nullptr);
    EXPECT_EQ("", Where("K")) << "nobody can say";
    ovSetIsClassFcn(&Ask);
    asked = 0;
    for (const char* row : {"K | C:\\A\\@K\\K.sv", "N | C:\\A\\N.sv", "O | "})
        EXPECT_EQ(row, Fields(row)[0] + " | " + Where(Fields(row)[0].c_str()));
    EXPECT_EQ(1, asked) << "the listing has told of the others";
    ovRefreshDirectory(dir, ovRefreshReload);
    EXPECT_EQ("C:\\A\\O.sv", Where("O")) << "read again, asked again";
    EXPECT_EQ(2, asked);

    const auto isClass = [&](const char* name) {
        return ovIsFileClassdef(dir, "anything", name) ? "class" : "none";
    };
    EXPECT_EQ("class class none none",
              Join({isClass("O"), isClass("N.sv"), isClass("T.txt"), isClass("X")}, " "));
    EXPECT_EQ(3, asked) << "about N";
    for (const ovDir& none : {ovGetNullDir(path), ovDir()})
        EXPECT_FALSE(ovIsFileClassdef(none, "anything", "N"));
}

TEST_F(ClassFiles, AreCutToTheCallersBuffer) {
    disk.Put("C:\\A", "N.sv:C");
    Add("C:\\A");
    char buffer[16];
    EXPECT_TRUE(ovGetClassFile(path, "N", buffer, 4, extensions));
    EXPECT_STREQ("C:\\", buffer);
    EXPECT_THROW(ovGetClassFile(path, "N", buffer, -1, extensions), boost::numeric::negative_overflow);
}

} // namespace
