// fuzz_codepage.cpp - the mail charsets built on code page 932: the one-pass
// conversion of a body to code page 932 must give what the two conversions
// (to UTF-16 and back) give, for any bytes. The first byte picks ISO-2022-JP
// or EUC-JP; the rest is the text.
#include "FuzzCheck.h"

#include "platform/platform.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0 || size > (1 << 20)) return 0;
    const uint32_t codePage = (data[0] & 1) ? qvp::kCpEucJp : qvp::kCpIso2022Jp;
    const char* text = reinterpret_cast<const char*>(data + 1);
    const int length = static_cast<int>(size - 1);

    std::string direct;
    if (!qvp::JapaneseToAnsi(codePage, text, static_cast<size_t>(length), &direct)) __builtin_trap();

    std::string twoSteps;
    if (length > 0) {
        std::u16string wide(static_cast<size_t>(length), u'\0');
        // No byte gives two units, and a lenient reading never fails: 0 is
        // a text of escapes alone.
        const int units = qvp::MultiByteToWideChar(codePage, 0, text, length, &wide[0], length);
        if (units > 0) {
            twoSteps.resize(static_cast<size_t>(units) * 2);
            const int bytes = qvp::WideCharToMultiByte(qvp::kCp932, wide.data(), units, &twoSteps[0], units * 2);
            if (bytes <= 0) __builtin_trap();
            twoSteps.resize(static_cast<size_t>(bytes));
        }
    }
    if (direct != twoSteps) __builtin_trap();
    return 0;
}
