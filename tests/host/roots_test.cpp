// Roots of the grammar: where they lie on the disk, what they answer, and locations made of names.

#include <gtest/gtest.h>

#include "host_interfaces/platform.hpp"
#include "host_interfaces/storage.hpp"
#include "host_interfaces/text.hpp"
#include "linux_host/linux_host.hpp"

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using linux_host::DriveMap;

std::string Narrow(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string()(text); }

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
    const std::pair<ustring, const char*> table[] = {
        {u"C:\\", "/"},
        {u"c:\\a\\b", "/a/b"},
        {u"C:/a//b\\", "/a//b/"},
        {u"C:\\a\\..\\b", "/a/../b"},
        {{u'C', u':', u'\\', 0xDCFF, u'\u00E4'}, "/\xFF\xC3\xA4"},
        {u"D:\\", "/srv/data/"},
        {u"D:\\x", "/srv/data/x"},
        {u"\\\\SERVER\\share\\x", "/mnt/s:h/x"},
        {u"\\\\server/share", "/mnt/s:h"},
        {u"\\\\server\\shared", "none"},
        {u"\\\\server", "none"},
        {u"F:\\a", "none"},
        {u"C:", "none"},
        {u"C:a", "none"},
        {u"a", "none"},
        {u"\\a", "none"},
        {u"", "none"},
        {{u'C', u':', u'\\', u'a', 0, u'b'}, "none"},
        {{u'C', u':', u'\\', 0xD800}, "none"},
    };
    for (const auto& [name, path] : table) {
        EXPECT_EQ(DriveMap::ToPath(name).value_or("none"), path);
    }
}

TEST_F(Roots, NamePathsByTheLongestFolderThatHoldsThem) {
    const std::pair<const char*, const char*> table[] = {
        {"/", "C:\\"},
        {"/a//b/./c/", "C:\\a\\b\\c"},
        {"/srv/data", "d:\\"},
        {"/srv/data/x", "d:\\x"},
        {"/srv/database", "C:\\srv\\database"},
        {"/srv/data/deep/x", "E:\\x"},
        {"/mnt/s:h/x", "\\\\Server\\Share\\x"},
        {"/mnt/s:h", "\\\\Server\\Share"},
        {"/mnt/s:hx", "none"},
        {"/a\\b", "none"},
        {"a/b", "none"},
        {"", "none"},
        {"/\xFF", "C:\\\xFF"},
    };
    for (const auto& [path, name] : table) {
        const auto found = DriveMap::ToName(path);
        EXPECT_EQ(found ? Narrow(*found) : "none", name) << path;
    }
}

TEST_F(Roots, AnswerWhetherTheyAreRemote) {
    const std::pair<ustring, std::uint32_t> table[] = {
        {u"C:\\", host::DriveFixed},
        {u"e:\\", host::DriveRemote},
        {u"P:\\", host::DriveFixed},
        {u"F:\\", host::DriveNoRoot},
        {u"\\\\server\\far\\", host::DriveRemote},
        {u"\\\\server\\share\\", host::DriveFixed},
        {u"\\\\server\\", host::DriveRemote},
        {u"\\\\serv\\", host::DriveNoRoot},
        {u"\\\\", host::DriveNoRoot},
        {u"", host::DriveNoRoot},
    };
    for (const auto& [root, type] : table) {
        EXPECT_EQ(host::Platform().GetDriveType(root), type) << Narrow(root);
    }
}

TEST_F(Roots, AreReplacedAndRefusedWhenMalformed) {
    EXPECT_TRUE(DriveMap::Add(u"\\\\SERVER\\SHARE", "/other", DriveMap::Kind::Fixed));
    EXPECT_EQ(DriveMap::ToPath(u"\\\\server\\share\\x"), "/other/x");
    EXPECT_FALSE(DriveMap::ToName("/mnt/s:h/x"));
    EXPECT_FALSE(DriveMap::Add(u"G:", "relative", DriveMap::Kind::Fixed));
    EXPECT_FALSE(DriveMap::Add(u"G:", std::string("/a\0b", 4), DriveMap::Kind::Fixed));
    for (const char16_t* root : {u"", u"G", u"G:\\", u"4:", u"\\\\s", u"\\\\s\\", u"\\\\s\\h\\",
                                 u"\\\\\\s\\h", u"\\\\s\\..", u"\\\\s\\a:b", u"\\s\\h"}) {
        EXPECT_FALSE(DriveMap::Add(root, "/", DriveMap::Kind::Fixed)) << Narrow(root);
    }
    DriveMap::Reset();
    EXPECT_FALSE(DriveMap::ToPath(u"D:\\x"));
    EXPECT_EQ(DriveMap::ToPath(u"C:\\x"), "/x");
}

/// path, name and the chain of parents of a location
std::string Describe(const ustring& native) {
    AbsoluteIRI location = foundation::storage::vfs::toAbsoluteIRI(u"file", native);
    std::string text = Narrow(location.toString()) + " [" + Narrow(location.getName()) + "]";
    while (location.hasParent()) {
        location = location.getParent();
        text += " < " + Narrow(location.getPath());
    }
    return text;
}

TEST(Locations, KeepTheRootsSeparatorAndNoOther) {
    const std::pair<const char16_t*, const char*> table[] = {
        {u"C:\\a\\b", "file://C:/a/b [b] < C:/a < C:/"},
        {u"C:\\a\\", "file://C:/a [a] < C:/"},
        {u"C:/a//b\\\\", "file://C:/a//b [b] < C:/a < C:/"},
        {u"C:\\", "file://C:/ []"},
        {u"\\\\s\\h\\a\\", "file:////s/h/a [a] < //s/h < //s/"},
        {u"\\\\\\", "file:///// []"},
        {u"a", "file://a [a]"},
        {u"", "file:// []"},
    };
    for (const auto& [native, text] : table) {
        EXPECT_EQ(Describe(native), text);
    }
    for (const char16_t* native : {u"C:\\a\\b", u"C:\\", u"\\\\s\\h\\a", u"\\\\\\"}) {
        EXPECT_EQ(fromAbsoluteIRI(foundation::storage::vfs::toAbsoluteIRI(u"file", native)), native);
    }
}

} // namespace
