#pragma once

#include <sqlite3.h>
#include <wx/string.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/Files.h"
#include "base/Process.h"
#include "store/CardParts.h"
#include "store/CardRow.h"
#include "store/CategoryChoice.h"
#include "store/FlashCard.h"
#include "store/Statement.h"
#include "store/Subject.h"

struct CardTextChange;
struct OrderedCard;
struct CardRenumbering;
class Job;
struct CardSearch;
enum class CardText : uint8_t;

// The column that sorts a list of cards, or the name of their category.
enum class CardColumn : uint8_t {
    kIntroductionOrder,
    kFront,
    kBack,
    // The category's id, and the introduction order inside each category.
    kCategory,
    kCategoryName,
    kAuthor,
    kChapter,
    kForwardX,
    kReverseX,
    kNotes,
    kNextReview,
    kReviewInterval,
    kRNextReview,
    kRReviewInterval,
    kLastReview,
    kDifficulty,
    kRLastReview,
    kRDifficulty,
    kCardId
};

// The order of a list of cards, smallest first unless it is descending. Cards of the same value are
// in the order of introduction, and cards without a schedule come last in the orders of schedules.
struct CardOrder {
    CardOrder(CardColumn column, bool descending = false)
        : Column(column), Descending(descending) {}
    CardColumn Column;
    bool Descending;
};

// What other versions of the program keep with a card: FrontAudio, BackAudio, FrontImage and
// BackImage.
struct CardMedia {
    CardUuid CardId;
    std::vector<StoredValue> Values;

    size_t CountBytes() const;
};

using CardRowVisitor = std::function<void(const CardRow&)>;

// What the store asks of the program while a worker upgrades the store file: keep the user informed
// and come back when the worker has ended. The job already runs; the store joins it afterwards.
class UpgradeWait {
  public:
    virtual ~UpgradeWait() = default;
    virtual void WaitFor(const Job& worker) = 0;
};

// Gives a connection the function CONTAINS(pattern, text, ...), which is 1 where the engine's
// LOWER(text) LIKE pattern is 1 for one of the texts, ill-formed texts and limits included, and
// else 0. It works on UTF-16, as the store has its texts. Gives it RESEMBLES(pattern, text, ...)
// for patterns of MakeFoldedPattern and FOLDED(text) too. Returns the engine's result.
int RegisterSearchFunction(sqlite3* handle);

// The store: the one class that speaks SQL. Closed or open; on a closed Database every operation
// fails without touching anything. All operations return 0 or more on success and a negative value
// on failure, with results through out arguments. Every statement commits by itself, and its change
// survives a power cut from then on.
//
// A file may come from anywhere and is data, never code: nothing in its schema is run. Triggers and
// views are switched off. A file is refused if its schema would compute anything of cards,
// categories or values (a check, a generated column, an index on an expression).
//
// Call Notify once a change of cards or categories is complete. One operation runs at a time: each
// holds a recursive mutex, because update handlers of windows behind a modal dialog may run while a
// worker writes.
class Database : public Subject {
  public:
    // The report is not owned and must outlive the Database.
    explicit Database(FatalErrorReport& report);
    ~Database() override;

    // Opens or creates the store file, and upgrades one of the first schema while wait keeps the
    // user informed. The path is made absolute; an empty path and one that begins with "file:" are
    // refused. Where there is no file, or an empty one, a new store appears whole: it is made under
    // another name beside it. Reads each table and index once, to find a damaged one here. Returns
    // 0, or a negative value and a closed Database with the file as it was.
    int Open(const wxString& path, UpgradeWait& wait);
    // Opens a store file to read from, and creates and upgrades nothing: a file of the first schema
    // is read as it is, and what a program has left half done beside the file is played back in a
    // private copy. Returns 0; or a negative value for what is no whole store, an empty file
    // included, with a closed Database and the reason in GetLastError.
    int OpenToRead(const wxString& path);
    // Finalises every statement and closes the handle. Harmless on a closed Database, and without
    // effect while one is being opened.
    void Close();
    // Returns false also while a file is being opened.
    bool IsOpen() const;

