// The trace log of a short walk through the real tree, reference counts
// included, as a host reads it back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "support/SampleStore.h"
#include "tqnralm.h"

namespace {

std::string Utf16LeToUtf8(const std::string& bytes) {
    std::string out;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        uint32_t u = static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8);
        if (u < 0x80) {
            out.push_back(static_cast<char>(u));
        } else if (u < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (u >> 6)));
            out.push_back(static_cast<char>(0x80 | (u & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xE0 | (u >> 12)));
            out.push_back(static_cast<char>(0x80 | ((u >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (u & 0x3F)));
        }
    }
    return out;
}

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

    std::ifstream in(path, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    std::string text = Utf16LeToUtf8(ss.str());
    // Times, source lines and addresses aside.
    text = std::regex_replace(text, std::regex(R"(\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3})"), "T");
    text = std::regex_replace(text, std::regex(R"(\((\d+)\),)"), "(L),");
    text = std::regex_replace(text, std::regex("[0-9A-F]{" + std::to_string(2 * sizeof(void*)) + "}"), "P");
    std::vector<std::string> lines;
    std::stringstream ls(text);
    for (std::string line; std::getline(ls, line);) {
        ASSERT_FALSE(line.empty());
        ASSERT_EQ('\r', line.back());
        line.pop_back();
        // Reference counts are checked by their sequence of changes below.
        if (line.rfind("[Q5V4ALM],6,", 0) != 0) lines.push_back(line);
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
    std::stringstream all(text);
    for (std::string line; std::getline(all, line);) {
        if (line.find("参照カウンタ") == std::string::npos) continue;
        balance += line.find("= 0 → 1") != std::string::npos ? 1 : 0;
        balance -= line.find("= 1 → 0") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(0, balance);
}

}  // namespace
