#include "ovsel/model/pathalldiriteminfo.hpp"

#include <algorithm>
#include <optional>
#include <utility>

#include <ovsel/cwd.hpp>
#include <ovsel/names.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"
#include "ovsel/names/makeroom.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/reading/dirreader.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"
#include "ovsel/reading/reloadindex.hpp"
#include "ovsel/reading/vfsmode.hpp"

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

/// Visits the entries until the directory that they are read for is removed by a callback.
template <class Visit>
void ForEachEntry(const PathAllDirItemInfo& dir, IDirItemsIterator& items, Visit visit) {
    for (items.First(); !items.IsDone() && dir.IsLinked(); items.Next())
        visit(items.CurrentItem());
}

/// A class or package entry's name without its sentinel.
std::u16string_view WithoutSentinel(const DirItemInfo& entry) {
    return std::u16string_view(entry.name).substr(1);
}

} // namespace

PathAllDirItemInfo::PathAllDirItemInfo(IPathManager* manager, const ustring& fullName, ovDirType type)
    : PathItemInfo(manager, nullptr, {}, true, ItemClassOf(type)),
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

/// A record below another that stands in no container at the moment, since it is being read for the first
/// time or its end is being told. Whoever ends its parent meanwhile has to end it too: nothing may stay in
/// the chains whose name leads through a record that has gone.
class PathAllDirItemInfo::Loose {
  public:
    explicit Loose(PathAllDirItemInfo& record) : m_record(record), m_held(&record), m_outer(Innermost()) {
        Innermost() = this;
    }
    ~Loose() { Innermost() = m_outer; }
    Loose(const Loose&) = delete;
    Loose& operator=(const Loose&) = delete;

    template <class Visit>
    static void ForEachBelow(const PathAllDirItemInfo& parent, Visit visit) {
        for (const Loose* loose = Innermost(); loose; loose = loose->m_outer)
            if (loose->m_record.IsLinked() && loose->m_record.GetParent() == &parent)
                visit(loose->m_record);
    }

  private:
    /// Paths live on threads of their own.
    static Loose*& Innermost() {
        static thread_local Loose* innermost = nullptr;
        return innermost;
    }

    PathAllDirItemInfo& m_record;
    const ovDir m_held;
    Loose* const m_outer;
};

void PathAllDirItemInfo::ForEachLooseBelow(const std::function<void(PathAllDirItemInfo&)>& visit) {
    Loose::ForEachBelow(*this, visit);
}

