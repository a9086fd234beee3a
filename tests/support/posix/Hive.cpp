// Hive.cpp - hive files built in code.
//
// The empty hive: a base block "regf" (sequence numbers 1 and 1, version
// 1.3, root cell at 0x20 of the bins, 4096 bytes of bins, the XOR of its
// first 127 words at 508), then one bin "hbin" of 4096 bytes that holds the
// root key (an "nk" cell flagged 0x2c: hive entry, no delete, ASCII name),
// its security cell ("sk", a list of one that points at itself) and one free
// cell over the rest of the bin.
#include "support/posix/Hive.h"

#include "platform/platform.h"

#include <hivex.h>

#include <fstream>
#include <stdexcept>

namespace qvt {

void Put(std::string& bytes, size_t at, uint32_t value, int width) {
    for (int i = 0; i < width; ++i) bytes[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

uint32_t Get(const std::string& bytes, size_t at) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i) v = v << 8 | static_cast<unsigned char>(bytes[at + i]);
    return v;
}

namespace {

void Fail(const std::string& what) { throw std::runtime_error("hive: " + what); }

// The node of a key path, made where missing.
hive_node_h MakeKey(hive_h* h, const std::string& path) {
    hive_node_h node = hivex_root(h);
    for (size_t start = 0; start <= path.size();) {
        size_t end = path.find('\\', start);
        if (end == std::string::npos) end = path.size();
        const std::string part = path.substr(start, end - start);
        start = end + 1;
        if (part.empty()) continue;
        hive_node_h child = hivex_node_get_child(h, node, part.c_str());
        if (child == 0) child = hivex_node_add_child(h, node, part.c_str());
        if (child == 0) Fail("cannot add key " + path);
        node = child;
    }
    return node;
}

}  // namespace

std::string RegSz(const std::string& utf8) {
    std::u16string wide(utf8.size() + 1, u'\0');
    const int n = qvp::MultiByteToWideChar(qvp::kCpUtf8, 0, utf8.c_str(), -1, &wide[0], static_cast<int>(wide.size()));
    wide.resize(n > 0 ? static_cast<size_t>(n) : 1);
    std::string data;
    for (char16_t c : wide) {
        data += static_cast<char>(c & 0xFF);
        data += static_cast<char>(c >> 8);
    }
    return data;
}

void FixHiveChecksum(std::string& hive) {
    if (hive.size() < 512) return;
    uint32_t sum = 0;
    for (size_t i = 0; i < 508; ++i) sum ^= static_cast<uint32_t>(static_cast<unsigned char>(hive[i])) << (8 * (i % 4));
    Put(hive, 508, sum);
}

std::string EmptyHive() {
    std::string h(8192, '\0');
    h.replace(0, 4, "regf");
    Put(h, 0x04, 1);       // primary sequence number
    Put(h, 0x08, 1);       // secondary sequence number
    Put(h, 0x14, 1);       // major version
    Put(h, 0x18, 3);       // minor version
    Put(h, 0x20, 1);       // format: direct memory load
    Put(h, 0x24, 0x20);    // root cell, from the first bin
    Put(h, 0x28, 0x1000);  // bytes of bins
    Put(h, 0x2C, 1);       // clustering factor
    FixHiveChecksum(h);

    const size_t bin = 0x1000, nk = 0x20, sk = 0x78, free = 0xA8;
    h.replace(bin, 4, "hbin");
    Put(h, bin + 0x08, 0x1000);  // the bin's size (its offset is 0)
    // The root key, named "ROOT": 0x50 bytes of fields and its name.
    Put(h, bin + nk, static_cast<uint32_t>(-0x58));
    h.replace(bin + nk + 4, 2, "nk");
    Put(h, bin + nk + 0x06, 0x2c, 2);
    Put(h, bin + nk + 0x20, 0xFFFFFFFF);  // no subkey list
    Put(h, bin + nk + 0x24, 0xFFFFFFFF);  // no volatile subkey list
    Put(h, bin + nk + 0x2C, 0xFFFFFFFF);  // no value list
    Put(h, bin + nk + 0x30, sk);
    Put(h, bin + nk + 0x34, 0xFFFFFFFF);  // no class name
    Put(h, bin + nk + 0x4C, 4, 2);
    h.replace(bin + nk + 0x50, 4, "ROOT");
    // The security cell: itself before and after it, one user, and a
    // self-relative descriptor without owner, group or lists.
    Put(h, bin + sk, static_cast<uint32_t>(-0x30));
    h.replace(bin + sk + 4, 2, "sk");
    Put(h, bin + sk + 0x08, sk);
    Put(h, bin + sk + 0x0C, sk);
    Put(h, bin + sk + 0x10, 1);
    Put(h, bin + sk + 0x14, 20);
    Put(h, bin + sk + 0x18, 0x80040001);  // revision 1, control: self-relative, DACL present
    Put(h, bin + free, static_cast<uint32_t>(0x1000 - free));
    return h;
}

void WriteHive(const std::string& hostPath, const HiveKeys& keys) {
    std::ofstream(hostPath, std::ios::binary | std::ios::trunc) << EmptyHive();
    hive_h* h = hivex_open(hostPath.c_str(), HIVEX_OPEN_WRITE);
    if (h == nullptr) Fail("hivex cannot open the empty hive");
    for (const auto& [path, values] : keys) {
        const hive_node_h node = MakeKey(h, path);
        std::vector<hive_set_value> set;
        for (const HiveValue& v : values)
            set.push_back({const_cast<char*>(v.name.c_str()), static_cast<hive_type>(v.type), v.data.size(),
                           const_cast<char*>(v.data.data())});
        if (!set.empty() && hivex_node_set_values(h, node, set.size(), set.data(), 0) != 0) Fail("cannot set values");
    }
    const bool committed = hivex_commit(h, nullptr, 0) == 0;
    hivex_close(h);
    if (!committed) Fail("cannot commit " + hostPath);
}

}  // namespace qvt
