// Filling the new store of a repair.
//
// The rows go straight into its table, which also answers what was found already. The store is
// made as this program makes each new one; then its indexes are taken away until all cards are in.

#include "files/RepairedStore.h"

#include <fcntl.h>
#include <unistd.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <limits>
#include <string>

#include "base/Files.h"
#include "base/Time.h"
#include "base/Unicode.h"
#include "store/Database.h"

const char* const kCardColumnNames[kCardColumnCount] = {"CardId",
                                                        "Front",
                                                        "Back",
                                                        "CategoryId",
                                                        "Author",
                                                        "Chapter",
                                                        "IntroductionOrder",
                                                        "ForwardX",
                                                        "ReverseX",
                                                        "Notes",
                                                        "FrontAudio",
                                                        "BackAudio",
                                                        "FrontImage",
                                                        "BackImage",
                                                        "Introduced",
                                                        "LastReview",
                                                        "NextReview",
                                                        "ReviewInterval",
                                                        "Difficulty",
                                                        "LastScore",
                                                        "ERC",
                                                        "RIntroduced",
                                                        "RLastReview",
                                                        "RNextReview",
                                                        "RReviewInterval",
                                                        "RDifficulty",
                                                        "RLastScore",
                                                        "RERC"};

namespace {

// The columns of one schedule, counted from its first.
enum SchedulePlace : size_t {
    kLastReview = 1,
    kNextReview,
    kReviewInterval,
    kDifficulty,
    kScheduleColumnCount = 7
};

// The memory that the engine may take, in KiB: while cards come in, for the pages of the index of
// identities, which are written in no order, and afterwards for the sorting of each index.
constexpr char kCacheOfCards[] = "PRAGMA cache_size=-110000";
constexpr char kCacheOfIndexes[] = "PRAGMA cache_size=-40000";

std::string JoinColumns(const char* after, const char* between) {
    std::string text;
    for (const char* const name : kCardColumnNames) {
        text += (text.empty() ? "" : between) + std::string(name) + after;
    }
    return text;
}

Cell WholeCell(int64_t number) {
    Cell cell;
    cell.Type = SQLITE_INTEGER;
    cell.Whole = number;
    return cell;
}

Cell TextCell(std::string_view utf8) {
    Cell cell;
    cell.Type = SQLITE_TEXT;
    cell.Bytes = utf8;
    return cell;
}

bool IsNumber(const Cell& cell) {
    return cell.Type == SQLITE_INTEGER || cell.Type == SQLITE_FLOAT;
}

double ToReal(const Cell& cell) {
    return cell.Type == SQLITE_FLOAT ? cell.Real : static_cast<double>(cell.Whole);
}

void BindCell(const StatementHandle& statement, int place, const Cell& cell,
              unsigned char encoding) {
    switch (cell.Type) {
        case SQLITE_INTEGER:
            sqlite3_bind_int64(statement.get(), place, cell.Whole);
            break;
        case SQLITE_FLOAT:
            sqlite3_bind_double(statement.get(), place, cell.Real);
            break;
        case SQLITE_TEXT:
            sqlite3_bind_text64(statement.get(), place, cell.Bytes.data(), cell.Bytes.length(),
                                SQLITE_STATIC, encoding);
            break;
        case SQLITE_BLOB:
            sqlite3_bind_blob64(statement.get(), place, cell.Bytes.data(), cell.Bytes.length(),
                                SQLITE_STATIC);
            break;
        default:
            sqlite3_bind_null(statement.get(), place);
    }
}

void BindCard(const StatementHandle& statement, const FoundCard& card) {
    for (size_t i = 0; i < kCardColumnCount; ++i) {
        BindCell(statement, static_cast<int>(i) + 1, card.Cells[i], card.Encoding);
    }
}

void MendWhole(Cell& cell, int64_t missing) {
    if (cell.Type == SQLITE_FLOAT && cell.Real > -9e18 && cell.Real < 9e18) {
        cell = WholeCell(static_cast<int64_t>(cell.Real));
    }
    if (cell.Type != SQLITE_INTEGER) {
        cell = WholeCell(missing);
    }
}

// Without the time of its last review a card is new.
void MendSchedule(Cell* cells) {
    if (!IsNumber(cells[kLastReview])) {
        cells[0] = Cell();
    }
    const CardSchedule fresh;
    MendWhole(cells[kLastReview], fresh.LastReview.GetTicks());
    cells[kLastReview].Whole = std::clamp<int64_t>(cells[kLastReview].Whole, -1, kLastTimeStamp);
    if (!IsNumber(cells[kReviewInterval])) {
        cells[kReviewInterval].Type = SQLITE_FLOAT;
        cells[kReviewInterval].Real = static_cast<double>(fresh.ReviewInterval);
    }
    if (!IsNumber(cells[kNextReview])) {
        const wxDateTime next = DueTime(wxDateTime(wxLongLong(cells[kLastReview].Whole * 1000)),
                                        static_cast<float>(ToReal(cells[kReviewInterval])));
        cells[kNextReview] = WholeCell(next.GetValue().GetValue() / 1000);
    }
    MendWhole(cells[kNextReview], -1);
    const int64_t next = cells[kNextReview].Whole;
    cells[kNextReview].Whole = next < 0 || next > kLastTimeStamp ? -1 : next;
    for (size_t i = 0; i < kScheduleColumnCount; ++i) {
        if (i != kReviewInterval) {
            MendWhole(cells[i], i == kDifficulty ? fresh.Difficulty : 0);
        }
    }
}

// Gives each value that is missing, or that nothing can read, the one that a new card has.
void MendCard(FoundCard& card) {
    for (const size_t place : {kFront, kBack, kAuthor, kChapter, kNotes}) {
        Cell& cell = card.Cells[place];
        cell = cell.Type == SQLITE_NULL ? TextCell("") : cell;
        cell.Type = cell.Type == SQLITE_BLOB ? SQLITE_TEXT : cell.Type;
    }
    Cell& category = card.Cells[kCategoryId];
    MendWhole(category, -1);
    if (category.Whole < 0 || category.Whole > std::numeric_limits<int32_t>::max()) {
        category.Whole = -1;
    }
    for (const size_t place : {kIntroductionOrder, kForwardX, kReverseX}) {
        MendWhole(card.Cells[place], 0);
    }
    MendSchedule(&card.Cells[kIntroduced]);
    MendSchedule(&card.Cells[kReverseIntroduced]);
}

wxString ToWide(const Cell& cell, unsigned char encoding) {
    if (cell.Type != SQLITE_TEXT) {
        return wxString();
    }
    if (encoding == SQLITE_UTF8) {
        return FromUtf8(std::string(cell.Bytes));
    }
    wxString text;
    for (size_t i = 0; i + 1 < cell.Bytes.length(); i += 2) {
        const auto first = static_cast<unsigned char>(cell.Bytes[i]);
        const auto second = static_cast<unsigned char>(cell.Bytes[i + 1]);
        text += static_cast<wchar_t>(encoding == SQLITE_UTF16BE ? first << 8 | second
                                                                : second << 8 | first);
    }
    return text;
}

}  // namespace

