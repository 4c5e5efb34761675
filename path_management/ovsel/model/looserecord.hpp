#pragma once

#include "ovsel/model/pathalldiriteminfo.hpp"

/// A record below another that stands in no container at the moment, since it is being read for the first
/// time or its end is being told. Whoever ends its parent meanwhile has to end it too: nothing may stay in
/// the chains whose name leads through a record that has gone.
class PathAllDirItemInfo::Loose {
  public:
    explicit Loose(PathAllDirItemInfo& record) : m_record(record), m_held(&record), m_outer(Innermost()) {
        Innermost() = this;
    }
    ~Loose() { Innermost() = m_outer; }
    Loose(const Loose&) = delete;
    Loose& operator=(const Loose&) = delete;

    template <class Visit>
    static void ForEachBelow(const PathAllDirItemInfo& parent, Visit visit) {
        for (const Loose* loose = Innermost(); loose; loose = loose->m_outer)
            if (loose->m_record.IsLinked() && loose->m_record.GetParent() == &parent)
                visit(loose->m_record);
    }

  private:
    /// Paths live on threads of their own.
    static Loose*& Innermost() {
        static thread_local Loose* innermost = nullptr;
        return innermost;
    }

    PathAllDirItemInfo& m_record;
    const ovDir m_held;
    Loose* const m_outer;
};
