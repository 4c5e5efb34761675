#include "ovsel/lookup/classfilesearch.hpp"

#include <algorithm>
#include <cstring>
#include <string>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/numeric/conversion/cast.hpp>
#include <ovsel/names.hpp>

#include "host_interfaces/utility.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/ovselconstants.hpp"

namespace {

/// A file of any other extension defines no class. The order has no meaning.
constexpr const char* classExtensions[] = {"svapp", "svx", "sv", "p", nullptr};

ovIsClassFcn& IsClassFcn() {
    static ovIsClassFcn fcn = nullptr;
    return fcn;
}

/// Place in the list, or -1.
int ExtensionIndex(const PathFileItemInfo& file, ovExtensionList list, bool caseSensitive) {
    const fl::i18n::codecvt_ascii_to_ustring convert;
    const char16_t* extension = file.GetExtension();
    for (int i = 0; list && list[i]; ++i)
        if (NamesEqual(extension ? extension : u"", convert(list[i]), caseSensitive))
            return i;
    return -1;
}

/// Without a hook nothing is decided, so that a later one can still answer.
bool AskHost(PathFileItemInfo& file, const ustring& fileName) {
    if (!IsClassFcn())
        return false;
    const bool isClass = IsClassFcn()(fileName);
    file.SetFileKind(isClass ? FileKindClass : FileKindNoClass);
    return isClass;
}

} // namespace

int ClassFileSearch::FindExtensionIndex(const PathFileItemInfo& file, ovExtensionList list) const {
    return ExtensionIndex(file, list, m_path->IsCaseSensitive());
}

PathFileItemInfo* ClassFileSearch::FindBestExtension(const PathAllDirItemInfo* dir,
                                                     std::u16string_view name) const {
    PathFileItemInfo* best = nullptr;
    int bestIndex = -1;
    for (PathFileItemInfo* file = nullptr; dir && (file = dir->FindNextFile(file, name, true));) {
        const int index = FindExtensionIndex(*file, m_extensions);
        if (index > bestIndex) {
            best = file;
            bestIndex = index;
        }
    }
    return best;
}

/// A current directory that is itself a class or package folder is not reached as a path directory.
bool ClassFileSearch::IsEligibleDir(const PathDirItemInfo* dir) const {
    if (dir != m_path->GetCWD())
        return true;
    const std::u16string_view base = dir->GetName();
    return !base.starts_with(OvselConstants::U16_OBJPKGSENTINEL) &&
           !base.starts_with(OvselConstants::U16_OOPSENTINEL);
}

bool ClassFileSearch::IsClassFile(PathFileItemInfo& file) const {
    if (file.GetFileKind() != FileKindUnknown)
        return file.GetFileKind() == FileKindClass;
    if (FindExtensionIndex(file, classExtensions) < 0) {
        file.SetFileKind(FileKindNoClass);
        return false;
    }
    ustring fullName;
    file.GetFullName(fullName);
    return AskHost(file, fullName);
}

PathFileItemInfo* ClassFileSearch::Find() {
    if (!IsAll7Bit(m_name, std::strlen(m_name)))
        return nullptr;
    const ustring name = m_converter(m_name);
    Names components;
    boost::algorithm::split(components, name, boost::algorithm::is_any_of(u"."));
    PathFileItemInfo* found = components.size() == 1 ? FindPlain(name) : FindInPackages(components);
    return found && IsClassFile(*found) ? found : nullptr;
}

PathFileItemInfo* ClassFileSearch::FindInClassDirs(const PathItemInfo* chain, const ustring& name) const {
    for (const PathItemInfo* item = chain; item; item = item->GetNext())
        if (IsEligibleDir(item->GetPathDir()))
            if (PathFileItemInfo* file =
                    FindBestExtension(static_cast<const PathClassDirItemInfo*>(item), name))
                return file;
    return nullptr;
}

PathFileItemInfo* ClassFileSearch::FindAmongFiles(const PathItemInfo* chain, const ustring& name) const {
    for (const PathItemInfo* item = chain; item; item = item->GetNext())
        if (IsEligibleDir(item->GetPathDir()))
            if (PathFileItemInfo* file = FindBestExtension(item->GetParent(), name))
                return file;
    return nullptr;
}

