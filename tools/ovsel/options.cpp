#include "tools/ovsel/options.hpp"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <map>

#include <CLI/CLI.hpp>
#include <boost/tokenizer.hpp>
#include <fmt/format.h>

#include "tools/ovsel/exit_status.hpp"
#include "tools/ovsel/help.hpp"
#include "tools/ovsel/output.hpp"
#include "tools/ovsel/suggest.hpp"

namespace tool {
namespace {

template <class Value>
using Choices = std::map<std::string, Value>;

const Choices<Scope> ScopeChoices = {
    {"all", Scope::All},       {"visible", Scope::Visible}, {"path", Scope::Path},
    {"method", Scope::Method}, {"private", Scope::Private}, {"dir", Scope::Dir},
};
const Choices<Form> FormChoices = {{"native", Form::Native}, {"system", Form::System}};
const Choices<ColorWhen> ColorChoices = {
    {"auto", ColorWhen::Auto}, {"always", ColorWhen::Always}, {"never", ColorWhen::Never}};
const Choices<linux_host::DriveMap::Kind> MountKinds = {{"fixed", linux_host::DriveMap::Kind::Fixed},
                                                        {"remote", linux_host::DriveMap::Kind::Remote},
                                                        {"detect", linux_host::DriveMap::Kind::Detect}};

/// An option that takes one of a few words. CLI11 has checks of its own, but their messages repeat the
/// option's whole table and show a wrong word unquoted.
template <class Value>
CLI::Option* AddChoice(CLI::App& app, const std::string& name, Value& target, const Choices<Value>& choices,
                       const std::string& help) {
    std::string words;
    for (const auto& [word, value] : choices)
        words += (words.empty() ? "" : "|") + word;
    return app
        .add_option_function<std::string>(
            name,
            [&target, &choices, name, words](const std::string& word) {
                const auto found = choices.find(word);
                if (found == choices.end())
                    throw UsageError(fmt::format("{} is one of {}, not {}", name, words, Shown(word)));
                target = found->second;
            },
            help)
        ->type_name(words);
}

Mount ParseMount(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw UsageError(fmt::format("--mount: {} is not ROOT=FOLDER[:fixed|remote|detect]", Shown(text)));
    Mount mount{text.substr(0, equals), text.substr(equals + 1), linux_host::DriveMap::Kind::Detect};
    // A folder with a colon in its name needs a kind behind it, which keeps the rule simple: the last one
    // counts.
    const std::size_t colon = mount.folder.rfind(':');
    if (colon == std::string::npos)
        return mount;
    const auto kind = MountKinds.find(mount.folder.substr(colon + 1));
    if (kind == MountKinds.end())
        throw UsageError(fmt::format("--mount: {} does not end in fixed, remote or detect", Shown(text)));
    mount.kind = kind->second;
    mount.folder.resize(colon);
    return mount;
}

std::optional<std::vector<std::string>> ParseExtensions(const std::string& list) {
    if (list == "*")
        return std::nullopt;
    if (std::any_of(list.begin(), list.end(), [](char c) { return static_cast<unsigned char>(c) > 127; }))
        throw UsageError("--ext: extensions are ASCII");
    // Empty parts stay: the library takes an empty extension for "none".
    std::vector<std::string> extensions;
    for (std::size_t begin = 0;;) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        extensions.push_back(list.substr(begin, end - begin));
        if (end == list.size())
            return extensions;
        begin = end + 1;
    }
}

/// A number and its unit: 50ms, 2.5s, 1min.
std::chrono::milliseconds ParseInterval(const std::string& text) {
    static const std::map<std::string, double> units = {{"ms", 1}, {"s", 1000}, {"min", 60000}};
    constexpr double longest = 24 * 60 * 60000.0;
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const auto unit = units.find(std::string(rest, end));
    // Written so that a NaN fails too.
    const double length = unit != units.end() && error == std::errc() ? number * unit->second : 0;
    if (!(length >= 1 && length <= longest))
        throw UsageError(
            fmt::format("--interval: {} is no time from 1ms to a day, such as 50ms or 2.5s", Shown(text)));
    return std::chrono::milliseconds(static_cast<long>(length));
}

/// Words as a shell would split them, with quotes and backslashes, and nothing else of a shell.
std::vector<std::string> ParseCommand(const std::string& text) {
    using Separator = boost::escaped_list_separator<char>;
    std::vector<std::string> words;
    try {
        const boost::tokenizer<Separator> tokens(text, Separator("\\", " \t", "\"'"));
        std::copy_if(tokens.begin(), tokens.end(), std::back_inserter(words),
                     [](const std::string& word) { return !word.empty(); });
    } catch (const boost::escaped_list_error& error) {
        throw UsageError(fmt::format("--classdef-command: {}", error.what()));
    }
    if (words.empty())
        throw UsageError("--classdef-command: there is no command in it");
    return words;
}

/// CLI11 runs callbacks option by option; only those that fire while the line is read keep the common order.
void AddSource(CLI::App& app, Options& options, const std::string& name, PathSource::Kind kind,
               const std::string& type, const std::string& help) {
    app.add_option_function<std::string>(
           name,
           [&options, kind](const std::string& text) {
               options.sources.push_back({kind, text});
           },
           help)
        ->type_name(type)
        ->trigger_on_parse();
}

void AddPathOptions(CLI::App& app, Options& options) {
    using Kind = PathSource::Kind;
    AddSource(app, options, "-p,--path", Kind::Folder, "DIR", "Add a folder to the path (repeatable)");
    AddSource(app, options, "-r,--recursive", Kind::Recursive, "DIR",
              "Add a folder and its plain sub-folders, links not followed (repeatable)");
    AddSource(
        app, options, "--path-file", Kind::List, "FILE",
        "Add the folders that FILE lists, one per line, '#' begins a comment line; '-' is standard input; "
        "NUL-separated with -0 (repeatable)");
    app.add_option("--cwd", options.cwd, "Take DIR as the current directory")->type_name("DIR");
    app.add_flag("--no-cwd", options.hideCwd, "Hide the current directory");
    app.add_option_function<std::string>(
           "--mount", [&options](const std::string& text) { options.mounts.push_back(ParseMount(text)); },
           "Map a root of the library's grammar, such as X:, to a folder (repeatable)")
        ->type_name("ROOT=FOLDER[:fixed|remote|detect]")
        ->trigger_on_parse();
    app.add_option("--cache", options.cache,
                   "Take what lies under --prefix from FILE, which cache write has written")
        ->type_name("FILE");
    app.add_option("--prefix", options.prefix, "The folder that a cache is about")->type_name("DIR");
}

void AddQuestionOptions(CLI::App& app, Options& options) {
    options.extensions = std::vector<std::string>{".p", ".sv"};
    app.add_option_function<std::string>(
           "--ext", [&options](const std::string& list) { options.extensions = ParseExtensions(list); },
           "Extensions that count, comma-separated (default .p,.sv; '*' is any). Their order decides for "
           "class only")
        ->type_name("LIST");
    app.add_option("--from", options.from, "The file that asks")->type_name("FILE");
    app.add_flag("--ignore-case", options.ignoreCase, "Names compare without regard to case");
}

/// Every command has this one of its own: behind a command CLI11 takes an unknown option with a digit for a
/// number and does not ask the parent.
void AddNulFlag(CLI::App& app, Options& options) {
    app.add_flag("-0", options.nul, "End each name with NUL, exact bytes, nothing else on standard output");
}

void AddOutputOptions(CLI::App& app, Options& options) {
    app.add_flag("--json", options.json, "Answer in JSON, see below");
    AddNulFlag(app, options);
    AddChoice(app, "--color", options.color, ColorChoices, "Colours (default auto; NO_COLOR is heeded)");
    AddChoice(app, "--form", options.form, FormChoices,
              "Names as POSIX paths or in the library's own grammar (default native)");
    app.add_flag("--stats", options.stats, "Times and counts on standard error");
    app.set_version_flag("--version", "ovsel " OVSEL_TOOL_VERSION);
}

void AddWatchOptions(CLI::App& watch, Options& options) {
    watch.add_option("NAME", options.names, "Names, also qualified (default all unqualified ones)")
        ->type_name("");
    watch
        .add_option_function<std::string>(
            "--interval", [&options](const std::string& text) { options.interval = ParseInterval(text); },
            "Time between two looks (default 200ms)")
        ->type_name("TIME");
    watch.add_flag("--once", options.once, "Look once, after one interval, and end");
}

void AddClassOptions(CLI::App& command, Options& options) {
    CLI::Option* pattern =
        command
            .add_option("--classdef-pattern", options.classPattern,
                        "What the text of a class holds (default '^\\s*classdef\\b'; ^ begins any line)")
            ->type_name("REGEX");
    command
        .add_option_function<std::string>(
            "--classdef-command",
            [&options](const std::string& text) { options.classCommand = ParseCommand(text); },
            "Ask a program instead, started without a shell")
        ->type_name("CMD")
        ->excludes(pattern);
}

CLI::App* AddCommand(CLI::App& parent, Options& options, const char* name, Command command,
                     const char* help) {
    CLI::App* sub = parent.add_subcommand(name, help);
    sub->callback([&options, command] { options.command = command; });
    // fallthrough lets the common options stand behind the command as well as before it.
    sub->fallthrough()->footer(help::CommonHint);
    AddNulFlag(*sub, options);
    return sub;
}

void AddCacheCommands(CLI::App& app, Options& options) {
    CLI::App* group = app.add_subcommand("cache", help::Cache);
    group->fallthrough()->footer(help::CommonHint)->require_subcommand(1);
    AddNulFlag(*group, options);
    const auto add = [&](const char* name, Command command, const char* help) {
        CLI::App* sub = AddCommand(*group, options, name, command, help);
        sub->add_option("FILE", options.file, "The cache")->required()->type_name("");
        return sub;
    };
    CLI::App* write = add("write", Command::CacheWrite, help::CacheWrite);
    write->add_flag("--classes", options.classes,
                    "Look into each .sv and .p file, and note whether it defines a class");
    AddClassOptions(*write, options);
    add("show", Command::CacheShow, help::CacheShow);
    AddClassOptions(*add("verify", Command::CacheVerify, help::CacheVerify), options);
}

void AddCommands(CLI::App& app, Options& options) {
    const auto add = [&](const char* name, Command command, const char* help) {
        return AddCommand(app, options, name, command, help);
    };
    CLI::App* which = add("which", Command::Which, help::Which);
    which->add_option("NAME", options.names, "Names, also qualified: gfx/plot, @plot/draw")
        ->required()
        ->type_name("");
    which->add_flag("-a,--all", options.all, "All candidates in order, each with its reason");
    which->add_flag("--dirs", options.dirs, "Look for folders instead of files");
    AddChoice(*which, "--scope", options.scope, ScopeChoices,
              "What is looked through (default visible; private and dir need --from)");

    CLI::App* tree = add("tree", Command::Tree, help::Tree);
    tree->add_option("--depth", options.depth, "Levels below the path's folders (default all)")
        ->type_name("N");
    add("dirs", Command::Dirs, help::Dirs);
    AddWatchOptions(*add("watch", Command::Watch, help::Watch), options);
    CLI::App* classes = add("class", Command::Class, help::Class);
    classes->add_option("NAME", options.names, "Names, dotted for classes in packages: a.b.Name")
        ->required()
        ->type_name("");
    AddClassOptions(*classes, options);
    AddCacheCommands(app, options);
    app.require_subcommand(1);
}

/// The commands' help begins with a line for the list of commands; the examples would make that list
/// unreadable.
class Help : public CLI::Formatter {
  public:
    std::string make_subcommand(const CLI::App* sub) const override {
        const std::string text = sub->get_description();
        std::stringstream out;
        CLI::detail::format_help(out, sub->get_name(), text.substr(0, text.find('\n')), get_column_width());
        return out.str();
    }
};

/// An unknown command is the likeliest slip, and CLI11 would only say that one is missing.
int ReportParseError(const CLI::ParseError& error, const CLI::App& app) {
    const CLI::App* last = &app;
    while (!last->get_subcommands().empty())
        last = last->get_subcommands().front();
    std::vector<std::string> commands;
    for (const CLI::App* sub : last->get_subcommands(nullptr))
        commands.push_back(sub->get_name());
    const std::vector<std::string> rest = app.remaining(true);
    if (!commands.empty() && !rest.empty()) {
        Complain(fmt::format("there is no command {}", Shown(rest.front())));
        Suggest(ClosestNames(rest.front(), commands));
    } else {
        Complain(error.what());
    }
    Complain("ovsel --help shows how it is used");
    return ExitUsage;
}

/// CLI11 takes a positional `[a,b]` for a list and drops the brackets; the name asked for would be another.
void RefuseBrackets(const Options& options, int argc, const char* const* argv) {
    for (const std::string& name : options.names)
        if (std::find(argv, argv + argc, name) == argv + argc)
            throw UsageError(fmt::format("a NAME in brackets, [{}], needs its extension", Shown(name)));
}

void CheckCacheOptions(const Options& options) {
    const bool works = options.command == Command::CacheWrite || options.command == Command::CacheVerify;
    const bool isCacheCommand = works || options.command == Command::CacheShow;
    if (works && !options.prefix)
        throw UsageError("a cache is written and verified with --prefix DIR, the folder that it is about");
    if (isCacheCommand && options.cache)
        throw UsageError("--cache is for other commands: these look at the disk");
    if (!isCacheCommand && options.cache && !options.prefix)
        throw UsageError("--cache needs --prefix DIR, the folder that it was written for");
    if (!isCacheCommand && options.prefix && !options.cache)
        throw UsageError("--prefix needs --cache FILE");
}

/// What is wrong only in combination, or would be answered with something that nobody asked for.
void CheckTogether(const Options& options) {
    if (options.json && options.nul)
        throw UsageError("--json and -0 exclude each other");
    const bool needsAsker = options.scope == Scope::Private || options.scope == Scope::Dir;
    if (needsAsker && !options.from)
        throw UsageError("--scope private and --scope dir need --from FILE");
    CheckCacheOptions(options);
    if (std::find(options.names.begin(), options.names.end(), "") != options.names.end())
        throw UsageError("an empty NAME would stand for every file");
    if (options.command == Command::Class && !options.extensions)
        throw UsageError("class needs a list of extensions, since their order decides");
}

} // namespace

std::optional<int> ParseOptions(int argc, const char* const* argv, Options& options) {
    CLI::App app(help::Introduction, "ovsel");
    app.formatter(std::make_shared<Help>());
    app.footer(help::Conclusion);
    AddCommands(app, options);
    AddPathOptions(app, options);
    AddQuestionOptions(app, options);
    AddOutputOptions(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return app.exit(error);
        return ReportParseError(error, app);
    }
    RefuseBrackets(options, argc, argv);
    CheckTogether(options);
    // Read last: a wrong command line is wrong in any environment.
    if (const char* path = std::getenv("OVSEL_PATH"))
        options.environmentPath = path;
    return std::nullopt;
}

} // namespace tool
