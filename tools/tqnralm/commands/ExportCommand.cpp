// `export OUTDIR`: the export's options from the command line, then the
// export itself (Export.h). The forms come from the table of Formats.h.
#include "Command.h"
#include "Console.h"
#include "Export.h"
#include "Formats.h"

namespace tqnralm {
namespace {

// "all three" forms, for the help.
std::string AllOf(size_t count) {
    const char* const kWords[] = {"none", "the one", "both", "all three", "all four", "all five", "all six"};
    return count < sizeof kWords / sizeof kWords[0] ? kWords[count] : "all";
}

class ExportCommand : public Command {
public:
    void Declare(CLI::App& app) override;

private:
    int Run(const GlobalOptions& global) override;

    ExportOptions options_;
    std::string format_ = options_.format->name;
    std::vector<std::string> mailForms_ = FormatNames(FormatKind::kMail);
    std::vector<std::string> addressNames_ = FormatNames(FormatKind::kAddress);
    std::string addressForms_ = JoinList(addressNames_, ",");
    bool noMail_ = false, noAddresses_ = false;
};

void ExportCommand::Declare(CLI::App& app) {
    app_ = app.add_subcommand("export", "Write every message out as " +
                                            JoinList(FormatDescriptions(FormatKind::kMail), " or ") +
                                            " files, and every address book as " +
                                            JoinList(FormatDescriptions(FormatKind::kAddress), " and ") +
                                            ", with OUTDIR/manifest.json listing each file and its SHA-256");
    app_->footer(kExitCodesHelp);
    app_->add_option("OUTDIR", options_.outDir, "The folder to write into; created when missing")->required();
    app_->add_option("--format", format_, JoinList(mailForms_, " or ").insert(mailForms_[0].size(), " (default)"))
        ->check(CLI::IsMember(mailForms_));
    app_->add_option("--user", options_.users, "Export only the user at INDEX (repeatable)")
        ->type_name("INDEX")
        ->check(CLI::NonNegativeNumber);
    app_->add_flag("--dry-run", options_.dryRun,
                   "Print each folder's target and message count and the totals; write nothing");
    app_->add_flag("--force", options_.force, "Add to an OUTDIR that holds other files (nothing is ever overwritten)");
    app_->add_flag("--quiet", options_.quiet, "No status line, only the summary");
    app_->add_flag("--raw", options_.raw,
                   "Write each message exactly as the mail client holds it (raw 8-bit header fields "
                   "are not made readable)");
    app_->add_option("--addresses", addressForms_,
                     "The forms of the address books, comma-separated: " + JoinList(addressNames_, ", ") +
                         " (default " + AllOf(addressNames_.size()) + ")")
        ->type_name("FORMS")
        ->check([this](const std::string& value) {
            std::vector<const Format*> forms;
            return ParseFormatList(FormatKind::kAddress, value, &forms)
                       ? std::string()
                       : "FORMS is a list of " + JoinList(addressNames_, " and ");
        });
    CLI::Option* noMail = app_->add_flag("--no-mail", noMail_, "Leave the messages out");
    app_->add_flag("--no-addresses", noAddresses_, "Leave the address books out")->excludes(noMail);
}

int ExportCommand::Run(const GlobalOptions& global) {
    options_.format = FindFormat(FormatKind::kMail, format_);
    options_.mail = !noMail_;
    options_.addresses = !noAddresses_;
    ParseFormatList(FormatKind::kAddress, addressForms_, &options_.addressForms);
    options_.report = &ConsoleReport();
    return Export(global, options_).exit;
}

}  // namespace

std::unique_ptr<Command> MakeExportCommand() { return std::make_unique<ExportCommand>(); }

}  // namespace tqnralm
