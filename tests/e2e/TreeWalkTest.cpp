// End-to-end tests: the library as a host sees it, through the twenty
// exported functions, on generated stores.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/SampleStore.h"
#include "tqnralm.h"

namespace {

std::string Utf8(const std::vector<QV_WCHAR>& text) {
    std::u16string units;
    for (size_t i = 0; i < text.size() && text[i] != 0; ++i) units.push_back(static_cast<char16_t>(text[i]));
    return qvt::Utf8(units);
}

std::string Name(QV_OBJ obj, bool display = false) {
    uint32_t len = 0;
    int32_t code = display ? QV_Object_GetDisplayName(obj, nullptr, &len) : QV_Object_GetName(obj, nullptr, &len);
    if (code != QV_S_OK) return "!" + std::to_string(code);
    std::vector<QV_WCHAR> buf(len + 1);
    code = display ? QV_Object_GetDisplayName(obj, buf.data(), &len) : QV_Object_GetName(obj, buf.data(), &len);
    return code == QV_S_OK ? Utf8(buf) : "!" + std::to_string(code);
}

int32_t ClassOf(QV_OBJ obj) {
    int32_t n = 0;
    EXPECT_EQ(QV_S_OK, QV_Object_GetClass(obj, &n));
    return n;
}

// All children of one class, each with a reference the caller gives back.
std::vector<QV_OBJ> Children(QV_OBJ parent, int32_t nClass) {
    std::vector<QV_OBJ> out;
    QV_OBJ objs = nullptr;
    if (QV_Object_GetChildObjects(parent, nClass, &objs) != QV_S_OK) return out;
    QV_OBJ child = nullptr;
    while (QV_Objects_GetNext(objs, &child) == QV_S_OK) out.push_back(child);
    QV_Object_Dispose(objs);
    return out;
}

void DisposeAll(const std::vector<QV_OBJ>& objs) {
    for (QV_OBJ o : objs) EXPECT_EQ(QV_S_OK, QV_Object_Dispose(o));
}

// The tree as lines "depth class name|display", walked depth first.
void Walk(QV_OBJ obj, int depth, std::vector<std::string>& lines) {
    const int32_t nClass = ClassOf(obj);
    lines.push_back(std::to_string(depth) + " " + std::to_string(nClass) + " " + Name(obj) + "|" + Name(obj, true));
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
    // The object at a path of child indexes and classes, with a reference.
    QV_OBJ At(const std::vector<std::pair<int32_t, size_t>>& path) {
        QV_OBJ current = root;
        std::vector<QV_OBJ> held;
        for (auto [nClass, index] : path) {
            std::vector<QV_OBJ> items = Children(current, nClass);
            EXPECT_LT(index, items.size());
            if (index >= items.size()) break;
            current = items[index];
            items.erase(items.begin() + static_cast<long>(index));
            DisposeAll(items);
            held.push_back(current);
        }
        // Each object keeps its parent chain alive; only the last is kept.
        held.pop_back();
        DisposeAll(held);
        return current;
    }

    qvt::WinePrefix prefix;
    QV_OBJ root = nullptr;
};

TEST_F(EndToEnd, WholeTreeOfTheSampleStore) {
    std::vector<std::string> lines;
    Walk(root, 0, lines);
    const std::vector<std::string> expected = {
        "0 1 |AL-Mail32",
        "1 3 山田太郎|山田太郎",
        "2 4 C:%5cAL-Mail%5cMailbox%5cAccount1|仕事",
        "3 5 プロジェクト|プロジェクト",
        "4 5 見積もり|見積もり",
        "5 6 <utf8@example.jp>|Reunion 日本語テスト",
        "5 6 <sjis@example.jp>|請求書について",
        "5 6 !-1|!-1",
        "4 5 空のフォルダ|空のフォルダ",
        "3 5 郵便受け|郵便受け",
        "3 5 送信箱|送信箱",
        "4 6 <meeting@example.jp>|会議のお知らせ",
        "3 5 ごみ箱|ごみ箱",
        "4 6 <meeting@example.jp>|会議のお知らせ",
        "2 4 C:%5cAL-Mail%5cMailbox%5cAccount2|個人",
        "3 5 家族 %231%2f2|家族 %231%2f2",
        "4 6 <weekend@example.jp>|週末の予定",
        "2 4 C:%5cAL-Mail%5cMailbox%5cAccount3|!-1",
        "2 7 |",
        "3 8 標準のアドレス帳|標準のアドレス帳",
        "4 8 友人|友人",
        "5 8 学校|学校",
        "6 9 teacher@example.jp|先生",
        "5 8 チーム|チーム",
        "6 9 a@example.jp|チーム",
        "6 9 b@example.jp|チーム",
        "5 9 sato@example.jp|佐藤",
        "4 9 hanako@example.jp|山田花子",
        "4 9 |no address here",
        "3 8 friends.txt|friends.txt",
        "4 9 friend@example.jp|友達",
        "1 3 鈴木花子|鈴木花子",
        "2 4 C:%5cData%5cHanako%5cMailbox%5cMain|メイン",
        "3 5 受信|受信",
        "4 6 <address@example.jp>|住所録の更新",
        "2 7 |",
        "1 3 DEFAULT_USER3|DEFAULT_USER3",
        "2 4 C:%5cData%5cHanako%5cMailbox%5cMain|メイン",
        "3 5 受信|受信",
        "4 6 <address@example.jp>|住所録の更新",
        "2 7 |",
    };
    EXPECT_EQ(expected, lines);
}

TEST_F(EndToEnd, ChildClassesAndAttributesOfEachClass) {
    QV_OBJ user = At({{3, 0}});
    QV_OBJ account = At({{3, 0}, {4, 0}});
    QV_OBJ folder = At({{3, 0}, {4, 0}, {5, 2}});
    QV_OBJ message = At({{3, 0}, {4, 0}, {5, 2}, {6, 0}});
    QV_OBJ book = At({{3, 0}, {7, 0}});
    QV_OBJ address = At({{3, 0}, {7, 0}, {8, 0}, {9, 0}});
    struct Case {
        QV_OBJ obj;
        int32_t nClass;
        int32_t code;
        int32_t count;  // when code is 0
    };
    const Case cases[] = {
        {root, 4, QV_E_INVALID_ARGUMENT, 0}, {user, 5, QV_E_INVALID_ARGUMENT, 0},
        {account, 6, QV_S_OK, 0},            {account, 7, QV_S_OK, 0},
        {account, 3, QV_E_INVALID_ARGUMENT, 0}, {folder, 4, QV_E_INVALID_ARGUMENT, 0},
        {message, 6, QV_E_INVALID_ARGUMENT, 0}, {book, 9, QV_S_OK, 0},
        {book, 5, QV_E_INVALID_ARGUMENT, 0}, {address, 9, QV_E_INVALID_ARGUMENT, 0},
        {user, 7, QV_S_OK, 1},
    };
    for (const Case& c : cases) {
        int32_t count = 99;
        EXPECT_EQ(c.code, QV_Object_GetChildCount(c.obj, c.nClass, &count)) << ClassOf(c.obj) << "/" << c.nClass;
        EXPECT_EQ(c.code == QV_S_OK ? c.count : 99, count);
    }
    // Enumerators of classes that exist but stay empty.
    for (auto [obj, nClass] : {std::pair<QV_OBJ, int32_t>{account, 6}, {account, 7}, {book, 9}}) {
        QV_OBJ objs = nullptr;
        ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(obj, nClass, &objs));
        QV_BOOL more = 1;
        EXPECT_EQ(QV_S_OK, QV_Objects_HasNext(objs, &more));
        EXPECT_EQ(0, more);
        QV_Object_Dispose(objs);
    }
    const std::pair<QV_OBJ, uint32_t> attributes[] = {{root, 0}, {user, 0}, {account, 0}, {folder, 0x200},
                                                      {message, 0}, {book, 0}, {address, 0}};
    for (auto [obj, expected] : attributes) {
        uint32_t attr = 77;
        EXPECT_EQ(QV_S_OK, QV_Object_GetAttributes(obj, &attr));
        EXPECT_EQ(expected, attr);
    }
    DisposeAll({address, book, message, folder, account, user});
}

