#pragma once

#include <ovsel/interest.hpp>

#include "ovsel/frame/ipathmanager.hpp"

/// Tells all parties that something begins and, when its own life ends, that this has ended: whoever holds
/// back work in between gets his end also when a hook throws.
class EventBracket {
  public:
    /// @p manager is held by the caller.
    EventBracket(IPathManager& manager, PathAllDirItemInfo* dir, ovEventType begin, ovEventType end)
        : m_manager(manager), m_dir(dir), m_end(end) {
        m_manager.NotifyInterests(*m_dir, begin);
    }
    ~EventBracket() { m_manager.NotifyInterests(*m_dir, m_end); }
    EventBracket(const EventBracket&) = delete;
    EventBracket& operator=(const EventBracket&) = delete;

  private:
    IPathManager& m_manager;
    const ovDir m_dir;
    const ovEventType m_end;
};
