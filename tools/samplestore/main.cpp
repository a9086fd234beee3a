// samplestore - writes the sample installation of the mail client into a
// Wine prefix folder, for trying the library and the tqnralm host.
#include <cstdio>
#include <exception>

#include "support/SampleStore.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: samplestore DIR\n  writes a Wine prefix with a sample AL-Mail32 store to DIR\n");
        return 2;
    }
    try {
        qvt::WinePrefix prefix;
        qvt::BuildSampleStore(prefix);
        prefix.CopyTo(argv[1]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "samplestore: %s\n", e.what());
        return 1;
    }
    std::printf("%s\n", argv[1]);
    return 0;
}
