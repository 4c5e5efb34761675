#include "support/path_fixture.hpp"

#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/reading/dirreader.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

class Reading : public PathFixture {
  protected:
    /// Every entry as "name kind [file kind] [?]", `?` for unconfirmed.
    std::string Read(const std::string& dir) {
        DirReader reader(*path, U(dir));
        std::vector<std::string> entries;
        for (reader.First(); !reader.IsDone(); reader.Next()) {
            const auto& [name, kind, confirmed, fileKind] = reader.CurrentItem();
            entries.push_back(N(name) + " " + std::to_string(kind) +
                              (fileKind ? "/" + std::to_string(fileKind) : "") + (confirmed ? "" : "?"));
        }
        return Join(entries);
    }
};

TEST_F(Reading, ClassifiesByAttributeThenByNameThenByLook) {
    const std::pair<const char*, const char*> rows[] = {
        {"", ""},
        {".=4000 ..=4000 .git=4000 .x", ""},
        {"a.sv b.sv:C c.sv:N d.sv=8003", "a.sv 2 | b.sv 2/1 | c.sv 2/2 | d.sv 2/1"},
        {"sub/ a.b/ @x.y/ Private/ @/", "sub 1 | a.b 1 | @x.y 1 | Private 1 | @ 1"},
        {"@x=8000 +x=8000 private=8000", "@x 2 | +x 2 | private 2"},
        {"@C/ +p/ private/", "@C 3 | +p 4 | private 5"},
        {"@gone=4000 +gone=4000", "@gone 2? | +gone 2?"},
        {"plain? sub? @C? @new? private?", "plain 2? | sub 2? | @C 3 | @new 2? | private 5"},
        {".x=4000 a:N .y b=4000 .z=8001 c", "a 2/2 | b 1 | c 2"},
        {"q=0001 r=0002", "q 2? | r 2?"},
    };
    for (const auto& [entries, result] : rows) {
        disk.Put("C:\\L", entries);
        EXPECT_EQ(result, Read("C:\\L")) << entries;
    }
    disk.Put("C:\\M", "@C/ +p/ private/ sub/ f.sv");
    disk.withAttributes = false;
    EXPECT_EQ("@C 3 | +p 4 | private 5 | sub 2? | f.sv 2?", Read("C:\\M"));
}

