#include "cache_fixture.hpp"

#include <functional>
#include <sstream>

#include "ovsel/cache/cachehooks.hpp"
#include "ovsel/reading/diritemsiteratorfactory.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"
#include "ovsel/reading/vfsmode.hpp"

using namespace Quorrant::ovsel;
namespace vfs = foundation::storage::vfs;

TEST_F(Cache, AnswersThePathsHooks) {
    disk.Put("C:", "T/ { unlisted/ { u.sv } disk.d/ } other/ { o.sv }");
    disk.times = {{"C:\\T\\v.d\\x", 5}, {"C:\\other\\o.sv", 6}};
    Use("<Q>\n <D name=\"a\">\n  <D name=\"a/@K\">\n   <C name=\"K.sv\"/>\n  </D>\n  <N name=\"x.p\"/>\n"
        "  <U name=\"u\"/>\n  <d name=\"s\"/>\n </D>\n <D name=\"v.d\">\n </D>\n</Q>\n");
    ASSERT_TRUE(ovInToolboxCacheMode());
    disk.listings = disk.existenceQueries = disk.timeQueries = 0;
    Add("C:\\T\\a");
    EXPECT_EQ("-1 T\\a\\x.p", Everywhere("x.p"));
    EXPECT_EQ(0, disk.listings + disk.existenceQueries + disk.timeQueries) << "the disk is left alone";

    const std::tuple<const char*, bool, int, long> rows[] = {
        {"C:\\T\\a", true, 1, 0},
        {"C:\\T\\a\\@K", true, 1, 0},
        {"C:\\T\\a\\@Nowhere", true, 1, 0}, // by its form
        {"D:\\private", true, 1, 0},
        {"D:\\Private", false, 4, 0},
        {"C:\\T\\v.d", false, 4, 0},    // listed, but a dot makes it a file
        {"C:\\T\\disk.d", false, 1, 0}, // on the disk, but the dot forbids to look
        {"C:\\T\\v.d\\x", false, 4, 5}, // its directory is not believed either
        {"C:\\T\\a\\x.p", false, 4, 0}, // a file of the cache does not change
        {"C:\\T\\unlisted", true, 1, 0},
        {"C:\\other\\o.sv", false, 4, 6},
        {"C:\\T\\CachePath", true, 1, 0}, // the name of the tree's root
        {"C:\\t\\a", false, 4, 0},        // case counts on this path
        {"C:\\T", true, 1, 0},
    };
    for (const auto& [name, directory, accessibility, time] : rows) {
        EXPECT_EQ(directory, CacheIsDirectory(path, U(name))) << name;
        EXPECT_EQ(accessibility, CacheGetAccessibility(path, U(name))) << name;
        EXPECT_EQ(time, CacheGetFileTime(path, U(name))) << name;
    }
    EXPECT_TRUE(CacheIsDirectory(NewPath("loose", ovCaseInsensitive), u"c:\\t\\A"));
    EXPECT_TRUE(CacheIsDirectory(ovPath(), u"C:\\T\\a")) << "a path that is going is no reason to fail";
    Add("C:\\T\\unlisted"), Add("C:\\other");
    EXPECT_EQ("", TakePrinted()) << "only who asks is told";
    ovRevertFromToolboxCache(path);
    EXPECT_FALSE(ovInToolboxCacheMode() || path->DirExists(u"D:\\private")) << "the default hooks are back";
}

TEST_F(Cache, TellsWhatItIsAskedToTell) {
    std::string told;
    const auto hear = [&](const std::string& of) { told += "# " + of + "\n" + TakePrinted(); };
    folder.Write("cache.xml", "<Q><D name=\"a\"><D name=\"a/b\"></D></D><D name=\"c\"></D></Q>");
    ovUseToolboxCache(path, U(FileName()), u"C:\\T", true);
    hear("a cache that is to be told of");
    CacheReadDirectory(path, u"C:\\T\\nowhere", nullptr);
    hear("a folder that is not in it");
    ovRevertFromToolboxCache(path);
    hear("its end");
    ovEnableToolboxCacheDiagnosticStatusReport(true);
    ovUseToolboxCache(path, u"C:\\missing", u"C:\\T", false);
    EXPECT_FALSE(ovInToolboxCacheMode());
    hear("with reports: no file");
    Use();
    hear("with reports: a file");
    ovEnableToolboxCacheDiagnosticTrace(true);
    for (const char* name : {"C:\\T\\a\\b", "C:\\T\\a\\b", "C:\\T\\c", "C:\\T\\x", "D:\\x", "C:\\T\\a\\b.c"})
        CacheIsDirectory(path, U(name));
    CacheGetAccessibility(path, u"C:\\T\\b.c");
    CacheReadDirectory(path, u"D:\\x", nullptr);
    hear("searches; the third compares once in vain from the last hit, and then four times from the root");
    ovEnableToolboxCacheDiagnosticTrace(false);
    ovRevertFromToolboxCache(path);
    hear("with reports: the end");
    EXPECT_EQ(Told("reports"), told.replace(told.find(FileName()), FileName().size(), "FILE"));
    const auto disable = [&] {
        ovDisableToolboxCache();
        const bool still = ovInToolboxCacheMode();
        ovRevertFromToolboxCache(path);
        TakePrinted();
        Use();
        const bool ignored = TakePrinted() == "Request to use Toolbox Cache received and ignored.\n";
        std::exit(still && ignored && !ovInToolboxCacheMode() ? 0 : 1);
    };
    Use();
    EXPECT_EXIT(disable(), testing::ExitedWithCode(0), "");
}

