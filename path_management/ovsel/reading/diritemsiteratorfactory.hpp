#pragma once

#include "ovsel/reading/cacheddircontents.hpp"
#include "ovsel/reading/idiritemsiteratorfactory.hpp"

/// Sources of one path in the storage layer's mode: a directory that an installed cache lists comes from
/// there, any other one from its storage folder.
class DirItemsIteratorFactory final : public IDirItemsIteratorFactory {
  public:
    /// @param caseSensitive how a location is compared with the root of the cache; names beneath it are
    /// compared as they are.
    DirItemsIteratorFactory(foundation::storage::vfs::StorageSystemReference storage, bool cacheInstalled,
                            bool caseSensitive);

    void InstallCachedDirItems(Quorrant::ovsel::CachedDirMap contents,
                               const foundation::storage::vfs::AbsoluteIRI& root) override;
    /// A source on cached contents shares them, so that a party told in mid-reading may install others.
    std::unique_ptr<IDirItemsIterator>
    CreateDirItemsIterator(foundation::storage::vfs::AbsoluteIRI location) override;
    /// @throws std::out_of_range when a cache is installed and the location's path is no longer than that of
    /// the cache's root.
    bool FolderExists(const foundation::storage::vfs::AbsoluteIRI& location) override;
    void ClearCachedDirItems() override { m_cacheInstalled = false; }

  private:
    std::shared_ptr<const Quorrant::ovsel::CachedDirContents>
    FindContents(const foundation::storage::vfs::AbsoluteIRI& location) const;
    bool IsUnderRoot(const foundation::storage::vfs::AbsoluteIRI& location) const;
    bool IsKnownToCache(const foundation::storage::vfs::AbsoluteIRI& location) const;
    bool IsListedByParent(const foundation::storage::vfs::AbsoluteIRI& location) const;

    std::shared_ptr<const Quorrant::ovsel::CachedDirMap> m_contents;
    std::unique_ptr<foundation::storage::vfs::AbsoluteIRI> m_root;
    std::size_t m_rootPathLength = 0; ///< of the root's path and the separator behind it
    foundation::storage::vfs::StorageSystemReference m_storage;
    bool m_cacheInstalled;
    bool m_caseSensitive;
};
