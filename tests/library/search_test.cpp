#include "support/path_fixture.hpp"

#include <utility>

#include "ovsel/lookup/ovsearch.hpp"

namespace {

/// C current, A, B.
class SearchFixture : public PathFixture {
  protected:
    SearchFixture() {
        disk.Put("C:", "C/ { plot.p } A/ { plot.sv @plot/ { draw.sv } } B/");
        ovSetCWDName(path, u"C:\\C");
        Add("C:\\A"), Add("C:\\B");
    }
    const Extensions pAndSv{".p", "sv"};
};

TEST_F(SearchFixture, AddADotToTheNameOfADirectoryAfterAFile) {
    disk.Put("C:", "foo.bar/ a.b/");
    Add("C:\\foo.bar"), Add("C:\\a.b");
    EXPECT_EQ("a.b", Short(Search(ovCreateAllSearchIterator(path, u"a.b", nullptr, ovCaseOfPath)).AllDirs()));
    Search search(ovCreateAllSearchIterator(path, u"foo.bar", nullptr, ovCaseOfPath));
    ovDir dir;
    EXPECT_TRUE(ovFindNextDir(search.Get(), &dir));
    EXPECT_EQ("0", search.Step());
    EXPECT_FALSE(ovFindNextDir(search.Get(), &dir)) << "another dot has joined the name";
}

TEST_F(SearchFixture, FindsPlainFolders) {
    disk.Put("C:", "D/ { plain/ plain.sv } E/ { plain/ }");
    Add("C:\\D"), Add("C:\\E");
    for (const char16_t* asked : {u"plain", u""}) {
        Search search(ovCreateAllSearchIterator(path, asked, nullptr, ovCaseOfPath));
        ustring name;
        std::string found;
        while (ovGetDirType(search.Get()->FindNextSubDir(name)) != ovDirTypeNull)
            found += N(name) + " ";
        EXPECT_EQ("C:\\D\\plain C:\\E\\plain ", found);
    }
}

TEST_F(SearchFixture, HoldAFileOfTheNextDirectoryBackInABoundedWalk) {
    Search all(ovCreateAllSearchIterator(path, u"", pAndSv, ovCaseOfPath));
    EXPECT_EQ("1 C:\\C\\plot.p", all.Step());
    EXPECT_EQ("2", all.Step(&ovFindNextFileBounded)) << "the rank of the file held back stays behind";
    EXPECT_EQ("2 C:\\A\\plot.sv", all.Step());
}

template <class Find>
std::string AnswerOf(Find find) {
    ovDir dir;
    ustring name = u"left over";
    const int match = find(&dir, name);
    return std::to_string(match) + " " + N(name) + " in " + N(ovGetDirName(dir));
}

/// The first step of a search, and what is asked once, which may be answered without a search.
template <class Create, class Once>
void ExpectSame(Create create, Once once) {
    const std::string answer = AnswerOf(once); // before the search has looked at the disk for it
    EXPECT_EQ(AnswerOf([&](ovDir* dir, ustring& name) {
                  const Search search(create());
                  return ovFindNextFile(search.Get(), dir, name);
              }),
              answer);
}

TEST_F(PathFixture, SearchesAnswerASingleQuestionAlike) {
    const Extensions lists[] = {{".p", "sv"}, {".SV", "sv", "P"}, {"", "x"}, {"k"}, {" ["}, {" "}, {"["}};
    const char* const names[] = {"plot",  "Plot",    "PLOT",   "own",     "only", "draw",    "deep",
                                 "twice", "@plot",   "+twice", "plot.sv", ".sv",  "k",       "A\\plot",
                                 "C/own", "twice",   "inpack", "bare",    "none", "private", "dot.",
                                 "dot",   "assumed", "umlaut", "folder",  "@x",   ""};
    for (const ovCaseSensitivity rule : {ovCaseSensitive, ovCaseInsensitive})
        for (const char* hidden : {"own.p deep.sv", "own.p deep.sv \u212a.sv"}) {
            disk.Put(
                "C:",
                "A/ { plot.sv Plot.P PLOT.txt own.sv folder? @plot/ { plot.sv draw.sv only.p } private/ } "
                "A/folder/ B/ { twice.txt k.k k.\u212a umlaut.\u00e4 bare dot. x.@x odd.{ assumed? "
                "+pack/ { inpack.sv plot.p } } C/ { twice.sv own.p private/ { own.sv } }");
            disk.Put("C:\\A\\private", hidden);
            disk.Put("C:\\A\\folder", "");
            path = NewPath(hidden, rule);
            Add("C:\\A"), Add("C:\\B"), Add("C:\\C");
            ustring none;
            EXPECT_THROW(ovFindFirstFileInAll(path, u"own", Extensions{"sv", "\u00e4"}, nullptr, none),
                         fl::i18n::CvtInvalidCharacter);
            for (const char* name : names)
                for (std::size_t i = std::size(lists) + 1; i-- > 0;) {
                    const ovExtensionList wanted = i < std::size(lists) ? ovExtensionList(lists[i]) : nullptr;
                    SCOPED_TRACE(std::string(name) + " with list " + std::to_string(i));
                    ExpectSame([&] { return ovCreateAllSearchIterator(path, U(name), wanted, ovCaseOfPath); },
                               [&](ovDir* dir, ustring& full) {
                                   return ovFindFirstFileInAll(path, U(name), wanted, dir, full);
                               });
                    for (const char* from : {"C:\\A", "C:\\C", "C:\\A\\private", "C:\\A\\@plot", "C:\\no"})
                        ExpectSame(
                            [&] {
                                return ovCreateDirnameVisibleSearchIterator(path, U(from), U(name), wanted,
                                                                            ovCaseOfPath);
                            },
                            [&](ovDir* dir, ustring& full) {
                                return ovFindFirstFileVisibleToFile(path, U(from) + u"\\q.sv", U(name),
                                                                    wanted, dir, full);
                            });
                }
        }
}

TEST_F(SearchFixture, AnswerIntoTheTextThatAsks) {
    disk.Put("C:", "D/ { assumed? }");
    Add("C:\\D");
    for (const auto& [name, answer] :
         {std::pair{u"plot", "-1 C:\\C\\plot.p"}, {u"none", "0 "}, {u"assumed", "-1 C:\\D\\assumed"}}) {
        ustring text = name;
        const int match = ovFindFirstFileInAll(path, text, nullptr, nullptr, text);
        EXPECT_EQ(answer, std::to_string(match) + " " + N(text));
    }
    ustring asker = u"C:\\A\\x.sv";
    EXPECT_EQ(-1, ovFindFirstFileVisibleToFile(path, asker, u"plot", nullptr, nullptr, asker));
    EXPECT_EQ(u"C:\\C\\plot.p", asker);
}

TEST_F(SearchFixture, TakesMissingNamesSearchesAndOutputs) {
    Search onPath(ovCreatePathOnlySearchIterator(path, owner, "@plot\\draw", pAndSv, ovCaseOfPath));
    EXPECT_EQ("2 A\\@plot\\draw.sv", Short(onPath.All()));
    ustring name;
    ovDir dir;
    EXPECT_EQ(1, ovFindFirstFileInAll(path, "plot", pAndSv, nullptr, static_cast<char*>(nullptr)));
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

TEST_F(SearchFixture, WalksClassDirectories) {
    disk.Put("C:\\B", "@plot/ @b/");
    disk.Put("C:\\C", "@plot/");
    ovSetCWDName(path, u"C:\\C");
    ovReplacePath(path, u"C:\\A");
    ovReplacePath(path, u"C:\\A;C:\\B");
    const auto walk = [&](const char* start, auto first, auto next) {
        std::vector<std::string> names;
        for (ovDir d = first(Find(start)); ovGetDirType(d) != ovDirTypeNull; d = next(d))
            names.push_back(N(ovGetDirName(d)));
        return Short(Join(names));
    };
    EXPECT_EQ(R"(C\@plot | A\@plot | B\@plot | B\@b)", walk("", &ovGetNextMethodDir, &ovGetNextMethodDir));
    EXPECT_EQ(R"(A\@plot | B\@plot | B\@b)", walk("C:\\B", &ovGetNextMethodDir, &ovGetNextMethodDir))
        << "from anywhere at the first";
    const auto classes = [&](const char* start, const char* className, ovCaseSensitivity rule) {
        return walk(
            start, [&](ovDir d) { return ovGetNextMethodClassDir(d, className, rule); },
            [&](ovDir d) { return ovGetNextMethodClassDir(d, "\xff", rule); });
    };
    EXPECT_EQ(R"(A\@plot | B\@plot)", classes("C:\\C", "plot", ovCaseOfPath));
    EXPECT_EQ(R"(C\@plot | A\@plot | B\@plot)", classes("", "PLOT", ovCaseInsensitive));
    EXPECT_EQ("", classes("", "pl\xc3\xb6t", ovCaseOfPath));
    Add("C:\\C");
    ovHideCWD(path, true);
    ovSetCWDName(path, u"C:\\C");
    EXPECT_EQ(R"(A\@plot | B\@plot | C\@plot)", classes("", "plot", ovCaseOfPath))
        << "hidden: the current directory's own record is passed over, the one on the path is not";
}

} // namespace
