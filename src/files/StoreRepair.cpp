// Saving the rows of a damaged store.
//
// What the engine can read is saved as the engine reads it. But the engine gives up a table at its
// first bad page, and the rows after that page are still there. So the repair goes these ways in
// turn, and keeps nothing in memory but the page that it looks at:
//
//     1. The engine reads the tables from the front. Where it fails it is asked for the next rows
//        that it can find.
//     2. Unless the table and its index of identities agree now, all pages of the file are looked
//        through. Leaves of tables have rows that were not found yet: each is read by the engine
//        under its row id and else as it stands in its page. Pages of indexes tell of cards whose
//        own page is gone: that of identities, that of fronts and backs, and that of categories
//        and introduction orders have their texts and places.
//     3. The new store gets its indexes, and names for categories that have none.
//
// A row that goes on in other pages is read by its page, since the engine does not see that one of
// those has become empty. Freed pages hold rows of long ago. They are known by the list of free
// pages and left out.
//
// All this is done to a copy, in which holes stay holes and sectors that cannot be read are zeros.
// A journal or a write-ahead log that waits beside the store is played back there, by the engine.

#include "files/StoreRepair.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/intl.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "base/Files.h"
#include "base/Unicode.h"
#include "files/PageFile.h"
#include "files/RepairedStore.h"
#include "files/StoreFiles.h"
#include "media/MediaFolder.h"
#include "store/Database.h"
#include "store/StoreCompanions.h"

namespace {

namespace fs = std::filesystem;

// The fewest columns of a record that is taken for a card although it has no proper identity.
constexpr size_t kFewestColumns = 8;
// How often the engine is asked to go on after a row that it could not read.
constexpr int kMostResumptions = 2000;
constexpr char kWorkName[] = "velomind-repair";

// The cards as the engine reads them, and as the schema of the damaged store has them.
class EngineReader {
  public:
    EngineReader(const std::string& path, RepairedStore& store);

    // True where there is a table of cards that can be asked for rows.
    bool IsReady() const { return mRow != nullptr; }
    // Saves all rows that it can read. Returns true when those are all there are.
    bool SaveAll();
    // Saves one row. False where it cannot be read.
    bool SaveRow(int64_t rowId);
    // Saves the rows that were left to the pages and that those did not have.
    void SaveLeft();
    // The place among a card's values of each value of a record, kCardColumnCount for none.
    const std::vector<size_t>& RecordPlaces() const { return mRecordPlaces; }

  private:
    void ReadSchema();
    bool SaveCards();
    bool SaveCategories();
    bool Agrees(const char* table, int64_t rows);
    FoundCard ReadCard(const StatementHandle& statement) const;
    // A row that may not be what it was: nothing is in it, or it goes on in other pages.
    bool IsDoubtful(const FoundCard& card) const;

    RepairedStore& mStore;
    ConnectionHandle mConnection;
    unsigned char mEncoding = SQLITE_UTF16LE;
    size_t mPageSize = 4096;
    int64_t mMostRows = 0;
    std::vector<size_t> mRecordPlaces;
    // Those of them that the engine is asked for, in the order of the question.
    std::vector<size_t> mAskedPlaces;
    bool mHasRowIds = true;
    StatementHandle mScan;
    StatementHandle mRow;
    // In ascending order.
    std::vector<int64_t> mLeft;
};

// What stands in the schema is data, and a fault in it no reason to read nothing.
EngineReader::EngineReader(const std::string& path, RepairedStore& store) : mStore(store) {
    sqlite3* connection = nullptr;
    sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
    mConnection.reset(connection);
    for (const int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_VIEW,
                             SQLITE_DBCONFIG_ENABLE_TRIGGER}) {
        sqlite3_db_config(connection, option, 0, nullptr);
    }
    sqlite3_drop_modules(connection, nullptr);
    sqlite3_exec(connection, "PRAGMA writable_schema=ON", nullptr, nullptr, nullptr);
    ReadSchema();
}

