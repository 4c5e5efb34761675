// The grammar of directory names, the names of packages, classes and objects, and the equality of names: both
// forms against each other and against a plain walk over the elements. The input is a word for what is looked
// at, whose first letter counts, the size of the answer's buffer, and one name or two.

#include <algorithm>
#include <optional>

#include <ovsel/names.hpp>

#include "fuzz/body.hpp"
#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/storage.hpp"
#include "ovsel/cache/specialnames.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "support/texts.hpp"

namespace {

using foundation::storage::vfs::AbsoluteIRI;
using Elements = std::vector<std::string>;
using Answer = std::optional<std::string>;

/// Those that are not empty.
Elements ElementsOf(const std::string& name) {
    Elements elements;
    std::string element;
    for (const char c : name + '\\') {
        if (c != '\\')
            element += c;
        else if (!element.empty())
            elements.push_back(std::exchange(element, {}));
    }
    return elements;
}

bool HasAny(const Elements& elements, char sentinel) {
    return std::any_of(elements.begin(), elements.end(), [&](auto& e) { return e[0] == sentinel; });
}

/// The run of elements with that sentinel that begins with the first of them from @p at on, joined by dots.
std::string Run(const Elements& elements, char sentinel, std::size_t& at) {
    while (at < elements.size() && elements[at][0] != sentinel)
        ++at;
    std::string run;
    for (const std::size_t first = at; at < elements.size() && elements[at][0] == sentinel; ++at)
        run += (at > first ? "." : "") + elements[at].substr(1);
    return run;
}

void CheckGrammar(const std::string& text, const ustring& wide, const Elements& elements) {
    const Block name = Terminated(text);
    Expect(ovIsDirNameMethodDirName(name.get()) == HasAny(elements, '@') &&
               ovIsDirNameMethodDirName(wide) == HasAny(elements, '@'),
           "an element with @ is a class directory");
    Expect(ovIsDirNamePackageDirName(name.get()) == HasAny(elements, '+') &&
               ovIsDirNamePackageDirName(wide) == HasAny(elements, '+'),
           "an element with + is a package directory");
    const char* plainPlus = ovGetPackageDirName(name.get());
    const char16_t* widePlus = ovGetPackageDirName(wide.c_str());
    Expect((plainPlus != nullptr) == HasAny(elements, '+') && !plainPlus == !widePlus, "and so it is found");
    Expect(!plainPlus || (*plainPlus == '+' && U(plainPlus) == widePlus), "both forms find the same +");
    const bool isPrivate = N(ovSeparatePathName(wide)) == "private";
    Expect(ovIsPrivateDirName(name.get()) == isPrivate && ovIsPrivateDirName(wide) == isPrivate,
           "private is a whole last element");
    const bool isScope = text.size() > 1 && wide.find(u'.') == wide.npos && std::ranges::max(wide) < 128;
    const DirItemKind kind = ClassifyDirEntryName(wide);
    Expect((kind == DirItemClassDir) == (isScope && text[0] == '@') &&
               (kind == DirItemPackageDir) == (isScope && text[0] == '+') &&
               (kind == DirItemPrivateDir) == (text == "private"),
           "an entry is what its name says");
}

std::string Narrow(const char* text) { return text; }
std::string Narrow(const char16_t* text) { return N(text); }

/// What a function answers that has a buffer of just so many units.
template <class Char, class Name>
Answer Ask(Char* (*function)(Name, Char*, std::size_t), Name name, std::size_t room) {
    const auto dst = std::make_unique<Char[]>(std::max<std::size_t>(room, 1));
    const Char* answer = function(name, dst.get(), room);
    Expect(answer ? answer == dst.get() : dst[0] == Char(), "without an answer the buffer is empty");
    return answer ? Answer(Narrow(answer)) : Answer();
}

void CheckScopes(const std::string& text, const ustring& wide, const Elements& elements, std::size_t room) {
    const Block name = Terminated(text);
    const Answer package = Ask<char, const char*>(&ovGetPackageNameFromFullName, name.get(), room);
    const Answer owner = Ask<char, const char*>(&ovGetClassNameFromFullName, name.get(), room);
    std::size_t at = 0;
    const std::string scope = Run(elements, '+', at);
    Expect(package == (HasAny(elements, '+') && scope.size() < room ? Answer(scope) : Answer()),
           "the package is the first run of +, if it fits");
    const std::size_t behind = at = package ? at : 0;
    const std::string whole = (package ? scope + "." : "") + Run(elements, '@', at);
    const bool isOwned =
        package ? behind < elements.size() && elements[behind][0] == '@' : HasAny(elements, '@');
    Expect(owner == (isOwned && whole.size() < room ? Answer(whole) : Answer()),
           "the class is the run of @ right behind the package, if it fits");
    if (text.find('/') != text.npos || wide.size() != text.size())
        return;
    const AbsoluteIRI location(u"file", fl::filesystem::make_generic_form(wide));
    using Where = const AbsoluteIRI&;
    Expect(Ask<char16_t, Where>(&ovGetPackageNameFromLocation, location, room) == package &&
               Ask<char16_t, Where>(&ovGetClassNameFromLocation, location, room) == owner,
           "a location is in the same package and class");
}

template <class Char>
char* ObjectName(const Char* name, char* dst, std::size_t room) {
    return ovGetObjectNameFromPath(ovPath(), name, dst, room);
}

void CheckObjects(const std::string& text, const ustring& wide, std::size_t room) {
    const Block name = Terminated(text);
    const Answer plain = Ask<char, const char*>(&ObjectName<char>, name.get(), room);
    Expect(!plain || (plain->size() < room && plain->find('\\') == plain->npos), "a name is dotted and fits");
    Expect(!plain || text.find('@') != text.npos, "an object is in a class");
    try {
        const Answer other = Ask<char, const char16_t*>(&ObjectName<char16_t>, wide.c_str(), room);
        Expect(plain == other, "both forms name one object");
    } catch (const fl::i18n::CvtInvalidCharacter&) {
        Expect(!plain || std::ranges::min(*plain) < 0, "only another alphabet fails");
    }
}

void CheckEquality(const ustring& a, const ustring& b) {
    using Quorrant::ovsel::FoldedName;
    Expect(NamesEqual(a, a, false) && NamesEqual(a, b, true) == (a == b), "the same name is equal");
    const bool equal = a.size() == b.size() && FoldedName(a) == FoldedName(b);
    Expect(NamesEqual(a, b, false) == equal && NamesEqual(b, a, false) == equal, "equality is folding");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Lines lines(data, size);
    const std::string_view subject = lines.Next();
    const std::size_t room = std::strtoul(std::string(lines.Next()).c_str(), nullptr, 10) % 512;
    const std::string text(lines.NextPlain());
    const ustring wide = U(text);
    if (subject.starts_with('g'))
        CheckGrammar(text, wide, ElementsOf(text));
    else if (subject.starts_with('s'))
        CheckScopes(text, wide, ElementsOf(text), room);
    else if (subject.starts_with('o'))
        CheckObjects(text, wide, room);
    else
        CheckEquality(wide, U(std::string(lines.NextPlain())));
    return 0;
}
