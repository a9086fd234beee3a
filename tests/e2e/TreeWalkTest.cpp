// End-to-end tests: the library as a host sees it, through the twenty
// exported functions, on the sample store; and the trace log of a short walk.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

#include "e2e/StoreWalk.h"
#include "support/SampleStore.h"
#include "tqnralm.h"

namespace {

std::string Utf8(const QV_WCHAR* text) {
    return qvt::Utf8(std::u16string(text, text + std::char_traits<QV_WCHAR>::length(text)));
}

// The name or display name; "!code" when the call fails.
std::string Name(QV_OBJ obj, bool display = false) {
    auto get = display ? QV_Object_GetDisplayName : QV_Object_GetName;
    uint32_t len = 0;
    int32_t code = get(obj, nullptr, &len);
    std::vector<QV_WCHAR> buf(len + 1);
    if (code == QV_S_OK) code = get(obj, buf.data(), &len);
    return code == QV_S_OK ? Utf8(buf.data()) : "!" + std::to_string(code);
}

int32_t ClassOf(QV_OBJ obj) {
    int32_t n = 0;
    EXPECT_EQ(QV_S_OK, QV_Object_GetClass(obj, &n));
    return n;
}

// All children of one class, each with a reference the caller gives back.
std::vector<QV_OBJ> Children(QV_OBJ parent, int32_t nClass) {
    std::vector<QV_OBJ> out;
    QV_OBJ objs = nullptr, child = nullptr;
    if (QV_Object_GetChildObjects(parent, nClass, &objs) != QV_S_OK) return out;
    while (QV_Objects_GetNext(objs, &child) == QV_S_OK) out.push_back(child);
    QV_Object_Dispose(objs);
    return out;
}

void DisposeAll(const std::vector<QV_OBJ>& objs) {
    for (QV_OBJ o : objs) EXPECT_EQ(QV_S_OK, QV_Object_Dispose(o));
}

// The tree as lines "depth class name|display" ("|display" when it differs), walked depth first.
void Walk(QV_OBJ obj, int depth, std::vector<std::string>& lines) {
    const int32_t nClass = ClassOf(obj);
    const std::string name = Name(obj), display = Name(obj, true);
    lines.push_back(std::to_string(depth) + " " + std::to_string(nClass) + " " + name +
                    (display != name ? "|" + display : ""));
    static const std::vector<int32_t> kChildren[10] = {{}, {3}, {}, {4, 7}, {5}, {5, 6}, {}, {8}, {8, 9}, {}};
    for (int32_t child : kChildren[nClass]) {
        int32_t count = -5;
        ASSERT_EQ(QV_S_OK, QV_Object_GetChildCount(obj, child, &count));
        std::vector<QV_OBJ> items = Children(obj, child);
        EXPECT_EQ(count, static_cast<int32_t>(items.size()));
        for (QV_OBJ item : items) Walk(item, depth + 1, lines);
        DisposeAll(items);
    }
}

class EndToEnd : public ::testing::Test {
protected:
    void SetUp() override {
        qvt::BuildSampleStore(prefix);
        ASSERT_EQ(QV_S_OK, QV_InitLibrary());
        ASSERT_EQ(QV_S_OK, QV_GetRootObject(&root));
    }
    void TearDown() override {
        if (root != nullptr) QV_Object_Dispose(root);
        EXPECT_EQ(QV_S_OK, QV_ExitLibrary());
    }
    // The object at a path of child classes and indexes, with one reference;
    // each object keeps its parent chain alive, so the ones on the way go back.
    QV_OBJ At(const std::vector<std::pair<int32_t, size_t>>& path) {
        QV_OBJ current = root;
        for (auto [nClass, index] : path) {
            std::vector<QV_OBJ> items = Children(current, nClass);
            if (current != root) items.push_back(current);
            current = items.at(index);
            items.erase(items.begin() + static_cast<long>(index));
            DisposeAll(items);
        }
        return current;
    }

