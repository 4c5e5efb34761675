#include "tools/ovsel/exit_status.hpp"

#include <cstdio>

#include <ovsel/ovsel.hpp>

#include "tools/ovsel/output.hpp"

namespace tool {
namespace {

/// Memory may be what the tool ran out of, so that even the message may fail to be put together.
int Report(ExitStatus status, const char* kind, const char* text) noexcept {
    try {
        Complain(std::string(kind) + text);
    } catch (...) {
        std::fputs("ovsel: out of memory\n", stderr);
    }
    return status;
}

} // namespace

int Guard(const std::function<int()>& work) noexcept {
    try {
        return work();
        // The order matters: each class before its base.
    } catch (const ReaderGone&) {
        return ExitFound; // `head` has all it wanted
    } catch (const FindingError& error) {
        return Report(ExitNotFound, "", error.what());
    } catch (const UsageError& error) {
        return Report(ExitUsage, "", error.what());
    } catch (const EnvironmentError& error) {
        return Report(ExitEnvironment, "", error.what());
    } catch (const std::out_of_range& error) {
        // In the storage layer's mode the library raises it for folders with shorter names than the prefix.
        if (ovInToolboxCacheMode())
            return Report(ExitEnvironment,
                          "--cache: ", "with PATH_MGR_MODE=vfs no folder above --prefix can be asked for");
        return Report(ExitInternal, "internal error: ", error.what());
    } catch (const std::exception& error) {
        return Report(ExitInternal, "internal error: ", error.what());
    } catch (...) {
        return Report(ExitInternal, "internal error: ", "something unknown was thrown");
    }
}

} // namespace tool