StatementHandle PrepareStatement(const ConnectionHandle& connection, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(connection.get(), sql.c_str(), -1, &statement, nullptr);
    return StatementHandle(result == SQLITE_OK ? statement : nullptr);
}

RepairedStore::RepairedStore(const wxString& path, const wxString& traces) : mPath(path) {
    QuietDatabase database;
    if (database.OpenQuietly(path) < 0) {
        mError = (database.GetLastErrorCode() & 0xFF) == SQLITE_FULL ? ENOSPC : EIO;
        return;
    }
    database.Close();
    sqlite3* connection = nullptr;
    const int result = sqlite3_open_v2(ToUtf8(path).c_str(), &connection,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    mConnection.reset(connection);
    const auto attach = [this](const wxString& file) {
        const StatementHandle statement = PrepareStatement(mConnection, "ATTACH ? AS Lost");
        const std::string name = ToUtf8(file);
        sqlite3_bind_text(statement.get(), 1, name.c_str(), -1, SQLITE_STATIC);
        Step(statement);
    };
    if (result != SQLITE_OK) {
        Fail();
        return;
    }
    attach(traces);
    for (const char* const sql :
         {"PRAGMA main.journal_mode=OFF", "PRAGMA Lost.journal_mode=OFF",
          "PRAGMA main.synchronous=OFF", "PRAGMA Lost.synchronous=OFF", kCacheOfCards,
          "CREATE TABLE Lost.Traces(RowId INTEGER PRIMARY KEY,CardId,Front,Back,CategoryId,"
          "IntroductionOrder)",
          "CREATE TABLE Lost.Aside AS SELECT * FROM main.Cards",
          "CREATE UNIQUE INDEX Lost.AsideIds ON Aside(CardId)", "BEGIN"}) {
        Run(sql);
    }
    DropIndexes();
    std::string question = "?";
    for (size_t i = 1; i <= kCardColumnCount; ++i) {
        question += ",?";
    }
    mHasRow = PrepareStatement(mConnection, "SELECT CardId FROM main.Cards WHERE ROWID=?");
    mInsert =
        PrepareStatement(mConnection, "INSERT OR IGNORE INTO main.Cards(" + JoinColumns("", ",") +
                                          ",ROWID) VALUES(" + question + ")");
    mHasEqual = PrepareStatement(mConnection, "SELECT 1 FROM main.Cards WHERE " +
                                                  JoinColumns(" IS ?", " AND ") + " LIMIT 1");
    mPutAside = PrepareStatement(
        mConnection, "INSERT OR IGNORE INTO Lost.Aside(" + JoinColumns("", ",") + ") SELECT " +
                         question.substr(2) +
                         " WHERE NOT EXISTS(SELECT 1 FROM main.Cards AS c WHERE c.CardId=?1)");
    mInsertCategory =
        PrepareStatement(mConnection, "INSERT OR IGNORE INTO main.Categories(Name,Id) VALUES(?,?)");
    const auto note = [this](const char* columns, const char* values, const char* updates) {
        return PrepareStatement(mConnection, std::string("INSERT INTO Lost.Traces(RowId,") +
                                                 columns + ") VALUES(?," + values +
                                                 ") ON CONFLICT(RowId) DO UPDATE SET " + updates);
    };
    mNoteIdentity = note("CardId", "?", "CardId=excluded.CardId");
    mNoteTexts = note("Front,Back", "?,?", "Front=excluded.Front,Back=excluded.Back");
    mNotePlace = note("CategoryId,IntroductionOrder", "?,?",
                      "CategoryId=excluded.CategoryId,"
                      "IntroductionOrder=excluded.IntroductionOrder");
    ::unlink(ToUtf8(traces).c_str());
}

void RepairedStore::Fail() {
    if (mError == 0) {
        const int code = mConnection == nullptr ? SQLITE_ERROR : sqlite3_errcode(mConnection.get());
        mError = (code & 0xFF) == SQLITE_FULL ? ENOSPC : EIO;
    }
}

bool RepairedStore::Run(const char* sql) {
    if (mError == 0 &&
        sqlite3_exec(mConnection.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail();
    }
    return mError == 0;
}

bool RepairedStore::Step(const StatementHandle& statement) {
    if (mError != 0) {
        return false;
    }
    const int result = statement == nullptr ? SQLITE_ERROR : sqlite3_step(statement.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        Fail();
    }
    sqlite3_reset(statement.get());
    return result == SQLITE_ROW;
}

void RepairedStore::DropIndexes() {
    const StatementHandle indexes = PrepareStatement(
        mConnection, "SELECT name,sql FROM main.sqlite_master WHERE type='index' AND sql NOT NULL");
    std::vector<std::string> drops;
    const auto text = [&indexes](int column) {
        const auto* const bytes = sqlite3_column_text(indexes.get(), column);
        return std::string(bytes == nullptr ? "" : reinterpret_cast<const char*>(bytes));
    };
    while (indexes != nullptr && sqlite3_step(indexes.get()) == SQLITE_ROW) {
        drops.push_back("DROP INDEX main." + text(0));
        mIndexes.push_back(text(1));
    }
    sqlite3_reset(indexes.get());
    for (const std::string& drop : drops) {
        Run(drop.c_str());
    }
}

bool RepairedStore::HasRow(int64_t rowId, std::string_view id, unsigned char encoding) {
    sqlite3_stmt* const row = mHasRow.get();
    sqlite3_bind_int64(row, 1, rowId);
    bool isSame = false;
    if (mError == 0 && sqlite3_step(row) == SQLITE_ROW) {
        const void* const bytes = encoding == SQLITE_UTF8
                                      ? static_cast<const void*>(sqlite3_column_text(row, 0))
                                      : sqlite3_column_text16(row, 0);
        const int length =
            encoding == SQLITE_UTF8 ? sqlite3_column_bytes(row, 0) : sqlite3_column_bytes16(row, 0);
        isSame = bytes != nullptr && id == std::string_view(static_cast<const char*>(bytes),
                                                            static_cast<size_t>(length));
    }
    sqlite3_reset(row);
    return isSame;
}

bool RepairedStore::Insert(const FoundCard& card) {
    BindCard(mInsert, card);
    if (card.RowId) {
        sqlite3_bind_int64(mInsert.get(), kCardColumnCount + 1, *card.RowId);
    } else {
        sqlite3_bind_null(mInsert.get(), kCardColumnCount + 1);
    }
    Step(mInsert);
    if (mError != 0 || sqlite3_changes(mConnection.get()) == 0) {
        return false;
    }
    mRowIds.Add(sqlite3_last_insert_rowid(mConnection.get()));
    return true;
}

bool RepairedStore::HasEqual(const FoundCard& card) {
    BindCard(mHasEqual, card);
    return Step(mHasEqual);
}

// Two rows have one row id where one of these is damaged. Returns false where the card itself is
// there already.
bool RepairedStore::PutAside(const FoundCard& card) {
    BindCard(mPutAside, card);
    Step(mPutAside);
    return mError == 0 && sqlite3_changes(mConnection.get()) > 0;
}

bool RepairedStore::AddCard(const FoundCard& card, bool isOfStore) {
    FoundCard mended = card;
    MendCard(mended);
    CardUuid id;
    if (ParseUuid(ToWide(card.Cells[kCardId], card.Encoding), id) != 0) {
        id = CardUuid();
    }
    bool isInserted = false;
    bool isAside = false;
    const bool hasIdentity = !id.IsZero();
    // The second time a card of the store has another identity.
    for (int i = 0; i < 2 && !isInserted && mError == 0; ++i) {
        if (id.IsZero() && GenerateUuid(id) != 0) {
            mError = EIO;
            return false;
        }
        // All texts of a statement may have another encoding each.
        const std::array<char, 36> utf8 = UuidText(id);
        std::array<char, 72> utf16{};
        for (size_t place = 0; place < utf8.size(); ++place) {
            utf16[2 * place + (card.Encoding == SQLITE_UTF16BE ? 1 : 0)] = utf8[place];
        }
        mended.Cells[kCardId] = card.Encoding == SQLITE_UTF8
                                    ? TextCell({utf8.data(), utf8.size()})
                                    : TextCell({utf16.data(), utf16.size()});
        isInserted = Insert(mended);
        isAside = !isInserted && i == 0 && hasIdentity && PutAside(mended);
        if (!isInserted && (isAside || !isOfStore || HasEqual(mended))) {
            break;
        }
        id = CardUuid();
    }
    mCards += isInserted ? 1 : 0;
    return isInserted || isAside;
}

void RepairedStore::AddCategory(int64_t id, const Cell& name, unsigned char encoding) {
    if (id < 0 || id > std::numeric_limits<int32_t>::max() || name.Type == SQLITE_NULL ||
        (!IsNumber(name) && name.Bytes.empty())) {
        return;
    }
    BindCell(mInsertCategory, 1, name, encoding);
    sqlite3_bind_int64(mInsertCategory.get(), 2, id);
    Step(mInsertCategory);
    if (mError == 0 && sqlite3_changes(mConnection.get()) > 0) {
        ++mCategories;
        return;
    }
    // Two names may have become equal; their cards then share the category.
    const StatementHandle same =
        PrepareStatement(mConnection, "SELECT Id FROM main.Categories WHERE Name=? AND Id<>?");
    BindCell(same, 1, name, encoding);
    sqlite3_bind_int64(same.get(), 2, id);
    if (same != nullptr && sqlite3_step(same.get()) == SQLITE_ROW) {
        mMerged.emplace_back(static_cast<int32_t>(id), sqlite3_column_int(same.get(), 0));
    }
}

void RepairedStore::NoteIdentity(int64_t rowId, const wxString& id) {
    const std::string text = ToUtf8(id);
    sqlite3_bind_int64(mNoteIdentity.get(), 1, rowId);
    BindCell(mNoteIdentity, 2, TextCell(text), SQLITE_UTF8);
    Step(mNoteIdentity);
}

void RepairedStore::NoteTexts(int64_t rowId, const Cell& front, const Cell& back,
                              unsigned char encoding) {
    sqlite3_bind_int64(mNoteTexts.get(), 1, rowId);
    BindCell(mNoteTexts, 2, front, encoding);
    BindCell(mNoteTexts, 3, back, encoding);
    Step(mNoteTexts);
}

void RepairedStore::NotePlace(int64_t rowId, int32_t categoryId, int32_t introductionOrder) {
    sqlite3_bind_int64(mNotePlace.get(), 1, rowId);
    sqlite3_bind_int(mNotePlace.get(), 2, categoryId);
    sqlite3_bind_int(mNotePlace.get(), 3, introductionOrder);
    Step(mNotePlace);
}

void RepairedStore::RemakeCards(RepairReport& report) {
    const StatementHandle traces = PrepareStatement(
        mConnection,
        "SELECT RowId,CardId,Front,Back,CategoryId,IntroductionOrder FROM Lost.Traces AS t"
        " WHERE NOT EXISTS(SELECT 1 FROM main.Cards AS c WHERE c.ROWID=t.RowId)"
        " AND NOT EXISTS(SELECT 1 FROM main.Cards AS c WHERE c.CardId=t.CardId)"
        " AND NOT EXISTS(SELECT 1 FROM Lost.Aside AS a WHERE a.CardId=t.CardId)");
    const auto text = [&traces](int column) {
        const auto* const bytes = sqlite3_column_text(traces.get(), column);
        const auto length = static_cast<size_t>(sqlite3_column_bytes(traces.get(), column));
        return bytes == nullptr ? Cell() : TextCell({reinterpret_cast<const char*>(bytes), length});
    };
    while (mError == 0 && traces != nullptr && sqlite3_step(traces.get()) == SQLITE_ROW) {
        FoundCard card;
        card.RowId = sqlite3_column_int64(traces.get(), 0);
        card.Cells[kCardId] = text(1);
        card.Cells[kFront] = text(2);
        card.Cells[kBack] = text(3);
        if (sqlite3_column_type(traces.get(), 4) != SQLITE_NULL) {
            card.Cells[kCategoryId] = WholeCell(sqlite3_column_int(traces.get(), 4));
            card.Cells[kIntroductionOrder] = WholeCell(sqlite3_column_int(traces.get(), 5));
        }
        if (card.Cells[kFront].Type == SQLITE_NULL || !AddCard(card, false)) {
            ++report.Lost;
        } else {
            ++report.Remade;
        }
    }
}

void RepairedStore::NameCategories(RepairReport& report) {
    report.Categories = mCategories;
    const auto move = [this](int32_t from, int32_t into) {
        Run(wxString::Format("UPDATE main.Cards SET CategoryId=%i WHERE CategoryId=%i", into, from)
                .utf8_str());
    };
    for (const auto& [from, into] : mMerged) {
        move(from, into);
    }
    std::vector<int32_t> nameless;
    const StatementHandle ids =
        PrepareStatement(mConnection,
                         "SELECT DISTINCT CategoryId FROM main.Cards WHERE CategoryId>=0"
                         " AND CategoryId NOT IN (SELECT Id FROM main.Categories)");
    while (ids != nullptr && sqlite3_step(ids.get()) == SQLITE_ROW) {
        nameless.push_back(sqlite3_column_int(ids.get(), 0));
    }
    sqlite3_reset(ids.get());
    const size_t before = mMerged.size();
    for (const int32_t id : nameless) {
        const std::string name = ToUtf8(wxString::Format(_("Category %i"), id));
        AddCategory(id, TextCell(name), SQLITE_UTF8);
        ++report.NamelessCategories;
    }
    for (size_t i = before; i < mMerged.size(); ++i) {
        move(mMerged[i].first, mMerged[i].second);
    }
}

void RepairedStore::Finish(RepairReport& report) {
    RemakeCards(report);
    const std::string columns = JoinColumns("", ",");
    Run(("INSERT OR IGNORE INTO main.Cards(" + columns + ") SELECT " + columns + " FROM Lost.Aside")
            .c_str());
    mCards += mError == 0 ? sqlite3_changes(mConnection.get()) : 0;
    if (mError == 0 && mCards == 0 && mCategories == 0) {
        mError = EILSEQ;
    }
    report.Cards = mCards - report.Remade;
    Run(kCacheOfIndexes);
    for (const std::string& index : mIndexes) {
        Run(index.c_str());
    }
    NameCategories(report);
    Run("COMMIT");
    for (StatementHandle* const statement :
         {&mHasRow, &mInsert, &mHasEqual, &mPutAside, &mInsertCategory, &mNoteIdentity, &mNoteTexts,
          &mNotePlace}) {
        statement->reset();
    }
    mConnection.reset();
    const FileDescriptor file(::open(ToUtf8(mPath).c_str(), O_RDWR | O_CLOEXEC));
    if (mError == 0 && (!file.IsOpen() || ::fsync(file.Get()) != 0)) {
        mError = errno;
    }
}