    // Runs questions to the open store; a failure is a result and does not end the program. Returns
    // true when each step succeeded and the store is still open. A list of row ids counts as read
    // when the cards of its first page can be read too.
    bool Try(const std::function<void()>& ask);
    // The same for a worker beside other threads that use the store: they wait meanwhile, so that
    // none of their failures is taken for one of these.
    bool TryLocked(const std::function<void()>& ask);
    // The same for questions that may be broken off: the function is asked every few milliseconds
    // while the engine works, and returns true to stop it. The result is false then.
    bool TryUntil(const std::function<bool()>& isStopped, const std::function<void()>& ask);

    // Called before each statement that may change the open store, on its thread and with the store
    // locked: it may read the store, must not change it, and must not wait for another thread.
    void SetBeforeChange(std::function<void()> hook);
    // Gives a number that stays the same until somebody else changes the store: another connection
    // of this program, or another program. Ask for it before the cards are read.
    int ReadVersion(int64_t& version);
    // Says how long an operation waits while somebody else has locked the store. After that it
    // fails. 0 is back to the usual.
    void SetPatience(int milliseconds);
    // Copies the store's pages, as they are now, to a free path, under the store's own read lock.
    // Returns 0 and the number of cards in them, or -1 where they cannot be counted as the file is
    // damaged; else the system's number of the error.
    int CopyFile(const wxString& target, int32_t& cards);
    // Returns true for another file with just the bytes that the store has now.
    bool IsCopy(const wxString& path);
    // Returns the bytes of the store's pages, which the file may be longer than; 0 where they
    // cannot be counted.
    int64_t CountBytes();

    // Card writes. Inserting a card without an identity returns -1.
    int InsertFlashCard(const FlashCard& card);
    int UpdateFlashCard(const FlashCard& card);
    // Writes a card that was read at that version of the store. Returns kChangedSince, and writes
    // nothing, when somebody else has changed the store since: read it again. The engine compares
    // the versions once nobody else can write any more.
    static constexpr int kChangedSince = 1;
    int UpdateFlashCard(const FlashCard& card, int64_t version);
    int DeleteCard(const CardUuid& id);
    int CardDeleteByRowId(int64_t rowId);
    int CardUpdateCategory(int64_t rowId, int32_t categoryId);
    // Inserts the cards in order, many rows a statement, which is many times faster than one by
    // one. Each statement is written whole or not at all. Returns 0; or a negative value, without a
    // report, with only the first `inserted` cards in the store. Write the next one by itself then:
    // it succeeds, or its failure is reported as its own.
    int InsertFlashCards(const std::vector<FlashCard>& cards, size_t& inserted);
    // The same for many row ids; one that is gone is skipped. A group that fails is repeated card
    // by card, so that each failure is reported as its own. Returns 0, or the last failure after
    // all others were done.
    int CardsDeleteByRowId(const std::vector<int64_t>& rowIds);
    int CardsUpdateCategory(const std::vector<int64_t>& rowIds, int32_t categoryId);
    // Writes some parts of the cards in these rows, and leaves all else as it is; cardAt returns
    // the card of a place among the rows. Groups and failures as above: each card is changed whole
    // or not at all.
    int UpdateParts(const std::vector<int64_t>& rowIds, const CardParts& parts,
                    const std::function<const FlashCard&(size_t)>& cardAt);
    // Writes the parts in which a card differs from what it was when it was read, so that what
    // somebody else has changed of it meanwhile stays. A card that is gone is passed over.
    int UpdateDifferences(const FlashCard& before, const FlashCard& after);
    // Changes texts of many cards, each card's in one statement and only where all of them still
    // are as they were before. Appends the rows that were written. Failures are as above.
    int UpdateTexts(const std::vector<CardTextChange>& changes, std::vector<int64_t>& written);
    // Changes numbers in the order of introduction where they still are as before, many cards a
    // statement. Appends the rows that were written. Failures are as above.
    int UpdateOrders(const std::vector<CardRenumbering>& changes, std::vector<int64_t>& written);
    // Puts every card into review block 0, in both directions.
    int ResetErc();
    // Moves every card of one category into another.
    int UpdateFlashCardCategory(int32_t fromId, int32_t toId);

