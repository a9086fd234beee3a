// SampleStore.h - a small but complete installation of the mail client: users
// named by Japanese shortcuts and a DEFAULT_USER, accounts with and without
// titles, every folder form, ISO-2022-JP, UTF-8 and raw Shift-JIS subjects,
// nested address groups and a listed address file; and the files it is made of.
#ifndef QV_TESTS_SUPPORT_SAMPLESTORE_H
#define QV_TESTS_SUPPORT_SAMPLESTORE_H

#include <string>
#include <vector>

#include "support/WinePrefix.h"

namespace qvt {

// Writes the client's files by Windows paths in UTF-8; texts as the client
// stores them (Shift-JIS, CR LF).
class StoreWriter {
public:
    explicit StoreWriter(WinePrefix& prefix) : m_prefix(prefix) {}

    void Install(const std::string& installPath);
    void RegistryMailbox(const std::string& dir);
    void Uninst(const std::string& path, const std::vector<std::string>& lines) { Text(path, lines); }
    void Shortcut(const std::string& path, const std::string& arguments, bool unicode = true);
    void Mailbox(const std::string& dir, const std::string& addressFiles = "");
    void Account(const std::string& dir, const std::string& title);
    void FolderIni(const std::string& dir, const std::string& title, bool subfolders);
    // "Entry.lst" naming the messages, and one ".alm" file per message.
    void Messages(const std::string& dir, const std::vector<std::string>& messages, int firstNumber = 1);
    void Text(const std::string& path, const std::vector<std::string>& lines);
    void Raw(const std::string& path, const std::string& bytes) { m_prefix.WriteFile(path, bytes); }

private:
    WinePrefix& m_prefix;
};

// A message in the client's form: header lines, a blank line, the body.
std::string MakeMessage(const std::string& subjectField, const std::string& messageId, const std::string& body);

// Builds the sample installation.
void BuildSampleStore(WinePrefix& prefix);

// The variants: "default" is the sample installation; the others put the
// client on other machines or damage its files. Building an unknown one is false.
std::vector<std::string> SampleStoreVariants();
bool BuildSampleStore(WinePrefix& prefix, const std::string& variant);

// The machine of a prefix as a copied Windows system drive in hostDir:
// drive C:'s files, HKLM\Software in the hive Windows\System32\config\SOFTWARE
// and HKCU in the NTUSER.DAT of the profile `user`, under "Users" (layout
// "vista") or "Documents and Settings" ("xp"), beside a default profile
// without the client's keys. Throws on failure; false where the machine is
// no prefix (on Windows) or the layout is unknown.
bool WriteCopiedDrive(const WinePrefix& prefix, const std::string& hostDir, const std::string& layout,
                      const std::string& user);

}  // namespace qvt

#endif  // QV_TESTS_SUPPORT_SAMPLESTORE_H
