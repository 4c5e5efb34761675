// The path-name functions: the plain forms against the wide ones wherever both have the same rule, and what
// must hold of any answer. The input is a word for what is looked at, whose first letter counts, and one name
// or two.

#include <optional>

#include <ovsel/names.hpp>

#include "fuzz/body.hpp"
#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/names/pathnormalizer.hpp"
#include "support/texts.hpp"

using namespace fl::filesystem;

/// In place of the host's: every name exists, and no disk is asked.
bool fl::filesystem::exists(const ustring&) { return true; }

namespace {

struct Name {
    explicit Name(std::string_view line) : text(line), plain(Terminated(line)), wide(U(text)) {}
    operator const char*() const { return plain.get(); }
    bool HasAny(const char* of) const { return text.find_first_of(of) != text.npos; }

    std::string text;
    Block plain;
    ustring wide;
};

void CheckJoining(const Name& a, const Name& b) {
    ustring joined = a.wide;
    ovConcatPathName(joined, b.wide);
    const std::size_t room = a.text.size() + b.text.size() + 2;
    const Block appended = Terminated(a.text, room), combined = Room(room), below = Room(1281);
    ExpectSame(N(joined), ovConcatPathName(appended.get(), b), "both forms join alike");
    ExpectSame(N(joined), ovCombinePathName(combined.get(), a, b), "combining is joining");
    Expect(b.HasAny("\\/:") || ovSeparatePathName(joined) == b.wide, "splitting gives back what was joined");
    if (ovCombineDirectory(below.get(), a, b))
        Expect(below.get() == b.text || below.get() == a.text + "\\" + b.text,
               "a name, or one below the base");
    else
        Expect(room > 1282, "only a long name does not fit");
}

void CheckSplitting(const Name& name) {
    ustring dir, same = name.wide;
    const ustring file = ovSeparatePathName(name.wide, dir);
    Expect(file == ovSeparatePathName(name.wide) && file == ovSeparatePathName(same, same) && same == dir,
           "all wide forms split alike");
    const Block plainDir = Terminated("", name.text.size() + 1), inPlace = Terminated(name.text);
    ExpectSame(N(file), ovSeparatePathName(name, plainDir.get()), "both forms find one file part");
    ExpectSame(N(dir), plainDir.get(), "both forms find one directory part");
    ovSeparatePathName(inPlace.get(), inPlace.get());
    ExpectSame(inPlace.get(), name.HasAny("\\/:") ? plainDir.get() : name.text, "a name can be cut in place");
    Expect(name.wide.starts_with(dir) && name.wide.ends_with(file), "the parts are parts of the name");
    const std::size_t between = name.wide.size() - dir.size() - file.size();
    Expect(between == 0 || (between == 1 && IsNameSplit(name.wide[dir.size()])), "and lose one unit at most");
}

void CheckExtensions(const Name& name, const Name& extension) {
    const int dot = ovFindFileExt(name);
    const std::string plain = dot < 0 ? "" : name.text.substr(static_cast<std::size_t>(dot));
    Expect(dot < 0 || (plain[0] == '.' && plain.find_first_of("./\\:", 1) == plain.npos),
           "an extension has one dot, in front");
    const Block element = Room(name.text.size() + 1),
                changed = Room(name.text.size() + extension.text.size() + 1);
    Expect(!std::strchr(ovExtractSubdir(element.get(), name), '\\'), "an element has no separator in it");
    ovChangeFileExtension(name, changed.get(), extension);
    ExpectSame(changed.get(), name.text.substr(0, name.text.size() - plain.size()) + extension.text,
               "only the extension changes");

    const ustring wide = ovFindFileExt(name.wide.c_str()), stem = ovExtractSubdir(name.wide);
    const ustring native = make_native_form(name.wide, true);
    Expect(native.find(stem + wide) != native.npos, "stem and extension stand together in the name");
    if (native.starts_with(u"\\\\") || native.ends_with(u'\\') || name.HasAny(":"))
        return; // a root, or the end, to one of the forms
    ExpectSame(N(wide), plain, "both forms find one extension");
    Expect(name.HasAny("/") || N(stem + wide) == element.get(), "both forms find one last element");
}

std::optional<ustring> Normalized(const ustring& name) {
    try {
        return PathNormalizer(name).Normalize();
    } catch (const ovsel::incorrect_root_exception&) {
        return std::nullopt;
    }
}

void CheckFullNames(const Name& name, std::size_t room) {
    const auto normal = Normalized(absolute(make_native_form(name.wide, true), {}));
    Expect(!normal || Normalized(*normal) == normal, "what is normal stays as it is");
    const ustring canonical = host::Platform().FullPath(name.wide);
    Expect(name.text.empty() || canonical == normal.value_or(u"") || canonical + u'\\' == normal,
           "the layer below normalises alike, but leaves a share open");

    const bool isAbsolute = ovIsAbsolutePath(name.wide);
    ustring full = name.wide;
    Expect(ovFullPath(full, full) == (isAbsolute || normal), "only a lone server has no full name");
    Expect(full == (isAbsolute ? name.wide : normal.value_or(u"")), "absolute names stay as they are");
    Expect(!isAbsolute || name.HasAny("/") || ovIsAbsolutePath(name), "and are so in the plain form");
    const Block dst = Room(room);
    if (!ovFullPath(dst.get(), name, room))
        Expect(canonical.empty() || N(canonical).size() >= room, "a full name fails for want of room only");
    else if (ovIsAbsolutePath(name))
        Expect(std::strncmp(dst.get(), name, room) == 0, "the plain form copies what is absolute");
    else
        ExpectSame(dst.get(), N(canonical), "the plain form asks the platform");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Lines lines(data, size);
    const std::string_view subject = lines.Next();
    const Name name(lines.NextPlain());
    if (subject.starts_with('j'))
        CheckJoining(name, Name(lines.NextPlain()));
    else if (subject.starts_with('s'))
        CheckSplitting(name);
    else if (subject.starts_with('e'))
        CheckExtensions(name, Name(lines.NextPlain()));
    else
        CheckFullNames(name, size);
    return 0;
}
