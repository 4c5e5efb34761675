#include <algorithm>
#include <array>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "linux_host/collected_names.hpp"
#include "linux_host/counters.hpp"
#include "linux_host/drive_map.hpp"
#include "linux_host/encoding.hpp"
#include "linux_host/kept_folder.hpp"
#include "linux_host/linux_host.hpp"
#include "linux_host/recent_listings.hpp"

namespace linux_host {

namespace {

/// A directory opened for listing, and whether its name led there without a link.
class OpenDirectory {
  public:
    /// Opening through O_DIRECTORY also keeps a pipe from making the process wait.
    explicit OpenDirectory(const char* path) {
        ::open_how how{};
        how.flags = Flags;
        how.resolve = RESOLVE_NO_SYMLINKS;
        m_descriptor = static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how));
        // A link on the way, or a system that knows no such question, which then counts as one.
        if (m_descriptor < 0 && errno != ENOENT && errno != ENOTDIR && errno != EACCES) {
            m_reachedThroughLinks = true;
            m_descriptor = ::open(path, Flags);
        }
    }
    ~OpenDirectory() {
        if (IsOpen()) {
            ::close(m_descriptor);
        }
    }
    OpenDirectory(const OpenDirectory&) = delete;
    OpenDirectory& operator=(const OpenDirectory&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    int GetDescriptor() const { return m_descriptor; }
    bool IsReachedThroughLinks() const { return m_reachedThroughLinks; }

    /// @return false if not even the first entries could be read. One that fails in the middle ends early:
    /// what was read is true, and the next look tells more.
    /// @p begin is told how many bytes of entries come next.
    template <class Begin, class Visit>
    bool ForEachEntry(Begin begin, Visit visit) const {
        // As large as the C library's, but off the heap.
        constexpr std::size_t size = 32 * 1024;
        alignas(::dirent64) std::array<char, size + CollectedNames::Slack> block;
        for (bool started = false;; started = true) {
            const ssize_t length = ::getdents64(m_descriptor, block.data(), size);
            if (length <= 0) {
                return length == 0 || started;
            }
            std::fill_n(block.begin() + length, CollectedNames::Slack, '\0');
            begin(static_cast<std::size_t>(length));
            for (ssize_t at = 0; at < length;) {
                const auto& entry = *reinterpret_cast<const ::dirent64*>(block.data() + at);
                visit(entry);
                at += entry.d_reclen;
            }
        }
    }

  private:
    static constexpr int Flags = O_RDONLY | O_NONBLOCK | O_DIRECTORY | O_CLOEXEC;

    int m_descriptor;
    bool m_reachedThroughLinks = false;
};

/// Identity of a directory: two names with equal identities are one directory.
struct Identity {
    dev_t device;
    ino_t inode;

    friend bool operator==(const Identity&, const Identity&) = default;
};

/// Device and inode of a path and of all paths above it, as the name goes: through links, since a record's
/// ancestors are those of its name. `..` leaves the folder before it.
class Ancestors {
  public:
    explicit Ancestors(const std::string& path) {
        Enter("/");
        for (std::size_t begin = 0; begin < path.size();) {
            const std::size_t end = std::min(path.find('/', begin), path.size());
            const std::string_view element = std::string_view(path).substr(begin, end - begin);
            if (!element.empty() && element != ".") {
                // The path up to here and `..` is the folder that stands two places back, entered again.
                if (element == "..") {
                    Leave();
                    Leave();
                }
                Enter(path.substr(0, end));
            }
            begin = end + 1;
        }
    }

    bool Contain(Identity identity) const {
        return std::find(m_identities.begin(), m_identities.end(), identity) != m_identities.end();
    }

    bool ContainInode(ino_t inode) const {
        return std::any_of(m_identities.begin(), m_identities.end(),
                           [inode](const Identity& identity) { return identity.inode == inode; });
    }

  private:
    void Enter(const std::string& path) {
        struct stat status {};
        // An unknown one still takes a place, for `..` to leave; no folder has these numbers.
        const bool known = ::stat(path.c_str(), &status) == 0;
        m_identities.push_back(known ? Identity{status.st_dev, status.st_ino} : Identity{0, 0});
    }
    void Leave() {
        if (!m_identities.empty()) {
            m_identities.pop_back();
        }
    }

