#include "bench/table.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

namespace bench {

namespace {

bool IsProcessorTime() {
    static const char* const clock = std::getenv("OVSEL_BENCH_CLOCK");
    static const bool is = clock != nullptr && std::string_view(clock) == "cpu";
    return is;
}

constexpr double roundSeconds = 0.1; ///< so that the clock and one interruption weigh little

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

template <class... Values>
std::string Text(const char* format, Values... values) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

std::string TimeText(double seconds) {
    return seconds < 1e-5   ? Text("%.1f ns", seconds * 1e9)
           : seconds < 1e-2 ? Text("%.1f us", seconds * 1e6)
                            : Text("%.1f ms", seconds * 1e3);
}

std::string GoalText(double goal) { return goal == 0 ? "" : Text("%g", goal); }

/// The median decides; what a bad moment did to one round is for the reader to see.
const char* Verdict(Goal goal, double value) {
    if (goal.neverAbove == 0)
        return "";
    if (value > goal.neverAbove)
        return "NO";
    return goal.reach == 0 || value <= goal.reach ? "yes" : "not yet";
}

/// Turns of one side, added up.
struct Sum {
    void Add(const Side& side) {
        const Turn turn = side.turn();
        seconds += turn.seconds;
        items += side.items;
        right = right && turn.right;
    }
    double PerItem() const { return seconds / static_cast<double>(items); }

    double seconds = 0;
    std::size_t items = 0;
    bool right = true;
};

} // namespace

double Now() {
    timespec time{};
    ::clock_gettime(IsProcessorTime() ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void Table::PrintHead() {
    if (IsProcessorTime())
        std::printf("Processor time:\n\n");
    std::printf(
        "| job                |      ours |     limit |    ratio [least, greatest] | reach | never above "
        "| met     |\n"
        "|:-------------------|----------:|----------:|---------------------------:|------:|------------:"
        "|:--------|\n");
}

void Table::PrintRatio(const std::string& job, Goal goal, const Side& ours, const Side& limit) {
    if (!IsWanted(job))
        return;
    bool right = ours.turn().right && limit.turn().right;
    std::vector<double> our, bare, ratios;
    while (ratios.size() < roundCount) {
        Sum ourSum, bareSum;
        while (ourSum.seconds + bareSum.seconds < roundSeconds) {
            ourSum.Add(ours);
            bareSum.Add(limit);
        }
        right = right && ourSum.right && bareSum.right;
        our.push_back(ourSum.PerItem());
        bare.push_back(bareSum.PerItem());
        ratios.push_back(our.back() / bare.back());
    }
    Print(job, goal, TimeText(Median(our)), TimeText(Median(bare)), ratios, right);
}

void Table::PrintFigure(const std::string& job, Goal goal, const char* unit,
                        const std::function<double()>& figure) {
    if (!IsWanted(job))
        return;
    std::vector<double> figures;
    while (figures.size() < roundCount)
        figures.push_back(figure());
    // Whoever cannot give a figure answers -1.
    const bool right = *std::min_element(figures.begin(), figures.end()) >= 0;
    Print(job, goal, Text("%.4g ", Median(figures)) + unit, "", figures, right);
}

void Table::Print(const std::string& job, Goal goal, const std::string& ours, const std::string& limit,
                  std::vector<double> values, bool right) {
    m_hasFailed = m_hasFailed || !right;
    const double median = Median(values);
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    std::printf("| %-18s | %9s | %9s | %8.2f [%7.2f, %7.2f] | %5s | %11s | %-7s |\n", job.c_str(),
                ours.c_str(), limit.c_str(), median, *least, *greatest, GoalText(goal.reach).c_str(),
                GoalText(goal.neverAbove).c_str(), right ? Verdict(goal, median) : "WRONG ANSWERS");
    std::fflush(stdout);
}

} // namespace bench
