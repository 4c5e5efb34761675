// Single questions about the disk: existence, accessibility, time, the current directory; and their failures.

#include <typeinfo>

#include "host_test.hpp"

namespace {

using namespace test;

enum Outcome { No, Yes, Invalid, Denied, NotFound, TooLarge, System, Conversion };

template <typename Question>
Outcome Ask(Question question) {
    try {
        return question() ? Yes : No;
    } catch (const fs::Failure& failure) {
        const std::type_info& type = typeid(failure);
        return type == typeid(fs::InvalidArgument)    ? Invalid
               : type == typeid(fs::AccessDenied)     ? Denied
               : type == typeid(fs::PathNotFound)     ? NotFound
               : type == typeid(fs::FileNameTooLarge) ? TooLarge
               : type == typeid(fs::SystemError)      ? System
                                                      : Conversion;
    }
}

Outcome Exists(const ustring& name) {
    return Ask([&] { return fs::exists(name); });
}
Outcome Enter(const ustring& name) {
    return Ask([&] { return fs::current_path(name), true; });
}

/// Brings the process back to its directory, which need not have a name in the grammar.
class Disk : public testing::Test {
  protected:
    ~Disk() override { std::filesystem::current_path(m_before); }

  private:
    std::filesystem::path m_before = std::filesystem::current_path();
};

TEST_F(Disk, AnswersForEveryKindOfNameOrFailsInItsOwnWay) {
    TempTree tree{"dir/file", "closed/x", "unlisted/x", "link -> dir", "lost -> none", "round -> round"};
    tree.Permit("", 0755);
    tree.Permit("closed", 0);
    tree.Permit("unlisted", 0311);
    // A name inside the tree, whether it exists, what entering it gives, and its accessibility.
    const std::tuple<ustring, Outcome, Outcome, int> table[] = {
        {u"\\dir", Yes, Yes, 1},
        {u"/link/", Yes, Yes, 1},
        {u"\\dir\\..", Yes, Yes, 1},
        {u"\\dir\\file", Yes, NotFound, 4},
        {u"\\dir\\file\\", No, NotFound, 4},
        {u"\\none", No, NotFound, 4},
        {u"\\lost", No, NotFound, 4},
        {u"\\round", System, System, 5},
        {u"\\closed", Yes, Denied, 3},
        {u"\\closed\\x", Denied, Denied, 3},
        {u"\\unlisted", Yes, Yes, 3},
        {u"\\" + ustring(256, u'a'), TooLarge, TooLarge, 5},
        {u"\\dir" + ustring(4096, u'\\'), TooLarge, TooLarge, 5},
        {ustring(u"\\dir\0x", 6), Invalid, Invalid, 4},
        {{u'\\', 0xD800}, Conversion, Conversion, 4},
    };
    Unprivileged([&] {
        for (const auto& [leaf, exists, enter, accessibility] : table) {
            const ustring name = NameOf(tree) + leaf;
            EXPECT_EQ((std::vector<int>{Exists(name), Enter(name), linux_host::DirectoryAccessibility(name)}),
                      (std::vector<int>{exists, enter, accessibility}))
                << testing::PrintToString(name);
        }
    });
    for (const char16_t* name : {u"Q:\\dir", u"\\\\server\\share", u"\\\\server", u""}) {
        EXPECT_EQ(Exists(name), No);
        EXPECT_EQ(Enter(name), *name == 0 ? Invalid : NotFound);
        EXPECT_EQ(linux_host::DirectoryAccessibility(name), 4);
    }
}

TEST_F(Disk, TakesRelativeNamesAgainstTheCurrentDirectory) {
    TempTree tree{"dir/sub/file", "x:y/"};
    const ustring root = NameOf(tree);
    linux_host::ResetCounters();
    fs::current_path(root + u"\\dir");
    EXPECT_EQ(fs::current_path(), root + u"\\dir");
    EXPECT_EQ(Exists(u"sub/file"), Yes);
    EXPECT_EQ(Exists(root.substr(2) + u"\\dir"), Yes) << "from the root of the current drive";
    EXPECT_EQ(linux_host::DirectoryAccessibility(u"C:sub"), 1);
    EXPECT_TRUE(linux_host::DirectoryExists(u"..\\dir"));
    EXPECT_FALSE(linux_host::DirectoryExists(u"sub\\file"));
    EXPECT_EQ(linux_host::GetCounters().existenceQueries, 2U);
    EXPECT_EQ(linux_host::ListDirectory(u".").value().names, ustring(u"sub\0\0", 5));
    EXPECT_EQ(host::Platform().FullPath(u"sub\\..\\a.sv"), root + u"\\dir\\a.sv");
    EXPECT_EQ(host::Platform().FullPath(u""), fl::filesystem::current_path());
    EXPECT_EQ(host::Platform().FullPath(u"\\\\server"), u"");

    fs::current_path(u"sub");
    EXPECT_EQ(Enter(u"gone"), NotFound);
    EXPECT_EQ(fs::current_path(), root + u"\\dir\\sub") << "a failure changes nothing";

    std::filesystem::current_path(tree.Path("x:y"));
    EXPECT_EQ(Ask([] { return fs::current_path().empty(); }), System) << "a directory without a name";
    tree.Remove("x:y");
    EXPECT_EQ(Ask([] { return fs::current_path().empty(); }), NotFound);
    EXPECT_EQ(Exists(u"a"), No);
    EXPECT_EQ(host::Platform().FullPath(u"a"), u"");
}

TEST_F(Disk, HoldsTimesToSecondsThatAreNeverNone) {
    TempTree tree{"f", "lost -> none"};
    for (const long set : {-5L, 0L, 1700000000L, 2147483648L, 4294967296L}) {
        tree.SetTime("f", set);
        EXPECT_EQ(linux_host::FileTime(NameOf(tree, "f")), std::clamp(set, 1L, 2147483647L));
    }
    EXPECT_EQ(linux_host::FileTime(NameOf(tree, "gone")), 0);
    EXPECT_EQ(linux_host::FileTime(NameOf(tree, "lost")), 0);
    EXPECT_EQ(linux_host::FileTime(u""), 0);
}

} // namespace
