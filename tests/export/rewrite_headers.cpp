// rewrite_headers - the export's header rewriting on one message, for the
// read-back test: the message on stdin, the rewritten message on stdout
// (exit 0), or nothing (exit 1) when it needs no rewriting. With --subject,
// the decoded subject the manifest would list instead (exit 1: none).
#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>
#include <string>

#include "HeaderRewrite.h"

int main(int argc, char** argv) {
    std::freopen(nullptr, "rb", stdin);
    std::freopen(nullptr, "wb", stdout);
    const std::string message((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    std::string out;
    const bool done = argc == 2 && std::strcmp(argv[1], "--subject") == 0 ? tqnralm::DecodeSubject(message, &out)
                                                                          : tqnralm::RewriteHeaders(message, &out);
    std::fwrite(out.data(), 1, out.size(), stdout);
    return done ? 0 : 1;
}
