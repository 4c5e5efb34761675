#pragma once

#include <csignal>
#include <string>

#include <sys/types.h>

#include "tools/ovsel/path_entries.hpp"
#include "tools/ovsel/regular_file.hpp"

namespace tool {

/// Keeps the signals that ask a program to end waiting, as long as it lives.
class HeldSignals {
  public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

  private:
    sigset_t m_before;
};

/// A new file that takes the place of another in one step: whoever ends the tool at any moment, or pulls the
/// plug, leaves the old file or the new one.
class Replacement {
  public:
    /// Opens the new file beside @p place, under a name of its own and never through a link.
    /// @throws EnvironmentError, also when what stands there is anything but a regular file.
    explicit Replacement(const PathEntry& place);
    /// Without Commit nothing of it is left, unless the tool is killed before.
    ~Replacement();
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;

    /// For reading and writing.
    int File() const { return *m_file; }

    /// Gives open files names in the library's grammar. To be called before a path is created.
    static void MapOpenFiles();
    /// The name by which the library reaches this very file, whoever puts another one in its place.
    std::string LibraryName() const;

    /// Makes the new file safe on the disk and puts it in its place, with the permissions of the old one.
    /// @throws EnvironmentError
    void Commit();

  private:
    ::mode_t PermissionsAtPlace() const;
    int OpenNew();
    [[noreturn]] void Fail(const std::string& reason) const;

    HeldSignals m_signals; ///< first to come and last to go
    std::string m_shown;
    std::string m_leaf;
    std::string m_newLeaf; ///< empty while there is no such file
    Descriptor m_folder;
    ::mode_t m_mode;
    Descriptor m_file;
};

} // namespace tool
