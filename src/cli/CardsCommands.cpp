// The commands of velomind-cards. None of them waits for the reader of its output, or for the
// writer of its input, while it holds a lock on the store: what comes through a pipe is read to its
// end first, and what is printed is complete, or goes card by card, before the first byte leaves.

#include "cli/CardsCommands.h"

#include <unistd.h>
#include <wx/ffile.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/utils.h>
#include <wx/wfstream.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Files.h"
#include "base/Process.h"
#include "base/SingleInstance.h"
#include "base/Text.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "cli/CardsOptions.h"
#include "cli/CardsOutput.h"
#include "exchange/Export.h"
#include "exchange/ImportPass.h"
#include "files/StoreBackup.h"
#include "files/StoreCheck.h"
#include "files/StoreFiles.h"
#include "files/StoreRepair.h"
#include "formats/Table.h"
#include "formats/TextEncoding.h"
#include "formats/TextSink.h"
#include "formats/decks/DeckSurvey.h"
#include "media/MediaFolder.h"
#include "reviews/ReviewFigures.h"
#include "store/CardRow.h"
#include "store/Database.h"
#include "store/SearchQuery.h"
#include "sync/Exchange.h"

namespace {

namespace fs = std::filesystem;

int Refuse(const wxString& text) {
    PrintError(text);
    return kCardsRefused;
}

int FailStore(const wxString& text) {
    PrintError(text);
    return kCardsStoreFailed;
}

// The process has one thread, so a failure ends it where it happens.
class EndingReport : public FatalErrorReport {
  public:
    void Report(const wxString& text) override {
        PrintError(text);
        EndProcess(kExitFatal);
    }
    void DeliverPending() override {}
};

// The store joins the worker of an upgrade itself.
class SilentWait : public UpgradeWait {
  public:
    void WaitFor(const Job& /*worker*/) override {}
};

// The store that a command works on.
class Store {
  public:
    enum class Use { kRead, kWrite, kWriteOrCreate };

    explicit Store(const wxString& path);

    // Opens the store. Returns kCardsDone, or prints the reason and returns the exit code.
    int Open(Use use);
    Database& GetDatabase() { return mDatabase; }
    const wxString& GetPath() const { return mPath; }
    bool Exists() const { return wxFileName::FileExists(mPath); }
    // Keeps the program from opening the store while this object lives. Prints the reason and
    // returns false when the program has it open already.
    bool KeepProgramOut();

  private:
    wxString mPath;
    // True for the store that the program itself opens.
    bool mIsProgramsStore;
    SingleInstance mInstance;
    EndingReport mReport;
    Database mDatabase;
};

Store::Store(const wxString& path) : mInstance(FindRuntimeDirectory()), mDatabase(mReport) {
    bool isStored = false;
    const wxString chosen = GetChosenStorePath(isStored);
    mPath = MakeStorePathFull(path.empty() ? chosen : path);
    mIsProgramsStore = IsSameFile(mPath, chosen);
}

bool Store::KeepProgramOut() {
    if (!mIsProgramsStore) {
        return true;
    }
    switch (mInstance.BecomeFirst(SingleInstance::Greeting::None)) {
        case SingleInstance::Standing::First:
            return true;
        case SingleInstance::Standing::Second:
            PrintError(wxString::Format(
                _("Velomind has the store \"%s\" open. Nothing was changed."), mPath));
            return false;
        default:
            PrintError(mInstance.GetProblem());
            return false;
    }
}

int Store::Open(Use use) {
    if (use != Use::kWriteOrCreate && !Exists()) {
        return FailStore(wxString::Format(_("There is no store \"%s\"."), mPath));
    }
    if (use != Use::kRead && !KeepProgramOut()) {
        return kCardsStoreFailed;
    }
    SilentWait wait;
    // A command that only reads creates and upgrades nothing.
    const int result =
        use == Use::kRead ? mDatabase.OpenToRead(mPath) : mDatabase.Open(mPath, wait);
    if (result < 0) {
        return FailStore(wxString::Format(_("The store \"%s\" cannot be opened: %s"), mPath,
                                          mDatabase.GetLastError()));
    }
    return kCardsDone;
}

using FilePointer = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Copies one stream to its end. Returns false when one of them fails.
bool Copy(std::FILE* from, std::FILE* to) {
    std::array<char, 1 << 16> block{};
    for (;;) {
        const size_t length = std::fread(block.data(), 1, block.size(), from);
        if (length == 0) {
            return std::ferror(from) == 0 && std::fflush(to) == 0;
        }
        if (std::fwrite(block.data(), 1, length, to) != length) {
            return false;
        }
    }
}

// A file to read several times. What comes through a pipe, or from standard input for "-", is
// copied first to a temporary file, which is deleted with this object. The user's file is never
// touched.
class InputFile {
  public:
    // Prints the reason and returns false for a file that cannot be read.
    bool Open(const wxString& name);
    const wxString& GetPath() const { return mPath; }

