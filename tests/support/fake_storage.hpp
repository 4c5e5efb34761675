#pragma once

#include <any>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host_interfaces/storage.hpp"
#include "linux_host/linux_host.hpp"
#include "support/fake_disk.hpp"

/// The fake disk as a storage system, in force for paths that are created while this lives. Files are real
/// ones.
class FakeStorage : public foundation::storage::vfs::StorageSystem {
  public:
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;
    using Exception = foundation::storage::vfs::Exception;

    /// Folders, in the system's grammar, that answer every question with a failure.
    std::set<std::string> broken;

    std::vector<Entry> ListAll(const AbsoluteIRI& folder) const override {
        FakeDisk& disk = FakeDisk::Get();
        ++disk.listings;
        const std::string name = NameOf(folder);
        const auto found = disk.dirs.find(name);
        if (found == disk.dirs.end() || broken.contains(name))
            throw Exception("cannot list " + name);
        std::vector<Entry> entries;
        for (const FakeDisk::Entry& entry : found->second)
            entries.push_back({fl::i18n::to_ustring(entry.name.c_str()), IsFolder(name, entry)});
        return entries;
    }
    bool FolderExists(const AbsoluteIRI& folder) const override {
        const std::string name = NameOf(folder);
        if (broken.contains(name))
            throw Exception("cannot ask about " + name);
        ++FakeDisk::Get().existenceQueries;
        return FakeDisk::Get().dirs.contains(name);
    }
    AbsoluteIRI CanonicalLocation(const AbsoluteIRI& location) const override { return location; }
    std::unique_ptr<std::streambuf> OpenForReading(const AbsoluteIRI& file) const override {
        return m_real->OpenForReading(file);
    }
    std::unique_ptr<std::streambuf> OpenForWriting(const AbsoluteIRI& file) const override {
        return m_real->OpenForWriting(file);
    }

  private:
    static std::string NameOf(const AbsoluteIRI& location) {
        return N(foundation::storage::vfs::fromAbsoluteIRI(location));
    }
    /// A listing that says nothing of an entry leaves the storage layer to look for itself.
    static bool IsFolder(const std::string& folder, const FakeDisk::Entry& entry) {
        return (entry.word & 0x4000) != 0 ||
               (entry.word == 0 && FakeDisk::Get().dirs.contains(folder + "\\" + entry.name));
    }

    std::shared_ptr<StorageSystem> m_real = foundation::storage::vfs::createStorageSystem({}, nullptr);
};

/// Puts a new fake storage in force for as long as it lives.
class FakeStorageInForce {
  public:
    FakeStorageInForce() { linux_host::testing::SetStorageSystem(m_storage); }
    ~FakeStorageInForce() { linux_host::testing::SetStorageSystem(nullptr); }
    FakeStorageInForce(const FakeStorageInForce&) = delete;
    FakeStorageInForce& operator=(const FakeStorageInForce&) = delete;
    FakeStorage* operator->() const { return m_storage.get(); }
    foundation::storage::vfs::StorageSystemReference Reference() const {
        return foundation::storage::vfs::StorageSystemReference(m_storage);
    }

  private:
    std::shared_ptr<FakeStorage> m_storage = std::make_shared<FakeStorage>();
};
