#include "ovsel/model/pathiteminfo.hpp"

#include "host_interfaces/filesystem.hpp"
#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/names/pathnames.hpp"

namespace {
/// A usual absolute name fits; longer ones grow.
constexpr std::size_t fullNameCapacity = 1024;
} // namespace

PathItemInfo::PathItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                           bool verified, ItemClass itemClass)
    : m_parent(parent),
      m_pathDir(parent ? parent->GetPathDir() : nullptr),
      m_linked(true),
      m_stale(false),
      m_verified(verified),
      m_pending(false),
      m_itemClass(static_cast<std::uint32_t>(itemClass) & 7u),
      m_fileKind(0) {
    m_direct = m_parent == m_pathDir;
    if (m_parent)
        m_nameInfo = manager->AddNameInfo(name, m_spelling);
}

PathItemInfo::~PathItemInfo() {
    // Whatever was built to the end has been unlinked.
    if (m_linked && m_nameInfo && m_nameInfo->HasNoItems())
        m_parent->GetManager()->RemoveNameInfo(m_nameInfo);
}

/// Other records belong to the path of the directory that owns them.
IPathManager* PathItemInfo::GetManager() const {
    return (IsDirRecord() ? static_cast<const PathAllDirItemInfo*>(this) : m_parent)->GetOwnManager();
}

void PathItemInfo::AppendName(ustring& path) const { AppendElement(path, GetName()); }

bool PathItemInfo::MatchesDiskName(std::u16string_view name) const { return name == GetName(); }

const char16_t* PathItemInfo::GetExtension() const {
    const std::u16string_view name = GetName();
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string_view::npos ? nullptr : name.data() + dot;
}

std::u16string_view PathItemInfo::GetName() const {
    return m_nameInfo ? m_nameInfo->GetSpelling(m_spelling) : u"";
}

void PathItemInfo::GetFullName(ustring& out) const {
    out.clear();
    out.reserve(fullNameCapacity);
    AppendFullName(out);
}

const ustring& PathItemInfo::ReadFullName(ustring& room) const {
    if (IsPathDir())
        return static_cast<const PathDirItemInfo*>(this)->GetStoredFullName();
    GetFullName(room);
    return room;
}

void PathItemInfo::AppendFullName(ustring& out) const {
    if (m_parent)
        m_parent->AppendFullName(out);
    AppendName(out);
}

foundation::storage::vfs::AbsoluteIRI PathItemInfo::GetAbsoluteIRI() const {
    ustring fullName;
    GetFullName(fullName);
    return foundation::storage::vfs::toAbsoluteIRI(m_pathDir->GetDirectoryAbsoluteIRI().getScheme(),
                                                   fl::filesystem::make_native_form(fullName, true));
}

NameCategory PathItemInfo::GetCategory() const {
    switch (GetItemClass()) {
    case ItemClass::File:
        if (m_direct)
            return NameFile;
        return m_parent->GetItemClass() == ItemClass::PrivateDir ? NamePrivateFile : NameNestedFile;
    case ItemClass::SubDir:
        return m_direct ? NameSubDir : NameNestedSubDir;
    case ItemClass::PackageDir:
        return m_direct ? NamePackageDir : NameNestedPackageDir;
    case ItemClass::ClassDir:
        return m_direct ? NameClassDir : NameNestedClassDir;
    case ItemClass::PrivateDir:
        return NamePrivateDir;
    case ItemClass::PathDir:
        break;
    }
    return NamePathDir;
}

std::int32_t PathItemInfo::GetOrderNumber() const { return m_pathDir ? m_pathDir->GetOrder() : 0; }

void PathItemInfo::Release() {
    if (--m_refCount == 0 && !m_linked)
        delete this;
}

void PathItemInfo::DeleteIfUnreferenced() {
    if (m_refCount == 0)
        delete this;
}
