#include "bench/workload.hpp"

#include <algorithm>
#include <random>
#include <string_view>
#include <unordered_set>

namespace bench {

namespace {

constexpr unsigned seed = 20'260'101;

std::string Lowered(std::string_view name) {
    std::string key(name);
    std::transform(key.begin(), key.end(), key.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return key;
}

/// Names out of one generator. The standard distributions differ between libraries, so none is used.
class NameSource {
  public:
    std::size_t Below(std::size_t bound) { return m_random() % bound; }
    double Share() { return static_cast<double>(m_random()) / 4294967296.0; }
    bool InPercent(std::size_t share) { return Below(100) < share; }

    /// A stem that has not been made before, also not with other capitals.
    std::string NewName() {
        for (;;) {
            std::string name = AnyName();
            if (m_keys.insert(Lowered(name)).second)
                return name;
        }
    }

  private:
    /// 5 to 16 letters that can be spoken, a digit behind every tenth, a capital inside of three in ten.
    std::string AnyName() {
        constexpr std::string_view consonants = "bcdfghjklmnpqrstvwxz";
        constexpr std::string_view vowels = "aeiou";
        std::string name(5 + Below(7) + Below(6), ' ');
        bool vowel = InPercent(30);
        for (char& letter : name) {
            letter = vowel ? vowels[Below(vowels.size())] : consonants[Below(consonants.size())];
            vowel = !vowel;
        }
        if (InPercent(30)) {
            char& letter = name[1 + Below(name.size() - 1)];
            letter = static_cast<char>(letter - 32);
        }
        if (InPercent(10))
            name += static_cast<char>('0' + Below(10));
        return name;
    }

    std::mt19937 m_random{seed};
    std::unordered_set<std::string> m_keys;
};

enum class Kind { Plain, Method, Package, Private };

struct File {
    std::string stem;
    Kind kind;
    std::size_t folder; ///< of the path, in which it lies at last
};

} // namespace

class Workload::Builder {
  public:
    Builder(Workload& work, const Tree& tree, std::string place)
        : m_work(work), m_tree(tree), m_place(std::move(place)) {}

    void Build() {
        for (std::size_t i = 0; i < m_work.shape.folders; ++i)
            AddPathFolder(i);
        std::unordered_set<std::string> lowered;
        for (const File& file : m_files) {
            m_work.meanNameLength +=
                static_cast<double>(file.stem.size()) / static_cast<double>(m_files.size());
            if (const auto [key, isNew] = lowered.insert(Lowered(file.stem)); isNew)
                m_work.keys.push_back(Wide(*key));
        }
        Ask();
        AskByZipf();
    }

  private:
    void AddPathFolder(std::size_t index) {
        const Shape& sizes = m_work.shape;
        const std::string name = "folder" + std::to_string(index);
        m_work.folderNames.push_back(Wide("T:\\" + m_place + "\\" + name));
        m_filesOfEarlier = m_files.size();
        const std::string folder = m_place + "/" + name;
        AddFiles(folder, sizes.plain, Kind::Plain);
        AddFiles(folder + "/@" + m_source.NewName(), sizes.methods, Kind::Method);
        AddFiles(folder + "/+" + m_source.NewName(), sizes.package, Kind::Package);
        AddFiles(folder + "/private", sizes.internals, Kind::Private);
    }

    /// About one file in ten has a name of an earlier path folder, which it shadows or is shadowed by.
    void AddFiles(const std::string& folder, std::size_t count, Kind kind) {
        if (count == 0)
            return;
        std::unordered_set<std::string> stems;
        std::vector<std::string> names;
        while (names.size() < count) {
            const bool shadows = m_filesOfEarlier != 0 && m_source.InPercent(10);
            std::string stem = shadows ? m_files[m_source.Below(m_filesOfEarlier)].stem : m_source.NewName();
            if (stems.insert(stem).second) {
                names.push_back(stem + (m_source.InPercent(20) ? ".p" : ".sv"));
                m_files.push_back({std::move(stem), kind, m_work.folderNames.size() - 1});
            }
        }
        m_tree.AddFiles(folder, names);
        m_work.folders.push_back(m_tree.Path(folder));
        m_work.entries += count + (kind == Kind::Plain ? 0 : 1);
    }

    Question AskedFrom(std::size_t folder, const std::string& stem) const {
        return {Wide(stem), m_work.folderNames[folder] + u"\\asker.sv", Wide(Lowered(stem))};
    }
    Question AskedFromAnywhere(const std::string& stem) {
        return AskedFrom(m_source.Below(m_work.folderNames.size()), stem);
    }
    const File& AnyFile() { return m_files[m_source.Below(m_files.size())]; }

    void Ask() {
        while (m_work.hits.size() < questionCount)
            if (const File& file = AnyFile(); file.kind != Kind::Package)
                m_work.hits.push_back(AskedFromAnywhere(file.stem));
        while (m_work.visibleHits.size() < questionCount) {
            const File& file = AnyFile();
            if (file.kind == Kind::Plain)
                m_work.visibleHits.push_back(AskedFromAnywhere(file.stem));
            else if (file.kind == Kind::Private)
                m_work.visibleHits.push_back(AskedFrom(file.folder, file.stem));
        }
        while (m_work.misses.size() < questionCount)
            m_work.misses.push_back(AskedFromAnywhere(m_source.NewName()));
    }

    void AskByZipf() {
        std::vector<double> sums(m_files.size());
        double sum = 0;
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] = sum += 1.0 / static_cast<double>(i + 1);
        while (m_work.zipfHits.size() < questionCount) {
            const auto place = std::upper_bound(sums.begin(), sums.end() - 1, m_source.Share() * sum);
            // A prime scatters the popular ones over all folders.
            const std::size_t rank = static_cast<std::size_t>(place - sums.begin()) + 1;
            if (const File& file = m_files[rank * 7919 % m_files.size()]; file.kind != Kind::Package)
                m_work.zipfHits.push_back(AskedFromAnywhere(file.stem));
        }
    }

    Workload& m_work;
    const Tree& m_tree;
    const std::string m_place;
    NameSource m_source;
    std::vector<File> m_files;
    std::size_t m_filesOfEarlier = 0; ///< path folders than the one in the making
};

Workload::Workload(const Tree& tree, const std::string& place, const Shape& itsShape) : shape(itsShape) {
    Builder(*this, tree, place).Build();
}

} // namespace bench
