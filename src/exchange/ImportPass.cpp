#include "exchange/ImportPass.h"

#include <wx/intl.h>

#include <limits>
#include <new>

#include "exchange/CardRecord.h"
#include "exchange/ImportJob.h"
#include "exchange/ImportRecord.h"
#include "exchange/ImportSource.h"
#include "store/Database.h"
#include "store/Statement.h"

bool ImportCategories::Load() {
    std::list<Category> categories;
    if (mDatabase.SelectAllCategories(categories) < 0) {
        return false;
    }
    for (const Category& category : categories) {
        mIds.emplace(category.Name, category.Id);
    }
    return true;
}

bool ImportCategories::FindOrCreate(const wxString& name, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    if (mDatabase.CategoryInsert(name) < 0) {
        return mResult.Fail(StoreMessage(_("Category create error %i:%s"), mDatabase));
    }
    switch (FindInStore(name, id)) {
        case Search::kFound:
            return true;
        case Search::kMissing:
            return mResult.Fail(_("Category create failed. (3)"));
        default:
            return false;
    }
}

bool ImportCategories::FindOrAsk(const wxString& name, bool ask, int32_t line, int32_t& id) {
    const Search search = Find(name, id);
    if (search != Search::kMissing) {
        return search == Search::kFound;
    }
    id = -1;
    mIds.emplace(name, id);
    if (ask && !mResult.YesToAllCategories) {
        mResult.CategoryName = name;
        return mResult.Ask(ImportRequest::kNewCategory, line);
    }
    return true;
}

ImportCategories::Search ImportCategories::Find(const wxString& name, int32_t& id) {
    const auto known = mIds.find(name);
    if (known == mIds.end()) {
        return FindInStore(name, id);
    }
    id = known->second;
    return Search::kFound;
}

ImportCategories::Search ImportCategories::FindInStore(const wxString& name, int32_t& id) {
    std::list<Category> found;
    if (mDatabase.SelectCategoryByName(name, found) < 0) {
        mResult.Fail(StoreReadMessage(mDatabase));
        return Search::kFailed;
    }
    if (found.empty()) {
        return Search::kMissing;
    }
    id = found.front().Id;
    mIds.emplace(name, id);
    return Search::kFound;
}

namespace {

int32_t Following(int32_t order) {
    return order == std::numeric_limits<int32_t>::max() ? order : order + 1;
}

}  // namespace

void IntroductionOrders::Note(int32_t categoryId, int32_t order) {
    const auto next = mNext.find(categoryId);
    if (next != mNext.end() && next->second <= order) {
        next->second = Following(order);
    }
}

int32_t IntroductionOrders::Take(int32_t categoryId) {
    auto next = mNext.find(categoryId);
    if (next == mNext.end()) {
        int32_t greatest = 0;
        const bool found = mDatabase.SelectMaxIntroductionOrder(categoryId, greatest) >= 0;
        next = mNext.emplace(categoryId, found ? Following(greatest) : 0).first;
    }
    const int32_t order = next->second;
    next->second = Following(order);
    return order;
}

namespace {

// The steps of one pass. A step that fails puts the reason into the result and gives false.
class Pass {
  public:
    Pass(const ImportInput& input, Database& database, ImportResult& result,
         const ImportPassOptions& options)
        : mInput(input),
          mDatabase(database),
          mResult(result),
          mOptions(options),
          mSource(options.PreviewAttributes != nullptr),
          mCategories(database, result),
          mOrders(database) {}

    bool Run();

  private:
    bool ReadRecords();
    bool Finish();
    bool TakeRecord();
    bool FindCategory(ImportRecord& record, int32_t line);
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
    ImportCategories mCategories;
    IntroductionOrders mOrders;
};

bool Pass::Run() {
    // Not even looked into: to close another handle on the file drops the engine's locks.
    if (mDatabase.IsStoreFile(mInput.FileName)) {
        return mResult.Fail(DatabaseFileMessage(mInput.FileName));
    }
    const StoreReadLock lock(mDatabase);
    return mCategories.Load() && mSource.Open(mInput, mResult) && ReadRecords();
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
            return true;
        }
    }
    return Finish();
}

