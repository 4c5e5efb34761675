#include "ovsel/frame/pathregistry.hpp"

#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

namespace {

using Map = boost::unordered_flat_map<std::string, IPathManager*>;

Map& Paths() {
    // Never destroyed: a host's global handle may let go of its path after this.
    static Map& paths = *new Map;
    return paths;
}

} // namespace

IPathManager* PathRegistry::Find(const std::string& name) {
    const auto found = Paths().find(name);
    return found == Paths().end() ? nullptr : found->second;
}

bool PathRegistry::IsEmpty() { return Paths().empty(); }

void PathRegistry::Insert(const std::string& name, IPathManager* manager) { Paths().emplace(name, manager); }

void PathRegistry::Erase(const std::string& name) { Paths().erase(name); }

void PathRegistry::ForEach(const boost::function<void(IPathManager&)>& visit) {
    const std::vector<Map::value_type> present(Paths().begin(), Paths().end());
    for (const auto& [name, manager] : present)
        if (Find(name) == manager)
            visit(*manager);
}
