#pragma once

#include <cstdint>
#include <memory>

#include <ovsel/handles.hpp>

#include "ovsel/model/pathalldiriteminfo.hpp"

class IPathManager;

/// Walks over directories, for searches without a name. Iterators hold positions and handles, never a
/// snapshot, and see the path as it stands at each step; they allocate nothing.
namespace Quorrant::ovsel {

/// A mask with one bit for each DirChildGroup.
using ItemKindMask = std::uint32_t;

constexpr bool HasBit(std::uint32_t mask, std::int32_t bit) { return (mask >> bit & 1u) != 0; }

class PathItemIteratorImpl {
  public:
    virtual ~PathItemIteratorImpl() = default;
    /// The next item of a kind in @p mask, or null. A kind whose bit is clear when the walk reaches it is
    /// passed over for good.
    virtual PathItemInfo* Next(ItemKindMask mask) = 0;
};

/// Owned by the search that made it.
using PathItemIterator = std::unique_ptr<PathItemIteratorImpl>;

/// One directory: kinds in the order of their numbers, each in the directory's own order.
class SpecificDirIteratorImpl final : public PathItemIteratorImpl {
  public:
    /// At its end from the start.
    SpecificDirIteratorImpl() : m_kind(DirChildGroupCount) {}
    explicit SpecificDirIteratorImpl(const ovDir& dir) : m_dir(dir) {}

    PathItemInfo* Next(ItemKindMask mask) override;

  private:
    ovDir m_dir;
    std::int32_t m_index = 0;
    std::int32_t m_kind = DirChildFile;
};

/// What walks over path entries have in common. The search holds the path.
class EntryIterator : public PathItemIteratorImpl {
  public:
    PathItemInfo* Next(ItemKindMask mask) final;

  protected:
    EntryIterator(const IPathManager& manager, bool includeCWD);

    /// The next directory to walk, or null at the end.
    virtual PathAllDirItemInfo* NextDir() = 0;

    const IPathManager& m_manager;
    std::int32_t m_entryIndex;
    const std::int32_t m_entryCount; ///< as it was at the start

  private:
    SpecificDirIteratorImpl m_inner;
};

/// Every path entry.
class PathDirIteratorImpl final : public EntryIterator {
  public:
    using EntryIterator::EntryIterator;
    PathDirIteratorImpl(const IPathManager& manager, bool includeCWD) : EntryIterator(manager, includeCWD) {}

  private:
    PathAllDirItemInfo* NextDir() override;
};

/// Every class directory directly in a path entry.
class MethodDirIteratorImpl final : public EntryIterator {
  public:
    MethodDirIteratorImpl(const IPathManager& manager, bool includeCWD)
        : EntryIterator(manager, includeCWD) {}

  private:
    PathAllDirItemInfo* NextDir() override;

    std::size_t m_classIndex = 0;
};

/// The private directory of each path entry that has one.
class PrivateDirIteratorImpl final : public EntryIterator {
  public:
    PrivateDirIteratorImpl(const IPathManager& manager, bool includeCWD)
        : EntryIterator(manager, includeCWD) {}

  private:
    PathAllDirItemInfo* NextDir() override;
};

/// The file of its own name in every class directory directly in a path entry, where there is one.
class ConstructorIteratorImpl final : public PathItemIteratorImpl {
  public:
    ConstructorIteratorImpl(const IPathManager& manager, bool caseSensitive, bool includeCWD)
        : m_manager(manager), m_caseSensitive(caseSensitive), m_entryIndex(includeCWD ? 0 : 1) {}

    /// Stays where it is unless @p mask has the bit of files.
    PathItemInfo* Next(ItemKindMask mask) override;

  private:
    const IPathManager& m_manager;
    const bool m_caseSensitive;
    std::int32_t m_entryIndex;
    std::size_t m_classIndex = 0;
};

} // namespace Quorrant::ovsel
