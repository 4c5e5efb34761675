#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace tool {

/// What the tool tells its caller; scripts rely on the numbers.
enum ExitStatus : int {
    ExitFound = 0,       ///< every name was found, or nothing was to be complained about
    ExitNotFound = 1,    ///< a name was not found, or something was to be complained about
    ExitUsage = 2,       ///< the command line makes no sense
    ExitEnvironment = 3, ///< the surroundings do not allow an answer: no usable folder, an unreadable list
    ExitInternal = 4     ///< a fault of the tool itself
};

/// Ends the run with ExitNotFound: what was looked at is not what it should be.
class FindingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Ends the run with ExitUsage.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Ends the run with ExitEnvironment.
class EnvironmentError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Whoever read the answer has gone (`ovsel tree | head -1`). Ends the run with ExitFound and not a word.
class ReaderGone : public std::exception {};

/// Runs @p work and turns what it throws into a line on standard error and an exit status.
int Guard(const std::function<int()>& work) noexcept;

} // namespace tool
