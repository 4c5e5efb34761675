#include "support/path_fixture.hpp"

#include <utility>

#include "ovsel/lookup/ovsearch.hpp"
#include "ovsel/lookup/pathitemiterators.hpp"

namespace {

/// The path of the worked example: C current, A, B.
class SearchFixture : public PathFixture {
  protected:
    SearchFixture() {
        disk.Put("C:", "C/ { plot.p } A/ { plot.sv @plot/ { plot.sv draw.sv } +gfx/ { plot.sv } } "
                       "B/ { plot.sv plot.p private/ { plot.sv } }");
        ovSetCWDName(path, u"C:\\C");
        a = Add("C:\\A"), b = Add("C:\\B");
    }
    std::string Visible(const ovDir& from, const char* name) {
        return Short(Search(ovCreateVisibleSearchIterator(from, U(name), pAndSv, ovCaseOfPath)).All());
    }
    std::string First(const char* asker, const char* name) {
        ovDir dir;
        ustring file = u"old";
        const int match = ovFindFirstFileVisibleToFile(path, U(asker), U(name), pAndSv, &dir, file);
        EXPECT_EQ(match == 0, ovGetDirType(dir) == ovDirTypeNull);
        return std::to_string(match) + " " + Short(N(file));
    }
    const Extensions pAndSv{".p", "sv"};
    ovDir a, b;
};

TEST_F(SearchFixture, AnswersTheWorkedExample) {
    const std::string others = R"(2 A\@plot\plot.sv | 1 C\plot.p | 2 A\plot.sv | 1 B\plot.p | 2 B\plot.sv)";
    EXPECT_EQ(R"(2 B\private\plot.sv | )" + others, Visible(b, "plot"));
    EXPECT_EQ(others, Visible(ovGetNullDir(path), "plot"));
    EXPECT_EQ(others, Visible(ovGetPrivateDir(b), "plot"))
        << "from beside the private file it is out of sight";
    EXPECT_EQ(R"(2 A\+gfx\plot.sv)", Visible(b, "gfx/plot"));
    EXPECT_EQ(R"(2 B\private\plot.sv)", First("C:\\B\\caller.sv", "plot"));
    for (const char* asker : {"", "C:\\unknown\\caller.sv"})
        EXPECT_EQ(R"(2 A\@plot\plot.sv)", First(asker, "plot"));
    EXPECT_EQ("0 ", First("C:\\B\\caller.sv", "nothing"));
}

TEST_F(SearchFixture, WalksEveryScopeInItsOrder) {
    disk.Put("C:\\C", "plot.p @plot/ { plot.p } private/ { plot.p }");
    ovSetCWDName(path, u"C:\\C");
    const std::tuple<const char*, ovSearch*, const char*> rows[] = {
        {"path only, narrow",
         ovCreatePathOnlySearchIterator(path, owner, "@plot\\plot", pAndSv, ovCaseOfPath),
         R"(2 A\@plot\plot.sv)"},
        {"dir", ovCreateDirSearchIterator(b, u"plot", pAndSv, ovCaseOfPath), R"(2 B\plot.sv | 1 B\plot.p)"},
        {"all", ovCreateAllSearchIterator(path, u"", pAndSv, ovCaseOfPath),
         R"(1 C\plot.p | 2 A\plot.sv | 2 B\plot.sv | 1 B\plot.p | 1 C\@plot\plot.p | 2 A\@plot\plot.sv | )"
         R"(2 A\@plot\draw.sv | 1 C\private\plot.p | 2 B\private\plot.sv)"},
        {"visible", ovCreateVisibleSearchIterator(b, u"", Extensions{"sv"}, ovCaseOfPath),
         R"(1 B\private\plot.sv | 1 A\@plot\plot.sv | 1 A\plot.sv | 1 B\plot.sv)"},
        {"methods", ovCreateMethodSearchIterator(path, u"", pAndSv, ovCaseOfPath),
         R"(1 C\@plot\plot.p | 2 A\@plot\plot.sv | 2 A\@plot\draw.sv)"},
    };
    for (const auto& [scope, search, result] : rows)
        EXPECT_EQ(result, Short(Search(search).All())) << scope;
}

TEST_F(SearchFixture, FindsDirectories) {
    disk.Put("C:", "plot/ { +plot/ { @plot/ +plot/ } private/ { x.sv } } a.b/ foo.bar/");
    Add("C:\\plot"), Add("C:\\a.b"), Add("C:\\foo.bar");
    EXPECT_EQ(R"(plot | plot\+plot | A\@plot)",
              Short(Search(ovCreateVisibleSearchIterator(b, u"plot", nullptr, ovCaseOfPath)).AllDirs()));
    for (const char* row : {R"(plot: plot\+plot | A\@plot | plot)", // deeper ones are in a package
                            R"(plot\plot: plot\+plot | plot\+plot\+plot | plot\+plot\@plot)",
                            R"(@plot: A\@plot)", R"(private: B\private | plot\private)", "a.b: a.b"}) {
        const std::string name(row, std::strchr(row, ':'));
        Search search(ovCreateAllSearchIterator(path, U(name), nullptr, ovCaseOfPath));
        EXPECT_EQ(row, name + ": " + Short(search.AllDirs()));
    }
    Search search(ovCreateAllSearchIterator(path, u"foo.bar", nullptr, ovCaseOfPath));
    ovDir dir;
    EXPECT_TRUE(ovFindNextDir(search.Get(), &dir));
    EXPECT_EQ("0", search.Step());
    EXPECT_FALSE(ovFindNextDir(search.Get(), &dir)) << "after a file a further dot has joined the name";
}

TEST_F(PathFixture, SearchesRankExtensions) {
    disk.Put("C:\\E", "foo.p foo.sv foo foo. foo.bar bar.Sv sub/ foo.longext");
    const ovDir dir = Add("C:\\E");
    const std::tuple<const char*, Extensions, const char*> rows[] = {
        {"foo", {}, "-1 foo.p | -1 foo.sv | -1 foo | -1 foo. | -1 foo.bar | -1 foo.longext"},
        {"foo", {"sv", "p"}, "2 foo.p | 1 foo.sv"},
        {"foo", {".p"}, "1 foo.p"},
        {"foo", {"", "sv"}, "2 foo.sv | 1 foo | 1 foo."},
        {"foo.bar", {"sv"}, ""},
        {"foo.bar", {"sv", ""}, "2 foo.bar"},
        {"foo.p", {"sv", "p"}, "2 foo.p"},
        {"foo.", {"p"}, "1 foo.p"},
        {"bar.sv", {}, ""},
        {"BAR", {}, ""},
    };
    using How = int (*)(ovSearch*, ovDir*, ustring&);
    const auto all = [&](const char* name, ovExtensionList list, ovCaseSensitivity rule, How find) {
        return Without("C:\\E\\", Search(ovCreateDirSearchIterator(dir, U(name), list, rule)).All(find));
    };
    for (const auto& [name, list, result] : rows)
        EXPECT_EQ(result, all(name, list, ovCaseSensitive, &ovFindNextFile)) << name;
    for (const auto rule : {ovCaseInsensitive, ovCasePlatformDefault, static_cast<ovCaseSensitivity>(9)})
        EXPECT_EQ("1 bar.Sv", all("BAR", Extensions{"sV"}, rule, &ovFindNextFile));
    EXPECT_EQ("1 foo | 1 foo. | 1 sub", all("", Extensions{""}, ovCaseSensitive, &ovFindNextUnspecified));
}

TEST_F(PathFixture, SearchesMatchQualifiers) {
    disk.Put("C:\\t\\pkg", "foo.sv +pkg/ { foo.sv +sub/ { foo.sv } private/ { foo.sv } @D/ { D.sv foo.sv } } "
                           "+q/ { foo.sv } @C/ { foo.sv }");
    Add("C:\\t\\pkg");
    // Behind each name what it finds, without C:\t\pkg.
    for (const char* row :
         {R"(foo | foo.sv | @C\foo.sv)", R"(pkg\foo | foo.sv | +pkg\foo.sv)", R"(kg\foo)",
          R"(pkg\pkg\foo | +pkg\foo.sv)", R"(+q\foo | +q\foo.sv)", R"(@q\foo)", R"(sub\foo)",
          R"(pkg\D\foo | +pkg\@D\foo.sv)", R"(pkg\private\foo | +pkg\private\foo.sv)", R"(C\foo | @C\foo.sv)",
          R"(C:\t\pkg\foo | foo.sv)", R"(\foo)", R"(foo\)", "+foo"}) {
        const std::string name = Fields(row)[0], answers = Without("-1 t\\pkg\\", Everywhere(name));
        EXPECT_EQ(row, name + (answers.empty() ? "" : " | " + answers));
    }
    const ovDir hidden = Find("C:\\t\\pkg\\+pkg\\private");
    EXPECT_EQ("-1 C:\\t\\pkg\\+pkg\\private\\foo.sv",
              Search(ovCreateDirSearchIterator(hidden, u"foo", nullptr, ovCaseOfPath)).All())
        << "the depth is not asked for in one directory";
    EXPECT_NE("", Search(ovCreateAllSearchIterator(path, u"PKG\\FOO", nullptr, ovCaseInsensitive)).All());
}

TEST_F(SearchFixture, BoundsAWalkToOneDirectory) {
    Search search(ovCreateVisibleSearchIterator(a, u"plot", pAndSv, ovCaseOfPath));
    // What comes next, or in the last file's directory (b), where a file may be held back until asked for.
    for (const char* row : {"b 0", R"(n 2 A\@plot\plot.sv)", "b 0", "b 0", R"(n 1 C\plot.p)",
                            R"(n 2 A\plot.sv)", R"(n 1 B\plot.p)", R"(b 2 B\plot.sv)", "b 0", "n 0"})
        EXPECT_EQ(row + 2, Short(*row == 'b' ? search.Step(&ovFindNextFileBounded) : search.Step()));
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
    EXPECT_EQ(0, ovFindNextFile(nullptr, &dir, name) + ovFindNextFileBounded(nullptr, &dir, name));
    EXPECT_FALSE(ovFindNextDir(nullptr, &dir));
    ovSearch *none = nullptr,
             *one = ovCreateAllSearchIterator(path, static_cast<const char*>(nullptr), nullptr, ovCaseOfPath);
    EXPECT_EQ(-1, ovFindNextFile(one, &dir, name));
    ovDestroySearch(&none), ovDestroySearch(&one);
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
        return Short(answers) + " by " + std::to_string(std::exchange(disk.existenceQueries, 0));
    };
    disk.existenceQueries = 0;
    EXPECT_EQ(" by 0", find(u"FOO", &ovFindNextFile)) << "another spelling costs no look";
    EXPECT_EQ("-1 A\\foo.sv by 2", find(u"foo", &ovFindNextFile))
        << "what is behind a directory is not skipped";
    EXPECT_EQ("-1 A\\foo.sv | -1 A\\foo by 0", find(u"foo", &ovFindNextUnspecified));
    EXPECT_EQ("-1 A\\bar by 1", find(u"bar", &ovFindNextFile));
    EXPECT_EQ("-1 A\\bar by 0", find(u"bar", &ovFindNextFile));

