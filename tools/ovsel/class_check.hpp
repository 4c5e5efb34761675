#pragma once

#include <string>
#include <vector>

#include <host_interfaces/ustring.hpp>

#include "tools/ovsel/options.hpp"

namespace tool {

/// Tells the library which files define classes, by the pattern or by the command of the options, as long as
/// it lives. One per process, since the library's hook knows no context.
class ClassCheck {
  public:
    /// @throws UsageError for a malformed pattern.
    explicit ClassCheck(const Options& options);
    ~ClassCheck();
    ClassCheck(const ClassCheck&) = delete;
    ClassCheck& operator=(const ClassCheck&) = delete;

    /// The same for whoever asks besides.
    bool Defines(const ustring& fileName) const;

    /// What kept a check from being made, empty if nothing did. The library is told "no class" then, for an
    /// exception must not pass through it.
    const std::string& Failure() const;
};

} // namespace tool
