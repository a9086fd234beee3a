// samplestore - writes the sample installation of the mail client into a
// Wine prefix folder, for trying the library and the tqnralm host.
#include <cstdio>
#include <cstring>
#include <exception>

#include "support/SampleStore.h"

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
        for (const std::string& name : qvt::SampleStoreVariants()) std::printf("%s\n", name.c_str());
        return 0;
    }
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr,
                     "usage: samplestore DIR [VARIANT]\n"
                     "       samplestore --list\n"
                     "  writes a Wine prefix with a sample AL-Mail32 store to DIR; VARIANT is one of the\n"
                     "  names --list prints (default: the sample store itself)\n");
        return 2;
    }
    try {
        qvt::WinePrefix prefix;
        if (!qvt::BuildSampleStore(prefix, argc == 3 ? argv[2] : "default")) {
            std::fprintf(stderr, "samplestore: no variant '%s'\n", argv[2]);
            return 2;
        }
        prefix.CopyTo(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "samplestore: %s\n", e.what());
        return 1;
    }
    std::printf("%s\n", argv[1]);
    return 0;
}
