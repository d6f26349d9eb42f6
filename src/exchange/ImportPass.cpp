// The passes over a file. The first one finds faults, and only at its end, when the file has none,
// asks whether the categories that the store lacks may be created: once for all of them, and not at
// the first card of each, so that nobody answers twenty questions or agrees to names unseen. A
// store of version 1.0 has no first pass, and its categories are created unasked.

#include "exchange/ImportPass.h"

#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/log.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <list>
#include <memory>
#include <new>
#include <string>
#include <unordered_set>

#include "base/Files.h"
#include "base/Text.h"
#include "exchange/ImportRecord.h"
#include "exchange/ImportSource.h"
#include "formats/MediaSource.h"
#include "formats/Table.h"
#include "store/Database.h"
#include "store/Statement.h"

namespace {

// The steps of one pass. A step that fails puts the reason into the result and returns false.
class Pass {
  public:
    Pass(const ImportInput& input, Database& database, ImportResult& result,
         const ImportPassOptions& options)
        : mInput(input),
          mDatabase(database),
          mResult(result),
          mOptions(options),
          mSource(options.PreviewAttributes != nullptr),
          mGroup(database, result),
          mCategories(database, result, mGroup),
          mOrders(database, mGroup) {}

    bool Run();

  private:
    bool KeepFault();
    bool ReadToEnd();
    bool ReadRecords();
    bool Finish();
    bool TakeRecord();
    void TakeMedia(FlashCard& card) const;
    bool FindPair(ImportRecord& record, std::list<FlashCard>& cards);
    bool TakeKnownPair(ImportRecord& record, bool& isDone);
    bool CheckFieldLines(int32_t line);
    bool FindCategory(ImportRecord& record);
    bool CheckComplete(const ImportRecord& record);
    void Preview();
    bool CheckPairIsNew(const ImportRecord& record);
    bool Write(ImportRecord& record);
    bool Insert(ImportRecord& record);
    bool Merge(ImportRecord& record, int32_t line);
    bool Update(const FlashCard& card);