    // The columns of sounds and pictures, which this program never shows. Both serve a deletion
    // that is taken back. Appends those of the rows that have any; a file without the columns has
    // none. Returns 1, and none, when those of the rows take more bytes than that.
    int SelectMedia(const std::vector<int64_t>& rowIds, size_t mostBytes,
                    std::vector<CardMedia>& media);
    int UpdateMedia(const CardMedia& media);

    // Card reads. The list is cleared first; no match is an empty list and success.
    int SelectCardByRowId(int64_t rowId, std::list<FlashCard>& cards);
    // Shows the stored rows, in the order of the row ids, without making cards of them, and with
    // their row ids. A row id without a card is skipped. The visitor must not use the Database.
    int VisitCardsByRowId(const std::vector<int64_t>& rowIds, const CardRowVisitor& visit);
    // Shows at most that many cards after the row id, which becomes the last one shown. Returns
    // their number, or a negative value, which is not reported: a worker reads all cards in
    // portions, between which others can write. The visitor must not use the Database.
    int VisitCardsAfter(int64_t& rowId, int32_t most, const CardRowVisitor& visit);
    int SelectCardById(const CardUuid& id, std::list<FlashCard>& cards);
    // Finds what the cards in these rows have in common, without reading each of them.
    int SelectCommonParts(const std::vector<int64_t>& rowIds, CommonCard& common);
    int SelectCardsByFrontBack(const wxString& front, const wxString& back,
                               std::list<FlashCard>& cards);
    // The first card only, among those of the category that are not excluded from the direction:
    // of the introduced ones by review block and then by next review, of the others by introduction
    // order, and of the introduced ones by next review alone.
    int SelectEarly(ReviewDirection direction, int32_t categoryId, std::list<FlashCard>& cards);
    int SelectNew(ReviewDirection direction, int32_t categoryId, std::list<FlashCard>& cards);
    int SelectNextDue(ReviewDirection direction, int32_t categoryId, std::list<FlashCard>& cards);
    // Shows each introduced, not excluded card of the category whose stored next review lies before
    // the limit, in that order and with its row id. The visitor must not use the Database.
    int VisitReady(ReviewDirection direction, int32_t categoryId, const wxDateTime& limit,
                   const CardRowVisitor& visit);
    // Appends the schedules of at most that many cards after the row id, which becomes the last one
    // read. Returns their number, or a negative value, which is not reported: a worker reads all
    // cards in small portions, between which others can write.
    int SelectSchedules(int32_t most, int64_t& rowId, std::vector<CardSchedules>& cards);
    // Gives the greatest ERC of either direction over the category's introduced, not excluded
    // cards; 0 when there is none.
    int SelectMaxErc(int32_t categoryId, int32_t& erc);

    // Counts. Those of a choice of several categories are the sums over each of them.
    int CountAllCards(int32_t& count);
    int SelectCategoryIdCount(const CategoryChoice& choice, int32_t& count);
    // The cards of the choice that are not excluded from the direction; those of them that are
    // introduced; and those of these that are due.
    int Count(ReviewDirection direction, const CategoryChoice& choice, int32_t& count);
    int CountIntroduced(ReviewDirection direction, const CategoryChoice& choice, int32_t& count);
    int CountReady(ReviewDirection direction, const CategoryChoice& choice, const wxDateTime& now,
                   int32_t& count);
    int SelectCardIdCount(const CardUuid& id, int32_t& count);
    // Returns true also when the cards cannot be counted.
    bool IsEmpty();
    // Returns true when the path leads to the open store's file, under any name or link.
    bool IsStoreFile(const wxString& path);
    // Returns the path of the open store's file; empty on a closed Database.
    wxString GetPath() const;
    // Returns the path of the file that is read in its place: a private copy, which goes at Close,
    // or the file itself.
    wxString GetFileRead() const;