  private:
    bool CopyPipe(const wxString& name);

    wxString mPath;
    std::optional<TemporaryDirectory> mCopy;
};

bool InputFile::Open(const wxString& name) {
    mPath = FullPath(name);
    std::error_code error;
    const fs::file_type type = fs::status(ToPath(mPath), error).type();
    const bool isPipe = name == "-" || type == fs::file_type::fifo ||
                        type == fs::file_type::character || type == fs::file_type::socket;
    errno = 0;
    const bool isGood =
        isPipe ? CopyPipe(name)
               : type != fs::file_type::directory && access(ToPath(mPath).c_str(), R_OK) == 0;
    if (!isGood) {
        const int reason = type == fs::file_type::directory ? EISDIR : errno;
        PrintError(wxString::Format(_("The file \"%s\" cannot be read: %s."), name,
                                    SystemErrorText(reason)));
    }
    return isGood;
}

bool InputFile::CopyPipe(const wxString& name) {
    mPath = mCopy.emplace().Path("list");
    const FilePointer from(name == "-" ? fdopen(dup(STDIN_FILENO), "rb")
                                       : std::fopen(ToPath(FullPath(name)).c_str(), "rb"),
                           &std::fclose);
    const FilePointer to(std::fopen(ToPath(mPath).c_str(), "wb"), &std::fclose);
    return from != nullptr && to != nullptr && Copy(from.get(), to.get());
}

// Copies an open store into a file that is not there yet.
int CopyTo(Store& store, const wxString& path) {
    const int error = CopyOpenStore(store.GetDatabase(), path);
    return error == 0 ? int{kCardsDone}
                      : FailStore(wxString::Format(_("The store \"%s\" cannot be copied: %s."),
                                                   store.GetPath(), SystemErrorText(error)));
}

// A file with cards: a deck of another program, or a list whose form is guessed.
class CardSource {
  public:
    explicit CardSource(const CardsOptions& options) : mOptions(options) {
        // A deck beyond the bounds is read only when it may be large.
        mDeckOptions.MayBeLarge = options.Large;
    }

    // Prints the reason and returns false for a deck that cannot be prepared.
    bool Open(const InputFile& file) {
        mPath = file.GetPath();
        if (!DeckFile::IsDeck(mPath)) {
            return true;
        }
        wxString message;
        mDeck = DeckFile::Open(mPath, message);
        if (mDeck == nullptr) {
            PrintError(message);
        }
        return mDeck != nullptr;
    }
    bool IsDeck() const { return mDeck != nullptr; }

