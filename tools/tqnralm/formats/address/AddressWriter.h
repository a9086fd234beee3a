// One form of the address books: the files it makes of a laid-out book,
// as bytes for the export to name and write. The forms are listed in the
// table of Formats.h.
#ifndef TQNRALM_TOOL_ADDRESSWRITER_H
#define TQNRALM_TOOL_ADDRESSWRITER_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "AddressModel.h"
#include "Formats.h"

namespace tqnralm {

struct AddressFile {
    std::string form;       // in the manifest: "vcard", "vcard-groups"
    std::string extension;  // after the book's name: "vcf", "groups.vcf"
    std::string bytes;
};

class AddressWriter {
public:
    explicit AddressWriter(const Format& format) : format_(format) {}
    virtual ~AddressWriter() = default;
    // Appends the book's files in this form.
    virtual void Write(const BookLayout& book, std::vector<AddressFile>* files) const = 0;
    // The extension of every file it may write for a book.
    virtual std::vector<std::string> Extensions() const { return {format_.extension}; }

protected:
    // A file under the form's own name and extension.
    AddressFile File(std::string bytes) const { return {format_.name, format_.extension, std::move(bytes)}; }
    const Format& format_;
};

// A form that makes one file of a book, under its own name and extension.
class OneFileWriter : public AddressWriter {
public:
    using Render = std::string (*)(const BookLayout& book);
    OneFileWriter(const Format& format, Render render) : AddressWriter(format), render_(render) {}
    void Write(const BookLayout& book, std::vector<AddressFile>* files) const override {
        files->push_back(File(render_(book)));
    }

private:
    Render render_;
};

std::unique_ptr<AddressWriter> MakeVCardWriter(const Format& format);
std::unique_ptr<AddressWriter> MakeLdifWriter(const Format& format);
std::unique_ptr<AddressWriter> MakeCsvWriter(const Format& format);

}  // namespace tqnralm

#endif
