#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <sys/inotify.h>
#include <vector>

/// @file
/// The one inotify instance of the process. All descriptors are close-on-exec and non-blocking.

namespace linux_host {

/// Numbers of watches in, events out. A watch belongs to an inode, not to a name: adding the same directory
/// by another name gives the same number, and removing that number ends it for both. So the caller counts
/// owners.
class InotifyInstance {
  public:
    InotifyInstance() = default;
    ~InotifyInstance() { Close(); }
    InotifyInstance(const InotifyInstance&) = delete;
    InotifyInstance& operator=(const InotifyInstance&) = delete;

    /// Watches a directory, never through a link; opens the instance if there is none.
    /// @return its number, or an error number with a minus in front.
    int Add(const std::string& path);

    /// Ends a watch of Add. One that the kernel has ended already does no harm.
    void Remove(int watch);

    /// What has come to pass besides events.
    struct News {
        bool overflow = false; ///< events were lost
        bool mounts = false;   ///< something was mounted or unmounted somewhere, which no event tells
    };

    /// Reads all events that are there and hands them to @p use, which must not add or remove watches. Waits
    /// for something to happen for at most @p milliseconds. One system call if nothing has.
    News Take(int milliseconds, const std::function<void(const ::inotify_event&)>& use);

    /// Each removal leaves an event behind. Have so many gathered that they should be taken out of the queue,
    /// before they crowd out real ones?
    bool NeedsTaking() const { return m_removed >= RemovalsHeld; }

    /// Does Take tell of mounts? Not without a mount table to be read.
    bool SeesMounts() const { return m_mounts >= 0; }

    void Close();

  private:
    static constexpr std::size_t RemovalsHeld = 512;

    int Open();
    bool Read(const std::function<void(const ::inotify_event&)>& use, News& news);

    int m_events = -1;
    int m_mounts = -1; ///< the mount table, which can be polled for change; -1 without a /proc
    std::vector<char> m_buffer;
    std::size_t m_removed = 0; ///< since the last Take
};

} // namespace linux_host