TEST_F(EndToEnd, MessageTextIsTheFileUpToItsFirstZeroByte) {
    std::string bytes = "Subject: zero\r\n\r\nbefore";
    bytes.push_back('\0');
    bytes += "after";
    qvt::StoreWriter(prefix).Raw("C:\\AL-Mail\\Mailbox\\Account2\\00000005.box\\00000001.alm", bytes);
    QV_OBJ message = At({{3, 0}, {4, 1}, {5, 0}, {6, 0}});
    QV_MAIL_DATA a{}, b{};
    ASSERT_EQ(QV_S_OK, QV_MailMessage_GetData(message, &a));
    ASSERT_EQ(QV_S_OK, QV_MailMessage_GetData(message, &b));
    EXPECT_EQ("Subject: zero\r\n\r\nbefore", std::string(a.pszMailText));
    EXPECT_EQ(std::strlen("Subject: zero\r\n\r\nbefore"), a.nMailTextLen);
    EXPECT_NE(a.pszMailText, b.pszMailText);
    a.pfnFree(a.pszMailText);
    b.pfnFree(b.pszMailText);
    // The record of a host stays as it was on a refused call.
    QV_MAIL_DATA untouched{};
    QV_OBJ folder = At({{3, 0}, {4, 1}, {5, 0}});
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_MailMessage_GetData(folder, &untouched));
    EXPECT_EQ(nullptr, untouched.pszMailText);
    DisposeAll({message, folder});
}