/// Says that a record is being read, as long as it lives.
class PathAllDirItemInfo::Reading {
  public:
    explicit Reading(PathAllDirItemInfo& dir) : m_dir(dir) {
        m_dir.m_reading = true;
        m_dir.GetManager()->ReadingBegins();
    }
    ~Reading() {
        m_dir.m_reading = false;
        m_dir.GetManager()->ReadingEnds();
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

  private:
    PathAllDirItemInfo& m_dir;
};

void PathAllDirItemInfo::Load(bool freeze) {
    {
        const Reading reading(*this);
        ReadFromSource(freeze);
        // A warning that no handle is to be had may refresh, which would begin the detection anew.
        if (IsLinked())
            StartChangeDetection(!freeze);
    }
    if (!IsLinked())
        return; // removed by a callback meanwhile
    m_changeSeen = false;
    m_state = m_state == DirUnloaded && freeze ? DirFrozen : DirLoaded;
    TakeRefreshAskedMeanwhile();
}

/// A callback that asked for a refresh of what was being read gets it with the next one.
void PathAllDirItemInfo::TakeRefreshAskedMeanwhile() {
    if (m_refreshAskedMeanwhile && m_state == DirLoaded) {
        m_state = DirChanged;
        GetManager()->SetSettled(false);
    }
    m_refreshAskedMeanwhile = false;
}

void PathAllDirItemInfo::ReadFromSource(bool freeze) {
    if (!IsVFSMode()) {
        ustring room;
        DirReader reader(GetManager(), ReadFullName(room));
        ReadContents(reader, freeze);
        return;
    }
    const auto location = GetAbsoluteIRI();
    if (GetManager()->IsCWDHidden() && GetManager()->FindDirByIRI(location, DirScope::CWD) &&
        !ovIsCWDOnPath(ovPath(GetManager())))
        return;
    if (const auto items = GetManager()->CreateDirItemsIterator(location))
        ReadContents(*items, freeze);
}

void PathAllDirItemInfo::ReadContents(IDirItemsIterator& items, bool freeze) {
    ForEachEntry(*this, items, [&](const DirItemInfo& entry) {
        switch (entry.kind) {
        case DirItemUnknown:
        case DirItemSubdir:
            if (IsPathDir())
                AddSubDir(entry.name, entry.confirmed);
            break;
        case DirItemFile:
            AddFile(entry, entry.fileKind);
            break;
        case DirItemClassDir:
            AddClassDir(WithoutSentinel(entry), freeze, entry.confirmed);
            break;
        case DirItemPackageDir:
            AddPackageDir(WithoutSentinel(entry), freeze, entry.confirmed);
            break;
        case DirItemPrivateDir:
            AddPrivateDir(entry.name, freeze, entry.confirmed);
            break;
        default:
            break;
        }
    });
}

void PathAllDirItemInfo::Reload(const RefreshOptions& options) {
    if (!m_changeSeen) {
        // The change was declared; what detection may have to say of it is consumed, and not listened to.
        const DirState declared = m_state;
        CheckChanged();
        m_state = declared;
        if (!IsLinked())
            return; // removed by a hook that the check called
    }
    m_changeSeen = false;
    ReadAgain(options);
    if (IsLinked())
        TakeRefreshAskedMeanwhile();
}

void PathAllDirItemInfo::ReadAgain(const RefreshOptions& options) {
    const Reading reading(*this);
    SetStale(false);
    MarkAllStale();
    ReloadFromSource(options);
    if (!IsLinked())
        return; // removed by a callback meanwhile, here and below
    RemoveStaleChildren();
    if (!IsLinked())
        return;
    GetManager()->NotifyInterests(this, ovEventDirContentsLoaded);
    if (m_state != DirFrozen) // by whoever was told
        m_state = options.freeze ? DirFrozen : DirLoaded;
}

void PathAllDirItemInfo::ReloadFromSource(const RefreshOptions& options) {
    ustring room;
    const ustring& fullName = ReadFullName(room);
    ReloadIndex index(*this);
    if (!IsVFSMode()) {
        DirReader reader(GetManager(), fullName);
        ReloadContents(reader, options, index);
        return;
    }
    const auto location =
        foundation::storage::vfs::toAbsoluteIRI(u"file", fl::filesystem::make_native_form(fullName, true));
    if (const auto items = GetManager()->CreateDirItemsIterator(location))
        ReloadContents(*items, options, index);
}

void PathAllDirItemInfo::ReloadContents(IDirItemsIterator& items, const RefreshOptions& options,
                                        ReloadIndex& index) {
    ForEachEntry(*this, items, [&](const DirItemInfo& entry) {
        switch (entry.kind) {
        case DirItemFile:
            FindOrAddFile(entry, entry.fileKind, index);
            break;
        case DirItemClassDir:
            FindOrAddClassDir(WithoutSentinel(entry), options, entry.confirmed, index);
            break;
        case DirItemPackageDir:
            FindOrAddPackageDir(WithoutSentinel(entry), options, entry.confirmed, index);
            break;
        case DirItemPrivateDir:
            FindOrAddPrivateDir(entry.name, options, entry.confirmed);
            break;
        default:
            if (IsPathDir())
                FindOrAddSubDir(entry, index);
            break;
        }
    });
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

/// The name is split at its last dot. A name with separators or a drive in it comes from a hook that lists
/// more than leaves; the file system layer then says what its directory is.
void PathAllDirItemInfo::AddFile(const DirItemInfo& entry, std::uint32_t fileKind) {
    MakeRoom(m_files);
    const std::u16string_view name = entry.name;
    if (LastNameSplit(name) == std::u16string_view::npos) {
        const std::u16string_view stem = name.substr(0, name.rfind(u'.'));
        m_files.push_back(new (GetManager())
                              PathFileItemInfo(GetManager(), this, stem, name, entry.confirmed, fileKind));
        return;
    }
    const ustring native = fl::filesystem::make_native_form(entry.name, true);
    const ustring stem = fl::filesystem::extract_stem(native);
    const ustring parent = fl::filesystem::extract_parent_path(native);
    const ustring itemName = parent.empty() ? stem : parent + fl::filesystem::PATHNAME_SEPARATOR + stem;
    m_files.push_back(new (GetManager())
                          PathFileItemInfo(GetManager(), this, itemName, name, entry.confirmed, fileKind));
}

/// @return null if this directory has been removed meanwhile, and the child with it.
template <class Child>
std::unique_ptr<Child, PathAllDirItemInfo::Discard>
PathAllDirItemInfo::LoadedChild(std::u16string_view name, bool freeze, bool confirmed) {
    auto* const record = new Child(GetManager(), this, name, confirmed);
    const Loose loose(*record);
    std::unique_ptr<Child, Discard> child(record);
    child->Load(freeze);
    if (!child->IsLinked())
        child.release(); // it went with this directory, and goes for good with its last handle
    return child;
}

/// @return the child, or null if a party that was told of it has removed it.
template <class Child>
Child* PathAllDirItemInfo::AddChild(std::vector<Child*>& children, std::u16string_view name, bool freeze,
                                    bool confirmed) {
    auto child = LoadedChild<Child>(name, freeze, confirmed);
    if (!IsLinked())
        return nullptr; // a party that was told of something below has removed this directory
    MakeRoom(children);
    children.push_back(child.get());
    const ovDir held(child.get());
    GetManager()->NotifyInterests(child.get(), ovEventDirAdded);
    Child* added = child.release();
    return added->IsLinked() ? added : nullptr;
}

PathClassDirItemInfo* PathAllDirItemInfo::AddClassDir(std::u16string_view name, bool freeze, bool confirmed) {
    return m_dirType == ovDirTypeClass ? nullptr : AddChild(m_classDirs, name, freeze, confirmed);
}

PathPackageDirItemInfo* PathAllDirItemInfo::AddPackageDir(std::u16string_view name, bool freeze,
                                                          bool confirmed) {
    return AddChild(m_packageDirs, name, freeze, confirmed);
}

void PathAllDirItemInfo::AddPrivateDir(std::u16string_view name, bool freeze, bool confirmed) {
    auto child = LoadedChild<PathPrivateDirItemInfo>(name, freeze, confirmed);
    if (!IsLinked())
        return;
    if (m_privateDir)
        m_privateDir->DestroySilently(); // a source that lists two: the last one holds
    m_privateDir = child.release();
    GetManager()->NotifyInterests(m_privateDir, ovEventDirAdded);
}

void PathAllDirItemInfo::AddSubDir(std::u16string_view name, bool confirmed) {
    MakeRoom(m_subDirs);
    m_subDirs.push_back(new PathSubDirItemInfo(GetManager(), this, name, confirmed));
}

void PathAllDirItemInfo::FindOrAddFile(const DirItemInfo& entry, std::uint32_t fileKind, ReloadIndex& index) {
    PathFileItemInfo* file = index.FindFile(entry.name);
    if (!file) {
        AddFile(entry, fileKind);
        index.Enter(m_files.back());
        return;
    }
    file->SetStale(false);
    file->SetFileKind(FileKindUnknown); // it may have been rewritten
}

void PathAllDirItemInfo::FindOrAddClassDir(std::u16string_view name, const RefreshOptions& options,
                                           bool confirmed, ReloadIndex& index) {
    if (PathClassDirItemInfo* child = index.FindClassDir(name))
        child->SetStale(false);
    else if (PathClassDirItemInfo* added = AddClassDir(name, options.freeze, confirmed))
        index.Enter(added);
}

void PathAllDirItemInfo::FindOrAddPackageDir(std::u16string_view name, const RefreshOptions& options,
                                             bool confirmed, ReloadIndex& index) {
    if (PathPackageDirItemInfo* child = index.FindPackageDir(name))
        child->SetStale(false);
    else if (PathPackageDirItemInfo* added = AddPackageDir(name, options.freeze, confirmed))
        index.Enter(added);
}

void PathAllDirItemInfo::FindOrAddPrivateDir(std::u16string_view name, const RefreshOptions& options,
                                             bool confirmed) {
    if (m_privateDir)
        m_privateDir->SetStale(false);
    else
        AddPrivateDir(name, options.freeze, confirmed);
}

void PathAllDirItemInfo::FindOrAddSubDir(const DirItemInfo& entry, ReloadIndex& index) {
    if (PathSubDirItemInfo* child = index.FindSubDir(entry.name)) {
        child->SetStale(false);
        return;
    }
    AddSubDir(entry.name, entry.confirmed);
    index.Enter(m_subDirs.back());
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