void EngineReader::ReadSchema() {
    struct Column {
        std::string Name;
        int Hidden;
    };
    std::vector<Column> columns;
    const StatementHandle schema = PrepareStatement(mConnection, "PRAGMA table_xinfo(Cards)");
    while (schema != nullptr && sqlite3_step(schema.get()) == SQLITE_ROW) {
        const auto* const bytes =
            reinterpret_cast<const char*>(sqlite3_column_text(schema.get(), 1));
        columns.push_back({bytes == nullptr ? "" : bytes, sqlite3_column_int(schema.get(), 6)});
    }
    const auto isThere = [&columns](const char* name) {
        return std::any_of(columns.begin(), columns.end(), [name](const Column& column) {
            return sqlite3_stricmp(column.Name.c_str(), name) == 0;
        });
    };
    std::string names;
    bool hasTexts = false;
    for (size_t i = 0; i < columns.size(); ++i) {
        const char* const name = columns[i].Name.c_str();
        const auto* const found =
            std::find_if(std::begin(kCardColumnNames), std::end(kCardColumnNames),
                         [name](const char* known) { return sqlite3_stricmp(name, known) == 0; });
        auto place = static_cast<size_t>(found - std::begin(kCardColumnNames));
        // The damage may lie in the name itself.
        if (place == kCardColumnCount && columns.size() == kCardColumnCount &&
            !isThere(kCardColumnNames[i])) {
            place = i;
        }
        // A column that the engine computes is not read, and one of the two kinds is in no record.
        constexpr int kVirtual = 2;
        if (columns[i].Hidden != kVirtual) {
            mRecordPlaces.push_back(columns[i].Hidden == 0 ? place : size_t{kCardColumnCount});
        }
        if (columns[i].Hidden == 0 && place < kCardColumnCount) {
            mAskedPlaces.push_back(place);
            names += ",\"";
            for (const char character : columns[i].Name) {
                names += character == '"' ? "\"\"" : std::string(1, character);
            }
            names += '"';
            hasTexts = hasTexts || place == kFront || place == kBack;
        }
    }
    if (!hasTexts) {
        mRecordPlaces.resize(kCardColumnCount);
        for (size_t i = 0; i < kCardColumnCount; ++i) {
            mRecordPlaces[i] = i;
        }
        return;
    }
    const auto ask = [this](const char* question) {
        const StatementHandle statement = PrepareStatement(mConnection, question);
        const bool isRow = statement != nullptr && sqlite3_step(statement.get()) == SQLITE_ROW;
        const auto* const text = isRow ? sqlite3_column_text(statement.get(), 0) : nullptr;
        return std::string(text == nullptr ? "" : reinterpret_cast<const char*>(text));
    };
    constexpr unsigned char kNative =
        wxBYTE_ORDER == wxLITTLE_ENDIAN ? SQLITE_UTF16LE : SQLITE_UTF16BE;
    mEncoding = ask("PRAGMA encoding") == "UTF-8" ? SQLITE_UTF8 : kNative;
    mPageSize = static_cast<size_t>(std::max(512, std::atoi(ask("PRAGMA page_size").c_str())));
    constexpr int64_t kLeastRow = 8;
    mMostRows = std::atoll(ask("PRAGMA page_count").c_str()) *
                (static_cast<int64_t>(mPageSize) / kLeastRow);
    // A column may have one of the engine's names for the row id.
    for (const char* const rowId : {"rowid", "oid", "_rowid_"}) {
        if (!isThere(rowId) && mRow == nullptr) {
            const std::string select =
                std::string("SELECT ") + rowId + names + " FROM Cards NOT INDEXED WHERE " + rowId;
            mRow = PrepareStatement(mConnection, select + "=?");
            mScan = PrepareStatement(mConnection, select + ">=? ORDER BY " + rowId);
        }
    }
    if (mScan == nullptr) {
        mHasRowIds = false;
        mScan = PrepareStatement(mConnection, "SELECT NULL" + names + " FROM Cards");
    }
}

