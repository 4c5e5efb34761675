#pragma once

#include <memory>

#include "host_interfaces/storage.hpp"

class IDirItemsIterator;

namespace Quorrant::ovsel {
class CachedDirMap;
}

/// Makes the item sources of a path in the storage layer's mode, and answers whether a location is a folder
/// there.
class IDirItemsIteratorFactory {
  public:
    virtual ~IDirItemsIteratorFactory() = default;
    /// Copies both and takes from now on what lies under @p root from @p contents. @pre no source is in use.
    virtual void InstallCachedDirItems(Quorrant::ovsel::CachedDirMap contents,
                                       const foundation::storage::vfs::AbsoluteIRI& root) = 0;
    virtual std::unique_ptr<IDirItemsIterator>
    CreateDirItemsIterator(foundation::storage::vfs::AbsoluteIRI location) = 0;
    virtual bool FolderExists(const foundation::storage::vfs::AbsoluteIRI& location) = 0;
    /// Everything comes from storage again.
    virtual void ClearCachedDirItems() = 0;
};
