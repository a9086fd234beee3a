// Tests of the exported functions' call frame: argument checks, the barrier,
// the text protocol, the log file and the records a call leaves in it.
#include <gtest/gtest.h>

#include <functional>
#include <regex>

#include "frame/FakeTree.h"

namespace {

// The lines that the body logs, between the start and the end record.
template <typename Body>
std::vector<std::string> Logged(Body body) {
    TempLog log;
    EXPECT_EQ(QV_S_OK, log.Start());
    body();
    EXPECT_EQ(QV_S_OK, QV_EndLogging());
    std::vector<std::string> lines = log.Lines();
    if (lines.size() < 2) return {};
    EXPECT_EQ("[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を終了", lines.back());
    return std::vector<std::string>(lines.begin() + 1, lines.end() - 1);
}

class FrameApi : public ::testing::Test {
protected:
    void SetUp() override { Analyzer(); }
};

TEST_F(FrameApi, LogFileCodesAndForm) {
    TempLog log;
    EXPECT_EQ(QV_E_BAD_PATH, log.Start(".d/none/trace.log"));
    EXPECT_FALSE(Analyzer().IsLogging());
    EXPECT_EQ(QV_S_OK, QV_EndLogging());
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_StartLogging(nullptr));
    ASSERT_EQ(QV_S_OK, log.Start());
    EXPECT_EQ(QV_E_ALREADY_LOGGING, log.Start());
    ASSERT_EQ(QV_S_OK, QV_EndLogging());
    const std::string started = "[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を開始";
    EXPECT_EQ((std::vector<std::string>{started, "[Q5V4ALM],1,T,QvIAnalyzer(L),すでにログ出力を開始している。",
                                        "[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を終了"}),
              log.Lines());
    const std::string bytes = log.Bytes();
    std::string ascii;
    for (size_t i = 0; i < bytes.size(); i += 2) ascii += bytes[i];
    EXPECT_TRUE(std::regex_search(ascii, std::regex(R"(^\[Q5V4ALM\],3,\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3},)")));
    // A second run appends, without a byte order mark.
    ASSERT_EQ(QV_S_OK, log.Start());
    ASSERT_EQ(QV_S_OK, QV_EndLogging());
    EXPECT_EQ(bytes, log.Bytes().substr(0, bytes.size()));
    ASSERT_EQ(5u, log.Lines().size());
    EXPECT_EQ(started, log.Lines()[3]);
}

