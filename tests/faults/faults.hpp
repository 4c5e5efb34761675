#pragma once

#include <array>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "host_interfaces/storage.hpp"

/// Faults on demand: the n-th call that the library makes of one operation fails, once or from then on.
namespace faults {

/// Everything that the library asks of others and that can fail: by an exception, or by the failure that the
/// interface itself provides for.
// NOLINTNEXTLINE
#define FAULTS_OPERATIONS(X)                                                                                 \
    X(Memory, "operator new", true, false)                                                                   \
    X(ListHook, "hook: list", true, true)                                                                    \
    X(AccessHook, "hook: accessibility", true, true)                                                         \
    X(ExistsHook, "hook: existence", true, true)                                                             \
    X(TimeHook, "hook: time", true, true)                                                                    \
    X(ClassHook, "hook: is it a class?", true, true)                                                         \
    X(MessageHook, "hook: message", true, false)                                                             \
    X(PrintSink, "print sink", true, false)                                                                  \
    X(Callback, "interest callback", true, false)                                                            \
    X(DriveType, "platform: drive type", true, true)                                                         \
    X(Expansion, "platform: full path", true, true)                                                          \
    X(Clock, "platform: clock", true, false)                                                                 \
    X(CalendarTime, "platform: calendar time", true, true)                                                   \
    X(ProcessId, "platform: process id", true, false)                                                        \
    X(OpenWatch, "platform: open watch", true, true)                                                         \
    X(RearmWatch, "platform: rearm watch", true, true)                                                       \
    X(WaitWatch, "platform: wait", true, true)                                                               \
    X(BeginChecks, "platform: begin checks", true, false)                                                    \
    X(ProbeFile, "platform: probe file", true, true)                                                         \
    X(ListFolder, "storage: list", true, true)                                                               \
    X(ExistsFolder, "storage: folder exists", true, true)                                                    \
    X(OpenToRead, "storage: open to read", true, true)                                                       \
    X(OpenToWrite, "storage: open to write", true, true)                                                     \
    X(ReadBytes, "stream: read", true, true)                                                                 \
    X(WriteBytes, "stream: write", true, true)                                                               \
    X(ToNarrow, "text: wide to narrow", false, true)                                                         \
    X(FromAscii, "text: ASCII to wide", false, true)                                                         \
    X(ToAscii, "text: wide to ASCII", false, true)                                                           \
    X(ToEncoding, "text: wide to UTF-8", false, true)                                                        \
    X(FromEncoding, "text: UTF-8 to wide", false, true)                                                      \
    X(CurrentPath, "files: current path", false, true)                                                       \
    X(ChangePath, "files: change of path", false, true)                                                      \
    X(Canonical, "files: canonical", false, true)                                                            \
    X(OpenFile, "files: open", false, true)                                                                  \
    X(HostBlock, "host's allocator", false, true)

#define FAULTS_ENUMERATOR(id, ...) id, // NOLINT
enum Operation { FAULTS_OPERATIONS(FAULTS_ENUMERATOR) OperationCount };
#undef FAULTS_ENUMERATOR

enum class Form { Once, FromThenOn };
enum class Way { Throws, Answers };

struct Plan {
    Operation operation = OperationCount;
    Way way = Way::Throws;
    Form form = Form::Once;
    long number = 0; ///< of the call, from 1
};

/// What is planned, and what has been counted while armed.
struct State {
    Plan plan;
    bool armed = false;
    bool fired = false;
    std::array<long, OperationCount> calls{};
    long liveBlocks = 0; ///< of operator new and of the host's allocator
};
State& Get();

/// Holds counting and faults on, or off, as long as it lives.
class Armed {
  public:
    explicit Armed(bool on = true) : m_before(Get().armed) { Get().armed = on; }
    ~Armed() { Get().armed = m_before; }
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;

  private:
    const bool m_before;
};

/// Counts a call. @return whether it is to fail.
inline bool IsDue(Operation operation) {
    State& state = Get();
    if (!state.armed)
        return false;
    const long count = ++state.calls[operation];
    const bool due =
        operation == state.plan.operation &&
        (state.plan.form == Form::Once ? count == state.plan.number : count >= state.plan.number);
    state.fired = state.fired || due;
    return due;
}

/// Runs @p real, in which nothing fails, or what has been planned in its place. Functions of the host's own
/// throw what they like; the layers beneath run out of memory.
template <class Failure, class Real>
auto Call(Operation operation, [[maybe_unused]] Failure failure, Real real) -> decltype(real()) {
    if (!IsDue(operation)) {
        const Armed quiet(false);
        return real();
    }
    if (operation >= ListHook && operation <= Callback && Get().plan.way == Way::Throws)
        throw std::runtime_error("the disk is on fire");
    if (Get().plan.way == Way::Throws)
        throw std::bad_alloc();
    if constexpr (std::is_null_pointer_v<Failure>)
        throw foundation::storage::vfs::Exception("the storage is on fire");
    else
        return failure;
}
template <class Real>
auto Call(Operation operation, Real real) {
    return Call(operation, nullptr, real);
}

} // namespace faults