    // The operations above under a name for each direction.
    using Cards = std::list<FlashCard>;
    int SelectEarlyForward(int32_t id, Cards& cards) {
        return SelectEarly(kReviewForward, id, cards);
    }
    int SelectEarlyReverse(int32_t id, Cards& cards) {
        return SelectEarly(kReviewReverse, id, cards);
    }
    int SelectNewForward(int32_t id, Cards& cards) { return SelectNew(kReviewForward, id, cards); }
    int SelectNewReverse(int32_t id, Cards& cards) { return SelectNew(kReviewReverse, id, cards); }
    int SelectReadySortByNextReview(int32_t id, const wxDateTime& limit,
                                    const CardRowVisitor& visit) {
        return VisitReady(kReviewForward, id, limit, visit);
    }
    int SelectRReadySortByRNextReview(int32_t id, const wxDateTime& limit,
                                      const CardRowVisitor& visit) {
        return VisitReady(kReviewReverse, id, limit, visit);
    }
    int CountForward(int32_t id, int32_t& count) { return Count(kReviewForward, id, count); }
    int CountReverse(int32_t id, int32_t& count) { return Count(kReviewReverse, id, count); }
    int CountIntroducedForward(int32_t id, int32_t& count) {
        return CountIntroduced(kReviewForward, id, count);
    }
    int CountIntroducedReverse(int32_t id, int32_t& count) {
        return CountIntroduced(kReviewReverse, id, count);
    }
    int SelectReadyCountForward(int32_t id, const wxDateTime& now, int32_t& count) {
        return CountReady(kReviewForward, id, now, count);
    }
    int SelectReadyCountReverse(int32_t id, const wxDateTime& now, int32_t& count) {
        return CountReady(kReviewReverse, id, now, count);
    }

    // Gives the category's greatest IntroductionOrder. Returns -1, with order unchanged, for an
    // empty one.
    int SelectMaxIntroductionOrder(int32_t categoryId, int32_t& order);

    // Append the places of the category's cards, or only of those that are new in the direction and
    // not excluded from it, in the order of introduction; or of the cards in these rows, in their
    // order, without those that are gone.
    int SelectPlaces(int32_t categoryId, std::vector<OrderedCard>& places);
    int SelectNewPlaces(ReviewDirection direction, int32_t categoryId,
                        std::vector<OrderedCard>& places);
    int SelectPlaces(const std::vector<int64_t>& rowIds, std::vector<OrderedCard>& places);

    // Row ids for a list view, appended to rowIds. Each order is a statement of its own, prepared
    // once; so is each choice of several categories, which has their ids in its text. The order of
    // introduction of several categories is by the numbers alone. A search text is a LIKE pattern
    // that is not escaped; one longer than the engine's limit (50,000 bytes) finds nothing.
    int CardSelectRowIdsOrder(CardOrder order, std::vector<int64_t>& rowIds);
    int CardSelectRowIdsOrder(const CategoryChoice& choice, CardOrder order,
                              std::vector<int64_t>& rowIds);
    // At most that many, the first by introduction order or, descending, the last; takes the same
    // time in every store.
    int CardSelectFirstRowIds(const CategoryChoice& choice, bool descending, int most,
                              std::vector<int64_t>& rowIds);
    // Shows a column of texts of the cards from the first row id to the last, in the order of the
    // row ids. A failure is not reported. The visitor must not use the Database.
    int VisitTexts(CardColumn column, int64_t first, int64_t last,
                   const std::function<void(int64_t rowId, std::u16string_view text)>& visit);
    int SelectRowIdById(const CardUuid& id, std::vector<int64_t>& rowIds);
    int SearchRowIdsOrder(const wxString& text, CardOrder order, std::vector<int64_t>& rowIds);
    int SearchRowIdsOrder(const CategoryChoice& choice, const wxString& text, CardOrder order,
                          std::vector<int64_t>& rowIds);
    // The same for the words of a search. One with a problem finds nothing.
    int SearchRowIdsOrder(const CardSearch& search, CardOrder order, std::vector<int64_t>& rowIds);
    int SearchRowIdsOrder(const CategoryChoice& choice, const CardSearch& search, CardOrder order,
                          std::vector<int64_t>& rowIds);

