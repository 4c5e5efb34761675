#include "ovsel/model/pathdiriteminfo.hpp"

#include <algorithm>

#include <ovsel/names.hpp>

#include "host_interfaces/diagnostics.hpp"
#include "host_interfaces/filesystem.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/model/blockpool.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/names/pathnames.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace vfs = foundation::storage::vfs;

namespace {

const char notInThisMode[] = "Not supported in non VFS mode.";

/// The null record has no name; it stands at a location that no directory has.
vfs::AbsoluteIRI LocationOf(const ustring& fullName) {
    const ustring name = fullName.empty() ? ustring(u"\\\\\\") : fullName;
    return vfs::toAbsoluteIRI(u"file", fl::filesystem::make_native_form(name, true));
}

ustring NativeNameOf(const vfs::AbsoluteIRI& location) {
    if (!IsVFSMode())
        HOST_FATAL(notInThisMode);
    return vfs::fromAbsoluteIRI(location);
}

} // namespace

static_assert(sizeof(PathDirItemInfo) <= BlockPool::MaxSize);

void* PathDirItemInfo::operator new(std::size_t size, IPathManager* manager) {
    return manager->GetDirBlockPool().Allocate(size);
}

void PathDirItemInfo::operator delete(void* block, std::size_t size) { BlockPool::Free(block, size); }

void PathDirItemInfo::operator delete(void* block, IPathManager*) {
    BlockPool::Free(block, sizeof(PathDirItemInfo));
}

PathDirItemInfo::PathDirItemInfo(IPathManager* manager, const ustring& fullName, std::u16string_view leaf,
                                 std::int32_t position, ovDirType type)
    : PathAllDirItemInfo(manager, this, fullName, type), m_order(position), m_fullName(fullName) {
    if (IsVFSMode())
        m_directoryIRI = LocationOf(fullName);
    Prepare();
    if (!m_fullName.empty())
        manager->AssignFileSystem(this);
    if (type != ovDirTypeNull)
        Enter(leaf);
}

PathDirItemInfo::PathDirItemInfo(IPathManager* manager, const vfs::AbsoluteIRI& location,
                                 std::int32_t position, ovDirType type)
    : PathAllDirItemInfo(manager, this, NativeNameOf(location), type),
      m_order(position),
      m_fullName(vfs::fromAbsoluteIRI(location)),
      m_directoryIRI(location) {
    Prepare();
    Enter(location.getName());
}

void PathDirItemInfo::Prepare() {
    m_nameAtHand.assign(m_fullName.begin(), m_fullName.end());
    m_positions.reserve(1);
    m_preFrozen = ComputePreFrozen();
}

/// The last step of construction.
void PathDirItemInfo::Enter(std::u16string_view leaf) {
    m_fullNameEntry.emplace(*this);
    LinkAtHead(leaf);
}

void PathDirItemInfo::LeaveFullNameIndex() { m_fullNameEntry.reset(); }

PathDirItemInfo::FullNameEntry::FullNameEntry(PathDirItemInfo& record) : m_record(record) {
    m_record.GetManager()->EnterFullName(&m_record);
}

PathDirItemInfo::FullNameEntry::~FullNameEntry() { m_record.GetManager()->LeaveFullName(&m_record); }

/// By characters, not by elements.
bool PathDirItemInfo::ComputePreFrozen() const {
    const ustring* prefix = GetManager()->GetPreFrozenPrefix();
    if (!prefix)
        return false;
    const std::u16string_view name = GetResolvedName().empty() ? m_fullName : GetResolvedName();
    return NamesEqual(name.substr(0, prefix->size()), *prefix, GetManager()->IsCaseSensitive());
}

void PathDirItemInfo::AppendName(ustring& path) const {
    AppendElement(path, {m_nameAtHand.data(), m_nameAtHand.size()});
}

const vfs::AbsoluteIRI& PathDirItemInfo::GetDirectoryAbsoluteIRI() const {
    if (!m_directoryIRI)
        HOST_FATAL(notInThisMode);
    return *m_directoryIRI;
}

std::int32_t PathDirItemInfo::GetPositionIn(const PathInfo* list) const {
    const auto found = std::find_if(m_positions.begin(), m_positions.end(),
                                    [&](const auto& pair) { return pair.first == list; });
    return found == m_positions.end() ? -1 : found->second;
}

void PathDirItemInfo::SetPositionIn(const PathInfo* list, std::int32_t position) {
    const auto found = std::find_if(m_positions.begin(), m_positions.end(),
                                    [&](const auto& pair) { return pair.first == list; });
    if (found == m_positions.end())
        m_positions.emplace_back(list, position);
    else
        found->second = position;
}

void PathDirItemInfo::RemovePositionIn(const PathInfo* list) {
    const auto found = std::find_if(m_positions.begin(), m_positions.end(),
                                    [&](const auto& pair) { return pair.first == list; });
    if (found != m_positions.end())
        m_positions.erase(found);
}
