#pragma once

#include <cstddef>
#include <memory>

#include "host_interfaces/utility.hpp"
#include "ovsel/reading/idiritemsiterator.hpp"

class IPathManager;

/// The usual item source: walks the listing that the path's read-directory hook gives for one directory.
/// Costs one hook call, and one more for each entry whose name is that of a special directory.
class DirReader final : public IDirItemsIterator {
  public:
    /// Reads the directory. What cannot be read, and a hidden current directory, has no entries.
    DirReader(IPathManager* manager, const ustring& dirName);

    void First() override;
    const DirItemInfo& CurrentItem() const override { return m_item; }
    void Next() override;
    bool IsDone() const override { return m_atEnd; }

  private:
    struct HostDeleter {
        void operator()(void* block) const { HostFree(block); }
    };

    bool IsHidden() const;
    void Settle();
    void Classify();
    void ClassifyByAttributes(unsigned short word);

    IPathManager* m_manager;
    /// Names with a NUL behind each, and an empty one at the end.
    std::unique_ptr<char16_t[], HostDeleter> m_contents;
    /// One word for each name, or null.
    std::unique_ptr<unsigned short[], HostDeleter> m_attributes;
    ustring m_dirName;
    const char16_t* m_cursor = nullptr;
    DirItemInfo m_item;
    std::size_t m_index = 0; ///< names passed, skipped ones included, so that words stay in step
    bool m_atEnd = true;
};
