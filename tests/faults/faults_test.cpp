#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "faults/faults.hpp"
#include "faults/faulty_host.hpp"
#include "host_interfaces/filesystem.hpp"
#include "host_interfaces/platform.hpp"
#include "linux_host/linux_host.hpp"

namespace {

using namespace faults;

/// The parser's library ends the process when it has no memory to begin with, so it has its own.
class ParserMemory final : public xercesc::MemoryManager {
    MemoryManager* getExceptionMemoryManager() override { return this; }
    void* allocate(XMLSize_t size) override { return std::malloc(size); }
    void deallocate(void* block) override { std::free(block); }
};

/// What each run would have to begin anew, at a multiple of its own cost: the parser's library, and the
/// watches of the process's directory and of all above it, in which other processes may have left much.
void HoldWhatIsSlow() {
    static ParserMemory memory;
    using xercesc::XMLPlatformUtils, xercesc::XMLUni;
    XMLPlatformUtils::Initialize(XMLUni::fgXercescDefaultLocale, nullptr, nullptr, &memory);
    host::Platform().FindFirstChangeNotification(fl::filesystem::current_path(), false, 0);
}

/// What has to be given back besides memory.
std::size_t Held() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return linux_host::GetCounters().watches +
           static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

Outcome Run(const Plan& plan) {
    const long blocks = state.liveBlocks;
    const std::size_t held = Held();
    state = {.plan = plan, .liveBlocks = blocks};
    Outcome outcome = PlayScenario();
    const auto owned = [](const std::string& text) { return text.capacity() > 15 ? 1 : 0; };
    const long left = state.liveBlocks - blocks - owned(outcome.answers) - owned(outcome.wrong);
    if (left != 0 || Held() != held)
        outcome.wrong +=
            std::to_string(left) + " blocks and " + std::to_string(Held() - held) + " others left\n";
    return outcome;
}

/// Each call of the operation in turn, or one of every @p stride. @return how many there were.
long Inject(Plan plan, long stride, const std::string& expected) {
    long count = 0;
    for (plan.number = 1;; plan.number += stride, ++count) {
        Outcome outcome = Run(plan);
        if (!state.fired)
            return count;
        if (!outcome.wrong.empty())
            outcome = Run(plan); // what is made once for the process, on this way, is there now
        EXPECT_EQ("", outcome.wrong);
        EXPECT_EQ(expected, outcome.answers);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << plan.operation << (plan.way == Throws ? " throws" : " answers")
                          << (plan.form == Form::Once ? " at call " : " from call ") << plan.number;
            return count;
        }
    }
}

/// Memory, or all other operations, in each way and form. Without OVSEL_FAULT_STRIDE in the environment about
/// @p sample of the calls of each.
void InjectAll(bool isMemory, long sample) {
    [[maybe_unused]] static const bool isPrepared = (InstallFaultyHost(), HoldWhatIsSlow(), true);
    Run({}); // what is made once for the process
    const Outcome clean = Run({});
    ASSERT_EQ("", clean.wrong);
    const char* const stride = std::getenv("OVSEL_FAULT_STRIDE");
    long total = 0;
    for (const auto& [name, ways, calls] : std::array(state.operations)) {
        if (name.empty() || (name == "memory") != isMemory || testing::Test::HasFailure())
            continue;
        const long step = std::max(1L, stride ? std::atol(stride) : calls / sample);
        long count = 0;
        for (const Ways way : {Throws, Answers})
            for (const Form form : {Form::Once, Form::FromThenOn})
                count += (ways & way) != 0 ? Inject({name, way, form}, step, clean.answers) : 0;
        std::printf("%-24s %6ld calls %7ld faults\n", name.data(), calls, count);
        total += count;
    }
    std::printf("all %ld faults\n", total);
}

TEST(Faults, OfTheHostLeaveAPathThatOneRefreshPutsRight) { InjectAll(false, 6); }

TEST(Faults, OfMemoryLeaveAPathThatOneRefreshPutsRight) { InjectAll(true, 200); }

} // namespace
