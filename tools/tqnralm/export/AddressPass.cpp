// AddressPass.cpp - the address books of the plan's users into the sink.
#include "AddressPass.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "Report.h"
#include "FileNames.h"
#include "Sha256.h"

namespace tqnralm {
namespace {

Json CountJson(int64_t written, int64_t failed) {
    return {{"expected", written + failed}, {"written", written}, {"failed", failed}};
}

}  // namespace

Json AddressTotals::ToJson() const {
    return {{"books", CountJson(books.written, books.failed)},
            {"groups", CountJson(groups.written, groups.failed)},
            {"addresses", CountJson(addresses.written, addresses.failed)},
            {"cards", cards},
            {"files", files},
            {"bytes", bytes}};
}

namespace {

// Writes the files of one book beside `stem`; false when the output fails.
bool WriteBookFiles(const AddressBookOutput& book, const std::string& stem, Sink& sink, Json* files,
                    AddressTotals* totals) {
    for (const AddressFile& file : book.files) {
        const std::string path = stem + "." + file.extension;
        if (!sink.WriteWholeFile(path, file.bytes)) return false;
        Sha256 sha;
        sha.Update(file.bytes.data(), file.bytes.size());
        files->push_back({{"form", file.form},
                          {"path", path},
                          {"bytes", file.bytes.size()},
                          {"sha256", sha.HexDigest()}});
        ++totals->files;
        totals->bytes += file.bytes.size();
    }
    return true;
}

// How a user's books are named beside each other. Every address form
// counts, chosen or not, so that a book's files have the same names
// whichever forms an export writes: a name is cut so that the longest
// extension still fits in a component, and a book "x", which writes
// x.groups.vcf too, keeps the name "x.groups" from another book.
struct BookNames {
    size_t longest = 0;  // bytes of the longest ".extension"
    std::vector<std::string> companions;
};

BookNames BookNamesOfAllForms() {
    BookNames names;
    for (const Format* form : FormatsOf(FormatKind::kAddress)) {
        for (const std::string& extension : MakeAddressWriter(*form)->Extensions()) {
            names.longest = std::max(names.longest, 1 + extension.size());
            const size_t last = extension.rfind('.');
            if (last != std::string::npos) names.companions.push_back("." + extension.substr(0, last));
        }
    }
    return names;
}

}  // namespace

bool WriteAddressBooks(ExportPlan& plan, const std::vector<const Format*>& forms, Sink& sink, Json* books,
                       AddressTotals* totals, Report& report) {
    AddressWriters writers;
    for (const Format* form : forms) writers.push_back(MakeAddressWriter(*form));
    // The books written so far by their content: a user's settings may name
    // one file twice (the default book listed again, in another spelling),
    // and two users may share a folder. The interface does not say which file
    // a book was read from, but a file read twice gives equal books.
    std::map<std::string, std::string> written;
    const BookNames bookNames = BookNamesOfAllForms();
    for (UserPlan& user : plan.users) {
        UserAddressOutput out = ExportUserAddresses(user.user.get(), user.name, writers);
        totals->books.failed += out.failedBooks;
        if (out.failedBooks > 0) {
            report.Say(Channel::kMessage, "tqnralm: cannot read %d address book(s) of user %s\n", out.failedBooks,
                       user.index.c_str());
        }
        if (out.books.empty()) continue;
        const std::string dir = user.dir + "/addresses";
        if (!sink.MakeDir(user.dir) || !sink.MakeDir(dir)) return false;
        SiblingNames names(NameRules{NameStyle::kPlain, bookNames.companions, nullptr});
        for (const AddressBookOutput& book : out.books) {
            ++totals->books.written;
            auto same = book.digest.empty() ? written.end() : written.find(book.digest);
            if (same != written.end()) {
                books->push_back({{"user", user.index},
                                  {"name", book.name},
                                  {"path", same->second},
                                  {"same_as", same->second},
                                  {"files", Json::array()}});
                continue;
            }
            const std::string stem =
                dir + "/" + names.Claim(CutUtf8(book.name, kMaxComponentBytes - bookNames.longest));
            if (!book.digest.empty()) written.emplace(book.digest, stem);
            Json files = Json::array();
            if (!WriteBookFiles(book, stem, sink, &files, totals)) return false;
            // A book whose groups or addresses failed in part is written
            // with what could be read, and counted as written.
            totals->groups.written += book.groups;
            totals->groups.failed += book.failedGroups;
            totals->addresses.written += book.addresses;
            totals->addresses.failed += book.failedAddresses;
            totals->cards += book.cards;
            books->push_back({{"user", user.index},
                              {"name", book.name},
                              {"path", stem},
                              {"groups", CountJson(book.groups, book.failedGroups)},
                              {"addresses", CountJson(book.addresses, book.failedAddresses)},
                              {"cards", book.cards},
                              {"files", std::move(files)}});
        }
    }
    return true;
}

void SayAddressSummary(Report& report, bool dryRun, const AddressTotals& t) {
    report.Say(Channel::kMessage,
               "tqnralm: %s: %lld address books (%lld groups, %lld addresses as %lld cards) %s, %lld books, "
               "%lld groups and %lld addresses failed, %lld files, %llu bytes\n",
               dryRun ? "dry run" : "export", static_cast<long long>(t.books.written),
               static_cast<long long>(t.groups.written), static_cast<long long>(t.addresses.written),
               static_cast<long long>(t.cards), dryRun ? "to write" : "written", static_cast<long long>(t.books.failed),
               static_cast<long long>(t.groups.failed), static_cast<long long>(t.addresses.failed),
               static_cast<long long>(t.files), static_cast<unsigned long long>(t.bytes));
}

}  // namespace tqnralm
