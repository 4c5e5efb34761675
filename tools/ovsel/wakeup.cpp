#include "tools/ovsel/wakeup.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "tools/ovsel/exit_status.hpp"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

struct Readiness {
    bool signalled;
    short output; ///< what poll tells of standard output
};

/// @param output what to wait for at standard output; errors and a closed end are told in any case.
Readiness Poll(int signals, short output, int milliseconds) {
    std::array<::pollfd, 2> ends = {{{signals, POLLIN, 0}, {STDOUT_FILENO, output, 0}}};
    // A return without readiness, also by a signal that is none of ours, is up to the caller's loop.
    if (::poll(ends.data(), ends.size(), milliseconds) < 0)
        return {false, 0};
    return {ends[0].revents != 0, ends[1].revents};
}

} // namespace

Wakeup::Wakeup() {
    sigset_t wanted;
    sigemptyset(&wanted);
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction present {};
        if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            sigaddset(&wanted, signal);
    }
    sigprocmask(SIG_BLOCK, &wanted, nullptr);
    m_signals = ::signalfd(-1, &wanted, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_signals < 0)
        throw EnvironmentError(std::string("signals cannot be received: ") + std::strerror(errno));
}

Wakeup::~Wakeup() { ::close(m_signals); }

bool Wakeup::Sleep(std::chrono::milliseconds time) const {
    const auto end = Clock::now() + time;
    for (;;) {
        // Rounded up, so that the last wait is not a series of empty ones.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const Readiness ready =
            Poll(m_signals, 0,
                 static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max())));
        if (ready.signalled)
            return false;
        if ((ready.output & (POLLERR | POLLHUP)) != 0)
            throw ReaderGone();
        if (left <= 0)
            return true;
    }
}

void Wakeup::AwaitReader() const {
    for (;;) {
        const Readiness ready = Poll(m_signals, POLLOUT, -1);
        // Whoever reads gets the rest first; an error shows at the write.
        if (ready.output != 0)
            return;
        if (ready.signalled)
            throw Interrupted();
    }
}

} // namespace tool
