#include "support/path_fixture.hpp"

#include <utility>

#include "ovsel/lookup/ovsearch.hpp"
#include "ovsel/lookup/pathitemiterators.hpp"

namespace {

/// The path of the worked example: C current, A, B.
class SearchFixture : public PathFixture {
  protected:
    SearchFixture() {
        disk.Put("C:\\C", "plot.p");
        disk.Put("C:\\A", "plot.sv @plot/ +gfx/");
        disk.Put("C:\\A\\@plot", "plot.sv draw.sv");
        disk.Put("C:\\A\\+gfx", "plot.sv");
        disk.Put("C:\\B", "plot.sv plot.p private/");
        disk.Put("C:\\B\\private", "plot.sv");
        ovSetCWDName(path, u"C:\\C");
        a = Add("C:\\A"), b = Add("C:\\B");
    }
    std::string Visible(const ovDir& from, const char* name) {
        return Search(ovCreateVisibleSearchIterator(from, U(name), pAndSv, ovCaseOfPath)).All();
    }
    std::string First(const char* asker, const char* name) {
        ovDir dir;
        ustring file = u"old";
        const int match = ovFindFirstFileVisibleToFile(path, U(asker), U(name), pAndSv, &dir, file);
        EXPECT_EQ(match == 0, ovGetDirType(dir) == ovDirTypeNull);
        return std::to_string(match) + " " + N(file);
    }
    const Extensions pAndSv{".p", "sv"};
    ovDir a, b;
};

TEST_F(SearchFixture, AnswersTheWorkedExample) {
    const std::string others =
        "2 C:\\A\\@plot\\plot.sv | 1 C:\\C\\plot.p | 2 C:\\A\\plot.sv | 1 C:\\B\\plot.p | "
        "2 C:\\B\\plot.sv";
    EXPECT_EQ("2 C:\\B\\private\\plot.sv | " + others, Visible(b, "plot"));
    EXPECT_EQ(others, Visible(ovGetNullDir(path), "plot"));
    EXPECT_EQ(others, Visible(ovGetPrivateDir(b), "plot"))
        << "asked from beside the private file, it is out of sight";
    EXPECT_EQ("2 C:\\A\\+gfx\\plot.sv", Visible(b, "gfx/plot"));

    EXPECT_EQ("2 C:\\B\\private\\plot.sv", First("C:\\B\\caller.sv", "plot"));
    EXPECT_EQ("2 C:\\A\\@plot\\plot.sv", First("", "plot"));
    EXPECT_EQ("2 C:\\A\\@plot\\plot.sv", First("C:\\unknown\\caller.sv", "plot"));
    EXPECT_EQ("0 ", First("C:\\B\\caller.sv", "nothing"));
}

TEST_F(SearchFixture, OrdersEveryScope) {
    disk.Put("C:\\C", "plot.p @plot/ private/");
    disk.Put("C:\\C\\@plot", "plot.p");
    disk.Put("C:\\C\\private", "plot.p");
    ovSetCWDName(path, u"C:\\C");
    const Extensions any{"p", "sv"};
    struct {
        const char* scope;
        ovSearch* search;
        const char* result;
    } const rows[] = {
        {"all", ovCreateAllSearchIterator(path, u"plot", any, ovCaseOfPath),
         "1 C:\\C\\plot.p | 2 C:\\A\\plot.sv | 1 C:\\B\\plot.p | 2 C:\\B\\plot.sv | 1 C:\\C\\@plot\\plot.p | "
         "2 C:\\A\\@plot\\plot.sv | 1 C:\\C\\private\\plot.p | 2 C:\\B\\private\\plot.sv"},
        {"path only", ovCreatePathOnlySearchIterator(path, u"plot", any, ovCaseOfPath),
         "2 C:\\A\\plot.sv | 1 C:\\B\\plot.p | 2 C:\\B\\plot.sv | 2 C:\\A\\@plot\\plot.sv | "
         "2 C:\\B\\private\\plot.sv"},
        {"path only, narrow", ovCreatePathOnlySearchIterator(path, owner, "@plot\\plot", any, ovCaseOfPath),
         "2 C:\\A\\@plot\\plot.sv"},
        {"private of none", ovCreatePrivateSearchIterator(a, u"plot", any, ovCaseOfPath), ""},
        {"dir, in its own order", ovCreateDirSearchIterator(b, u"plot", any, ovCaseOfPath),
         "2 C:\\B\\plot.sv | 1 C:\\B\\plot.p"},
        {"dir, the null record", ovCreateDirSearchIterator(ovGetNullDir(path), u"plot", any, ovCaseOfPath),
         ""},
        {"all files", ovCreateAllSearchIterator(path, u"", any, ovCaseOfPath),
         "1 C:\\C\\plot.p | 2 C:\\A\\plot.sv | 2 C:\\B\\plot.sv | 1 C:\\B\\plot.p | 1 C:\\C\\@plot\\plot.p | "
         "2 C:\\A\\@plot\\plot.sv | 2 C:\\A\\@plot\\draw.sv | 1 C:\\C\\private\\plot.p | "
         "2 C:\\B\\private\\plot.sv"},
        {"all visible files", ovCreateVisibleSearchIterator(b, u"", Extensions{"sv"}, ovCaseOfPath),
         "1 C:\\B\\private\\plot.sv | 1 C:\\A\\@plot\\plot.sv | 1 C:\\A\\plot.sv | 1 C:\\B\\plot.sv"},
        {"all methods", ovCreateMethodSearchIterator(path, u"", any, ovCaseOfPath),
         "1 C:\\C\\@plot\\plot.p | 2 C:\\A\\@plot\\plot.sv | 2 C:\\A\\@plot\\draw.sv"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.result, Search(row.search).All()) << row.scope;
}

TEST_F(SearchFixture, FindsDirectories) {
    disk.Put("C:\\plot", "+plot/ private/");
    disk.Put("C:\\plot\\+plot", "@plot/ +plot/");
    disk.Put("C:\\plot\\private", "x.sv");
    disk.Put("C:\\a.b", "");
    Add("C:\\plot"), Add("C:\\a.b");
    const auto dirs = [](ovSearch* search) { return Search(search).AllDirs(); };
    EXPECT_EQ("C:\\plot | C:\\plot\\+plot | C:\\A\\@plot",
              dirs(ovCreateVisibleSearchIterator(b, u"plot", nullptr, ovCaseOfPath)));
    EXPECT_EQ("C:\\plot\\+plot | C:\\A\\@plot | C:\\plot",
              dirs(ovCreateAllSearchIterator(path, u"plot", nullptr, ovCaseOfPath)))
        << "deeper ones are in a package, which the name does not say";
    EXPECT_EQ("C:\\plot\\+plot | C:\\plot\\+plot\\+plot | C:\\plot\\+plot\\@plot",
              dirs(ovCreateAllSearchIterator(path, u"plot\\plot", nullptr, ovCaseOfPath)));
    EXPECT_EQ("C:\\A\\@plot", dirs(ovCreateAllSearchIterator(path, u"@plot", nullptr, ovCaseOfPath)));
    EXPECT_EQ("C:\\B\\private | C:\\plot\\private",
              dirs(ovCreateAllSearchIterator(path, u"private", nullptr, ovCaseOfPath)));
    EXPECT_EQ("C:\\a.b", dirs(ovCreateAllSearchIterator(path, u"a.b", nullptr, ovCaseOfPath)));
}

TEST_F(SearchFixture, LooksForAnotherDirectoryAfterAFile) {
    disk.Put("C:\\foo.bar", "");
    Add("C:\\foo.bar");
    Search search(ovCreateAllSearchIterator(path, u"foo.bar", nullptr, ovCaseOfPath));
    ovDir dir;
    EXPECT_TRUE(ovFindNextDir(search.Get(), &dir));
    EXPECT_EQ("0", search.Step());
    EXPECT_FALSE(ovFindNextDir(search.Get(), &dir)) << "a further dot has joined the name: foo.bar..";
}

TEST_F(PathFixture, SearchesRankExtensions) {
    disk.Put("C:\\E", "foo.p foo.sv foo foo. foo.bar bar.Sv sub/ foo.longext");
    const ovDir dir = Add("C:\\E");
    struct {
        const char* name;
        Extensions list;
        const char* sensitive;
    } const rows[] = {
        {"foo", {}, "-1 foo.p | -1 foo.sv | -1 foo | -1 foo. | -1 foo.bar | -1 foo.longext"},
        {"foo", {"sv", "p"}, "2 foo.p | 1 foo.sv"},
        {"foo", {".p"}, "1 foo.p"},
        {"foo", {"", "sv"}, "2 foo.sv | 1 foo | 1 foo."},
        {"foo.bar", {"sv"}, ""},
        {"foo.bar", {"sv", ""}, "2 foo.bar"},
        {"foo.p", {"sv", "p"}, "2 foo.p"},
        {"foo.", {"p"}, "1 foo.p"},
        {"bar.sv", {}, ""},
    };
    for (const auto& row : rows) {
        std::string answers =
            Search(ovCreateDirSearchIterator(dir, row.name, row.list, ovCaseSensitive)).All();
        for (std::size_t at; (at = answers.find("C:\\E\\")) != std::string::npos;)
            answers.erase(at, 5);
        EXPECT_EQ(row.sensitive, answers) << row.name;
    }
    for (const auto rule : {ovCaseInsensitive, ovCasePlatformDefault, static_cast<ovCaseSensitivity>(9)})
        EXPECT_EQ("1 C:\\E\\bar.Sv",
                  Search(ovCreateDirSearchIterator(dir, u"BAR", Extensions{"sV"}, rule)).All());
    EXPECT_EQ("", Search(ovCreateDirSearchIterator(dir, u"BAR", nullptr, ovCaseOfPath)).All());
    EXPECT_EQ("1 C:\\E\\foo | 1 C:\\E\\foo. | 1 C:\\E\\sub",
              Search(ovCreateDirSearchIterator(dir, u"", Extensions{""}, ovCaseSensitive))
                  .All(&ovFindNextUnspecified));
}

TEST_F(PathFixture, SearchesMatchQualifiers) {
    disk.Put("C:\\t\\pkg", "foo.sv +pkg/ +q/ @C/");
    disk.Put("C:\\t\\pkg\\+pkg", "foo.sv +sub/ private/ @D/");
    disk.Put("C:\\t\\pkg\\+pkg\\+sub", "foo.sv");
    disk.Put("C:\\t\\pkg\\+pkg\\private", "foo.sv");
    disk.Put("C:\\t\\pkg\\+pkg\\@D", "D.sv foo.sv");
    disk.Put("C:\\t\\pkg\\+q", "foo.sv");
    disk.Put("C:\\t\\pkg\\@C", "foo.sv");
    const ovDir top = Add("C:\\t\\pkg");
    // Behind each name what it finds, without C:\t\pkg.
    for (const char* row :
         {R"(foo | foo.sv | @C\foo.sv)", R"(pkg\foo | foo.sv | +pkg\foo.sv)", R"(kg\foo)",
          R"(pkg\pkg\foo | +pkg\foo.sv)", R"(+q\foo | +q\foo.sv)", R"(@q\foo)", R"(sub\foo)",
          R"(pkg\D\foo | +pkg\@D\foo.sv)", R"(pkg\private\foo | +pkg\private\foo.sv)", R"(C\foo | @C\foo.sv)",
          R"(C:\t\pkg\foo | foo.sv)", R"(\foo)", R"(foo\)", "+foo"}) {
        const std::string name = Fields(row)[0];
        std::string answers = Search(ovCreateAllSearchIterator(path, U(name), nullptr, ovCaseOfPath)).All();
        for (std::size_t at; (at = answers.find("-1 C:\\t\\pkg\\")) != std::string::npos;)
            answers.erase(at, 12);
        EXPECT_EQ(row, name + (answers.empty() ? "" : " | " + answers));
    }
    EXPECT_EQ(
        "-1 C:\\t\\pkg\\+pkg\\private\\foo.sv",
        Search(ovCreateDirSearchIterator(Find("C:\\t\\pkg\\+pkg\\private"), u"foo", nullptr, ovCaseOfPath))
            .All())
        << "the depth is not asked for in one directory";
    EXPECT_EQ(
        "",
        Search(ovCreatePrivateSearchIterator(Find("C:\\t\\pkg\\+pkg"), u"foo", nullptr, ovCaseOfPath)).All());
    EXPECT_NE("", Search(ovCreateAllSearchIterator(path, u"PKG\\FOO", nullptr, ovCaseInsensitive)).All());
}

TEST_F(SearchFixture, BoundsAWalkToOneDirectory) {
    Search search(ovCreateVisibleSearchIterator(a, u"plot", pAndSv, ovCaseOfPath));
    const auto bounded = [&] { return search.Step(&ovFindNextFileBounded); };
    EXPECT_EQ("0", bounded()) << "nothing came before";
    EXPECT_EQ("2 C:\\A\\@plot\\plot.sv", search.Step());
    EXPECT_EQ("0", bounded());
    EXPECT_EQ("0", bounded()) << "held back until asked for";
    EXPECT_EQ("1 C:\\C\\plot.p", search.Step());
    EXPECT_EQ("2 C:\\A\\plot.sv", search.Step());
    EXPECT_EQ("1 C:\\B\\plot.p", search.Step());
    EXPECT_EQ("2 C:\\B\\plot.sv", bounded());
    EXPECT_EQ("0", bounded());
    EXPECT_EQ("0", search.Step());

    Search all(ovCreateAllSearchIterator(path, u"", pAndSv, ovCaseOfPath));
    EXPECT_EQ("1 C:\\C\\plot.p", all.Step());
    EXPECT_EQ("2", all.Step(&ovFindNextFileBounded)) << "the rank of the file held back stays behind";
    EXPECT_EQ("2 C:\\A\\plot.sv", all.Step());
}

TEST_F(SearchFixture, TakesNarrowNamesAndMissingOutputs) {
    char name[64] = "old";
    ovDir dir;
    EXPECT_EQ(1, ovFindFirstFileInAll(path, "plot", pAndSv, &dir, name));
    EXPECT_STREQ("C:\\C\\plot.p", name);
    EXPECT_EQ(1, ovFindFirstFileInAll(path, "plot", pAndSv, nullptr, static_cast<char*>(nullptr)));
    EXPECT_EQ(0, ovFindFirstFileInAll(path, "nothing", pAndSv, &dir, name));
    EXPECT_STREQ("", name);
    EXPECT_EQ(ovDirTypeNull, ovGetDirType(dir));
    EXPECT_EQ(0, ovFindNextFile(nullptr, &dir, name));
    EXPECT_EQ(0, ovFindNextFileBounded(nullptr, &dir, name));
    EXPECT_FALSE(ovFindNextDir(nullptr, &dir));
    ovSearch* none = nullptr;
    ovDestroySearch(&none);
    ovSearch* one = ovCreateAllSearchIterator(path, static_cast<const char*>(nullptr), nullptr, ovCaseOfPath);
    EXPECT_EQ(-1, ovFindNextFile(one, &dir, name));
    ovDestroySearch(&one);
    EXPECT_EQ(nullptr, one);
}

TEST_F(PathFixture, SearchesLookAtAnAssumedFileOnce) {
    disk.Put("C:\\A", "foo? foo.sv? bar?");
    disk.Put("C:\\A\\foo", "");
    const ovDir dir = Add("C:\\A");
    const auto find = [&](const char16_t* name, int (*how)(ovSearch*, ovDir*, ustring&)) {
        const std::string answers =
            Search(ovCreateDirSearchIterator(dir, name, nullptr, ovCaseOfPath)).All(how);
        CheckIndex();
        return answers;
    };
    disk.existenceQueries = 0;
    EXPECT_EQ("", Search(ovCreateAllSearchIterator(path, u"FOO", nullptr, ovCaseSensitive)).All());
    EXPECT_EQ(0, disk.existenceQueries) << "another spelling costs no look";
    EXPECT_EQ("-1 C:\\A\\foo.sv", find(u"foo", &ovFindNextFile))
        << "the one behind the directory is not skipped";
    EXPECT_EQ(2, disk.existenceQueries);
    EXPECT_EQ("-1 C:\\A\\foo.sv | -1 C:\\A\\foo", find(u"foo", &ovFindNextUnspecified));
    EXPECT_EQ("-1 C:\\A\\bar", find(u"bar", &ovFindNextFile));
    EXPECT_EQ("-1 C:\\A\\bar", find(u"bar", &ovFindNextFile));
    EXPECT_EQ(3, disk.existenceQueries) << "each item is looked at once";

    disk.Put("C:\\B", "x.y?");
    disk.Put("C:\\B\\x.y", "");
    Add("C:\\B");
    EXPECT_EQ("", Search(ovCreateAllSearchIterator(path, u"x", nullptr, ovCaseOfPath)).All());
    EXPECT_EQ(u"x", Find("C:\\B")->GetSubDirs().at(0)->GetName()) << "entered under the stem";
    CheckIndex();
}

TEST_F(PathFixture, SearchesSurviveLookUpsBesideThem) {
    disk.Put("C:\\A", "foo.p foo? foo.sv bar? zoo.sv");
    disk.Put("C:\\A\\foo", ""), disk.Put("C:\\A\\bar", "");
    Add("C:\\A");
    Search outer(ovCreateAllSearchIterator(path, u"foo", nullptr, ovCaseOfPath));
    EXPECT_EQ("-1 C:\\A\\foo.sv", outer.Step());
    ovDir dir;
    ustring name;
    EXPECT_EQ(0, ovFindFirstFileInAll(path, u"foo", Extensions{""}, &dir, name))
        << "it is a directory after all";
    EXPECT_EQ("-1 C:\\A\\foo.p", outer.Step())
        << "what was next is passed over, and what is behind it is not";
    Search all(ovCreatePathOnlySearchIterator(path, u"", nullptr, ovCaseOfPath));
    for (const char* file : {"foo.p", "foo.sv", "bar"})
        EXPECT_EQ("-1 C:\\A\\" + std::string(file), all.Step());
    EXPECT_EQ(0, ovFindFirstFileInAll(path, u"bar", nullptr, &dir, name));
    all.Step(&ovFindNextFileBounded);

    static bool asks = true;
    ovSetIOFcns(
        path, nullptr, nullptr, nullptr,
        [](ovPath asked, const ustring& full) {
            ustring found;
            if (std::exchange(asks, false))
                ovFindFirstFileInAll(asked, u"x", nullptr, nullptr, found);
            return FakeDisk::Exists(asked, full);
        },
        nullptr);
    disk.Put("C:\\B", "x?"), disk.Put("C:\\B\\x", "");
    Add("C:\\B");
    EXPECT_EQ(0, ovFindFirstFileInAll(path, u"x", nullptr, &dir, name))
        << "the hook looks the name up itself";
}

TEST_F(SearchFixture, DescribesItemsForAWriter) {
    disk.Put("C:\\W", "c.sv:C u? n.p:N s/ @C/");
    const ovDir dir = Add("C:\\W");
    Search all(ovCreateDirSearchIterator(dir, u"", nullptr, ovCasePlatformDefault));
    std::vector<std::string> items;
    std::int32_t itemClass = 0, fileKind = 0;
    for (ustring name; !(name = all.Get()->GetCurrentItemInfo(itemClass, fileKind)).empty();)
        items.push_back(N(name) + " " + std::to_string(itemClass) +
                        (itemClass == 1 ? "" : std::to_string(fileKind)));
    EXPECT_EQ("c.sv 21 | u 00 | n.p 22 | s 1", Join(items));
    Search named(ovCreateDirSearchIterator(dir, u"u", nullptr, ovCasePlatformDefault));
    named.Get()->GetCurrentItemInfo(itemClass, fileKind);
    EXPECT_EQ(2, itemClass) << "a search for a name does not tell";
}

TEST_F(SearchFixture, WalksClassAndPackageDirectories) {
    disk.Put("C:\\B", "@plot/ @b/ +x/ +y/");
    disk.Put("C:\\C", "@plot/");
    ovSetCWDName(path, u"C:\\C");
    ovReplacePath(path, u"C:\\A");
    ovReplacePath(path, u"C:\\A;C:\\B");
    b = Find("C:\\B");
    const auto name = [](const ovDir& dir) { return N(ovGetDirName(dir)); };
    const auto walk = [&](ovDir start, ovDir (*next)(ovDir)) {
        std::vector<std::string> names;
        for (ovDir d = next(start); ovGetDirType(d) != ovDirTypeNull; d = next(d))
            names.push_back(name(d));
        return Join(names);
    };
    const std::string onPath = "C:\\A\\@plot | C:\\B\\@plot | C:\\B\\@b";
    EXPECT_EQ("C:\\C\\@plot | " + onPath, walk(ovGetNullDir(path), &ovGetNextMethodDir));
    EXPECT_EQ(onPath, walk(b, &ovGetNextMethodDir)) << "begun from any directory it starts at the first";

    EXPECT_EQ("C:\\B\\@plot", name(ovGetMethodDirs(b, b)));
    EXPECT_EQ("C:\\B\\@b", name(ovGetMethodDirs(b, Find("C:\\B\\@plot"))));
    EXPECT_EQ("", name(ovGetMethodDirs(b, Find("C:\\A\\@plot"))));
    EXPECT_EQ("C:\\B\\+y", name(ovGetPackageDirs(b, Find("C:\\B\\+x"))));

    const auto classes = [&](ovDir start, const char* className, ovCaseSensitivity rule) {
        std::vector<std::string> names;
        for (ovDir d = ovGetNextMethodClassDir(start, className, rule); ovGetDirType(d) != ovDirTypeNull;
             d = ovGetNextMethodClassDir(d, "\xff", rule))
            names.push_back(name(d));
        return Join(names);
    };
    const std::string plots = "C:\\A\\@plot | C:\\B\\@plot";
    EXPECT_EQ("C:\\C\\@plot | " + plots, classes(ovGetNullDir(path), "plot", ovCaseOfPath));
    EXPECT_EQ(plots, classes(ovGetCWD(path), "plot", ovCaseOfPath));
    EXPECT_EQ("C:\\C\\@plot | " + plots, classes(ovGetNullDir(path), "PLOT", ovCaseInsensitive));
    EXPECT_EQ("", classes(ovGetNullDir(path), "pl\xc3\xb6t", ovCaseOfPath));
    Add("C:\\C");
    ovHideCWD(path, true);
    ovSetCWDName(path, u"C:\\C");
    EXPECT_EQ(plots + " | C:\\C\\@plot", classes(ovGetNullDir(path), "plot", ovCaseOfPath))
        << "hidden: the current directory's own record is passed over, the one on the path is not";
}

TEST_F(SearchFixture, IteratorsPassAKindOnceAndForAll) {
    using namespace Quorrant::ovsel;
    SpecificDirIteratorImpl spent(a);
    EXPECT_EQ(nullptr, spent.Next(0));
    EXPECT_EQ(nullptr, spent.Next(31)) << "a mask of nothing ends it for good";
    ConstructorIteratorImpl constructors(**path, true, true);
    EXPECT_EQ(nullptr, constructors.Next(30));
    EXPECT_NE(nullptr, constructors.Next(1)) << "it has not moved";
    EXPECT_EQ(nullptr, constructors.Next(1));
    MethodDirIteratorImpl methods(**path, true);
    EXPECT_EQ(u"plot", methods.Next(1)->GetName());
    EXPECT_EQ(u"draw", methods.Next(1)->GetName());
    EXPECT_EQ(nullptr, methods.Next(1));
    EXPECT_EQ(nullptr, methods.Next(1));
}

} // namespace