FoundCard EngineReader::ReadCard(const StatementHandle& statement) const {
    FoundCard card;
    card.Encoding = mEncoding;
    sqlite3_stmt* const row = statement.get();
    if (mHasRowIds) {
        card.RowId = sqlite3_column_int64(row, 0);
    }
    for (size_t i = 0; i < mAskedPlaces.size(); ++i) {
        const int column = static_cast<int>(i) + 1;
        Cell& cell = card.Cells[mAskedPlaces[i]];
        cell.Type = sqlite3_column_type(row, column);
        cell.Whole = cell.Type == SQLITE_INTEGER ? sqlite3_column_int64(row, column) : 0;
        cell.Real = cell.Type == SQLITE_FLOAT ? sqlite3_column_double(row, column) : 0;
        if (cell.Type == SQLITE_BLOB) {
            cell.Bytes = {static_cast<const char*>(sqlite3_column_blob(row, column)),
                          static_cast<size_t>(sqlite3_column_bytes(row, column))};
        } else if (cell.Type == SQLITE_TEXT && mEncoding == SQLITE_UTF8) {
            cell.Bytes = {reinterpret_cast<const char*>(sqlite3_column_text(row, column)),
                          static_cast<size_t>(sqlite3_column_bytes(row, column))};
        } else if (cell.Type == SQLITE_TEXT) {
            cell.Bytes = {static_cast<const char*>(sqlite3_column_text16(row, column)),
                          static_cast<size_t>(sqlite3_column_bytes16(row, column))};
        }
    }
    return card;
}

bool EngineReader::IsDoubtful(const FoundCard& card) const {
    // The numbers of a row, and the list of what is in it, are shorter than this.
    constexpr size_t kOther = 300;
    size_t length = kOther;
    size_t texts = 0;
    for (size_t i = 0; i < kCardColumnCount; ++i) {
        length += card.Cells[i].Bytes.length();
        texts += i <= kNotes ? card.Cells[i].Bytes.length() : 0;
    }
    return texts == 0 || length > mPageSize;
}

bool EngineReader::SaveAll() {
    const bool isWhole = SaveCards();
    return SaveCategories() && isWhole;
}

// Rows come in the order of their row ids, unless one of these is damaged: then the scan goes on
// all the same. A tree whose branches meet again gives its rows over and over, which ends at more
// rows than the file can have.
bool EngineReader::SaveCards() {
    if (mScan == nullptr) {
        return false;
    }
    constexpr int64_t kFirst = std::numeric_limits<int64_t>::min();
    constexpr int64_t kLast = std::numeric_limits<int64_t>::max();
    int64_t rows = 0;
    int64_t next = kFirst;
    int64_t gap = 0;
    bool isInOrder = true;
    for (int resumptions = 0; resumptions < kMostResumptions && mStore.GetError() == 0;) {
        if (mHasRowIds) {
            sqlite3_bind_int64(mScan.get(), 1, next);
        }
        int result = SQLITE_ROW;
        int64_t least = next;
        while (rows < mMostRows && (result = sqlite3_step(mScan.get())) == SQLITE_ROW &&
               mStore.GetError() == 0) {
            const FoundCard card = ReadCard(mScan);
            const int64_t rowId = card.RowId.value_or(least);
            isInOrder = isInOrder && rowId >= least;
            least = rowId < kLast && card.RowId ? rowId + 1 : least;
            ++rows;
            gap = 0;
            const bool isAhead = mLeft.empty() || rowId > mLeft.back();
            if (card.RowId && isAhead && IsDoubtful(card)) {
                mLeft.push_back(rowId);
            } else {
                mStore.AddCard(card, true);
            }
        }
        sqlite3_reset(mScan.get());
        next = std::max(next, least);
        if (result == SQLITE_DONE || !mHasRowIds || rows >= mMostRows) {
            return result == SQLITE_DONE && resumptions == 0 && isInOrder && mLeft.empty() &&
                   Agrees("Cards", rows);
        }
        // The greatest row id of a damaged store is not known, and what is asked for after a bad
        // page has to lie after all its rows.
        if (gap > kLast / 4 || next > kLast - 2 * gap - 1) {
            return false;
        }
        resumptions += gap == 0 ? 1 : 0;
        next = next == kFirst ? 0 : next;
        next += gap == 0 ? 1 : gap;
        gap = gap == 0 ? 1 : 2 * gap;
    }
    return false;
}

