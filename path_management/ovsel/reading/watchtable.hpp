#pragma once

#include <cstddef>
#include <vector>

#include "host_interfaces/platform.hpp"
#include "ovsel/names/makeroom.hpp"

class PathAllDirItemInfo;

/// The directories of a path that have a handle, in a row, so that asking thousands of handles for news does
/// not touch as many records. In no order that means anything.
class WatchTable {
  public:
    struct Watch {
        host::ChangeHandle handle;
        PathAllDirItemInfo* directory;
    };

    /// So that the next directory can enter without fail.
    void MakeRoomForWatch() { MakeRoom(m_watches); }
    /// @return the place, which the directory keeps in mind until it leaves.
    std::size_t Enter(host::ChangeHandle handle, PathAllDirItemInfo* directory) {
        m_watches.push_back({handle, directory});
        return m_watches.size() - 1;
    }
    /// @return the directory that stands at this place now, or null.
    PathAllDirItemInfo* Leave(std::size_t place) {
        m_watches[place] = m_watches.back();
        m_watches.pop_back();
        return place < m_watches.size() ? m_watches[place].directory : nullptr;
    }

    auto begin() const { return m_watches.begin(); }
    auto end() const { return m_watches.end(); }

  private:
    std::vector<Watch> m_watches;
};
