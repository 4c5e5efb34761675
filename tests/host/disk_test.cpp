// Single questions about the disk: existence, accessibility, time, the current directory; and their failures.

#include <boost/core/demangle.hpp>

#include "host_test.hpp"

namespace {

using namespace test;

/// The answer, or the kind of failure.
std::string Ask(const std::function<bool()>& question) {
    try {
        return question() ? "yes" : "no";
    } catch (const fs::Failure& failure) {
        const std::string kind = boost::core::demangle(typeid(failure).name());
        return kind.substr(kind.rfind(':') + 1);
    }
}
std::string Exists(const ustring& name) {
    return Ask([&] { return fs::exists(name); });
}
std::string Enter(const ustring& name) {
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
    const char *invalid = "InvalidArgument", *denied = "AccessDenied", *missing = "PathNotFound",
               *large = "FileNameTooLarge", *system = "SystemError",
               *unconvertible = "FileNameConversionFailure";
    // A name inside the tree, whether it exists, what entering it gives, and its accessibility.
    const std::tuple<ustring, const char*, const char*, int> table[] = {
        {u"\\dir", "yes", "yes", 1},
        {u"/link/", "yes", "yes", 1},
        {u"\\dir\\..", "yes", "yes", 1},
        {u"\\dir\\file", "yes", missing, 4},
        {u"\\dir\\file\\", "no", missing, 4},
        {u"\\none", "no", missing, 4},
        {u"\\lost", "no", missing, 4},
        {u"\\round", system, system, 5},
        {u"\\closed", "yes", denied, 3},
        {u"\\closed\\x", denied, denied, 3},
        {u"\\unlisted", "yes", "yes", 3},
        {u"\\" + ustring(256, u'a'), large, large, 5},
        {u"\\dir" + ustring(4096, u'\\'), large, large, 5},
        {ustring(u"\\dir\0x", 6), invalid, invalid, 4},
        {{u'\\', 0xD800}, unconvertible, unconvertible, 4},
    };
    Unprivileged([&] {
        for (const auto& [leaf, exists, enter, accessibility] : table) {
            const ustring name = NameOf(tree) + leaf;
            const std::string label = testing::PrintToString(name);
            EXPECT_EQ(Exists(name), exists) << label;
            EXPECT_EQ(Enter(name), enter) << label;
            EXPECT_EQ(linux_host::DirectoryAccessibility(name), accessibility) << label;
            EXPECT_EQ(linux_host::ListDirectory(name).has_value(), accessibility == 1) << label;
        }
    });
    for (const char16_t* name : {u"Q:\\dir", u"\\\\server\\share", u"\\\\server", u""}) {
        EXPECT_EQ(Exists(name), "no");
        EXPECT_EQ(Enter(name), *name == 0 ? invalid : missing);
        EXPECT_EQ(linux_host::DirectoryAccessibility(name), 4);
        EXPECT_FALSE(linux_host::ListDirectory(name));
    }
}

TEST_F(Disk, TakesRelativeNamesAgainstTheCurrentDirectory) {
    TempTree tree{"dir/sub/file", "x:y/"};
    const ustring root = NameOf(tree);
    linux_host::ResetCounters();
    fs::current_path(root + u"\\dir");
    EXPECT_EQ(fs::current_path(), root + u"\\dir");
    EXPECT_EQ(Exists(u"sub/file"), "yes");
    EXPECT_EQ(Exists(root.substr(2) + u"\\dir"), "yes") << "from the root of the current drive";
    EXPECT_EQ(linux_host::DirectoryAccessibility(u"C:sub"), 1);
    EXPECT_TRUE(linux_host::DirectoryExists(u"..\\dir"));
    EXPECT_FALSE(linux_host::DirectoryExists(u"sub\\file"));
    EXPECT_EQ(linux_host::GetCounters().existenceQueries, 2U);
    EXPECT_EQ(linux_host::ListDirectory(u".").value().names, ustring(u"sub\0\0", 5));
    EXPECT_EQ(host::Platform().FullPath(u"sub\\..\\a.sv"), root + u"\\dir\\a.sv");
    EXPECT_EQ(host::Platform().FullPath(u""), fl::filesystem::current_path());
    EXPECT_EQ(host::Platform().FullPath(u"\\\\server"), u"");

    fs::current_path(u"sub");
    EXPECT_EQ(Enter(u"gone"), "PathNotFound");
    EXPECT_EQ(fs::current_path(), root + u"\\dir\\sub") << "a failure changes nothing";

    std::filesystem::current_path(tree.Path("x:y"));
    EXPECT_EQ(Ask([] { return fs::current_path().empty(); }), "SystemError") << "a directory without a name";
    tree.Remove("x:y");
    EXPECT_EQ(Ask([] { return fs::current_path().empty(); }), "PathNotFound");
    EXPECT_EQ(Exists(u"a"), "no");
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