    const ImportInput& mInput;
    Database& mDatabase;
    ImportResult& mResult;
    const ImportPassOptions& mOptions;
    ImportSource mSource;
    ImportGroup mGroup;
    ImportCategories mCategories;
    IntroductionOrders mOrders;
    // True once the preview has its record; nothing more is read.
    bool mHasPreview = false;
    // The pairs of texts that the file has brought so far; kept unless known pairs stop the import.
    std::unordered_set<size_t> mNewPairs;
};

bool Pass::Run() {
    // Even opening it is forbidden: closing another handle on the file drops the engine's locks.
    if (mDatabase.IsStoreFile(mInput.FileName)) {
        return mResult.Fail(DatabaseFileMessage(mInput.FileName));
    }
    const StoreReadLock lock(mDatabase);
    if (!mCategories.Load() || !mSource.Open(mInput, mDatabase, mResult)) {
        KeepFault();
        return false;
    }
    while (!ReadToEnd()) {
        if (!KeepFault() || mSource.HasFailed()) {
            return false;
        }
    }
    return true;
}

// A cancel or a failure keeps the cards before it. A card that the store refuses only now comes
// before the failure in the file, so its message is shown.
bool Pass::ReadToEnd() {
    const bool hasRead = ReadRecords();
    return mGroup.Write() && hasRead && (mHasPreview || Finish());
}

// Takes the fault that stopped the pass out of the result, so that the pass can continue. Returns
// false when the faults are not collected, or the pass was cancelled.
bool Pass::KeepFault() {
    if (mOptions.Faults == nullptr || mOptions.Faults->size() >= mOptions.MostFaults ||
        !mResult.Advance(ImportStatus::kFailed, ImportStatus::kRunning)) {
        return false;
    }
    mOptions.Faults->push_back(
        {mResult.Message.empty() ? UnreadableFileMessage(mInput.FileName) : mResult.Message,
         mResult.LineNumber});
    mResult.Message.clear();
    mResult.LineNumber = -1;
    return true;
}

bool Pass::ReadRecords() {
    CardRecordReader& reader = mSource.Reader();
    while (reader.ReadRecord() && !mSource.HasFailed()) {
        if (mResult.Status == ImportStatus::kCancelled) {
            return mResult.FailCancelled(reader.GetLineNumber());
        }
        mResult.Progress = reader.GetProgress();
        if (reader.GetAttributeCount() == 0) {
            continue;
        }
        if (!TakeRecord()) {
            return false;
        }
        if (mOptions.PreviewAttributes != nullptr) {
            Preview();
            mHasPreview = true;
            return true;
        }
    }
    return true;
}

// The reader has no further record.
bool Pass::Finish() {
    const CardRecordReader& reader = mSource.Reader();
    const int32_t line = reader.GetLineNumber();
    if (mSource.HasFailed()) {
        mResult.LineNumber = line;
        return mResult.Fail(mSource.FailureMessage());
    }
    mResult.RecordsLeftOut = reader.CountLeftOut();
    if (mOptions.ValidateOnly) {
        const std::vector<SourceNotice> notices = reader.GetNotices();
        mResult.Notices.insert(mResult.Notices.end(), notices.begin(), notices.end());
    }
    const wxString failure = reader.GetFailure();
    if (!failure.empty()) {
        mResult.LineNumber = -1;
        return mResult.Fail(failure);
    }
    switch (reader.GetError()) {
        case CardRecordReader::kMissingSeparator:
            mResult.LineNumber = line;
            return mResult.Fail(_("Line is missing the colon (:) symbol"));
        case CardRecordReader::kRepeatedAttribute:
            mResult.LineNumber = line;
            return mResult.Fail(RepeatedAttributeMessage());
        case CardRecordReader::kOpenQuote:
            mResult.LineNumber = line;
            return mResult.Fail(
                _("A double quote opens a field here, and no other one closes it in front of a "
                  "delimiter or at the end of a line."));
        default:
            break;
    }
    if (mOptions.ValidateOnly && !mCategories.AskForMissing(line)) {
        return false;
    }
    return mResult.Advance(ImportStatus::kRunning, ImportStatus::kFinished) ||
           mResult.FailCancelled(line);
}

bool Pass::TakeRecord() {
    const CardRecordReader& reader = mSource.Reader();
    const int32_t line = reader.GetAttribute(0).Line;
    ImportRecord record;
    record.IsForeign = mInput.Format == ImportFormat::kDeck || mInput.Layout != nullptr;
    if (!record.Read(reader, mDatabase, mResult, mGroup)) {
        return false;
    }
    mResult.LineNumber = line;
    TakeMedia(record.Card);
    if (!CheckFieldLines(line)) {
        return false;
    }
    bool isDone = false;
    if (mInput.Pairs != KnownPairs::kStop && mOptions.PreviewAttributes == nullptr &&
        !TakeKnownPair(record, isDone)) {
        return false;
    }
    if (isDone) {
        return true;
    }
    if (!FindCategory(record) || !CheckComplete(record)) {
        return false;
    }
    record.JoinSecondTexts();
    if (mOptions.PreviewAttributes != nullptr) {
        return true;
    }
    if (!mOptions.ValidateOnly) {
        return Write(record);
    }
    return mInput.Pairs != KnownPairs::kStop || CheckPairIsNew(record);
}

// Lines of a text may name files that lie beside it. Those of a deck were named while it was read.
void Pass::TakeMedia(FlashCard& card) const {
    if (mInput.Media == nullptr || mInput.Format == ImportFormat::kDeck) {
        return;
    }
    for (wxString* const text : {&card.Front, &card.Back, &card.Notes}) {
        if (MayHaveMediaLine(std::wstring_view(text->wc_str(), text->length()))) {
            *text = ReplaceMediaLines(*text, [this](const MediaLine& line) {
                const wxString name = mInput.Media->NameOf(line.Kind, line.Name);
                return MakeMediaLine(line.Kind, name.empty() ? line.Name : name);
            });
        }
    }
}

// A quote that a person has left open swallows the lines up to the next one. Whoever can be asked
// is asked about a field of many lines, and others are told of it.
bool Pass::CheckFieldLines(int32_t line) {
    constexpr int32_t kFewLines = 5;
    const int32_t lines = mSource.Reader().CountFieldLines();
    if (!mOptions.ValidateOnly || mOptions.PreviewAttributes != nullptr || lines <= kFewLines ||
        mResult.YesToAllLongFields) {
        return true;
    }
    if (mOptions.AskCategories) {
        mResult.FieldLines = lines;
        return mResult.Ask(ImportRequest::kLongField, line);
    }
    mResult.Notices.push_back(
        {line, wxString::Format(_("A quoted field goes over %i lines. A double quote that is never "
                                  "closed may be the reason."),
                                lines)});
    return true;
}

size_t HashOfPair(const FlashCard& card) {
    return std::hash<std::wstring>()(card.Front.ToStdWstring() + L'\0' + card.Back.ToStdWstring());
}

// Finds the cards with the record's pair of texts, those of the file included.
bool Pass::FindPair(ImportRecord& record, std::list<FlashCard>& cards) {
    record.JoinSecondTexts();
    if (mNewPairs.count(HashOfPair(record.Card)) != 0 && !mGroup.Write()) {
        return false;
    }
    return mDatabase.SelectCardsByFrontBack(record.Card.Front, record.Card.Back, cards) >= 0 ||
           mResult.Fail(StoreReadMessage(mDatabase));
}

// Leaves out a record whose pair is known, or makes it a change of the card that has the pair.
bool Pass::TakeKnownPair(ImportRecord& record, bool& isDone) {
    if (record.Has(kAttributeId) || !record.Has(kAttributeFront) || !record.Has(kAttributeBack)) {
        return true;
    }
    std::list<FlashCard> cards;
    if (!FindPair(record, cards)) {
        return false;
    }
    if (cards.empty()) {
        return true;
    }
    if (mInput.Pairs == KnownPairs::kSkip) {
        if (!mOptions.ValidateOnly) {
            mGroup.CountIgnored(mResult.DuplicatesIgnored);
        }
        isDone = true;
        return true;
    }
    record = ImportRecord();
    record.StartFromPair(cards.front());
    return record.Read(mSource.Reader(), mDatabase, mResult, mGroup);
}

bool Pass::FindCategory(ImportRecord& record) {
    int32_t& id = record.Card.CategoryId;
    if ((record.IsPair || (record.IsForeign && record.IsStored())) && !record.NamesCategory) {
        // The card stays in its category, or among the deleted cards.
        return true;
    }
    if (mOptions.ValidateOnly) {
        const bool ask = mOptions.AskCategories && record.NamesCategory;
        return mCategories.FindOrNote(record.CategoryName, ask, id);
    }
    if (!mCategories.FindOrCreate(record.CategoryName, id)) {
        return false;
    }
    if (mOptions.TouchedCategories != nullptr) {
        mOptions.TouchedCategories->insert(id);
    }
    return true;
}

bool Pass::CheckComplete(const ImportRecord& record) {
    if (record.IsStored()) {
        return true;
    }
    if (!record.Has(kAttributeFront)) {
        return mResult.Fail(_("New import cards must have a front attribute."));
    }
    if (!record.Has(kAttributeBack)) {
        return mResult.Fail(_("New import cards must have an back attribute."));
    }
    return true;
}

void Pass::Preview() {
    const CardRecordReader& reader = mSource.Reader();
    for (uint32_t i = 0; i < reader.GetAttributeCount(); ++i) {
        mOptions.PreviewAttributes->push_back(reader.GetAttribute(i));
    }
}

// A record without an id must not repeat the pair of texts of a stored card.
bool Pass::CheckPairIsNew(const ImportRecord& record) {
    if (record.Has(kAttributeId)) {
        return true;
    }
    std::list<FlashCard> cards;
    if (mDatabase.SelectCardsByFrontBack(record.Card.Front, record.Card.Back, cards) < 0) {
        return mResult.Fail(StoreReadMessage(mDatabase));
    }
    return cards.empty() ||
           mResult.Fail(_("Duplicate Card: There is already a card in the database with this "
                          "front/back pair."));
}

bool Pass::Write(ImportRecord& record) {
    if (record.Has(kAttributeIntroductionOrder)) {
        mOrders.Note(record.Card.CategoryId, record.Card.IntroductionOrder);
    }
    if (!record.IsStored()) {
        return Insert(record);
    }
    if (record.IsDuplicate()) {
        mGroup.CountIgnored(mResult.DuplicatesIgnored);
        return true;
    }
    return Merge(record, mResult.LineNumber);
}

bool Pass::Insert(ImportRecord& record) {
    FlashCard& card = record.Card;
    if (!record.Has(kAttributeId)) {
        const int failure = GenerateUuid(card.CardId);
        if (failure != 0) {
            return mResult.Fail(
                wxString::Format(_("Unable to add flash card to database.  (%i:%s)"), failure,
                                 _("no random numbers")));
        }
    }
    if (!record.Has(kAttributeIntroductionOrder) &&
        !mOrders.Take(card.CategoryId, card.IntroductionOrder)) {
        return false;
    }
    if (mInput.Pairs != KnownPairs::kStop) {
        mNewPairs.insert(HashOfPair(card));
    }
    return mGroup.Add(std::move(card));
}

// A stored card and its imported version differ.
bool Pass::Merge(ImportRecord& record, int32_t line) {
    const FlashCard& stored = record.Stored.front();
    const bool sameTexts = record.Card.Front == stored.Front && record.Card.Back == stored.Back;
    const bool isPlain = sameTexts && !mInput.AskBeforeChanges;
    if (isPlain || mResult.MergePolicy == ImportMergePolicy::kKeepImported) {
        return Update(record.Card);
    }
    if (mResult.MergePolicy == ImportMergePolicy::kKeepDatabase) {
        // Counts as merged, since the conflict was settled.
        mGroup.CountIgnored(mResult.RecordsMerged);
        return true;
    }
    mResult.DatabaseCard = stored;
    mResult.ImportedCard = record.Card;
    mResult.AttributeMask = record.Mask;
    return mResult.Ask(ImportRequest::kMerge, line) && Update(mResult.MergedCard);
}

bool Pass::Update(const FlashCard& card) {
    // The new cards before it come first, in the store as in the file.
    if (!mGroup.Write()) {
        return false;
    }
    if (mDatabase.UpdateFlashCard(card) < 0) {
        return mResult.Fail(StoreMessage(_("Unable to update flash card.  (%i:%s)"), mDatabase));
    }
    ++mResult.RecordsMerged;
    return true;
}

}  // namespace