TEST_F(Reading, AsksTheDiskAboutSpecialNamesOnly) {
    disk.Put("C:\\L", "a b c sub/ @C/ +p/ private/ d?");
    disk.existenceQueries = disk.listings = 0;
    Read("C:\\L");
    EXPECT_EQ(3, disk.existenceQueries);
    EXPECT_EQ("C:\\L\\private", disk.lastQuery);
    EXPECT_EQ(1, disk.listings);
    EXPECT_EQ("", Read("C:\\nowhere")) << "the hook gives nothing";
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
    static std::string FullName(const PathItemInfo& item) {
        ustring name;
        item.GetFullName(name);
        return N(name);
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
    const auto kinds = [](const ovDir& d) {
        std::string text;
        for (const PathFileItemInfo* file : d->GetFiles())
            text += std::to_string(file->GetFileKind());
        return text;
    };
    EXPECT_EQ("12", kinds(dir));
    EXPECT_EQ("22", kinds(hidden)) << "a private file defines no class";
    Reload(dir, "c.sv:C n.sv:N new.sv:C private/");
    EXPECT_EQ("001", kinds(dir));
    Reload(hidden, "c.sv:C new.sv:C");
    EXPECT_EQ("02", kinds(hidden));
}

TEST_F(Records, SurviveReloadsAsTheSameObjects) {
    disk.Put("C:\\A", "m.sv c.sv x.sv @K/ @L/ sub/ private/");
    const ovDir dir = Add("C:\\A");
    const PathItemInfo* c = dir->GetItem(DirChildFile, 1);
    Listen();
    EXPECT_EQ("c.sv x.sv b.sv +q @K new", Reload(dir, "b.sv c.sv new/ x.sv @K/ +q/"));
    EXPECT_EQ("Added C:\\A\\+q | Removed C:\\A\\@L | Removed C:\\A\\private | Loaded C:\\A", TakeEvents());
    EXPECT_EQ(c, dir->GetItem(DirChildFile, 0));
    EXPECT_EQ("C.sv", Reload(dir, "C.sv")) << "another spelling is another file";
    disk.dirs.erase("C:\\A");
    dir->Reload({ovRefreshReload, false, false});
    EXPECT_EQ("", Contents(dir)) << "gone from the disk: empty, and still on the path";
    EXPECT_EQ("C:\\cwd; C:\\A", PathText(path));
}

TEST_F(Records, FindFilesByStemOrByWholeName) {
    disk.Put("C:\\A", "foo.sv foo.p foo FOO.sv a. a bar.sv foo.longer");
    const ovDir dir = Add("C:\\A");
    for (const char* row :
         {"foo | 1 | foo.sv foo.p foo foo.longer ", "foo | 0 | foo.sv foo.p foo FOO.sv foo.longer ",
          "foo.p | 1 | foo.p ", "foo.SV | 0 | foo.sv FOO.sv ", "foo.long | 1 | ", "a. | 1 | a. a ",
          " | 1 | foo.sv foo.p foo FOO.sv a. a bar.sv foo.longer "}) {
        std::string names;
        const PathFileItemInfo* file = nullptr;
        while ((file = dir->FindNextFile(file, U(Fields(row)[0]), Fields(row)[1] == "1"))) {
            ustring name;
            file->AppendName(name);
            names += N(name) + " ";
        }
        EXPECT_EQ(Fields(row)[2], names) << row;
    }
    disk.Put("C:\\B", "foo.sv");
    EXPECT_EQ(nullptr, dir->FindNextFile(Add("C:\\B")->GetFiles()[0], u"foo", true)) << "a file of elsewhere";
}

TEST_F(Records, SplitNamesAtTheLastDot) {
    // Disk name, name, extension or null, and a name near it that is not the disk name.
    for (const char* row :
         {"foo.sv | foo | sv | foo.s", "foo.abcd | foo | abcd | foo.abcde",
          "foo.abcde | foo | abcde | foo.abcd", "foo | foo | null | foo.", "foo. | foo |  | foo",
          "a.b.c | a.b | c | a.b", "Foo.sv | Foo | sv | foo.sv", "a.. | a. |  | a."}) {
        const std::vector<std::string> fields = Fields(row);
        disk.Put("C:\\A", fields[0]);
        const ovDir dir = Add("C:\\A");
        const PathFileItemInfo* file = dir->GetFiles().at(0);
        const std::string extension = file->GetExtension() ? N(file->GetExtension()) : "null";
        EXPECT_EQ(fields[1] + " | " + extension, N(ustring(file->GetName())) + " | " + fields[2]) << row;
        EXPECT_TRUE(file->MatchesDiskName(U(fields[0])) && !file->MatchesDiskName(U(fields[3]))) << row;
        EXPECT_EQ("C:\\A\\" + fields[0], FullName(*file));
        ovRemoveDir(dir);
    }
    disk.Put("C:\\A", "foo.;x a.b/ @C/");
    const ovDir dir = Add("C:\\A");
    EXPECT_EQ("C:\\A\\foo.", FullName(*dir->GetFiles().at(0)))
        << "one that begins with the mark reads as empty";
    EXPECT_EQ(u".b", ustring(dir->GetSubDirs().at(0)->GetExtension())) << "with its dot, unlike a file's";
    const PathClassDirItemInfo& c = *dir->GetClassDirs()[0];
    EXPECT_TRUE(c.MatchesDiskName(u"@C") && !c.MatchesDiskName(u"C") && !c.MatchesDiskName(u""));
    EXPECT_FALSE(path->GetNullDir()->MatchesDiskName(u""));
}

TEST_F(Records, LeaveAShellWhileAHandleHoldsThem) {
    disk.Put("C:\\A", "@C/");
    const ovDir dir = Add("C:\\A");
    ovDir child = Find("C:\\A\\@C");
    Reload(dir, "");
    EXPECT_FALSE(child->IsLinked());
    child = ovDir(); // deletes it; the sanitizer watches
    dir->AddRef(), dir->Release();
    EXPECT_TRUE(ovIsDirHandleValid(dir)) << "a live record does not go with its last handle";
}

TEST_F(Records, HoldTheLastOfTwoPrivateDirectories) {
    disk.Put("C:\\A", "private/ private/ { f.sv }");
    const ovDir dir = Add("C:\\A");
    CheckIndex();
    EXPECT_EQ("f.sv", Contents(ovGetPrivateDir(dir)));
}

} // namespace
