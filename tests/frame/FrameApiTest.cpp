// Tests of the exported functions' call frame: argument checks, the barrier,
// the text protocol and the records each call leaves in the trace log.
#include <gtest/gtest.h>

#include <regex>

#include "QvImplCommon/QvErrors.h"
#include "frame/FakeTree.h"

namespace {

// Runs the body with logging on and gives the lines it wrote, without the
// first ("started") and last ("ended") lines.
template <typename Body>
std::vector<std::string> Logged(Body body) {
    TempLog log;
    EXPECT_EQ(QV_S_OK, log.Start());
    body();
    EXPECT_EQ(QV_S_OK, QV_EndLogging());
    std::vector<std::string> lines = log.Lines();
    EXPECT_GE(lines.size(), 2u);
    EXPECT_EQ("[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を開始", lines.front());
    EXPECT_EQ("[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を終了", lines.back());
    return std::vector<std::string>(lines.begin() + 1, lines.end() - 1);
}

class FrameApi : public ::testing::Test {
protected:
    void SetUp() override { Analyzer(); }
};

// (The walk's trace log shows the library's start and end records.)
TEST_F(FrameApi, LoggingFileAndLifeCycle) {
    TempLog log;
    const std::u16string missing = log.Path16() + u".d/none/trace.log";
    // A path in a missing directory: bad path, logging stays off.
    EXPECT_EQ(QV_E_BAD_PATH, QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(missing.c_str())));
    EXPECT_FALSE(Analyzer().IsLogging());
    EXPECT_EQ(QV_S_OK, QV_EndLogging());
    ASSERT_EQ(QV_S_OK, log.Start());
    EXPECT_EQ(QV_E_ALREADY_LOGGING, log.Start());
    EXPECT_EQ(0x50000, QV_GetVersion());
    ASSERT_EQ(QV_S_OK, QV_EndLogging());
    const std::vector<std::string> expected = {
        "[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を開始",
        "[Q5V4ALM],1,T,QvIAnalyzer(L),すでにログ出力を開始している。",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_GetVersion() BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_GetVersion() END; return(327680) ",
        "[Q5V4ALM],3,T,QvIAnalyzer(L),ログ出力を終了",
    };
    EXPECT_EQ(expected, log.Lines());
    // UTF-16LE without a byte order mark, CR LF, time stamps with milliseconds.
    const std::string bytes = log.Bytes();
    ASSERT_GE(bytes.size(), 4u);
    EXPECT_EQ(std::string("[\0", 2), bytes.substr(0, 2));
    EXPECT_EQ(std::string("\r\0\n\0", 4), bytes.substr(bytes.size() - 4));
    EXPECT_TRUE(std::regex_search(log.Text(), std::regex(R"(^\[Q5V4ALM\],3,\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3},)")));
    // A second run appends behind the last byte, again without a mark.
    ASSERT_EQ(QV_S_OK, log.Start());
    ASSERT_EQ(QV_S_OK, QV_EndLogging());
    const std::string again = log.Bytes();
    EXPECT_EQ(bytes, again.substr(0, bytes.size()));
    EXPECT_EQ('[', again.at(bytes.size()));
}