bool EngineReader::SaveCategories() {
    const StatementHandle categories =
        PrepareStatement(mConnection, "SELECT Id,Name FROM Categories NOT INDEXED");
    int64_t rows = 0;
    int result = SQLITE_ERROR;
    while (categories != nullptr && (result = sqlite3_step(categories.get())) == SQLITE_ROW) {
        Cell name;
        name.Type = sqlite3_column_type(categories.get(), 1);
        name.Whole = sqlite3_column_int64(categories.get(), 1);
        name.Real = sqlite3_column_double(categories.get(), 1);
        const auto* const bytes =
            reinterpret_cast<const char*>(sqlite3_column_text(categories.get(), 1));
        name.Bytes = {bytes == nullptr ? "" : bytes,
                      static_cast<size_t>(sqlite3_column_bytes(categories.get(), 1))};
        mStore.AddCategory(sqlite3_column_int64(categories.get(), 0), name, SQLITE_UTF8);
        ++rows;
    }
    return result == SQLITE_DONE && Agrees("Categories", rows);
}

// Whether the index that the engine itself keeps of a table has as many entries.
bool EngineReader::Agrees(const char* table, int64_t rows) {
    const std::string name = table;
    const StatementHandle count =
        PrepareStatement(mConnection, "SELECT count(*) FROM " + name +
                                          " INDEXED BY sqlite_autoindex_" + name + "_1");
    return count != nullptr && sqlite3_step(count.get()) == SQLITE_ROW &&
           sqlite3_column_int64(count.get(), 0) == rows;
}

bool EngineReader::SaveRow(int64_t rowId) {
    if (mRow == nullptr) {
        return false;
    }
    sqlite3_bind_int64(mRow.get(), 1, rowId);
    const bool isRead = sqlite3_step(mRow.get()) == SQLITE_ROW;
    const bool isSaved = isRead && mStore.AddCard(ReadCard(mRow), true);
    sqlite3_reset(mRow.get());
    return isSaved;
}

void EngineReader::SaveLeft() {
    for (const int64_t rowId : mLeft) {
        if (!mStore.HasRow(rowId)) {
            SaveRow(rowId);
        }
    }
}

// What the pages have beyond that.
class PageReader {
  public:
    PageReader(const PageFile& file, EngineReader& engine, RepairedStore& store)
        : mFile(file), mEngine(engine), mStore(store) {}
    void SaveRows();
    // Saves those cards of equal row ids that were passed over.
    void SaveDoubles();
    void NoteEntries();
    int32_t CountShortened() const { return mShortened; }

  private:
    unsigned char Encoding() const;
    Cell ToCell(const Value& value) const;
    const Value* FindIdentity(const Record& record) const;
    bool IsCard(const Record& record) const;
    bool IsOther(int64_t rowId, const Record& record) const;
    void SaveRow(int64_t rowId, const Record& record, bool isFree);
    void NoteEntry(const Record& entry);

    const PageFile& mFile;
    EngineReader& mEngine;
    RepairedStore& mStore;
    int32_t mShortened = 0;
    // The row ids of cards in pages, and those that two cards have.
    RowIds mSeen;
    RowIds mDoubles;
};

unsigned char PageReader::Encoding() const {
    switch (mFile.Encoding()) {
        case TextEncoding::kUtf8:
            return SQLITE_UTF8;
        case TextEncoding::kUtf16Big:
            return SQLITE_UTF16BE;
        case TextEncoding::kUtf16Little:
            break;
    }
    return SQLITE_UTF16LE;
}

Cell PageReader::ToCell(const Value& value) const {
    Cell cell;
    if (const auto* const whole = std::get_if<int64_t>(&value)) {
        cell.Type = SQLITE_INTEGER;
        cell.Whole = *whole;
    } else if (const auto* const real = std::get_if<double>(&value)) {
        cell.Type = SQLITE_FLOAT;
        cell.Real = *real;
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
        cell.Type = SQLITE_TEXT;
        cell.Bytes = *text;
    } else if (const auto* const blob = std::get_if<Blob>(&value)) {
        cell.Type = SQLITE_BLOB;
        cell.Bytes = blob->Bytes;
    }
    return cell;
}

