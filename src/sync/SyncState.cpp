#include "sync/SyncState.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>

#include "base/Files.h"
#include "base/Unicode.h"
#include "store/StoreSchema.h"
#include "sync/Outgoing.h"

namespace {

constexpr char kSuffix[] = ".exchange";
constexpr int kFormat = 1;

// The columns of a card that travel, in the order in which they are read and written here.
#define SYNC_COLUMNS                                                                             \
    "Front,Back,CategoryId,Author,Chapter,IntroductionOrder,ForwardX,ReverseX,Notes,Introduced," \
    "LastReview,LastScore,ReviewInterval,Difficulty,ERC,RIntroduced,RLastReview,RLastScore,"     \
    "RReviewInterval,RDifficulty,RERC"
#define SYNC_PARAMETERS "?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?"

constexpr char kMakeTables[] =
    "CREATE TABLE IF NOT EXISTS beside.Facts(Key TEXT PRIMARY KEY, Value TEXT);"
    "CREATE TABLE IF NOT EXISTS beside.Copy("
    "CardId TEXT PRIMARY KEY, Front TEXT, Back TEXT, CategoryId INTEGER, Author TEXT, Chapter TEXT,"
    "IntroductionOrder INTEGER, ForwardX INTEGER, ReverseX INTEGER, Notes TEXT, Introduced INTEGER,"
    "LastReview INTEGER, LastScore INTEGER, ReviewInterval REAL, Difficulty INTEGER, ERC INTEGER,"
    "RIntroduced INTEGER, RLastReview INTEGER, RLastScore INTEGER, RReviewInterval REAL,"
    "RDifficulty INTEGER, RERC INTEGER, Category TEXT, Stamps TEXT, Touched TEXT, Seen TEXT,"
    "Gone INTEGER) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS beside.CopyCategories(Id INTEGER PRIMARY KEY, Name NAME);"
    "CREATE TABLE IF NOT EXISTS beside.CategoryEvents(Time INTEGER, Machine TEXT, Kind TEXT,"
    "Name NAME, NewName NAME, PRIMARY KEY(Time, Machine, Kind, Name));"
    "CREATE TABLE IF NOT EXISTS beside.Machines(Id TEXT PRIMARY KEY, Number INTEGER, Name TEXT,"
    "LastNews INTEGER, Taken INTEGER, Acknowledged TEXT);"
    "CREATE TABLE IF NOT EXISTS beside.Outbox(Machine TEXT, Number INTEGER,"
    "Bytes BLOB, PRIMARY KEY(Machine, Number));"
    "CREATE TABLE IF NOT EXISTS beside.Pending(Id INTEGER PRIMARY KEY, Text TEXT);"
    "CREATE TABLE IF NOT EXISTS beside.Conflicts(CardId TEXT, Field TEXT, Time INTEGER,"
    "Machine TEXT, Value TEXT, StandsTime INTEGER, StandsMachine TEXT, Closed INTEGER,"
    "PRIMARY KEY(CardId, Field, Time, Machine));"
    "CREATE TABLE IF NOT EXISTS beside.Unions(CardId TEXT, WithId TEXT,"
    "PRIMARY KEY(CardId, WithId));"
    "CREATE TABLE IF NOT EXISTS beside.Ahead(Session TEXT, Number INTEGER, CardId TEXT,"
    "PRIMARY KEY(Session, Number));";

// The engine's usual cache of 2 MB would write most pages of a large exchange many times over.
constexpr char kPageCaches[] =
    "PRAGMA main.cache_size=-16384; PRAGMA beside.cache_size=-16384;"
    "PRAGMA temp.cache_size=-16384;";

// What the copy keeps of a card beside its columns.
enum { kCopyGoneUnited = 2 };
// A lost text that was looked at here, of which the others do not know yet.
enum { kClosedHere = 2 };

constexpr int kFirstSchedule = 9;
constexpr int kScheduleColumns = 6;

CardUuid IdOf(const std::string& text) {
    CardUuid id;
    return ParseUuidUtf8(text, id) == 0 ? id : CardUuid();
}

void ReadSchedule(const Query& query, int column, CardSchedule& schedule) {
    schedule.Introduced = query.Int(column) != 0;
    const int64_t review = query.Int(column + 1);
    schedule.LastReview = review < 0 || review > kLastTimeStamp
                              ? wxDateTime()
                              : wxDateTime(static_cast<time_t>(review));
    schedule.LastScore = static_cast<uint8_t>(query.Int(column + 2));
    schedule.ReviewInterval = static_cast<float>(query.Real(column + 3));
    schedule.Difficulty = static_cast<uint8_t>(query.Int(column + 4));
    schedule.ERC = static_cast<int32_t>(query.Int(column + 5));
}

int64_t SecondsOf(const wxDateTime& time) {
    return time.IsValid() ? int64_t{time.GetTicks()} : -1;
}

void BindSchedule(Query& query, const CardSchedule& schedule) {
    query.Bind(int{schedule.Introduced});
    query.Bind(SecondsOf(schedule.LastReview));
    query.Bind(int{schedule.LastScore});
    query.Bind(double{schedule.ReviewInterval});
    query.Bind(int{schedule.Difficulty});
    query.Bind(int{schedule.ERC});
}

// Reads the columns into the values, all but the category's.
void ReadColumns(const Query& query, SyncedCard& state) {
    const auto read = [&](CardField field, int column) { state.Value(field) = query.Text(column); };
    const auto readNumber = [&](CardField field, int column) {
        state.Value(field) = std::to_string(query.Int(column));
    };
    read(CardField::kFront, 0);
    read(CardField::kBack, 1);
    state.CategoryId = static_cast<int32_t>(query.Int(2));
    read(CardField::kAuthor, 3);
    read(CardField::kChapter, 4);
    readNumber(CardField::kOrder, 5);
    state.Value(CardField::kForwardX) = query.Int(6) != 0 ? "1" : "0";
    state.Value(CardField::kReverseX) = query.Int(7) != 0 ? "1" : "0";
    read(CardField::kNotes, 8);
    ReadSchedule(query, kFirstSchedule, state.Forward);
    ReadSchedule(query, kFirstSchedule + kScheduleColumns, state.Reverse);
}

void BindColumns(Query& query, const SyncedCard& state) {
    query.Bind(state.Value(CardField::kFront));
    query.Bind(state.Value(CardField::kBack));
    query.Bind(int{state.CategoryId});
    query.Bind(state.Value(CardField::kAuthor));
    query.Bind(state.Value(CardField::kChapter));
    int64_t order = 0;
    ParseInt64(state.Value(CardField::kOrder), order);
    query.Bind(order);
    query.Bind(state.Value(CardField::kForwardX) == "1" ? 1 : 0);
    query.Bind(state.Value(CardField::kReverseX) == "1" ? 1 : 0);
    query.Bind(state.Value(CardField::kNotes));
    BindSchedule(query, state.Forward);
    BindSchedule(query, state.Reverse);
}

std::string FormatTaken(const std::map<uint64_t, int64_t>& taken) {
    std::string text;
    for (const auto& [machine, number] : taken) {
        text += HexText(machine) + " " + std::to_string(number) + "\n";
    }
    return text;
}

std::map<uint64_t, int64_t> ParseTaken(std::string_view text) {
    std::map<uint64_t, int64_t> taken;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        uint64_t machine = 0;
        int64_t number = 0;
        if (line.size() > 17 && ParseHexText(line.substr(0, 16), machine) &&
            ParseInt64(line.substr(17), number)) {
            taken[machine] = number;
        }
    }
    return taken;
}

