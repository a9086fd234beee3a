// AddressPass.h - the address half of `export`: every book of every user of
// the plan written in each chosen form as <user>/addresses/<book>.<extension>
// (.vcf, .ldif, .csv), each book listed in the manifest with its counts and
// its files' SHA-256.
#ifndef TQNRALM_HOST_ADDRESSPASS_H
#define TQNRALM_HOST_ADDRESSPASS_H

#include <cstdint>
#include <vector>

#include "AddressExport.h"
#include "ExportPlan.h"
#include "Formats.h"
#include "Manifest.h"
#include "Report.h"
#include "Sink.h"

namespace tqnralm {

struct AddressTotals {
    struct Count {
        int64_t written = 0, failed = 0;
    };
    Count books, groups, addresses;
    int64_t cards = 0, files = 0;
    uint64_t bytes = 0;

    bool Complete() const { return books.failed == 0 && groups.failed == 0 && addresses.failed == 0; }
    Json ToJson() const;
};

// Writes the books in the address forms `forms`. False when the sink fails
// (sink.error() tells why); books that cannot be read are counted and the
// pass goes on, told to `report`. `books` receives one entry per book.
bool WriteAddressBooks(ExportPlan& plan, const std::vector<const Format*>& forms, Sink& sink, Json* books,
                       AddressTotals* totals, Report& report);
// The summary line, after the mail's.
void SayAddressSummary(Report& report, bool dryRun, const AddressTotals& totals);

}  // namespace tqnralm

#endif  // TQNRALM_HOST_ADDRESSPASS_H
