#pragma once

#include <deque>

#include <boost/function.hpp>

#include <ovsel/interest.hpp>

/// The callbacks of one path. A slot's index is its identity; the lowest free slot is given out first.
class InterestSlots {
  public:
    using Callback = boost::function<void(ovEventType, ovDir)>;

    int Register(Callback callback);
    /// Frees a slot and destroys its callback; an index outside the slots does nothing.
    void Cancel(int index);
    /// Calls every slot that is taken when its turn comes, in order, up to the last one there at the start.
    /// What a callback throws is swallowed.
    void Notify(ovEventType event, PathAllDirItemInfo* dir);

  private:
    /// Callbacks run in place and may register others meanwhile, so an append must not move them.
    std::deque<Callback> m_interests;
};