    qvt::WinePrefix prefix;
    QV_OBJ root = nullptr;
};

TEST_F(EndToEnd, WholeTreeOfTheSampleStore) {
    std::vector<std::string> lines;
    Walk(root, 0, lines);
    const std::vector<std::string> expected = {
        "0 1 |AL-Mail32", "1 3 山田太郎", "2 4 C:%5cAL-Mail%5cMailbox%5cAccount1|仕事", "3 5 プロジェクト",
        "4 5 見積もり", "5 6 <utf8@example.jp>|Reunion 日本語テスト", "5 6 <sjis@example.jp>|請求書について",
        "5 6 !-1", "4 5 空のフォルダ", "3 5 郵便受け", "3 5 送信箱", "4 6 <meeting@example.jp>|会議のお知らせ",
        "3 5 ごみ箱", "4 6 <meeting@example.jp>|会議のお知らせ", "2 4 C:%5cAL-Mail%5cMailbox%5cAccount2|個人",
        "3 5 家族 %231%2f2", "4 6 <weekend@example.jp>|週末の予定", "2 4 C:%5cAL-Mail%5cMailbox%5cAccount3|!-1",
        "2 7 ", "3 8 標準のアドレス帳", "4 8 友人", "5 8 学校", "6 9 teacher@example.jp|先生", "5 8 チーム",
        "6 9 a@example.jp|チーム", "6 9 b@example.jp|チーム", "5 9 sato@example.jp|佐藤",
        "4 9 hanako@example.jp|山田花子", "4 9 |no address here", "3 8 friends.txt", "4 8 同僚",
        "5 9 friend@example.jp|友達", "5 9 smith@example.jp|Smith, John; Jr.\\", "4 9 friend@example.jp|友達",
        "1 3 鈴木花子", "2 4 C:%5cData%5cHanako%5cMailbox%5cMain|メイン", "3 5 受信",
        "4 6 <address@example.jp>|住所録の更新", "2 7 ", "1 3 DEFAULT_USER3",
        "2 4 C:%5cData%5cHanako%5cMailbox%5cMain|メイン", "3 5 受信", "4 6 <address@example.jp>|住所録の更新", "2 7 ",
    };
    EXPECT_EQ(expected, lines);
}

TEST_F(EndToEnd, ChildClassesAndAttributesOfEachClass) {
    QV_OBJ user = At({{3, 0}}), account = At({{3, 0}, {4, 0}}), folder = At({{3, 0}, {4, 0}, {5, 2}}),
           message = At({{3, 0}, {4, 0}, {5, 2}, {6, 0}}), book = At({{3, 0}, {7, 0}}),
           address = At({{3, 0}, {7, 0}, {8, 0}, {9, 0}});
    // A class the object has, even when empty, counts; another is refused and the count stays.
    const std::tuple<QV_OBJ, int32_t, int32_t> cases[] = {
        {root, 4, -1}, {user, 5, -1}, {account, 6, 0}, {account, 7, 0}, {account, 3, -1}, {folder, 4, -1},
        {message, 6, -1}, {book, 9, 0}, {book, 5, -1}, {address, 9, -1}, {user, 7, 1}};
    for (auto [obj, nClass, expected] : cases) {
        int32_t count = -1, more = 1;  // QV_BOOL
        QV_OBJ objs = nullptr;
        const int32_t code = expected < 0 ? QV_E_INVALID_ARGUMENT : QV_S_OK;
        EXPECT_EQ(code, QV_Object_GetChildCount(obj, nClass, &count)) << ClassOf(obj) << "/" << nClass;
        EXPECT_EQ(expected, count) << ClassOf(obj) << "/" << nClass;
        ASSERT_EQ(code, QV_Object_GetChildObjects(obj, nClass, &objs));
        if (objs == nullptr) continue;
        EXPECT_EQ(QV_S_OK, QV_Objects_HasNext(objs, &more));
        EXPECT_EQ(expected > 0, more != 0);
        QV_Object_Dispose(objs);
    }
    for (QV_OBJ obj : {root, user, account, folder, message, book, address}) {
        uint32_t attr = 77;
        EXPECT_EQ(QV_S_OK, QV_Object_GetAttributes(obj, &attr));
        EXPECT_EQ(obj == folder ? QV_ATTR_MAILFOLDER : 0u, attr);
    }
    DisposeAll({address, book, message, folder, account, user});
}

// A fetch that failed is tried again; the text of a message ends at its first zero byte.
TEST_F(EndToEnd, MessageTextAndFailedFetches) {
    const std::string path = "C:\\AL-Mail\\Mailbox\\Account2\\00000005.box\\00000001.alm";
    prefix.Remove(path);
    QV_OBJ folder = At({{3, 0}, {4, 1}, {5, 0}}), message = At({{3, 0}, {4, 1}, {5, 0}, {6, 0}});
    QV_MAIL_DATA a{}, b{};
    EXPECT_EQ("!-1", Name(message, true));
    EXPECT_EQ(QV_E_ACCESS_DENIED, QV_MailMessage_GetData(message, &a));  // the reader's -2
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_MailMessage_GetData(folder, &b));
    EXPECT_TRUE(a.pszMailText == nullptr && b.pszMailText == nullptr) << "a host's record changed on a failed call";
    prefix.WriteFile(path, std::string("Subject: zero\r\n\r\nbefore\0after", 29));
    EXPECT_EQ("zero", Name(message, true));
    ASSERT_EQ(QV_S_OK, QV_MailMessage_GetData(message, &a));
    ASSERT_EQ(QV_S_OK, QV_MailMessage_GetData(message, &b));
    EXPECT_EQ("Subject: zero\r\n\r\nbefore", std::string(a.pszMailText, a.nMailTextLen));
    EXPECT_EQ(a.nMailTextLen, std::strlen(a.pszMailText));
    EXPECT_NE(a.pszMailText, b.pszMailText);
    a.pfnFree(a.pszMailText), b.pfnFree(b.pszMailText);
    DisposeAll({message, folder});
}

