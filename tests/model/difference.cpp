#include "model/difference.hpp"

namespace model {

namespace {

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

} // namespace

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

} // namespace model