int ImportPass(const ImportInput& input, Database& database, ImportResult& result,
               const ImportPassOptions& options) {
    try {
        return Pass(input, database, result, options).Run() ? 0 : -1;
    } catch (const std::bad_alloc&) {
        // A record can be too long for the memory, such as one with a quote that a huge file never
        // closes.
        result.Fail(UnreadableFileMessage(input.FileName));
        return -1;
    }
}

namespace {

bool BringMedia(const ImportInput& input, Database& database, ImportResult& result) {
    wxString message;
    const MediaFolder folder(database.GetPath());
    return input.Media->Bring(folder, result.IsCancelled, result.Progress, message) ||
           (result.IsCancelled ? result.FailCancelled(-1) : result.Fail(message));
}

// A text names files that lie beside it.
ImportInput WithFilesBeside(ImportInput input) {
    const bool isText =
        input.Format == ImportFormat::kVlmText || input.Format == ImportFormat::kDelimited;
    if (input.Media == nullptr && isText && !input.FileName.empty()) {
        input.Media = std::make_shared<DirectoryMedia>(ToPath(wxPathOnly(FullPath(input.FileName))),
                                                       MediaSource::Missing::kKept);
    }
    return input;
}

}  // namespace

int ImportCards(const ImportInput& wanted, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories) {
    const ImportInput input = WithFilesBeside(wanted);
    ImportPassOptions options;
    options.AskCategories = askCategories;
    if (input.Format != ImportFormat::kVersion1Store) {
        options.ValidateOnly = true;
        if (ImportPass(input, database, result, options) < 0) {
            return -1;
        }
        if (!result.Advance(ImportStatus::kFinished, ImportStatus::kRunning)) {
            result.FailCancelled(result.LineNumber);
            return -1;
        }
    }
    if (input.Media != nullptr && input.BringsMedia && !BringMedia(input, database, result)) {
        return -1;
    }
    if (input.Media != nullptr && input.BringsMedia) {
        result.FilesMissing = input.Media->CountMissing(MediaFolder(database.GetPath()));
    }
    options.ValidateOnly = false;
    options.TouchedCategories = touchedCategories;
    const StoreChangeGroup changes(database);
    return ImportPass(input, database, result, options);
}