    // Categories.
    int SelectAllCategories(std::list<Category>& categories);
    int SelectCategoryById(int32_t id, std::list<Category>& categories);
    // The column's numeric affinity turns the name "007" into 7. This lookup compares names as the
    // store does, so ask it before an insert or a rename.
    int SelectCategoryByName(const wxString& name, std::list<Category>& categories);
    // Gives the new row the smallest unused id; stray cards of that id go to -1 first. An existing
    // name fails in the engine: ask SelectCategoryByName first.
    int CategoryInsert(const wxString& name);
    // Brings a category back that was deleted: under its former id where that is free, so that it
    // stands where it stood, else under the smallest unused one.
    int CategoryBringBack(const Category& category);
    // Gives the id of the category of that name, which is made where there is none.
    int FindOrInsertCategory(const wxString& name, int32_t& id);
    int UpdateCategory(const Category& category);
    // Returns -1 while the category has cards.
    int DeleteCategory(int32_t id);

    // Store-wide values. A missing key is an empty list and success.
    int GetGlobal(const wxString& key, std::list<wxString>& values);
    int GetGlobalInt(const wxString& key, std::list<int32_t>& values);
    // Writes nothing when the value is there already.
    int SetGlobal(const wxString& key, const wxString& value);
    int SetGlobalInt(const wxString& key, int32_t value);

    // Runs any SQL text. Returns 0 or -1.
    int Execute(const wxString& sql);
    // Return the engine's text and number of the last failure.
    wxString GetLastError();
    int GetLastErrorCode();

    // For StatementRun. GetStatement prepares a text once; when that fails the whole store closes.
    sqlite3_stmt* GetStatement(std::string_view sql);
    // Marks the statement as used by that run, or as free with null. Returns -1 and changes nothing
    // when there is no statement or it is marked so already.
    int MarkStatement(sqlite3_stmt* statement, StatementRun* run);
    // Called before a statement that may change the store.
    void AnnounceChange();
    // Makes the changes since the last call survive a power cut. Called after each statement that
    // ended.
    void ConfirmChanges();
    // Reports a step that failed with that code of the engine, together with the store's path.
    // Reports nothing while a store is being opened or tried. Returns the negative code of a lock
    // or a misuse, detailed, and else -SQLITE_ERROR.
    int ReportStepFailure(sqlite3_stmt* statement, const char* label, int code);

  private:
    friend class StoreChangeGroup;
    using Lock = std::lock_guard<std::recursive_mutex>;

    // The statements that are prepared when the store opens, named after the operations that run
    // them and in the order of their preparation.
    enum class StatementId : uint8_t {
        kGetGlobal,
        kInsertGlobal,
        kUpdateGlobal,
        kInsertFlashCard,
        kUpdateFlashCard,
        kUpdateOfVersion,
        kDeleteCard,
        kCardDeleteByRowId,
        kCardUpdateCategory,
        kUpdateFlashCardCategory,
        kUnused,
        kSelectCardByRowId,
        kSelectCardById,
        kSelectCardsByFrontBack,
        kSelectEarly,
        kSelectNew,
        kSelectNextDue,
        kVisitReady,
        kSelectSchedules,
        kSelectMaxErc,
        kCountAllCards,
        kSelectCategoryIdCount,
        kCount,
        kCountIntroduced,
        kSelectCardIdCount,
        kCountReady,
        kSelectMaxIntroductionOrder,
        kSelectRowIdById,
        kSelectAllCategories,
        kSelectCategoryById,
        kSelectCategoryByName,
        kCategoryInsert,
        kUpdateCategory,
        kDeleteCategory
    };
    // A text stands in two parts. A statement that serves one direction of study has another text
    // for the reverse one.
    struct StatementText {
        StatementId Id;
        const char* Head;
        const char* Tails[2];
    };
    struct StatementKey {
        StatementKey(StatementId id, ReviewDirection direction = kReviewForward)
            : Id(id), IsReverse(direction == kReviewReverse) {}
        StatementId Id;
        bool IsReverse;
    };
    static const StatementText kStatementTexts[];
    // Prepares the statements from the first to the last.
    void Prepare(StatementId first, StatementId last);
    void FinaliseStatements();
    sqlite3_stmt* Prepared(const StatementKey& key) const {
        return mPrepared[static_cast<size_t>(key.Id)][key.IsReverse ? 1 : 0];
    }

