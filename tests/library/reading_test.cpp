#include "support/path_fixture.hpp"

#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/reading/dirreader.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

class Reading : public PathFixture {};

TEST_F(Reading, AsksTheDiskAboutSpecialNamesOnly) {
    disk.Put("C:\\L", "a b c sub/ @C/ +p/ private/ d?");
    disk.existenceQueries = disk.listings = 0;
    const auto count = [&](const ustring& dir) {
        DirReader reader(*path, dir);
        int entries = 0;
        for (reader.First(); !reader.IsDone(); reader.Next())
            ++entries;
        return entries;
    };
    EXPECT_EQ(8, count(u"C:\\L"));
    EXPECT_EQ(3, disk.existenceQueries);
    EXPECT_EQ("C:\\L\\private", disk.lastQuery);
    EXPECT_EQ(1, disk.listings);
    EXPECT_EQ(0, count(u"C:\\nowhere")) << "the hook gives nothing";
}

TEST_F(Reading, TakesTheModeFromTheEnvironmentOnce) {
    // The mode of this process has been asked for long ago.
    platform.environment["PATH_MGR_MODE"] = "vfs";
    platform.calls.clear();
    EXPECT_FALSE(IsVFSMode());
    EXPECT_EQ(0, platform.calls["GetEnvironment"]);
}

class Records : public PathFixture {
  protected:
    /// All that a directory holds, in the order of its containers: files, packages, classes, private, plain.
    std::string Contents(const ovDir& dir) {
        std::vector<std::string> names;
        for (std::int32_t group = 0; group <= DirChildGroupCount; ++group)
            for (std::int32_t i = 0; const PathItemInfo* item = dir->GetItem(group, i); ++i) {
                ustring name;
                item->AppendName(name);
                names.push_back(N(name));
            }
        return Join(names, " ");
    }
    std::string Reload(const ovDir& dir, const std::string& entries) {
        disk.Put(N(ovGetDirName(dir)), entries);
        dir->Reload({ovRefreshReload, false, false});
        dir->GetPathDir()->PlacePendingItems();
        CheckIndex();
        return Contents(dir);
    }
};

TEST_F(Records, GiveFilesTheirKindAndForgetItAtAReload) {
    disk.Put("C:\\A", "c.sv:C n.sv:N private/ { c.sv:C f.sv }");
    const ovDir dir = Add("C:\\A");
    const ovDir hidden = ovGetPrivateDir(dir);
    const auto kinds = [&] {
        std::string text;
        for (const ovDir& d : {dir, hidden})
            for (const PathFileItemInfo* file : d->GetFiles())
                text += std::to_string(file->GetFileKind());
        return text;
    };
    EXPECT_EQ("1222", kinds()) << "a private file defines no class";
    Reload(dir, "c.sv:C n.sv:N new.sv:C private/");
    Reload(hidden, "c.sv:C new.sv:C");
    EXPECT_EQ("00102", kinds());
}

TEST_F(Records, SurviveReloadsAsTheSameObjects) {
    disk.Put("C:\\A", "m.sv c.sv x.sv @K/ @L/ sub/ private/");
    const ovDir dir = Add("C:\\A");
    const PathItemInfo* c = dir->GetItem(DirChildFile, 1);
    Listen();
    EXPECT_EQ("c.sv x.sv b.sv +q @K new", Reload(dir, "b.sv b.sv c.sv new/ x.sv @K/ +q/"));
    EXPECT_EQ("Added C:\\A\\+q | Removed C:\\A\\@L | Removed C:\\A\\private | Loaded C:\\A", TakeEvents());
    EXPECT_EQ(c, dir->GetItem(DirChildFile, 0));
    EXPECT_EQ("C.sv", Reload(dir, "C.sv")) << "another spelling is another file";
}

TEST_F(Records, SplitNamesAtTheLastDotAndKnowTheirSentinel) {
    disk.Put("C:\\A", "foo.;x a.b/");
    const ovDir dir = Add("C:\\A");
    EXPECT_EQ("foo. a.b", Contents(dir)) << "an extension that begins with the mark reads as empty";
    EXPECT_EQ(u".b", ustring(dir->GetSubDirs().at(0)->GetExtension())) << "with its dot, unlike a file's";
    EXPECT_FALSE(path->GetNullDir()->MatchesDiskName(u""));
    Reload(dir, "@K/ +K/");
    const auto matching = [&](const char16_t* name) {
        return std::string(dir->GetClassDirs().at(0)->MatchesDiskName(name) ? "class " : "") +
               (dir->GetPackageDirs().at(0)->MatchesDiskName(name) ? "package " : "");
    };
    EXPECT_EQ("class package ", matching(u"@K") + matching(u"+K") + matching(u"@k") + matching(u"+k") +
                                    matching(u"K") + matching(u""));
}

} // namespace
