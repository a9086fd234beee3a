// bench_cp932 - a mail body in ISO-2022-JP or EUC-JP to code page 932, as
// the message library hands each main part out: bytes per second of input.
//
// Run: build/bin/bench_cp932
#include <benchmark/benchmark.h>

#include <string>

#include "platform/platform.h"

namespace {

// About 1,800 bytes of short lines as Japanese mail has them: kana and
// kanji between escapes (the lines of samplestore's bodies), and with
// `mixed` every fourth line full-width digits and NEC symbols, which code
// page 932 takes from its table.
std::string Body(uint32_t codePage, bool mixed) {
    const char* const lines[] = {
        "\x1b$B$$$D$b$*@$OC$K$J$C$F$*$j$^$9!#\x1b(B\r\n",
        "\x1b$BMh=5$NBG$A9g$o$;$N7o$G$4O\"Mm$$$?$7$^$9!#\x1b(B\r\n",
        "\x1b$B;qNA$rE:IU$$$?$7$^$9$N$G!\"$43NG'$/$@$5$$!#\x1b(B\r\n",
        "\x1b$B#2#0#0#8G/\"\"-5-6\x1b(B 2008\r\n"};
    std::string iso;
    for (int line = 0; iso.size() < 1800; ++line) iso += lines[line % (mixed ? 4 : 3)];
    if (codePage == qvp::kCpIso2022Jp) return iso;
    std::string euc;
    bool pairs = false;
    for (size_t i = 0; i < iso.size(); ++i) {
        if (iso[i] == '\x1b') {
            pairs = iso[i + 1] == '$';
            i += 2;
        } else {
            euc += static_cast<char>(pairs ? iso[i] | 0x80 : iso[i]);
        }
    }
    return euc;
}

void BM_ToCp932(benchmark::State& state) {
    const uint32_t codePage = static_cast<uint32_t>(state.range(0));
    const std::string body = Body(codePage, state.range(1) != 0);
    std::string out;
    for (auto _ : state) {
        out.clear();
        qvp::JapaneseToAnsi(codePage, body.data(), body.size(), &out);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body.size()));
}
BENCHMARK(BM_ToCp932)->ArgsProduct({{qvp::kCpIso2022Jp, qvp::kCpEucJp}, {0, 1}});

}  // namespace

BENCHMARK_MAIN();
