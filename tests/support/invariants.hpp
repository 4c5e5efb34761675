#pragma once

#include <map>
#include <set>
#include <string>

#include "ovsel/frame/pathinfo.hpp"
#include "ovsel/frame/pathmgr.hpp"
#include "ovsel/lookup/nametable.hpp"
#include "ovsel/model/pathclassdiriteminfo.hpp"
#include "ovsel/model/pathdiriteminfo.hpp"
#include "ovsel/model/pathfileiteminfo.hpp"
#include "ovsel/model/pathpackagediriteminfo.hpp"
#include "ovsel/model/pathprivatediriteminfo.hpp"
#include "ovsel/model/pathsubdiriteminfo.hpp"
#include "ovsel/reading/watchtable.hpp"
#include "support/texts.hpp"

/// Checks the whole index of a path against its records and says in words what is wrong; an empty text is
/// good news. May be called whenever no operation of the path is running.
class InvariantCheck {
  public:
    /// @p held are all handles on directories that there are, dead ones included, if they are to be counted.
    explicit InvariantCheck(const ovPath& path, const std::vector<ovDir>* held = nullptr)
        : m_manager(static_cast<PathMgr&>(**path)), m_counts(held != nullptr) {
        if (held)
            for (const ovDir& dir : *held)
                ++m_handles[*dir];
    }

    std::string Run() {
        for (int i = 0; i < m_manager.GetPathEntryCount(); ++i)
            if (PathDirItemInfo* entry = m_manager.GetPathEntry(i)) {
                Expect(entry->GetOrder() == i && entry->GetPositionIn(m_manager.GetPathInfo()) == i,
                       "order of " + Name(*entry));
                Expect(!entry->HasPendingItems(), "pending items in " + Name(*entry));
                CollectDir(*entry);
            }
        std::size_t chained = 0;
        m_manager.GetNameTable().ForEach([&](const PathNameInfo& info) {
            Expect(!info.HasNoItems(), "an entry without items: " + N(info.GetKey()));
            for (int c = 0; c < NameCategoryCount; ++c)
                chained += CheckChain(info, static_cast<NameCategory>(c));
        });
        Expect(chained == m_owned.size(),
               std::to_string(chained) + " items in chains, " + std::to_string(m_owned.size()) + " owned");
        Expect(m_manager.GetNotifiedDirCount() == static_cast<int>(m_watchers.size()),
               "count of watched directories");
        for (const auto& [handle, directory] : m_manager.GetWatches())
            Expect(m_watchers.erase(directory) == 1, "a watch of what has no handle");
        Expect(m_watchers.empty(), "a handle that is not among the watches");
        if (m_counts)
            for (const auto& [record, count] : m_handles)
                Expect(!record || record->GetRefCount() == count, "handles on a record");
        return m_faults;
    }

  private:
    static std::string Name(const PathItemInfo& item) {
        ustring name;
        item.GetFullName(name);
        return N(name);
    }
    void Expect(bool holds, const std::string& fault) {
        if (!holds)
            m_faults += fault + "\n";
    }

    void Collect(PathItemInfo* item, std::size_t place) {
        Expect(item->IsLinked(), "owned and not linked: " + Name(*item));
        Expect(m_owned.emplace(item, place).second, "owned twice: " + Name(*item));
    }
    void CollectDir(PathAllDirItemInfo& dir) {
        m_handles[&dir]; // none, if none is known
        if (dir.HasNotificationHandle())
            m_watchers.insert(&dir);
        if (dir.IsPathDir())
            Collect(&dir, 0);
        for (std::int32_t group = 0; group < DirChildGroupCount; ++group)
            for (std::int32_t i = 0; PathItemInfo* item = dir.GetItem(group, i); ++i) {
                Expect(item->GetParent() == &dir, "parent of " + Name(*item));
                Collect(item, static_cast<std::size_t>(i));
                if (item->IsDirRecord())
                    CollectDir(static_cast<PathAllDirItemInfo&>(*item));
            }
    }

    std::size_t CheckChain(const PathNameInfo& info, NameCategory category) {
        std::size_t length = 0;
        const PathItemInfo* previous = nullptr;
        for (PathItemInfo* item = info.GetChain(category); item;
             previous = item, item = item->GetNext(), ++length) {
            Expect(item->GetPrev() == previous, "previous link of " + Name(*item));
            Expect(m_owned.count(item) != 0, "in a chain and not owned");
            Expect(item->GetNameInfo() == &info && item->GetCategory() == category,
                   "chain of " + Name(*item));
            if (previous)
                CheckNeighbours(*previous, *item);
        }
        Expect(info.GetEnds(category).last == previous, "end of a chain of " + N(info.GetKey()));
        return length;
    }
    /// Orders rise; what was linked later, and so stands later in its directory, comes first.
    void CheckNeighbours(const PathItemInfo& left, const PathItemInfo& right) {
        Expect(left.GetOrderNumber() <= right.GetOrderNumber(), "order along the chain at " + Name(right));
        if (left.GetParent() && left.GetParent() == right.GetParent())
            Expect(m_owned[&left] > m_owned[&right], "order within the run at " + Name(right));
    }

    PathMgr& m_manager;
    const bool m_counts;                                ///< are handles counted?
    std::map<const PathAllDirItemInfo*, int> m_handles; ///< that are held, by record
    std::set<const PathAllDirItemInfo*> m_watchers;
    std::map<const PathItemInfo*, std::size_t> m_owned; ///< with the place in the owner's container
    std::string m_faults;
};
