#pragma once

#include "host_interfaces/storage.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

/// The item source of the storage layer's mode: one folder, as the storage system lists it. A folder that
/// cannot be listed has no entries.
class VFSFolderItemsIterator final : public IDirItemsIterator {
  public:
    /// Lists the folder. @p reference is kept, not copied.
    VFSFolderItemsIterator(foundation::storage::vfs::AbsoluteIRI location,
                           const foundation::storage::vfs::StorageSystemReference& reference);

    void First() override;
    const DirItemInfo& CurrentItem() const override { return m_item; }
    void Next() override;
    bool IsDone() const override { return m_atEnd; }

  private:
    void LoadEntry();

    foundation::storage::vfs::AbsoluteIRI m_location;
    const foundation::storage::vfs::StorageSystemReference* m_reference;
    ustring m_name; ///< of m_item
    DirItemInfo m_item;
    bool m_atEnd = false;
    foundation::storage::vfs::FolderListing m_listing;
    foundation::storage::vfs::FolderListing::const_iterator m_position;
};
