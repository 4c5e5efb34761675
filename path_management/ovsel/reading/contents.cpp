#include <memory>

#include <ovsel/cwd.hpp>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/looserecord.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"
#include "ovsel/names/makeroom.hpp"
#include "ovsel/names/unitwords.hpp"
#include "ovsel/reading/dirreader.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"
#include "ovsel/reading/reloadindex.hpp"
#include "ovsel/reading/vfsmode.hpp"

// A directory takes its contents from an item source: all of them when it is loaded, what is new when it is
// loaded again.

namespace {

/// Visits the entries until the directory that they are read for is removed by a callback.
template <class Visit>
void ForEachEntry(const PathAllDirItemInfo& dir, IDirItemsIterator& items, Visit visit) {
    for (items.First(); !items.IsDone() && dir.IsLinked(); items.Next())
        visit(items.CurrentItem());
}

/// A class or package entry's name without its sentinel.
std::u16string_view WithoutSentinel(const DirItemInfo& entry) { return entry.name.substr(1); }

} // namespace

/// Says that a record is being read, as long as it lives.
class PathAllDirItemInfo::Reading {
  public:
    explicit Reading(PathAllDirItemInfo& dir) : m_dir(dir) {
        host::Platform().EndNeighbours(); // hooks come next
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
            AddFile(entry.name, entry.confirmed, entry.fileKind);
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

/// The name is split at its last dot. A name with separators or a drive in it comes from a hook that lists
/// more than leaves; the file system layer then says what its directory is.
void PathAllDirItemInfo::AddFile(std::u16string_view name, bool confirmed, std::uint32_t fileKind) {
    MakeRoom(m_files, 8);
    if (!HoldsAny(name, u'\\', u'/', u':')) {
        const std::u16string_view stem = name.substr(0, name.rfind(u'.'));
        m_files.push_back(new (m_manager) PathFileItemInfo(m_manager, this, stem, name, confirmed, fileKind));
        return;
    }
    const ustring native = fl::filesystem::make_native_form(ustring(name), true);
    const ustring stem = fl::filesystem::extract_stem(native);
    const ustring parent = fl::filesystem::extract_parent_path(native);
    const ustring itemName = parent.empty() ? stem : parent + fl::filesystem::PATHNAME_SEPARATOR + stem;
    m_files.push_back(new (m_manager) PathFileItemInfo(m_manager, this, itemName, name, confirmed, fileKind));
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
        AddFile(entry.name, entry.confirmed, fileKind);
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
