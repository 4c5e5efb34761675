#include "tools/ovsel/replacement.hpp"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <host_interfaces/text.hpp>
#include <linux_host/linux_host.hpp>

#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

constexpr const char16_t* OpenFilesRoot = u"\\\\ovsel\\open-files";

int OpenFolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return ::open(path.substr(0, slash == 0 ? 1 : slash).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

::mode_t PermissionsOfNewFiles() {
    const ::mode_t mask = ::umask(0); // there is no other way to ask
    ::umask(mask);
    return 0666 & ~mask;
}

} // namespace

HeldSignals::HeldSignals() {
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&ends, signal);
    sigprocmask(SIG_BLOCK, &ends, &m_before);
    // A file that grows beyond the limit is an error like any other.
    std::signal(SIGXFSZ, SIG_IGN);
}

HeldSignals::~HeldSignals() { sigprocmask(SIG_SETMASK, &m_before, nullptr); }

Replacement::Replacement(const PathEntry& place)
    : m_shown(place.shown),
      m_leaf(place.path.substr(place.path.rfind('/') + 1)),
      m_folder(OpenFolderOf(place.path)),
      m_mode(PermissionsAtPlace()),
      m_file(OpenNew()) {}

Replacement::~Replacement() {
    if (!m_newLeaf.empty())
        ::unlinkat(*m_folder, m_newLeaf.c_str(), 0);
}

::mode_t Replacement::PermissionsAtPlace() const {
    if (*m_folder < 0)
        Fail(fmt::format("its folder cannot be opened: {}", std::strerror(errno)));
    struct stat status {};
    if (m_leaf.empty())
        Fail("this is a folder");
    if (::fstatat(*m_folder, m_leaf.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno != ENOENT)
            Fail(std::strerror(errno));
        return PermissionsOfNewFiles();
    }
    if (S_ISREG(status.st_mode))
        return status.st_mode & 0777;
    Fail(S_ISDIR(status.st_mode)   ? "this is a folder"
         : S_ISLNK(status.st_mode) ? "this is a link; give the file that it leads to"
                                   : "this is no regular file");
}

int Replacement::OpenNew() {
    std::random_device random;
    // Another name would hardly be taken as well; who takes them all does so on purpose.
    for (int attempt = 0; attempt < 16; ++attempt) {
        m_newLeaf = fmt::format(".ovsel-{:08x}", random());
        const int file =
            ::openat(*m_folder, m_newLeaf.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file >= 0) {
            // Whatever the mask of the process: the library opens it once more.
            ::fchmod(file, 0600);
            return file;
        }
        m_newLeaf.clear();
        if (errno != EEXIST)
            break;
    }
    Fail(std::strerror(errno));
}

void Replacement::MapOpenFiles() {
    linux_host::DriveMap::Add(OpenFilesRoot, "/proc/self/fd", linux_host::DriveMap::Kind::Fixed);
}

std::string Replacement::LibraryName() const {
    return fl::i18n::codecvt_ustring_to_narrow_string{}(OpenFilesRoot) + '\\' + std::to_string(*m_file);
}

void Replacement::Commit() {
    if (::fchmod(*m_file, m_mode) != 0 || ::fsync(*m_file) != 0 ||
        ::renameat(*m_folder, m_newLeaf.c_str(), *m_folder, m_leaf.c_str()) != 0)
        Fail(std::strerror(errno));
    m_newLeaf.clear();
    // Some file systems have nothing to do here and say so.
    if (::fsync(*m_folder) != 0 && errno != EINVAL && errno != ENOTSUP)
        Fail(std::strerror(errno));
}

void Replacement::Fail(const std::string& reason) const {
    throw EnvironmentError(fmt::format("{}: {}", Shown(m_shown), reason));
}

} // namespace tool
