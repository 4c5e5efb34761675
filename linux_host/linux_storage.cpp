#include "linux_host/linux_storage.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "linux_host/drive_map.hpp"
#include "linux_host/encoding.hpp"
#include "linux_host/regular_file.hpp"

namespace linux_host {

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::Exception;

namespace {

std::string DisplayOf(const AbsoluteIRI& location) { return NarrowForDisplay(location.toString()); }

[[noreturn]] void Throw(const AbsoluteIRI& location, const char* reason) {
    throw Exception(DisplayOf(location) + ": " + reason);
}

std::string PathOf(const AbsoluteIRI& location) {
    ResolvedPath resolved = ResolveName(fromAbsoluteIRI(location));
    if (resolved.fault != PathFault::None) {
        Throw(location, TextOf(resolved.fault));
    }
    return std::move(resolved.path);
}

/// Through links; one that leads nowhere is none.
bool IsFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Asked when a listing has failed, which says no more than that.
const char* ReasonOfNoListing(const ustring& name) {
    switch (DirectoryAccessibility(name)) {
    case 3:
        return std::strerror(EACCES);
    case 4:
        return "no such folder";
    default:
        return "cannot be listed";
    }
}

} // namespace

std::vector<LinuxStorage::Entry> LinuxStorage::ListAll(const AbsoluteIRI& folder) const {
    const ustring name = fromAbsoluteIRI(folder);
    std::string path = PathOf(folder) + '/';
    const std::optional<Listing> listing = ListDirectory(name);
    if (!listing) {
        Throw(folder, ReasonOfNoListing(name));
    }
    std::vector<Entry> entries;
    entries.reserve(listing->words.size());
    const std::size_t folderLength = path.size();
    const char16_t* next = listing->names.c_str();
    for (const unsigned short word : listing->words) {
        ustring entry = next;
        next += entry.size() + 1;
        bool isFolder = word == DirectoryWord;
        if (word == 0) { // only links, as a rule, are worth a question of their own
            path.resize(folderLength);
            isFolder = AppendNarrow(path, entry) && IsFolder(path);
        }
        entries.push_back({std::move(entry), isFolder});
    }
    return entries;
}

bool LinuxStorage::FolderExists(const AbsoluteIRI& folder) const {
    return DirectoryExists(fromAbsoluteIRI(folder));
}

AbsoluteIRI LinuxStorage::CanonicalLocation(const AbsoluteIRI& location) const {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(PathOf(location).c_str(), nullptr),
                                                           &std::free);
    if (real == nullptr) {
        Throw(location, std::strerror(errno));
    }
    const std::optional<ustring> name = DriveMap::ToName(real.get());
    if (!name) {
        Throw(location, "leads to a place without a name");
    }
    return foundation::storage::vfs::toAbsoluteIRI(location.getScheme(), *name);
}

std::unique_ptr<std::streambuf> LinuxStorage::OpenForReading(const AbsoluteIRI& file) const {
    Descriptor descriptor(OpenRegularFile(PathOf(file), O_RDONLY));
    if (descriptor.Number() < 0) {
        Throw(file, std::strerror(errno));
    }
    return ReadingBuffer(std::move(descriptor), DisplayOf(file));
}

std::unique_ptr<std::streambuf> LinuxStorage::OpenForWriting(const AbsoluteIRI& file) const {
    Descriptor descriptor(OpenRegularFile(PathOf(file), O_WRONLY | O_CREAT));
    if (descriptor.Number() < 0 || ::ftruncate(descriptor.Number(), 0) != 0) {
        Throw(file, std::strerror(errno));
    }
    return WritingBuffer(std::move(descriptor), DisplayOf(file));
}

} // namespace linux_host
