#include "support/path_fixture.hpp"

#include "ovsel/names/nameequality.hpp"

namespace {

TEST(NameEquality, FoldsOnlyNamesOfEqualLength) {
    struct {
        const char16_t* a;
        const char16_t* b;
        bool exact;
        bool folded;
    } const rows[] = {
        {u"plot", u"plot", true, true},
        {u"plot", u"PLOT", false, true},
        {u"plot", u"plo", false, false},
        {u"", u"", true, true},
        {u"a[", u"A{", false, false},
        {u"\u00c4rger", u"\u00e4rger", false, true},
        {u"stra\u00dfe", u"STRASSE", false, false},
        {u"\u00df\u00df", u"ssss", false, false},
        {u"\u212a", u"k", false, true},
        {u"\u0130", u"i", false, false},
        {u"ab\u00e9", u"AB\u00c9", false, true},
        {u"ab\u00e9", u"AC\u00c9", false, false},
        {u"\u00dfs", u"s\u00df", false, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.exact, NamesEqual(row.a, row.b, true)) << N(row.a) << " " << N(row.b);
        EXPECT_EQ(row.folded, NamesEqual(row.a, row.b, false)) << N(row.a) << " " << N(row.b);
    }
}

class NameIndex : public PathFixture {
  protected:
    /// All chains of a name: "file A B, class A" by path directory.
    std::string Chains(const std::string& name) {
        static const char* const labels[] = {"file",           "private-file", "nested-file", "sub",
                                             "private",        "package",      "class",       "nested-sub",
                                             "nested-package", "nested-class", "path"};
        const PathNameInfo* info = path->FindNameInfo(U(name));
        std::vector<std::string> chains;
        for (int c = 0; info && c < NameCategoryCount; ++c) {
            std::vector<std::string> items;
            for (PathItemInfo* item = info->GetChain(static_cast<NameCategory>(c)); item;
                 item = item->GetNext()) {
                ustring full;
                item->GetFullName(full);
                items.push_back(N(full).substr(3));
            }
            if (!items.empty())
                chains.push_back(std::string(labels[c]) + ": " + Join(items, " "));
        }
        return Join(chains);
    }
};

TEST_F(NameIndex, KeepsEveryKindOfANameInItsChain) {
    disk.Put("C:\\foo", "foo.sv FOO.p foo/ @foo/ +foo/ private/");
    disk.Put("C:\\foo\\@foo", "foo.sv private/");
    disk.Put("C:\\foo\\@foo\\private", "foo.sv");
    disk.Put("C:\\foo\\+foo", "foo.sv @foo/ +foo/ foo/");
    disk.Put("C:\\foo\\private", "foo.p");
    Add("C:\\foo");
    EXPECT_EQ("file: foo\\FOO.p foo\\foo.sv | "
              "private-file: foo\\private\\foo.p foo\\@foo\\private\\foo.sv | "
              "nested-file: foo\\+foo\\foo.sv foo\\@foo\\foo.sv | "
              "sub: foo\\foo | package: foo\\+foo | class: foo\\@foo | "
              "nested-package: foo\\+foo\\+foo | nested-class: foo\\+foo\\@foo | path: foo",
              Chains("fOO"));
    EXPECT_EQ("private: foo\\private foo\\@foo\\private", Chains("PRIVATE"));
    EXPECT_EQ(2u, path->FindNameInfo(u"foo")->GetSpellingCount());
}

TEST_F(NameIndex, LowersAsciiInKeysAndNothingElse) {
    disk.Put("C:\\A", "\xc3\x84rger.sv \xc3\xa4rger.sv");
    Add("C:\\A");
    EXPECT_NE(nullptr, path->FindNameInfo(u"\u00c4RGER"));
    EXPECT_NE(path->FindNameInfo(u"\u00c4rger"), path->FindNameInfo(u"\u00e4rger"));
    const std::u16string longName(200, u'Q');
    disk.Put("C:\\B", N(longName));
    Add("C:\\B");
    EXPECT_NE(nullptr, path->FindNameInfo(std::u16string(200, u'q')));
}

TEST_F(NameIndex, ForgetsANameWithItsLastItem) {
    disk.Put("C:\\A", "foo.sv");
    disk.Put("C:\\B", "foo.p @foo/");
    const ovDir a = Add("C:\\A"), b = Add("C:\\B");
    ovRemoveDir(b);
    EXPECT_EQ("file: A\\foo.sv", Chains("foo"));
    ovRemoveDir(a);
    EXPECT_EQ(nullptr, path->FindNameInfo(u"foo"));
    EXPECT_EQ(nullptr, path->FindNameInfo(u"A"));
}

TEST_F(NameIndex, StaysInPathOrderThroughEveryChangeOfThePath) {
    for (const char* name : {"A", "B", "D", "E"}) {
        const std::string dir = std::string("C:\\") + name;
        disk.Put(dir, "f.sv f.p @K/ +p/ private/");
        disk.Put(dir + "\\@K", "f.sv");
        disk.Put(dir + "\\+p", "f.sv");
        disk.Put(dir + "\\private", "f.sv");
    }
    disk.Put("C:\\cwd", "f.sv @K/");
    ovSetCWDName(path, "C:\\cwd");
    const auto files = [&] {
        CheckIndex();
        std::string order;
        for (PathItemInfo* item = path->FindNameInfo(u"f")->GetChain(NameFile); item; item = item->GetNext())
            order +=
                N(item->GetPathDir()->GetName()) + (item->GetExtension() == ustring(u"p") ? "p" : "") + " ";
        return order;
    };
    Add("C:\\A");
    EXPECT_EQ("cwd Ap A ", files());
    Add("C:\\B", ovDirAddAtBegin);
    EXPECT_EQ("cwd Bp B Ap A ", files());
    ovReplacePath(path, u"C:\\D;C:\\A;C:\\E;C:\\B");
    EXPECT_EQ("cwd Dp D Ap A Ep E Bp B ", files());
    ovReplacePath(path, u"C:\\B;C:\\E;C:\\A;C:\\D");
    EXPECT_EQ("cwd Bp B Ep E Ap A Dp D ", files());
    ovRemoveDir(Find("C:\\E"));
    EXPECT_EQ("cwd Bp B Ap A Dp D ", files());
    ovSetCWDName(path, "C:\\E");
    EXPECT_EQ("Ep E Bp B Ap A Dp D ", files());

    // A file that appears later stands in front of its directory's older ones.
    disk.Put("C:\\A", "f.sv f.p f.new");
    const ovDir a = Find("C:\\A");
    a->Reload({ovRefreshReload, false, false});
    a->GetPathDir()->PlacePendingItems();
    EXPECT_EQ("-1 C:\\E\\f.p | -1 C:\\E\\f.sv | -1 C:\\B\\f.p | -1 C:\\B\\f.sv | "
              "-1 C:\\A\\f.new | -1 C:\\A\\f.p | -1 C:\\A\\f.sv | -1 C:\\D\\f.p | -1 C:\\D\\f.sv",
              Search(ovCreateVisibleSearchIterator(ovGetNullDir(path), u"f", nullptr, ovCaseOfPath)).All());
}

TEST_F(NameIndex, HoldsThroughRandomChangesOfThePath) {
    std::vector<std::string> names;
    for (int i = 0; i < 12; ++i) {
        names.push_back("C:\\d" + std::to_string(i));
        disk.Put(names.back(), i % 3 ? "f.sv f.p @K/ private/" : "f.sv +p/ g");
        disk.Put(names.back() + "\\@K", "K.sv f.p");
        disk.Put(names.back() + "\\+p", "f.sv @K/ +p/");
    }
    std::uint32_t state = 12345;
    const auto random = [&](std::uint32_t below) {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) % below;
    };
    const auto pick = [&] { return names[random(12)]; };
    for (int step = 0; step < 400; ++step) {
        switch (random(6)) {
        case 0:
            Add(pick(), random(2) ? ovDirAddAtEnd : ovDirAddAtBegin);
            break;
        case 1:
            ovRemoveDir(Find(pick()));
            break;
        case 2:
            ovSetCWDName(path, U(pick()));
            break;
        case 3:
            ovHideCWD(path, random(2) == 0);
            break;
        default: {
            std::string directories;
            for (std::uint32_t i = random(8); i > 0; --i)
                directories += pick() + ";";
            ovReplacePath(path, U(directories));
        }
        }
        const std::string faults = InvariantCheck(path).Run();
        ASSERT_EQ("", faults) << "step " << step;
    }
}

} // namespace
