// Random operations on a path and on the disk beneath it, against a resolver that lists everything anew at
// each question. After each step the answers to a sample of questions are compared, and the whole index is
// checked. RC_PARAMS tells how many worlds, how long, and from which seed: scripts/soak sets it.

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <rapidcheck.h>
#include <rapidcheck/state.h>

#include "model/difference.hpp"

namespace {

using namespace model;

/// Every day the same worlds, unless RC_PARAMS says otherwise.
[[maybe_unused]] const int everyday = ::setenv("RC_PARAMS", "seed=20261121", 0);

using Command = rc::state::Command<World, System>;

struct Step final : Command {
    Operation operation;

    Step() {
        static const std::vector<std::size_t> weighted = [] {
            std::vector<std::size_t> commands;
            for (std::size_t i = 0; i < System::Commands.size(); ++i)
                commands.insert(commands.end(), System::Commands[i].weight, i);
            return commands;
        }();
        operation.command = *rc::gen::elementOf(weighted);
        for (unsigned* number : {&operation.a, &operation.b, &operation.c})
            *number = *rc::gen::arbitrary<unsigned>();
    }
    void apply(World& world) const override { world.Apply(operation); }
    void run(const World& before, System& system) const override {
        World after = before;
        after.Apply(operation);
        system.Apply({operation, before, after});
        ++stepCount;
        RC_ASSERT(Difference(after, system, operation.a + operation.b + operation.c) == "");
    }
    void show(std::ostream& stream) const override {
        stream << System::Commands[operation.command].name << "(" << operation.a << ", " << operation.b
               << ", " << operation.c << ")";
    }

    static inline long stepCount = 0;
};

class Model : public testing::TestWithParam<SystemKind> {};

TEST_P(Model, AgreesAfterEveryStep) {
    Step::stepCount = 0;
    int worldCount = 0;
    const auto worlds = [&] {
        ++worldCount;
        World world = MakeWorld(GetParam());
        world.pathIsExact = *rc::gen::arbitrary<bool>();
        const std::unique_ptr<System> system = MakeSystem(GetParam(), world);
        RC_ASSERT(Difference(world, *system) == "");
        rc::state::check(world, *system, rc::state::gen::execOneOfWithArgs<Step>());
    };
    EXPECT_TRUE(rc::check("answers and index", worlds));
    std::printf("%s: %ld steps in %d worlds\n", NameOf(GetParam()).c_str(), Step::stepCount, worldCount);
}

INSTANTIATE_TEST_SUITE_P(All, Model, testing::ValuesIn(SystemKinds()),
                         [](const auto& kind) { return NameOf(kind.param); });

} // namespace