// The reader has no further record.
bool Pass::Finish() {
    const CardRecordReader& reader = mSource.Reader();
    const int32_t line = reader.GetLineNumber();
    if (mSource.HasFailed()) {
        mResult.LineNumber = line;
        return mResult.Fail(mSource.FailureMessage());
    }
    switch (reader.GetError()) {
        case CardRecordReader::kMissingSeparator:
            mResult.LineNumber = line;
            return mResult.Fail(_("Line is missing the colon (:) symbol"));
        case CardRecordReader::kRepeatedAttribute:
            mResult.LineNumber = line;
            return mResult.Fail(RepeatedAttributeMessage());
        default:
            break;
    }
    return mResult.Advance(ImportStatus::kRunning, ImportStatus::kFinished) ||
           mResult.FailCancelled(line);
}

bool Pass::TakeRecord() {
    const CardRecordReader& reader = mSource.Reader();
    const int32_t line = reader.GetAttribute(0).Line;
    ImportRecord record;
    if (!record.Read(reader, mDatabase, mResult)) {
        return false;
    }
    mResult.LineNumber = line;
    if (!FindCategory(record, line) || !CheckComplete(record)) {
        return false;
    }
    record.JoinSecondTexts();
    if (mOptions.PreviewAttributes != nullptr) {
        return true;
    }
    return mOptions.ValidateOnly ? CheckPairIsNew(record) : Write(record);
}

bool Pass::FindCategory(ImportRecord& record, int32_t line) {
    int32_t& id = record.Card.CategoryId;
    if (mOptions.ValidateOnly) {
        const bool ask = mOptions.AskCategories && record.NamesCategory;
        return mCategories.FindOrAsk(record.CategoryName, ask, line, id);
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

// A record without an id must not bring a pair of texts that a card of the store has already.
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
        ++mResult.DuplicatesIgnored;
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
    if (!record.Has(kAttributeIntroductionOrder)) {
        card.IntroductionOrder = mOrders.Take(card.CategoryId);
    }
    if (mDatabase.InsertFlashCard(card) < 0) {
        return mResult.Fail(
            StoreMessage(_("Unable to add flash card to database.  (%i:%s)"), mDatabase));
    }
    ++mResult.RecordsInserted;
    return true;
}

// A stored card and its imported version differ.
bool Pass::Merge(ImportRecord& record, int32_t line) {
    const FlashCard& stored = record.Stored.front();
    const bool sameTexts = record.Card.Front == stored.Front && record.Card.Back == stored.Back;
    if (sameTexts || mResult.MergePolicy == ImportMergePolicy::kKeepImported) {
        return Update(record.Card);
    }
    if (mResult.MergePolicy == ImportMergePolicy::kKeepDatabase) {
        // Counted as merged: the conflict was settled.
        ++mResult.RecordsMerged;
        return true;
    }
    mResult.DatabaseCard = stored;
    mResult.ImportedCard = record.Card;
    mResult.AttributeMask = record.Mask;
    return mResult.Ask(ImportRequest::kMerge, line) && Update(mResult.MergedCard);
}

bool Pass::Update(const FlashCard& card) {
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
        // A record too long for the memory, such as a quote that a huge file never closes.
        result.Fail(UnreadableFileMessage(input.FileName));
        return -1;
    }
}

int ImportCards(const ImportInput& input, Database& database, ImportResult& result,
                bool askCategories, std::set<int32_t>* touchedCategories) {
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
    options.ValidateOnly = false;
    options.TouchedCategories = touchedCategories;
    return ImportPass(input, database, result, options);
}

bool ImportPreview(const ImportInput& input, Database& database, ImportResult& result,
                   std::vector<CardAttribute>& attributes) {
    ImportPassOptions options;
    options.ValidateOnly = true;
    options.PreviewAttributes = &attributes;
    return ImportPass(input, database, result, options) < 0;
}
