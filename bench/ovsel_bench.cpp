// How far is each promise on speed from what cannot be beaten? Every job runs ours and its limit turn by turn
// in one process and reports the ratio:
//
//   visible_hit, visible_miss   ovFindFirstFileVisibleToFile, asked from a file in any folder
//   all_hit, all_miss           ovFindFirstFileInAll
//       limit: one probe of a bare hash table with the lowered name, the lowering not included
//   load                        ovAddDir of all folders on a path without a prefix
//       limit: opendir and readdir of the same folders, and nothing done with the entries
//
// README.md beside this file tells how to run, compare and read them.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <dirent.h>
#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/container_hash/hash.hpp>
#include <boost/unordered_map.hpp>
#include <ovsel/ovsel.hpp>

#include "bench/allocation_counter.hpp"
#include "bench/workload.hpp"
#include "linux_hooks/linux_hooks.hpp"

namespace bench {

namespace {

constexpr int RoundCount = 9;
constexpr const char* Extensions[] = {".sv", ".p", nullptr};

struct Sample {
    double seconds;
    std::size_t allocations;
    std::size_t answers; ///< found files, so that a job that does nothing is noticed
};

struct Job {
    const char* name;
    std::size_t items; ///< questions or files in one turn
    std::size_t answers;
    std::function<Sample()> ours;
    std::function<Sample()> limit;
};

template <class Work>
Sample Measure(Work work) {
    const std::size_t allocations = AllocationCount();
    const auto start = std::chrono::steady_clock::now();
    const std::size_t answers = work();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    return {time.count(), AllocationCount() - allocations, answers};
}

ovPath NewPath(const char* name) {
    return ovCreatePathWithPreFrozen(0, name, static_cast<const char16_t*>(nullptr), ovCasePlatformDefault,
                                     false);
}

/// @return the number of files that came onto the path.
std::size_t AddFolders(const ovPath& path, const Workload& workload) {
    std::size_t files = 0;
    for (const ustring& folder : workload.folderNames) {
        const ovDir added = ovAddDir(path, folder, ovDirAddAtEnd);
        files += ovGetDirType(added) == ovDirTypePath ? FilesPerFolder : 0;
    }
    return files;
}

Sample Load(const Workload& workload) {
    const ovPath path = NewPath("load");
    const Sample sample = Measure([&] { return AddFolders(path, workload); });
    ovRemovePath(path);
    return sample;
}

Sample ListBare(const Workload& workload) {
    return Measure([&] {
        std::size_t entries = 0;
        for (const std::string& folder : workload.folders) {
            DIR* directory = ::opendir(folder.c_str());
            while (::readdir(directory) != nullptr) {
                ++entries;
            }
            ::closedir(directory);
        }
        return entries - 2 * FolderCount; // `.` and `..`
    });
}

template <class Find>
Sample Ask(const std::vector<Question>& questions, Find find) {
    ovDir dir;
    ustring fullName; // kept from question to question, as an interpreter would
    return Measure([&] {
        std::size_t found = 0;
        for (const Question& question : questions) {
            found += find(question, &dir, fullName) != 0 ? 1 : 0;
        }
        return found;
    });
}

Sample AskVisible(const ovPath& path, const std::vector<Question>& questions) {
    return Ask(questions, [&](const Question& question, ovDir* dir, ustring& fullName) {
        return ovFindFirstFileVisibleToFile(path, question.asker, question.name, Extensions, dir, fullName);
    });
}

Sample AskAll(const ovPath& path, const std::vector<Question>& questions) {
    return Ask(questions, [&](const Question& question, ovDir* dir, ustring& fullName) {
        return ovFindFirstFileInAll(path, question.name, Extensions, dir, fullName);
    });
}

struct BareHash {
    std::size_t operator()(const ustring& key) const { return boost::hash_range(key.begin(), key.end()); }
};
using BareTable = boost::unordered_map<ustring, int, BareHash>;

Sample ProbeBare(const BareTable& table, const std::vector<Question>& questions) {
    return Measure([&] {
        std::size_t found = 0;
        for (const Question& question : questions) {
            const auto entry = table.find(question.key);
            found += entry != table.end() ? static_cast<std::size_t>(entry->second) : 0;
        }
        return found;
    });
}

/// One call is one round: turns of ours and of the limit, one after the other.
void RunRound(benchmark::State& state, const Job& job) {
    Sample ours{};
    Sample limit{};
    for ([[maybe_unused]] const auto turn : state) {
        const Sample our = job.ours();
        const Sample bare = job.limit();
        if (our.answers != job.answers || bare.answers != job.answers) {
            state.SkipWithError("wrong number of answers");
            break;
        }
        state.SetIterationTime(our.seconds);
        ours.seconds += our.seconds;
        ours.allocations += our.allocations;
        limit.seconds += bare.seconds;
    }
    const double items = static_cast<double>(job.items) * static_cast<double>(state.iterations());
    state.counters["ours"] = ours.seconds / items * 1e9;
    state.counters["limit"] = limit.seconds / items * 1e9;
    state.counters["ratio"] = ours.seconds / limit.seconds;
    state.counters["allocations"] = static_cast<double>(ours.allocations) / items;
}

double Least(const std::vector<double>& values) { return *std::min_element(values.begin(), values.end()); }
double Greatest(const std::vector<double>& values) { return *std::max_element(values.begin(), values.end()); }

void Register(const Job& job) {
    benchmark::RegisterBenchmark(job.name, [job](benchmark::State& state) { RunRound(state, job); })
        ->UseManualTime()
        ->Repetitions(RoundCount)
        ->ComputeStatistics("least", &Least)
        ->ComputeStatistics("greatest", &Greatest)
        ->ReportAggregatesOnly();
}

/// Prints one row for each job, as soon as its rounds are done.
class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override {
        std::printf("| job          |  ours ns | limit ns |  ratio [least, greatest] | allocations |\n"
                    "|:-------------|---------:|---------:|-------------------------:|------------:|\n");
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        const auto counter = [&](const char* statistic, const char* name) {
            const auto run = std::find_if(runs.begin(), runs.end(), [&](const Run& candidate) {
                return candidate.aggregate_name == statistic;
            });
            return run == runs.end() ? 0.0 : run->counters.at(name).value;
        };
        const bool failed = runs.front().error_occurred;
        m_hasFailed = m_hasFailed || failed;
        std::printf("| %-12s | %8.1f | %8.1f | %9.2f [%5.2f, %5.2f] | %11.2f | %s\n",
                    runs.front().run_name.function_name.c_str(), counter("median", "ours"),
                    counter("median", "limit"), counter("median", "ratio"), counter("least", "ratio"),
                    counter("greatest", "ratio"), counter("median", "allocations"),
                    failed ? runs.front().error_message.c_str() : "");
        std::fflush(stdout);
    }

