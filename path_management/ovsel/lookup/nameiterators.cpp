#include "ovsel/lookup/nameiterators.hpp"

#include "ovsel/frame/ipathmanager.hpp"
#include "ovsel/lookup/pathitemiterators.hpp"
#include "ovsel/lookup/pathnameinfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace Quorrant::ovsel {

namespace {

constexpr NameCategory everywhere[] = {
    NameFile,         NameNestedFile,       NamePrivateFile,    NameSubDir,  NamePackageDir, NameClassDir,
    NameNestedSubDir, NameNestedPackageDir, NameNestedClassDir, NamePathDir, NamePrivateDir};
constexpr NameCategory visible[] = {NameFile, NamePathDir, NameSubDir, NamePackageDir, NameClassDir};
constexpr NameCategory methods[] = {NameNestedFile, NameClassDir};

std::span<const NameCategory> CategoriesOf(SearchScope scope) {
    switch (scope) {
    case SearchScopeAll:
    case SearchScopePathOnly:
        return everywhere;
    case SearchScopeVisible:
        return visible;
    case SearchScopeMethod:
        return methods;
    default:
        return {};
    }
}

} // namespace

bool NameIteratorImpl::Accept() {
    if (!m_current->IsLinked())
        return false; // another search has found out that it is a directory
    if (!NamesEqual(m_current->GetName(), m_query, m_caseSensitive))
        return false;
    if (!m_includeCWD && m_current->GetPathDir()->GetDirType() == ovDirTypeCWD)
        return false;
    if (m_current->IsVerified() || !m_current->IsFile())
        return true;
    const bool isDirectory = IsReallyDirectory();
    if (!m_current->IsLinked())
        return false; // the host has looked the name up while it was asked
    if (!isDirectory) {
        m_current->SetVerified(true);
        return true;
    }
    static_cast<PathFileItemInfo*>(m_current)->ConvertToSubDir();
    m_current = nullptr;
    ItemRemoved();
    return false;
}

bool NameIteratorImpl::IsReallyDirectory() const {
    if (IsVFSMode())
        return m_manager.DirExistsIRI(m_current->GetAbsoluteIRI());
    ustring fullName;
    m_current->GetFullName(fullName);
    return m_manager.DirExists(fullName);
}

void NameIteratorImpl::StepToNext() {
    m_current = m_next;
    if (m_current)
        m_next = m_current->GetNext();
}

GeneralNameIteratorImpl::GeneralNameIteratorImpl(IPathManager& manager, const PathNameInfo* info,
                                                 const std::u16string_view& query, SearchScope scope,
                                                 bool caseSensitive)
    : NameIteratorImpl(manager, info, query, caseSensitive) {
    if (!info)
        return;
    m_categories = CategoriesOf(scope);
    m_includeCWD = scope != SearchScopePathOnly;
}

PathItemInfo* GeneralNameIteratorImpl::NextChain(CategoryMask categories) {
    while (!m_categories.empty()) {
        const NameCategory category = m_categories.front();
        m_categories = m_categories.subspan(1);
        if (HasBit(categories, category))
            if (PathItemInfo* head = m_nameInfo->GetChain(category))
                return head;
    }
    return nullptr;
}

PathItemInfo* GeneralNameIteratorImpl::Next(CategoryMask categories, std::uint32_t) {
    for (;;) {
        if (!m_next)
            m_next = NextChain(categories);
        StepToNext();
        if (!m_current || Accept())
            return m_current;
    }
}

ConstructorNameIteratorImpl::ConstructorNameIteratorImpl(IPathManager& manager, const PathNameInfo* info,
                                                         const std::u16string_view& query, bool caseSensitive)
    : NameIteratorImpl(manager, info, query, caseSensitive) {
    if (info)
        m_next = info->GetChain(NameNestedFile);
}

bool ConstructorNameIteratorImpl::IsConstructor() const {
    const PathAllDirItemInfo* parent = m_current->GetParent();
    return parent->GetItemClass() == ItemClass::ClassDir &&
           NamesEqual(parent->GetName(), m_query, m_caseSensitive);
}

PathItemInfo* ConstructorNameIteratorImpl::Next(CategoryMask categories, std::uint32_t) {
    if (!HasBit(categories, NameNestedFile))
        return nullptr;
    for (;;) {
        StepToNext();
        if (!m_current || (IsConstructor() && Accept()))
            return m_current;
    }
}

DirScopeNameIteratorImpl::DirScopeNameIteratorImpl(IPathManager& manager, const PathNameInfo* info,
                                                   const std::u16string_view& query, const ovDir& dir,
                                                   bool caseSensitive)
    : NameIteratorImpl(manager, info, query, caseSensitive),
      m_dir(dir),
      m_kind(info ? DirChildFile : DirChildGroupCount) {}

/// Asks the index before all files are compared: a private directory is asked about every name, and hardly
/// ever has it. A chain longer than the list of files tells no sooner than the list.
bool DirScopeNameIteratorImpl::MayHoldFile() const {
    if (!m_manager.HasAsciiNamesOnly())
        return true; // equal names may stand under another key
    const NameCategory category = m_dir->IsPathDir()                               ? NameFile
                                  : m_dir->GetItemClass() == ItemClass::PrivateDir ? NamePrivateFile
                                                                                   : NameNestedFile;
    std::size_t left = m_dir->GetFiles().size();
    for (const PathItemInfo* item = m_nameInfo->GetChain(category); item; item = item->GetNext())
        if (item->GetParent() == *m_dir || left-- == 0)
            return true;
    return false;
}

PathItemInfo* DirScopeNameIteratorImpl::Next(CategoryMask, std::uint32_t itemKinds) {
    for (; m_kind < DirChildGroupCount; ++m_kind, m_index = 0) {
        if (!HasBit(itemKinds, m_kind) || (m_kind == DirChildFile && m_index == 0 && !MayHoldFile()))
            continue;
        while ((m_current = m_dir->GetItem(m_kind, m_index))) {
            ++m_index;
            if (Accept())
                return m_current;
        }
    }
    m_current = nullptr;
    return nullptr;
}

} // namespace Quorrant::ovsel
