#include "ovsel/frame/pathmgr.hpp"

#include <algorithm>
#include <any>
#include <iterator>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/frame/messages.hpp"
#include "ovsel/frame/pathinfo.hpp"
#include "ovsel/frame/pathregistry.hpp"
#include "ovsel/lookup/fullnameindex.hpp"
#include "ovsel/lookup/fullnamelookup.hpp"
#include "ovsel/lookup/nametable.hpp"
#include "ovsel/model/blockpool.hpp"
#include "ovsel/model/nulldiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/makeroom.hpp"
#include "ovsel/reading/diritemsiteratorfactory.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"
#include "ovsel/reading/vfsmode.hpp"
#include "ovsel/reading/watchtable.hpp"
#include <ovsel/names.hpp>

namespace vfs = foundation::storage::vfs;

PathMgr::PathMgr(const char* name, const char16_t* preFrozenPrefix, ovCaseSensitivity caseSensitivity,
                 bool disableTempFileProbe)
    : m_blocks(std::make_unique<BlockPool>()),
      m_dirBlocks(new BlockPool, BlockPool::Disown()),
      m_nameIndex(std::make_unique<NameTable>(*m_blocks)),
      m_fullNameIndex(std::make_unique<FullNameIndex>()),
      m_pathInfo(std::make_shared<PathInfo>(this)),
      m_isCaseSensitive(caseSensitivity == ovCaseSensitive),
      m_hooks(IOHooks::Defaults()),
      m_name(name),
      m_storageSystem(vfs::createStorageSystem(std::any(), nullptr)),
      m_watches(std::make_unique<WatchTable>()) {
    SetFlag(ProcessCWDOwner, PathRegistry::IsEmpty());
    SetFlag(TempFileProbeDisabled, disableTempFileProbe);
    if (preFrozenPrefix)
        m_preFrozenPrefix = preFrozenPrefix;
    if (IsVFSMode())
        m_dirItemsIteratorFactory = std::make_unique<DirItemsIteratorFactory>(
            vfs::StorageSystemReference(m_storageSystem), false, m_isCaseSensitive);
    try {
        EnterService();
    } catch (...) {
        m_isValid = false;
        TearDown();
        throw;
    }
    --m_refCount; // a hook may have kept a handle
}

void PathMgr::EnterService() {
    m_dirRecords.reserve(1);
    m_dirRecords.push_back(new (this) NullDirItemInfo(this));
    PathRegistry::Insert(m_name, this);
    // The host has not had a chance to say whether it wants to hear of a directory without notifications.
    m_notificationHandleWarnings = ovWarnCNHNever;
    m_pathInfo->SetCWD(ustring());
    m_notificationHandleWarnings = ovWarnCNHOnce;
}

PathMgr::~PathMgr() {
    m_isDying = true;
    RemovePath();
}

void PathMgr::AddRef() {
    if (!m_isDying)
        ++m_refCount;
}

void PathMgr::Release() {
    if (m_isDying || --m_refCount != 0)
        return;
    m_isDying = true;
    delete this;
}

void PathMgr::RemovePath() {
    if (!m_isValid || m_isBeingRemoved)
        return;
    m_isBeingRemoved = true; // whoever is told now may remove the path again
    NotifyInterests(GetNullDir(), ovEventPathRemoved);
    m_isValid = false;
    TearDown();
}

/// @pre out of service, so that what goes now fires no events.
void PathMgr::TearDown() {
    if (PathRegistry::Find(m_name) == this)
        PathRegistry::Erase(m_name);
    // The field is null while the list goes, so that nothing is placed in chains that are being taken apart.
    if (const auto list = std::exchange(m_pathInfo, nullptr))
        list->Clear();
    if (NullDirItemInfo* null = GetNullDir())
        null->Destroy();
    m_dirRecords.clear();
}

void PathMgr::AssignFileSystem(PathAllDirItemInfo* record) {
    ustring room;
    const ustring& fullName = record->ReadFullName(room);
    record->SetFileSystemIndex(FileSystemTable::UnknownRow);
    ustring fileSystem;
    if (!GetFileSystemName(fileSystem, fullName)) {
        const ustring& resolved = record->ResolveName();
        if (resolved.empty() || !GetFileSystemName(fileSystem, resolved))
            return;
    }
    record->SetFileSystemIndex(m_fileSystems.RowOf(fileSystem, m_isCaseSensitive));
}

PathNameInfo* PathMgr::FindNameInfo(std::u16string_view name) const { return m_nameIndex->Find(name); }

PathNameInfo* PathMgr::AddNameInfo(std::u16string_view name, std::int32_t& spelling) {
    return m_nameIndex->Add(name, spelling);
}

void PathMgr::RemoveNameInfo(PathNameInfo* info) { m_nameIndex->Remove(info); }

