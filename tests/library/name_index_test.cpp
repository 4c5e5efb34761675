#include "support/path_fixture.hpp"

#include "ovsel/names/nameequality.hpp"

namespace {

TEST(NameEquality, FoldsOnlyNamesOfEqualLength) {
    const std::tuple<const char16_t*, const char16_t*, bool, bool> rows[] = {
        {u"plot", u"PLOT", false, true},
        {u"plot", u"plo", false, false},
        {u"", u"", true, true},
        {u"a[", u"A{", false, false},
        {u"\u00c4rger", u"\u00e4rger", false, true},
        {u"stra\u00dfe", u"STRASSE", false, false},
        {u"\u00df\u00df", u"ssss", false, false},
        {u"\u212a", u"k", false, true},
        {u"\u0130", u"i", false, false},
        {u"ab\u00e9", u"AC\u00c9", false, false},
        {u"\u00dfs", u"s\u00df", false, true},
    };
    for (const auto& [a, b, exact, folded] : rows) {
        EXPECT_EQ(exact, NamesEqual(a, b, true)) << N(a) << " " << N(b);
        EXPECT_EQ(folded, NamesEqual(a, b, false)) << N(a) << " " << N(b);
    }
}

class NameIndex : public PathFixture {};

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

} // namespace
