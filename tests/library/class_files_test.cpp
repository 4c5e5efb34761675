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
