// qxut: the library's services on the command line.
#include "country_commands.h"
#include "date_commands.h"
#include "doc_commands.h"
#include "failure.h"
#include "filter_commands.h"
#include "log_commands.h"
#include "profile_commands.h"
#include "terminal.h"
#include "text.h"
#include "trace_commands.h"
#include "zip_commands.h"

#include <qxut23/profile.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <string>
#include <vector>

namespace
{

constexpr char kExitCodes[] = "Exit codes:\n"
                              "  0  done\n"
                              "  1  the value or list doesn't exist, the value is not of the type, or there is no log\n"
                              "  2  invalid command line\n"
                              "  3  the file cannot be read\n"
                              "  4  the file or the input is malformed, or the pass phrase is wrong\n"
                              "  5  the file is locked by another process, or its contents cannot be read\n"
                              "  6  the file or the settings cannot be written\n";

std::string Version()
{
    return "qxut " + std::to_string(ProfGetVersion(1)) + "." + std::to_string(ProfGetVersion(2)) +
           " (library version " + std::to_string(ProfGetVersion(0)) + ")";
}

// Rejects arguments that are not valid UTF-8: converted, they would refer to a different file or value.
void CheckArguments(const std::vector<std::string>& arguments)
{
    using namespace qxut;

    for (const std::string& argument : arguments)
        if (!IsUtf8(argument))
            throw Failure(kWrongUsage, "the argument '" + Shown(argument) + "' is not UTF-8");
}

} // namespace

int main(int argc, char** argv)
{
    using namespace qxut;

    CLI::App program("The services of the qxUT23 library on the command line. Texts are UTF-8.", "qxut");
    program.allow_windows_style_options(false); // a slash begins a path on both targets
    program.require_subcommand(1);
    program.set_help_all_flag("--help-all", "Print the help of all commands and exit");
    program.set_version_flag("--version", Version());
    program.footer(kExitCodes);
    AddProfileCommands(program);
    AddFilterCommands(program);
    AddDateCommands(program);
    AddDocCommands(program);
    AddLogCommands(program);
    AddTraceCommands(program);
    AddCountryCommands(program);
    AddZipCommands(program);
    program.failure_message([](const CLI::App*, const CLI::Error& error)
        { return "qxut: " + Shown(error.what()) + "\nRun with --help or --help-all for more information.\n"; });

    std::vector<std::string> arguments = StartTerminal(argc, argv);
    try
    {
        CheckArguments(arguments);
        std::reverse(arguments.begin(), arguments.end()); // the parser expects them in reverse order
        program.parse(arguments);
        std::cout.flush();
        if (!std::cout)
            throw Failure(kCannotWrite, "cannot write the output");
        return kDone;
    }
    catch (const Failure& failure)
    {
        for (const std::string& message : failure.Messages())
            std::cerr << "qxut: " << Shown(message) << '\n';
        return failure.Code();
    }
    catch (const CLI::ParseError& error)
    {
        return program.exit(error) == 0 ? kDone : kWrongUsage;
    }
    catch (const std::exception& error)
    {
        std::cerr << "qxut: " << Shown(error.what()) << '\n';
        return kCannotRead;
    }
}
