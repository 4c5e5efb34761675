#include "linux_host/drive_map.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <vector>

#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "linux_host/encoding.hpp"

namespace linux_host {

namespace {

using View = std::u16string_view;

struct Root {
    ustring name;       ///< as it was mapped, native form: `C:` or `\\server\share`
    std::string folder; ///< without a separator at its end, so empty for `/`
    DriveMap::Kind kind = DriveMap::Kind::Fixed;
};

bool IsSeparator(char16_t unit) { return unit == u'\\' || unit == u'/'; }

char16_t Lower(char16_t unit) { return unit >= u'A' && unit <= u'Z' ? char16_t(unit + 32) : unit; }

bool IsLetter(char16_t unit) { return Lower(unit) >= u'a' && Lower(unit) <= u'z'; }

/// Letters match without case in ASCII only: roots are named by people at the keyboard, not by file systems.
bool SameUnit(char16_t a, char16_t b) { return (IsSeparator(a) && IsSeparator(b)) || Lower(a) == Lower(b); }

/// Does @p name begin with @p root, up to the end of an element?
bool BeginsWithRoot(View name, View root) {
    return name.size() >= root.size() && (name.size() == root.size() || IsSeparator(name[root.size()])) &&
           std::equal(root.begin(), root.end(), name.begin(), SameUnit);
}

bool IsDrive(View root) { return root.size() == 2 && IsLetter(root[0]) && root[1] == u':'; }

/// Can this be a server or a share? A part that `..` could mean something to would let names leave the root.
bool IsNetworkPart(View part) {
    return !part.empty() && part != u"." && part != u".." &&
           part.find_first_of(View(u"\\/:\0", 4)) == View::npos;
}

bool IsNetworkRoot(View root) {
    if (root.size() < 5 || !IsSeparator(root[0]) || !IsSeparator(root[1])) {
        return false;
    }
    const std::size_t middle = root.find_first_of(u"\\/", 2);
    return middle != View::npos && IsNetworkPart(root.substr(2, middle - 2)) &&
           IsNetworkPart(root.substr(middle + 1));
}

/// Calls @p use with each element of a POSIX path, until that returns false. @return false in that case.
template <typename Use>
bool ForEachElement(std::string_view path, Use use) {
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        if (length > 0 && !use(path.substr(0, length))) {
            return false;
        }
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return true;
}

/// Does no `..` of the path lead above where it begins?
bool StaysBelow(std::string_view path) {
    std::size_t depth = 0;
    return ForEachElement(path, [&](std::string_view element) {
        if (element == "..") {
            return depth-- > 0;
        }
        depth += element == "." ? 0U : 1U;
        return true;
    });
}

/// Without doubled separators, `.` and a separator at the end.
std::string Tidied(std::string_view path) {
    std::string tidy;
    ForEachElement(path, [&](std::string_view element) {
        if (element != ".") {
            tidy.append("/").append(element);
        }
        return true;
    });
    return tidy;
}

/// The mapped roots. Drives have a place each, since nearly every name begins with one.
class Roots {
  public:
    static Roots& Get() {
        static Roots roots;
        return roots;
    }

    Roots() { Reset(); }

    void Reset() {
        m_drives = {};
        m_shares.clear();
        Drive(u'C') = {u"C:", "", DriveMap::Kind::Fixed};
    }

    void Add(Root root) {
        if (IsDrive(root.name)) {
            Drive(root.name[0]) = std::move(root);
            return;
        }
        std::erase_if(m_shares, [&](const Root& old) {
            return old.name.size() == root.name.size() && BeginsWithRoot(old.name, root.name);
        });
        m_shares.push_back(std::move(root));
    }

    /// The root that an absolute name lies under, or null.
    const Root* Find(View name) const {
        if (name.size() > 2 && IsLetter(name[0]) && name[1] == u':' && IsSeparator(name[2])) {
            const Root& drive = m_drives[Place(name[0])];
            return drive.name.empty() ? nullptr : &drive;
        }
        const auto share = std::find_if(m_shares.begin(), m_shares.end(),
                                        [&](const Root& root) { return BeginsWithRoot(name, root.name); });
        return share == m_shares.end() ? nullptr : &*share;
    }

    /// The root with the longest folder that holds the tidied @p path, or null.
    /// Of equals the first letter wins, and letters come before shares.
    const Root* FindByFolder(std::string_view path) const {
        const Root* best = nullptr;
        const auto consider = [&](const Root& root) {
            const std::size_t length = root.folder.size();
            if (path.starts_with(root.folder) && (path.size() == length || path[length] == '/') &&
                (length == 0 || StaysBelow(path.substr(length))) &&
                (best == nullptr || length > best->folder.size())) {
                best = &root;
            }
        };
        for (const Root& drive : m_drives) {
            if (!drive.name.empty()) {
                consider(drive);
            }
        }
        std::for_each(m_shares.begin(), m_shares.end(), consider);
        return best;
    }