TEST_F(EndToEnd, AddressRecordHoldsTheAddressAlone) {
    QV_OBJ address = At({{3, 0}, {7, 0}, {8, 0}, {9, 0}});
    for (int round = 0; round < 2; ++round) {
        QV_ADDRESS_DATA data;
        std::memset(&data, 0xAB, sizeof data);
        ASSERT_EQ(QV_S_OK, QV_Address_GetData(address, &data));
        ASSERT_NE(nullptr, data.pfnRelease);
        ASSERT_NE(nullptr, data.lpszEmailInternet);
        std::vector<QV_WCHAR> text(data.lpszEmailInternet, data.lpszEmailInternet + 18);
        EXPECT_EQ("hanako@example.jp", Utf8(text));
        // Every other word of the record is 0.
        const uintptr_t* words = reinterpret_cast<const uintptr_t*>(&data);
        for (size_t i = 1; i < 34; ++i) {
            if (i != offsetof(QV_ADDRESS_DATA, lpszEmailInternet) / sizeof(void*)) {
                EXPECT_EQ(0u, words[i]) << i;
            }
        }
        EXPECT_EQ(0, data.nExtraCount);
        EXPECT_EQ(nullptr, data.pExtra);
        data.pfnRelease(&data);
    }
    QV_ADDRESS_DATA data{};
    data.pfnRelease = nullptr;
    QV_OBJ message = At({{3, 0}, {4, 0}, {5, 2}, {6, 0}});
    EXPECT_EQ(QV_E_INVALID_ARGUMENT, QV_Address_GetData(message, &data));
    EXPECT_EQ(nullptr, data.pfnRelease);
    DisposeAll({address, message});
}

TEST_F(EndToEnd, DisposalInEveryOrderUnwindsTheTree) {
    // Root, enumerator, user, account, folder: every order of giving them back.
    std::vector<int> order = {0, 1, 2, 3, 4};
    do {
        QV_OBJ r = nullptr, users = nullptr, user = nullptr, account = nullptr, folder = nullptr;
        ASSERT_EQ(QV_S_OK, QV_GetRootObject(&r));
        ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(r, 3, &users));
        ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(users, &user));
        account = At({{3, 0}, {4, 0}});
        folder = At({{3, 0}, {4, 0}, {5, 0}});
        QV_OBJ handles[] = {r, users, user, account, folder};
        bool held[] = {true, true, true, true, true};
        for (int i : order) {
            EXPECT_EQ(QV_S_OK, QV_Object_Dispose(handles[i]));
            held[i] = false;
            // What is still held keeps working.
            for (int k = 0; k < 5; ++k) {
                uint32_t len = 0;
                if (held[k]) {
                    EXPECT_EQ(QV_S_OK, QV_Object_GetName(handles[k], nullptr, &len)) << k;
                }
            }
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(EndToEnd, EnumeratorsShareObjectsAndBooksStay) {
    QV_OBJ e1 = nullptr, e2 = nullptr, u1 = nullptr, u2 = nullptr;
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(root, 3, &e1));
    ASSERT_EQ(QV_S_OK, QV_Object_GetChildObjects(root, 3, &e2));
    ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(e1, &u1));
    ASSERT_EQ(QV_S_OK, QV_Objects_GetNext(e2, &u2));
    EXPECT_EQ(u1, u2);
    // The book belongs to its user: released to zero and listed again, it is
    // the same object.
    std::vector<QV_OBJ> books = Children(u1, 7);
    ASSERT_EQ(1u, books.size());
    QV_OBJ book = books[0];
    DisposeAll(books);
    std::vector<QV_OBJ> again = Children(u1, 7);
    ASSERT_EQ(1u, again.size());
    EXPECT_EQ(book, again[0]);
    DisposeAll(again);
    DisposeAll({u1, u2, e1, e2});
}

TEST_F(EndToEnd, FailedFetchesAreTriedAgain) {
    const std::string path = "C:\\AL-Mail\\Mailbox\\Account2\\00000005.box\\00000001.alm";
    const std::string saved = qvt::ReadHostFile(prefix.HostPath(path));
    prefix.Remove(path);
    QV_OBJ message = At({{3, 0}, {4, 1}, {5, 0}, {6, 0}});
    uint32_t len = 0;
    EXPECT_EQ(QV_E_UNEXPECTED, QV_Object_GetDisplayName(message, nullptr, &len));
    QV_MAIL_DATA data{};
    EXPECT_NE(QV_S_OK, QV_MailMessage_GetData(message, &data));
    EXPECT_EQ(nullptr, data.pszMailText);
    // The file comes back: the same object now answers.
    prefix.WriteFile(path, saved);
    EXPECT_EQ("週末の予定", Name(message, true));
    QV_Object_Dispose(message);
}

TEST(EndToEndMachine, WithoutTheMailClient) {
    qvt::WinePrefix empty;
    QV_BOOL installed = 7;
    EXPECT_EQ(QV_S_OK, QV_IsMailerInstalled(&installed));
    EXPECT_EQ(0, installed);
    EXPECT_EQ(QV_E_UNEXPECTED, QV_InitLibrary());
    EXPECT_EQ(QV_S_OK, QV_ExitLibrary());
    EXPECT_EQ(QV_S_OK, QV_ExitLibrary());
    // The root needs no reader; asking it for users then fails cleanly.
    QV_OBJ root = nullptr;
    ASSERT_EQ(QV_S_OK, QV_GetRootObject(&root));
    EXPECT_EQ(QV_S_OK, QV_Object_Dispose(root));
}

}  // namespace
