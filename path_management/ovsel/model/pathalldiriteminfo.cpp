#include "ovsel/model/pathalldiriteminfo.hpp"

#include <algorithm>
#include <utility>

#include <ovsel/names.hpp>

#include "host_interfaces/platform.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/looserecord.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"
#include "ovsel/names/nameequality.hpp"

namespace {

ItemClass ItemClassOf(ovDirType type) {
    switch (type) {
    case ovDirTypePackage:
        return ItemClass::PackageDir;
    case ovDirTypeClass:
        return ItemClass::ClassDir;
    case ovDirTypePrivate:
        return ItemClass::PrivateDir;
    default:
        return ItemClass::PathDir;
    }
}

template <class Child>
Child* FindByName(const std::vector<Child*>& children, std::u16string_view name) {
    const auto found =
        std::find_if(children.begin(), children.end(), [&](const Child* c) { return c->GetName() == name; });
    return found == children.end() ? nullptr : *found;
}

template <class Child>
Child* NextBehind(const std::vector<Child*>& children, const PathItemInfo* after) {
    if (!after)
        return children.empty() ? nullptr : children.front();
    auto found = std::find(children.begin(), children.end(), after);
    return found == children.end() || ++found == children.end() ? nullptr : *found;
}

template <class Child>
PathItemInfo* At(const std::vector<Child*>& children, std::int32_t index) {
    const auto i = static_cast<std::size_t>(index);
    return i < children.size() ? children[i] : nullptr;
}

void End(PathFileItemInfo* file) { file->Remove(); }
void End(PathSubDirItemInfo* subDir) { subDir->Remove(); }
void End(PathAllDirItemInfo* dir) { dir->Destroy(); }

/// The child has left the container when its end is told.
template <class Child>
void EndLast(std::vector<Child*>& children) {
    Child* last = children.back();
    children.pop_back();
    End(last);
}

template <class Child>
void EndAll(std::vector<Child*>& children) {
    while (!children.empty())
        EndLast(children);
}

template <class Child>
void EndStale(std::vector<Child*>& children) {
    const auto stale =
        std::stable_partition(children.begin(), children.end(), [](const Child* c) { return !c->IsStale(); });
    // What a callback adds meanwhile stands behind and is not stale.
    for (auto keep = static_cast<std::size_t>(stale - children.begin());
         children.size() > keep && children.back()->IsStale();)
        EndLast(children);
}

template <class Child>
void MarkStale(const std::vector<Child*>& children) {
    for (Child* child : children)
        child->SetStale(true);
}

} // namespace

PathAllDirItemInfo::PathAllDirItemInfo(IPathManager* manager, PathDirItemInfo* self, const ustring& fullName,
                                       ovDirType type)
    : PathItemInfo(manager, nullptr, {}, true, ItemClassOf(type)),
      m_pathDir(self),
      m_manager(manager),
      m_dirType(type),
      m_changeSeen(false),
      m_remote(ovIsWinPathRemote(fullName)),
      m_beingDestroyed(false),
      m_reading(false),
      m_refreshAskedMeanwhile(false),
      m_replaceMark(false) {}

// A child lies where its path directory lies; the system is asked about that one only.
PathAllDirItemInfo::PathAllDirItemInfo(IPathManager* manager, PathAllDirItemInfo* parent,
                                       std::u16string_view name, bool confirmed, ovDirType type)
    : PathItemInfo(manager, parent, name, confirmed, ItemClassOf(type)),
      m_pathDir(parent->GetPathDir()),
      m_manager(manager),
      m_dirType(type),
      m_changeSeen(false),
      m_remote(parent->GetPathDir()->IsRemote()),
      m_beingDestroyed(false),
      m_reading(false),
      m_refreshAskedMeanwhile(false),
      m_replaceMark(false) {}

PathAllDirItemInfo::~PathAllDirItemInfo() = default;

ovDirType PathAllDirItemInfo::GetDirType() const {
    if (m_dirType == ovDirTypePath && static_cast<const PathDirItemInfo*>(this)->GetOrder() == 0)
        return ovDirTypeCWD;
    return m_dirType;
}

PathItemInfo* PathAllDirItemInfo::GetItem(std::int32_t group, std::int32_t index) const {
    switch (group) {
    case DirChildFile:
        return At(m_files, index);
    case DirChildPackageDir:
        return At(m_packageDirs, index);
    case DirChildClassDir:
        return At(m_classDirs, index);
    case DirChildPrivateDir:
        return index == 0 ? m_privateDir : nullptr;
    case DirChildSubDir:
        return At(m_subDirs, index);
    default:
        return nullptr;
    }
}

