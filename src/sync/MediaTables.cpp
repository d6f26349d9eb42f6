#include "sync/MediaTables.h"

#include <sqlite3.h>

#include <array>
#include <memory>

#include "media/MediaLines.h"

namespace {

// The cards that are read at once.
#define PIECE "2000"
constexpr int kPiece = 2000;

constexpr char kMakeTables[] =
    "CREATE TABLE IF NOT EXISTS beside.Media(Name TEXT PRIMARY KEY, Inode INTEGER, Size INTEGER,"
    "Modified INTEGER, Changed INTEGER, Content TEXT, Edition INTEGER, Before TEXT, State INTEGER,"
    "Origin TEXT, Number INTEGER) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS beside.MediaSeen(Name TEXT PRIMARY KEY, Inode INTEGER, Size "
    "INTEGER,"
    "Modified INTEGER, Changed INTEGER, Machine TEXT, Number INTEGER, Checksum TEXT, File TEXT,"
    "Bytes INTEGER, Content TEXT, Edition INTEGER, Replaces TEXT, IsDamaged INTEGER)"
    " WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS beside.MediaUsed(Name TEXT PRIMARY KEY) WITHOUT ROWID;";

constexpr int64_t kNanoseconds = 1000000000;

int64_t NanosecondsOf(const timespec& time) {
    return int64_t{time.tv_sec} * kNanoseconds + time.tv_nsec;
}

timespec TimeOf(int64_t nanoseconds) {
    timespec time{};
    time.tv_sec = static_cast<time_t>(nanoseconds / kNanoseconds);
    time.tv_nsec = nanoseconds % kNanoseconds;
    return time;
}

void BindStatus(Query& query, const struct stat& status) {
    query.Bind(static_cast<int64_t>(status.st_ino));
    query.Bind(int64_t{status.st_size});
    query.Bind(NanosecondsOf(status.st_mtim));
    query.Bind(NanosecondsOf(status.st_ctim));
}

// Reads the columns that BindStatus writes.
struct stat StatusOf(const Query& query, int column) {
    struct stat status {};
    status.st_ino = static_cast<ino_t>(query.Int(column));
    status.st_size = query.Int(column + 1);
    status.st_mtim = TimeOf(query.Int(column + 2));
    status.st_ctim = TimeOf(query.Int(column + 3));
    return status;
}

std::string Join(const std::vector<std::string>& contents) {
    std::string text;
    for (const std::string& content : contents) {
        text += content + " ";
    }
    return text;
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> contents;
    for (size_t at = 0, end = 0; (end = text.find(' ', at)) != std::string::npos; at = end + 1) {
        contents.push_back(text.substr(at, end - at));
    }
    return contents;
}

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

}  // namespace

bool IsSameStatus(const struct stat& one, const struct stat& other) {
    return one.st_ino == other.st_ino && one.st_size == other.st_size &&
           NanosecondsOf(one.st_mtim) == NanosecondsOf(other.st_mtim) &&
           NanosecondsOf(one.st_ctim) == NanosecondsOf(other.st_ctim);
}

void MediaTables::SetSums(const std::string& sums) {
    if (GetSums() != sums) {
        mState.SetFact("media-sums", sums);
    }
}

bool MediaTables::AreThere() {
    Query find(mState.Sql(), "SELECT 1 FROM beside.sqlite_master WHERE name='MediaUsed'");
    return find.Step();
}

bool MediaTables::Make() {
    return AreThere() || mState.Sql().Execute(kMakeTables);
}

LocalMediaFiles MediaTables::ReadLocal() {
    LocalMediaFiles files;
    Query query(mState.Sql(),
                "SELECT Name,Inode,Size,Modified,Changed,Content,Edition,Before,State,Origin,Number"
                " FROM beside.Media");
    while (query.Step()) {
        LocalMedia& file = files[query.Text(0)];
        file.Status = StatusOf(query, 1);
        file.Content = query.Text(5);
        file.Edition = query.Int(6);
        file.Before = Split(query.Text(7));
        file.What = static_cast<LocalMedia::State>(query.Int(8));
        ParseHexText(query.Text(9), file.Origin);
        file.Number = query.Int(10);
    }
    return files;
}

void MediaTables::SaveLocal(const std::string& name, const LocalMedia& file) {
    const std::string before = Join(file.Before);
    const std::string origin = HexText(file.Origin);
    Query query(mState.Sql(), "INSERT OR REPLACE INTO beside.Media VALUES (?,?,?,?,?,?,?,?,?,?,?)",
                name);
    BindStatus(query, file.Status);
    query.Bind(file.Content);
    query.Bind(file.Edition);
    query.Bind(before);
    query.Bind(int{file.What});
    query.Bind(origin);
    query.Bind(file.Number);
    query.Step();
}

void MediaTables::DropLocal(const std::string& name) {
    Query query(mState.Sql(), "DELETE FROM beside.Media WHERE Name=?", name);
    query.Step();
}

KnownFiles MediaTables::ReadSeen() {
    KnownFiles files;
    Query query(mState.Sql(),
                "SELECT Name,Inode,Size,Modified,Changed,Machine,Number,Checksum,File,Bytes,"
                "Content,Edition,Replaces,IsDamaged FROM beside.MediaSeen");
    while (query.Step()) {
        KnownFile& known = files[query.Text(0)];
        known.Status = StatusOf(query, 1);
        FoundFile& file = known.File;
        const bool isDamaged = query.Int(13) != 0;
        file.State = isDamaged ? FileState::kDamaged : FileState::kWhole;
        file.IsChecked = isDamaged;
        file.Bytes = known.Status.st_size;
        ParseHexText(query.Text(5), file.Header.Machine);
        file.Header.Number = query.Int(6);
        ParseHexText(query.Text(7), file.Checksum);
        MediaPart& media = file.Header.Media.emplace();
        media.File = query.Text(8);
        media.Bytes = query.Int(9);
        media.Content = query.Text(10);
        media.Edition = query.Int(11);
        media.Replaces = Split(query.Text(12));
    }
    mSeen = files;
    return files;
}