TEST_F(EndToEnd, AddressRecordHoldsTheAddressAlone) {
    QV_OBJ address = At({{3, 0}, {7, 0}, {8, 0}, {9, 0}}), message = At({{3, 0}, {4, 0}, {5, 2}, {6, 0}});
    QV_ADDRESS_DATA data;
    std::memset(&data, 0xAB, sizeof data);
    ASSERT_EQ(QV_S_OK, QV_Address_GetData(address, &data));
    ASSERT_TRUE(data.pfnRelease != nullptr && data.lpszEmailInternet != nullptr);
    EXPECT_EQ("hanako@example.jp", Utf8(data.lpszEmailInternet));
    // Every other word of the record is 0.
    const uintptr_t* words = reinterpret_cast<const uintptr_t*>(&data);
    for (size_t i = 1; i < 34; ++i) {
        EXPECT_EQ(i == offsetof(QV_ADDRESS_DATA, lpszEmailInternet) / sizeof(void*), words[i] != 0) << i;
    }
    EXPECT_TRUE(data.nExtraCount == 0 && data.pExtra == nullptr);
    data.pfnRelease(&data);
    data.pfnRelease = nullptr;
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Address_GetData(message, &data));
    EXPECT_EQ(nullptr, data.pfnRelease);
    DisposeAll({address, message});
}

TEST_F(EndToEnd, DisposalInAnyOrderUnwindsTheTree) {
    // Root, enumerator, user, account, folder: given back from the top, from the leaf, and mixed.
    for (const std::vector<int>& order : {std::vector<int>{0, 1, 2, 3, 4}, {4, 3, 2, 1, 0}, {2, 0, 4, 1, 3}}) {
        QV_OBJ handles[5] = {};
        ASSERT_EQ(QV_S_OK, QV_GetRootObject(&handles[0]));
        ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(handles[0], 3, &handles[1]));
        ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(handles[1], &handles[2]));
        handles[3] = At({{3, 0}, {4, 0}});
        handles[4] = At({{3, 0}, {4, 0}, {5, 0}});
        for (size_t i = 0; i < order.size(); ++i) {
            EXPECT_EQ(QV_S_OK, QV_Object_Dispose(handles[order[i]]));
            // What is still held keeps working.
            for (size_t k = i + 1; k < order.size(); ++k) EXPECT_NE(0u, Name(handles[order[k]]).rfind('!', 0));
        }
    }
}

// Two enumerators hand out the same objects; a book released to zero and listed again is the
// same object, as it belongs to its user.
TEST_F(EndToEnd, EnumeratorsShareObjectsAndBooksStay) {
    const std::vector<QV_OBJ> users = Children(root, 3), again = Children(root, 3), books = Children(users.at(0), 7);
    EXPECT_EQ(users, again);
    ASSERT_EQ(1u, books.size());
    DisposeAll(books);
    const std::vector<QV_OBJ> listed = Children(users[0], 7);
    EXPECT_EQ(books, listed);
    DisposeAll(listed);
    DisposeAll(users);
    DisposeAll(again);
}

TEST(EndToEndMachine, WithoutTheMailClient) {
    qvt::WinePrefix empty;
    QV_BOOL installed = 7;
    QV_OBJ root = nullptr;
    EXPECT_EQ(QV_S_OK, QV_IsMailerInstalled(&installed));
    EXPECT_EQ(0, installed);
    EXPECT_EQ(QV_E_UNEXPECTED, QV_InitLibrary());
    EXPECT_EQ(QV_S_OK, QV_ExitLibrary());
    EXPECT_EQ(QV_S_OK, QV_ExitLibrary());
    // The root needs no reader.
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&root));
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(root));
}