    ImportInput MakeInput(Database& database) const {
        ImportInput input;
        input.FileName = mPath;
        if (IsDeck()) {
            input.Format = ImportFormat::kDeck;
            input.Media = mDeck->GetMedia();
            // Nobody cancels a command but by its end.
            input.MakeDeckReader = [deck = mDeck, options = mDeckOptions](Database& asked,
                                                                          const std::atomic<bool>&,
                                                                          wxString& message) {
                return MakeDeckReader(deck, options, asked, message);
            };
        } else {
            ReadList(input, database);
        }
        input.Pairs = mOptions.Known;
        input.BringsMedia = !mOptions.DryRun;
        return input;
    }
    // Says what of a deck is imported and what is not, and what was guessed about a list. Prints
    // the reason and returns false for a deck beyond the bounds.
    bool Describe(Database& database, const ImportInput& input,
                  std::vector<wxString>& notices) const {
        if (!IsDeck()) {
            notices = DescribeGuesses(input);
            return true;
        }
        SurveyProgress progress;
        const DeckSurvey survey = SurveyDeck(mDeck, mDeckOptions, database, progress);
        if (survey.IsTooLarge) {
            PrintError(survey.Failure + "  " + _("With --large it is imported all the same."));
            return false;
        }
        if (survey.Failure.empty()) {
            notices = DescribeSurvey(survey);
        }
        return true;
    }

  private:
    void ReadList(ImportInput& input, Database& database) const;
    std::vector<wxString> DescribeGuesses(const ImportInput& input) const;