    disk.Put("C:\\B", "x.y?");
    disk.Put("C:\\B\\x.y", "");
    Add("C:\\B");
    EXPECT_EQ("", Everywhere("x"));
    EXPECT_EQ(u"x", Find("C:\\B")->GetSubDirs().at(0)->GetName()) << "entered under the stem";
}

TEST_F(PathFixture, SearchesSurviveLookUpsBesideThem) {
    disk.Put("C:\\A", "foo.p foo? foo.sv bar? zoo.sv");
    disk.Put("C:\\A\\foo", ""), disk.Put("C:\\A\\bar", "");
    Add("C:\\A");
    Search outer(ovCreateAllSearchIterator(path, u"foo", nullptr, ovCaseOfPath));
    EXPECT_EQ("-1 C:\\A\\foo.sv", outer.Step());
    EXPECT_EQ("", Everywhere("foo", Extensions{""})) << "it is a directory after all";
    EXPECT_EQ("-1 C:\\A\\foo.p", outer.Step())
        << "what was next is passed over, and what is behind it is not";
    Search all(ovCreatePathOnlySearchIterator(path, u"", nullptr, ovCaseOfPath));
    for (const char* file : {"foo.p", "foo.sv", "bar"})
        EXPECT_EQ("-1 C:\\A\\" + std::string(file), all.Step());
    EXPECT_EQ("", Everywhere("bar"));
    all.Step(&ovFindNextFileBounded);

    static bool asks = true;
    const auto asksItself = [](ovPath asked, const ustring& full) {
        ustring found;
        if (std::exchange(asks, false))
            ovFindFirstFileInAll(asked, u"x", nullptr, nullptr, found);
        return FakeDisk::Exists(asked, full);
    };
    ovSetIOFcns(path, nullptr, nullptr, nullptr, asksItself, nullptr);
    disk.Put("C:\\B", "x?"), disk.Put("C:\\B\\x", "");
    Add("C:\\B");
    EXPECT_EQ("", Everywhere("x")) << "the hook looks the name up itself";
}

