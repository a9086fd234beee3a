// `version`: the library's interface version; the store is not read.
#include <cstdio>

#include "Command.h"
#include "Console.h"
#include "Library.h"

namespace tqnralm {
namespace {

class VersionCommand : public Command {
public:
    void Declare(CLI::App& app) override { app_ = app.add_subcommand("version", "Print the interface version"); }

private:
    bool ReadsStore() const override { return false; }
    int Run(const GlobalOptions& global) override {
        Session session;
        if (int exit = session.StartLog(global)) return exit;
        int32_t version = QV_GetVersion();
        Print(stdout, "TQNRALM interface %d.%d\n", static_cast<int>(version >> 16),
              static_cast<int>(version & 0xFFFF));
        return kExitOk;
    }
};

}  // namespace

std::unique_ptr<Command> MakeVersionCommand() { return std::make_unique<VersionCommand>(); }

}  // namespace tqnralm
