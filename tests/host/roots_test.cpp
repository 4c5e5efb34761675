// Roots of the grammar: where they lie on the disk, what they answer, and locations made of names.

#include "host_test.hpp"

namespace {

using namespace test;

class Roots : public testing::Test {
  protected:
    Roots() {
        DriveMap::Add(u"d:", "/srv//data/./", DriveMap::Kind::Fixed);
        DriveMap::Add(u"E:", "/srv/data/deep", DriveMap::Kind::Remote);
        DriveMap::Add(u"//Server/Share", "/mnt/s:h", DriveMap::Kind::Detect);
        DriveMap::Add(u"\\\\server\\far", "/mnt/far", DriveMap::Kind::Remote);
        DriveMap::Add(u"P:", "/proc", DriveMap::Kind::Detect);
    }
    ~Roots() override { DriveMap::Reset(); }
};

TEST_F(Roots, CarryNamesToPathsElementByElement) {
    std::string paths;
    for (const ustring& name :
         {ustring(u"C:\\"), ustring(u"c:\\a/b"), ustring(u"C:\\a\\..\\b\\"), ustring(u"D:\\x"),
          ustring(u"\\\\SERVER/share\\x"), ustring(u"\\\\server\\share"), ustring(u"\\\\server\\shared"),
          ustring(u"\\\\server"), ustring(u"F:\\a"), ustring(u"C:"), ustring(u"C:a"), ustring(u"a"),
          ustring(), ustring(u"C:\\a\0b", 6), ustring(u"C:\\") + char16_t(0xD800),
          ustring(u"C:\\ä") + char16_t(0xDCFF)})
        paths += DriveMap::ToPath(name).value_or("-") + " ";
    EXPECT_EQ(paths, "/ /a/b /a/../b/ /srv/data/x /mnt/s:h/x /mnt/s:h - - - - - - - - - /ä\xFF ");
}

TEST_F(Roots, NamePathsByTheLongestFolderThatHoldsThem) {
    std::string names;
    for (const char* path : {"/", "/a//b/./c/", "/srv/data/x", "/srv/database", "/srv/data/deep/x",
                             "/mnt/s:h/x", "/mnt/s:h", "/mnt/s:hx", "/a\\b", "a", "", "/\xFF"}) {
        const auto name = DriveMap::ToName(path);
        names += (name ? Narrow(*name) : "-") + " ";
    }
    EXPECT_EQ(names, R"(C:\ C:\a\b\c d:\x C:\srv\database E:\x \\Server\Share\x \\Server\Share - - - - C:\)"
                     "\xFF ");
}

TEST_F(Roots, AnswerWhetherTheyAreRemote) {
    std::string types;
    for (const char16_t* root : {u"C:\\", u"e:\\", u"P:\\", u"F:\\", u"\\\\server\\far\\",
                                 u"\\\\server\\share\\", u"\\\\server\\", u"\\\\serv\\", u"\\\\", u""})
        types += std::to_string(host::Platform().GetDriveType(root));
    EXPECT_EQ(types, "3431434111");
}

TEST_F(Roots, AreReplacedAndRefusedWhenMalformed) {
    EXPECT_TRUE(DriveMap::Add(u"\\\\SERVER\\SHARE", "/other", DriveMap::Kind::Fixed));
    EXPECT_EQ(DriveMap::ToPath(u"\\\\server\\share\\x"), "/other/x");
    EXPECT_FALSE(DriveMap::ToName("/mnt/s:h/x"));
    EXPECT_FALSE(DriveMap::Add(u"G:", "relative", DriveMap::Kind::Fixed));
    EXPECT_FALSE(DriveMap::Add(u"G:", std::string("/a\0b", 4), DriveMap::Kind::Fixed));
    for (const char16_t* root : {u"", u"G", u"G:\\", u"4:", u"\\\\s", u"\\\\s\\", u"\\\\s\\h\\",
                                 u"\\\\\\s\\h", u"\\\\s\\..", u"\\\\s\\a:b", u"\\s\\h"})
        EXPECT_FALSE(DriveMap::Add(root, "/", DriveMap::Kind::Fixed)) << Narrow(root);
    DriveMap::Reset();
    EXPECT_FALSE(DriveMap::ToPath(u"D:\\x"));
    EXPECT_EQ(DriveMap::ToPath(u"C:\\x"), "/x");
}

TEST_F(Roots, KeepDotDotInside) {
    const TempTree tree{"data/x", "secret/y"};
    DriveMap::Add(u"D:", tree.Path("data"), DriveMap::Kind::Fixed);
    EXPECT_TRUE(fs::exists(u"D:\\a\\..\\..\\x")) << "`..` above the root vanishes";
    EXPECT_FALSE(fs::exists(u"D:\\..\\secret"));
    EXPECT_FALSE(linux_host::ListDirectory(u"D:\\..\\secret"));
    const auto name = DriveMap::ToName(tree.Path("data/../secret"));
    ASSERT_TRUE(name);
    EXPECT_EQ(fs::canonical(*name, {}), NameOf(tree, "secret")) << "such a path is not below D:";
}

TEST(Locations, KeepTheRootsSeparatorAndNoOther) {
    std::string texts; // path, name and the chain of parents
    for (const char16_t* native : {u"C:/a//b\\", u"C:\\", u"\\\\s\\h\\a\\", u"\\\\\\", u"a", u""}) {
        vfs::AbsoluteIRI at = vfs::toAbsoluteIRI(u"file", native);
        texts += Narrow(at.toString()) + " [" + Narrow(at.getName()) + "]";
        for (; at.hasParent(); texts += " < " + Narrow(at.getPath()))
            at = at.getParent();
        texts += "\n";
    }
    EXPECT_EQ(texts, "file://C:/a//b [b] < C:/a < C:/\n"
                     "file://C:/ []\n"
                     "file:////s/h/a [a] < //s/h < //s/\n"
                     "file:///// []\nfile://a [a]\nfile:// []\n");
    for (const char16_t* native : {u"C:\\a\\b", u"C:\\", u"\\\\s\\h\\a", u"\\\\\\"})
        EXPECT_EQ(fromAbsoluteIRI(vfs::toAbsoluteIRI(u"file", native)), native);
}

} // namespace