TEST_F(SearchFixture, DescribesItemsForAWriter) {
    disk.Put("C:\\W", "c.sv:C u? n.p:N s/ @C/");
    const ovDir dir = Add("C:\\W");
    const auto items = [&](const char16_t* asked) {
        Search search(ovCreateDirSearchIterator(dir, asked, nullptr, ovCasePlatformDefault));
        std::string text;
        std::int32_t itemClass = 0, fileKind = 0;
        for (ustring name; !(name = search.Get()->GetCurrentItemInfo(itemClass, fileKind)).empty();)
            text += N(name) + " " + std::to_string(itemClass) +
                    (itemClass == 1 ? ". " : std::to_string(fileKind) + ". ");
        return text;
    };
    EXPECT_EQ("c.sv 21. u 00. n.p 22. s 1. ", items(u""));
    EXPECT_EQ("u 20. ", items(u"u")) << "a search for a name does not tell";
}

TEST_F(SearchFixture, WalksClassAndPackageDirectories) {
    disk.Put("C:\\B", "@plot/ @b/ +x/ +y/");
    disk.Put("C:\\C", "@plot/");
    ovSetCWDName(path, u"C:\\C");
    ovReplacePath(path, u"C:\\A");
    ovReplacePath(path, u"C:\\A;C:\\B");
    b = Find("C:\\B");
    const auto name = [](const ovDir& dir) { return Short(N(ovGetDirName(dir))); };
    const auto walk = [&](ovDir start, auto first, auto next) {
        std::vector<std::string> names;
        for (ovDir d = first(start); ovGetDirType(d) != ovDirTypeNull; d = next(d))
            names.push_back(name(d));
        return Join(names);
    };
    const std::string onPath = R"(A\@plot | B\@plot | B\@b)", plots = R"(A\@plot | B\@plot)";
    EXPECT_EQ(R"(C\@plot | )" + onPath, walk(ovGetNullDir(path), &ovGetNextMethodDir, &ovGetNextMethodDir));
    EXPECT_EQ(onPath, walk(b, &ovGetNextMethodDir, &ovGetNextMethodDir)) << "from anywhere at the first";
    EXPECT_EQ(
        R"(B\@plot B\@b  B\+y)",
        Join({name(ovGetMethodDirs(b, b)), name(ovGetMethodDirs(b, Find("C:\\B\\@plot"))),
              name(ovGetMethodDirs(b, Find("C:\\A\\@plot"))), name(ovGetPackageDirs(b, Find("C:\\B\\+x")))},
             " "));
    const auto classes = [&](ovDir start, const char* className, ovCaseSensitivity rule) {
        return walk(
            start, [&](ovDir d) { return ovGetNextMethodClassDir(d, className, rule); },
            [&](ovDir d) { return ovGetNextMethodClassDir(d, "\xff", rule); });
    };
    const ovDir null = ovGetNullDir(path);
    EXPECT_EQ(R"(C\@plot | )" + plots, classes(null, "plot", ovCaseOfPath));
    EXPECT_EQ(plots, classes(ovGetCWD(path), "plot", ovCaseOfPath));
    EXPECT_EQ(R"(C\@plot | )" + plots, classes(null, "PLOT", ovCaseInsensitive));
    EXPECT_EQ("", classes(null, "pl\xc3\xb6t", ovCaseOfPath));
    Add("C:\\C");
    ovHideCWD(path, true);
    ovSetCWDName(path, u"C:\\C");
    EXPECT_EQ(plots + R"( | C\@plot)", classes(null, "plot", ovCaseOfPath))
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
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(nullptr, methods.Next(1));
}

} // namespace
