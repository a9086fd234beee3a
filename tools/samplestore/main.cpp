// samplestore - writes the sample installation of the mail client into a
// Wine prefix folder, for trying the library and the tqnralm host; or a
// generated store of many messages, for benchmarks.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "LargeStore.h"
#include "support/SampleStore.h"

namespace {

// The Windows the prefix stands for (--machine).
const struct {
    const char* name;
    qvt::WinePrefix::Arch arch;
} kMachines[] = {{"win32", qvt::WinePrefix::Arch::Win32},
                 {"wow64", qvt::WinePrefix::Arch::Wow64},
                 {"win64", qvt::WinePrefix::Arch::Win64}};

const char kUsage[] =
    "usage: samplestore [--machine win32|wow64|win64 | --drive xp|vista] DIR [VARIANT]\n"
    "       samplestore --list\n"
    "       samplestore --generate DIR --messages N [--folders F] [--size BYTES]\n"
    "  writes a Wine prefix with a sample AL-Mail32 store to DIR; VARIANT is one of the\n"
    "  names --list prints (default: the sample store itself). With --drive, DIR is\n"
    "  the same machine as a copied Windows system drive, registry hives included,\n"
    "  in the folder layout of Windows XP or of Vista and later. --machine writes the\n"
    "  registry of a 32-bit Windows, of a 64-bit one whose HKLM values a 32-bit\n"
    "  installer put below Software\\Wow6432Node, or of a 64-bit one with the values\n"
    "  at their own path (default: as the variant has it).\n"
    "  --generate writes a large store instead: one user (C:\\AL-Mail\\Mailbox), one\n"
    "  account (Account1) with F folders (default 1) named 00000001.box ..., and N\n"
    "  messages spread evenly over them, each about BYTES bytes (default 2048) of\n"
    "  Japanese text with ISO-2022-JP subjects, a Message-ID <i.large@example.jp>\n"
    "  and dates seven minutes apart. 100,000 messages take a few seconds.\n";

bool ParseCount(const char* text, long* out) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    if (end == text || *end != 0 || value < 0) return false;
    *out = value;
    return true;
}

int Generate(int argc, char** argv) {
    std::string dir;
    qvt::LargeStoreShape shape;
    bool haveMessages = false;
    for (int i = 1; i < argc; i += 2) {
        long value = 0;
        const char* option = argv[i];
        if (i + 1 >= argc) return std::fprintf(stderr, "%s", kUsage), 2;
        if (std::strcmp(option, "--generate") == 0) {
            dir = argv[i + 1];
            continue;
        }
        if (!ParseCount(argv[i + 1], &value)) return std::fprintf(stderr, "%s", kUsage), 2;
        if (std::strcmp(option, "--messages") == 0) {
            shape.messages = value;
            haveMessages = true;
        } else if (std::strcmp(option, "--folders") == 0 && value >= 1 && value <= 99999999) {
            shape.folders = static_cast<int>(value);
        } else if (std::strcmp(option, "--size") == 0) {
            shape.messageBytes = value;
        } else {
            return std::fprintf(stderr, "%s", kUsage), 2;
        }
    }
    if (dir.empty() || !haveMessages) return std::fprintf(stderr, "%s", kUsage), 2;
    std::string error;
    if (!qvt::WriteLargeStore(dir, shape, &error)) {
        std::fprintf(stderr, "samplestore: %s\n", error.c_str());
        return 1;
    }
    std::printf("%s\n", dir.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)) {
        std::printf("%s", kUsage);
        return 0;
    }
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const std::string& name : qvt::SampleStoreVariants()) std::printf("%s\n", name.c_str());
        return 0;
    }
    if (argc >= 2 && std::strcmp(argv[1], "--generate") == 0) return Generate(argc, argv);
    // --drive LAYOUT: a copied Windows system drive instead of a prefix.
    const char* layout = nullptr;
    const qvt::WinePrefix::Arch* arch = nullptr;
    if (argc >= 3 && std::strcmp(argv[1], "--drive") == 0) {
        layout = argv[2];
        argc -= 2;
        argv += 2;
    } else if (argc >= 3 && std::strcmp(argv[1], "--machine") == 0) {
        for (const auto& m : kMachines) {
            if (std::strcmp(argv[2], m.name) == 0) arch = &m.arch;
        }
        if (arch == nullptr) return std::fprintf(stderr, "%s", kUsage), 2;
        argc -= 2;
        argv += 2;
    }
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "%s", kUsage);
        return 2;
    }
    try {
        qvt::WinePrefix prefix;
        if (!qvt::BuildSampleStore(prefix, argc == 3 ? argv[2] : "default")) {
            std::fprintf(stderr, "samplestore: no variant '%s'\n", argv[2]);
            return 2;
        }
        if (arch != nullptr) prefix.SetArch(*arch);
        if (layout == nullptr) {
            prefix.CopyTo(argv[1]);
        } else if (!qvt::WriteCopiedDrive(prefix, argv[1], layout, "Taro")) {
            std::fprintf(stderr, "samplestore: no drive layout '%s' on this machine\n", layout);
            return 2;
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "samplestore: %s\n", e.what());
        return 1;
    }
    std::printf("%s\n", argv[1]);
    return 0;
}
