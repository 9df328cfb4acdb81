#include "CommandLine.h"

#include "CommandSession.h"
#include "Console.h"
#include "DoctorCommand.h"
#include "ExitStatus.h"
#include "LinkCommands.h"
#include "LocalService.h"
#include "ParseCommand.h"
#include "RunningProgram.h"
#include "TaskCommands.h"
#include "WordsCommand.h"

#include <ParvelaKit/BuildInfo.h>
#include <ParvelaKit/DeepLink.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace parvela {

namespace {

constexpr const char* footer =
    "Without a command, the window opens; URLs of the web app and of the \"parvela\" scheme open in it.\n"
    "\n"
    "Exit status: 0 done, 1 refused or failed, 2 wrong use, 3 not linked, 4 service not reachable.";

std::string joined(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
    return line;
}

/// Everything that the command line may say, and what is done about it.
class CommandLine {
public:
    CommandLine() {
        app_.set_version_flag("--version", fmt::format("Parvela {}", BuildInfo::version()), "Show the version and end");
        app_.footer(footer);
        app_.require_subcommand(0, 1);
        app_.add_flag("--local", local_, "Use the Parvela service of this machine, started when it does not run");
        app_.add_flag("--demo", demo_, "With --local: fill an empty workspace with examples");
        app_.add_flag("--background", background_, "Start without a window");
        app_.add_option("URL", urls_, "What the window shall open");
        defineAdd();
        defineParse();
        defineOthers();
    }

    int run(int argc, char** argv) {
        // What follows "--" are words, whatever they look like.
        std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
        const auto separator = std::ranges::find(arguments, "--");
        const std::vector<std::string> rest(separator + (separator == arguments.end() ? 0 : 1), arguments.end());
        arguments.erase(separator, arguments.end());
        std::ranges::reverse(arguments);  // as CLI11 wants them
        try {
            app_.parse(std::move(arguments));
        } catch (const CLI::Success& wish) {
            std::ostringstream help;  // or version
            const int status = app_.exit(wish, help);
            console_.write(help.str());
            return static_cast<int>(console_.finish(static_cast<ExitStatus>(status)));
        } catch (const CLI::ParseError& error) {
            return static_cast<int>(wrongUse(error));
        }
        for (const CLI::App* const command : app_.get_subcommands()) {
            words_ = command->remaining();
            const auto option = std::ranges::find_if(words_, isOption);
            if (option != words_.end()) return static_cast<int>(wrongUse(CLI::ExtrasError({*option})));
        }
        auto& words = app_.get_subcommands().empty() ? urls_ : words_;
        words.insert(words.end(), rest.begin(), rest.end());
        return static_cast<int>(console_.finish(perform()));
    }

private:
    static bool isOption(const std::string& word) { return word.size() > 1 && word.starts_with('-'); }

    ExitStatus wrongUse(const CLI::Error& error) const {
        (void)console_.fail(error.what());
        (void)std::fputs("See “parvela --help”.\n", stderr);
        return ExitStatus::usage;
    }

    /// The words are what is left over: the library would take "[a,b]" among the values of an option for a list.
    static void takeLine(CLI::App* command) {
        command->allow_extras();
        constexpr int onlyInTheHelp = 0;
        command->add_option("LINE...")->description("The line; several words are joined")->expected(onlyInTheHelp);
    }

    void defineAdd() {
        add_ = app_.add_subcommand("add", "Add a task from a line of quick add");
        add_->footer(
            "Example: parvela add Write brief tomorrow 9am !high --board Marketing\nWords that begin with \"-\" go "
            "behind \"--\".");
        takeLine(add_);
        add_->add_option("--board", addWords_.board,
                         "Board by id or name (default: the default board of the settings)");
        add_->add_option("--due", addWords_.due, "Due date: YYYY-MM-DD, or words such as \"next friday\"");
        add_->add_option("--priority", addWords_.priority, "low, medium, high or urgent");
        add_->add_flag("--json", json_, "Show the created task as JSON");
    }

    void defineParse() {
        parse_ = app_.add_subcommand("parse", "Show what quick add makes of a line, without sending it");
        takeLine(parse_);
        parse_->add_option("--today", parseOptions_.today,
                           "The date on which the line is typed, YYYY-MM-DD (default: today)");
        parse_->add_flag("--lines", parseOptions_.manyLines,
                         "Read lines \"DATE<TAB>LINE\" from standard input and write one JSON object for each");
        parse_->add_flag("--json", json_, "Show the result as JSON");
    }

