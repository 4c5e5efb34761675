#include "ovsel/reading/diritemsiteratorfactory.hpp"

#include <algorithm>
#include <utility>

#include "host_interfaces/filesystem.hpp"
#include "ovsel/cache/pathtoolboxcachediritemsiterator.hpp"
#include "ovsel/names/nameequality.hpp"
#include "ovsel/reading/vfsfolderitemsiterator.hpp"

using Quorrant::ovsel::CachedDirContents;
using Quorrant::ovsel::CachedDirMap;
using Quorrant::ovsel::PathToolboxCacheDirItemsIterator;

namespace vfs = foundation::storage::vfs;

namespace {

/// The path of such a location ends in its separator already.
bool IsDriveOrShare(const vfs::AbsoluteIRI& location) {
    const ustring name = vfs::fromAbsoluteIRI(location);
    return name.ends_with(u'\\') && fl::filesystem::get_root_path_length(name) == name.size();
}

} // namespace

DirItemsIteratorFactory::DirItemsIteratorFactory(vfs::StorageSystemReference storage, bool cacheInstalled,
                                                 bool caseSensitive)
    : m_storage(std::move(storage)), m_cacheInstalled(cacheInstalled), m_caseSensitive(caseSensitive) {}

void DirItemsIteratorFactory::InstallCachedDirItems(CachedDirMap contents, const vfs::AbsoluteIRI& root) {
    auto ownContents = std::make_shared<const CachedDirMap>(std::move(contents));
    auto ownRoot = std::make_unique<vfs::AbsoluteIRI>(root);
    m_rootPathLength = root.getPath().length() + (IsDriveOrShare(root) ? 0 : 1);
    m_contents = std::move(ownContents);
    m_root = std::move(ownRoot);
    m_cacheInstalled = true;
}

std::unique_ptr<IDirItemsIterator>
DirItemsIteratorFactory::CreateDirItemsIterator(vfs::AbsoluteIRI location) {
    if (m_cacheInstalled && IsUnderRoot(location))
        if (auto contents = FindContents(location))
            return std::make_unique<PathToolboxCacheDirItemsIterator>(std::move(contents));
    return std::make_unique<VFSFolderItemsIterator>(std::move(location), m_storage);
}

/// The root itself has no name under the root, and neither has anything under one that ends in a separator
/// too many.
bool DirItemsIteratorFactory::IsUnderRoot(const vfs::AbsoluteIRI& location) const {
    const ustring& path = location.getPath();
    if (path.length() < m_rootPathLength || path[m_rootPathLength - 1] != u'/')
        return false;
    const ustring root = m_root->toString();
    return NamesEqual(location.toString().substr(0, root.length()), root, m_caseSensitive);
}

std::shared_ptr<const CachedDirContents>
DirItemsIteratorFactory::FindContents(const vfs::AbsoluteIRI& location) const {
    const auto found = m_contents->find(location.getPath().substr(m_rootPathLength));
    return found == m_contents->end() ? nullptr
                                      : std::shared_ptr<const CachedDirContents>(m_contents, &found->second);
}

bool DirItemsIteratorFactory::FolderExists(const vfs::AbsoluteIRI& location) {
    if (m_cacheInstalled && IsKnownToCache(location))
        return true;
    try {
        return vfs::Folder(location, m_storage).folderExists();
    } catch (const vfs::Exception&) {
        return false;
    }
}

bool DirItemsIteratorFactory::IsKnownToCache(const vfs::AbsoluteIRI& location) const {
    return FindContents(location) || IsListedByParent(location);
}

bool DirItemsIteratorFactory::IsListedByParent(const vfs::AbsoluteIRI& location) const {
    if (!location.hasParent())
        return false;
    const vfs::AbsoluteIRI parent = location.getParent();
    // What lies directly under the root has no parent in the cache.
    if (parent.getPath().length() < m_rootPathLength)
        return false;
    const auto contents = FindContents(parent);
    return contents && std::find(contents->subdirs.begin(), contents->subdirs.end(), location.getName()) !=
                           contents->subdirs.end();
}
