// The commands of tqnralm: each declares its own subcommand and options on
// the command line and runs when the command line chose it; main.cpp holds
// only the table of them.
#ifndef TQNRALM_TOOL_COMMAND_H
#define TQNRALM_TOOL_COMMAND_H

#include <CLI/CLI.hpp>

#include <memory>

#include "Options.h"

namespace tqnralm {

class Command {
public:
    virtual ~Command() = default;
    // Adds the subcommand to `app`; its options fill the command's members.
    virtual void Declare(CLI::App& app) = 0;
    // Whether the command line named this command.
    bool Chosen() const { return app_ != nullptr && app_->parsed(); }
    // Runs the command: a copied Windows drive, when one is named, is
    // checked first by every command that reads the store. Returns the
    // program's exit code (Options.h).
    int Execute(const GlobalOptions& global);

protected:
    virtual bool ReadsStore() const { return true; }
    virtual int Run(const GlobalOptions& global) = 0;
    CLI::App* app_ = nullptr;  // the subcommand, owned by the app
};

std::unique_ptr<Command> MakeVersionCommand();
std::unique_ptr<Command> MakeTreeCommand();
std::unique_ptr<Command> MakeCatCommand();
std::unique_ptr<Command> MakeExportCommand();

// The program's description, and its exit codes for the help's footers.
extern const char* const kProgramDescription;
extern const char* const kExitCodesHelp;
// The options that stand before or after any command.
void DeclareGlobalOptions(CLI::App& app, GlobalOptions& global);
// Parses the command line: -1 to go on, else the exit code, after the help
// or the error was printed.
int Parse(CLI::App& app, int argc, char** argv);

}  // namespace tqnralm

#endif
