#include "model/difference.hpp"

#include <random>

#include "support/texts.hpp"

namespace model {

namespace {

const std::vector<Names> ExtensionLists{{}, {"p", "sv", ""}, {".sv", "p"}, {""}, {"SV"}, {"p", "svx"}};

/// Some questions after each step, others after the next.
std::vector<Question> Sample(const World& world, unsigned seed) {
    std::vector<Question> questions;
    // What a listing left open is found out now, so that it does not matter when it is asked for.
    for (const char* name : {"plot", "draw", "K", "n", "a.b.sv", "sub", "private"})
        questions.push_back({name, {}, Rule::AnyCase, Scope::All});
    static const Names names{
        "",         "plot",    "Plot",   "draw", "K",           "n",        "a.b",         "a.b.sv", "plot.p",
        "plot.",    "Plot.sv", "@K",     "+p",   "@plot\\plot", "p\\K\\K",  "K\\draw",     "sub",    "A",
        "private",  "+K\\K",   "absent", "C\\A", "@K\\private", "ot\\plot", "R:\\A\\plot", "\\plot", "plot\\",
        "@p\\plot", "P\\PLOT"};
    static const Names classes{"plot",     "K",      "Plot", "p.K", "p.plot", "p.K.K", "draw", "a.b",
                               "p.absent", "absent", "p..K", ".K",  "p.",     ".",     "",     "\xc3\xb6"};
    Names askers{"R:\\nowhere",   "",          "R:\\A\\@K", "R:\\A\\private", "R:\\B\\@plot",
                 "R:\\A\\+p\\@K", "R:\\C\\+K", "R:\\A\\sub"};
    for (const Dir& dir : world.Known())
        askers.push_back(dir.name);
    std::minstd_rand random(seed * 2 + 1);
    const auto any = [&](const auto& list) { return list[(random() >> 8) % list.size()]; };
    static const std::vector scopes{Scope::All,     Scope::PathOnly, Scope::Method, Scope::Visible,
                                    Scope::Visible, Scope::Private,  Scope::Dir};
    static const std::vector rules{Rule::Exact, Rule::AnyCase, Rule::OfPath};
    static const std::vector forms{Form::Files, Form::Files, Form::Dirs, Form::FilesAndSubDirs};
    for (int i = 0; i < 24; ++i) {
        Question question{any(names), any(ExtensionLists), any(rules), any(scopes), any(askers), any(forms)};
        questions.push_back(question);
    }
    for (int i = 0; i < 4; ++i) {
        questions.push_back({any(names), any(ExtensionLists), Rule::OfPath,
                             i % 2 == 0 ? Scope::All : Scope::Visible, any(askers), Form::FirstFile});
        // The host is asked by name, and one folder may be known in two states.
        if (!world.IsOnPath(world.cwd.name))
            questions.push_back({any(classes),
                                 any(std::vector<Names>{{"sv", "p"}, {"p", "sv"}, {"SV"}, {"svx", "sv"}}),
                                 Rule::OfPath, Scope::All, "", Form::ClassFile});
    }
    if (!world.knowsOrder)
        std::erase_if(questions, [](const Question& question) {
            return question.name.empty() && question.scope == Scope::Visible;
        });
    return questions;
}

std::string Text(const Question& question) {
    static const char* const scopes[] = {"all", "path", "visible", "method", "private", "dir"};
    static const char* const forms[] = {"files", "dirs", "files and folders", "first file", "class file"};
    static const char* const rules[] = {"exactly", "in any case", "by the path's rule"};
    return std::string(forms[static_cast<int>(question.form)]) + " " + question.name + " {" +
           Join(question.extensions, ",") + "} in " + scopes[static_cast<int>(question.scope)] + " from " +
           question.from + " " + rules[static_cast<int>(question.rule)];
}

std::string Compare(std::vector<Answer> expected, const std::vector<Answer>& given, Form form) {
    if (form == Form::FirstFile) // any of the best rank
        std::erase_if(expected,
                      [first = expected](const Answer& answer) { return answer.rank != first.front().rank; });
    std::vector<int> last;
    for (const Answer& answer : given) {
        // Within a rank the order is the library's: take each answer's rank from the resolver.
        const auto same = std::find_if(expected.begin(), expected.end(), [&](const Answer& candidate) {
            return candidate.name == answer.name && candidate.match == answer.match;
        });
        if (same == expected.end())
            return "found " + answer.name + " as " + std::to_string(answer.match);
        if (same->rank < last)
            return "out of order: " + answer.name;
        last = same->rank;
        expected.erase(same);
    }
    return expected.empty() || (form == Form::FirstFile && !given.empty())
               ? ""
               : "missed " + expected.front().name;
}

const World* g_world = nullptr;

/// What the host would read in the file, had it looked when the library did.
bool IsClass(const ustring& name) {
    const auto isIn = [full = N(name)](const auto& self, const std::vector<Dir>& dirs) -> bool {
        for (const Dir& dir : dirs) {
            if (full == dir.name + "\\" + LeafOf(full))
                return dir.files.at(dir.IndexOf(LeafOf(full))).isClass;
            if (self(self, dir.below))
                return true;
        }
        return false;
    };
    return isIn(isIn, g_world->Known());
}

} // namespace

std::string Difference(const World& world, System& system, unsigned seed) {
    const std::vector<Dir> known = world.Known();
    Names names;
    for (const Dir& dir : known)
        names.push_back(dir.name);
    if (system.Listed() != names)
        return "the path is " + Join(system.Listed(), "; ") + " instead of " + Join(names, "; ");
    g_world = &world;
    ovSetIsClassFcn(&IsClass);
    Resolver resolver(known, world.pathIsExact);
    for (const Question& question : Sample(world, seed))
        if (const std::string text = Compare(resolver.Run(question), system.Ask(question), question.form);
            !text.empty())
            return Text(question) + ": " + text;
    ovSetIsClassFcn(nullptr);
    return system.Faults();
}

} // namespace model
