#include "model/systems.hpp"

#include "support/texts.hpp"

namespace model {

namespace {

ovSearch* Create(const ovPath& path, const Question& question, ovExtensionList extensions) {
    // What is no rule is taken for one that does not ask for case either.
    static constexpr ovCaseSensitivity blind[] = {ovCaseInsensitive, ovCasePlatformDefault,
                                                  static_cast<ovCaseSensitivity>(9)};
    const ovCaseSensitivity rule = question.rule == Rule::Exact    ? ovCaseSensitive
                                   : question.rule == Rule::OfPath ? ovCaseOfPath
                                                                   : blind[question.name.size() % 3];
    const ustring name = U(question.name);
    const ustring from = U(question.from);
    switch (question.scope) {
    case Scope::All:
        return ovCreateAllSearchIterator(path, name, extensions, rule);
    case Scope::PathOnly:
        return ovCreatePathOnlySearchIterator(path, name, extensions, rule);
    case Scope::Visible:
        return ovCreateDirnameVisibleSearchIterator(path, from, name, extensions, rule);
    case Scope::Method:
        return ovCreateMethodSearchIterator(path, name, extensions, rule);
    case Scope::Private:
        return ovCreatePrivateSearchIterator(ovFindDirFullName(path, from), name, extensions, rule);
    default:
        return ovCreateDirSearchIterator(ovFindDirFullName(path, from), name, extensions, rule);
    }
}

/// Any of the functions that answer a file.
using Find = std::function<int(ovDir*, ustring&)>;

Find Narrow(std::function<int(ovDir*, char*)> find) {
    return [=](ovDir* dir, ustring& name) {
        char text[1024] = "left over";
        const int match = find(dir, text);
        name = U(text);
        return match;
    };
}

/// What is answered is the whole name of an item of the directory, or nothing at all.
Answer StepOf(const Find& find) {
    ovDir dir;
    ustring wide = u"left over";
    const int match = find(&dir, wide);
    const std::string name = N(wide);
    const bool isNone = ovGetDirType(dir) == ovDirTypeNull;
    const bool isWhole = match != 0 && !LeafOf(name).empty() && ParentOf(name) == N(ovGetDirName(dir));
    if (isNone ? name.empty() : isWhole)
        return {{}, isNone ? 0 : match, name};
    return {{}, match, "no whole name: " + name};
}

std::vector<Answer> Walk(const Find& next, const Find& nextInDir) {
    std::vector<Answer> answers;
    for (Answer answer = StepOf(next); !answer.name.empty(); answer = StepOf(next)) {
        for (; !answer.name.empty() && answers.size() < 1000;
             answer = nextInDir ? StepOf(nextInDir) : Answer())
            answers.push_back(answer);
    }
    answers.push_back(StepOf(next)); // nothing behind the end
    if (answers.back().name.empty())
        answers.pop_back();
    return answers;
}

std::vector<Answer> Dirs(ovSearch* search) {
    std::vector<Answer> answers;
    ovDir dir;
    while (ovFindNextDir(search, &dir))
        answers.push_back({{}, 1, N(ovGetDirName(dir))});
    return answers;
}

/// Files in all ways to walk, by turns.
std::vector<Answer> Files(ovSearch* search, unsigned way) {
    const Find wide = [=](ovDir* dir, ustring& name) { return ovFindNextFile(search, dir, name); };
    const Find narrow = Narrow([=](ovDir* dir, char* name) { return ovFindNextFile(search, dir, name); });
    const Find here = [=](ovDir* dir, ustring& name) { return ovFindNextFileBounded(search, dir, name); };
    const Find narrowHere =
        Narrow([=](ovDir* dir, char* name) { return ovFindNextFileBounded(search, dir, name); });
    return Walk(way % 2 == 0 ? wide : narrow, way % 4 < 2 ? Find() : way % 8 < 6 ? here : narrowHere);
}

std::vector<Answer> FirstFile(const ovPath& path, const Question& question, ovExtensionList extensions,
                              bool isNarrow) {
    const ustring asker = U(question.from.empty() ? "" : question.from + "\\asker.sv");
    const ustring name = U(question.name);
    const Find visible = [&](ovDir* dir, ustring& full) {
        return ovFindFirstFileVisibleToFile(path, asker, name, extensions, dir, full);
    };
    const Find wide = [&](ovDir* dir, ustring& full) {
        return ovFindFirstFileInAll(path, name, extensions, dir, full);
    };
    const Find narrow = Narrow([&](ovDir* dir, char* full) {
        return ovFindFirstFileInAll(path, question.name.c_str(), extensions, dir, full);
    });
    const Answer answer = StepOf(question.scope == Scope::Visible ? visible : isNarrow ? narrow : wide);
    return answer.name.empty() ? std::vector<Answer>{} : std::vector{answer};
}

std::vector<Answer> ClassFile(const ovPath& path, const Question& question, ovExtensionList extensions) {
    const char* const name = question.name.c_str();
    ustring wide = u"untouched";
    char narrow[1024] = "left over";
    const bool found = ovGetClassFile(path, name, wide, extensions);
    const bool agrees = found == ovDoesClassFileExist(path, name, extensions) &&
                        found == ovGetClassFile(path, name, narrow, sizeof narrow, extensions) &&
                        (found ? N(wide) == narrow : wide == u"untouched" && *narrow == 0);
    if (!agrees)
        return {{{}, 1, "different forms, different answers"}};
    return found ? std::vector<Answer>{{{}, 1, narrow}} : std::vector<Answer>{};
}

} // namespace

std::vector<Answer> System::Ask(const Question& question) {
    std::vector<const char*> list;
    for (const std::string& extension : question.extensions)
        list.push_back(extension.c_str());
    list.push_back(nullptr);
    const ovExtensionList extensions = question.extensions.empty() ? nullptr : list.data();
    const unsigned way = ++m_count;
    if (question.form == Form::ClassFile)
        return ClassFile(m_path, question, extensions);
    if (question.form == Form::FirstFile)
        return FirstFile(m_path, question, extensions, way % 2 == 0);
    const Search search(Create(m_path, question, extensions));
    ovSearch* const open = search.Get();
    if (question.form == Form::Dirs)
        return Dirs(open);
    if (question.form == Form::Files)
        return Files(open, way);
    return Walk([=](ovDir* dir, ustring& name) { return ovFindNextUnspecified(open, dir, name); }, {});
}

} // namespace model