    bool HasFailed() const { return m_hasFailed; }

  private:
    bool m_hasFailed = false;
};

int Run() {
    if (!linux_hooks::InstallDefaultHooks() || !AllocationsAreSeen()) {
        std::fprintf(stderr, "the allocations of the libraries are not seen\n");
        return 1;
    }
    const Workload work;
    BareTable table;
    for (const ustring& key : work.keys) {
        table.emplace(key, 1);
    }
    const ovPath path = NewPath("lookup");
    const std::size_t bytesBefore = HeapBytes();
    AddFolders(path, work);
    const std::size_t bytes = HeapBytes() - bytesBefore;

    const auto probeHits = [&] { return ProbeBare(table, work.hits); };
    const auto probeMisses = [&] { return ProbeBare(table, work.misses); };
    constexpr std::size_t all = QuestionCount;
    Register({"visible_hit", all, all, [&] { return AskVisible(path, work.hits); }, probeHits});
    Register({"visible_miss", all, 0, [&] { return AskVisible(path, work.misses); }, probeMisses});
    Register({"all_hit", all, all, [&] { return AskAll(path, work.hits); }, probeHits});
    Register({"all_miss", all, 0, [&] { return AskAll(path, work.misses); }, probeMisses});
    Register({"load", FileCount, FileCount, [&] { return Load(work); }, [&] { return ListBare(work); }});

    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("Medians of %d rounds; ns and allocations are per question, for load per file.\n"
                "%zu files in %zu folders, %zu names of %.1f units on average, %.0f heap bytes per file.\n",
                RoundCount, FileCount, FolderCount, work.keys.size(), work.meanNameLength,
                static_cast<double>(bytes) / FileCount);
    return reporter.HasFailed() ? 1 : 0;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    // Rounds and not length make a run trustworthy; the caller's own arguments come last and win.
    char shortRounds[] = "--benchmark_min_time=0.1";
    std::vector<char*> arguments(argv, argv + argc);
    arguments.insert(arguments.begin() + 1, shortRounds);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    return bench::Run();
}
