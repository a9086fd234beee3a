// DrivePathTest.cpp - on a copied drive the store's Windows paths name the
// drive's files: C: is the drive's folder, another letter the folder its
// TQNRALM_DRIVE_<LETTER> names, and a letter without one names nothing.
#include "platform/win32/DriveHives.h"
#include "support/WinePrefix.h"

#include <gtest/gtest.h>

namespace {

TEST(DrivePath, MapsLettersOntoTheDrive) {
    qvp::UseCopiedDrive("Z:\\old\\disk\\", "");
    qvt::machine::SetEnvironment("TQNRALM_DRIVE_D", "Z:\\data");
    struct Row { const wchar_t* path; bool mapped; const wchar_t* host; } rows[] = {
        {L"C:\\AL-Mail\\Mailbox.ini", true, L"Z:\\old\\disk\\AL-Mail\\Mailbox.ini"},
        {L"c:\\", true, L"Z:\\old\\disk\\"}, {L"C:name", true, L"Z:\\old\\disk\\name"},
        {L"d:\\Mail\\a.box", true, L"Z:\\data\\Mail\\a.box"}, {L"E:\\Mail", false, L""},
        {L"\\\\server\\share\\x", true, L"\\\\server\\share\\x"}, {L"relative\\x", true, L"relative\\x"},
    };
    for (const Row& row : rows) {
        std::wstring host;
        EXPECT_EQ(qvp::win32::DrivePath(row.path, &host), row.mapped);
        if (row.mapped) { EXPECT_EQ(host, row.host) << row.path; }
    }
    qvt::machine::SetEnvironment("TQNRALM_DRIVE_D", nullptr);
    qvp::UseCopiedDrive("", "");
}

}  // namespace
