#ifndef ZEL_TOOL_COMMANDS_H
#define ZEL_TOOL_COMMANDS_H

#include <CLI/CLI.hpp>

#include <functional>

namespace zel::tool {

/// Runs a subcommand and returns the exit status.
using Command = std::function<int()>;

// Each adds its subcommand to the command line and returns what runs it. They throw Failure and
// UsageError.
Command addFormatsCommand(CLI::App& app);
Command addInfoCommand(CLI::App& app);
Command addConvertCommand(CLI::App& app);
Command addStatsCommand(CLI::App& app);
Command addCompareCommand(CLI::App& app);
Command addTagsCommand(CLI::App& app);
Command addCheckdbCommand(CLI::App& app);

} // namespace zel::tool

#endif
