#pragma once

#include <memory>

#include "host_interfaces/storage.hpp"

class IDirItemsIterator;

/// Makes the item sources of a path in the storage layer's mode, and answers whether a location is a folder
/// there.
class IDirItemsIteratorFactory {
  public:
    virtual ~IDirItemsIteratorFactory() = default;
    virtual std::unique_ptr<IDirItemsIterator>
    CreateDirItemsIterator(foundation::storage::vfs::AbsoluteIRI location) = 0;
    virtual bool FolderExists(const foundation::storage::vfs::AbsoluteIRI& location) = 0;
};