/// Only the first plain file in path order is considered; one that is no class hides other plain files, but
/// no `@` folder. Between a plain class file and a folder the one that comes first on the path wins, and the
/// folder at equal places.
PathFileItemInfo* ClassFileSearch::FindPlain(const ustring& name) {
    const PathNameInfo* info = m_path->FindNameInfo(name);
    if (!info)
        return nullptr;
    PathFileItemInfo* inClassDir = FindInClassDirs(info->GetChain(NameClassDir), name);
    PathFileItemInfo* plain = FindAmongFiles(info->GetChain(NameFile), name);
    if (!plain || !IsClassFile(*plain))
        return inClassDir;
    return inClassDir && inClassDir->GetOrderNumber() <= plain->GetOrderNumber() ? inClassDir : plain;
}

/// The package that the middle components lead to from the first, or null. Only as much of the first's name
/// is compared as the component is long; the index has chosen the chain already.
const PathAllDirItemInfo* ClassFileSearch::Descend(const PathItemInfo* package,
                                                   const Names& components) const {
    if (!package->GetName().starts_with(components.front()) || !IsEligibleDir(package->GetPathDir()))
        return nullptr;
    const auto* dir = static_cast<const PathAllDirItemInfo*>(package);
    for (std::size_t i = 1; dir && i + 1 < components.size(); ++i)
        dir = dir->FindPackageDir(components[i]);
    return dir;
}

/// Only the first plain file in path order is considered.
PathFileItemInfo* ClassFileSearch::FindInPackages(const Names& components) {
    const ustring& name = components.back();
    const PathNameInfo* info = m_path->FindNameInfo(components.front());
    if (!info || !m_path->FindNameInfo(name))
        return nullptr;
    bool plainSeen = false;
    for (const PathItemInfo* item = info->GetChain(NamePackageDir); item; item = item->GetNext()) {
        const PathAllDirItemInfo* package = Descend(item, components);
        if (!package)
            continue;
        if (PathFileItemInfo* file = FindBestExtension(package->FindClassDir(name), name))
            return file;
        PathFileItemInfo* plain = plainSeen ? nullptr : FindBestExtension(package, name);
        if (plain && IsClassFile(*plain))
            return plain;
        plainSeen = plainSeen || plain;
    }
    return nullptr;
}

void ovSetIsClassFcn(ovIsClassFcn fcn) { IsClassFcn() = fcn; }

bool ovDoesClassFileExist(ovPath path, const char* name, ovExtensionList extensions) {
    return ClassFileSearch(path, name, extensions).Find() != nullptr;
}

bool ovGetClassFile(ovPath path, const char* name, ustring& result, ovExtensionList extensions) {
    const PathFileItemInfo* file = ClassFileSearch(path, name, extensions).Find();
    if (!file)
        return false;
    ustring fullName;
    file->GetFullName(fullName);
    if (ovIsAbsolutePath(fullName))
        result = fullName;
    else
        ovFullPath(result, fullName);
    return true;
}

bool ovGetClassFile(ovPath path, const char* name, char* buffer, int bufferSize, ovExtensionList extensions) {
    const auto size = boost::numeric_cast<std::size_t>(bufferSize);
    if (size > 0)
        buffer[0] = '\0';
    ustring wide;
    if (!ovGetClassFile(path, name, wide, extensions))
        return false;
    const std::string narrow = fl::i18n::codecvt_ustring_to_narrow_string()(wide);
    if (size > 0)
        buffer[narrow.copy(buffer, size - 1)] = '\0';
    return true;
}

bool ovIsFileClassdef(ovDir dir, const ustring& fullName, const ustring& name) {
    if (ovGetDirType(dir) == ovDirTypeNull)
        return false;
    PathFileItemInfo* file = dir->FindNextFile(nullptr, name, true);
    if (!file)
        return false;
    if (file->GetFileKind() != FileKindUnknown)
        return file->GetFileKind() == FileKindClass;
    return ExtensionIndex(*file, classExtensions, false) >= 0 && AskHost(*file, fullName);
}

bool ovIsFileClassdef(ovDir dir, const char* fullName, const char* name) {
    return ovIsFileClassdef(dir, fl::i18n::to_ustring(fullName), fl::i18n::to_ustring(name));
}
