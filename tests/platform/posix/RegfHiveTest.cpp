// RegfHiveTest.cpp - the hand-written hive reader against hivex: hives that
// hivex writes read by both, value by value, and damaged hives.
#include "platform/posix/HiveFile.h"
#include "platform/posix/PosixText.h"
#include "platform/win32/RegfHive.h"
#include "support/WinePrefix.h"
#include "support/posix/Hive.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <tuple>

namespace {

using qvp::win32::RegfHive;
using qvt::HiveValue;
using qvt::RegSz;

std::u16string Folded(const std::string& utf8) {
    std::u16string wide;
    qvp::posix::Utf8ToUtf16(utf8.data(), utf8.size(), true, &wide);
    return qvp::Fold(wide);
}

using qvt::Get;
using qvt::Put;

// Appends a bin of cells to a hive (each cell's data, in use), returning
// the cells' offsets from the first bin.
std::vector<uint32_t> AppendBin(std::string& hive, const std::vector<std::string>& cells) {
    std::string bin = "hbin" + std::string(28, '\0');
    std::vector<uint32_t> offsets;
    for (const std::string& data : cells) {
        offsets.push_back(static_cast<uint32_t>(hive.size() - 0x1000 + bin.size()));
        const size_t size = (data.size() + 4 + 7) & ~size_t(7);
        std::string cell(size, '\0');
        Put(cell, 0, static_cast<uint32_t>(-static_cast<int32_t>(size)));
        cell.replace(4, data.size(), data);
        bin += cell;
    }
    const size_t size = (bin.size() + 4 + 0xFFF) & ~size_t(0xFFF);
    const size_t rest = size - bin.size();
    bin += std::string(rest, '\0');
    Put(bin, bin.size() - rest, static_cast<uint32_t>(rest));  // the free cell over the rest
    Put(bin, 4, static_cast<uint32_t>(hive.size() - 0x1000));
    Put(bin, 8, static_cast<uint32_t>(size));
    hive += bin;
    Put(hive, 0x28, static_cast<uint32_t>(hive.size() - 0x1000));
    qvt::FixHiveChecksum(hive);
    return offsets;
}

// The offset (from the first bin) of the cell whose data holds `marker`
// at `at`: the key or value named so.
size_t CellOf(const std::string& hive, const std::string& marker, size_t at) {
    const size_t found = hive.find(marker);
    return found == std::string::npos ? 0 : found - at - 4 - 0x1000;
}
size_t KeyCell(const std::string& hive, const std::string& name) { return CellOf(hive, name, 76); }
size_t ValueCell(const std::string& hive, const std::string& name) { return CellOf(hive, name, 20); }

const std::string kBig(40000, 'x');

const qvt::HiveKeys kKeys = {
    {"Software\\CREAR\\AL-Mail",
     {{"InstallPath", 1, RegSz("C:\\Program Files\\AL-Mail")},
      {"MailboxPath", 2, RegSz("%USERPROFILE%\\メール")},
      {"", 1, RegSz("既定")}, {"Empty", 3, ""}, {"EmptyText", 1, ""}, {"Count", 4, std::string("\x2a\0\0\0", 4)},
      {"Small", 3, std::string("\x01\x02", 2)}, {"Big", 3, kBig}, {"BigText", 1, RegSz(std::string(20000, 'y'))},
      {"Multi", 7, RegSz("a") + RegSz("b") + std::string(2, '\0')},
      {"Quad", 11, std::string("\1\2\3\4\5\6\7\x08", 8)}, {"No terminator", 1, std::string("a\0b\0", 4)},
      {"名前", 1, RegSz("値")}}},
    {"Software\\日本語のキー\\サブ", {{"値の名前", 1, RegSz("日本語の値")}}},
    {"Software\\Sub1", {}}, {"Software\\Sub2", {}}, {"Software\\sub3", {{"x", 4, std::string(4, '\0')}}}};

class RegfHiveTest : public ::testing::Test {
protected:
    void SetUp() override {
        path = prefix.Root() + "/hive";
        qvt::WriteHive(path, kKeys);
        ASSERT_TRUE(hivex.Open(path));
        ASSERT_TRUE(regf.Load(qvt::ReadHostFile(path)));
    }
    qvt::WinePrefix prefix;
    std::string path;
    qvp::posix::HiveFile hivex;
    RegfHive regf;
};

TEST_F(RegfHiveTest, ReadsEveryValueAsHivexDoes) {
    for (const auto& [key, values] : kKeys) {
        for (const char* spelling : {"as written", "other case"}) {
            std::string path = key;
            if (spelling[0] == 'o') for (char& c : path) c = static_cast<char>(std::tolower(c));
            SCOPED_TRACE(path);
            EXPECT_TRUE(regf.HasKey(Folded(path)));
            for (const HiveValue& v : values) {
                SCOPED_TRACE(v.name);
                qvp::posix::RegistryFile::Value theirs;
                RegfHive::Value ours;
                ASSERT_TRUE(hivex.Find(Folded(path), Folded(v.name), &theirs));
                ASSERT_TRUE(regf.Find(Folded(path), Folded(v.name), &ours));
                EXPECT_EQ(ours.type, v.type);
                EXPECT_EQ(std::make_tuple(ours.isText, ours.text, ours.bytes),
                          std::make_tuple(theirs.isText, theirs.text, theirs.bytes));
                if (!ours.isText) { EXPECT_EQ(ours.bytes, v.data); }
            }
        }
    }
}

TEST_F(RegfHiveTest, AnswersMissingKeysAndValuesAsHivexDoes) {
    struct Row { const char* key; const char* name; } rows[] = {
                {"", "x"}, {"Software\\CREAR\\AL-Mail\\", "Count"}, {"\\Software\\\\CREAR\\AL-Mail", "Count"},
                {"Software\\CREAR\\AL-Mai", "Count"}, {"Software\\CREAR\\AL-Mail", "Coun"},
                {"Software\\CREAR\\AL-Mail", "Counts"}, {"Software\\Sub1", ""}, {"Software\\日本語", "値の名前"},
                {"Software\\CREAR\\AL-Mail\\Count", ""}};
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.key) + " / " + row.name);
        qvp::posix::RegistryFile::Value theirs;
        RegfHive::Value ours;
        EXPECT_EQ(regf.HasKey(Folded(row.key)), hivex.HasKey(Folded(row.key)));
        const bool found = regf.Find(Folded(row.key), Folded(row.name), &ours);
        EXPECT_EQ(found, hivex.Find(Folded(row.key), Folded(row.name), &theirs));
        if (found) { EXPECT_EQ(ours.bytes, theirs.bytes); }
    }
}