    void CloseHandle();
    int ExecuteText(const wxString& sql);

    // The steps of Open, in their order. Each returns 0 or a negative value.
    int OpenSteps(const wxString& path, UpgradeWait& wait);
    // Keeps why a file is refused that the engine has nothing against. Returns -1.
    int Refuse(const wxString& reason, int code = SQLITE_ERROR);
    int ReadSteps(const wxString& path);
    int CreateStoreFile(const wxString& file, UpgradeWait& wait);
    int OpenFile(const wxString& file, UpgradeWait& wait);
    int OpenHandle(const wxString& file);
    int PrepareHandle(int result);
    void OpenDirectory();
    int CheckSchema();
    int FindTable(const char* sql, bool& found);
    // Leaves a file whose tables cannot serve the store as it is.
    int CheckCardTables();
    int CreateCardTables();
    int BringToVersion(UpgradeWait& wait);
    int ReadVersion(bool hasGlobals, std::list<int32_t>& versions);
    // Opens the store's file for a first copy, and returns 0 when what it holds is all of the
    // store.
    int OpenSource();
    int UpgradeFirstSchema(UpgradeWait& wait);
    int ReadEachTree();

    // Recomputes next reviews that an earlier version, whose times ended in 2038, stored as -1, for
    // the cards that the scheduler asks for. Where nothing can be written, as in a read-only file,
    // such a card stays due.
    void MendNextReviews();
    int WriteCard(const FlashCard& card);
    // Stores the identity in lower case, which the statements look for. Returns the number of rows
    // changed, or -1.
    int LowerCardId(const CardUuid& id);

    // Operations share these: each takes a statement and the arguments for its parameters.
    template <typename... Values>
    int Run(const StatementKey& key, const char* label, const Values&... values) {
        const Lock lock(mMutex);
        return StatementRun(*this, Prepared(key), values...).Step(label);
    }
    // Gives the first number of the first row; a missing row is -1.
    template <typename... Values>
    int SelectInt(const StatementKey& key, int32_t& value, const char* label,
                  const Values&... values) {
        const Lock lock(mMutex);
        StatementRun run(*this, Prepared(key), values...);
        const int result = run.Step(label);
        if (result < 0 || run.IsDone()) {
            return result < 0 ? result : -1;
        }
        value = run.ColumnInt(0);
        return 0;
    }
    // The same, added up over the categories of a choice.
    template <typename... Values>
    int SumInt(const StatementKey& key, int32_t& sum, const char* label,
               const CategoryChoice& choice, const Values&... values) {
        const Lock lock(mMutex);
        int result = 0;
        int32_t all = 0;
        choice.ForEach([&](int32_t id) {
            int32_t count = 0;
            result = SelectInt(key, count, label, id, values...);
            all += count;
            return result >= 0;
        });
        sum = result < 0 ? sum : all;
        return result;
    }
    // Reads all rows, or the first, with one of the readers of rows.
    template <typename Reader, typename Records, typename... Values>
    int Read(const StatementKey& key, const Reader& reader, Records& records,
             const Values&... values) {
        const Lock lock(mMutex);
        StatementRun run(*this, Prepared(key), values...);
        return reader(run, records);
    }
    int ReadSearch(StatementRun& run, const wxString& text, std::vector<int64_t>& rowIds);
    int BindSearch(StatementRun& run, const CardSearch& search);
    // Returns the greatest number of rows for one statement of a group, at most those that are
    // left.
    size_t GroupSize(size_t left, size_t parametersPerRow) const;
    // Steps a run whose failure the caller handles itself.
    int StepQuietly(StatementRun& run, const char* label);
    // Runs a statement over the row ids in groups: sql comes before "(?,?,...)", and values are the
    // arguments before the row ids. single does the same for one row id.
    template <typename... Values>
    int RunOverRowIds(const char* sql, const std::vector<int64_t>& rowIds,
                      const std::function<int(int64_t)>& single, const Values&... values);
    // Run one statement of UpdateTexts or UpdateOrders. StepWritten appends the row ids that the
    // statement returns, unless it fails.
    enum class Failure { kQuiet, kReported };
    int UpdateTextsOf(const std::vector<CardText>& texts, const CardTextChange* const* first,
                      const CardTextChange* const* end, Failure failure,
                      std::vector<int64_t>& written);
    int StepWritten(StatementRun& run, const char* label, Failure failure,
                    std::vector<int64_t>& written);
    int ReadPlaces(StatementRun& run, std::vector<OrderedCard>& places);
    int UpdateOrderGroup(const std::vector<CardRenumbering>& changes, size_t begin, size_t end,
                         Failure failure, std::vector<int64_t>& written);
    int ReadFirstCardsOf(StatementRun& run, std::vector<int64_t>& rowIds);
    void ReadFirstCards(const std::vector<int64_t>& rowIds);
    // The columns of CardMedia that the file has, with commas between.
    int FindMediaColumns(std::vector<std::string>& columns);
    bool IsPatternTooLong(const wxString& pattern) const;
    sqlite3_stmt* OrderedStatement(const std::string& selection, CardOrder order);
    // Makes the condition that a card is of the choice. That of one category has a parameter, which
    // BindChoice binds.
    static std::string OfChoice(const CategoryChoice& choice);
    static void BindChoice(StatementRun& run, const CategoryChoice& choice);
    // Keeps the engine's number and text for GetLastError, whatever runs afterwards.
    void KeepError();