TEST_F(Cache, IsBelievedForWhatLiesUnderItsPrefixOnly) {
    disk.Put("C:", "abc/ { own.sv } T/ { a/ { own.sv } ab/ { own.sv } }");
    folder.Write("cache.xml",
                 "<Quorrant><D name=\"abc\"><F name=\"x.sv\"/></D><D name=\"bc\"><F name=\"y.sv\"/></D>"
                 "<D name=\"a\"><F name=\"z.sv\"/></D><D name=\"b\"><F name=\"y.sv\"/></D></Quorrant>");
    const struct {
        const char *prefix, *dir, *file;
    } rows[] = {{"C:", "C:\\abc", "x.sv"},          {"C:\\T", "C:\\T\\a", "z.sv"},
                {"C:/T", "C:\\T\\a", "own.sv"},     {"C:\\T\\", "C:\\T\\a", "own.sv"},
                {"C:\\T\\", "C:\\T\\ab", "own.sv"}, {"C:\\T\\a", "C:\\T\\ab", "own.sv"}};
    for (const auto& row : rows) {
        Use("", U(row.prefix).c_str());
        disk.accessibility[row.dir] = ovDirAccessible;
        const ovDir dir = Add(row.dir);
        const bool separatorsMeet = IsVFSMode() && row.prefix[2] == '/'; // locations have one form
        EXPECT_EQ("-1 " + std::string(row.dir) + "\\" + (separatorsMeet ? "z.sv" : row.file),
                  Search(ovCreateDirSearchIterator(dir, u"", nullptr, ovCaseOfPath)).All())
            << row.prefix;
        ovRevertFromToolboxCache(path);
        ovRemoveDir(dir);
    }
}

TEST_F(Cache, DoesNotMultiply) {
    const std::function<int(const ovDir&)> count = [&](const ovDir& dir) {
        int all = 1;
        for (ovDir child = ovGetPackageDirs(dir, dir); ovGetDirType(child) != ovDirTypeNull;
             child = ovGetPackageDirs(dir, child))
            all += count(child);
        return all;
    };
    std::string text = "<Quorrant>", name = "a";
    for (int level = 0; level < 20; ++level, name += "/+pp")
        text += "<D name=\"" + name + "\">";
    for (int level = 0; level < 20; ++level)
        text += "<d name=\"+pp\"/><d name=\"+pp\"/><d name=\"+Pp\"/><d name=\"+PP\"/></D>";
    disk.accessibility["C:\\T\\a"] = ovDirAccessible;
    for (const ovCaseSensitivity rule : {ovCaseSensitive, ovCaseInsensitive}) {
        path = NewPath("asked", rule);
        Use(text + "</Quorrant>");
        // The spellings that the file has no directory for come from the disk, and are files there.
        EXPECT_GE(21 + 2 * 20, count(Add("C:\\T\\a")));
        ovRevertFromToolboxCache(path);
        ovRemovePath(path);
    }
}

TEST_F(Cache, HandsOutEachSpecialDirectoryOnce) {
    if (IsVFSMode())
        GTEST_SKIP() << "nothing is handed out to hooks";
    Use("<Q><D name=\"a\"><d name=\"@K\"/><F name=\"x\"/><d name=\"@K\"/><C name=\"y\"/><U name=\"private\"/>"
        "<N name=\"@K\"/><U name=\"private\"/></D><D name=\"b\"><d name=\"+pp\"/><d name=\"+PP\"/></D>"
        "<D name=\"c\"><U name=\"private\"/><U name=\"private\"/></D></Q>");
    const auto listing = [&](const ustring& name) {
        unsigned short* words = nullptr;
        char16_t* const names = Quorrant::ovsel::CacheReadDirectory(path, name, &words);
        std::ostringstream text;
        const unsigned short* word = words;
        for (const char16_t* next = names; *next != 0; next += ustring(next).size() + 1)
            text << N(next) << ':' << std::hex << *word++ << ' ';
        HostFree(names), HostFree(words);
        return text.str();
    };
    EXPECT_EQ("@K:4000 x:8000 y:8001 private:0 @K:8002 ", listing(u"C:\\T\\a"));
    EXPECT_EQ("+pp:4000 +PP:4000 ", listing(u"C:\\T\\b"));
    EXPECT_EQ("private:0 ", listing(u"C:\\T\\c"));
    path = NewPath("without case", ovCaseInsensitive);
    EXPECT_EQ("+pp:4000 ", listing(u"C:\\t\\B"));
}

