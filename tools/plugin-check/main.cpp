// Puts a plug-in through what the library and its clients rely on, and prints what held.

#include "suite.h"
#include "table.h"

#include <zel/zelDatabase.h>
#include <zel/zelVersion.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <unistd.h>

namespace zel::check {

namespace {

constexpr int notHeld = 1;
constexpr int misused = 2;

/// A new directory that goes with the object, as the working directory.
class WorkingDirectory {
public:
    WorkingDirectory() {
        std::string name = std::filesystem::temp_directory_path() / "zel-plugin-check-XXXXXX";
        if (mkdtemp(name.data()) && chdir(name.c_str()) == 0)
            path_ = name;
    }
    ~WorkingDirectory() {
        std::error_code ignored;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

    bool exists() const { return !path_.empty(); }

private:
    std::string path_;
};

void printTable(const std::vector<Row>& rows) {
    tool::Table table({"CHECK", "RESULT", "CASES", "FAILED", "NOTE"});
    for (const Row& row : rows)
        table.addRow({row.name, row.verdict(), std::to_string(row.outcome.cases),
                      std::to_string(row.outcome.failures), row.outcome.note});
    std::cout << table.text();
    for (const Row& row : rows)
        if (!row.outcome.held())
            std::cout << '\n' << row.name << ": " << row.outcome.failure << '\n';
}

void printJson(const Options& options, const std::vector<Row>& rows) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Row& row : rows)
        list.push_back({{"check", row.name},
                        {"result", row.verdict()},
                        {"cases", row.outcome.cases},
                        {"failed", row.outcome.failures},
                        {"note", row.outcome.note},
                        {"firstFailure", row.outcome.failure}});
    std::cout << tool::jsonText({{"format", options.format}, {"checks", list}});
}

int misuse(const std::string& reason) {
    std::cerr << "zel-plugin-check: " << reason << '\n';
    return misused;
}

int check(Options options) {
    watchReports();
    if (!zelDatabase::findByFormatName(options.format.c_str()))
        return misuse("the format database has no format " + options.format);
    for (std::string& name : options.files)
        name = std::filesystem::absolute(name);
    const WorkingDirectory directory;
    Shared* const shared = makeShared();
    if (!directory.exists() || !shared) {
        std::cerr << "zel-plugin-check: no room for files or memory\n";
        return notHeld;
    }
    const std::vector<Row> rows = runChecks(options, *shared);
    if (options.json)
        printJson(options, rows);
    else
        printTable(rows);
    return allHeld(rows) && std::cout.flush() ? 0 : notHeld;
}

int run(int argc, char** argv) {
    CLI::App app("Puts the plug-in of a format through what the library and its clients rely on, "
                 "and prints what held.",
                 "zel-plugin-check");
    app.set_version_flag("--version", std::to_string(ZEL_VERSION_MAJOR) + "." +
                                          std::to_string(ZEL_VERSION_MINOR));
    app.footer("Exit status: 0 if all held, 1 if something did not, 2 for a wrong call.");
    Options options;
    app.add_option("NAME", options.format, "the format's name in the database")->required();
    app.add_option("FILES", options.files, "files of the format, to be read and damaged")
        ->check(CLI::ExistingFile);
    app.add_option("--arguments", options.arguments,
                   "format arguments for the files that are made, as in NAME%ARGUMENTS");
    app.add_flag("--lossy", options.lossy, "pixels may come back changed a little");
    app.add_flag("--open-ended", options.openEnded, "a file does not show where it ends");
    app.add_option("--suffix", options.suffix, "make files of this suffix alone, such as .pgm");
    app.add_option("--check", options.only, "run this check alone; may be repeated")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(checkNames()));
    app.add_option("--seconds", options.seconds, "how long a cut or damaged file may take")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    app.add_flag("--quick", options.quick, "fewer combinations, sizes and damages");
    app.add_option("--seed", options.seed, "start of the random numbers")->capture_default_str();
    app.add_flag("--json", options.json, "print JSON");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : misused;
    }
    return check(std::move(options));
}

} // namespace

} // namespace zel::check

int main(int argc, char** argv) {
    try {
        return zel::check::run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zel-plugin-check: %s\n", error.what());
        return 1;
    }
}