    std::vector<Identity> m_identities;
};

/// How many special links one name may go through.
constexpr int MostSpecialLinks = 3;

bool IsSpecial(std::string_view name) { return name[0] == '@' || name[0] == '+' || name == "private"; }

bool IsSelfOrParent(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

int CountSpecialLinks(const std::string& path) {
    int count = 0;
    for (std::size_t begin = 1; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        struct stat status {};
        if (end > begin && IsSpecial(std::string_view(path).substr(begin, end - begin)) &&
            ::lstat(path.substr(0, end).c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
            ++count;
        }
        begin = end + 1;
    }
    return count;
}

/// One listing in the making: decides which entries are taken.
class ListingBuilder {
  public:
    ListingBuilder(const OpenDirectory& directory, const char* path, CollectedNames& names)
        : m_directory(directory), m_path(path), m_names(names) {}

    void Expect(std::size_t bytes) { m_names.Expect(bytes); }

    void Take(const ::dirent64& entry) {
        if (IsSelfOrParent(entry.d_name)) {
            return;
        }
        const bool isUsual = IsFileDirectoryOrUnknown(entry.d_type) && !MayBeSpecial(entry.d_name);
        if ((isUsual || IsTaken(entry)) && !m_names.Add(entry.d_name, WordOf(entry.d_type))) {
            ++CountersInForce().unspellable;
        }
    }

  private:
    /// By the first byte alone, which most names fail at.
    static bool MayBeSpecial(const char* name) { return name[0] == '@' || name[0] == '+' || name[0] == 'p'; }

    bool IsTaken(const ::dirent64& entry) {
        if (!CollectedNames::IsSpellable(entry.d_name)) {
            return true; // to be refused, which comes before what it is
        }
        if (!IsFileDirectoryOrUnknown(entry.d_type)) {
            ++CountersInForce().specialFiles;
            return false;
        }
        if (LeadsAstray(entry)) {
            ++CountersInForce().ancestorLinks;
            return false;
        }
        return true;
    }

    static bool IsFileDirectoryOrUnknown(unsigned char type) {
        return type == DT_REG || type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN;
    }

    /// A link may lead to either kind. Saying nothing costs one question at the entry's first use; asking
    /// here would cost one for every link of every listing.
    static unsigned short WordOf(unsigned char type) {
        return type == DT_DIR ? DirectoryWord : type == DT_REG ? FileWord : 0;
    }

    /// Only special folders are read without being asked for, so only they can run in a circle, and only
    /// where a link is involved. Links side by side, level by level, multiply too without a circle: beyond a
    /// few special links in one name no further one is taken.
    bool LeadsAstray(const ::dirent64& entry) {
        if (!IsSpecial(entry.d_name) || entry.d_type == DT_REG ||
            (entry.d_type == DT_DIR && !m_directory.IsReachedThroughLinks())) {
            return false;
        }
        if (!m_ancestors) {
            m_ancestors.emplace(m_path);
            m_linksAbove = CountSpecialLinks(m_path);
        }
        // A real folder tells its inode for nothing, and nearly always that rules it out.
        if (entry.d_type == DT_DIR && !m_ancestors->ContainInode(entry.d_ino)) {
            return false;
        }
        struct stat status {};
        if (::fstatat(m_directory.GetDescriptor(), entry.d_name, &status, 0) != 0 ||
            !S_ISDIR(status.st_mode)) {
            return false;
        }
        return m_ancestors->Contain({status.st_dev, status.st_ino}) ||
               (m_linksAbove >= MostSpecialLinks && IsLink(entry));
    }

    bool IsLink(const ::dirent64& entry) const {
        struct stat status {};
        return entry.d_type == DT_LNK ||
               (::fstatat(m_directory.GetDescriptor(), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(status.st_mode));
    }

    const OpenDirectory& m_directory;
    const char* m_path;
    CollectedNames& m_names;
    std::optional<Ancestors> m_ancestors; ///< found out at the first special link
    int m_linksAbove = 0;                 ///< special links that the directory's own name goes through
};

/// The number that a failed look at a directory amounts to.
int AccessibilityOf(int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return 3;
    case ENOENT:
    case ENOTDIR:
        return 4;
    default:
        return 5;
    }
}

/// @return false if there is no such directory or it cannot be read.
bool Collect(const ustring& name, CollectedNames& names) {
    const DiskPath path(name);
    if (!path.IsGood()) {
        return false;
    }
    const OpenDirectory directory(path.Get());
    if (!directory.IsOpen()) {
        return false;
    }
    ++CountersInForce().listings;
    RememberListing(directory.GetDescriptor());
    ListingBuilder builder(directory, path.Get(), names);
    return directory.ForEachEntry([&builder](std::size_t bytes) { builder.Expect(bytes); },
                                  [&builder](const ::dirent64& entry) { builder.Take(entry); });
}

template <class Value>
std::unique_ptr<Value[], FreeForHost> NewBlock(std::size_t count) {
    return std::unique_ptr<Value[], FreeForHost>(
        static_cast<Value*>(HostMallocWithCheck(std::max<std::size_t>(count, 1) * sizeof(Value))));
}

} // namespace

std::optional<Listing> ListDirectory(const ustring& name) {
    CollectedNames names;
    return Collect(name, names) ? std::optional(names.Sorted()) : std::nullopt;
}

std::optional<ListingBlocks> ListDirectoryInBlocks(const ustring& name) {
    CollectedNames names;
    if (!Collect(name, names)) {
        return std::nullopt;
    }
    ListingBlocks blocks{NewBlock<char16_t>(names.GetRoom()), NewBlock<unsigned short>(names.GetCount())};
    names.WriteSorted(blocks.names.get(), blocks.words.get());
    return blocks;
}

int DirectoryAccessibility(const ustring& name) {
    const ResolvedPath resolved = ResolveName(name);
    if (resolved.fault != PathFault::None) {
        return 4;
    }
    // The dot makes it one question: what is no directory holds none. For the effective user, who is the one
    // that will read; plain access() asks for the real one.
    const std::string self = resolved.path + "/.";
    const bool accessible = ::faccessat(AT_FDCWD, self.c_str(), R_OK | X_OK, AT_EACCESS) == 0;
    return accessible ? 1 : AccessibilityOf(errno);
}

bool DirectoryExists(const ustring& name) {
    ++CountersInForce().existenceQueries;
    const DiskPath path(name);
    struct stat status {};
    return path.IsGood() && ::stat(path.Get(), &status) == 0 && S_ISDIR(status.st_mode);
}

long FileTime(const ustring& name) {
    const DiskPath path(name);
    struct stat status {};
    if (!path.IsGood() || !KeptFolder::Get().Status(path.Get(), status)) {
        return 0;
    }
    // A file from the epoch must not look like none, and a time beyond 2038 must not wrap into the past.
    return std::clamp<long>(status.st_mtime, 1, std::numeric_limits<std::int32_t>::max());
}

} // namespace linux_host
