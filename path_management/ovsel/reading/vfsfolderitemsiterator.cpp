#include "ovsel/reading/vfsfolderitemsiterator.hpp"

#include <utility>

#include "ovsel/names/ovselconstants.hpp"

namespace vfs = foundation::storage::vfs;

namespace {

bool IsThere(const vfs::Folder& folder) {
    try {
        return folder.folderExists();
    } catch (const vfs::Exception&) {
        return false;
    }
}

/// An entry of the listing as an item source delivers it; @p name takes the text.
struct ItemOfEntry {
    ustring& name;

    DirItemInfo operator()(const vfs::File& file) const {
        name = file.getName();
        return {name, DirItemFile, true, 0};
    }

    DirItemInfo operator()(const vfs::Folder& folder) const {
        name = folder.getName();
        DirItemInfo item{name, DirItemUnknown, true, 0};
        if (IsThere(folder)) {
            item.kind = ClassifyDirEntryName(item.name);
        } else {
            item.kind = DirItemFile;
            item.confirmed = false;
        }
        return item;
    }
};

} // namespace

VFSFolderItemsIterator::VFSFolderItemsIterator(vfs::AbsoluteIRI location,
                                               const vfs::StorageSystemReference& reference)
    : m_location(std::move(location)), m_reference(&reference) {
    try {
        m_listing = vfs::Folder(m_location, *m_reference).listAll();
    } catch (const vfs::Exception&) {
        m_atEnd = true;
    }
    m_position = m_listing.begin();
}

void VFSFolderItemsIterator::First() {
    if (m_atEnd)
        return;
    m_position = m_listing.begin();
    LoadEntry();
}

void VFSFolderItemsIterator::Next() {
    ++m_position;
    LoadEntry();
}

void VFSFolderItemsIterator::LoadEntry() {
    if (m_position == m_listing.end())
        m_atEnd = true;
    else
        m_item = std::visit(ItemOfEntry{m_name}, *m_position);
}
