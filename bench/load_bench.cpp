#include <algorithm>

#include <ovsel/ovsel.hpp>

#include "bench/groups.hpp"
#include "linux_host/linux_host.hpp"

namespace bench {

namespace {

/// How much of what a load may ask of the system it asks.
enum class Asking { Listings, ListingsAndAccess, Everything };

ovDirAccessibility Accessible(ovPath, const ustring&) { return ovDirAccessible; }

ovPath NewPath(Asking asking) {
    const ovPath path = bench::NewPath(asking == Asking::Everything ? nullptr : u"");
    if (asking == Asking::Listings)
        ovSetIOFcns(path, nullptr, &Accessible, nullptr, nullptr, nullptr);
    return path;
}

Turn Load(Asking asking, const std::vector<ustring>& folderNames, std::size_t bareNames,
          std::size_t folders) {
    const ovPath path = NewPath(asking);
    const auto before = linux_host::GetCounters();
    const double seconds = Seconds([&] { AddFolders(path, folderNames); });
    const auto after = linux_host::GetCounters();
    const bool right = after.listings - before.listings == folders &&
                       after.handles - before.handles == (asking == Asking::Everything ? folders : 0) &&
                       CountFiles(path) == bareNames;
    return {seconds, right};
}

Turn Load(Asking asking, const Workload& work) {
    return Load(asking, work.folderNames, work.shape.FilesWithBareNames(), work.folders.size());
}

/// Turns the order of a path around at each turn.
class Reversal {
  public:
    explicit Reversal(const Workload& work) : m_path(bench::NewPath(u"")), m_orders(2) {
        AddFolders(m_path, work.folderNames);
        for (const ustring& name : work.folderNames) {
            m_orders[0] += name + u";";
            m_orders[1] = name + u";" + m_orders[1];
        }
    }

    Turn operator()() {
        m_reversed = !m_reversed;
        const ustring& order = m_orders[m_reversed ? 1 : 0];
        const auto listings = linux_host::GetCounters().listings;
        const double seconds = Seconds([&] { ovReplacePath(m_path, order); });
        return {seconds, Order() == order && linux_host::GetCounters().listings == listings};
    }

  private:
    ustring Order() const {
        ustring order;
        const ovDir first = ovGetNextPathDir(ovGetNullDir(m_path)); // the current directory
        for (ovDir dir = ovGetNextPathDir(first); ovGetDirType(dir) == ovDirTypePath;
             dir = ovGetNextPathDir(dir))
            order += ovGetDirName(dir) + u";";
        return order;
    }

    const ovPath m_path;
    std::vector<ustring> m_orders;
    bool m_reversed = false;
};

/// A path on which one name is everywhere, and what is asked of it.
struct Sameness {
    std::vector<ustring> folderNames = {};
    std::size_t files = 0;
    std::size_t folders = 0;
    Questions questions = {};
};

/// Either every folder is called `leaf`, or every folder holds `shared` and a private `helper`. Beside these
/// a folder has five files with names of their own.
Sameness MakeSameness(const Tree& tree, std::size_t count, bool isLeaf) {
    Sameness same;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        const std::string place = (isLeaf ? "leaves" : "shared") + std::to_string(count);
        std::vector<std::string> names;
        while (names.size() < 5)
            names.push_back("f" + number + "x" + std::to_string(names.size()) + ".sv");
        if (!isLeaf) {
            names.push_back("shared.sv");
            tree.AddFiles(place + "/" + number + "/private", {"helper.sv"});
        }
        tree.AddFiles(place + "/" + number + (isLeaf ? "/leaf" : ""), names);
        same.folderNames.push_back(Wide("T:\\" + place + "\\" + number + (isLeaf ? "\\leaf" : "")));
        same.files += names.size() + (isLeaf ? 0 : 1);
        same.folders += isLeaf ? 1 : 2;
    }
    for (std::size_t i = 0; i < 1'000; ++i) {
        const std::string name = isLeaf       ? "f" + std::to_string(i * 31 % count) + "x1"
                                 : i % 2 == 0 ? "helper"
                                              : "shared";
        same.questions.push_back({Wide(name), same.folderNames[i * 7919 % count] + u"\\asker.sv", {}});
    }
    return same;
}

/// What a load costs per file, and a hit, must not grow with the number of folders that are alike.
void PrintSameness(Table& rows, const std::string& name, const Tree& tree, bool isLeaf) {
    const Sameness few = MakeSameness(tree, 500, isLeaf), many = MakeSameness(tree, 5'000, isLeaf);
    const auto load = [](const Sameness& same) {
        return Side{same.files, [&same] {
                        return Load(Asking::ListingsAndAccess, same.folderNames, same.files, same.folders);
                    }};
    };
    rows.PrintRatio("load_" + name, {0, 3}, load(many), load(few));
    const ovPath fewPath = bench::NewPath(u""), manyPath = bench::NewPath(u"");
    AddFolders(fewPath, few.folderNames);
    AddFolders(manyPath, many.folderNames);
    const auto ask = [](const ovPath& path, const Sameness& same) {
        const std::size_t count = same.questions.size();
        return Side{count, [&, count] { return AskVisible(path, same.questions, count); }};
    };
    rows.PrintRatio("hit_" + name, {0, 3}, ask(manyPath, many), ask(fewPath, few));
}

} // namespace

void RunLoads(Table& rows) {
    const Tree tree(std::filesystem::temp_directory_path());
    const Workload work(tree, "toolbox");
    const std::size_t files = work.shape.FileCount();
    const Side bare{files, [&] { return Measure(work.entries, [&] { return ListBare(work.folders); }); }};
    const auto load = [&](Asking asking) { return Side{files, [&, asking] { return Load(asking, work); }}; };
    rows.PrintRatio("load_listings", {}, load(Asking::Listings), bare);
    rows.PrintRatio("load_frozen", {1.8, 2.5}, load(Asking::ListingsAndAccess), bare);
    rows.PrintRatio("load_armed", {2.5, 3.5}, load(Asking::Everything), bare);
    {
        Reversal reversal(work);
        rows.PrintRatio("replace_reversed", {0.2, 0.5}, {files, [&] { return reversal(); }},
                        load(Asking::ListingsAndAccess));
    }
    PrintSameness(rows, "same_leaf", tree, true);
    PrintSameness(rows, "shared_names", tree, false);
}

} // namespace bench
