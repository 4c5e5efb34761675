// A start from the cache on a machine whose toolbox is gone: nothing of it is read, and no name needs the
// system.

#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include "real_disk.hpp"

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true; // whose allocator maps memory when it pleases
#else
constexpr bool isSanitized = false;
#endif

class CacheStart : public RealDisk {
  protected:
    CacheStart() {
        linux_host::SetPrintSink([](std::string_view) {});
        tree.Add({"box/sig/plot.sv", "box/sig/@plot/plot.sv", "box/sig/@plot/draw.sv", "own/own.sv",
                  "box/sig/private/plot.p", "box/target.sv", "box/img/+gfx/fill.sv", "box/img/plot.p",
                  "box/img/link.sv -> ../target.sv", "box/img/folder -> ../sig"});
    }
    ~CacheStart() override { linux_host::SetPrintSink({}); }
    void AddAll() {
        for (const char* dir : {"T:\\box\\sig", "T:\\box\\img", "T:\\own"})
            ovAddDir(path, U(dir), ovDirAddAtEnd);
    }
    std::string Answers() {
        std::vector<std::string> all;
        for (const char* name : {"plot", "@plot\\draw", "gfx\\fill", "link", "own", "nothing"}) {
            ovDir dir;
            ustring file;
            ovFindFirstFileVisibleToFile(path, u"T:\\box\\sig\\x.sv", U(name), nullptr, &dir, file);
            all.push_back(N(file));
        }
        return Join(all);
    }
};

TEST_F(CacheStart, NeedsNothingOfTheToolboxAndThenNoSystemCall) {
    Open(u"T:\\box");
    AddAll();
    ovWritePathToCacheFile(path, "T:\\cache.xml");
    const std::string expected = Answers();
    EXPECT_EQ("T:\\box\\sig\\private\\plot.p | T:\\box\\sig\\@plot\\draw.sv | T:\\box\\img\\+gfx\\fill.sv | "
              "T:\\box\\img\\link.sv | T:\\own\\own.sv | ",
              expected);
    Close();

    // In the storage layer's mode the accessibility of a path's folder is still asked of the disk.
    tree.Rename("box", "elsewhere");
    tree.Add({"box/sig/", "box/img/", "box/img/link.sv"});
    Open(u"T:\\box");
    ovUseToolboxCache(path, u"T:/cache.xml", u"T:\\box", false);
    ASSERT_TRUE(ovInToolboxCacheMode());
    linux_host::ResetCounters();
    AddAll();
    EXPECT_EQ(expected, Answers()); // looks once at each item of unknown kind
    EXPECT_EQ(1u, linux_host::GetCounters().listings) << "T:\\own, and nothing under the prefix";
    ovRefreshAllDirectories(path, ovRefreshCheck);
    EXPECT_EQ(expected, Answers());
    const auto askStrictly = [&] {
        // From here on any call but read, write and exit kills the process.
        if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT) != 0)
            ::_exit(2);
        bool same = true;
        for (int i = 0; i < 1000; ++i)
            same = same && Answers() == expected;
        ::syscall(SYS_exit, same ? 0 : 1);
    };
    if (!isSanitized)
        EXPECT_EXIT(askStrictly(), testing::ExitedWithCode(0), "");
    ovRevertFromToolboxCache(path);
}

} // namespace
