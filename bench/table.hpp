#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// @file
/// The table of the benchmarks: each row is a ratio to a limit that is measured turn by turn with it, beside
/// the goal that the ratio has.

namespace bench {

/// One piece of work, timed and looked at.
struct Turn {
    double seconds;
    bool right; ///< did it give the answers that it must give?
};

/// One side of a row.
struct Side {
    std::size_t items; ///< that one turn does; times are shown, and ratios taken, per item
    std::function<Turn()> turn;
};

/// What a ratio is to reach, and what it may never exceed. 0 stands for none.
struct Goal {
    double reach = 0;
    double neverAbove = 0;
};

/// The time; with OVSEL_BENCH_CLOCK=cpu in the environment, the processor time that this process has used.
double Now();

template <class Work>
double Seconds(Work work) {
    const double start = Now();
    work();
    return Now() - start;
}

/// Times work that returns how many answers it got.
template <class Work>
Turn Measure(std::size_t answers, Work work) {
    std::size_t got = 0;
    const double seconds = Seconds([&] { got = work(); });
    return {seconds, got == answers};
}

/// Prints rows as they are measured.
class Table {
  public:
    static constexpr std::size_t roundCount = 7;

    /// Rows without @p part in their names are not measured.
    explicit Table(std::string part) : m_part(std::move(part)) {}
    static void PrintHead();

    /// A round is a tenth of a second or more of turns, ours and the limit one after the other, so that both
    /// see the same machine. What a side does the first time belongs to no round.
    void PrintRatio(const std::string& job, Goal goal, const Side& ours, const Side& limit);

    /// A figure that needs no limit, once for each round; below zero for a wrong answer.
    void PrintFigure(const std::string& job, Goal goal, const char* unit,
                     const std::function<double()>& figure);

    /// Was any answer wrong?
    bool HasFailed() const { return m_hasFailed; }

  private:
    bool IsWanted(const std::string& job) const { return job.find(m_part) != std::string::npos; }
    void Print(const std::string& job, Goal goal, const std::string& ours, const std::string& limit,
               std::vector<double> values, bool right);

    std::string m_part;
    bool m_hasFailed = false;
};

} // namespace bench