uint64_t MachineOf(const std::string& text) {
    uint64_t machine = 0;
    ParseHexText(text, machine);
    return machine;
}

}  // namespace

wxString ExchangeStatePath(const wxString& storePath) {
    return storePath + kSuffix;
}

bool SyncState::Open(const wxString& storePath) {
    if (!mSql.Open(ToUtf8(storePath)) || !IsStore()) {
        return false;
    }
    // An empty file becomes a database in the encoding of the store. Who may read the one may read
    // the other.
    struct stat status {};
    const mode_t mode =
        ::stat(ToUtf8(storePath).c_str(), &status) == 0 ? status.st_mode & 0666 : 0600;
    const FileDescriptor made(::open(ToUtf8(ExchangeStatePath(storePath)).c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!Attach(storePath) || !MakeTables() || !mSql.Execute(kPageCaches)) {
        return false;
    }
    ReadNumbers();
    return !mSql.HasFailed();
}

bool SyncState::OpenAlone(const wxString& storePath) {
    // The statements name the file by what it is beside the store.
    if (!mSql.Open(":memory:") || !mSql.Execute("PRAGMA encoding='UTF-16le'") ||
        !Attach(storePath)) {
        return false;
    }
    ReadNumbers();
    return !mSql.HasFailed();
}

// An old store is brought to the present schema by opening it as one.
bool SyncState::IsStore() {
    bool isPresent = false;
    {
        Query version(mSql, "SELECT 1 FROM main.Globals WHERE Key='DATABASE_VERSION' AND Value=?",
                      std::to_string(kSchemaVersion));
        isPresent = version.Step();
    }
    if (!mSql.HasFailed() && isPresent && IsPlainSchema(mSql.Handle())) {
        return true;
    }
    mSql.Fail(SQLITE_NOTADB);
    return false;
}

bool SyncState::Attach(const wxString& storePath) {
    const std::string path = ToUtf8(ExchangeStatePath(storePath));
    Query attach(mSql, "ATTACH ? AS beside", path);
    attach.Step();
    return !mSql.HasFailed();
}

void SyncState::ReadNumbers() {
    Query numbers(mSql, "SELECT Number, Id FROM beside.Machines");
    while (numbers.Step()) {
        mNumbers.Set(numbers.Int(0), MachineOf(numbers.Text(1)));
    }
    mSavedNumbers = mNumbers.GetCount();
}

bool SyncState::MakeTables() {
    bool isMade = false;
    {
        Query find(mSql, "SELECT 1 FROM beside.sqlite_master WHERE name='Ahead'");
        isMade = find.Step();
    }
    if (!isMade) {
        mSql.Execute("BEGIN IMMEDIATE");
        mSql.Execute(kMakeTables);
        SetNumber("format", kFormat);
        mSql.Execute("COMMIT");
    }
    if (!mSql.HasFailed() && GetNumber("format") != kFormat) {
        mSql.Fail(SQLITE_NOTADB);
    }
    return !mSql.HasFailed();
}

bool SyncState::Begin() {
    return mSql.Execute("BEGIN IMMEDIATE");
}

bool SyncState::Commit() {
    return mSql.Execute("COMMIT");
}

void SyncState::RollBack() {
    if (sqlite3_get_autocommit(mSql.Handle()) == 0) {
        sqlite3_exec(mSql.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

std::string SyncState::GetFact(const char* key) {
    Query query(mSql, "SELECT Value FROM beside.Facts WHERE Key=?", std::string_view(key));
    return query.Step() ? query.Text(0) : std::string();
}

int64_t SyncState::GetNumber(const char* key, int64_t otherwise) {
    int64_t number = otherwise;
    ParseInt64(GetFact(key), number);
    return number;
}

void SyncState::SetFact(const char* key, const std::string& value) {
    Query query(mSql, "INSERT OR REPLACE INTO beside.Facts VALUES (?,?)", std::string_view(key),
                value);
    query.Step();
}

void SyncState::SetNumber(const char* key, int64_t value) {
    SetFact(key, std::to_string(value));
}

int64_t SyncState::ReadChangeCounter() {
    sqlite3_file* file = nullptr;
    std::array<unsigned char, 4> bytes{};
    if (mSql.Handle() == nullptr ||
        sqlite3_file_control(mSql.Handle(), "main", SQLITE_FCNTL_FILE_POINTER, &file) !=
            SQLITE_OK ||
        file == nullptr || file->pMethods == nullptr ||
        file->pMethods->xRead(file, bytes.data(), static_cast<int>(bytes.size()), 24) !=
            SQLITE_OK) {
        return -1;
    }
    int64_t counter = 0;
    for (const unsigned char byte : bytes) {
        counter = counter << 8 | byte;
    }
    return counter;
}

int64_t SyncState::ReadDataVersion() {
    Query query(mSql, "PRAGMA main.data_version");
    return query.Step() ? query.Int(0) : -1;
}

std::vector<ExchangeMachine> SyncState::ReadMachines() {
    std::vector<ExchangeMachine> machines;
    const uint64_t own = MachineOf(GetFact("machine"));
    Query query(mSql,
                "SELECT Id, Name, LastNews, Taken, Acknowledged FROM beside.Machines"
                " ORDER BY Number");
    while (query.Step()) {
        ExchangeMachine machine;
        machine.Id = MachineOf(query.Text(0));
        machine.Name = query.Text(1);
        machine.LastNews = query.Int(2);
        machine.Taken = query.Int(3);
        machine.Acknowledged = ParseTaken(query.Text(4));
        // A machine that only stamps tell of was never heard of.
        if (machine.Id != own && (machine.Taken > 0 || machine.LastNews > 0)) {
            machines.push_back(std::move(machine));
        }
    }
    return machines;
}

void SyncState::SaveMachine(const ExchangeMachine& machine) {
    const std::string acknowledged = FormatTaken(machine.Acknowledged);
    const std::string id = HexText(machine.Id);
    Query query(mSql,
                "INSERT OR REPLACE INTO beside.Machines(Id, Number, Name, LastNews, Taken,"
                " Acknowledged) VALUES (?,?,?,?,?,?)",
                id, mNumbers.NumberOf(machine.Id), machine.Name, machine.LastNews, machine.Taken,
                acknowledged);
    query.Step();
}

void SyncState::SaveNumbers() {
    for (; mSavedNumbers < mNumbers.GetCount(); ++mSavedNumbers) {
        uint64_t machine = 0;
        mNumbers.MachineOf(mSavedNumbers, machine);
        const std::string id = HexText(machine);
        Query query(mSql,
                    "INSERT OR IGNORE INTO beside.Machines(Id, Number, Name, LastNews, Taken,"
                    " Acknowledged) VALUES (?,?,'',0,0,'')",
                    id, mSavedNumbers);
        query.Step();
    }
}

void SyncState::LoadCopy(const CardUuid& id, SyncedCard& state) {
    state = SyncedCard();
    state.Id = id;
    const std::string key = IdText(id);
    Query query(mSql,
                "SELECT " SYNC_COLUMNS
                ",Category,Stamps,Touched,Seen,Gone FROM beside.Copy"
                " WHERE CardId=?",
                key);
    state.IsKnown = query.Step();
    if (!state.IsKnown) {
        state.Value(CardField::kCategory) = kNoCategory;
        return;
    }
    ReadColumns(query, state);
    state.Value(CardField::kCategory) = query.Text(21);
    ParseStamps(query.Text(22), mNumbers, state.Stamps);
    ParseTimes(query.Text(23), mNumbers, state.Touched);
    if (!query.IsNull(24)) {
        ParseTimes(query.Text(24), mNumbers, state.Seen.emplace());
    }
    state.IsUnited = query.Int(25) == kCopyGoneUnited;
}

void SyncState::SaveCopy(const SyncedCard& state) {
    const std::string key = IdText(state.Id);
    const std::string stamps = FormatStamps(state.Stamps, mNumbers);
    const std::string touched = FormatTimes(state.Touched, mNumbers);
    const std::string seen = state.Seen ? FormatTimes(*state.Seen, mNumbers) : std::string();
    SaveNumbers();
    Query query(mSql, "INSERT OR REPLACE INTO beside.Copy(" SYNC_COLUMNS
                      ",CardId,Category,Stamps,Touched,Seen,Gone) VALUES (" SYNC_PARAMETERS
                      ",?,?,?,?,?,?)");
    BindColumns(query, state);
    query.Bind(key);
    query.Bind(state.Value(CardField::kCategory));
    query.Bind(stamps);
    query.Bind(touched);
    if (state.Seen) {
        query.Bind(seen);
    } else {
        query.BindNull();
    }
    query.Bind(state.IsUnited ? int{kCopyGoneUnited} : int{!state.Exists()});
    query.Step();
}

int64_t SyncState::CountCopy() {
    Query query(mSql, "SELECT count(*) FROM beside.Copy WHERE Gone=0");
    return query.Step() ? query.Int(0) : 0;
}

bool SyncState::LoadLive(const CardUuid& id, SyncedCard& live) {
    live = SyncedCard();
    live.Id = id;
    const std::string key = IdText(id);
    Query query(mSql, "SELECT " SYNC_COLUMNS " FROM main.Cards WHERE CardId=?", key);
    if (!query.Step()) {
        return false;
    }
    ReadColumns(query, live);
    const auto category = mCategories.find(live.CategoryId);
    live.Value(CardField::kCategory) =
        category == mCategories.end() ? kNoCategory : kNamedCategory + category->second;
    return true;
}

void SyncState::MirrorCard(const CardUuid& id) {
    const std::string key = IdText(id);
    Query query(mSql,
                "UPDATE beside.Copy SET (" SYNC_COLUMNS ")=(SELECT " SYNC_COLUMNS
                " FROM main.Cards WHERE CardId=?1) WHERE CardId=?1",
                key);
    query.Step();
}

void SyncState::MirrorAll() {
    mSql.Execute("UPDATE beside.Copy SET (" SYNC_COLUMNS ")=(SELECT " SYNC_COLUMNS
                 " FROM main.Cards WHERE Cards.CardId=Copy.CardId)"
                 " WHERE Gone=0 AND CardId IN (SELECT CardId FROM main.Cards)");
}

void SyncState::WriteLive(const SyncedCard& state, bool isNew) {
    const std::string key = IdText(state.Id);
    const int64_t next = SecondsOf(state.Forward.NextReview());
    const int64_t nextReverse = SecondsOf(state.Reverse.NextReview());
    if (!isNew) {
        Query update(mSql, "UPDATE main.Cards SET (" SYNC_COLUMNS
                           ",NextReview,RNextReview)=(" SYNC_PARAMETERS ",?,?) WHERE CardId=?");
        BindColumns(update, state);
        update.Bind(next);
        update.Bind(nextReverse);
        update.Bind(key);
        update.Step();
        if (mSql.HasFailed() || sqlite3_changes(mSql.Handle()) > 0) {
            return;
        }
    }
    Query insert(mSql, "INSERT INTO main.Cards(" SYNC_COLUMNS
                       ",NextReview,RNextReview,CardId) VALUES (" SYNC_PARAMETERS ",?,?,?)");
    BindColumns(insert, state);
    insert.Bind(next);
    insert.Bind(nextReverse);
    insert.Bind(key);
    insert.Step();
}

bool SyncState::HasLiveCards() {
    Query query(mSql, "SELECT 1 FROM main.Cards LIMIT 1");
    return query.Step();
}

std::vector<std::string> SyncState::DropCardIndexes() {
    std::vector<std::string> names;
    std::vector<std::string> statements;
    {
        Query indexes(mSql,
                      "SELECT '\"' || replace(name, '\"', '\"\"') || '\"', sql"
                      " FROM main.sqlite_master WHERE type='index' AND sql IS NOT NULL"
                      " AND tbl_name COLLATE NOCASE='Cards' ORDER BY ROWID");
        while (indexes.Step()) {
            names.push_back(indexes.Text(0));
            statements.push_back(indexes.Text(1));
        }
    }
    for (const std::string& name : names) {
        mSql.Execute(("DROP INDEX main." + name).c_str());
    }
    return statements;
}

void SyncState::DeleteLive(const CardUuid& id) {
    const std::string key = IdText(id);
    Query query(mSql, "DELETE FROM main.Cards WHERE CardId=?", key);
    query.Step();
}

void SyncState::ReadCategories() {
    mCategories.clear();
    mFoundCategories.clear();
    Query query(mSql, "SELECT Id, Name FROM main.Categories");
    while (query.Step()) {
        mCategories.emplace(static_cast<int32_t>(query.Int(0)), query.Text(1));
    }
}

// Reads the name back, which the engine may have made a number.
void SyncState::ReadCategory(int32_t id) {
    mFoundCategories.clear();
    Query query(mSql, "SELECT Name FROM main.Categories WHERE Id=?", int{id});
    if (query.Step()) {
        mCategories[id] = query.Text(0);
    }
}

int32_t SyncState::FindCategory(const std::string& name) {
    const auto found = mFoundCategories.find(name);
    if (found != mFoundCategories.end()) {
        return found->second;
    }
    Query query(mSql, "SELECT Id FROM main.Categories WHERE Name=?", name);
    const int32_t id = query.Step() ? static_cast<int32_t>(query.Int(0)) : -1;
    mFoundCategories[name] = id;
    return id;
}

int32_t SyncState::FindOrAddCategory(const std::string& name) {
    const int32_t found = FindCategory(name);
    if (found != -1 || mSql.HasFailed()) {
        return found;
    }
    int32_t id = 0;
    while (mCategories.count(id) != 0) {
        ++id;
    }
    {
        // Cards left over from an earlier category of this id belong to none.
        Query free(mSql, "UPDATE main.Cards SET CategoryId=-1 WHERE CategoryId=?", int{id});
        free.Step();
    }
    {
        Query insert(mSql, "INSERT INTO main.Categories(Id, Name) VALUES (?,?)", int{id}, name);
        insert.Step();
    }
    ReadCategory(id);
    return id;
}

void SyncState::RenameCategory(int32_t id, const std::string& name) {
    {
        Query query(mSql, "UPDATE main.Categories SET Name=? WHERE Id=?", name, int{id});
        query.Step();
    }
    ReadCategory(id);
}

void SyncState::DeleteCategory(int32_t id) {
    {
        Query query(mSql, "DELETE FROM main.Categories WHERE Id=?", int{id});
        query.Step();
    }
    mCategories.erase(id);
    mFoundCategories.clear();
}

std::map<int32_t, std::string> SyncState::ReadCopyCategories() {
    std::map<int32_t, std::string> categories;
    Query query(mSql, "SELECT Id, Name FROM beside.CopyCategories");
    while (query.Step()) {
        categories.emplace(static_cast<int32_t>(query.Int(0)), query.Text(1));
    }
    return categories;
}

void SyncState::MirrorCategories() {
    mSql.Execute(
        "DELETE FROM beside.CopyCategories;"
        "INSERT INTO beside.CopyCategories SELECT Id, Name FROM main.Categories;");
}

bool SyncState::KeepsCards(int32_t categoryId) {
    Query query(mSql,
                "SELECT 1 FROM main.Cards AS c JOIN beside.Copy AS k ON k.CardId=c.CardId"
                " WHERE c.CategoryId=?1 AND k.CategoryId=?1 AND k.Gone=0 LIMIT 1",
                int{categoryId});
    return query.Step();
}

bool SyncState::HasCards(int32_t categoryId) {
    Query query(mSql, "SELECT 1 FROM main.Cards WHERE CategoryId=? LIMIT 1", int{categoryId});
    return query.Step();
}

std::vector<CategoryEvent> SyncState::ReadCategoryEvents() {
    std::vector<CategoryEvent> events;
    Query query(mSql,
                "SELECT Kind, Name, NewName, Time, Machine FROM beside.CategoryEvents"
                " ORDER BY Time, Machine, Kind, Name");
    while (query.Step()) {
        events.push_back({static_cast<CategoryEvent::Kind>((query.Text(0) + "a")[0]), query.Text(1),
                          query.Text(2), Stamp{query.Int(3), MachineOf(query.Text(4))}});
    }
    return events;
}

bool SyncState::AddCategoryEvent(const CategoryEvent& event) {
    const std::string machine = HexText(event.At.Machine);
    const std::string kind(1, event.What);
    Query query(mSql, "INSERT OR IGNORE INTO beside.CategoryEvents VALUES (?,?,?,?,?)",
                event.At.Time, machine, kind, event.Name, event.NewName);
    query.Step();
    return !mSql.HasFailed() && sqlite3_changes(mSql.Handle()) > 0;
}

bool SyncState::AddUnion(const CardUuid& one, const CardUuid& other) {
    const std::string greater = IdText(std::max(one, other));
    const std::string smaller = IdText(std::min(one, other));
    Query query(mSql, "INSERT OR IGNORE INTO beside.Unions VALUES (?,?)", greater, smaller);
    query.Step();
    return !mSql.HasFailed() && sqlite3_changes(mSql.Handle()) > 0;
}

std::vector<std::pair<CardUuid, CardUuid>> SyncState::ReadUnions() {
    std::vector<std::pair<CardUuid, CardUuid>> unions;
    Query query(mSql, "SELECT CardId, WithId FROM beside.Unions");
    while (query.Step()) {
        unions.emplace_back(IdOf(query.Text(0)), IdOf(query.Text(1)));
    }
    return unions;
}

void SyncState::AddLostText(const LostText& text) {
    const std::string card = IdText(text.Card);
    const std::string field(1, kFieldLetters[IndexOf(text.Field)]);
    const std::string machine = HexText(text.Lost.Machine);
    const std::string standing = HexText(text.Stands.Machine);
    Query query(mSql, "INSERT OR IGNORE INTO beside.Conflicts VALUES (?,?,?,?,?,?,?,?)", card,
                field, text.Lost.Time, machine, text.Value, text.Stands.Time, standing,
                int{text.IsLookedAt});
    query.Step();
}

void SyncState::CloseLostText(const CardUuid& card, CardField field, const Stamp& lost) {
    const std::string id = IdText(card);
    const std::string letter(1, kFieldLetters[IndexOf(field)]);
    const std::string machine = HexText(lost.Machine);
    Query query(mSql,
                "INSERT INTO beside.Conflicts VALUES (?,?,?,?,'',0,'',1)"
                " ON CONFLICT DO UPDATE SET Closed=1, Value=''",
                id, letter, lost.Time, machine);
    query.Step();
}

std::vector<LostText> SyncState::ReadLostTexts(bool withClosed) {
    std::vector<LostText> texts;
    Query query(mSql,
                "SELECT CardId, Field, Value, Time, Machine, StandsTime, StandsMachine, Closed"
                " FROM beside.Conflicts WHERE Closed<=? ORDER BY Time, CardId, Field, Machine",
                withClosed ? int{kClosedHere} : 0);
    while (query.Step()) {
        LostText text;
        text.Card = IdOf(query.Text(0));
        if (!FieldOfLetter((query.Text(1) + " ")[0], text.Field)) {
            continue;
        }
        text.Value = query.Text(2);
        text.Lost = {query.Int(3), MachineOf(query.Text(4))};
        text.Stands = {query.Int(5), MachineOf(query.Text(6))};
        text.IsLookedAt = query.Int(7) != 0;
        text.IsToldNext = query.Int(7) == kClosedHere;
        texts.push_back(std::move(text));
    }
    return texts;
}

void SyncState::CloseLostTextHere(const LostText& text) {
    const std::string id = IdText(text.Card);
    const std::string letter(1, kFieldLetters[IndexOf(text.Field)]);
    const std::string machine = HexText(text.Lost.Machine);
    Query query(mSql,
                "UPDATE beside.Conflicts SET Closed=?, Value='' WHERE CardId=? AND Field=?"
                " AND Time=? AND Machine=?",
                int{kClosedHere}, id, letter, text.Lost.Time, machine);
    query.Step();
}

void SyncState::AddSent(const ExchangeFileId& id, const std::string& bytes) {
    const std::string machine = HexText(id.Machine);
    Query query(mSql, "INSERT OR REPLACE INTO beside.Outbox VALUES (?,?,?)", machine, id.Number);
    query.BindBlob(bytes);
    query.Step();
}

std::vector<ExchangeFileId> SyncState::ListSent() {
    std::vector<ExchangeFileId> files;
    Query query(mSql, "SELECT Machine, Number FROM beside.Outbox ORDER BY Number");
    while (query.Step()) {
        files.push_back({MachineOf(query.Text(0)), query.Int(1), false});
    }
    return files;
}

std::string SyncState::ReadSent(const ExchangeFileId& id) {
    const std::string machine = HexText(id.Machine);
    Query query(mSql, "SELECT Bytes FROM beside.Outbox WHERE Machine=? AND Number=?", machine,
                id.Number);
    return query.Step() ? query.Blob(0) : std::string();
}

void SyncState::DropSent(const ExchangeFileId& id) {
    const std::string machine = HexText(id.Machine);
    Query query(mSql, "DELETE FROM beside.Outbox WHERE Machine=? AND Number=?", machine, id.Number);
    query.Step();
}

bool SyncState::HasPending() {
    Query query(mSql, "SELECT 1 FROM beside.Pending LIMIT 1");
    return query.Step();
}

void SyncState::AddPending(const std::string& text) {
    // A blob stays in UTF-8, whatever the engine's encoding of the store is.
    Query query(mSql, "INSERT INTO beside.Pending(Text) VALUES (?)");
    query.BindBlob(text);
    query.Step();
}

std::vector<std::pair<int64_t, ScheduleEvent>> SyncState::ReadPending(int most, int64_t& last) {
    std::vector<std::pair<int64_t, ScheduleEvent>> events;
    last = 0;
    Query query(mSql, "SELECT Id, Text FROM beside.Pending ORDER BY Id LIMIT ?", most);
    while (query.Step()) {
        last = query.Int(0);
        ScheduleEvent event;
        if (ParseStoredEvent(query.Bytes(1), event)) {
            events.emplace_back(last, std::move(event));
        }
    }
    return events;
}

void SyncState::DropPending(int64_t number) {
    Query query(mSql, "DELETE FROM beside.Pending WHERE Id=?", number);
    query.Step();
}

void SyncState::DropPendingTo(int64_t last) {
    Query query(mSql, "DELETE FROM beside.Pending WHERE Id<=?", last);
    query.Step();
}
