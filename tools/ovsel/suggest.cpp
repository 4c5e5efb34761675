#include "tools/ovsel/suggest.hpp"

#include <algorithm>
#include <set>

#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

constexpr std::size_t MaximumSuggestions = 3;

/// Two swapped neighbours count as one edit, since that is the commonest slip of all.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    // Three rows of the usual table are enough: a swap looks back two rows, everything else one.
    std::vector<std::size_t> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        last[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = a[i - 1] == b[j - 1];
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

} // namespace

std::vector<std::string> ClosestNames(std::string_view name, const std::vector<std::string>& known) {
    // Two edits make anything out of a name of two letters.
    const std::size_t limit = name.size() <= 3 ? 1 : 2;
    // Ordered by distance and then by name, and a name that stands in many folders enters once.
    std::set<std::pair<std::size_t, std::string_view>> near;
    for (const std::string& candidate : known) {
        // The lengths alone rule most names out, which keeps a miss on a long path cheap.
        if (std::max(candidate.size(), name.size()) - std::min(candidate.size(), name.size()) > limit)
            continue;
        if (const std::size_t distance = EditDistance(name, candidate); distance <= limit)
            near.emplace(distance, candidate);
        if (near.size() > MaximumSuggestions)
            near.erase(std::prev(near.end()));
    }
    std::vector<std::string> result;
    for (const auto& [distance, candidate] : near)
        result.emplace_back(candidate);
    return result;
}

void Suggest(const std::vector<std::string>& names) {
    if (names.empty())
        return;
    std::string text = "did you mean ";
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + Shown(names[i]);
    Complain(text + "?");
}

} // namespace tool
