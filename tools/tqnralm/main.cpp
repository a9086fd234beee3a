// tqnralm - the command-line host of the library: prints the tree of an
// installed mail client or one message's raw text, or exports it all for
// another mail program, through the public header alone as any host would.
// This file holds the table of commands; each declares its own options.
#include <filesystem>
#include <new>
#include <system_error>

#include "Command.h"
#include "Console.h"
#include "platform/HostOs.h"

namespace {

using namespace tqnralm;

// The table of commands; the first that the command line names runs.
int Run(int argc, char** argv) {
    const std::unique_ptr<Command> commands[] = {MakeVersionCommand(), MakeTreeCommand(), MakeCatCommand(),
                                                 MakeExportCommand()};
    CLI::App app(kProgramDescription, "tqnralm");
    app.footer(kExitCodesHelp);
    app.require_subcommand(1);
    app.fallthrough();  // options of the program stand before or after the command
    GlobalOptions global;
    DeclareGlobalOptions(app, global);
    for (const auto& command : commands) command->Declare(app);
    if (const int exit = Parse(app, argc, argv); exit >= 0) return exit;
    for (const auto& command : commands)
        if (command->Chosen()) return command->Execute(global);
    return kExitUsage;
}

}  // namespace

// Arguments in UTF-8 (on Windows from the UTF-16 command line); a failure that
// escapes a command ends in one line and an exit code, never in std::terminate.
int main(int argc, char** argv) {
    os::UseBinaryStreams();
    try {
        std::vector<std::string> args = os::ProgramArguments(argc, argv);
        std::vector<char*> pointers;
        for (std::string& arg : args) pointers.push_back(&arg[0]);
        pointers.push_back(nullptr);
        return Run(static_cast<int>(args.size()), pointers.data());
    } catch (const std::filesystem::filesystem_error& e) {
        Print(stderr, "tqnralm: '%s': %s\n", os::DisplayPath(e.path1().u8string()).c_str(), e.code().message().c_str());
        return kExitOutput;
    } catch (const std::system_error& e) {
        Print(stderr, "tqnralm: %s\n", e.what());
        return kExitOutput;
    } catch (const std::bad_alloc&) {
        Print(stderr, "tqnralm: out of memory\n");
        return kExitIncomplete;
    } catch (const std::exception& e) {
        Print(stderr, "tqnralm: %s\n", e.what());
        return kExitIncomplete;
    }
}
