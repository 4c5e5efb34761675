// What a read-directory hook hands over, read into records: one listing from nothing, and the other over it.
// The index is whole after each, and a reload leads to what loading leads to.

#include "fuzz/listing.hpp"

#include <set>

#include "support/fake_platform.hpp"
#include "support/invariants.hpp"

namespace {

using namespace listing;

/// The names in a record, by kind. A name that is listed twice counts once.
std::string Contents(const ovDir& dir) {
    std::set<std::string> names;
    for (std::int32_t group = 0; group <= DirChildGroupCount; ++group)
        for (std::int32_t i = 0; const PathItemInfo* item = dir->GetItem(group, i); ++i) {
            ustring name;
            item->AppendName(name);
            names.insert(std::to_string(group) + " " + N(name));
        }
    return Join({names.begin(), names.end()}, "\n");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FakePlatform platform;
    Parse(Lines(data, size));
    ovDir dir = ovAddDir(Path(), u"R:\\A", ovDirAddAtEnd);
    ExpectSame(InvariantCheck(Path()).Run(), "", "the index is whole after loading");
    g_disk.current = 1;
    ovRefreshAllDirectories(Path(), ovRefreshReload);
    ExpectSame(InvariantCheck(Path()).Run(), "", "the index is whole after reloading");
    const std::string reloaded = Contents(dir);
    ovRemoveDir(dir);
    dir = ovAddDir(Path(), u"R:\\A", ovDirAddAtEnd);
    ExpectSame(reloaded, Contents(dir), "a reload leads where loading leads");
    ovRemoveDir(dir);
    return 0;
}
