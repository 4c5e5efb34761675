#include "linux_host/inotify_instance.hpp"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "linux_host/counters.hpp"

namespace linux_host {

namespace {

/// One mask for all owners, since the last one given counts. A time set back arrives as an attribute only.
/// Opening and reading are left out: looking at a folder must not look like a change of it.
constexpr std::uint32_t Mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_MODIFY |
                               IN_CLOSE_WRITE | IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR |
                               IN_DONT_FOLLOW | IN_EXCL_UNLINK;

constexpr std::size_t BufferSize = 65536;
constexpr std::size_t LongestEvent = sizeof(::inotify_event) + 256;

/// More than the fullest queue takes at the usual limit, so that nobody who writes without pause can hold us.
constexpr int MostReads = 256;

void CountCall() { ++CountersInForce().systemCalls; }

} // namespace

int InotifyInstance::Open() {
    if (m_events >= 0) {
        return 0;
    }
    m_buffer.resize(BufferSize);
    CountCall();
    m_events = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_events < 0) {
        return -errno;
    }
    CountCall();
    // Polls as ready whenever mounts have changed since the last poll; it is never read.
    m_mounts = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    return 0;
}

void InotifyInstance::Close() {
    for (int* descriptor : {&m_events, &m_mounts}) {
        if (*descriptor >= 0) {
            ::close(*descriptor);
            *descriptor = -1;
        }
    }
    m_removed = 0;
}

int InotifyInstance::Add(const std::string& path) {
    const int error = Open();
    if (error != 0) {
        return error;
    }
    CountCall();
    const int watch = ::inotify_add_watch(m_events, path.c_str(), Mask);
    return watch >= 0 ? watch : -errno;
}

void InotifyInstance::Remove(int watch) {
    CountCall();
    ::inotify_rm_watch(m_events, watch);
    ++m_removed;
}

InotifyInstance::News InotifyInstance::Take(int milliseconds,
                                            const std::function<void(const ::inotify_event&)>& use) {
    News news;
    if (m_events < 0) {
        return news;
    }
    m_removed = 0;
    // A descriptor of -1 is passed over.
    ::pollfd descriptors[] = {{m_events, POLLIN, 0}, {m_mounts, POLLPRI, 0}};
    CountCall();
    if (::poll(descriptors, 2, milliseconds) <= 0) {
        return news;
    }
    news.mounts = (descriptors[1].revents & (POLLPRI | POLLERR)) != 0;
    for (int reads = 0; descriptors[0].revents != 0 && reads < MostReads && Read(use, news); ++reads) {
    }
    return news;
}

/// One bufferful. @return whether there may be more.
bool InotifyInstance::Read(const std::function<void(const ::inotify_event&)>& use, News& news) {
    CountCall();
    const ::ssize_t size = ::read(m_events, m_buffer.data(), m_buffer.size());
    const char* const end = m_buffer.data() + (size > 0 ? size : 0);
    for (const char* next = m_buffer.data(); next < end;) {
        // The kernel pads names so that each event is aligned as the first.
        const auto& event = *reinterpret_cast<const ::inotify_event*>(next);
        next += sizeof(event) + event.len;
        ++CountersInForce().events;
        if ((event.mask & IN_Q_OVERFLOW) != 0) {
            ++CountersInForce().overflows;
            news.overflow = true;
        } else {
            use(event);
        }
    }
    return size > 0 && static_cast<std::size_t>(size) + LongestEvent > m_buffer.size();
}

} // namespace linux_host
