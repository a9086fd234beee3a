// The table of the assistant's texts (see Strings.h).
#include "Strings.h"

namespace tqnralm {
namespace gui {

namespace {

struct Row {
    Text id;
    const char* ja;
    const char* en;
};

// In the order of Text; a test checks that each row stands at its place.
const Row kRows[] = {
    {Text::kTitle, "AL-Mail32 からの引っ越し", "Moving out of AL-Mail32"},
    {Text::kNext, "次へ(&N) >", "&Next >"},
    {Text::kCancel, "キャンセル", "Cancel"},
    {Text::kClose, "閉じる", "Close"},
    {Text::kStepFound, "1. 見つかったメール", "1. Mail found"},
    {Text::kStepWhere, "2. 書き出し先と形式", "2. Where and how"},
    {Text::kStepExport, "3. 書き出し中", "3. Exporting"},
    {Text::kStepDone, "4. 完了", "4. Done"},
    {Text::kSearching, "このコンピューターのメールを探しています...", "Looking for the mail on this computer..."},
    {Text::kReadOnly, "AL-Mail32 のデータは読むだけで、変更しません。",
     "AL-Mail32's data is only read, never changed."},
    {Text::kNotInstalled, "このコンピューターには AL-Mail32 が見つかりませんでした。",
     "AL-Mail32 was not found on this computer."},
    {Text::kFoundTotals, "ユーザー %1 人、フォルダー %2 個、メール %3 通",
     "%1 users, %2 folders, %3 messages"},
    {Text::kDestination, "書き出し先のフォルダー(&D):", "&Destination folder:"},
    {Text::kBrowse, "参照(&B)...", "&Browse..."},
    {Text::kFormat, "形式", "Format"},
    {Text::kFormatMbox, "&Thunderbird (mbox)", "&Thunderbird (mbox)"},
    {Text::kFormatMboxHint, "Thunderbird の「ローカルフォルダー」にそのまま読み込めます。",
     "Opens as Thunderbird's Local Folders."},
    {Text::kFormatMaildir, "&Maildir", "&Maildir"},
    {Text::kFormatMaildirHint, "Dovecot などのメールサーバーや mutt 向けです。",
     "For mail servers such as Dovecot, and for mutt."},
    {Text::kFormatEml, "&EML", "&EML"},
    {Text::kFormatEmlHint, "1 通ずつ 1 ファイル。Outlook やほかのメールソフトで開けます。",
     "One file per message, for Outlook and other mail programs."},
    {Text::kAddressBooks, "アドレス帳も書き出す(&A)", "Export the &address books too"},
    {Text::kFreeSpace, "書き出すメール %1 通。書き出し先の空き %2 MB。",
     "%1 messages to write; %2 MB free on the destination."},
    {Text::kChooseFolder, "書き出し先のフォルダーを選んでください。", "Choose the folder to export into."},
    {Text::kNeedFolder, "書き出し先のフォルダーを入力してください。", "Enter the folder to export into."},
    {Text::kProgress, "%1 / %2 通、%3 MB、毎秒 %4 通、残り %5",
     "%1 of %2 messages, %3 MB, %4 messages/s, %5 left"},
    {Text::kStopping, "止めています...", "Stopping..."},
    {Text::kDoneTotals, "書き出し %1 通、失敗 %2 通、読めなかったもの %3 通",
     "%1 written, %2 failed, %3 unread"},
    {Text::kDoneOk, "すべてのメールを書き出しました。", "All mail was exported."},
    {Text::kDoneProblems, "読めなかったものがあります。一覧は manifest.json にあります。",
     "Some items could not be read; manifest.json lists them."},
    {Text::kDoneStopped, "止めました。同じフォルダーでもう一度始めると続きから書き出します。",
     "Stopped. Start again on the same folder to go on from there."},
    {Text::kDoneFailed, "書き出せませんでした (コード %1)。", "The export failed (code %1)."},
    {Text::kOpenFolder, "フォルダーを開く(&O)", "&Open the folder"},
};

static_assert(sizeof kRows / sizeof kRows[0] == static_cast<size_t>(Text::kCount), "a row for every text");

bool japanese = false;

}  // namespace

void ChooseLanguage(uint16_t uiLanguage) { japanese = (uiLanguage & 0x3FF) == 0x11; }
bool Japanese() { return japanese; }

const char* Str(Text id) {
    const Row& row = kRows[static_cast<size_t>(id)];
    return japanese ? row.ja : row.en;
}

std::string Format(Text id, std::initializer_list<std::string> args) {
    const std::string text = Str(id);
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t n = i + 1 < text.size() ? static_cast<size_t>(text[i + 1] - '1') : args.size();
        if (text[i] == '%' && n < args.size()) {
            out += args.begin()[n];
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace gui
}  // namespace tqnralm
