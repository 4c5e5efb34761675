#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

/// @file
/// The table of a benchmark: each row is a ratio to a limit that is measured turn by turn with it.

namespace bench {

inline constexpr int roundCount = 9;

/// How long a piece of work takes.
inline double Seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline void PrintHead() {
    std::printf("| job            |    ours us |   limit us | ratio [least, greatest] |\n"
                "|:---------------|-----------:|-----------:|------------------------:|\n");
}

/// Ours and the limit turn by turn; prints the median ratio with the least and the greatest.
inline void PrintRow(const char* job, const std::function<double()>& ours,
                     const std::function<double()>& limit) {
    std::vector<double> ratios, our, bare;
    for (int i = 0; i < roundCount; ++i) {
        our.push_back(ours());
        bare.push_back(limit());
        ratios.push_back(our.back() / bare.back());
    }
    const auto median = [](std::vector<double> values) {
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    const auto [least, greatest] = std::minmax_element(ratios.begin(), ratios.end());
    std::printf("| %-14s | %10.1f | %10.1f | %8.2f [%6.2f, %6.2f] |\n", job, median(our) * 1e6,
                median(bare) * 1e6, median(ratios), *least, *greatest);
    std::fflush(stdout);
}

} // namespace bench
