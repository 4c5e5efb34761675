#include <algorithm>
#include <cstdio>

#include <boost/container_hash/hash.hpp>
#include <boost/unordered_map.hpp>
#include <ovsel/ovsel.hpp>

#include "bench/allocation_counter.hpp"
#include "bench/groups.hpp"
#include "ovsel/frame/ipathmanager.hpp"

namespace bench {

namespace {

constexpr const char* extensions[] = {".sv", ".p", nullptr};

// What no index can beat by much: the bare table has its keys lowered already, and nothing to do with an
// answer.

struct BareHash {
    std::size_t operator()(const ustring& key) const { return boost::hash_range(key.begin(), key.end()); }
};
using BareTable = boost::unordered_map<ustring, int, BareHash>;

BareTable MakeBareTable(const Workload& work) {
    BareTable table;
    for (const ustring& key : work.keys)
        table.emplace(key, 1);
    return table;
}

/// Asks all questions; @p find tells whether there is an answer, and @p found is how often it must.
template <class Find>
Turn Ask(const Questions& questions, std::size_t found, Find find) {
    return Measure(found, [&] {
        std::size_t count = 0;
        for (const Question& question : questions)
            count += find(question) ? 1U : 0U;
        return count;
    });
}

Turn ProbeBare(const BareTable& table, const Questions& questions, std::size_t found) {
    return Ask(questions, found, [&](const Question& question) {
        const auto entry = table.find(question.key);
        return entry != table.end() && entry->second != 0;
    });
}

Turn AskNames(const ovPath& path, const Questions& questions, std::size_t found) {
    const IPathManager* const manager = *path;
    return Ask(questions, found,
               [&](const Question& question) { return manager->FindNameInfo(question.name) != nullptr; });
}

/// The text of the answer is kept from question to question, as an interpreter would.
Turn AskAll(const ovPath& path, const Questions& questions, std::size_t found) {
    ovDir dir;
    ustring fullName;
    return Ask(questions, found, [&](const Question& question) {
        return ovFindFirstFileInAll(path, question.name, extensions, &dir, fullName) != 0;
    });
}

/// The most allocations of any one question, if each answer is written to a new text; -1 for wrong answers.
double MostAllocations(const ovPath& path, const Workload& work) {
    std::size_t most = 0;
    bool right = true;
    const auto ask = [&](const Questions& questions, bool found, auto find) {
        for (const Question& question : questions) {
            const std::size_t before = AllocationCount();
            {
                ovDir dir;
                ustring fullName;
                right = (find(question, dir, fullName) != 0) == found && right;
            }
            most = std::max(most, AllocationCount() - before);
        }
    };
    const auto all = [&](const Question& question, ovDir& dir, ustring& fullName) {
        return ovFindFirstFileInAll(path, question.name, extensions, &dir, fullName);
    };
    const auto visible = [&](const Question& question, ovDir& dir, ustring& fullName) {
        return ovFindFirstFileVisibleToFile(path, question.asker, question.name, extensions, &dir, fullName);
    };
    ask(work.hits, true, all);
    ask(work.misses, false, all);
    ask(work.visibleHits, true, visible);
    ask(work.misses, false, visible);
    return right ? static_cast<double>(most) : -1;
}

/// By how much the heap grows per file when the path is loaded: records, names and directories together.
double BytesPerFile(const Workload& work) {
    const ovPath path = NewPath(u"");
    const std::size_t before = HeapBytes();
    AddFolders(path, work.folderNames);
    const std::size_t bytes = HeapBytes() - before;
    return CountFiles(path) == work.shape.FilesWithBareNames()
               ? static_cast<double>(bytes) / static_cast<double>(work.shape.FileCount())
               : -1;
}

} // namespace

Turn AskVisible(const ovPath& path, const Questions& questions, std::size_t found) {
    ovDir dir;
    ustring fullName;
    return Ask(questions, found, [&](const Question& question) {
        return ovFindFirstFileVisibleToFile(path, question.asker, question.name, extensions, &dir,
                                            fullName) != 0;
    });
}

void RunLookups(Table& rows) {
    const Tree tree;
    const Workload work(tree, "toolbox");
    Shape tenfold;
    tenfold.folders *= 10;
    const Workload large(tree, "large", tenfold);
    // Both paths are there from the first row on, so that rows do not depend on the choice of rows.
    rows.PrintFigure("bytes_per_file", {250, 350}, "bytes", [&] { return BytesPerFile(work); });
    const BareTable table = MakeBareTable(work); // behind what is counted in bytes
    const ovPath path = NewPath(u"");
    AddFolders(path, work.folderNames);
    const ovPath largePath = NewPath(u"");
    AddFolders(largePath, large.folderNames);

    constexpr std::size_t all = questionCount;
    const auto bare = [&](const Questions& questions, std::size_t found) {
        return Side{all, [&, found] { return ProbeBare(table, questions, found); }};
    };
    const auto side = [](auto ask, const ovPath& of, const Questions& questions, std::size_t found) {
        return Side{all, [&, ask, found] { return ask(of, questions, found); }};
    };
    rows.PrintRatio("name_hit", {0.8, 1.2}, side(&AskNames, path, work.hits, all), bare(work.hits, all));
    rows.PrintRatio("name_miss", {0.4, 1.0}, side(&AskNames, path, work.misses, 0), bare(work.misses, 0));
    rows.PrintRatio("all_hit", {1.6, 2.5}, side(&AskAll, path, work.hits, all), bare(work.hits, all));
    rows.PrintRatio("all_hit_zipf", {}, side(&AskAll, path, work.zipfHits, all), bare(work.zipfHits, all));
    rows.PrintRatio("all_miss", {0.7, 1.2}, side(&AskAll, path, work.misses, 0), bare(work.misses, 0));
    rows.PrintRatio("visible_hit", {3, 5}, side(&AskVisible, path, work.visibleHits, all),
                    bare(work.visibleHits, all));
    rows.PrintRatio("visible_miss", {}, side(&AskVisible, path, work.misses, 0), bare(work.misses, 0));
    rows.PrintRatio("all_hit_tenfold", {1.6, 3}, side(&AskAll, largePath, large.hits, all),
                    side(&AskAll, path, work.hits, all));
    rows.PrintFigure("allocations", {2, 3}, "blocks", [&] { return MostAllocations(path, work); });
    std::fprintf(stderr,
                 "%zu files of %zu names with %.1f units on average, in %zu folders; tenfold %zu, %.1f\n",
                 work.shape.FileCount(), work.keys.size(), work.meanNameLength, work.folders.size(),
                 large.shape.FileCount(), large.meanNameLength);
}

} // namespace bench