std::vector<ImportFault> FindFaults(const ImportInput& input, Database& database) {
    ImportResult result;
    return FindFaults(input, database, result, std::numeric_limits<size_t>::max());
}

std::vector<ImportFault> FindFaults(const ImportInput& input, Database& database,
                                    ImportResult& result, size_t most) {
    std::vector<ImportFault> faults;
    ImportPassOptions options;
    options.ValidateOnly = true;
    options.Faults = &faults;
    options.MostFaults = most;
    const bool hasFailed = ImportPass(input, database, result, options) < 0;
    if (hasFailed && faults.size() < most && !result.Message.empty()) {
        faults.push_back({result.Message, result.LineNumber});
    }
    return faults;
}

namespace {

// Returns whether a column is called "id" and holds something else than identities of cards.
bool HasIdOfOthers(const TableLayout& layout) {
    constexpr uint32_t kId = AttributeMask(false, false, kAttributeId);
    return std::any_of(layout.Columns.begin(), layout.Columns.end(), [](const TableColumn& column) {
        AttributeInfo info;
        return column.Use == ColumnUse::kIgnore && LookupAttribute(column.Heading, info) &&
               info.Mask == kId;
    });
}

bool CanOpen(const ImportInput& input, Database& database) {
    ImportResult result;
    return ImportSource(true).Open(input, database, result);
}

bool HasPreview(const ImportInput& input, Database& database) {
    ImportResult result;
    std::vector<CardAttribute> attributes;
    return !ImportPreview(input, database, result, attributes);
}

}  // namespace

