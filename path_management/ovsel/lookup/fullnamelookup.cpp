#include "ovsel/lookup/fullnamelookup.hpp"

#include <algorithm>
#include <optional>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/ovselconstants.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {

constexpr std::size_t PrivateDirLength = std::u16string_view(PrivateDirName).size();

bool FitsScope(std::int32_t order, DirScope scope) {
    switch (scope) {
    case DirScope::CWD:
        return order == 0;
    case DirScope::Path:
        return order > 0;
    case DirScope::Any:
        break;
    }
    return true;
}

/// Is the chain longer than a walk along it takes no time?
bool HasMoreThanAFew(const PathItemInfo* first) {
    int few = 4;
    while (first && few-- > 0)
        first = first->GetNext();
    return first != nullptr;
}

const ustring& StoredNameOf(const PathItemInfo& pathDir) {
    return static_cast<const PathDirItemInfo&>(pathDir).GetStoredFullName();
}

/// What a directory of that kind has before its name on disk.
std::u16string_view SentinelOf(ItemClass itemClass) {
    switch (itemClass) {
    case ItemClass::ClassDir:
        return OvselConstants::U16_OOPSENTINEL;
    case ItemClass::PackageDir:
        return OvselConstants::U16_OBJPKGSENTINEL;
    default:
        return {};
    }
}

bool IsAscii(std::u16string_view text) {
    return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

bool TakeEnd(std::u16string_view& text, std::u16string_view end) {
    if (!text.ends_with(end))
        return false;
    text.remove_suffix(end.size());
    return true;
}

/// Takes the record's own element off the end of @p name and says whether that could be done; nothing where
/// only the whole texts can tell, since folding beyond ASCII is a matter of the whole.
std::optional<bool> TakeElement(const PathItemInfo& item, std::u16string_view& name, bool caseSensitive) {
    const std::u16string_view element = item.GetName();
    if (element.size() > name.size())
        return false;
    const std::u16string_view end = name.substr(name.size() - element.size());
    const bool isPlain = !element.empty() && !IsSlash(element.front()) && !IsSlash(element.back());
    if (!isPlain || !IsAscii(element) || !IsAscii(end))
        return std::nullopt;
    name.remove_suffix(element.size());
    return NamesEqual(end, element, caseSensitive) && TakeEnd(name, SentinelOf(item.GetItemClass()));
}

bool HasBuiltName(const PathItemInfo& item, std::u16string_view fullName, bool caseSensitive) {
    ustring built;
    item.GetFullName(built);
    return NamesEqual(built, fullName, caseSensitive);
}

/// Compares from the end, element by element, so that no name is built; a path-level record holds its own.
bool HasFullName(const PathItemInfo& item, std::u16string_view fullName, bool caseSensitive) {
    std::u16string_view rest = fullName;
    const PathItemInfo* above = &item;
    for (; !above->IsPathDir(); above = above->GetParent()) {
        const std::optional<bool> isTaken = TakeElement(*above, rest, caseSensitive);
        if (!isTaken)
            return HasBuiltName(item, fullName, caseSensitive);
        const PathItemInfo& parent = *above->GetParent();
        const bool isRoot = parent.IsPathDir() && IsSlash(StoredNameOf(parent).back());
        if (!*isTaken || (!isRoot && !TakeEnd(rest, fl::filesystem::PATHNAME_SEPARATOR)))
            return false;
    }
    return NamesEqual(StoredNameOf(*above), rest, caseSensitive);
}

} // namespace

PathItemInfo* FullNameLookup::FindDirInChain(PathItemInfo* first, std::u16string_view fullName) const {
    for (PathItemInfo* item = first; item; item = item->GetNext())
        if (item->GetOrderNumber() >= 0 && HasFullName(*item, fullName, m_manager.IsCaseSensitive()))
            return item;
    return nullptr;
}

/// From @p first, the head of the chain of path-level records of one leaf.
PathItemInfo* FullNameLookup::FindPathLevel(PathItemInfo* first, std::u16string_view fullName) const {
    if (HasMoreThanAFew(first))
        if (const auto found = m_manager.FindByFullName(fullName))
            return *found;
    return FindDirInChain(first, fullName);
}

PathDirItemInfo* FullNameLookup::FindPathDir(std::u16string_view fullName, DirScope scope) const {
    return FindPathDir(fullName, FilePartOf(fullName), scope);
}

