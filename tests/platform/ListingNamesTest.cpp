// ListingNamesTest.cpp - file names in listings that code page 932 cannot
// hold exactly, as Wine lists them: converted with '?' or a best fit, sorted
// by the Unicode name; such a name opens nothing.
#include "platform/platform.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(Listing, NamesWithoutShiftJisForm) {
    const struct {
        const char* hostName;  // UTF-8
        const char* listed;    // CP932, as Wine 8.0's _findfirst gives it
        bool opens;            // the listed name opens the file
    } cases[] = {
        // In Wine's order: folded UTF-16 names.
        {"Ab.h", "Ab.h", true},
        {"x\xE2\x80\x94.f", "x?.f", false},       // U+2014: glibc maps it, Windows does not
        {"\xC3\xA9.d", "e.d", false},              // best fit
        {"\xE2\x82\xAC.a", "?.a", false},          // the euro sign
        {"\xE2\x85\xA0.g", "\x87\x54.g", true},    // NEC row
        {"\xE3\x80\x9C.c", "?.c", false},          // U+301C
        {"\xF0\x9F\x98\x80.b", "??.b", false},     // one '?' per surrogate
    };
    qvt::WinePrefix prefix;
    for (const auto& c : cases) prefix.WriteFile(std::string("C:\\Names\\") + c.hostName, "x");

    std::vector<std::string> expected = {".", ".."}, listed;
    for (const auto& c : cases) expected.push_back(c.listed);
    qvp::FindData data;
    qvp::FindHandle* handle = qvp::FindFirst("C:\\Names\\*", &data);
    ASSERT_NE(nullptr, handle);
    do {
        listed.push_back(data.name);
        EXPECT_EQ(data.name[0] == '.' ? qvp::kAttribDirectory : qvp::kAttribArchive, data.attrib);
    } while (qvp::FindNext(handle, &data));
    qvp::FindClose(handle);
    EXPECT_EQ(expected, listed);

    for (const auto& c : cases) {
        SCOPED_TRACE(c.listed);
        qvp::File* file = qvp::FileOpen((std::string("C:\\Names\\") + c.listed).c_str(), "rb");
        EXPECT_EQ(c.opens, file != nullptr);
        if (file != nullptr) qvp::FileClose(file);
    }
}

}  // namespace
