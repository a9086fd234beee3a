// bench_walk - walking every message of one folder through the exported
// functions: time per message must stay flat as the folder grows (linear
// walk), and so must the memory held (one message per folder in memory).
//
// Run: build/bin/bench_walk   (reports time per message and peak RSS growth)
#include <benchmark/benchmark.h>

#include <fstream>
#include <string>

#include "support/SampleStore.h"
#include "tqnralm.h"

namespace {

// Resident set size in kB, from the kernel's view of this process.
long ResidentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return 0;
}

void BuildFolder(qvt::WinePrefix& prefix, int64_t count) {
    qvt::StoreWriter w(prefix);
    w.Install("C:\\Program Files\\AL-Mail\\AlMail.exe");
    w.RegistryMailbox("C:\\AL-Mail");
    const std::string account = "C:\\AL-Mail\\Mailbox\\Account1";
    w.Account(account, "Bench");
    w.FolderIni(account + "\\00000001.box", "Big", false);
    std::vector<std::string> messages;
    messages.reserve(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i) {
        messages.push_back(qvt::MakeMessage("=?ISO-2022-JP?B?GyRCMnE1RCROJCpDTiRpJDsbKEI=?= " + std::to_string(i),
                                            "<" + std::to_string(i) + "@example.jp>", std::string(2000, 'x') + "\r\n"));
    }
    w.Messages(account + "\\00000001.box", messages);
}

QV_OBJ FirstChild(QV_OBJ parent, int32_t nClass) {
    QV_OBJ objs = nullptr, child = nullptr;
    QV_Object_GetChildObjects(parent, nClass, &objs);
    QV_Objects_GetNext(objs, &child);
    QV_Object_Dispose(objs);
    return child;
}

void BM_WalkFolder(benchmark::State& state) {
    const int64_t count = state.range(0);
    qvt::WinePrefix prefix;
    BuildFolder(prefix, count);
    QV_InitLibrary();
    QV_OBJ root = nullptr;
    QV_GetRootObject(&root);
    QV_OBJ user = FirstChild(root, QV_CLASS_USER);
    QV_OBJ account = FirstChild(user, QV_CLASS_ACCOUNT);
    QV_OBJ folder = FirstChild(account, QV_CLASS_MAILFOLDER);
    const long rssBefore = ResidentKb();
    long rssPeak = rssBefore;
    for (auto _ : state) {
        QV_OBJ objs = nullptr;
        QV_Object_GetChildObjects(folder, QV_CLASS_MAILMESSAGE, &objs);
        QV_OBJ message = nullptr;
        int64_t seen = 0;
        while (QV_Objects_GetNext(objs, &message) == QV_S_OK) {
            uint32_t len = 0;
            QV_Object_GetDisplayName(message, nullptr, &len);
            QV_MAIL_DATA data;
            if (QV_MailMessage_GetData(message, &data) == QV_S_OK) data.pfnFree(data.pszMailText);
            QV_Object_Dispose(message);
            if ((++seen & 1023) == 0) rssPeak = std::max(rssPeak, ResidentKb());
        }
        QV_Object_Dispose(objs);
        if (seen != count) state.SkipWithError("not every message was delivered");
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.SetComplexityN(count);
    state.counters["rss_growth_kB"] = static_cast<double>(std::max(rssPeak, ResidentKb()) - rssBefore);
    for (QV_OBJ o : {folder, account, user, root}) QV_Object_Dispose(o);
    QV_ExitLibrary();
}
BENCHMARK(BM_WalkFolder)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Complexity(
    benchmark::oN)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
