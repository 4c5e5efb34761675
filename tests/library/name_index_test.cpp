#include "support/path_fixture.hpp"

namespace {

class NameIndex : public PathFixture {};

TEST_F(NameIndex, LowersAsciiInKeysAndNothingElse) {
    disk.Put("C:\\A", "\xc3\x84rger.sv \xc3\xa4rger.sv");
    Add("C:\\A");
    EXPECT_NE(nullptr, path->FindNameInfo(u"\u00c4RGER"));
    EXPECT_NE(path->FindNameInfo(u"\u00c4rger"), path->FindNameInfo(u"\u00e4rger"));
    const std::u16string longName(200, u'Q');
    disk.Put("C:\\B", N(longName));
    Add("C:\\B");
    EXPECT_NE(nullptr, path->FindNameInfo(std::u16string(200, u'q')));
}

/// Enough folders of one name that their full names are looked up instead of compared one by one.
TEST_F(NameIndex, FindsFoldersThatAreAllCalledAlike) {
    path = NewPath("alike", ovCaseInsensitive);
    const std::string names[] = {"C:\\1\\x", "C:\\2\\x", "C:\\3\\X", "D:\\1\\x", "C:\\12\\x", "C:\\cwd\\x"};
    const auto expectAll = [&](const char* when) {
        for (const std::string& name : names)
            EXPECT_EQ(name, N(ovGetDirName(Find(name)))) << when;
        EXPECT_EQ(names[2], N(ovGetDirName(Find("c:\\3\\x")))) << when;
        EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find("C:\\4\\x"))) << when;
    };
    for (const std::string& name : names) {
        disk.Put(name, "f.sv @k/");
        Add(name);
    }
    expectAll("indexed");
    EXPECT_EQ(names[1] + "\\@k", N(ovGetDirName(Find("C:\\2\\x\\@K"))));
    EXPECT_EQ(nullptr, ovSetCWDName(path, U(names[3])));
    expectAll("one twice");
    EXPECT_EQ(ovDirTypeCWD, ovGetDirType(Find(names[3]))) << "the current directory stands in front";
    EXPECT_EQ(4, path->FindPathDir(U(names[3]), DirScope::Path)->GetOrder());
    const ustring umlaut = u"C:\\\u00e4\\x";
    disk.Put(N(umlaut), "f.sv");
    Add(N(umlaut));
    expectAll("one beyond ASCII");
    EXPECT_EQ(umlaut, ovGetDirName(ovFindDirFullName(path, u"C:\\\u00c4\\x"))) << "folds";
    ovRemoveDir(Find(N(umlaut)));
    ovRemoveDir(Find(names[0]));
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(Find(names[0])));
}

TEST_F(NameIndex, LooksThroughAPrivateDirectoryForWhatFoldsAlike) {
    path = NewPath("folding", ovCaseInsensitive);
    disk.Put("C:\\A", "f.sv private/");
    disk.Put("C:\\A\\private", "\xe2\x84\xaa.sv other.sv"); // the sign of Kelvin
    const ovDir dir = Add("C:\\A");
    disk.Put("C:\\B", "k.sv");
    Add("C:\\B");
    EXPECT_EQ("-1 C:\\A\\private\\\xe2\x84\xaa.sv | -1 C:\\B\\k.sv",
              Search(ovCreateVisibleSearchIterator(dir, u"K", nullptr, ovCaseOfPath)).All());
}

} // namespace