PathDirItemInfo* FullNameLookup::FindPathDir(std::u16string_view fullName, std::u16string_view leaf,
                                             DirScope scope) const {
    const PathNameInfo* info = m_manager.FindNameInfo(leaf);
    PathItemInfo* item = FindPathLevel(info ? info->GetChain(NamePathDir) : nullptr, fullName);
    // The current directory may stand on the path as well.
    while (item && !FitsScope(item->GetOrderNumber(), scope))
        item = FindDirInChain(item->GetNext(), fullName);
    return static_cast<PathDirItemInfo*>(item);
}

PathItemInfo* FullNameLookup::FindDirOfType(std::u16string_view fullName, std::u16string_view leaf,
                                            ovDirType type) const {
    const PathNameInfo* info = m_manager.FindNameInfo(leaf);
    if (!info)
        return nullptr;
    const auto findIn = [&](NameCategory category) {
        return FindDirInChain(info->GetChain(category), fullName);
    };
    const auto findInEither = [&](NameCategory direct, NameCategory nested) {
        PathItemInfo* found = findIn(direct);
        return found ? found : findIn(nested);
    };
    switch (type) {
    case ovDirTypeCWD:
    case ovDirTypePath:
        return FindPathLevel(info->GetChain(NamePathDir), fullName);
    case ovDirTypePackage:
        return findInEither(NamePackageDir, NameNestedPackageDir);
    case ovDirTypeClass:
        return findInEither(NameClassDir, NameNestedClassDir);
    case ovDirTypePrivate:
        return FindPrivateDir(fullName);
    case ovDirTypeSubDir:
        return findIn(NameSubDir);
    default:
        return nullptr;
    }
}

/// What a name that does not end in `private` means gives the parent of the first `private` behind it, that
/// one the parent of the next, and so on: a loop, since a name may end in any number of them.
PathItemInfo* FullNameLookup::FindPrivateDir(std::u16string_view fullName) const {
    std::u16string_view parentName = DirPartOf(fullName);
    std::size_t depth = 1;
    for (; FilePartOf(parentName) == PrivateDirName; ++depth)
        parentName = DirPartOf(parentName);
    PathItemInfo* found = FindByForm(parentName);
    std::size_t end = parentName.size();
    while (depth-- > 0) {
        const bool hasChildren = found && found->IsDirRecord();
        found = hasChildren ? static_cast<PathAllDirItemInfo*>(found)->GetPrivateDir() : nullptr;
        end = std::min(fullName.find(PrivateDirName, end) + PrivateDirLength, fullName.size());
        if (!found && depth > 0) {
            const std::u16string_view name = fullName.substr(0, end);
            found = FindPlain(name, FilePartOf(name));
        }
    }
    return found;
}

PathItemInfo* FullNameLookup::FindDirFullName(std::u16string_view fullName, ovDirType type) const {
    if (type == ovDirTypeNull)
        return FindByForm(fullName);
    const std::u16string_view leaf = FilePartOf(fullName);
    const auto behind = [&](const char16_t* sentinel) {
        return leaf.starts_with(sentinel) ? FindDirOfType(fullName, leaf.substr(1), type) : nullptr;
    };
    switch (type) {
    case ovDirTypePackage:
        return behind(OvselConstants::U16_OBJPKGSENTINEL);
    case ovDirTypeClass:
        return behind(OvselConstants::U16_OOPSENTINEL);
    default:
        return FindDirOfType(fullName, leaf, type);
    }
}

/// The special kinds first, by the form of the last element; then a path-level directory, then a plain one.
PathItemInfo* FullNameLookup::FindByForm(std::u16string_view fullName) const {
    const std::u16string_view leaf = FilePartOf(fullName);
    PathItemInfo* found = nullptr;
    if (leaf == PrivateDirName)
        found = FindDirOfType(fullName, leaf, ovDirTypePrivate);
    else if (leaf.starts_with(OvselConstants::U16_OOPSENTINEL))
        found = FindDirOfType(fullName, leaf.substr(1), ovDirTypeClass);
    else if (leaf.starts_with(OvselConstants::U16_OBJPKGSENTINEL))
        found = FindDirOfType(fullName, leaf.substr(1), ovDirTypePackage);
    return found ? found : FindPlain(fullName, leaf);
}

PathItemInfo* FullNameLookup::FindPlain(std::u16string_view fullName, std::u16string_view leaf) const {
    const PathNameInfo* info = m_manager.FindNameInfo(leaf);
    if (!info)
        return nullptr;
    PathItemInfo* found = FindPathLevel(info->GetChain(NamePathDir), fullName);
    return found ? found : FindDirInChain(info->GetChain(NameSubDir), fullName);
}