    FatalErrorReport& mReport;
    sqlite3* mpHandle = nullptr;
    // True while Open runs: a failed step is no fatal error then, and nobody else may use the
    // handle.
    bool mOpening = false;
    // True while Try runs: a failed step sets mTryFailed instead of being reported.
    bool mTrying = false;
    bool mTryFailed = false;
    // Prepared texts. They live until the store closes.
    std::map<std::string, sqlite3_stmt*, std::less<>> mStatements;
    // Those of them that have a StatementKey, the reverse one second.
    std::array<std::array<sqlite3_stmt*, 2>, static_cast<size_t>(StatementId::kDeleteCategory) + 1>
        mPrepared{};
    // Statements in use, with the run that uses each.
    std::map<sqlite3_stmt*, StatementRun*> mStatementsInUse;
    int mLastErrorCode = SQLITE_OK;
    wxString mLastErrorText;
    // The store that was opened to read, and the copy of it that is read where there is one.
    wxString mPathRead;
    std::unique_ptr<TemporaryDirectory> mpPrivateCopy;
    // The directory of the open store's file, to be synced.
    FileDescriptor mDirectory;
    // The store's file, opened for the first copy. It stays open while the engine has the file, as
    // closing any descriptor of a file drops the locks that the process holds on it.
    FileDescriptor mSource;
    std::function<void()> mBeforeChange;
    bool mAnnouncing = false;
    // The engine's count of changed rows when the directory was last synced.
    int mConfirmedChanges = 0;
    int mChangeGroups = 0;
    mutable std::recursive_mutex mMutex;
};

// While one lives, changes of the store are confirmed together when the last one ends: each is
// still committed by itself and whole after a power cut, but the cut may undo the last of them. For
// an import, which reports success only at its end.
class StoreChangeGroup {
  public:
    explicit StoreChangeGroup(Database& database);
    ~StoreChangeGroup();
    StoreChangeGroup(const StoreChangeGroup&) = delete;
    StoreChangeGroup& operator=(const StoreChangeGroup&) = delete;

  private:
    Database& mDatabase;
};

// A store that is opened beside the program's own, such as a backup: its failures are only results,
// nothing is logged when it cannot be opened, and no window waits for an upgrade.
class QuietDatabase : private FatalErrorReport, private UpgradeWait, public Database {
  public:
    QuietDatabase() : Database(static_cast<FatalErrorReport&>(*this)) {}
    int OpenQuietly(const wxString& path);

  private:
    void Report(const wxString&) override {}
    void DeliverPending() override {}
    void WaitFor(const Job&) override {}
};