// Big data kept as Windows keeps it: a "db" cell and segments of 16344 bytes.
TEST_F(RegfHiveTest, ReadsBigDataInSegments) {
    std::string hive = qvt::ReadHostFile(path);
    std::string data;
    for (size_t i = 0; i < 40000; ++i) data += static_cast<char>('a' + i % 26);
    std::string seg1 = data.substr(0, 16344) + "PAD!", seg2 = data.substr(16344, 16344) + "PAD!",
                seg3 = data.substr(32688) + "PAD!";
    const std::vector<uint32_t> cells =
        AppendBin(hive, {seg1, seg2, seg3, std::string(12, '\0'), std::string("db\3\0\0\0\0\0", 8)});
    for (int i = 0; i < 3; ++i) Put(hive, 0x1000 + cells[3] + 4 + 4 * i, cells[i]);
    Put(hive, 0x1000 + cells[4] + 4 + 4, cells[3]);
    Put(hive, 0x1000 + ValueCell(hive, "Big") + 4 + 8, cells[4]);
    const size_t listAt = 0x1000 + cells[3] + 4;

    struct Row { const char* name; std::function<void(std::string&)> change; bool found; } rows[] = {
        {"intact", [](std::string&) {}, true},
        {"a segment out of range", [&](std::string& h) { Put(h, listAt + 4, 0x7FFFFFF0); }, false},
        {"a segment inside a cell", [&](std::string& h) { Put(h, listAt + 4, cells[1] + 8); }, false},
        {"too few segments", [&](std::string& h) { h[0x1000 + cells[4] + 4 + 2] = 2; }, false},
        {"more segments than the list holds", [&](std::string& h) { h[0x1000 + cells[4] + 4 + 2] = 9; }, false},
        {"no db signature", [&](std::string& h) { h[0x1000 + cells[4] + 4] = 'x'; }, false},
        {"a length over 8 MB", [&](std::string& h) { Put(h, 0x1000 + ValueCell(h, "Big") + 4 + 4, 9u << 20); }, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string changed = hive;
        row.change(changed);
        RegfHive damaged;
        ASSERT_TRUE(damaged.Load(changed));
        RegfHive::Value value;
        EXPECT_EQ(damaged.Find(Folded("Software\\CREAR\\AL-Mail"), Folded("Big"), &value), row.found);
        if (row.found) {
            EXPECT_EQ(value.bytes, data);
            // hivex reads the segments so too.
            std::ofstream(path, std::ios::binary | std::ios::trunc) << changed;
            qvp::posix::HiveFile theirs;
            qvp::posix::RegistryFile::Value same;
            ASSERT_TRUE(theirs.Open(path));
            ASSERT_TRUE(theirs.Find(Folded("Software\\CREAR\\AL-Mail"), Folded("Big"), &same));
            EXPECT_EQ(same.bytes, data);
        }
        EXPECT_TRUE(damaged.Find(Folded("Software\\CREAR\\AL-Mail"), Folded("Count"), &value));
    }
}

TEST_F(RegfHiveTest, RefusesOrContainsDamage) {
    const std::string hive = qvt::ReadHostFile(path);
    const size_t mail = 0x1000 + KeyCell(hive, "AL-Mail") + 4, software = 0x1000 + KeyCell(hive, "Software") + 4;
    const size_t root = 0x1000 + Get(hive, 0x24) + 4;
    enum Expect { kNoHive, kNoKey, kNoValue, kReads };
    struct Row { const char* name; std::function<void(std::string&)> change; bool fixChecksum; Expect expect; }
        rows[] = {
        {"empty", [](std::string& h) { h.clear(); }, false, kNoHive},
        {"cut in the base block", [](std::string& h) { h.resize(2000); }, false, kNoHive},
        {"cut in a bin", [](std::string& h) { h.resize(h.size() - 100); }, false, kNoHive},
        {"no regf", [](std::string& h) { h[0] = 'R'; }, true, kNoHive},
        {"a wrong checksum", [](std::string& h) { h[0x30] ^= 1; }, false, kNoHive},
        {"another major version", [](std::string& h) { h[0x14] = 2; }, true, kNoHive},
        {"a bin's size beyond the file", [](std::string& h) { Put(h, 0x1008, 0x100000); }, true, kNoHive},
        {"a bin's size not whole pages", [](std::string& h) { Put(h, 0x1008, 0x1010); }, true, kNoHive},
        {"a cell's size beyond its bin", [](std::string& h) { Put(h, 0x1020, 0x80000000u); }, true, kNoHive},
        {"a cell of no size", [](std::string& h) { Put(h, 0x1020, 0); }, true, kNoHive},
        {"the root out of range", [](std::string& h) { Put(h, 0x24, 0xFFFFFFF0u); }, true, kNoHive},
        {"the root not a key", [&](std::string& h) { h[root] = 'x'; }, true, kNoHive},
        {"garbage after the bins", [](std::string& h) { h += std::string(5000, 'z'); }, true, kReads},
        {"a subkey list out of range", [&](std::string& h) { Put(h, software + 28, 0x7FFFFFF8); }, false, kNoKey},
        {"a subkey list inside a cell", [&](std::string& h) { Put(h, software + 28, Get(h, software + 28) + 8); },
         false, kNoKey},
        {"a huge subkey count", [&](std::string& h) { Put(h, 0x1000 + Get(h, software + 28) + 4 + 2, 0xFFFF); },
         false, kNoKey},
        {"a key that is its own subkey", [&](std::string& h) { Put(h, software + 28, Get(h, root + 28)); }, false,
         kNoKey},
        {"a key's name longer than its cell", [&](std::string& h) { Put(h, mail + 72, 0xFFFF); }, false, kNoKey},
        {"a value list out of range", [&](std::string& h) { Put(h, mail + 40, 0x7FFFFFF8); }, false, kNoValue},
        {"a huge value count", [&](std::string& h) { Put(h, mail + 36, 0x40000000); }, false, kNoValue},
        {"a value's name longer than its cell",
         [&](std::string& h) { Put(h, 0x1000 + ValueCell(h, "Count") + 4 + 2, 0x0FFF); }, false, kNoValue},
        {"inline data longer than 4 bytes",
         [&](std::string& h) { Put(h, 0x1000 + ValueCell(h, "Count") + 4 + 4, 0x80000005u); }, false, kNoValue},
        {"data longer than its cell",
         [&](std::string& h) { Put(h, 0x1000 + ValueCell(h, "Count") + 4 + 4, 0x800000u); }, false, kNoValue},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string changed = hive;
        row.change(changed);
        if (row.fixChecksum) qvt::FixHiveChecksum(changed);
        RegfHive damaged;
        const bool loaded = damaged.Load(changed);
        EXPECT_EQ(loaded, row.expect != kNoHive);
        RegfHive::Value value;
        EXPECT_EQ(damaged.HasKey(Folded("Software\\CREAR\\AL-Mail")), row.expect >= kNoValue);
        EXPECT_EQ(damaged.Find(Folded("Software\\CREAR\\AL-Mail"), Folded("Count"), &value), row.expect == kReads);
        // The key that is its own subkey: a deep path ends.
        EXPECT_FALSE(damaged.HasKey(Folded("Software\\Software\\Software\\Software\\x")));
    }
}

}  // namespace
