#pragma once

#include "host_interfaces/storage.hpp"

namespace linux_host {

/// Files and folders of the disk, found by the drive map. Holds nothing; locations of any scheme are taken
/// by their path alone.
class LinuxStorage : public foundation::storage::vfs::StorageSystem {
  public:
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;

    /// In the order of ListDirectory, and without what that leaves out. A link that leads nowhere is a file.
    std::vector<Entry> ListAll(const AbsoluteIRI& folder) const override;
    bool FolderExists(const AbsoluteIRI& folder) const override;
    /// Under the root that ToName prefers, which need not be the location's own.
    AbsoluteIRI CanonicalLocation(const AbsoluteIRI& location) const override;
    std::unique_ptr<std::streambuf> OpenForReading(const AbsoluteIRI& file) const override;
    std::unique_ptr<std::streambuf> OpenForWriting(const AbsoluteIRI& file) const override;
};

} // namespace linux_host
