// The forms an export writes, mail and address books, each listed once in
// one table: --help, the options, the plan and the manifest all read it. A
// new form is a writer (MailWriter.h or AddressWriter.h) and one row here.
#ifndef TQNRALM_TOOL_FORMATS_H
#define TQNRALM_TOOL_FORMATS_H

#include <memory>
#include <string>
#include <vector>

namespace tqnralm {

class MailWriter;     // MailWriter.h
class AddressWriter;  // AddressWriter.h

enum class FormatKind { kMail, kAddress };

struct Format {
    const char* name;         // on the command line and in the manifest
    FormatKind kind;
    const char* description;  // in --help: "Maildir++", "vCard 4.0"
    const char* extension;    // of the files it writes; "" where they have none
    // The factory, by kind: one of the two is set.
    std::unique_ptr<MailWriter> (*mail)(const Format& format);
    std::unique_ptr<AddressWriter> (*address)(const Format& format);
};

// The forms of one kind in the table's order; the first mail form is the default.
std::vector<const Format*> FormatsOf(FormatKind kind);
const Format& DefaultMailFormat();
// The form of that kind and name; null when there is none.
const Format* FindFormat(FormatKind kind, const std::string& name);
// A comma-separated list of names of that kind ("vcard,ldif"), each once;
// the forms in the table's order. False for an unknown or repeated name.
bool ParseFormatList(FormatKind kind, const std::string& list, std::vector<const Format*>* out);

// The names, or the descriptions, of the forms of a kind in the table's order.
std::vector<std::string> FormatNames(FormatKind kind);
std::vector<std::string> FormatDescriptions(FormatKind kind);
// "a, b or c": the items joined by ", ", the last two by `last`.
std::string JoinList(const std::vector<std::string>& items, const char* last);

std::unique_ptr<MailWriter> MakeMailWriter(const Format& format);
std::unique_ptr<AddressWriter> MakeAddressWriter(const Format& format);

}  // namespace tqnralm

#endif
