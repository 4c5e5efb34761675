#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <variant>

#include <ovsel/handles.hpp>

#include "ovsel/lookup/searchscope.hpp"
#include "ovsel/model/namecategory.hpp"
#include "ovsel/model/pathalldiriteminfo.hpp"

class IPathManager;
class PathNameInfo;

/// Walks over the chains of one name, for searches with a name. This is also where a file that was only
/// assumed to be one is looked at on the disk, the first time that somebody asks for its name.
namespace Quorrant::ovsel {

/// A mask with one bit for each NameCategory.
using CategoryMask = std::uint32_t;

/// Belongs to a search, which holds the path and the name for it, and lives no longer.
class NameIteratorImpl {
  public:
    virtual ~NameIteratorImpl() = default;

    /// The next item, or null. Each class reads the mask that suits it.
    virtual PathItemInfo* Next(CategoryMask categories, std::uint32_t itemKinds) = 0;
    /// The current item has just left its directory's container.
    virtual void ItemRemoved() {}

  protected:
    /// @p info is what the index has under @p query; null for a name that it does not know. The name may
    /// change while the iterator lives, and is then compared as it is.
    NameIteratorImpl(IPathManager& manager, const PathNameInfo* info, const std::u16string_view& query,
                     bool caseSensitive)
        : m_manager(manager), m_query(query), m_caseSensitive(caseSensitive), m_nameInfo(info) {}
    NameIteratorImpl(const NameIteratorImpl&) = default;

    /// Judges m_current: spelling, current directory, and, for a file never looked at, whether it is a
    /// directory. Such a one becomes a sub-directory entry and m_current null.
    bool Accept();
    /// Makes the item read ahead the current one and reads on from it.
    void StepToNext();

    IPathManager& m_manager;
    bool m_includeCWD = true;
    const std::u16string_view& m_query;
    const bool m_caseSensitive;
    PathItemInfo* m_current = nullptr;
    PathItemInfo* m_next = nullptr; ///< read ahead, since Accept may end the current item
    const PathNameInfo* const m_nameInfo;

  private:
    bool IsReallyDirectory() const;
};

/// Chains in the order that the scope fixes, each in path order.
class GeneralNameIteratorImpl final : public NameIteratorImpl {
  public:
    GeneralNameIteratorImpl(IPathManager& manager, const PathNameInfo* info, const std::u16string_view& query,
                            SearchScope scope, bool caseSensitive);

    /// A category whose bit is clear when its turn comes is passed over for good; a chain once entered is
    /// walked to its end.
    PathItemInfo* Next(CategoryMask categories, std::uint32_t itemKinds) override;

  private:
    PathItemInfo* NextChain(CategoryMask categories);

    std::span<const NameCategory> m_categories; ///< those not reached yet
};

/// Files of the name in class directories of the same name, in path order.
class ConstructorNameIteratorImpl final : public NameIteratorImpl {
  public:
    ConstructorNameIteratorImpl(IPathManager& manager, const PathNameInfo* info,
                                const std::u16string_view& query, bool caseSensitive);

    PathItemInfo* Next(CategoryMask categories, std::uint32_t itemKinds) override;

  private:
    bool IsConstructor() const;
};

/// The items of the name in one directory, in its own order.
class DirScopeNameIteratorImpl final : public NameIteratorImpl {
  public:
    DirScopeNameIteratorImpl(IPathManager& manager, const PathNameInfo* info,
                             const std::u16string_view& query, const ovDir& dir, bool caseSensitive);

    PathItemInfo* Next(CategoryMask categories, std::uint32_t itemKinds) override;
    /// The files have closed up, so that the next one stands where the current one stood.
    void ItemRemoved() override { --m_index; }

  private:
    bool MayHoldFile() const;

    ovDir m_dir;
    std::int32_t m_index = 0;
    std::int32_t m_kind;
};

/// One of the three, in place: a lookup allocates no iterator.
class NameIterator {
  public:
    template <class Impl, class... Arguments>
    explicit NameIterator(std::in_place_type_t<Impl> impl, Arguments&&... arguments)
        : m_impl(impl, std::forward<Arguments>(arguments)...) {}

    PathItemInfo* Next(CategoryMask categories, std::uint32_t itemKinds) {
        return std::visit([&](auto& impl) { return impl.Next(categories, itemKinds); }, m_impl);
    }

  private:
    std::variant<GeneralNameIteratorImpl, ConstructorNameIteratorImpl, DirScopeNameIteratorImpl> m_impl;
};

} // namespace Quorrant::ovsel
