// Directories of a real disk, hostile ones too, as the library gets to see them.

#include <dirent.h>
#include <set>
#include <sys/syscall.h>
#include <unistd.h>

#include "host_test.hpp"

namespace {

/// May change entries on their way out of the kernel, or fail: returns a length, or -1 with errno set.
std::function<ssize_t(char*, ssize_t)> g_onEntries;

} // namespace

/// Stands before the C library's: what no real disk can be brought to do on demand happens here.
extern "C" __attribute__((visibility("default"))) ssize_t getdents64(int descriptor, void* block,
                                                                     std::size_t size) {
    const ssize_t length = ::syscall(SYS_getdents64, descriptor, block, size);
    return g_onEntries ? g_onEntries(static_cast<char*>(block), length) : length;
}

namespace {

using namespace test;
using linux_host::ListDirectory;

/// One line per entry: `d`, `f` or `?` by its word, and the name.
std::string Show(const std::optional<linux_host::Listing>& listing) {
    if (!listing)
        return "nothing";
    std::string text;
    const char16_t* name = listing->names.data();
    for (const unsigned short word : listing->words) {
        const ustring units = name;
        text += (word == 0x4000 ? "d " : word == 0x8000 ? "f " : "? ") + Narrow(units) + "\n";
        name += units.size() + 1;
    }
    EXPECT_EQ(name, listing->names.data() + listing->names.size() - 1) << "one empty name ends the block";
    EXPECT_EQ(*name, 0);
    return text;
}

std::string LeftOut() {
    const linux_host::Counters counters = linux_host::GetCounters();
    return std::to_string(counters.unspellable) + " unspellable, " + std::to_string(counters.specialFiles) +
           " special, " + std::to_string(counters.ancestorLinks) + " ancestors";
}

class Listings : public testing::Test {
  protected:
    Listings() { linux_host::ResetCounters(); }
};

/// A fault in force while this object lives, which must be shorter than that of the tree.
struct Fault {
    explicit Fault(decltype(g_onEntries) onEntries) { g_onEntries = std::move(onEntries); }
    ~Fault() { g_onEntries = nullptr; }
};

TEST_F(Listings, HoldEveryNameThatTheGrammarCanSpellInTheOrderOfItsUnits) {
    const TempTree tree{"b.p",          "B.p",         ".dot",         "sub/x",
                        "@C/",          "+q/",         "private/",     "a\nb",
                        " sp ace ",     "quo\"te'",    "bad\xFF",      "\xC3\xA4",
                        "a:b",          "a\\b",        "\xEF\xBC\xA1", "\xF0\x9F\x98\x80",
                        "lfile -> b.p", "ldir -> sub", "lost -> none", "@L -> sub"};
    EXPECT_EQ(
        Show(ListDirectory(NameOf(tree))),
        "f  sp ace \nd +q\nf .dot\nd @C\n? @L\nf B.p\nf a\nb\nf b.p\nf bad\xFF\n? ldir\n? lfile\n? lost\n"
        "d private\nf quo\"te'\nd sub\nf \xC3\xA4\nf \xF0\x9F\x98\x80\nf \xEF\xBC\xA1\n");
    EXPECT_EQ(LeftOut(), "2 unspellable, 0 special, 0 ancestors");
}

TEST_F(Listings, HoldManyNamesOfAnyLength) {
    TempTree tree = TempTree::InMemory();
    std::set<std::string> names;
    for (std::size_t i = 0; i < 1500; ++i) // more than one block of the system's
        names.insert({std::to_string(i), std::string(1 + i % 254, "abc"[i % 3]) + std::to_string(i % 7)});
    std::string lines;
    for (const std::string& name : names) {
        tree.Write(name, "");
        lines += "f " + name + "\n";
    }
    EXPECT_EQ(lines, Show(ListDirectory(NameOf(tree))));
}

TEST_F(Listings, AreAskedForByNamesOfAnyLength) {
    TempTree tree = TempTree::InMemory();
    for (std::size_t length = 200; length <= 255; ++length)
        for (const std::string& name :
             {std::string(length, 'n'), std::string(length - 2, 'n') + "\xC3\xA4"}) {
            tree.Add({name + "/x"});
            EXPECT_EQ("f x\n", Show(ListDirectory(NameOf(tree, name))));
            EXPECT_TRUE(linux_host::DirectoryExists(NameOf(tree, name)));
            EXPECT_FALSE(linux_host::DirectoryExists(NameOf(tree, name + "/x")));
            EXPECT_NE(0, linux_host::FileTime(NameOf(tree, name + "/x")));
        }
}

TEST_F(Listings, LeaveOutWhatIsNeitherFileNorFolder) {
    TempTree tree{"file"};
    for (const char* pipe : {"pipe", "pi:pe"})
        ASSERT_EQ(::mkfifo(tree.Path(pipe).c_str(), 0600), 0);
    EXPECT_EQ(Show(ListDirectory(NameOf(tree))), "f file\n");
    EXPECT_EQ(LeftOut(), "1 unspellable, 1 special, 0 ancestors");
    EXPECT_EQ(Show(ListDirectory(u"C:\\dev")).find(" null\n"), std::string::npos) << "a device";
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "pipe"))), "nothing") << "and opening a pipe must not wait";
}