// Calls with their arguments and results, a note where an error is rounded, and
// reference counts that end where they began, as a host reads them back.
TEST(EndToEndLog, ShortWalk) {
    qvt::WinePrefix prefix;
    qvt::BuildSampleStore(prefix);
    const std::string path = prefix.Root() + "/walk.log";
    const std::u16string path16(path.begin(), path.end());
    ASSERT_EQ(QV_S_OK, QV_StartLogging(reinterpret_cast<const QV_WCHAR*>(path16.c_str())));
    ASSERT_EQ(QV_S_OK, QV_InitLibrary());
    QV_OBJ root = nullptr;
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&root));
    std::vector<QV_OBJ> users = Children(root, QV_CLASS_USER), accounts = Children(users.at(0), QV_CLASS_ACCOUNT);
    EXPECT_EQ("!-1", Name(accounts.at(2), true));  // no title
    DisposeAll(accounts);
    DisposeAll(users);
    QV_Object_Dispose(root);
    ASSERT_EQ(QV_S_OK, QV_ExitLibrary());
    // Times and source lines show as T and L, addresses as P; reference counts only by their balance.
    const std::regex pointer("[0-9A-F]{" + std::to_string(2 * sizeof(void*)) + "}");
    std::vector<std::string> lines;
    int balance = 0;
    for (const std::string& line : qvt::ReadTraceLog(path)) {
        balance += (line.find("= 0 → 1") != std::string::npos) - (line.find("= 1 → 0") != std::string::npos);
        if (line.rfind("[Q5V4ALM],6,", 0) != 0) lines.push_back(std::regex_replace(line.substr(10), pointer, "P"));
    }
    EXPECT_EQ(0, balance);
    ASSERT_GE(lines.size(), 9u);
    lines.erase(lines.begin() + 7, lines.end() - 2);
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "3,T,QvIAnalyzer(L),ログ出力を開始", "4,T,QvIAPI(L),QV_InitLibrary() BEGIN",
                         "5,T,QvIAPI(L),QV_InitLibrary() END; return(0) ", "4,T,QvIAPI(L),QV_GetRootObject() BEGIN",
                         "5,T,QvIAPI(L),QV_GetRootObject() END; return(0) *pqvObjRoot=P",
                         "4,T,QvIAPI(L),QV_Object_GetChildObjects(qvObj=P, nClass=3) BEGIN",
                         "5,T,QvIAPI(L),QV_Object_GetChildObjects() END; return(0) *pqvObjs=P",
                         "4,T,QvIAPI(L),QV_ExitLibrary() BEGIN", "3,T,QvIAnalyzer(L),ログ出力を終了"}));
}

}  // namespace

void Rename(qvt::WinePrefix& prefix, const std::string& from, const std::string& to) {
    std::filesystem::rename(qvt::HostFile(prefix.HostPath(from)), qvt::HostFile(prefix.HostPath(to)));
}

// A store that changes between two walks reads as one never walked before:
// each change is made to a store after a walk, and to a copy in another
// machine that no walk has seen.
TEST(EndToEndChangedStore, SecondWalkReadsTheStoreAsItIs) {
    static const std::string kBox = "C:\\AL-Mail\\Mailbox\\Account1\\00000001.box\\00000002.box";
    const struct { const char* name; void (*change)(qvt::WinePrefix&); } kChanges[] = {
        // The paths the reader asks by stay as the registry spells them.
        {"folder renamed in another case", [](qvt::WinePrefix& p) { Rename(p, "C:\\AL-Mail", "C:\\al-mail"); }},
        {"message renamed in another case",
         [](qvt::WinePrefix& p) { Rename(p, kBox + "\\00000010.alm", kBox + "\\00000010.ALM"); }},
        {"folder removed and recreated",
         [](qvt::WinePrefix& p) {
             p.Remove(kBox);
             qvt::StoreWriter w(p);
             w.FolderIni(kBox, "新しい箱", false);
             w.Messages(kBox, {qvt::MakeMessage("=?ISO-2022-JP?B?GyRCPzdHLyROJDQwJzsiGyhC?=", "<new@example.jp>", "x")},
                        11);
         }},
        {"message removed", [](qvt::WinePrefix& p) { p.Remove(kBox + "\\00000011.alm"); }},
    };
    for (const auto& c : kChanges) {
        std::vector<std::string> expected, after;
        {
            qvt::WinePrefix fresh;
            qvt::BuildSampleStore(fresh);
            c.change(fresh);
            expected = qvt::StoreWalker().Run().lines;
        }
        qvt::WinePrefix walked;
        qvt::BuildSampleStore(walked);
        qvt::StoreWalker().Run();  // the process now knows its folders
        c.change(walked);
        after = qvt::StoreWalker().Run().lines;
        EXPECT_EQ(expected, after) << c.name;
        EXPECT_GT(after.size(), 30u) << c.name;
    }
}