TEST_F(Cache, SurvivesAPrintFunctionThatMeddles) {
    folder.Write("small.xml", "<Q></Q>");
    const std::function<void()> meddlings[] = {
        [&] { ovRevertFromToolboxCache(path); },
        [&] { ovUseToolboxCache(path, U("C:" + folder.Path("small.xml")), u"C:\\T", false); },
        [&] { CacheIsDirectory(path, u"C:\\T\\a"); },
    };
    for (const auto& meddle : meddlings)
        for (const char* at : {"Cache-Cached", "  Success"}) {
            Use("<Q><D name=\"a\"></D><D name=\"c\"><F name=\"in_c.sv\"/></D></Q>");
            CacheIsDirectory(path, u"C:\\T\\c");
            bool done = false;
            ovEnableToolboxCacheDiagnosticTrace(true);
            linux_host::SetPrintSink([&](std::string_view words) {
                if (words.find(at) != words.npos && !std::exchange(done, true))
                    meddle();
            });
            char16_t* names = CacheReadDirectory(path, u"C:\\T\\c", nullptr);
            EXPECT_TRUE(done && ustring(names) == u"in_c.sv") << at;
            HostFree(names);
            linux_host::SetPrintSink({});
            ovEnableToolboxCacheDiagnosticTrace(false);
        }
}

TEST_F(Cache, FeedsTheStorageLayersSources) {
    disk.Put("C:\\T\\disk", "f.sv");
    storage->broken = {"C:\\T\\bad"};
    DirItemsIteratorFactory factory(storage.Reference(), false, false);
    const auto at = [](const char* name) { return vfs::toAbsoluteIRI(u"file", U(name)); };
    const auto items = [&](const char* name) {
        std::vector<std::string> texts;
        const auto source = factory.CreateDirItemsIterator(at(name));
        for (source->First(); !source->IsDone(); source->Next()) {
            const DirItemInfo& item = source->CurrentItem();
            texts.push_back(N(ustring(item.name)) + ":" + std::to_string(item.kind) +
                            (item.confirmed ? "" : "?") +
                            (item.fileKind ? "k" + std::to_string(item.fileKind) : ""));
        }
        return Join(texts, " ");
    };
    CachedDirMap map;
    map[u"dir"] = {{u"dir/@k", u".git", u"plain", u"v1.2"}, {u"f.sv"}, {u"c.sv"}, {u"n.sv"}, {u"u"}};
    factory.InstallCachedDirItems(map, at("C:\\T"));
    const auto running = factory.CreateDirItemsIterator(at("C:\\T\\dir"));
    running->First();
    factory.InstallCachedDirItems(map, at("C:\\T"));
    EXPECT_EQ(u"@k", running->CurrentItem().name) << "a source outlives a change of the contents";
    for (const char* name : {"C:\\T\\dir", "c:\\t\\dir"}) // the root without case
        EXPECT_EQ("@k:3 plain:1 v1:1 f.sv:2 c.sv:2k1 n.sv:2k2 u:2?", items(name));
    EXPECT_EQ("", items("C:\\T\\DIR")) << "names beneath it exactly";
    EXPECT_EQ("f.sv:2", items("C:\\T\\disk")) << "what the cache does not list is read";
    EXPECT_EQ("", items("C:\\T")) << "the root has no name under itself";

    for (const char* row : {"dir 1", "dir\\plain 1", "dir\\Plain 0", "disk 1", "bad 0", "f.sv 0"}) {
        const std::string name(row, std::strlen(row) - 2);
        EXPECT_EQ(row, name + (factory.FolderExists(at(("C:\\T\\" + name).c_str())) ? " 1" : " 0"));
    }
    EXPECT_THROW(factory.FolderExists(at("C:\\")), std::out_of_range);
    factory.ClearCachedDirItems();
    EXPECT_FALSE(factory.FolderExists(at("C:\\")));
    EXPECT_EQ("", items("C:\\T\\dir"));
}