TEST_F(Listings, BreakTheCirclesOfSpecialFolders) {
    const TempTree tree{"a/@up -> ..",       "a/@self -> .",        "a/plain -> ..",
                        "a/private -> ../a", "a/@side -> ../other", "a/+lost -> none",
                        "other/@real/x",     "other/+back -> ../a", "other/@file"};
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "a"))), "? +lost\n? @side\n? plain\n");
    EXPECT_EQ(LeftOut(), "0 unspellable, 0 special, 3 ancestors");
    // By the name `a` is an ancestor here, though on the disk it is not.
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "a/@side"))), "f @file\nd @real\n");
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "other"))), "? +back\nf @file\nd @real\n");
    // A real folder can be an ancestor as well, once a link has led below it; after `..` none is left behind.
    const TempTree loop{"in/@x/+up -> ..", "in/+s -> ../start", "start/+in -> ../in/@x"};
    EXPECT_EQ(Show(ListDirectory(NameOf(loop, "start/+in/+up"))), "");
    EXPECT_EQ(Show(ListDirectory(NameOf(loop, "start/+in/.."))), "? +s\nd @x\n");
}

TEST_F(Listings, DoWithoutTheTypesOfEntries) {
    const TempTree tree{"file", "sub/", "@C/", "@up -> .", "link -> sub"};
    const Fault noTypes([](char* block, ssize_t length) {
        for (ssize_t at = 0; at < length;) {
            auto* const entry = reinterpret_cast<dirent64*>(block + at);
            entry->d_type = DT_UNKNOWN;
            at += entry->d_reclen;
        }
        return length;
    });
    EXPECT_EQ(Show(ListDirectory(NameOf(tree))), "? @C\n? file\n? link\n? sub\n");
    EXPECT_EQ(LeftOut(), "0 unspellable, 0 special, 1 ancestors");
}

TEST_F(Listings, KeepWhatWasReadWhenTheDiskFails) {
    const TempTree tree{"a", "b", "c"};
    int allowed = 1;
    const Fault failure([&](char*, ssize_t length) -> ssize_t {
        errno = EIO;
        return allowed-- > 0 ? length : -1;
    });
    EXPECT_EQ(Show(ListDirectory(NameOf(tree))), "f a\nf b\nf c\n") << "the second block is what fails";
    EXPECT_EQ(Show(ListDirectory(NameOf(tree))), "nothing") << "not even one entry";
}

TEST_F(Listings, DoNotMultiplyThroughLinksSideBySide) {
    const TempTree tree{"0/+a -> ../1", "1/+a -> ../2", "2/+a -> ../3", "3/+a -> ../4", "4/"};
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "0/+a/+a"))), "? +a\n");
    EXPECT_EQ(Show(ListDirectory(NameOf(tree, "0/+a/+a/+a"))), "") << "no circle, but as many as there are";
}

} // namespace
