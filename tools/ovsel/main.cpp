#include "tools/ovsel/cache_show.hpp"
#include "tools/ovsel/cache_verify.hpp"
#include "tools/ovsel/cache_write.hpp"
#include "tools/ovsel/class.hpp"
#include "tools/ovsel/dirs.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/options.hpp"
#include "tools/ovsel/output.hpp"
#include "tools/ovsel/session.hpp"
#include "tools/ovsel/tree.hpp"
#include "tools/ovsel/watch.hpp"
#include "tools/ovsel/which.hpp"

namespace {

/// A new command needs a value of Command, a line here, and its options in AddCommands.
int Answer(const tool::Options& options, tool::Session& session, tool::Output& output) {
    switch (options.command) {
    case tool::Command::Which:
        return tool::RunWhich(options, session, output);
    case tool::Command::Tree:
        return tool::RunTree(options, session, output);
    case tool::Command::Dirs:
        return tool::RunDirs(session, output);
    case tool::Command::Watch:
        return tool::RunWatch(options, session, output);
    case tool::Command::Class:
        return tool::RunClass(options, session, output);
    case tool::Command::CacheWrite:
        return tool::RunCacheWrite(options, session, output);
    case tool::Command::CacheVerify:
        return tool::RunCacheVerify(options, session, output);
    case tool::Command::CacheShow: // without a path
        break;
    }
    return tool::ExitInternal;
}

int ShowCache(const tool::Options& options) {
    tool::Output output(options);
    const int status = tool::RunCacheShow(options, output);
    output.Finish();
    return status;
}

int Run(int argc, const char* const* argv) {
    tool::Options options;
    if (const auto done = tool::ParseOptions(argc, argv, options))
        return *done;
    if (options.command == tool::Command::CacheShow)
        return ShowCache(options);
    // The session outlives the output, because it is asked until the last name is written; the statistics
    // come last, behind the answer even where both streams lead to one terminal.
    tool::Session session(options);
    tool::Output output(options);
    const int status = Answer(options, session, output);
    output.Finish();
    if (options.stats)
        session.PrintStats();
    return status;
}

} // namespace

int main(int argc, char** argv) {
    return tool::Guard([&] { return Run(argc, argv); });
}
