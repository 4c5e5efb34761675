// Names in the system's grammar: taken apart, made absolute, made canonical. No disk is looked at.

#include "host_test.hpp"

namespace {

using namespace test;

/// The elements that a cursor meets, joined with commas.
std::string Elements(const ustring& name) {
    const std::size_t root = fs::get_root_path_length(name);
    ustring element = fs::extract_first_element(name, root);
    std::string joined;
    for (std::size_t position = 0; position < name.size();) {
        joined.append(joined.empty() ? 0 : 1, ',').append(Narrow(element));
        fs::move_down(name, root, position, element);
    }
    return joined;
}

/// All that the layer says of a name.
std::string Anatomy(const std::string& text) {
    const ustring name = Wide(text);
    return Elements(name) + " root " + std::to_string(fs::get_root_path_length(name)) +
           (fs::is_absolute(name) ? " absolute" : "") + " [" + Narrow(fs::extract_parent_path(name)) + "][" +
           Narrow(fs::extract_stem(name)) + "][" + Narrow(fs::extract_extension(name)) + "]";
}

TEST(Names, AreTakenApartAtTheirRootElementsAndLastDot) {
    const std::pair<const char*, const char*> table[] = {
        {R"()", R"( root 0 [][][])"},
        {R"(a\b.sv)", R"(a,b.sv root 0 [a][b][.sv])"},
        {R"(C:a.b.c)", R"(C:,a.b.c root 2 [C:][a.b][.c])"},
        {R"(C:\)", R"(C:,\ root 3 absolute [][][])"},
        {R"(C:\\a\b\)", R"(C:,\,\,a,b root 4 absolute [C:\\a][b][])"},
        {R"(4:\a)", R"(4:,a root 0 [4:][a][])"},
        {R"(\)", R"(\ root 1 [][][])"},
        {R"(\\srv\)", R"(\\srv,\ root 6 [][][])"},
        {R"(z:\.x)", R"(z:,\,.x root 3 absolute [z:\][][.x])"},
        {R"(\\\a)", R"(\,\,\,a root 3 [\\\][a][])"},
        {R"(\\s.t\h\a\b.c)", R"(\\s.t,\,h,a,b.c root 6 absolute [\\s.t\h\a][b][.c])"},
        {R"(C:/a/b.c)", R"(C:,/a/b.c root 2 [C:][/a/b][.c])"},
        {R"(C:\..)", R"(C:,\,.. root 3 absolute [C:\][.][.])"},
    };
    for (const auto& [name, anatomy] : table)
        EXPECT_EQ(Anatomy(name), anatomy) << name;
}

TEST(Names, AreMadeAbsoluteAndCanonicalAgainstABase) {
    const std::tuple<const char*, const char*, const char*, const char*> table[] = {
        {R"(a\..\b)", R"(C:\w\x)", R"(C:\w\x\a\..\b)", R"(C:\w\x\b)"},
        {R"(..\..\..\b)", R"(C:\w\x)", R"(C:\w\x\..\..\..\b)", R"(C:\b)"},
        {R"(\a)", R"(\\s\h\w)", R"(\\s\h\a)", R"(\\s\h\a)"},
        {R"(c:a)", R"(C:\w)", R"(C:\w\a)", R"(C:\w\a)"},
        {R"(D:)", R"(C:\w)", R"(D:\)", R"(D:\)"},
        {R"(C:\\a\\.\b\)", R"(D:\)", R"(C:\\a\\.\b\)", R"(C:\a\b)"},
        {R"(\\s\h\..\a)", R"(D:\)", R"(\\s\h\..\a)", R"(\\s\h\a)"},
        {R"(\\s)", R"(C:\w)", R"(\\s)", "invalid"},
        {R"(a)", R"(\\s)", R"(\\s\a)", R"(\\s\a)"},
        {"", R"(C:\w)", R"(C:\w)", "invalid"},
    };
    const auto canonical = [](const char* name, const char* base) -> std::string {
        try {
            return Narrow(fs::canonical(Wide(name), Wide(base)));
        } catch (const fs::InvalidArgument&) {
            return "invalid";
        }
    };
    for (const auto& [name, base, absolute, result] : table) {
        EXPECT_EQ(Narrow(fs::absolute(Wide(name), Wide(base))), absolute) << name;
        EXPECT_EQ(canonical(name, base), result) << name;
        EXPECT_TRUE(result[0] == 'i' || canonical(result, "D:\\") == result) << name;
    }
    EXPECT_EQ(fs::canonical(u"a/./b/", u"C:/w"), u"C:\\w\\a\\b") << "both forms are taken";
    EXPECT_THROW(fs::canonical(ustring(u"a\0b", 3), u"C:\\"), fs::InvalidArgument);
}

TEST(Names, ChangeTheirFormUnitByUnitAndHaveTheirLastSeparatorFound) {
    EXPECT_EQ(fs::make_native_form(u"C:/a//b\\c/", true), u"C:\\a\\\\b\\c\\");
    EXPECT_EQ(fs::make_generic_form(u"C:\\a\\\\b/c\\"), u"C:/a//b/c/");
    EXPECT_EQ(ovsel_pathname_index("a\\b/c", 5), 3);
    EXPECT_EQ(ovsel_pathname_index("ä:ü", 5), 2);
    EXPECT_EQ(ovsel_pathname_index("a:", 1), -1);
    EXPECT_TRUE(IsAll7Bit("a\x7F\x80", 2));
    EXPECT_FALSE(IsAll7Bit("a\x80", 2));
}

} // namespace
