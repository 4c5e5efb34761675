#include "support/path_fixture.hpp"

#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

namespace vfs = foundation::storage::vfs;

class Paths : public PathFixture {};

TEST_F(Paths, AreFoundByNameAsLongAsTheyAreInService) {
    EXPECT_TRUE(*ovLookupPath("main") == *path && *ovLookupPath(u"main") == *path);
    EXPECT_TRUE(ovLookupPath("Main") == nullptr);
    EXPECT_TRUE(ovCreatePath(0, "main") == nullptr);
    EXPECT_EQ(MessageText('E', "cannotConstructPathDuplicate", {u"main"}), TakeMessages());
    ovEnvironmentFcns* saved = ovGetEnvironmentFcns();
    ovSetMessageFcns(nullptr, nullptr, nullptr);
    EXPECT_TRUE(ovCreatePath(0, "main") == nullptr);
    ovReturnEnvironmentFcns(saved);
    EXPECT_EQ("", TakeMessages()) << "silence for a while";
    EXPECT_TRUE(ovCreatePath(0, "main") == nullptr);
    EXPECT_NE("", TakeMessages());
    EXPECT_EQ("C:\\cwd", PathText(path)) << "the first path stays as it is";

    ovRemovePath(path);
    EXPECT_TRUE(ovLookupPath("main") == nullptr);
    ovPath again = NewPath("main");
    EXPECT_TRUE(again != nullptr) << "the name is free although a handle holds the old path";
    ovRemovePath(path), ovRemovePath(ovPath()); // silent
    path = again;
    Listen();
    path = again = ovPath();
    EXPECT_EQ("PathRemoved", TakeEvents()) << "it goes with its last handle";
    EXPECT_TRUE(ovLookupPath("main") == nullptr);
}

TEST_F(Paths, OwnTheProcessDirectoryOnlyIfCreatedFirst) {
    EXPECT_TRUE(owner->IsProcessCWDOwner());
    EXPECT_FALSE(path->IsProcessCWDOwner());
    owner = ovPath();
    EXPECT_FALSE(ovCreatePath(0, "third")->IsProcessCWDOwner()) << "nobody takes over";
    EXPECT_FALSE(ovTerminate()) << "paths were in service";
    EXPECT_TRUE(ovTerminate());
    EXPECT_FALSE(path->IsValid());
    EXPECT_TRUE(ovCreatePath(0, "fourth")->IsProcessCWDOwner()) << "the registry was empty again";
}

TEST_F(Paths, SurviveACallbackThatRemovesThemWhileTheyAreRemoved) {
    ovPath other = NewPath("other");
    ovRegisterPathInterest(path, [&](ovEventType event, ovDir) {
        if (event == ovEventPathRemoved) {
            ovRemovePath(path), ovRemovePath(other);
            path = other = ovPath();
        }
    });
    EXPECT_FALSE(ovTerminate());
    EXPECT_TRUE(ovTerminate());
}

TEST_F(Paths, FreezeByPrefixOfCharacters) {
    disk.Put("C:", "tool/ { @C/ } toolbox/ Tool/");
    const auto frozen = [&](ovCaseSensitivity rule, const char16_t* prefix) {
        ovPath made = NewPath("frozen", rule, prefix);
        std::vector<std::string> names;
        for (const char* name : {"C:\\tool", "C:\\toolbox", "C:\\Tool", "C:\\cwd"}) {
            ovDir dir = ovAddDir(made, name, ovDirAddAtEnd);
            if (dir->GetState() == DirFrozen)
                names.push_back(name + 3);
            for (const PathClassDirItemInfo* child : dir->GetClassDirs())
                EXPECT_EQ(dir->GetState(), child->GetState()) << "what is below follows";
        }
        return Join(names, " ");
    };
    EXPECT_EQ("", frozen(ovCaseSensitive, nullptr));
    EXPECT_EQ("tool toolbox", frozen(ovCaseSensitive, u"C:\\tool"));
    EXPECT_EQ("tool toolbox Tool cwd", frozen(ovCaseSensitive, u""));
    EXPECT_EQ("tool toolbox", frozen(ovCaseInsensitive, u"c:\\TOOL")) << "and Tool is on the path already";
    EXPECT_EQ(u"", *ovCreatePath(0, "plain")->GetPreFrozenPrefix());
}

