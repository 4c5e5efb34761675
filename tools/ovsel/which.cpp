#include "tools/ovsel/which.hpp"

#include <algorithm>

#include <fmt/format.h>

#include <host_interfaces/text.hpp>

#include "tools/ovsel/contents.hpp"
#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/reasons.hpp"
#include "tools/ovsel/search.hpp"
#include "tools/ovsel/suggest.hpp"

namespace tool {
namespace {

/// One result, in the form in which it is shown.
struct Candidate {
    std::string path;
    std::string folder;
    int match;
    Reason reason;
};

struct Answer {
    std::string query;
    std::vector<Candidate> candidates;
    std::vector<std::string> suggestions; ///< only when there is no candidate
    std::size_t outOfSight = 0;           ///< the same; files of the name that another scope would show
};

ustring ToUnits(const std::string& text) { return fl::i18n::to_ustring(text.c_str()); }
std::string ToBytes(const ustring& text) { return fl::i18n::codecvt_ustring_to_narrow_string{}(text); }

bool IsQualified(const std::string& name) { return name.find_first_of("/\\") != std::string::npos; }

/// The library's search for a scope. Extensions are given apart, since folders are looked for without any.
Search Find(const Session& session, Scope scope, const ustring& name, ovExtensionList extensions) {
    const ovPath& path = session.Path();
    switch (scope) {
    case Scope::All:
        return Search(ovCreateAllSearchIterator(path, name, extensions, ovCaseOfPath));
    case Scope::Path:
        return Search(ovCreatePathOnlySearchIterator(path, name, extensions, ovCaseOfPath));
    case Scope::Method:
        return Search(ovCreateMethodSearchIterator(path, name, extensions, ovCaseOfPath));
    case Scope::Private:
        return Search(ovCreatePrivateSearchIterator(session.AskerFolder(), name, extensions, ovCaseOfPath));
    case Scope::Dir:
        return Search(ovCreateDirSearchIterator(session.AskerFolder(), name, extensions, ovCaseOfPath));
    case Scope::Visible:
        break;
    }
    return Search(ovCreateDirnameVisibleSearchIterator(path, session.AskerFolderName(), name, extensions,
                                                       ovCaseOfPath));
}

/// A file's name in the manner of @p like: with an extension only if that has one too.
std::string Leaf(const ustring& fullName, const std::string& like) {
    return LeafOf(fullName, like.find('.', like.find_last_of("/\\") + 1) != std::string::npos);
}

/// How a package or class folder stands in a qualified name: `gfx/@pen/`.
std::string Qualifier(const ovDir& dir) {
    std::string qualifier;
    for (ovDir at = dir; !ovIsSameDir(at, ovGetPathDir(at)); at = ovGetParentDir(at)) {
        const char* sentinel = ovGetDirType(at) == ovDirTypeClass ? "@" : "";
        qualifier = fmt::format("{}{}/{}", sentinel, ToBytes(ovGetBaseDirName(at)), qualifier);
    }
    return qualifier;
}

/// A search for every item passes over packages, which only a qualified name can reach; so their folders are
/// walked here.
std::vector<std::string> QualifiedNames(const Session& session, const std::string& like) {
    std::vector<std::string> known;
    for (const ovDir& folder : session.Folders()) {
        for (const ovDir& dir : FoldersBelow(folder)) {
            const std::string qualifier = Qualifier(dir);
            if (qualifier.empty())
                continue;
            for (const ustring& file : FilesIn(dir, session.Extensions()))
                known.push_back(qualifier + Leaf(file, like));
        }
    }
    return known;
}

/// Names that would have been found, had they been asked for.
std::vector<std::string> SuggestionsFor(const Session& session, const Options& options, std::string name) {
    if (IsQualified(name)) {
        std::replace(name.begin(), name.end(), '\\', '/');
        return ClosestNames(name, QualifiedNames(session, name));
    }
    std::vector<std::string> known;
    for (Search search = Find(session, options.scope, ustring(), session.Extensions());
         auto file = search.NextFile();)
        known.push_back(Leaf(file->name, name));
    return ClosestNames(name, known);
}

/// A name that exists but cannot be seen is the commonest riddle: say that it is there.
std::size_t CountAnywhere(const Session& session, const std::string& name) {
    std::size_t count = 0;
    for (Search search = Find(session, Scope::All, ToUnits(name), session.Extensions()); search.NextFile();)
        ++count;
    return count;
}

Answer Ask(const Session& session, const Options& options, const Output& output, const std::string& name) {
    Answer answer;
    answer.query = name;
    // A qualified name is looked up everywhere, whatever the scope, and then finds more of a class than that.
    const bool constructorsOnly = options.scope == Scope::Visible && !options.dirs && !IsQualified(name);
    const auto take = [&](const ovDir& dir, const ustring& found, int match) {
        answer.candidates.push_back({output.InForm(found), output.InForm(ovGetDirName(dir)), match,
                                     Explain(session, dir, constructorsOnly)});
        // The second one tells what the current directory hides.
        return options.all || answer.candidates.size() < 2;
    };
    if (options.dirs) {
        // Folders have no extension to judge them by.
        for (Search search = Find(session, options.scope, ToUnits(name), nullptr);
             auto dir = search.NextDir();)
            if (!take(*dir, ovGetDirName(*dir), -1))
                break;
        return answer;
    }
    for (Search search = Find(session, options.scope, ToUnits(name), session.Extensions());
         auto file = search.NextFile();)
        if (!take(file->folder, file->name, file->match))
            break;
    // Looking for the near misses costs a walk over the path, which only a miss has to pay.
    if (answer.candidates.empty()) {
        answer.suggestions = SuggestionsFor(session, options, name);
        answer.outOfSight = CountAnywhere(session, name);
    }
    return answer;
}

Json ToJson(const Candidate& candidate) {
    Json json{{"path", JsonName(candidate.path)},  {"folder", JsonName(candidate.folder)},
              {"reason", candidate.reason.Code()}, {"position", candidate.reason.position},
              {"detail", candidate.reason.text},   {"extension_place", nullptr}};
    if (candidate.match > 0)
        json["extension_place"] = candidate.match;
    return json;
}

Json ToJson(const Answer& answer, bool all) {
    const bool found = !answer.candidates.empty();
    Json json{{"query", JsonName(answer.query)}, {"found", found}, {"won_by", nullptr}, {"winner", nullptr}};
    if (found) {
        json["won_by"] = answer.candidates.front().reason.Code();
        json["winner"] = ToJson(answer.candidates.front());
    }
    if (all) {
        json["candidates"] = Json::array();
        for (const Candidate& candidate : answer.candidates)
            json["candidates"].push_back(ToJson(candidate));
    }
    if (!found) {
        json["suggestions"] = Json::array();
        for (const std::string& suggestion : answer.suggestions)
            json["suggestions"].push_back(JsonName(suggestion));
    }
    return json;
}

/// Reasons are ASCII and stand before the paths: they can be aligned by counting bytes, paths cannot.
void WriteWithReasons(Output& output, const Answer& answer, bool underHeading) {
    if (underHeading)
        output.Write(output.Paint(Style::Heading, Shown(answer.query)) + "\n");
    std::size_t width = 0;
    for (const Candidate& candidate : answer.candidates)
        width = std::max(width, candidate.reason.text.size());
    std::size_t rank = 0;
    for (const Candidate& candidate : answer.candidates) {
        const std::string reason = fmt::format("{:<{}}", candidate.reason.text, width);
        output.Write(fmt::format("{}{:>2}  {}  {}\n", underHeading ? "  " : "", ++rank,
                                 output.Paint(Style::Faint, reason), Shown(candidate.path)));
    }
}

/// A shared folder that happens to be the current one decides over every program in it: say so.
void NoteCurrentDirectory(const Answer& answer) {
    const Reason& reason = answer.candidates.front().reason;
    if (!reason.IsFromCurrentDirectory() || reason.rank == Rank::OwnPrivate)
        return;
    std::string hidden;
    if (answer.candidates.size() > 1)
        hidden = fmt::format(", before {} ({})", Shown(answer.candidates[1].path),
                             answer.candidates[1].reason.text);
    Complain(fmt::format("note: {} comes from the current directory{}", Shown(answer.query), hidden));
}

void ReportMiss(const Answer& answer) {
    Complain(fmt::format("{}: not found", Shown(answer.query)));
    if (answer.outOfSight > 0)
        Complain(fmt::format("{} of that name out of sight from here; --scope all shows {}",
                             answer.outOfSight == 1 ? "1 file" : fmt::format("{} files", answer.outOfSight),
                             answer.outOfSight == 1 ? "it" : "them"));
    Suggest(answer.suggestions);
}

void WriteAnswer(Output& output, const Options& options, const Answer& answer) {
    if (answer.candidates.empty())
        return ReportMiss(answer);
    if (output.IsNul()) {
        const std::size_t count = options.all ? answer.candidates.size() : 1;
        for (std::size_t i = 0; i < count; ++i)
            output.WriteRecord(answer.candidates[i].path);
    } else if (options.all) {
        WriteWithReasons(output, answer, options.names.size() > 1);
    } else {
        output.Write(Shown(answer.candidates.front().path) + "\n");
        // Where one folder was asked for by name, nothing was decided by where the caller stands.
        const bool staysInFolder = options.scope == Scope::Private || options.scope == Scope::Dir;
        if (!staysInFolder)
            NoteCurrentDirectory(answer);
    }
}

} // namespace

int RunWhich(const Options& options, Session& session, Output& output) {
    // All names are answered even if the first is missing: the status is one, the lines are many.
    bool allFound = true;
    Json answers = Json::array();
    for (const std::string& name : options.names) {
        const Answer answer = Ask(session, options, output, name);
        allFound = allFound && !answer.candidates.empty();
        if (output.IsJson())
            answers.push_back(ToJson(answer, options.all));
        else
            WriteAnswer(output, options, answer);
    }
    if (output.IsJson())
        output.WriteJson({{"schema", 1}, {"command", "which"}, {"answers", answers}});
    return allFound ? ExitFound : ExitNotFound;
}

} // namespace tool
