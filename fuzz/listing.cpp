// What a read-directory hook hands over, read as a source of entries, against a plain reading.

#include "fuzz/listing.hpp"

#include "ovsel/reading/dirreader.hpp"
#include "support/fake_platform.hpp"

namespace {

using namespace listing;

bool IsSame(const DirItemInfo& a, const DirItemInfo& b) {
    return a.name == b.name && a.kind == b.kind && a.confirmed == b.confirmed && a.fileKind == b.fileKind;
}

/// What an entry is by its word, then by its name, then by a look.
DirItemInfo Expected(const Entry& entry) {
    const unsigned word = g_disk.withWords ? entry.word : 0;
    const bool isFolder = (word & 0x4000) != 0;
    if (!isFolder && (word & 0x8000) != 0)
        return {entry.name, DirItemFile, true, (word & 1) != 0 ? 1U : (word & 2) != 0 ? 2U : 0U};
    const DirItemKind kind = ClassifyDirEntryName(entry.name);
    if (kind == DirItemSubdir ? isFolder : Exists(ovPath(), u"R:\\A\\" + entry.name))
        return {entry.name, kind, true, 0};
    return {entry.name, DirItemFile, false, 0};
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FakePlatform platform;
    Parse(Lines(data, size));
    DirReader reader(*Path(), u"R:\\A");
    reader.First();
    for (const Entry& entry : g_disk.listings[0]) {
        if (entry.name.starts_with(u'.'))
            continue;
        Expect(!reader.IsDone() && IsSame(reader.CurrentItem(), Expected(entry)),
               "entries come as they stand");
        reader.Next();
    }
    Expect(reader.IsDone(), "there are no other entries");
    return 0;
}
