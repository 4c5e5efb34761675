#include "tools/ovsel/class.hpp"

#include <fmt/format.h>

#include "tools/ovsel/class_check.hpp"
#include "tools/ovsel/exit_status.hpp"

namespace tool {
namespace {

/// The options allow a dot in front of an extension, which the library's searches do too and its classes do
/// not.
std::vector<const char*> WithoutDots(const std::vector<std::string>& extensions) {
    std::vector<const char*> list;
    for (const std::string& extension : extensions)
        list.push_back(extension.c_str() + (extension.starts_with('.') ? 1 : 0));
    list.push_back(nullptr);
    return list;
}

void WriteAnswer(Output& output, const std::string& name, const std::optional<std::string>& file) {
    if (!file)
        Complain(fmt::format("{}: no class of that name", Shown(name)));
    else if (output.IsNul())
        output.WriteRecord(*file);
    else
        output.Write(Shown(*file) + "\n");
}

} // namespace

int RunClass(const Options& options, Session& session, Output& output) {
    const ClassCheck check(options);
    const std::vector<const char*> extensions = WithoutDots(*options.extensions);
    bool allFound = true;
    Json answers = Json::array();
    for (const std::string& name : options.names) {
        ustring fullName;
        std::optional<std::string> file;
        if (ovGetClassFile(session.Path(), name.c_str(), fullName, extensions.data()))
            file = output.InForm(fullName);
        if (!check.Failure().empty())
            throw EnvironmentError(check.Failure());
        allFound = allFound && file;
        if (output.IsJson())
            answers.push_back({{"query", JsonName(name)},
                               {"found", file.has_value()},
                               {"path", file ? JsonName(*file) : Json()}});
        else
            WriteAnswer(output, name, file);
    }
    if (output.IsJson())
        output.WriteJson({{"schema", 1}, {"command", "class"}, {"answers", answers}});
    return allFound ? ExitFound : ExitNotFound;
}

} // namespace tool