void PathMgr::ExpectNames(std::size_t count) { m_nameIndex->Expect(count); }

bool PathMgr::HasAsciiNamesOnly() const { return m_nameIndex->IsAscii(); }

void PathMgr::EnterFullName(PathDirItemInfo* record) { m_fullNameIndex->Enter(record); }

void PathMgr::LeaveFullName(PathDirItemInfo* record) { m_fullNameIndex->Leave(record); }

std::optional<PathDirItemInfo*> PathMgr::FindByFullName(std::u16string_view fullName) const {
    return m_fullNameIndex->Find(fullName, m_isCaseSensitive);
}

void PathMgr::SetIOFcns(ovReadDirectoryFcn readDirectory, ovDirAccessibilityFcn dirAccessibility,
                        ovReservedIOFcn reserved, ovDirExistsFcn dirExists, ovFileTimeFcn fileTime) {
    m_hooks =
        IOHooks::Merge({readDirectory, dirAccessibility, reserved, dirExists, fileTime}, IOHooks::Defaults());
}

// In each of the calls of a hook, its handle keeps this object alive until it returns or lets go, so nothing
// here is touched behind it; a hook called out of service gets a null handle.

char16_t* PathMgr::ReadDirectory(const ustring& name, unsigned short** attributes) {
    return m_hooks.m_readDirectoryFcn(ovPath(this), name, attributes);
}

ovDirAccessibility PathMgr::GetDirAccessibility(const ustring& name) {
    return m_hooks.m_dirAccessibilityFcn(ovPath(this), name);
}

bool PathMgr::DirExistsIRI(const vfs::AbsoluteIRI& location) {
    return DirExists(vfs::fromAbsoluteIRI(location));
}

bool PathMgr::DirExists(const ustring& name) {
    if (IsVFSMode()) {
        const ustring native = fl::filesystem::make_native_form(name, true);
        return m_dirItemsIteratorFactory &&
               m_dirItemsIteratorFactory->FolderExists(vfs::toAbsoluteIRI(u"file", native));
    }
    return m_hooks.m_dirExistsFcn(ovPath(this), name);
}

long PathMgr::GetFileTime(const ustring& name) { return m_hooks.m_fileTimeFcn(ovPath(this), name); }

int PathMgr::RegisterInterest(InterestFcn callback) { return m_interests.Register(std::move(callback)); }

void PathMgr::NotifyInterests(PathAllDirItemInfo* dir, ovEventType event) {
    if (!m_isValid)
        return;
    const ovDir held(dir);
    m_interests.Notify(event, dir);
}

int PathMgr::GetPathEntryCount() const { return m_pathInfo ? m_pathInfo->GetPathEntryCount() : 0; }

void PathMgr::UnregisterDirRecord(PathDirItemInfo* record) {
    // From the end, where a path that is taken down leaves off.
    const auto found = std::find(m_dirRecords.rbegin(), m_dirRecords.rend(), record);
    if (found != m_dirRecords.rend())
        m_dirRecords.erase(std::next(found).base());
}

NullDirItemInfo* PathMgr::GetNullDir() const {
    return m_dirRecords.empty() ? nullptr : static_cast<NullDirItemInfo*>(m_dirRecords.front());
}

PathDirItemInfo* PathMgr::GetCWD() const {
    PathDirItemInfo* cwd = GetPathEntry(0);
    return cwd ? cwd : GetNullDir();
}

const char* PathMgr::SetCWD(const ustring& name) { return std::shared_ptr(m_pathInfo)->SetCWD(name); }

void PathMgr::HideCWD(bool hide) {
    SetFlag(CWDHidden, hide);
    if (hide)
        if (const ovDir held(GetCWD()); *held)
            held->ClearContents();
}

PathDirItemInfo* PathMgr::AddDir(const ustring& name, bool atBegin) {
    return std::shared_ptr(m_pathInfo)->AddDir(name, atBegin, GetFreezeAllAddedDirectories());
}

void PathMgr::RemoveDir(PathDirItemInfo* record) { std::shared_ptr(m_pathInfo)->RemoveDir(record); }

void PathMgr::RemoveDirByName(const ustring& name) { std::shared_ptr(m_pathInfo)->RemoveDirByName(name); }

PathDirItemInfo* PathMgr::GetPathEntry(int index) const {
    return m_pathInfo ? m_pathInfo->GetPathEntry(index) : nullptr;
}

bool PathMgr::ReplacePath(const ustring& path) { return std::shared_ptr(m_pathInfo)->ReplacePath(path); }

void PathMgr::RefreshAllDirectories(ovDirRefreshType type) {
    std::shared_ptr(m_pathInfo)->RefreshAllDirectories(type);
}

void PathMgr::SetAllChanged(DirState state) { m_pathInfo->SetAllChanged(state); }

