#pragma once

#include <array>
#include <set>
#include <string>

#include <host_interfaces/ustring.hpp>

namespace tool {

/// The folders whose changes the system does not report. The library tells them one by one, in warnings, at
/// every attempt; here they are sorted by kind, and each kind is shown once.
class Refusals {
  public:
    struct Kind {
        const char* id;     ///< of the library's message
        const char* reason; ///< for JSON
        const char* check;  ///< for JSON: what the library does with such a folder instead
        std::set<ustring> folders = {};
        std::string example = {}; ///< the first warning, behind the folder as the user writes it
        bool shown = false;
    };

    /// Takes @p message if it is a warning of this sort. @return whether it was.
    bool Take(const std::string& message);

    /// Shows the kinds that have not been shown yet, with their numbers.
    void Report();

    const auto& Kinds() const { return m_kinds; }
    std::size_t Count() const;
    /// Folders that are not looked at any more. All others are looked at in every refresh.
    std::size_t CountUnchecked() const { return m_kinds[2].folders.size(); }
    /// Is the folder read again in every refresh, whether it has changed or not?
    bool IsReread(const ustring& folder) const { return m_kinds[0].folders.count(folder) != 0; }

  private:
    /// The last kind goes unchecked by a rule of the library: a remote file system that reported on some
    /// folders is trusted no further.
    std::array<Kind, 3> m_kinds = {
        Kind{"couldNotGetHandleLocalChangeNotification", "local_refused", "reread"},
        Kind{"noSupportRemoteChangeNotification", "remote_unsupported", "by_time"},
        Kind{"ranOutOfHandlesRemoteChangeNotification", "remote_exhausted", "never"},
    };
};

} // namespace tool