    void defineOthers() {
        quickAdd_ = app_.add_subcommand("quick-add", "Show the quick-add field");
        quickAdd_->footer("For a shortcut that you bind in the desktop's own settings.");
        due_ = app_.add_subcommand("due", "Show the open tasks due today, overdue ones included");
        due_->add_flag("--json", json_, "As JSON");
        boards_ = app_.add_subcommand("boards", "Show the boards; \"*\" marks the default board");
        boards_->add_flag("--json", json_, "As JSON");
        open_ = app_.add_subcommand("open", "Open a task in the window");
        open_->add_option("KEY", key_, "Key of the task, such as TSK-42")->required();
        open_->add_flag("--json", json_, "Show the task as JSON");
        complete_ = app_.add_subcommand("complete", "Mark a task done");
        complete_->add_option("KEY", key_, "Key of the task, such as TSK-42")->required();
        complete_->add_flag("--json", json_, "Show the task as JSON");
        linkToken_ = app_.add_subcommand("link-token", "Save a personal access token, read from standard input");
        linkToken_->add_flag("--json", json_, "Say which server it is for as JSON");
        unlink_ = app_.add_subcommand("unlink", "Revoke and forget the token of this device");
        unlink_->add_flag("--json", json_, "Say whether there was one as JSON");
        doctor_ = app_.add_subcommand("doctor", "Check what Parvela needs on this desktop");
        doctor_->add_flag("--json", json_, "As JSON");
        // For launchers and for the completions of shells, not for people: no group, so no place in the help.
        act_ = app_.add_subcommand("act", "Do what an entry of a launcher is for")->group("");
        act_->add_option("NAME", key_, "add-task, due-today, open-task or complete-task")
            ->required()
            ->check(CLI::IsMember({"add-task", "due-today", "open-task", "complete-task"}));
        completion_ = app_.add_subcommand("words", "What shells complete")->group("");
        completion_->add_option("KIND", key_, "boards or keys")->required();
    }

    ExitStatus perform() {
        if (background_ && !app_.get_subcommands().empty()) {
            return console_.fail("--background goes with no command.", ExitStatus::usage);
        }
        if (demo_ && !local_) return console_.fail("--demo needs --local.", ExitStatus::usage);
        if (*parse_) return parse();
        if (*add_ && words_.empty()) return console_.fail("add needs a line.", ExitStatus::usage);
        if (!*add_ && !words_.empty()) return console_.fail("Too many arguments.", ExitStatus::usage);
        for (const std::string& url : urls_) {
            const auto parsed = Url::parse(url);
            if (!parsed || parsed->scheme().empty()) {
                return console_.fail(fmt::format("“{}” is neither a command nor a URL. See “parvela --help”.", url),
                                     ExitStatus::usage);
            }
        }
        if (local_) {
            const auto status = useLocalService();
            if (status != ExitStatus::success) return status;
        }
        if (*quickAdd_) return quickAdd();
        if (app_.get_subcommands().empty()) return showWindow();

        if (*act_) {
            const auto problem = RunningProgram::act(key_);
            return problem ? console_.fail(*problem) : ExitStatus::success;
        }

        const CommandSession session(console_);
        const OutputForm form = json_ ? OutputForm::json : OutputForm::text;
        if (*add_) {
            addWords_.line = joined(words_);
            return addTask(addWords_, form, session, console_);
        }
        if (*due_) return showDueTasks(form, session, console_);
        if (*boards_) return showBoards(form, session, console_);
        if (*complete_) return completeTask(key_, form, session, console_);
        if (*open_) return openTask(key_, form, session, console_);
        if (*doctor_) return showDiagnostics(form, session, console_);
        if (*completion_) return showWords(key_, session, console_);
        if (*linkToken_) return linkToken(form, session, console_);
        return unlink(form, session, console_);
    }

    ExitStatus parse() {
        if (parseOptions_.manyLines != words_.empty()) {
            return console_.fail("Give either a line or --lines.", ExitStatus::usage);
        }
        parseOptions_.line = joined(words_);
        parseOptions_.json = json_;
        return parseLines(parseOptions_, console_);
    }

    ExitStatus useLocalService() {
        const auto workspace = demo_ ? LocalService::Workspace::demo : LocalService::Workspace::own;
        if (const auto problem = LocalService::ensureRunning(workspace)) return console_.fail(*problem);
        const CommandSession session(console_);
        const Preferences& preferences = session.session.prefs();
        if (preferences.serverMode() != ServerConfig::Mode::local) {
            preferences.setServerMode(ServerConfig::Mode::local);
            RunningProgram::tellSettingsChanged();
        }
        return ExitStatus::success;
    }

    ExitStatus quickAdd() {
        if (RunningProgram::showQuickAdd()) return ExitStatus::success;
        const std::string url = DeepLink{DeepLink::QuickAdd{}}.url().text();
        return console_.fail(RunningProgram::become({"--background", url}));
    }

    ExitStatus showWindow() {
        std::vector<std::string> arguments = urls_;
        if (background_) arguments.emplace_back("--background");
        return console_.fail(RunningProgram::become(arguments));
    }

    CLI::App app_{"The Parvela task board: its window, and its tasks from the command line.", "parvela"};
    CLI::App* quickAdd_ = nullptr;
    CLI::App *add_ = nullptr, *parse_ = nullptr, *due_ = nullptr, *boards_ = nullptr, *open_ = nullptr,
             *complete_ = nullptr, *linkToken_ = nullptr, *unlink_ = nullptr, *doctor_ = nullptr, *act_ = nullptr,
             *completion_ = nullptr;
    Console console_;

    bool local_ = false;
    bool demo_ = false;
    bool background_ = false;
    bool json_ = false;
    std::vector<std::string> urls_, words_;
    std::string key_;
    AddTaskWords addWords_;
    ParseOptions parseOptions_;
};

}  // namespace

int runCommandLine(int argc, char** argv) {
    return CommandLine().run(argc, argv);
}

}  // namespace parvela