TEST_F(FrameApi, NullArgumentsAreRefusedInOrderAndTouchNothing) {
    FakeObject user(nullptr, QV_CLASS_USER, u"user");
    FakeMessage message(nullptr);
    int32_t n = 77;
    uint32_t u = 77;
    QV_BOOL b = 77;
    QV_OBJ o = &user;
    QV_MAIL_DATA mail{};
    QV_ADDRESS_DATA addr{};
    struct Case {
        const char* record;  // the level-1 text behind the function's name
        std::function<int32_t()> call;
    };
    const Case cases[] = {
        {"QV_Object_GetClass() : qvObjが NULL", [&] { return QV_Object_GetClass(nullptr, &n); }},
        {"QV_Object_GetClass() : pnClassが NULL", [&] { return QV_Object_GetClass(&user, nullptr); }},
        {"QV_Object_GetName() : lpcNameLenが NULL", [&] { return QV_Object_GetName(&user, nullptr, nullptr); }},
        {"QV_Object_GetDisplayName() : qvObjが NULL", [&] { return QV_Object_GetDisplayName(nullptr, nullptr, &u); }},
        {"QV_Object_GetAttributes() : pdwAttributeが NULL", [&] { return QV_Object_GetAttributes(&user, nullptr); }},
        {"QV_Object_GetChildCount() : pnChildCountが NULL", [&] { return QV_Object_GetChildCount(&user, 4, nullptr); }},
        {"QV_Object_GetChildObjects() : pqvObjsが NULL", [&] { return QV_Object_GetChildObjects(&user, 4, nullptr); }},
        {"QV_Object_HasPassword() : pbHasPasswordが NULL", [&] { return QV_Object_HasPassword(&user, nullptr); }},
        {"QV_Object_Logon() : lpszPasswordが NULL", [&] { return QV_Object_Logon(&user, nullptr); }},
        {"QV_Object_Dispose() : qvObjが NULL", [&] { return QV_Object_Dispose(nullptr); }},
        {"QV_Objects_HasNext() : qvObjsが NULL", [&] { return QV_Objects_HasNext(nullptr, &b); }},
        {"QV_Objects_HasNext() : pbHasNextが NULL", [&] { return QV_Objects_HasNext(&user, nullptr); }},
        {"QV_Objects_HasNext() : オブジェクトクラスが不正", [&] { return QV_Objects_HasNext(&user, &b); }},
        {"QV_Objects_GetNext() : オブジェクトクラスが不正", [&] { return QV_Objects_GetNext(&user, &o); }},
        {"QV_MailMessage_GetData() : pMailDataが NULL", [&] { return QV_MailMessage_GetData(&message, nullptr); }},
        {"QV_MailMessage_GetData() : オブジェクトクラスが不正", [&] { return QV_MailMessage_GetData(&user, &mail); }},
        {"QV_Address_GetData() : qvObjAddressが NULL", [&] { return QV_Address_GetData(nullptr, &addr); }},
        {"QV_Address_GetData() : オブジェクトクラスが不正", [&] { return QV_Address_GetData(&message, &addr); }},
        {"QV_IsMailerInstalled() : pbIsInstalledが NULL", [&] { return QV_IsMailerInstalled(nullptr); }},
        {"QV_GetRootObject() : pqvObjRootが NULL", [&] { return QV_GetRootObject(nullptr); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.record);
        int32_t code = 0;
        auto lines = Logged([&] { code = c.call(); });
        EXPECT_EQ(QV_E_INVALID_ARGUMENT, code);
        ASSERT_EQ(3u, lines.size());
        EXPECT_EQ(std::string("[Q5V4ALM],1,T,QvIAPI(L),") + c.record, lines[1]);
        std::string name(c.record, std::string(c.record).find('('));
        EXPECT_EQ("[Q5V4ALM],5,T,QvIAPI(L)," + name + "() END; return(-7) ", lines[2]);
    }
    EXPECT_EQ(77, n);
    EXPECT_EQ(77u, u);
    EXPECT_EQ(77, b);
    EXPECT_EQ(&user, o);
    EXPECT_EQ(0u, mail.nMailTextLen);
    // Logging's own checks write nothing.
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_StartLogging(nullptr));
}

TEST_F(FrameApi, BarrierTurnsFailuresIntoCodesAndEndRecords) {
    struct Case {
        FaultPlan plan;
        int32_t code;
        const char* detail;
    };
    const Case cases[] = {
        {{Fault::Memory, 0}, QV_E_OUT_OF_MEMORY, "CMemoryException をキャッチ"},
        {{Fault::BadAlloc, 0}, QV_E_OUT_OF_MEMORY, "CMemoryException をキャッチ"},
        {{Fault::File, 13}, QV_E_DISK_FULL, "CFileException をキャッチ13"},
        {{Fault::File, 4}, QV_E_UNEXPECTED, "CFileException をキャッチ4"},
        {{Fault::File, 0}, QV_S_OK, "CFileException をキャッチ0"},
        {{Fault::Generic, 0}, QV_E_UNEXPECTED, "CException をキャッチ"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.detail);
        FakeObject user(nullptr, QV_CLASS_USER, u"user");
        user.m_plan = c.plan;
        uint32_t len = 9;
        int32_t code = 1;
        auto lines = Logged([&] { code = QV_Object_GetName(&user, nullptr, &len); });
        EXPECT_EQ(c.code, code);
        EXPECT_EQ(9u, len);
        ASSERT_EQ(2u, lines.size());
        EXPECT_EQ("[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetName() END; return(" + std::to_string(c.code) + ") " + c.detail,
                  lines[1]);
    }
    // The same codes with logging off, and for the data functions.
    FakeMessage message(nullptr);
    message.m_plan = {Fault::File, 2};
    QV_MAIL_DATA mail{};
    EXPECT_EQ(QV_E_FILE_NOT_FOUND, QV_MailMessage_GetData(&message, &mail));
    EXPECT_EQ(0u, mail.nMailTextLen);
    message.m_plan = {};
    EXPECT_EQ(QV_S_OK, QV_MailMessage_GetData(&message, &mail));
    EXPECT_EQ(42u, mail.nMailTextLen);
}

TEST_F(FrameApi, FileCausesMapToCodes) {
    const int32_t expected[] = {0, -1, -10, -3, -1, -2, -1, -1, -1, -1, -1, -12, -1, -5, -1};
    for (int32_t cause = 0; cause <= 14; ++cause) EXPECT_EQ(expected[cause], QvFileCauseToError(cause)) << cause;
    EXPECT_EQ(QV_E_UNEXPECTED, QvFileCauseToError(15));
    EXPECT_EQ(QV_E_UNEXPECTED, QvFileCauseToError(-1));
}

