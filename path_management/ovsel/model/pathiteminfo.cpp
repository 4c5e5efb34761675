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

/// The same for one that is read and let go, in a block as heaps have at hand.
constexpr std::size_t usualFullName = 250;

NameCategory CategoryOf(ItemClass itemClass, const PathAllDirItemInfo* parent) {
    const bool isDirect = parent && parent->IsPathDir();
    switch (itemClass) {
    case ItemClass::File:
        if (isDirect)
            return NameFile;
        return parent->GetItemClass() == ItemClass::PrivateDir ? NamePrivateFile : NameNestedFile;
    case ItemClass::SubDir:
        return isDirect ? NameSubDir : NameNestedSubDir;
    case ItemClass::PackageDir:
        return isDirect ? NamePackageDir : NameNestedPackageDir;
    case ItemClass::ClassDir:
        return isDirect ? NameClassDir : NameNestedClassDir;
    case ItemClass::PrivateDir:
        return NamePrivateDir;
    case ItemClass::PathDir:
        break;
    }
    return NamePathDir;
}

} // namespace

PathItemInfo::PathItemInfo(IPathManager* manager, PathAllDirItemInfo* parent, std::u16string_view name,
                           bool verified, ItemClass itemClass)
    : m_parent(parent),
      m_verified(verified),
      m_category(static_cast<std::uint8_t>(CategoryOf(itemClass, parent))) {
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
    room.clear();
    room.reserve(usualFullName);
    AppendFullName(room);
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
    return foundation::storage::vfs::toAbsoluteIRI(GetPathDir()->GetDirectoryAbsoluteIRI().getScheme(),
                                                   fl::filesystem::make_native_form(fullName, true));
}

std::int32_t PathItemInfo::GetOrderNumber() const {
    const PathDirItemInfo* const pathDir = GetPathDir();
    return pathDir ? pathDir->GetOrder() : 0;
}

void PathItemInfo::Release() {
    if (--m_refCount == 0 && !m_linked)
        delete this;
}

void PathItemInfo::DeleteIfUnreferenced() {
    if (m_refCount == 0)
        delete this;
}
