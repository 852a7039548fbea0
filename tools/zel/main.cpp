#include "commands.h"

#include "interrupts.h"
#include "messages.h"
#include "valueNames.h"

#include <zel/zelVersion.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <new>

namespace zel::tool {
namespace {

constexpr int kFailed = 1;
constexpr int kMisused = 2;

/// Runs a command; what it throws becomes a message and an exit status.
int runCommand(const Command& command, const std::string& name, int failed) {
    try {
        return command();
    } catch (const Failure& failure) {
        printFailure(failure);
        return failed;
    } catch (const UsageError& error) {
        printMessage("", error.reason);
        printMessage("", "see zel " + name + " --help");
        return kMisused;
    } catch (const std::bad_alloc&) {
        printMessage("", "out of memory");
        return failed;
    }
}

/// What the library reported and no failure took up, such as a format database that cannot be read.
int finish(int status, int failed) {
    const std::string reported = takeReportedErrors();
    if (!reported.empty()) {
        printMessage("", reported);
        status = status == 0 ? failed : status;
    }
    errno = 0;
    if (!std::cout.flush() || std::fflush(stdout) != 0) {
        printMessage("standard output", errno != 0 ? std::strerror(errno) : "write failed");
        return failed;
    }
    return status;
}

/// The arguments in the order in which the parser takes them, last first.
std::vector<std::string> reversedArguments(int argc, char** argv) {
    std::vector<std::string> arguments;
    arguments.reserve(static_cast<size_t>(argc));
    for (int i = argc - 1; i > 0; --i) {
        const std::string word = argv[i];
        // A file name in brackets would be taken for a list.
        const bool bracketed = word.starts_with('[') && word.ends_with(']');
        arguments.push_back(bracketed ? "./" + word : word);
    }
    return arguments;
}

struct CommandEntry {
    const char* name;
    Command (*add)(CLI::App&);
};

constexpr CommandEntry commandTable[] = {
    {"formats", addFormatsCommand}, {"info", addInfoCommand},       {"convert", addConvertCommand},
    {"stats", addStatsCommand},     {"compare", addCompareCommand}, {"tags", addTagsCommand},
    {"checkdb", addCheckdbCommand},
};

/// Adds the command that the first argument names. An option may be answered by any of them, save
/// for the version: the others would only lengthen the start.
std::map<std::string, Command> addCommands(CLI::App& app, const std::string& word) {
    std::map<std::string, Command> commands;
    for (const auto& [name, add] : commandTable) {
        if (word == name || (word.starts_with('-') && word != "--version")) {
            commands[name] = add(app);
        }
    }
    return commands;
}

std::string unknownCommandText(const std::string& word) {
    std::vector<std::string> names;
    for (const CommandEntry& entry : commandTable) {
        names.emplace_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return "there is no command \"" + word + "\"; the commands are " + joinWords(names);
}

int parseError(const CLI::App& app, const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
        app.exit(error, std::cout, std::cerr);
        return finish(0, kFailed);
    }
    printMessage("", error.what());
    const auto chosen = app.get_subcommands();
    const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
    printMessage("", "see zel" + command + " --help");
    return kMisused;
}

} // namespace

int run(int argc, char** argv) {
    CLI::App app("Reads and writes image files of many formats.", "zel");
    app.set_version_flag("--version", std::to_string(ZEL_VERSION_MAJOR) + "." +
                                          std::to_string(ZEL_VERSION_MINOR));
    app.require_subcommand(1);
    app.footer("A full image name is FILE[#FORMAT][:INDEX][%ARGUMENTS]; a doubled #, : or % stands "
               "for itself.");
    const std::string word = argc > 1 ? argv[1] : "-";
    const std::map<std::string, Command> commands = addCommands(app, word);
    if (commands.empty() && !word.starts_with('-')) {
        printMessage("", unknownCommandText(word));
        return kMisused;
    }
    try {
        app.parse(reversedArguments(argc, argv));
    } catch (const CLI::ParseError& error) {
        return parseError(app, error);
    }
    collectReports();
    handleInterrupts();
    const std::string name = app.get_subcommands().front()->get_name();
    // A comparison answers 1 for different images, so that trouble needs another number.
    const int failed = name == "compare" ? kMisused : kFailed;
    return finish(runCommand(commands.at(name), name, failed), failed);
}

} // namespace zel::tool

int main(int argc, char** argv) {
    try {
        return zel::tool::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zel: %s\n", error.what());
        return 1;
    }
}