void PageReader::SaveRows() {
    constexpr size_t kCategoryColumns = 2;
    for (uint64_t page = mFile.NextPage(0); page != 0 && mStore.GetError() == 0;
         page = mFile.NextPage(page)) {
        const bool isFree = mFile.IsFree(page);
        if (isFree && !mEngine.IsReady()) {
            continue;
        }
        const auto want = [&](int64_t rowId, size_t columns) {
            if (!isFree && columns >= kFewestColumns && !mSeen.Add(rowId)) {
                mDoubles.Add(rowId);
            }
            return columns == kCategoryColumns
                       ? !isFree
                       : columns > kCategoryColumns && !mStore.HasRow(rowId);
        };
        mFile.ReadRows(page, PageKind::kTableLeaf, want, [&](int64_t rowId, const Record& record) {
            // The id of a category is its row id, which the record leaves out.
            if (record.size() != kCategoryColumns) {
                SaveRow(rowId, record, isFree);
            } else if (std::holds_alternative<std::monostate>(record[0])) {
                mStore.AddCategory(rowId, ToCell(record[1]), Encoding());
            }
        });
    }
    mEngine.SaveLeft();
}

void PageReader::SaveDoubles() {
    const auto want = [this](int64_t rowId, size_t columns) {
        return columns >= kFewestColumns && mDoubles.Has(rowId);
    };
    const auto save = [this](int64_t rowId, const Record& record) {
        SaveRow(rowId, record, false);
    };
    for (uint64_t page = mDoubles.IsEmpty() ? 0 : mFile.NextPage(0);
         page != 0 && mStore.GetError() == 0; page = mFile.NextPage(page)) {
        if (!mFile.IsFree(page)) {
            mFile.ReadRows(page, PageKind::kTableLeaf, want, save);
        }
    }
}

// Returns null for a record that has no proper identity.
const Value* PageReader::FindIdentity(const Record& record) const {
    const std::vector<size_t>& places = mEngine.RecordPlaces();
    const auto place = static_cast<size_t>(
        std::find(places.begin(), places.end(), size_t{kCardId}) - places.begin());
    CardUuid id;
    const bool isProper =
        place < record.size() && ParseUuid(mFile.ToText(record[place]), id) == 0 && !id.IsZero();
    return isProper ? &record[place] : nullptr;
}

// A card has a proper identity or at least all columns of one. Columns that were added to a table
// later are missing in its older rows.
bool PageReader::IsCard(const Record& record) const {
    return (record.size() == mEngine.RecordPlaces().size() && record.size() >= kFewestColumns) ||
           FindIdentity(record) != nullptr;
}

// Whether a saved row is another card than this one, which can be told by identities alone.
bool PageReader::IsOther(int64_t rowId, const Record& record) const {
    const Value* const id = FindIdentity(record);
    return id != nullptr && !mStore.HasRow(rowId, std::get<std::string>(*id), Encoding());
}

void PageReader::SaveRow(int64_t rowId, const Record& record, bool isFree) {
    if (!IsCard(record)) {
        return;
    }
    const bool isTaken = mStore.HasRow(rowId);
    if (isTaken ? !IsOther(rowId, record) : (!record.IsCut && mEngine.SaveRow(rowId)) || isFree) {
        return;
    }
    FoundCard card;
    card.RowId = rowId;
    card.Encoding = Encoding();
    const std::vector<size_t>& places = mEngine.RecordPlaces();
    for (size_t i = 0; i < std::min(places.size(), record.size()); ++i) {
        if (places[i] < kCardColumnCount) {
            card.Cells[places[i]] = ToCell(record[i]);
        }
    }
    mShortened += mStore.AddCard(card, false) && record.IsCut ? 1 : 0;
}

void PageReader::NoteEntries() {
    for (uint64_t page = mFile.NextPage(0); page != 0 && mStore.GetError() == 0;
         page = mFile.NextPage(page)) {
        for (const PageKind kind : {PageKind::kIndexLeaf, PageKind::kIndexInner}) {
            if (!mFile.IsFree(page)) {
                mFile.ReadRows(page, kind, nullptr,
                               [this](int64_t, const Record& entry) { NoteEntry(entry); });
            }
        }
    }
}

