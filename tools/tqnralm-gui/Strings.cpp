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
    {Text::kStepSearching, "1. メールを探しています", "1. Looking for mail"},
    {Text::kStepFound, "1. 見つかったメール", "1. Mail found"},
    {Text::kStepNotFound, "1. メールが見つかりません", "1. No mail found"},
    {Text::kStepChooseUser, "1. ユーザーを選ぶ", "1. Choose a user"},
    {Text::kStepWhere, "2. 書き出し先と形式", "2. Where and how"},
    {Text::kStepExport, "3. 書き出し中", "3. Exporting"},
    {Text::kStepDone, "4. 完了", "4. Done"},
    {Text::kStepStopped, "4. 中止", "4. Stopped"},
    {Text::kStepNotFinished, "4. 未完了", "4. Not finished"},
    {Text::kSearching, "このコンピューターのメールを探しています...", "Looking for the mail on this computer..."},
    {Text::kReadOnly, "AL-Mail32 のデータは読むだけで、変更しません。",
     "AL-Mail32's data is only read, never changed."},
    {Text::kNotInstalled, "このコンピューターには AL-Mail32 が見つかりませんでした。",
     "AL-Mail32 was not found on this computer."},
    {Text::kFoundTotals, "ユーザー %1 人、フォルダー %2 個、メール %3 通、アドレス帳 %4 冊、アドレス %5 件",
     "%1 {user|users}, %2 {folder|folders}, %3 {message|messages}, %4 {address book|address books}, "
     "%5 {address|addresses}"},
    {Text::kBookRow, "%1 (アドレス %2 件)", "%1 (%2 {address|addresses})"},
    {Text::kBookSame, "%1 (ほかのアドレス帳と同じ内容。1 回だけ書き出します)",
     "%1 (the same as another book; written once)"},
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
    {Text::kUsers, "書き出すユーザー(&U):", "&Users to export:"},
    {Text::kNoUsers, "ユーザーを 1 人以上選んでください。", "Choose at least one user."},
    {Text::kCounting, "書き出す量を数えています... 書き出し先の空き %1 MB。",
     "Counting what the export will write... %1 MB free on the destination."},
    {Text::kPlanTotals, "書き出すメール %1 通、%2 MB。書き出し先の空き %3 MB。",
     "%1 {message|messages}, %2 MB to write; %3 MB free on the destination."},
    {Text::kShortOfSpace, "空きが %1 MB 足りません。ほかの書き出し先を選ぶか、空きを作ってください。",
     "The destination is %1 MB short of space: choose another folder or free some space."},
    {Text::kChooseFolder, "書き出し先のフォルダーを選んでください。", "Choose the folder to export into."},
    {Text::kNeedFolder, "書き出し先のフォルダーを入力してください。", "Enter the folder to export into."},
    {Text::kProgress, "%1 / %2 通、%3 MB、毎秒 %4 通、残り %5",
     "%1 of %2 {message|messages}, %3 MB, %4 {message|messages}/s, %5 left"},
    {Text::kFolderNow, "書き込み中: %1", "Writing: %1"},
    {Text::kStopping, "止めています...", "Stopping..."},
    {Text::kDoneTotals, "書き出し %1 通、失敗 %2 通、読めなかったもの %3 通",
     "%1 written, %2 failed, %3 unread"},
    {Text::kDoneOk, "選んだメールをすべて書き出しました。", "All the chosen mail was exported."},
    {Text::kDoneProblems,
     "読めなかったものがあります (manifest.json にも記録)。ダブルクリックでその場所を開きます。",
     "Some items could not be read (manifest.json lists them too). Double-click one to show its place."},
    {Text::kDoneStopped, "止めました。同じフォルダーでもう一度始めると続きから書き出します。",
     "Stopped. Start again on the same folder to go on from there."},
    {Text::kDoneOutput,
     "書き出し先に書き込めませんでした (ディスクがいっぱい、権限がない、など)。"
     "直してから同じフォルダーでもう一度始めると、続きから書き出します。",
     "The destination could not be written (a full disk, no permission, ...). "
     "Once that is mended, start again on the same folder: the export goes on from there."},
    {Text::kDoneFailed, "書き出せませんでした (コード %1)。", "The export failed (code %1)."},
    {Text::kProblemRow, "%1 %2 (コード %3)", "%1 %2 (code %3)"},
    {Text::kItemUser, "ユーザー", "user"},
    {Text::kItemAccount, "アカウント", "account"},
    {Text::kItemFolder, "フォルダー", "folder"},
    {Text::kItemMessage, "メール", "message"},
    {Text::kOpenFolder, "フォルダーを開く(&O)", "&Open the folder"},
    {Text::kThunderbird, "Thunderbird への読み込み方(&T)", "Into &Thunderbird"},
    {Text::kThunderbirdSteps,
     "Thunderbird に読み込むには (Thunderbird (mbox) 形式で書き出したとき):\r\n"
     "1. Thunderbird を終了します。\r\n"
     "2. エクスプローラーのアドレス欄に %APPDATA%\\Thunderbird\\Profiles と入力して Enter を押し、"
     "名前に .default を含むフォルダーの中の Mail\\Local Folders を開きます。\r\n"
     "3. %1 の中の <ユーザー>\\<アカウント> フォルダーを、そこへ「<アカウント>.sbd」という名前でコピーし、"
     "その横に拡張子のない空のファイル「<アカウント>」を作ります。\r\n"
     "   (または <アカウント> フォルダーの中の mbox ファイルをそのまま Local Folders へコピーします。)\r\n"
     "4. Thunderbird を起動すると、ローカルフォルダーの下にアカウントがフォルダーとして現れ、"
     "その下にメールのフォルダーが並びます。\r\n"
     "アドオン ImportExportTools NG でも mbox ファイルを 1 つずつ読み込めます (mbox ファイルをインポート)。\r\n\r\n"
     "アドレス帳: Thunderbird の [ツール] > [インポート] > [アドレス帳] で、<ユーザー>\\addresses の "
     ".ldif ファイルを選びます (メーリングリストと読みがなも残ります)。.groups.vcf は読み込まないでください。",
     "To open the mail in Thunderbird (exported as Thunderbird (mbox)):\r\n"
     "1. Quit Thunderbird.\r\n"
     "2. Type %APPDATA%\\Thunderbird\\Profiles into Explorer's address bar, press Enter, and open "
     "Mail\\Local Folders in the folder whose name holds .default.\r\n"
     "3. Copy each <user>\\<account> folder of %1 there under the name \"<account>.sbd\", and beside it "
     "make an empty file \"<account>\" without an extension.\r\n"
     "   (Or copy the mbox files inside the <account> folder straight into Local Folders.)\r\n"
     "4. Start Thunderbird: the account shows as a folder of Local Folders, with its mail folders below it.\r\n"
     "The add-on ImportExportTools NG also imports each mbox file (Import mbox file).\r\n\r\n"
     "Address books: in Thunderbird, Tools > Import > Address Books, choose the .ldif file in "
     "<user>\\addresses (it keeps the mailing lists and the readings). Never import the .groups.vcf."},
    {Text::kReadDisk, "古い Windows のディスクを選ぶ(&W)...", "Choose an old &Windows disk..."},
    {Text::kReadDiskInstead, "代わりに古いディスクから読む(&W)...", "Read an old &Windows disk instead..."},
    {Text::kNotInstalledHint,
     "古いパソコンのディスクを USB ケースなどでつないでいれば、そこからメールを読めます。"
     "そのディスクのいちばん上のフォルダー (「Windows」と「Users」のフォルダーがある所) を選んでください。"
     "ディスクは読むだけで、変更しません。",
     "If the old PC's disk is connected (in a USB case, for example), the mail can be read from it: "
     "choose the disk's top folder, the one that holds the folders \"Windows\" and \"Users\". "
     "The disk is only read, never changed."},
    {Text::kDrivePickerTitle, "古いディスクのいちばん上のフォルダー (Windows と Users がある所) を選んでください",
     "Choose the old disk's top folder (the one holding Windows and Users)"},
    {Text::kDriveSearching, "古いディスク %1 を調べています...", "Looking at the old disk %1..."},
    {Text::kDriveReading, "古いディスク %1 の Windows ユーザー「%2」のメールです。ディスクは読むだけで、変更しません。",
     "The mail of Windows user \"%2\" on the old disk %1. The disk is only read, never changed."},
    {Text::kDriveNotADrive, "「%1」は Windows のディスクではありません (Windows のレジストリがありません)。",
     "\"%1\" is not a Windows disk (it holds no Windows registry)."},
    {Text::kDriveHintRoot,
     "ディスクのいちばん上のフォルダー (「Windows」と「Users」または「Documents and Settings」がある所) "
     "を選んでください。",
     "Choose the disk's top folder: the one that holds the folders \"Windows\" and \"Users\" "
     "(or \"Documents and Settings\")."},
    {Text::kDriveNoSuchUser, "このディスクには Windows ユーザー「%1」がいません。",
     "There is no Windows user \"%1\" on this disk."},
    {Text::kDriveHintUser, "ほかのユーザーか、ほかのディスクを選んでください。", "Choose another user or another disk."},
    {Text::kDriveSeveral, "このディスクでは何人かの Windows ユーザーが AL-Mail32 を使っていました。",
     "Several Windows users of this disk used AL-Mail32."},
    {Text::kDriveHintSeveral, "メールを読むユーザーを選んで、[このユーザーを読む] を押してください。",
     "Choose the user whose mail to read, then press \"Read this user\"."},
    {Text::kDriveNoUser, "このディスクには AL-Mail32 の設定を持つ Windows ユーザーがいません。",
     "No Windows user on this disk has AL-Mail32's settings."},
    {Text::kDriveHintOtherDisk, "AL-Mail32 を使っていたパソコンのディスクか、確かめてください。",
     "Check that this is the disk of the PC that ran AL-Mail32."},
    {Text::kDriveUnreadable,
     "このディスクのレジストリ (Windows の設定のファイル) が読めません。ディスクが傷んでいるか、コピーが途中で切れています。",
     "The disk's registry (the files of Windows' settings) cannot be read: the disk is damaged, or the copy is "
     "incomplete."},
    {Text::kDriveNotFound, "このディスクの設定が指す場所に AL-Mail32 のメールが見つかりませんでした。",
     "AL-Mail32's mail was not found where this disk's settings put it."},
    {Text::kDriveHintDamaged, "ディスクを調べるか、もう一度コピーしてください。", "Check the disk, or copy it again."},
    {Text::kReadProfile, "このユーザーを読む(&R)", "&Read this user"},
    {Text::kDriveDetails, "詳しく:\n%1", "Details:\n%1"},
    {Text::kReadHere, "このコンピューターに戻る(&C)", "Back to this &computer"},
    {Text::kReadOtherDisk, "ほかのディスクを選ぶ(&W)...", "Another &Windows disk..."},
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
    bool one = false;  // the placeholder filled last was "1"
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t n = i + 1 < text.size() ? static_cast<size_t>(text[i + 1] - '1') : args.size();
        const size_t bar = text[i] == '{' ? text.find('|', i) : std::string::npos;
        const size_t end = bar != std::string::npos ? text.find('}', bar) : std::string::npos;
        if (text[i] == '%' && n < args.size()) {
            out += args.begin()[n];
            one = args.begin()[n] == "1";
            ++i;
        } else if (end != std::string::npos) {
            out += one ? text.substr(i + 1, bar - i - 1) : text.substr(bar + 1, end - bar - 1);
            i = end;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace gui
}  // namespace tqnralm