void PathMgr::ApplyRefreshPolicyToPathEntry(int index, ovRefreshPolicy policy) {
    if (PathDirItemInfo* entry = GetPathEntry(index))
        entry->ApplyRefreshPolicy(policy);
}

void PathMgr::ApplyRefreshPolicyToAllDirs(ovRefreshPolicy policy) {
    const std::vector<ovDir> present(m_dirRecords.begin() + 1, m_dirRecords.end());
    for (const ovDir& record : present)
        record->ApplyRefreshPolicyToTree(policy);
}

PathDirItemInfo* PathMgr::FindDirByIRI(const vfs::AbsoluteIRI& location, DirScope scope) const {
    return FullNameLookup(*this).FindPathDir(vfs::fromAbsoluteIRI(location), location.getName(), scope);
}

PathDirItemInfo* PathMgr::FindPathDir(const ustring& fullName, DirScope scope) const {
    return FullNameLookup(*this).FindPathDir(fullName, scope);
}

PathItemInfo* PathMgr::FindDirInChain(PathItemInfo* first, const ustring& fullName) const {
    return FullNameLookup(*this).FindDirInChain(first, fullName);
}

PathItemInfo* PathMgr::FindDirFullName(const ustring& fullName, ovDirType type) const {
    return FullNameLookup(*this).FindDirFullName(fullName, type);
}

PathItemInfo* PathMgr::FindDirOfType(const ustring& fullName, std::u16string_view leaf,
                                     ovDirType type) const {
    return FullNameLookup(*this).FindDirOfType(fullName, leaf, type);
}

void PathMgr::GetFile(vfs::File& out, const vfs::Folder& parent, const ustring& name) const {
    out = vfs::File(vfs::ChildLocation(parent.getLocation(), name), parent.getReference());
}

void PathMgr::GetFileByIRI(vfs::File& out, const vfs::AbsoluteIRI& location) const {
    out = vfs::File(location, vfs::StorageSystemReference(m_storageSystem));
}

void PathMgr::GetFolder(vfs::Folder& out, const vfs::Folder& parent, const ustring& name) const {
    out = vfs::Folder(vfs::ChildLocation(parent.getLocation(), name), parent.getReference());
}

void PathMgr::GetFolderByIRI(vfs::Folder& out, const vfs::AbsoluteIRI& location) const {
    out = vfs::Folder(location, vfs::StorageSystemReference(m_storageSystem));
}

void PathMgr::InstallCachedDirItems(Quorrant::ovsel::CachedDirMap contents, const vfs::AbsoluteIRI& root) {
    if (m_dirItemsIteratorFactory)
        m_dirItemsIteratorFactory->InstallCachedDirItems(std::move(contents), root);
}

void PathMgr::ClearCachedDirItems() {
    if (m_dirItemsIteratorFactory)
        m_dirItemsIteratorFactory->ClearCachedDirItems();
}

std::unique_ptr<IDirItemsIterator> PathMgr::CreateDirItemsIterator(const vfs::AbsoluteIRI& location) {
    return m_dirItemsIteratorFactory ? m_dirItemsIteratorFactory->CreateDirItemsIterator(location) : nullptr;
}

void PathMgr::SetDirItemsIteratorFactory(std::unique_ptr<IDirItemsIteratorFactory> factory) {
    m_dirItemsIteratorFactory = std::move(factory);
}

void PathMgr::SearchEnds() {
    if (--m_searchCount > 0)
        return;
    for (PathItemInfo* item : std::exchange(m_itemsToDelete, {}))
        item->DeleteIfUnreferenced();
}

void PathMgr::PrepareDeletion() { MakeRoom(m_itemsToDelete); }

void PathMgr::DeleteAfterSearches(PathItemInfo* item) {
    if (m_searchCount > 0)
        m_itemsToDelete.push_back(item);
    else
        item->DeleteIfUnreferenced();
}

namespace {

/// Null for the failures that are not reported.
const char* WarningOf(const fl::filesystem::Failure& failure) {
    if (dynamic_cast<const fl::filesystem::InvalidArgument*>(&failure) ||
        dynamic_cast<const fl::filesystem::PathNotFound*>(&failure))
        return "nameNonexistentOrNotADirectory";
    if (dynamic_cast<const fl::filesystem::AccessDenied*>(&failure))
        return "directoryPermissionDenied";
    return nullptr;
}

} // namespace

void PathMgr::ResolveDirLocation(DirLocation& result, const ustring& name) {
    result = {};
    try {
        result.fullName = ovIsAbsolutePath(name) ? name : fl::filesystem::canonical(name, ustring());
        result.resolved = true;
    } catch (const fl::filesystem::Failure& failure) {
        if (const char* id = WarningOf(failure))
            ReportMessage(MessageChannel::Warning, id, {name});
    }
}