bool GuessFormat(ImportInput& input, Database& database) {
    return GuessFormat(input, database, SurveyTable(input.FileName, TableChoice()));
}

bool GuessFormat(ImportInput& input, Database& database, const TableSurvey& survey) {
    // A form that does not fit is no fault.
    const wxLogNull silence;
    input.Encoding = survey.OwnEncoding;
    input.HasEscapes = survey.Layout.HasEscapes || !survey.IsOwnForm;
    input.Format = ImportFormat::kDelimited;
    for (const wchar_t delimiter : {L'\t', L',', L' ', L';'}) {
        input.Delimiter = delimiter;
        // A table is what its first row says, and a record below it may have a fault.
        const bool isNamed = survey.IsOwnForm && survey.Layout.Separator[0] == delimiter &&
                             !HasIdOfOthers(survey.Layout) && CanOpen(input, database);
        if (isNamed || HasPreview(input, database)) {
            return true;
        }
    }
    input.Delimiter = L'\t';
    input.HasEscapes = true;
    input.Format = ImportFormat::kVlmText;
    if (survey.IsOwnText || HasPreview(input, database)) {
        return true;
    }
    if (!survey.Layout.IsComplete()) {
        return false;
    }
    input.Encoding = survey.Encoding;
    input.Format = ImportFormat::kDelimited;
    input.Layout = std::make_shared<const TableLayout>(survey.Layout);
    return true;
}

bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes) {
    ImportPassOptions options;
    options.ValidateOnly = true;
    options.PreviewAttributes = &attributes;
    return ImportPass(WithFilesBeside(input), database, result, options) < 0;
}
