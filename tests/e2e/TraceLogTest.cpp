// The trace log of a short walk through the real tree, reference counts
// included, as a host reads it back.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "support/SampleStore.h"
#include "tqnralm.h"

namespace {

TEST(TraceLog, ShortWalk) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const std::string path = prefix.Root() + "/walk.log";
    std::u16string path16(path.begin(), path.end());
    ASSERT_EQ(QV_S_OK, QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(path16.c_str())));
    ASSERT_EQ(QV_S_OK, QV_InitLibrary());
    QV_OBJ root = nullptr, users = nullptr, user = nullptr, accounts = nullptr, account = nullptr;
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&root));
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(root, QV_CLASS_USER, &users));
    ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(users, &user));
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(user, QV_CLASS_ACCOUNT, &accounts));
    // The third account has no title: its display name fails with a note.
    for (int i = 0; i < 3; ++i) {
        if (account != nullptr) QV_Object_Dispose(account);
        ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(accounts, &account));
    }
    uint32_t len = 0;
    EXPECT_EQ(QV_E_UNEXPECTED, QV_Object_GetDisplayName(account, nullptr, &len));
    for (QV_OBJ o : {account, accounts, user, users, root}) QV_Object_Dispose(o);
    ASSERT_EQ(QV_S_OK, QV_ExitLibrary());

    // Times and source lines are shown as T and L; addresses as P.
    const std::regex pointer("[0-9A-F]{" + std::to_string(2 * sizeof(void*)) + "}");
    std::vector<std::string> all, lines;
    for (const std::string& line : qvt::ReadTraceLog(path)) {
        all.push_back(std::regex_replace(line, pointer, "P"));
        // Reference counts are checked by their balance below.
        if (line.rfind("[Q5V4ALM],6,", 0) != 0) lines.push_back(all.back());
    }
    const std::vector<std::string> expected = {
        "[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を開始",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_InitLibrary() BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_InitLibrary() END; return(0) ",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_GetRootObject() BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_GetRootObject() END; return(0) *pqvObjRoot=P",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetChildObjects(qvObj=P, nClass=3) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetChildObjects() END; return(0) *pqvObjs=P",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Objects_GetNext(qvObjs=P) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Objects_GetNext() END; return(0) *pqvChildObj=P",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetChildObjects(qvObj=P, nClass=4) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetChildObjects() END; return(0) *pqvObjs=P",
    };
    ASSERT_GE(lines.size(), expected.size());
    EXPECT_EQ(expected, std::vector<std::string>(lines.begin(), lines.begin() + expected.size()));
    const std::string note = "[Q5V4ALM],3,T,QvV4Utils(L),V4 エラー (-3) を QV_E_UNEXPECTED に丸めた";
    EXPECT_EQ(1, std::count(lines.begin(), lines.end(), note));
    EXPECT_EQ("[Q5V4ALM],4,T,QvIAPI(L),QV_ExitLibrary() BEGIN", lines[lines.size() - 2]);
    EXPECT_EQ("[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を終了", lines.back());
    // Every reference taken is given back: the counts end where they began.
    int balance = 0;
    for (const std::string& line : all) {
        balance += line.find("= 0 → 1") != std::string::npos ? 1 : 0;
        balance -= line.find("= 1 → 0") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(0, balance);
}

}  // namespace