void MediaTables::SaveSeen(const KnownFiles& files) {
    const auto isMedia = [](const KnownFile& known) { return known.File.Header.Media.has_value(); };
    for (const auto& [name, known] : files) {
        const auto former = mSeen.find(name);
        if (!isMedia(known) ||
            (former != mSeen.end() && IsSameStatus(former->second.Status, known.Status) &&
             former->second.File.State == known.File.State)) {
            continue;
        }
        const ExchangeHeader& header = known.File.Header;
        const std::string machine = HexText(header.Machine);
        const std::string checksum = HexText(known.File.Checksum);
        const std::string replaces = Join(header.Media->Replaces);
        Query query(mState.Sql(),
                    "INSERT OR REPLACE INTO beside.MediaSeen VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?)",
                    name);
        BindStatus(query, known.Status);
        query.Bind(machine);
        query.Bind(header.Number);
        query.Bind(checksum);
        query.Bind(header.Media->File);
        query.Bind(header.Media->Bytes);
        query.Bind(header.Media->Content);
        query.Bind(header.Media->Edition);
        query.Bind(replaces);
        query.Bind(int{known.File.State == FileState::kDamaged});
        query.Step();
    }
    for (const auto& [name, known] : mSeen) {
        if (files.count(name) == 0) {
            Query query(mState.Sql(), "DELETE FROM beside.MediaSeen WHERE Name=?", name);
            query.Step();
        }
    }
    mSeen = files;
}

std::set<std::string> MediaTables::ReadUsed() {
    mUsed.clear();
    Query query(mState.Sql(), "SELECT Name FROM beside.MediaUsed");
    while (query.Step()) {
        mUsed.insert(query.Text(0));
    }
    return mUsed;
}

void MediaTables::SaveUsed(const std::set<std::string>& names, int64_t counter) {
    for (const std::string& name : names) {
        if (mUsed.count(name) == 0) {
            Query query(mState.Sql(), "INSERT OR IGNORE INTO beside.MediaUsed VALUES (?)", name);
            query.Step();
        }
    }
    for (const std::string& name : mUsed) {
        if (names.count(name) == 0) {
            Query query(mState.Sql(), "DELETE FROM beside.MediaUsed WHERE Name=?", name);
            query.Step();
        }
    }
    mUsed = names;
    if (GetCounter() != counter) {
        mState.SetNumber("media-counter", counter);
    }
}

bool VisitMediaTexts(SyncState& state, const MediaTextVisit& visit,
                     const std::atomic<bool>& isCancelled) {
    // The engine's own UTF-16 is looked at without a copy.
    sqlite3_stmt* prepared = nullptr;
    const int result =
        sqlite3_prepare_v2(state.Sql().Handle(),
                           "SELECT ROWID,CardId,Front,Back,Notes FROM main.Cards WHERE ROWID>?"
                           " ORDER BY ROWID LIMIT " PIECE,
                           -1, &prepared, nullptr);
    const std::unique_ptr<sqlite3_stmt, Finalize> statement(prepared);
    if (result != SQLITE_OK) {
        state.Sql().Fail(result);
        return false;
    }
    constexpr std::array<CardField, 3> kFields = {CardField::kFront, CardField::kBack,
                                                  CardField::kNotes};
    int rows = kPiece;
    for (int64_t last = INT64_MIN; rows == kPiece;) {
        if (isCancelled) {
            return false;
        }
        sqlite3_bind_int64(prepared, 1, last);
        rows = 0;
        int step = SQLITE_ROW;
        for (; (step = sqlite3_step(prepared)) == SQLITE_ROW; ++rows) {
            last = sqlite3_column_int64(prepared, 0);
            for (size_t i = 0; i < kFields.size(); ++i) {
                const int column = static_cast<int>(i) + 2;
                const auto* const units =
                    static_cast<const char16_t*>(sqlite3_column_text16(prepared, column));
                const std::u16string_view text(
                    units == nullptr ? u"" : units,
                    units == nullptr
                        ? 0
                        : static_cast<size_t>(sqlite3_column_bytes16(prepared, column)) /
                              sizeof(char16_t));
                if (MayHaveMediaLine(text)) {
                    const auto* const id = sqlite3_column_text(prepared, 1);
                    visit(id == nullptr ? std::string() : reinterpret_cast<const char*>(id),
                          kFields[i], text);
                }
            }
        }
        sqlite3_reset(prepared);
        if (step != SQLITE_DONE) {
            state.Sql().Fail(step);
            return false;
        }
    }
    return true;
}

void WriteText(SyncState& state, const std::string& cardId, CardField field,
               const std::string& text) {
    Query query(state.Sql(),
                field == CardField::kFront  ? "UPDATE main.Cards SET Front=? WHERE CardId=?"
                : field == CardField::kBack ? "UPDATE main.Cards SET Back=? WHERE CardId=?"
                                            : "UPDATE main.Cards SET Notes=? WHERE CardId=?",
                text, cardId);
    query.Step();
}