    const std::vector<Root>& Shares() const { return m_shares; }

  private:
    static std::size_t Place(char16_t letter) { return static_cast<std::size_t>(Lower(letter) - u'a'); }
    Root& Drive(char16_t letter) { return m_drives[Place(letter)]; }

    std::array<Root, 26> m_drives;
    std::vector<Root> m_shares;
};

/// Asks the disk anew each time: something may have been mounted since.
std::uint32_t TypeOf(const Root& root) {
    const bool remote = root.kind == DriveMap::Kind::Remote ||
                        (root.kind == DriveMap::Kind::Detect && LiesOnRemoteFileSystem(root.folder + "/"));
    return remote ? host::DriveRemote : host::DriveFixed;
}

} // namespace

bool DriveMap::Add(const ustring& root, const std::string& folder, Kind kind) {
    const bool isRoot = IsDrive(root) || IsNetworkRoot(root);
    if (!isRoot || !folder.starts_with('/') || folder.find('\0') != std::string::npos) {
        return false;
    }
    Roots::Get().Add({fl::filesystem::make_native_form(root, true), Tidied(folder), kind});
    return true;
}

void DriveMap::Reset() { Roots::Get().Reset(); }

const char* TextOf(PathFault fault) {
    switch (fault) {
    case PathFault::NulInside:
        return "NUL inside";
    case PathFault::Unconvertible:
        return "not a file name";
    default:
        return "no such root";
    }
}

namespace {

/// What a path holds behind its root that needs a closer look.
struct PathMarks {
    bool dots = false; ///< two in a row
    bool nul = false;
};

/// Turns its separators into the system's. Every question about the disk begins with it, so the loop is one
/// that compilers turn into a few wide steps: no jump depends on what is found, and no store moves its end.
PathMarks UseSlashes(std::string& path, std::size_t from) {
    char* const bytes = path.data();
    const std::size_t size = path.size();
    unsigned char dots = 0;
    unsigned char nul = 0;
    for (std::size_t i = from; i < size; ++i) {
        const char byte = bytes[i];
        dots |= static_cast<unsigned char>((byte == '.') & (bytes[i + 1] == '.')); // NUL stands at the end
        nul |= static_cast<unsigned char>(byte == '\0');
        bytes[i] = byte == '\\' ? '/' : byte;
    }
    return {dots != 0, nul != 0};
}

ResolvedPath ResolveAbsolute(const ustring& name) {
    const auto refused = [&name](PathFault fault) {
        return ResolvedPath{{}, name.find(u'\0') != ustring::npos ? PathFault::NulInside : fault};
    };
    const Root* root = Roots::Get().Find(name);
    if (root == nullptr) {
        return refused(PathFault::NoRoot);
    }
    const std::size_t rootLength = root->folder.size();
    const View rest = View(name).substr(root->name.size());
    // The rest begins with the separator that the folder lacks, so that the two only need joining.
    ResolvedPath result;
    result.path.reserve(rootLength + rest.size() + 1);
    result.path = root->folder;
    const bool isConverted = AppendNarrow(result.path, rest);
    const PathMarks marks = UseSlashes(result.path, rootLength);
    if (!isConverted || marks.nul) {
        return refused(PathFault::Unconvertible);
    }
    // `..` above the root vanishes; on the disk it would lead out of a folder that a root stands for.
    if (rootLength != 0 && marks.dots && !StaysBelow(std::string_view(result.path).substr(rootLength))) {
        return ResolveAbsolute(fl::filesystem::canonical(name, {}));
    }
    if (result.path.empty()) {
        result.path.push_back('/');
    }
    return result;
}

} // namespace

ResolvedPath ResolveName(const ustring& name) {
    ResolvedPath result = ResolveAbsolute(name);
    if (result.fault != PathFault::NoRoot || name.empty()) {
        return result;
    }
    // An absolute name without a root stays so; only a relative one is worth asking for the current
    // directory.
    const ustring native = fl::filesystem::make_native_form(name, true);
    if (fl::filesystem::is_absolute(native)) {
        return result;
    }
    try {
        return ResolveAbsolute(fl::filesystem::absolute(native, {}));
    } catch (const fl::filesystem::Failure&) {
        return result;
    }
}

DiskPath::DiskPath(const ustring& name) {
    const Root* const root = Roots::Get().Find(name);
    m_isUsual = root != nullptr && TakeUsual(View(name).substr(root->name.size()), root->folder);
    if (!m_isUsual) {
        m_long = ResolveName(name);
    }
}

namespace {

/// Eight units side by side, which compilers turn into one register wherever there is one.
constexpr std::size_t Lanes = 8;
using Unit = std::uint16_t;
using Units [[gnu::vector_size(Lanes * sizeof(Unit))]] = Unit;
using Bytes [[gnu::vector_size(Lanes)]] = std::uint8_t;

Units UnitsAt(const char16_t* units) {
    Units wide;
    std::memcpy(&wide, units, sizeof wide);
    return wide;
}

bool IsAnySet(Units units) {
    std::array<std::uint64_t, sizeof units / sizeof(std::uint64_t)> words{};
    std::memcpy(words.data(), &units, sizeof units);
    return (words[0] | words[1]) != 0;
}

} // namespace

/// @return false for what needs a closer look. The last step goes back as far as a whole one needs, so that
/// nothing is left over for single units.
bool DiskPath::TakeUsual(View rest, const std::string& folder) {
    if (rest.size() < Lanes || folder.size() + rest.size() >= m_usual.size()) {
        return false;
    }
    constexpr Unit Dot = u'.';
    constexpr Unit Slash = u'/';
    constexpr Unit Backslash = u'\\';
    char* const bytes = std::copy(folder.begin(), folder.end(), m_usual.begin());
    const std::size_t last = rest.size() - Lanes;
    Units odd{};
    for (std::size_t at = 0;; at = std::min(at + Lanes, last)) {
        const Units units = UnitsAt(rest.data() + at);
        const Units next = UnitsAt(rest.data() + at + 1); // with a NUL behind the last
        const auto twoDots = static_cast<Units>((units == Dot) & (next == Dot));
        odd |= (units & 0xFF80) | static_cast<Units>(units == 0) | twoDots;
        const Units slashes = units ^ (static_cast<Units>(units == Backslash) & (Backslash ^ Slash));
        const Bytes narrow = __builtin_convertvector(slashes, Bytes);
        std::memcpy(bytes + at, &narrow, sizeof narrow);
        if (at == last) {
            break;
        }
    }
    bytes[rest.size()] = '\0';
    return !IsAnySet(odd);
}

std::optional<std::string> DriveMap::ToPath(const ustring& name) {
    ResolvedPath result = ResolveAbsolute(name);
    return result.fault == PathFault::None ? std::optional(std::move(result.path)) : std::nullopt;
}

std::optional<ustring> DriveMap::ToName(std::string_view path) {
    if (!path.starts_with('/') || path.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    const std::string tidy = Tidied(path);
    const Root* root = Roots::Get().FindByFolder(tidy);
    if (root == nullptr) {
        return std::nullopt;
    }
    // What the folder itself is called does not matter, only what the name would have to spell.
    const std::string_view rest = std::string_view(tidy).substr(root->folder.size());
    if (rest.empty()) {
        return IsDrive(root->name) ? root->name + u"\\" : root->name;
    }
    if (rest.find_first_of("\\:") != std::string_view::npos) {
        return std::nullopt;
    }
    ustring name = root->name;
    AppendWide(name, rest);
    std::replace(name.begin(), name.end(), u'/', u'\\');
    return name;
}

std::uint32_t RootType(const ustring& root) {
    const Root* found = Roots::Get().Find(root);
    if (found != nullptr) {
        return TypeOf(*found);
    }
    std::uint32_t type = host::DriveNoRoot;
    // The library cuts a network name behind its server before it asks.
    const View server = View(root).substr(0, root.find_last_not_of(u"\\/") + 1);
    for (const Root& share : Roots::Get().Shares()) {
        if (server.size() > 2 && BeginsWithRoot(share.name, server)) {
            type = std::max(type, TypeOf(share));
        }
    }
    return type;
}

bool IsRemoteFileSystem(std::uint32_t type) {
    // Those that linux/magic.h does not name; values as the kernel reports them.
    constexpr std::uint32_t Lustre = 0x0BD00BD0;
    constexpr std::uint32_t Gfs2 = 0x01161970;
    constexpr std::uint32_t BeeGfs = 0x19830326;
    constexpr std::uint32_t Remote[] = {NFS_SUPER_MAGIC,
                                        SMB_SUPER_MAGIC,
                                        CIFS_SUPER_MAGIC,
                                        SMB2_SUPER_MAGIC,
                                        NCP_SUPER_MAGIC,
                                        CODA_SUPER_MAGIC,
                                        V9FS_MAGIC,
                                        AFS_SUPER_MAGIC,
                                        AFS_FS_MAGIC,
                                        OCFS2_SUPER_MAGIC,
                                        FUSE_SUPER_MAGIC,
                                        CEPH_SUPER_MAGIC,
                                        Lustre,
                                        Gfs2,
                                        BeeGfs};
    return std::find(std::begin(Remote), std::end(Remote), type) != std::end(Remote);
}

bool LiesOnRemoteFileSystem(const std::string& folder) {
    struct statfs status {};
    return ::statfs(folder.c_str(), &status) == 0 &&
           IsRemoteFileSystem(static_cast<std::uint32_t>(status.f_type));
}

} // namespace linux_host