    const CardsOptions& mOptions;
    wxString mPath;
    std::shared_ptr<DeckFile> mDeck;
    DeckOptions mDeckOptions;
};

// Finds out how to read a list, as far as the options do not say it.
void CardSource::ReadList(ImportInput& input, Database& database) const {
    const TableChoice& choice = mOptions.Table;
    TableSurvey survey = SurveyTable(mPath, choice);
    if (choice.Separator.empty() && !choice.HasHeader && mOptions.Columns.empty()) {
        GuessFormat(input, database, survey);
        return;
    }
    input.Format = ImportFormat::kDelimited;
    input.Encoding = survey.IsOwnForm ? survey.OwnEncoding : survey.Encoding;
    TableLayout& layout = survey.Layout;
    if (survey.IsOwnForm && mOptions.Columns.empty()) {
        input.Delimiter = layout.Separator.front();
        input.HasEscapes = layout.HasEscapes;
        return;
    }
    if (!mOptions.Columns.empty()) {
        layout.Columns.resize(std::max(layout.Columns.size(), mOptions.Columns.size()));
        for (size_t i = 0; i < layout.Columns.size(); ++i) {
            layout.Columns[i].Use =
                i < mOptions.Columns.size() ? mOptions.Columns[i] : ColumnUse::kIgnore;
        }
    }
    input.Layout = std::make_shared<const TableLayout>(layout);
}

std::vector<wxString> CardSource::DescribeGuesses(const ImportInput& input) const {
    std::vector<wxString> guesses;
    const std::vector<TextEncoding>& all = GetTextEncodings();
    const auto encoding = std::find_if(all.begin(), all.end(), [&](const TextEncoding& known) {
        return known.Code == input.Encoding;
    });
    if (mOptions.Table.Encoding == wxFONTENCODING_SYSTEM && encoding != all.end()) {
        guesses.push_back(wxString::Format(_("The encoding was guessed: %s."), encoding->Charset));
    }
    if (input.Layout != nullptr && input.Layout->HasHeader && !mOptions.Table.HasHeader) {
        guesses.push_back(wxString::Format(_("Row %i is taken for the names of the columns."),
                                           input.Layout->HeadLines + 1));
    }
    return guesses;
}

// Imports into an open store and tells the outcome.
int Import(const CardSource& source, Store& store, bool json, bool& hasCards) {
    const ImportInput input = source.MakeInput(store.GetDatabase());
    std::vector<wxString> notices;
    if (!source.Describe(store.GetDatabase(), input, notices)) {
        return kCardsRefused;
    }
    ImportResult result;
    const int outcome = ImportCards(input, store.GetDatabase(), result, false, nullptr);
    store.GetDatabase().Close();
    if (outcome < 0 && !json) {
        const wxString text =
            result.LineNumber >= 1
                ? wxString::Format(_("%s\nLine Number: %i"), result.Message, result.LineNumber)
                : result.Message;
        return Refuse(text);
    }
    hasCards = result.RecordsInserted > 0;
    for (const SourceNotice& notice : result.Notices) {
        notices.push_back(wxString::Format(_("Line %i: %s"), notice.Line, notice.Text));
    }
    const wxString missing = MissingFilesMessage(result);
    if (!missing.empty()) {
        notices.push_back(missing);
    }
    const int printed = FinishOutput(PrintImport(result, notices, json));
    return outcome < 0 ? int{kCardsRefused} : printed;
}

// Imports into a copy of the store, or into an empty one where there is none.
int TryImport(const CardSource& source, Store& store, bool json) {
    const TemporaryDirectory directory;
    Store copy(directory.Path(kDefaultStoreName));
    if (store.Exists()) {
        int failure = store.Open(Store::Use::kRead);
        if (failure == kCardsDone) {
            failure = CopyTo(store, copy.GetPath());
        }
        if (failure != kCardsDone) {
            return failure;
        }
        store.GetDatabase().Close();
    }
    const int failure = copy.Open(Store::Use::kWriteOrCreate);
    bool hasCards = false;
    return failure == kCardsDone ? Import(source, copy, json, hasCards) : failure;
}

int RunImport(const CardsOptions& options) {
    InputFile file;
    if (!file.Open(options.Operands.front())) {
        return kCardsRefused;
    }
    CardSource source(options);
    if (!source.Open(file)) {
        return kCardsRefused;
    }
    if (!source.IsDeck() && IsDatabaseFile(file.GetPath())) {
        return Refuse(DatabaseFileMessage(options.Operands.front()));
    }
    Store store(options.Store);
    if (options.DryRun) {
        return TryImport(source, store, options.Json);
    }
    const bool isNew = !store.Exists();
    const fs::path media = MediaFolder(store.GetPath()).GetPath();
    std::error_code error;
    const bool hasMedia = fs::exists(media, error);
    if (const int failure = store.Open(Store::Use::kWriteOrCreate)) {
        return failure;
    }
    // The first pass writes nothing, and a list that changes nothing costs no backup.
    StoreBackups backups(ReadBackupSettings(BackupCause::kImport), PrintError);
    backups.ExpectChange(BackupCause::kImport,
                         ImportedBytes(wxFileName::GetSize(file.GetPath()).GetValue()));
    store.GetDatabase().SetBeforeChange(
        [&] { backups.MakeBeforeChange(store.GetDatabase(), CurrentTime()); });
    bool hasCards = false;
    const int outcome = Import(source, store, options.Json, hasCards);
    if (isNew && !hasCards) {
        // Nobody has asked for a store without cards, or for the pictures of such a one.
        fs::remove(ToPath(store.GetPath()), error);
        if (!hasMedia) {
            fs::remove_all(media, error);
        }
    }
    return outcome;
}

// Reads what is looked for; without a search, every card. Prints the reason and returns false for a
// word that means nothing.
bool ReadSearch(Database& database, const CardsOptions& options, std::optional<int32_t> category,
                CardSearch& search) {
    const wxString text = options.Operands.empty() ? wxString() : options.Operands.front();
    search.Query = options.IsExact ? SearchQuery::Exact(text) : SearchQuery::Words(text);
    search.Direction = options.IsReverse ? kReviewReverse : kReviewForward;
    search.Now = CurrentTime();
    const size_t most = search.Query.CountHardest();
    if (most > 0) {
        ReviewHistory history;
        const std::atomic<bool> cancelled{false};
        const ReviewQuery query{category, search.Direction, ReviewSpan::kYear, search.Now, most};
        ReadHardestCards(database, query, history, cancelled, search.Hard);
    }
    if (!search.Query.GetProblem().empty()) {
        PrintError(search.Query.GetProblem());
    }
    return search.Query.GetProblem().empty();
}

// Puts the cards of one category, or of all, into the order of their introduction.
int SelectCards(Database& database, const CardsOptions& options, std::vector<int64_t>& rowIds) {
    const CardOrder order(CardColumn::kCategory);
    CardSearch search;
    if (options.Category.empty()) {
        return ReadSearch(database, options, std::nullopt, search)
                   ? database.SearchRowIdsOrder(search, order, rowIds)
                   : int{kCardsRefused};
    }
    std::list<Category> found;
    if (database.SelectCategoryByName(options.Category, found) < 0) {
        return -1;
    }
    if (found.empty()) {
        PrintError(wxString::Format(_("There is no category \"%s\"."), options.Category));
        return kCardsRefused;
    }
    const int32_t category = found.front().Id;
    return ReadSearch(database, options, category, search)
               ? database.SearchRowIdsOrder(category, search, order, rowIds)
               : int{kCardsRefused};
}

// Passes on the output only when it is complete, since the cards are read under a lock.
int ExportThroughCopy(Database& database, const std::vector<int64_t>& rowIds,
                      const CardsOptions& options) {
    const FilePointer copy(std::tmpfile(), &std::fclose);
    if (copy == nullptr) {
        return Refuse(_("There is no room for a temporary file."));
    }
    ExportProgress progress;
    {
        wxFFile file(copy.get());
        wxFFileOutputStream stream(file);
        EncodedSink sink(stream, wxFONTENCODING_UTF8);
        const int result = WriteCards(sink, database, rowIds, options.Export, progress);
        const bool isWritten = sink.Flush() && file.Flush();
        file.Detach();
        if (result < 0 || !isWritten) {
            return Refuse(_("There is no room for a temporary file."));
        }
    }
    database.Close();
    std::rewind(copy.get());
    const FilePointer output(options.Output.empty()
                                 ? nullptr
                                 : std::fopen(ToPath(FullPath(options.Output)).c_str(), "wb"),
                             &std::fclose);
    std::FILE* const to = options.Output.empty() ? stdout : output.get();
    return FinishOutput(to != nullptr && Copy(copy.get(), to));
}

int RunExport(const CardsOptions& options) {
    Store store(options.Store);
    if (const int failure = store.Open(Store::Use::kRead)) {
        return failure;
    }
    Database& database = store.GetDatabase();
    std::vector<int64_t> rowIds;
    if (SelectCards(database, options, rowIds) != 0) {
        return kCardsStoreFailed;
    }
    const wxString hint = MediaExportHint(database, options.Export);
    const wxString path = FullPath(options.Output);
    std::error_code error;
    const fs::file_status status = fs::status(ToPath(path), error);
    if (options.Output.empty() || (fs::exists(status) && !fs::is_regular_file(status))) {
        const int outcome = ExportThroughCopy(database, rowIds, options);
        if (!hint.empty()) {
            PrintError(hint);
        }
        return outcome;
    }
    ExportProgress progress;
    if (ExportToFile(path, wxFONTENCODING_UTF8, database, rowIds, options.Export, progress) < 0) {
        return Refuse(progress.Message);
    }
    if (!hint.empty()) {
        PrintError(hint);
    }
    return kCardsDone;
}

int ReadCategories(Database& database, std::map<int32_t, wxString>& names) {
    std::list<Category> categories;
    if (database.SelectAllCategories(categories) < 0) {
        return -1;
    }
    for (const Category& category : categories) {
        names[category.Id] = category.Name;
    }
    return 0;
}

// Prints some cards at a time; the store is free while their texts are written.
int PrintCards(Database& database, const std::vector<int64_t>& rowIds, bool json) {
    constexpr size_t kCardsAtOnce = 64;
    std::map<int32_t, wxString> names;
    if (ReadCategories(database, names) < 0) {
        return kCardsStoreFailed;
    }
    std::map<int32_t, std::u16string> categories;
    for (const auto& [id, name] : names) {
        categories[id] = ToUtf16(name);
    }
    bool isGood = !json || std::fputs("[", stdout) != EOF;
    CardPrinter printer(json);
    for (auto rowId = rowIds.begin(); rowId != rowIds.end() && isGood;) {
        const auto left = static_cast<size_t>(rowIds.end() - rowId);
        const auto end = rowId + static_cast<std::ptrdiff_t>(std::min(left, kCardsAtOnce));
        const auto visit = [&](const CardRow& card) {
            WriteCardRecord(printer, card, categories[card.CategoryId()], true, true);
            printer.EndRecord();
        };
        if (database.VisitCardsByRowId({rowId, end}, visit) < 0) {
            return kCardsStoreFailed;
        }
        isGood = printer.Print();
        rowId = end;
    }
    isGood = isGood && (!json || PrintLine("]"));
    return FinishOutput(isGood);
}

int RunList(const CardsOptions& options) {
    Store store(options.Store);
    if (const int failure = store.Open(Store::Use::kRead)) {
        return failure;
    }
    std::vector<int64_t> rowIds;
    const int result = SelectCards(store.GetDatabase(), options, rowIds);
    if (result != 0) {
        return result < 0 ? int{kCardsStoreFailed} : result;
    }
    return PrintCards(store.GetDatabase(), rowIds, options.Json);
}

int Count(Database& database, int32_t id, CategoryCounts& counts) {
    const wxDateTime now = CurrentTime();
    const bool isGood = database.SelectCategoryIdCount(id, counts.Cards) >= 0 &&
                        database.CountForward(id, counts.Forward.Studied) >= 0 &&
                        database.CountReverse(id, counts.Reverse.Studied) >= 0 &&
                        database.CountIntroducedForward(id, counts.Forward.Introduced) >= 0 &&
                        database.CountIntroducedReverse(id, counts.Reverse.Introduced) >= 0 &&
                        database.SelectReadyCountForward(id, now, counts.Forward.Due) >= 0 &&
                        database.SelectReadyCountReverse(id, now, counts.Reverse.Due) >= 0;
    return isGood ? 0 : -1;
}

int RunCounts(const CardsOptions& options) {
    Store store(options.Store);
    if (const int failure = store.Open(Store::Use::kRead)) {
        return failure;
    }
    std::list<Category> categories;
    if (store.GetDatabase().SelectAllCategories(categories) < 0) {
        return kCardsStoreFailed;
    }
    std::vector<CategoryCounts> all;
    for (const Category& category : categories) {
        CategoryCounts counts;
        counts.Name = category.Name;
        if (Count(store.GetDatabase(), category.Id, counts) < 0) {
            return kCardsStoreFailed;
        }
        all.push_back(counts);
    }
    store.GetDatabase().Close();
    const bool isPrinted = options.Command == CardsCommand::kDue
                               ? PrintDue(all, options.Json)
                               : PrintStats(store.GetPath(), all, options.Json);
    return FinishOutput(isPrinted);
}

// Notices stand among the faults and are none.
int FinishCheck(const std::vector<ImportFault>& faults, bool isGood, bool json) {
    const int outcome = FinishOutput(PrintFaults(faults, json));
    return isGood ? outcome : kCardsRefused;
}

int RunCheckStore(const wxString& path, bool json) {
    std::vector<ImportFault> faults;
    for (const wxString& fault : CheckStoreFile(path)) {
        faults.push_back({fault, -1});
    }
    return FinishCheck(faults, faults.empty(), json);
}

// Looks up in the store the cards that the list names by identity. Where there is no store, an
// empty one serves.
int RunCheckList(const CardSource& source, const CardsOptions& options) {
    Store store(options.Store);
    const TemporaryDirectory directory;
    Store empty(directory.Path(kDefaultStoreName));
    Store& asked = store.Exists() ? store : empty;
    const Store::Use use = store.Exists() ? Store::Use::kRead : Store::Use::kWriteOrCreate;
    if (const int failure = asked.Open(use)) {
        return failure;
    }
    ImportResult result;
    std::vector<ImportFault> faults =
        FindFaults(source.MakeInput(asked.GetDatabase()), asked.GetDatabase(), result,
                   std::numeric_limits<size_t>::max());
    asked.GetDatabase().Close();
    const bool isGood = faults.empty();
    for (const SourceNotice& notice : result.Notices) {
        faults.push_back({notice.Text, notice.Line});
    }
    return FinishCheck(faults, isGood, options.Json);
}

int RunCheck(const CardsOptions& options) {
    InputFile file;
    if (!file.Open(options.Operands.front())) {
        return kCardsRefused;
    }
    CardSource source(options);
    if (!source.Open(file)) {
        return kCardsRefused;
    }
    return !source.IsDeck() && IsDatabaseFile(file.GetPath())
               ? RunCheckStore(file.GetPath(), options.Json)
               : RunCheckList(source, options);
}

int RunBackup(const CardsOptions& options) {
    Store store(options.Store);
    if (const int failure = store.Open(Store::Use::kRead)) {
        return failure;
    }
    wxString path;
    if (options.Operands.empty()) {
        StoreBackups backups(ReadBackupSettings(BackupCause::kUser), PrintError);
        backups.Make(store.GetDatabase(), BackupCause::kUser, CurrentTime());
        path = backups.GetLast();
        if (path.empty()) {
            return FailStore(_("No backup was made."));
        }
    } else {
        path = FullPath(options.Operands.front());
        if (wxFileName::Exists(path)) {
            return Refuse(wxString::Format(_("There is a file \"%s\" already."), path));
        }
        if (const int failure = CopyTo(store, path)) {
            return failure;
        }
    }
    const wxString hint = HintOfMedia(store.GetDatabase());
    if (!hint.empty()) {
        PrintError(hint);
    }
    store.GetDatabase().Close();
    return FinishOutput(PrintPath(path, options.Json));
}

// Keeps the store that is about to be replaced, one that is damaged included. Returns kCardsDone
// and the path of the backup, or an empty path for a store without cards.
int KeepBeforeRestore(const Store& store, const wxString& backup, wxString& kept) {
    StoreBackups backups(ReadBackupSettings(BackupCause::kRestore), PrintError);
    const int error = backups.MakeOfFile(store.GetPath(), BackupCause::kRestore, CurrentTime(),
                                         wxFileName::GetSize(backup).GetValue());
    kept = backups.GetLast();
    return error == 0
               ? int{kCardsDone}
               : FailStore(_("Nothing was changed. With --no-backup the store is replaced although "
                             "its cards are lost then."));
}

// Puts a backup in the place of the store, which is backed up first.
int RunRestore(const CardsOptions& options) {
    InputFile backup;
    if (!backup.Open(options.Operands.front())) {
        return kCardsRefused;
    }
    Store store(options.Store);
    if (IsSameFile(backup.GetPath(), store.GetPath())) {
        return Refuse(_("A store cannot be restored from itself."));
    }
    if (CheckBackup(backup.GetPath()) != 0) {
        return Refuse(
            wxString::Format(_("The file \"%s\" is not a whole store."), options.Operands.front()));
    }
    if (!store.KeepProgramOut()) {
        return kCardsStoreFailed;
    }
    wxString kept;
    if (store.Exists() && !options.NoBackup) {
        if (const int failure = KeepBeforeRestore(store, backup.GetPath(), kept)) {
            return failure;
        }
    }
    if (const int error = RestoreBackup(backup.GetPath(), store.GetPath())) {
        return FailStore(wxString::Format(_("The store \"%s\" cannot be replaced: %s."),
                                          store.GetPath(), SystemErrorText(error)));
    }
    return FinishOutput(kept.empty() || PrintPath(kept, options.Json));
}

// Changes neither the damaged file nor the store of the settings.
int RunRepair(const CardsOptions& options) {
    const wxString damaged = FullPath(options.Operands[0]);
    const wxString target = FullPath(options.Operands[1]);
    if (!wxFileName::FileExists(damaged) || !wxFileName::IsFileReadable(damaged)) {
        return Refuse(wxString::Format(_("The file \"%s\" cannot be read."), options.Operands[0]));
    }
    if (wxFileName::Exists(target)) {
        return Refuse(wxString::Format(_("There is a file \"%s\" already."), target));
    }
    RepairReport report;
    const int error = RepairStore(damaged, target, report);
    if (error == EILSEQ) {
        return Refuse(
            wxString::Format(_("Nothing of a store was found in \"%s\"."), options.Operands[0]));
    }
    if (error != 0) {
        return FailStore(wxString::Format(_("The store \"%s\" cannot be written: %s."), target,
                                          SystemErrorText(error)));
    }
    return FinishOutput(PrintRepair(report, options.Json));
}

// Returns the question of an exchange, with the options that answer it; else its message.
wxString DescribeExchange(const ExchangeReport& report) {
    const auto count = static_cast<long long>(report.Asked);
    switch (report.Question) {
        case ExchangeQuestion::kGoneBack:
            return _(
                "The store is an earlier one than that of the last exchange, such as a restored "
                "backup.  With --take-newer it is brought up to date; with --take-mine all "
                "computers get what it has.");
        case ExchangeQuestion::kManyLost:
            return wxString::Format(
                _("The exchange would delete or turn back many cards: %lld.  With --take-newer "
                  "that happens; with --take-mine all computers get what this store has."),
                count);
        case ExchangeQuestion::kEqualCards:
            return wxString::Format(
                _("Cards of different computers with the same front, back and category: %lld.  "
                  "With --join-equal yes two of them become one; with --join-equal no all stay."),
                count);
        default:
            return report.Message;
    }
}

// Exchanges the store with other computers. It need not exist; then the folder must have cards.
int RunSync(const CardsOptions& options) {
    Store store(options.Store);
    if (!store.KeepProgramOut()) {
        return kCardsStoreFailed;
    }
    const Clock clock;
    ExchangeOptions exchange;
    exchange.StorePath = store.GetPath();
    exchange.Folder = FullPath(options.Operands.front());
    exchange.Name = options.Name.empty() ? wxGetHostName() : options.Name;
    exchange.Time = &clock;
    exchange.Answer = options.Answer;
    exchange.JoinsEqualCards = options.JoinsEqualCards;
    StoreBackups backups(ReadBackupSettings(BackupCause::kExchange), PrintError);
    exchange.BackUp = [&] {
        return backups.MakeOfFile(store.GetPath(), BackupCause::kExchange, CurrentTime());
    };
    const ExchangeReport report = RunExchange(exchange);
    const wxString message = DescribeExchange(report);
    const bool isDone = report.End == ExchangeEnd::kDone;
    const int printed =
        isDone || options.Json ? FinishOutput(PrintExchange(report, message, options.Json)) : 0;
    if (isDone) {
        return printed;
    }
    if (!options.Json) {
        PrintError(message);
    }
    return report.End == ExchangeEnd::kFailed ? kCardsStoreFailed : kCardsRefused;
}

}  // namespace

int FinishOutput(bool isPrinted) {
    const bool isGood = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && isPrinted;
    return isGood ? int{kCardsDone} : Refuse(_("The output could not be written to its end."));
}

int RunCardsCommand(const CardsOptions& options) {
    switch (options.Command) {
        case CardsCommand::kImport:
            return RunImport(options);
        case CardsCommand::kExport:
            return RunExport(options);
        case CardsCommand::kList:
            return RunList(options);
        case CardsCommand::kDue:
        case CardsCommand::kStats:
            return RunCounts(options);
        case CardsCommand::kCheck:
            return RunCheck(options);
        case CardsCommand::kBackup:
            return RunBackup(options);
        case CardsCommand::kRestore:
            return RunRestore(options);
        case CardsCommand::kSync:
            return RunSync(options);
        case CardsCommand::kRepair:
            return RunRepair(options);
    }
    return kCardsUsage;
}
