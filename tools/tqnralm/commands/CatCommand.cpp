// `cat PATH`: the raw text of one message, its bytes as the library gives
// them, named by its index path as `tree` prints it.
#include <cstdio>
#include <string>

#include "Command.h"
#include "Console.h"
#include "Library.h"

namespace tqnralm {
namespace {

// user/account/folder[/subfolder...]/message
int32_t MessagePathClass(size_t depth, size_t length) {
    return depth == 0 ? QV_CLASS_USER
           : depth == 1 ? QV_CLASS_ACCOUNT
           : depth + 1 == length ? QV_CLASS_MAILMESSAGE
                                 : QV_CLASS_MAILFOLDER;
}

class CatCommand : public Command {
public:
    void Declare(CLI::App& app) override {
        app_ = app.add_subcommand("cat", "Print the raw text of one message");
        app_->add_option("PATH", path_,
                         "A list of indexes user/account/folder[/subfolder...]/message, as 'tree' shows them")
            ->required();
    }

private:
    int Run(const GlobalOptions& global) override {
        IndexPath path;
        if (!IndexPath::Parse(path_, &path)) {
            Print(stderr, "tqnralm: bad message path '%s'\n", path_.c_str());
            return kExitUsage;
        }
        if (path.depth() < 4) {
            Print(stderr, "tqnralm: a message path has at least user/account/folder/message\n");
            return kExitUsage;
        }
        Session session;
        if (int exit = session.StartLog(global)) return exit;
        if (int exit = session.Open()) return exit;
        PathRefs message;
        int32_t code = OpenPath(session.root(), path, MessagePathClass, &message);
        if (code != QV_S_OK) {
            Print(stderr, "tqnralm: no message at '%s' (code %d)\n", path_.c_str(), static_cast<int>(code));
            return kExitIncomplete;
        }
        QV_MAIL_DATA data;
        code = QV_MailMessage_GetData(message.get(), &data);
        if (code != QV_S_OK) {
            Print(stderr, "tqnralm: the message cannot be read (code %d)\n", static_cast<int>(code));
            return kExitIncomplete;
        }
        std::fwrite(data.pszMailText, 1, data.nMailTextLen, stdout);
        data.pfnFree(data.pszMailText);
        return kExitOk;
    }

    std::string path_;
};

}  // namespace

std::unique_ptr<Command> MakeCatCommand() { return std::make_unique<CatCommand>(); }

}  // namespace tqnralm
