#pragma once

#include <chrono>

namespace tool {

/// Waits for a timer, for the wish that the tool end, and for the reader of standard output, without running
/// meanwhile.
///
/// SIGINT and SIGTERM are held back from its construction to the end of the process, so that they find the
/// tool at one of its waits and nowhere else; those that the parent ignores stay ignored.
class Wakeup {
  public:
    /// Thrown by AwaitReader when the end is wished for while the reader does not read.
    class Interrupted {};

    /// @throws EnvironmentError
    Wakeup();
    ~Wakeup();
    Wakeup(const Wakeup&) = delete;
    Wakeup& operator=(const Wakeup&) = delete;

    /// @return whether the time went by; false if the tool is to end.
    /// @throws ReaderGone when nobody can read standard output any more.
    bool Sleep(std::chrono::milliseconds time) const;

    /// Returns when a write of ChunkSize bytes to standard output would not have to wait.
    /// @throws Interrupted
    void AwaitReader() const;

    /// What a pipe takes whole once it takes anything.
    static constexpr std::size_t ChunkSize = 4096;

  private:
    int m_signals;
};

} // namespace tool
