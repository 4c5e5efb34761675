// Random operations on a path and on the disk beneath it, against a resolver that lists everything anew at
// each question. After each step the answers to a sample of questions are compared, and the whole index is
// checked. RC_PARAMS tells how many worlds, how long, and from which seed: scripts/soak sets it.

#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <rapidcheck.h>
#include <rapidcheck/state.h>

#include "model/systems.hpp"
#include "model/world.hpp"
#include "ovsel/reading/vfsmode.hpp"

namespace {

using namespace model;

/// Every day the same worlds, unless RC_PARAMS says otherwise.
[[maybe_unused]] const int everyday = ::setenv("RC_PARAMS", "seed=20261121", 0);

std::vector<Question> Sample(const World& world) {
    std::vector<std::string> askers{"R:\\nowhere"};
    for (const Dir& dir : world.Known())
        askers.push_back(dir.name);
    askers.push_back("R:\\A\\@K");
    std::vector<Question> questions;
    for (const char* name :
         {"plot", "Plot", "draw", "K", "n", "a.b", "plot.p", "@plot\\plot", "p\\K\\K", "K\\draw"})
        for (const bool exact : {true, false}) {
            for (const Scope scope : {Scope::All, Scope::PathOnly, Scope::Method})
                questions.push_back({name, {}, exact, scope, ""});
            for (const std::string& asker : askers)
                for (const Scope scope : {Scope::Visible, Scope::Private, Scope::Dir})
                    questions.push_back({name, {"p", "sv", ""}, exact, scope, asker});
        }
    return questions;
}

std::string Text(const Question& question) {
    static const char* const scopes[] = {"all", "path", "visible", "method", "private", "dir"};
    return question.name + " in " + scopes[static_cast<int>(question.scope)] + " from " + question.from +
           (question.exact ? "" : ", any case");
}

/// Where the library's answers differ from the resolver's; empty if nowhere.
std::string Difference(const World& world, System& system) {
    const std::vector<Dir> known = world.Known();
    for (const Question& question : Sample(world)) {
        std::vector<Answer> expected = Resolver(known, question).Run();
        std::vector<Answer> given = system.Ask(question);
        // Within a rank the order is the library's: take each answer's rank from the resolver.
        for (Answer& answer : given) {
            const auto same = std::find_if(expected.begin(), expected.end(), [&](const Answer& candidate) {
                return candidate.name == answer.name && candidate.match == answer.match;
            });
            if (same == expected.end())
                return Text(question) + ": found " + answer.name;
            answer.rank = same->rank;
        }
        if (given.size() != expected.size())
            return Text(question) + ": " + std::to_string(given.size()) + " instead of " +
                   std::to_string(expected.size()) + " answers";
        const auto byRank = [](const Answer& a, const Answer& b) { return a.rank < b.rank; };
        if (!std::is_sorted(given.begin(), given.end(), byRank))
            return Text(question) + ": out of order";
    }
    return system.BrokenInvariants();
}

using Command = rc::state::Command<World, System>;

struct Step final : Command {
    Operation operation;

    Step() {
        const auto number = [] { return *rc::gen::arbitrary<unsigned>(); };
        using Kind = Operation::Kind;
        // What meets within one second is done more often.
        const auto often = {Kind::Put, Kind::Erase, Kind::Refresh, Kind::AddAtEnd, Kind::Remove};
        const int any = *rc::gen::inRange(0, 2 * static_cast<int>(Kind::Count));
        operation.kind = any < static_cast<int>(Kind::Count) ? static_cast<Kind>(any)
                                                             : *rc::gen::elementOf(std::vector(often));
        operation.a = number();
        operation.b = number();
        operation.c = number();
    }
    void apply(World& world) const override { world.Apply(operation); }
    void run(const World& before, System& system) const override {
        World after = before;
        after.Apply(operation);
        system.Apply(before, after, operation);
        ++stepCount;
        RC_ASSERT(Difference(after, system) == "");
    }
    void show(std::ostream& stream) const override {
        stream << static_cast<int>(operation.kind) << "(" << operation.a << ", " << operation.b << ", "
               << operation.c << ")";
    }

    static inline long stepCount = 0;
};

class Model : public testing::TestWithParam<SystemKind> {};

TEST_P(Model, AgreesAfterEveryStep) {
    const SystemKind kind = GetParam();
    const auto worlds = [] {
        World world;
        world.canHide = !IsVFSMode();
        const std::unique_ptr<System> system = MakeSystem(GetParam(), world);
        RC_ASSERT(Difference(world, *system) == "");
        rc::state::check(world, *system, rc::state::gen::execOneOfWithArgs<Step>());
    };
    EXPECT_TRUE(rc::check("answers and index", worlds));
    std::printf("%s: %ld steps\n", NameOf(kind).c_str(), Step::stepCount);
}

INSTANTIATE_TEST_SUITE_P(All, Model, testing::ValuesIn(SystemKinds()),
                         [](const auto& kind) { return NameOf(kind.param); });

} // namespace
