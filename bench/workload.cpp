#include "bench/workload.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string_view>
#include <unordered_set>

#include "linux_host/linux_host.hpp"

namespace bench {

namespace {

constexpr unsigned Seed = 20'260'101;

ustring Widened(std::string_view ascii) { return ustring(ascii.begin(), ascii.end()); }

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
    bool InPercent(std::size_t share) { return Below(100) < share; }

    /// A stem that has not been made before, also not with other capitals.
    std::string NewName() {
        for (;;) {
            std::string name = AnyName();
            if (m_keys.insert(Lowered(name)).second) {
                return name;
            }
        }
    }

    const std::unordered_set<std::string>& Keys() const { return m_keys; }

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
        if (InPercent(10)) {
            name += static_cast<char>('0' + Below(10));
        }
        return name;
    }

    std::mt19937 m_random{Seed};
    std::unordered_set<std::string> m_keys;
};

/// The stems of one folder; about one in ten is a name of an earlier folder, which it shadows or is shadowed
/// by.
std::vector<std::string> FolderStems(NameSource& source, const std::vector<std::string>& earlier) {
    std::vector<std::string> stems;
    while (stems.size() < FilesPerFolder) {
        const bool shadows = !earlier.empty() && source.InPercent(10);
        std::string name = shadows ? earlier[source.Below(earlier.size())] : source.NewName();
        if (std::find(stems.begin(), stems.end(), name) == stems.end()) {
            stems.push_back(std::move(name));
        }
    }
    return stems;
}

std::filesystem::path MakeRoot() {
    std::string pattern = std::filesystem::canonical(std::filesystem::temp_directory_path()) / "bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    return pattern;
}

ustring NameOf(const std::string& path) {
    return linux_host::DriveMap::ToName(path).value(); // C: is the root folder, so that every path has one
}

} // namespace

Workload::Workload() : m_start(std::filesystem::current_path()), m_root(MakeRoot()) {
    NameSource source;
    std::vector<std::string> stems;
    std::vector<ustring> askers;
    for (std::size_t i = 0; i < FolderCount; ++i) {
        folders.push_back(m_root / ("folder" + std::to_string(i)));
        folderNames.push_back(NameOf(folders.back()));
        std::filesystem::create_directory(folders.back());
        const std::vector<std::string> added = FolderStems(source, stems);
        const auto nameOnDisk = [&](const std::string& stem) {
            return folders.back() + "/" + stem + (source.InPercent(20) ? ".p" : ".sv");
        };
        // One file under a hundred names lists like a hundred files. Some file systems search long for a new
        // inode when many have just been freed, as they are when the benchmark runs again and again.
        const std::string file = nameOnDisk(added.front());
        std::ofstream{file};
        for (auto stem = added.begin() + 1; stem != added.end(); ++stem) {
            std::filesystem::create_hard_link(file, nameOnDisk(*stem));
        }
        for (const std::string& stem : added) {
            meanNameLength += static_cast<double>(stem.size()) / FileCount;
        }
        askers.push_back(folderNames.back() + u"\\" + Widened(added.front()) + u".sv");
        stems.insert(stems.end(), added.begin(), added.end());
    }
    for (const std::string& key : source.Keys()) {
        keys.push_back(Widened(key));
    }
    const auto ask = [&](const std::string& name) {
        return Question{Widened(name), askers[source.Below(askers.size())], Widened(Lowered(name))};
    };
    for (std::size_t i = 0; i < QuestionCount; ++i) {
        hits.push_back(ask(stems[source.Below(stems.size())]));
        misses.push_back(ask(source.NewName()));
    }
    std::filesystem::create_directory(m_root / "empty");
    std::filesystem::current_path(m_root / "empty");
}

Workload::~Workload() {
    std::error_code ignored;
    std::filesystem::current_path(m_start, ignored);
    std::filesystem::remove_all(m_root, ignored);
}

} // namespace bench