TEST_F(FrameApi, NullArgumentsAndWrongClassesAreRefusedAndTouchNothing) {
    FakeObject user(nullptr, QV_CLASS_USER, u"user");
    int32_t n = 77;
    uint32_t u = 77;
    QV_BOOL b = 77;
    QV_OBJ o = &user;
    QV_MAIL_DATA mail{};
    QV_ADDRESS_DATA addr{};
    const struct { const char* record; std::function<int32_t()> call; } cases[] = {  // record: the level-1 text
        {"QV_Object_GetClass() : qvObjが NULL", [&] { return QV_Object_GetClass(nullptr, &n); }},
        {"QV_Object_GetName() : lpcNameLenが NULL", [&] { return QV_Object_GetName(&user, nullptr, nullptr); }},
        {"QV_Object_GetDisplayName() : qvObjが NULL", [&] { return QV_Object_GetDisplayName(nullptr, nullptr, &u); }},
        {"QV_Object_GetAttributes() : pdwAttributeが NULL", [&] { return QV_Object_GetAttributes(&user, nullptr); }},
        {"QV_Object_GetChildCount() : pnChildCountが NULL", [&] { return QV_Object_GetChildCount(&user, 3, nullptr); }},
        {"QV_Object_GetChildObjects() : pqvObjsが NULL", [&] { return QV_Object_GetChildObjects(&user, 3, nullptr); }},
        {"QV_Object_HasPassword() : pbHasPasswordが NULL", [&] { return QV_Object_HasPassword(&user, nullptr); }},
        {"QV_Object_Logon() : lpszPasswordが NULL", [&] { return QV_Object_Logon(&user, nullptr); }},
        {"QV_Object_Dispose() : qvObjが NULL", [&] { return QV_Object_Dispose(nullptr); }},
        {"QV_Objects_HasNext() : qvObjsが NULL", [&] { return QV_Objects_HasNext(nullptr, &b); }},
        {"QV_Objects_HasNext() : オブジェクトクラスが不正", [&] { return QV_Objects_HasNext(&user, &b); }},
        {"QV_Objects_GetNext() : オブジェクトクラスが不正", [&] { return QV_Objects_GetNext(&user, &o); }},
        {"QV_MailMessage_GetData() : pMailDataが NULL", [&] { return QV_MailMessage_GetData(&user, nullptr); }},
        {"QV_MailMessage_GetData() : オブジェクトクラスが不正", [&] { return QV_MailMessage_GetData(&user, &mail); }},
        {"QV_Address_GetData() : qvObjAddressが NULL", [&] { return QV_Address_GetData(nullptr, &addr); }},
        {"QV_Address_GetData() : オブジェクトクラスが不正", [&] { return QV_Address_GetData(&user, &addr); }},
        {"QV_IsMailerInstalled() : pbIsInstalledが NULL", [&] { return QV_IsMailerInstalled(nullptr); }},
        {"QV_GetRootObject() : pqvObjRootが NULL", [&] { return QV_GetRootObject(nullptr); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.record);
        int32_t code = 0;
        auto lines = Logged([&] { code = c.call(); });
        EXPECT_EQ(QV_E_INVALID_ARGUMENT, code);
        ASSERT_EQ(3u, lines.size());
        EXPECT_EQ(std::string("[Q5V4ALM],1,T,QvIAPI(L),") + c.record, lines[1]);
        const std::string name(c.record, std::string(c.record).find('('));
        EXPECT_EQ("[Q5V4ALM],5,T,QvIAPI(L)," + name + "() END; return(-7) ", lines[2]);
    }
    EXPECT_TRUE(n == 77 && u == 77 && b == 77 && o == &user && mail.nMailTextLen == 0);
}

TEST_F(FrameApi, BarrierTurnsFailuresIntoCodes) {
    FakeObject user(nullptr, QV_CLASS_USER, u"user");
    uint32_t len = 9;
    const struct { std::function<void()> fault; int32_t code; const char* detail; } cases[] = {
        {[] { throw CMemoryException(); }, QV_E_OUT_OF_MEMORY, "CMemoryException をキャッチ"},
        {[] { throw std::bad_alloc(); }, QV_E_OUT_OF_MEMORY, "CMemoryException をキャッチ"},
        {[] { throw CFileException(13); }, QV_E_DISK_FULL, "CFileException をキャッチ13"},
        {[] { throw CFileException(0); }, QV_S_OK, "CFileException をキャッチ0"},
        {[] { throw CException(); }, QV_E_UNEXPECTED, "CException をキャッチ"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.detail);
        user.m_fault = c.fault;
        int32_t code = 1;
        auto lines = Logged([&] { code = QV_Object_GetName(&user, nullptr, &len); });
        EXPECT_EQ(c.code, code);
        EXPECT_EQ(9u, len);
        ASSERT_EQ(2u, lines.size());
        EXPECT_EQ("[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetName() END; return(" + std::to_string(c.code) + ") " + c.detail,
                  lines[1]);
    }
    user.m_fault = [] { throw CFileException(2); };
    EXPECT_EQ(QV_E_FILE_NOT_FOUND, QV_Object_GetName(&user, nullptr, &len));  // logging off
}

// A text goes out cut to the count or padded with zeros to it, and ended.
TEST_F(FrameApi, TextProtocolAndEndRecords) {
    FakeObject user(nullptr, QV_CLASS_USER, u"ユーザー");
    QV_WCHAR cut[4] = {1, 1, 1, 1}, padded[8];
    uint32_t len = 0, cutLen = 2, paddedLen = 7;
    auto lines = Logged([&] {
        QV_Object_GetName(&user, nullptr, &len);
        QV_Object_GetName(&user, cut, &cutLen);
        QV_Object_GetDisplayName(&user, padded, &paddedLen);
        QV_Object_Logon(&user, reinterpret_cast<const QV_WCHAR*>(u"secret"));
    });
    EXPECT_EQ(4u, len);
    EXPECT_EQ(2u, cutLen);
    EXPECT_EQ(4u, paddedLen);
    EXPECT_EQ(std::u16string(u"ユー\0\1", 4), std::u16string(reinterpret_cast<const char16_t*>(cut), 4));
    EXPECT_EQ(std::u16string(u"ユーザー\0\0\0\0", 8), std::u16string(reinterpret_cast<const char16_t*>(padded), 8));
    const std::string p = "[Q5V4ALM],4,T,QvIAPI(L),", e = "[Q5V4ALM],5,T,QvIAPI(L),", obj = "(qvObj=" + Hex(&user);
    const std::vector<std::string> expected = {
        p + "QV_Object_GetName" + obj + ", *lpcNameLen=0) BEGIN",
        e + "QV_Object_GetName() END; return(0) lpszName=(NULL), *lpcNameLen=4",
        p + "QV_Object_GetName" + obj + ", *lpcNameLen=2) BEGIN",
        e + "QV_Object_GetName() END; return(0) lpszName=ユー, *lpcNameLen=2",
        p + "QV_Object_GetDisplayName" + obj + ", *lpcNameLen=7) BEGIN",
        e + "QV_Object_GetDisplayName() END; return(0) lpszName=ユーザー, *lpcNameLen=4",
        p + "QV_Object_Logon" + obj + ") BEGIN",  // the password stays out
        e + "QV_Object_Logon() END; return(0) ",
    };
    EXPECT_EQ(expected, lines);
}

}  // namespace