PathClassDirItemInfo* PathAllDirItemInfo::GetNextClassDir(const PathItemInfo* after) const {
    return NextBehind(m_classDirs, after);
}

PathPackageDirItemInfo* PathAllDirItemInfo::GetNextPackageDir(const PathItemInfo* after) const {
    return NextBehind(m_packageDirs, after);
}

PathClassDirItemInfo* PathAllDirItemInfo::FindClassDir(std::u16string_view name) const {
    return FindByName(m_classDirs, name);
}

PathPackageDirItemInfo* PathAllDirItemInfo::FindPackageDir(std::u16string_view name) const {
    return FindByName(m_packageDirs, name);
}

PathFileItemInfo* PathAllDirItemInfo::FindNextFile(const PathFileItemInfo* after, std::u16string_view name,
                                                   bool caseSensitive) const {
    auto file = m_files.begin();
    if (after) {
        file = std::find(m_files.begin(), m_files.end(), after);
        if (file == m_files.end())
            return nullptr;
        ++file;
    }
    const std::size_t dot = name.rfind(u'.');
    const auto matches = [&](const PathFileItemInfo* candidate) {
        if (name.empty())
            return true;
        if (!NamesEqual(name.substr(0, dot), candidate->GetName(), caseSensitive))
            return false;
        const char16_t* extension = candidate->GetExtension();
        return dot == std::u16string_view::npos ||
               NamesEqual(name.substr(dot + 1), extension ? extension : u"", caseSensitive);
    };
    file = std::find_if(file, m_files.end(), matches);
    return file == m_files.end() ? nullptr : *file;
}

void PathAllDirItemInfo::ForEachLooseBelow(const std::function<void(PathAllDirItemInfo&)>& visit) {
    Loose::ForEachBelow(*this, visit);
}

void PathAllDirItemInfo::MarkAllStale() {
    MarkStale(m_files);
    MarkStale(m_packageDirs);
    MarkStale(m_classDirs);
    MarkStale(m_subDirs);
    if (m_privateDir)
        m_privateDir->SetStale(true);
}

void PathAllDirItemInfo::RemoveStaleChildren() {
    ++m_removals;
    EndStale(m_files);
    EndStale(m_packageDirs);
    EndStale(m_classDirs);
    EndStale(m_subDirs);
    if (m_privateDir && m_privateDir->IsStale())
        EndPrivateDir();
}

void PathAllDirItemInfo::ClearContents() {
    ++m_removals;
    EndAll(m_files);
    EndAll(m_packageDirs);
    EndAll(m_classDirs);
    EndAll(m_subDirs);
    EndPrivateDir();
}

/// As with the others, it has left its place when its end is told: a callback may put another one there.
void PathAllDirItemInfo::EndPrivateDir() {
    if (PathPrivateDirItemInfo* last = std::exchange(m_privateDir, nullptr))
        last->Destroy();
}

void PathAllDirItemInfo::Destroy() {
    if (m_beingDestroyed)
        return;
    m_beingDestroyed = true;
    const Loose loose(*this);
    GetManager()->NotifyInterests(this, ovEventDirRemoved);
    DestroySilently();
}

void PathAllDirItemInfo::DestroySilently() {
    if (!IsLinked())
        return; // it went with its parent
    m_beingDestroyed = true;
    Loose::ForEachBelow(*this, [](PathAllDirItemInfo& loose) { loose.DestroySilently(); });
    ClearContents();
    if (!IsLinked())
        return; // whoever was told of something below has removed the parent
    ReleaseNotification();
    if (IsPathDir())
        static_cast<PathDirItemInfo*>(this)->LeaveFullNameIndex();
    UnlinkFromNameInfo();
    if (IsPathDir())
        GetManager()->UnregisterDirRecord(static_cast<PathDirItemInfo*>(this));
    DeleteIfUnreferenced();
}

void PathAllDirItemInfo::RemoveFile(const PathItemInfo* file) {
    ++m_removals;
    std::erase(m_files, file);
}

const ustring& PathAllDirItemInfo::ResolveName() {
    constexpr std::size_t longestResolvedName = 260;
    ustring room;
    m_resolvedName = host::Platform().FullPath(ReadFullName(room));
    if (m_resolvedName.size() > longestResolvedName)
        m_resolvedName.clear();
    return m_resolvedName;
}
