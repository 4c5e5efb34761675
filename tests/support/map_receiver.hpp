#pragma once

#include <utility>

#include "ovsel/reading/cacheddircontents.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"
#include "ovsel/reading/idiritemsiteratorfactory.hpp"

/// Keeps what the XML reader installs, and is no source of anything.
class MapReceiver final : public IDirItemsIteratorFactory {
  public:
    using CachedDirMap = Quorrant::ovsel::CachedDirMap;
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;

    explicit MapReceiver(CachedDirMap& received) : m_received(received) {}
    void InstallCachedDirItems(CachedDirMap contents, const AbsoluteIRI&) override {
        m_received = std::move(contents);
    }
    std::unique_ptr<IDirItemsIterator> CreateDirItemsIterator(AbsoluteIRI) override { return nullptr; }
    bool FolderExists(const AbsoluteIRI&) override { return false; }
    void ClearCachedDirItems() override {}

  private:
    CachedDirMap& m_received;
};
