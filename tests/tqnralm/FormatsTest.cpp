// The table of forms and the sinks: the --addresses list parses as the help
// says, an address form declares each extension it writes (book names are
// cut by them), and a dry run counts exactly what the folder export writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "AddressWriter.h"
#include "DryRunSink.h"
#include "Formats.h"
#include "MailWriter.h"
#include "DirectorySink.h"
#include "support/WinePrefix.h"

namespace tqnralm {
namespace {

namespace fs = std::filesystem;

std::string Names(const std::vector<const Format*>& formats) {
    std::string out;
    for (const Format* f : formats) out += (out.empty() ? "" : " ") + std::string(f->name);
    return out;
}

TEST(Formats, AddressListInTableOrder) {
    const struct { const char* list; const char* forms; } rows[] = {  // forms nullptr: refused
        {"vcard,ldif,csv", "vcard ldif csv"}, {"csv,vcard", "vcard csv"}, {"ldif", "ldif"}, {"vcard,vcard", nullptr},
        {"", nullptr}, {"vcard,", nullptr}, {",csv", nullptr}, {"VCARD", nullptr}, {"mbox", nullptr},
        {"vcard ,csv", nullptr},
    };
    for (const auto& r : rows) {
        std::vector<const Format*> forms = FormatsOf(FormatKind::kAddress);
        const bool ok = ParseFormatList(FormatKind::kAddress, r.list, &forms);
        EXPECT_EQ(r.forms != nullptr, ok) << r.list;
        EXPECT_EQ(ok ? r.forms : "", ok ? Names(forms) : "") << r.list;
    }
}

TEST(Formats, JoinList) {
    const struct { std::vector<std::string> items; const char* joined; } rows[] = {
        {{}, ""}, {{"a"}, "a"}, {{"a", "b"}, "a or b"}, {{"a", "b", "c"}, "a, b or c"}};
    for (const auto& r : rows) EXPECT_EQ(r.joined, JoinList(r.items, " or "));
}

// (The files' names and forms are read back by check_addresses.py.)
TEST(Formats, AddressFormsDeclareTheirExtensions) {
    AddressBook book;
    Address a;
    a[kEmail] = "taro@example.jp";
    book.user = "u", book.name = "b";
    book.top.groups.push_back({"g", {a}, {}});
    for (const Format* form : FormatsOf(FormatKind::kAddress)) {
        std::vector<AddressFile> files;
        const auto writer = MakeAddressWriter(*form);
        writer->Write(LayOut(book), &files);
        const std::vector<std::string> declared = writer->Extensions();
        EXPECT_FALSE(files.empty()) << form->name;
        for (const AddressFile& f : files)
            EXPECT_NE(declared.end(), std::find(declared.begin(), declared.end(), f.extension)) << f.extension;
    }
}

// The same steps into a folder and into a dry run: the counts agree after
// each, and the folder holds what was counted.
TEST(Sinks, DryRunCountsWhatTheFolderGets) {
    qvt::WinePrefix scratch;  // a fresh host folder, taken away at the end
    const std::string root = scratch.Root() + "/out";
    fs::create_directories(qvt::HostFile(root));
    DirectorySink folder(root);
    DryRunSink dry;
    const std::string message(3000, 'm');
    for (Sink* sink : {static_cast<Sink*>(&folder), static_cast<Sink*>(&dry)}) {
        ASSERT_TRUE(sink->MakeDir("a") && sink->MakeDir("a/b") && sink->MakeDir("a"));
        ASSERT_TRUE(sink->OpenFile("a/box"));
        ASSERT_TRUE(sink->Write(message) && sink->Write("x", 1));
        sink->Staging() += "never given";  // a message whose making failed halfway is not written
        EXPECT_EQ("a/box", sink->openFile());
        EXPECT_EQ(3001u, sink->offset());
        ASSERT_TRUE(sink->CloseFile(true, 1205453101));
        EXPECT_EQ("", sink->openFile());
        ASSERT_TRUE(sink->WriteNewFile("a/b/1.part", "a/b/1", message.data(), 10, 1205453101));
        ASSERT_TRUE(sink->WriteWholeFile("a/book.vcf", "card"));
        ASSERT_TRUE(sink->Commit());
        EXPECT_EQ(3015u, sink->bytes());
    }
    EXPECT_EQ(message + "x", qvt::ReadHostFile(root + "/a/box"));
    EXPECT_EQ(message.substr(0, 10), qvt::ReadHostFile(root + "/a/b/1"));
    EXPECT_FALSE(fs::exists(qvt::HostFile(root + "/a/b/1.part")));
    EXPECT_EQ("card", qvt::ReadHostFile(root + "/a/book.vcf"));
}

// Nothing stands under its final name before the commit, and nothing that
// is there is overwritten.
TEST(Sinks, FolderWritesThenRenamesAndNeverOverwrites) {
    qvt::WinePrefix scratch;
    const std::string root = scratch.Root() + "/out";
    fs::create_directories(qvt::HostFile(root));
    qvt::WriteHostFile(root + "/taken", "old");
    DirectorySink folder(root);
    ASSERT_TRUE(folder.WriteNewFile("new.part", "new", "abc", 3));
    EXPECT_FALSE(fs::exists(qvt::HostFile(root + "/new")));
    ASSERT_TRUE(folder.Commit());
    EXPECT_EQ("abc", qvt::ReadHostFile(root + "/new"));

    const struct { const char* name; bool (*step)(DirectorySink&); } rows[] = {
        {"growing file", [](DirectorySink& s) { return s.OpenFile("taken"); }},
        {"whole file", [](DirectorySink& s) { return s.WriteWholeFile("taken", "new"); }},
        {"new file", [](DirectorySink& s) { return s.WriteNewFile("t.part", "taken", "new", 3) && s.Commit(); }},
    };
    for (const auto& r : rows) {
        DirectorySink sink(root);
        EXPECT_FALSE(r.step(sink)) << r.name;
        EXPECT_NE(std::string::npos, sink.error().find("nothing is overwritten")) << r.name << ": " << sink.error();
        EXPECT_EQ("old", qvt::ReadHostFile(root + "/taken")) << r.name;
    }
}

}  // namespace
}  // namespace tqnralm
