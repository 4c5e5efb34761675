#include "ovsel/lookup/straightanswer.hpp"

#include <string_view>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/ovsearchcontexti.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/plaintext.hpp"
#include "ovsel/names/unitwords.hpp"

namespace Quorrant::ovsel {

namespace {

using Rank = std::optional<std::int32_t>;

constexpr char16_t separatorUnit = fl::filesystem::PATHNAME_SEPARATOR[0];

/// Does the name say nothing but itself: no place, no extension? @pre it is not empty
bool IsPlainName(std::u16string_view name) {
    return name.front() != OvselConstants::U16_OOPSENTINEL[0] &&
           name.front() != OvselConstants::U16_OBJPKGSENTINEL[0] &&
           !HoldsAny(name, u'.', u'/', separatorUnit);
}

constexpr bool IsAsciiLetter(char16_t c) { return (c | 0x20) >= u'a' && (c | 0x20) <= u'z'; }

/// Sees equality within ASCII only. An extension that is equal by folding beyond it counts as another here,
/// and the question goes to a search.
bool IsAskedExtension(const char* asked, const char16_t* had, bool caseSensitive) {
    for (;; ++asked, ++had) {
        const auto a = static_cast<char16_t>(*asked);
        const char16_t b = *had;
        if (a != b && (caseSensitive || (a ^ b) != 0x20 || !IsAsciiLetter(b)))
            return false;
        if (a == 0)
            return true;
    }
}

/// As a search ranks it: -1 for no list, else the place in the list; nothing if that is not sure. A search
/// converts the whole list at its first candidate, and the text layer refuses what is beyond ASCII: so all of
/// it is looked at here too.
Rank RankOf(const PathFileItemInfo& file, ovExtensionList extensions, bool caseSensitive) {
    constexpr std::int32_t anyExtension = -1;
    if (!extensions || !*extensions)
        return anyExtension;
    const char16_t* const text = file.GetExtension();
    const char16_t* const had = text ? text : u"";
    Rank rank;
    for (std::int32_t place = 1; *extensions; ++extensions, ++place) {
        const char* const asked = **extensions == '.' ? *extensions + 1 : *extensions;
        if (!IsAscii(asked))
            return std::nullopt;
        if (!rank && IsAskedExtension(asked, had, caseSensitive))
            rank = place;
    }
    return rank;
}

bool LiesInPackage(const PathAllDirItemInfo* dir) {
    while (dir && dir->GetItemClass() != ItemClass::PackageDir)
        dir = dir->GetParent();
    return dir != nullptr;
}

/// Might something come before the files of path directories: a private one of the asker, a constructor? A
/// private one that is equal beyond ASCII would stand under another name of the index.
bool MayBeShadowed(const SearchQuestion& question, const PathNameInfo& info) {
    if (info.GetChain(NameNestedFile))
        return true;
    const bool hasPrivate = question.dir && question.dir->GetPrivateDir();
    return hasPrivate && (info.GetChain(NamePrivateFile) || !question.path->HasAsciiNamesOnly());
}

/// What a search comes upon first, or null.
const PathItemInfo* FirstFile(const SearchQuestion& question, const PathNameInfo& info) {
    const PathItemInfo* first = info.GetChain(NameFile);
    if (first || question.scope == SearchScopeVisible)
        return first;
    first = info.GetChain(NameNestedFile);
    return first ? first : info.GetChain(NamePrivateFile);
}

/// Nothing if a search would have to ask about the file, or might pass over it.
Rank Judge(const PathItemInfo& item, const SearchQuestion& question) {
    const bool caseSensitive = question.IsCaseSensitive();
    if (!item.IsVerified() || (caseSensitive && item.GetName() != question.name))
        return std::nullopt;
    if (!item.IsDirectLeaf() && LiesInPackage(item.GetParent()))
        return std::nullopt;
    return RankOf(static_cast<const PathFileItemInfo&>(item), question.extensions, caseSensitive);
}

std::int32_t NoFile(const ovPath& path, ovDir* dir, ustring& fullName) {
    fullName.clear();
    if (dir)
        *dir = path->GetNullDir();
    return 0;
}

} // namespace

std::optional<std::int32_t> AnswerStraight(const SearchQuestion& question, ovDir* dir, ustring& fullName) {
    if (question.name.empty() || !IsPlainName(question.name))
        return std::nullopt;
    const PathNameInfo* const info = question.path->FindNameInfo(question.name);
    if (!info)
        return NoFile(question.path, dir, fullName);
    if (question.scope == SearchScopeVisible && MayBeShadowed(question, *info))
        return std::nullopt;
    const PathItemInfo* const first = FirstFile(question, *info);
    if (!first)
        return NoFile(question.path, dir, fullName);
    const Rank rank = Judge(*first, question);
    if (rank) {
        first->GetFullName(fullName);
        if (dir)
            *dir = first->GetParent();
    }
    return rank;
}

} // namespace Quorrant::ovsel