// The last value of an entry is the row id of its card. An index is known by what stands before it:
// an identity alone, two texts, or two numbers.
void PageReader::NoteEntry(const Record& entry) {
    const auto* const rowId = entry.empty() ? nullptr : std::get_if<int64_t>(&entry.back());
    if (rowId == nullptr || mStore.HasRow(*rowId)) {
        return;
    }
    const auto isText = [&](size_t i) { return std::holds_alternative<std::string>(entry[i]); };
    CardUuid id;
    if (entry.size() == 2 && ParseUuid(mFile.ToText(entry[0]), id) == 0) {
        mStore.NoteIdentity(*rowId, FormatUuid(id));
    } else if (entry.size() == 3 && isText(0) && isText(1)) {
        mStore.NoteTexts(*rowId, ToCell(entry[0]), ToCell(entry[1]), Encoding());
    } else if (entry.size() == 3 && !isText(0) && !isText(1)) {
        mStore.NotePlace(*rowId, ToInt(entry[0]), ToInt(entry[1]));
    }
}

// Copies a part of a file. Where that cannot be read its smaller parts are tried, and what is left
// becomes a hole. Returns 0, or the error's number of a write.
int CopyPart(int source, int target, off_t offset, size_t length) {
    constexpr size_t kSector = 512;
    std::vector<char> bytes(length);
    ssize_t count = -1;
    do {
        count = ::pread(source, bytes.data(), length, offset);
    } while (count < 0 && errno == EINTR);
    if (count < 0 && length > kSector) {
        const size_t half = std::max(kSector, length / 2 / kSector * kSector);
        const int error = CopyPart(source, target, offset, half);
        return error != 0
                   ? error
                   : CopyPart(source, target, offset + static_cast<off_t>(half), length - half);
    }
    for (ssize_t done = 0; done < count;) {
        const ssize_t written =
            ::pwrite(target, bytes.data() + done, static_cast<size_t>(count - done), offset + done);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        done += std::max<ssize_t>(written, 0);
    }
    return 0;
}