TEST_F(FrameApi, TextProtocolCutsPadsAndTerminates) {
    struct Case {
        const char16_t* text;
        bool buffer;
        uint32_t count;
        uint32_t outLength;
        std::u16string content;  // the buffer's first count + 1 units
    };
    const Case cases[] = {
        {u"abcde", false, 1234, 5, u""},
        {u"abcde", true, 3, 3, std::u16string(u"abc\0", 4)},
        {u"abcde", true, 8, 5, std::u16string(u"abcde\0\0\0\0", 9)},
        {u"abcde", true, 0, 0, std::u16string(u"\0", 1)},
        {u"", true, 2, 0, std::u16string(u"\0\0\0", 3)},
    };
    for (const Case& c : cases) {
        FakeObject user(nullptr, QV_CLASS_USER, c.text);
        QV_WCHAR buf[16];
        for (auto& w : buf) w = u'#';
        uint32_t len = c.count;
        ASSERT_EQ(QV_S_OK, QV_Object_GetName(&user, c.buffer ? buf : nullptr, &len));
        EXPECT_EQ(c.outLength, len);
        if (c.buffer) {
            std::u16string got;
            for (uint32_t i = 0; i <= c.count; ++i) got.push_back(static_cast<char16_t>(buf[i]));
            EXPECT_EQ(c.content, got);
            EXPECT_EQ(u'#', static_cast<char16_t>(buf[c.count + 1]));
        }
    }
}

TEST_F(FrameApi, NamelessObjectsStoreATerminatorOnlyFromCountTwo) {
    // The enumerator's last reference takes the account with it.
    auto* account = new FakeObject(nullptr, QV_CLASS_ACCOUNT, u"a");
    QV_OBJ objs = nullptr;
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(account, QV_CLASS_MAILMESSAGE, &objs));
    for (uint32_t count : {0u, 1u, 2u, 5u}) {
        QV_WCHAR buf[4] = {u'x', u'x', u'x', u'x'};
        uint32_t len = count;
        EXPECT_EQ(QV_S_OK, QV_Object_GetName(objs, buf, &len));
        EXPECT_EQ(0u, len);
        EXPECT_EQ(count >= 2 ? 0 : u'x', static_cast<char16_t>(buf[0])) << count;
        EXPECT_EQ(u'x', static_cast<char16_t>(buf[1]));
    }
    int32_t nClass = 0;
    EXPECT_EQ(QV_S_OK, QV_Object_GetClass(objs, &nClass));
    EXPECT_EQ(QV_CLASS_OBJECTS, nClass);
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(objs));
}

TEST_F(FrameApi, EndRecordsShowTheHostsValues) {
    FakeObject user(nullptr, QV_CLASS_USER, u"ユーザー");
    user.m_nChildClass = QV_CLASS_ACCOUNT;
    user.m_nChildCount = 2;
    QV_WCHAR buf[8];
    uint32_t len = 0;
    uint32_t attr = 5;
    QV_BOOL pw = 1;
    int32_t count = 0;
    auto lines = Logged([&] {
        QV_Object_GetName(&user, nullptr, &len);
        len = 7;
        QV_Object_GetDisplayName(&user, buf, &len);
        QV_Object_GetAttributes(&user, &attr);
        QV_Object_HasPassword(&user, &pw);
        QV_Object_GetChildCount(&user, QV_CLASS_ACCOUNT, &count);
        QV_Object_Logon(&user, reinterpret_cast<const QV_WCHAR*>(u"secret"));
    });
    const std::string p = Hex(&user);
    const std::vector<std::string> expected = {
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetName(qvObj=" + p + ", *lpcNameLen=0) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetName() END; return(0) lpszName=(NULL), *lpcNameLen=4",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetDisplayName(qvObj=" + p + ", *lpcNameLen=7) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetDisplayName() END; return(0) lpszName=ユーザー, *lpcNameLen=4",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetAttributes(qvObj=" + p + ") BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetAttributes() END; return(0) *pdwAttribute=0",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_HasPassword(qvObj=" + p + ") BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_HasPassword() END; return(0) *pbHasPassword=FALSE",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_GetChildCount(qvObj=" + p + ", nClass=4) BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_GetChildCount() END; return(0) *pnChildCount=2",
        "[Q5V4ALM],4,T,QvIAPI(L),QV_Object_Logon(qvObj=" + p + ") BEGIN",
        "[Q5V4ALM],5,T,QvIAPI(L),QV_Object_Logon() END; return(0) ",
    };
    EXPECT_EQ(expected, lines);
    EXPECT_EQ(u"ユーザー", std::u16string(reinterpret_cast<const char16_t*>(buf)));
    EXPECT_EQ(0, pw);
}

}  // namespace
