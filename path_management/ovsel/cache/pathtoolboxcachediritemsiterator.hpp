#pragma once

#include <memory>
#include <utility>

#include "ovsel/cache/specialnames.hpp"
#include "ovsel/reading/cacheddircontents.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

namespace Quorrant::ovsel {

/// The item source of a directory that an installed cache lists.
class PathToolboxCacheDirItemsIterator final : public IDirItemsIterator {
  public:
    explicit PathToolboxCacheDirItemsIterator(std::shared_ptr<const CachedDirContents> contents)
        : m_contents(std::move(contents)) {}

    void First() override;
    const DirItemInfo& CurrentItem() const override { return m_item; }
    void Next() override;
    bool IsDone() const override { return m_atEnd; }

  private:
    void SeekCurrentItem();
    const std::vector<ustring>& CurrentList() const;
    DirItemInfo ItemOf(const ustring& entry);
    /// A name that nothing is left of, and a special directory that has come before.
    bool IsPassedOver(const DirItemInfo& item);

    std::shared_ptr<const CachedDirContents> m_contents;
    ustring m_subdirName; ///< of m_item, if that is a directory
    DirItemInfo m_item;
    SpecialNames m_specialNames{true};
    std::size_t m_listIndex = 0;
    int m_stage = 0; ///< which of the lists is being walked, in their order; 5 behind the last
    bool m_atEnd = false;
};

} // namespace Quorrant::ovsel