int CopyReadable(const fs::path& from, const fs::path& to) {
    constexpr off_t kPart = off_t{1} << 20;
    // A pipe would wait for ever.
    const FileDescriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!source.IsOpen() || ::fstat(source.Get(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return S_ISDIR(status.st_mode) ? EISDIR : ENODEV;
    }
    const FileDescriptor target(::open(to.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!target.IsOpen() || ::ftruncate(target.Get(), status.st_size) != 0) {
        return errno;
    }
    for (off_t at = 0; at < status.st_size;) {
        const off_t begin = ::lseek(source.Get(), at, SEEK_DATA);
        if (begin < 0 && errno == ENXIO) {
            break;
        }
        at = std::max(at, begin);
        const off_t hole = ::lseek(source.Get(), at, SEEK_HOLE);
        const off_t end = std::min(hole > at ? hole : status.st_size, at + kPart);
        const int error = CopyPart(source.Get(), target.Get(), at, static_cast<size_t>(end - at));
        if (error != 0) {
            return error;
        }
        at = end;
    }
    return 0;
}

// Copies the damaged file, and what the engine has beside it, which is played back there. Returns 0
// or the error's number.
int CopyDamaged(const fs::path& damaged, const fs::path& copy) {
    const int error = CopyReadable(damaged, copy);
    if (error == 0) {
        // A missing journal is no fault, and one that cannot be read is of no use.
        for (const char* const companion : {"-journal", "-wal"}) {
            CopyReadable(Beside(damaged, companion), Beside(copy, companion));
        }
        PlayBackJournal(copy);
    }
    return error;
}

// The directory of one repair, beside the target, so that the store can be renamed into its place.
// While the repair lives it has a lock on the directory. One without a lock was left by a repair
// that was killed, and the next one to this place deletes it.
class RepairPlace {
  public:
    explicit RepairPlace(const fs::path& stem) {
        RemoveLeft(stem);
        mpDirectory = std::make_unique<TemporaryDirectory>(stem);
        mLock = Lock(ToPath(mpDirectory->Path("")));
    }
    int GetError() const { return mpDirectory->GetError(); }
    wxString Path(const char* name) const { return mpDirectory->Path(name); }

  private:
    static FileDescriptor Lock(const fs::path& directory) {
        FileDescriptor lock(
            ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (lock.IsOpen() && ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
            lock.Close();
        }
        return lock;
    }
    static void RemoveLeft(const fs::path& stem) {
        const std::string name = stem.filename().string() + "-";
        std::error_code ignored;
        for (const fs::directory_entry& entry :
             fs::directory_iterator(stem.parent_path(), ignored)) {
            const std::string found = entry.path().filename().string();
            const bool isOne = found.rfind(name, 0) == 0 && found.length() == name.length() + 6;
            if (isOne && Lock(entry.path()).IsOpen()) {
                fs::remove_all(entry.path(), ignored);
            }
        }
    }

    std::unique_ptr<TemporaryDirectory> mpDirectory;
    FileDescriptor mLock;
};

// Fills the new store from the copy, which has no name any more while that goes on: its room is
// free again however this ends.
int SaveRows(const fs::path& copy, RepairedStore& store, RepairReport& report) {
    EngineReader engine(copy.string(), store);
    const FileDescriptor pages(::open(copy.c_str(), O_RDONLY | O_CLOEXEC));
    if (!pages.IsOpen()) {
        return errno;
    }
    ::unlink(copy.c_str());
    if (!engine.SaveAll()) {
        const PageFile file(pages.Get());
        PageReader reader(file, engine, store);
        reader.SaveRows();
        reader.SaveDoubles();
        reader.NoteEntries();
        report.Shortened = reader.CountShortened();
    }
    store.Finish(report);
    return store.GetError();
}

}  // namespace

int RepairStore(const wxString& damaged, const wxString& target, RepairReport& report) {
    std::error_code error;
    if (fs::exists(ToPath(target), error)) {
        return EEXIST;
    }
    const RepairPlace work(ToPath(target).replace_filename(kWorkName));
    const fs::path copy = ToPath(work.Path("damaged.vlm"));
    const int copied = work.GetError() != 0 ? work.GetError() : CopyDamaged(ToPath(damaged), copy);
    if (copied != 0) {
        return copied;
    }
    // The store gets its name only once it is whole.
    const wxString made = work.Path("repaired.vlm");
    RepairReport found;
    RepairedStore store(made, work.Path("traces"));
    const int result = store.GetError() != 0 ? store.GetError() : SaveRows(copy, store, found);
    if (result != 0) {
        return result;
    }
    const fs::path source = fs::weakly_canonical(ToPath(damaged), error);
    MediaFolderCopy media(source, ToPath(target));
    fs::rename(ToPath(made), ToPath(target), error);
    if (error) {
        return error.value();
    }
    SyncDirectory(ToPath(target));
    CopyReviewLog(damaged, target);
    report = found;
    // The cards are worth more than their pictures, which are not lost.
    report.MediaError = media.Keep();
    report.MediaLeft = FromPath(Beside(source, kMediaSuffix));
    return 0;
}

wxString DescribeRepair(const RepairReport& report) {
    wxString text;
    const auto add = [&text](const wxString& sentence, int32_t count) {
        text << (text.empty() ? "" : "\n") << wxString::Format(sentence, count);
    };
    const auto cards = static_cast<unsigned>(report.Cards);
    const auto shortened = static_cast<unsigned>(report.Shortened);
    const auto remade = static_cast<unsigned>(report.Remade);
    const auto lost = static_cast<unsigned>(report.Lost);
    const auto nameless = static_cast<unsigned>(report.NamelessCategories);
    add(wxPLURAL("%i card was saved.", "%i cards were saved.", cards), report.Cards);
    if (shortened > 0) {
        add(wxPLURAL("Of these, %i card has lost the end of a long text, and its schedule.",
                     "Of these, %i cards have lost the end of a long text, and their schedules.",
                     shortened),
            report.Shortened);
    }
    if (remade > 0) {
        add(wxPLURAL("Only the front and the back of %i card were left. It is a new card now.",
                     "Only the fronts and the backs of %i cards were left. They are new cards now.",
                     remade),
            report.Remade);
    }
    if (lost > 0) {
        add(wxPLURAL("%i card could not be saved.", "%i cards could not be saved.", lost),
            report.Lost);
    }
    if (nameless > 0) {
        add(wxPLURAL("The name of %i category was lost. It is named by a number.",
                     "The names of %i categories were lost. They are named by numbers.", nameless),
            report.NamelessCategories);
    }
    if (report.MediaError != 0) {
        text << "\n"
             << wxString::Format(_("The pictures and sounds could not be copied (%s). They are in "
                                   "\"%s\" as before."),
                                 SystemErrorText(report.MediaError), report.MediaLeft);
    }
    return text;
}
