#pragma once

#include "ovsel/reading/diriteminfo.hpp"

/// A directory item source. Always used as First, then CurrentItem and Next until IsDone; once, by the one
/// record whose contents it delivers.
class IDirItemsIterator {
  public:
    virtual ~IDirItemsIterator() = default;
    virtual void First() = 0;
    /// The source's own entry, valid until it moves on.
    virtual const DirItemInfo& CurrentItem() const = 0;
    virtual void Next() = 0;
    virtual bool IsDone() const = 0;
};