TEST_F(Paths, NeedAllFiveHooks) {
    ovPath replaced = NewPath("replaced");
    EXPECT_TRUE(ovSetDefaultIOFcns(nullptr, nullptr, nullptr, nullptr, nullptr)) << "nothing is taken away";
    const auto otherExists = [](ovPath, const ustring&) { return true; };
    EXPECT_FALSE(replaced->DirExists(u"C:\\nowhere"));
    EXPECT_TRUE(ovSetDefaultIOFcns(nullptr, nullptr, nullptr, otherExists, nullptr));
    EXPECT_FALSE(replaced->DirExists(u"C:\\nowhere")) << "a path keeps its copy";
    EXPECT_TRUE(NewPath("new")->DirExists(u"C:\\nowhere"));
    ovUpdatePathArrayDefaultIOFcns();
    EXPECT_TRUE(replaced->DirExists(u"C:\\nowhere"));

    const auto time = [](ovPath, const ustring&) { return 42L; };
    EXPECT_TRUE(ovSetIOFcns(replaced, nullptr, nullptr, nullptr, nullptr, time));
    EXPECT_EQ(42, replaced->GetFileTime(u"x"));
    ovSetIOFcns(
        replaced, nullptr, nullptr, nullptr, [](ovPath, const ustring&) { return false; }, nullptr);
    EXPECT_EQ(0, replaced->GetFileTime(u"x")) << "null means the default, not what was there";

    const auto isNull = [](ovPath asked, const ustring&) { return asked == nullptr ? 1L : 0L; };
    ovSetIOFcns(path, nullptr, nullptr, nullptr, nullptr, isNull);
    EXPECT_EQ(0, path->GetFileTime(u"x"));
    ovRemovePath(path);
    EXPECT_EQ(1, path->GetFileTime(u"x")) << "a removed path is not handed out any more";
}

TEST(PathsWithoutHooks, CannotBeCreated) {
    // Runs in a process of its own under CTest; together with other cases the hooks are there already.
    if (ovSetDefaultIOFcns(nullptr, nullptr, nullptr, nullptr, nullptr))
        GTEST_SKIP() << "hooks have been set in this process";
    static std::string message;
    ovSetMessageFcns([](const char* text) { message = text; }, nullptr, nullptr);
    EXPECT_TRUE(ovCreatePath(0, "main") == nullptr);
    EXPECT_EQ(N(fl::i18n::message_text({"SORVEN:ovsel", "cannotConstructPathNoIOFunctions", {}},
                                       fl::i18n::Locale::global())),
              message);
    EXPECT_FALSE(ovSetDefaultIOFcns(&FakeDisk::Read, &FakeDisk::Accessibility, &FakeDisk::Reserved,
                                    &FakeDisk::Exists, nullptr));
    EXPECT_TRUE(ovSetDefaultIOFcns(nullptr, nullptr, nullptr, nullptr, &FakeDisk::FileTime));
    ovSetMessageFcns(nullptr, nullptr, nullptr);
}

TEST(FileSystems, AreNamedByTheStartOfAName) {
    for (const char* row : {R"(C:\dir | C:)", R"(C:abc\def | C:abc)", "C: | ", "C:a | C:",
                            R"(\\server | \\server)", R"(\\s\share\d | \\s)", "abc | ", R"(\abc | )"}) {
        const std::string name = Fields(row)[0], fileSystem = Fields(row)[1];
        ustring out = u"old";
        EXPECT_EQ(fileSystem != "", FileSystemTable::NameOf(out, U(name))) << row;
        EXPECT_EQ(fileSystem, N(out)) << row;
    }
}

TEST_F(Paths, MakeFoldersAndFilesOfTheStorageLayer) {
    const auto location = vfs::toAbsoluteIRI(u"file", u"C:\\A");
    if (IsVFSMode()) {
        const PathDirItemInfo::Owner record(new (*path) PathDirItemInfo(*path, location, -1, ovDirTypePath));
        EXPECT_EQ("C:\\A A", N(record->GetStoredFullName()) + " " + N(ustring(record->GetName())));
    }
    vfs::Folder folder, sub;
    vfs::File file;
    path->GetFolderByIRI(folder, location), path->GetFolder(sub, folder, u"b"),
        path->GetFile(file, sub, u"c.sv");
    EXPECT_EQ(u"C:\\A\\b\\c.sv", vfs::fromAbsoluteIRI(file.getLocation()));
}

TEST_F(Paths, ShareARowForEachFileSystem) {
    disk.Put("C:\\A", "@C/");
    disk.Put("c:\\B", "");
    disk.Put("\\\\srv\\share", "");
    const auto row = [](const ovDir& dir) { return dir->GetFileSystemIndex(); };
    const ovDir a = Add("C:\\A");
    EXPECT_EQ(row(a), row(Find("C:\\A\\@C")));
    EXPECT_NE(row(a), row(Add("c:\\B")));
    EXPECT_EQ(u"\\\\srv", path->GetFileSystemEntry(row(Add("\\\\srv\\share"))).name);
    EXPECT_EQ(u"Unknown File System", path->GetFileSystemEntry(1).name);
    ovPath blind = NewPath("blind", ovCaseInsensitive);
    EXPECT_EQ(row(ovAddDir(blind, "C:\\A", ovDirAddAtEnd)), row(ovAddDir(blind, "c:\\B", ovDirAddAtEnd)));

    platform.fullPaths[u"ab"] = u"D:\\ab";
    PathDirItemInfo::Owner rooted(new (*path) PathDirItemInfo(*path, u"ab", u"ab", -1, ovDirTypePath));
    EXPECT_EQ(u"D:", path->GetFileSystemEntry(rooted->GetFileSystemIndex()).name);
    EXPECT_EQ(u"D:\\ab", rooted->GetResolvedName());
    PathDirItemInfo::Owner lost(new (*path) PathDirItemInfo(*path, u"cd", u"cd", -1, ovDirTypePath));
    EXPECT_EQ(1, lost->GetFileSystemIndex());
}

} // namespace
