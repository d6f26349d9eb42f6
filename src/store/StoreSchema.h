#pragma once

#include <sqlite3.h>
#include <wx/translation.h>

// The texts of the store file's tables and indexes. Files are shared with other versions of the
// program, so columns that nothing here reads stay too.

// The schema version that this program writes under kVersionKey; it refuses a greater one.
constexpr int kSchemaVersion = 2;
constexpr char kVersionKey[] = "DATABASE_VERSION";

constexpr char kFindCardsTable[] =
    "SELECT name FROM sqlite_master WHERE type='table' AND name='Cards';";
constexpr char kFindGlobalsTable[] =
    "SELECT name FROM sqlite_master WHERE type='table' AND name='Globals';";

constexpr char kCreateCards[] =
    "CREATE TABLE Cards("
    "CardId               TEXT PRIMARY KEY,"
    "Front                TEXT,"
    "Back                 TEXT,"
    "CategoryId           INTEGER,"
    "Author               TEXT,"
    "Chapter              TEXT,"
    "IntroductionOrder    INTEGER,"
    "ForwardX             INTEGER,"
    "ReverseX             INTEGER,"
    "Notes                TEXT,"
    "FrontAudio           BLOB,"
    "BackAudio            BLOB,"
    "FrontImage           BLOB,"
    "BackImage            BLOB,"
    "Introduced           INTEGER,"
    "LastReview           INTEGER,"
    "NextReview           INTEGER,"
    "ReviewInterval       REAL,"
    "Difficulty           INTEGER,"
    "LastScore            INTEGER,"
    "ERC                  INTEGER,"
    "RIntroduced          INTEGER,"
    "RLastReview          INTEGER,"
    "RNextReview          INTEGER,"
    "RReviewInterval      REAL,"
    "RDifficulty          INTEGER,"
    "RLastScore           INTEGER,"
    "RERC                 INTEGER);";

// The part of an INSERT of cards before its rows of VALUES, with 24 parameters each.
constexpr char kInsertCards[] =
    "INSERT INTO Cards ("
    "CardId,Front,Back,CategoryId,Author,Chapter,IntroductionOrder,ForwardX,ReverseX,Notes,"
    "Introduced,LastReview,LastScore,ReviewInterval,Difficulty,NextReview,ERC,"
    "RIntroduced,RLastReview,RLastScore,RReviewInterval,RDifficulty,RNextReview,RERC"
    ") VALUES ";

// The beginnings of the statements that read cards.
#define CARD_COLUMNS                                                                            \
    "CardId, Front, Back, CategoryId, Author, Chapter, IntroductionOrder, ForwardX, ReverseX, " \
    "Notes, Introduced, LastReview, LastScore, ReviewInterval, Difficulty, ERC, RIntroduced, "  \
    "RLastReview, RLastScore, RReviewInterval, RDifficulty, RERC"
constexpr char kSelectCards[] = "SELECT " CARD_COLUMNS " FROM Cards ";
constexpr char kSelectCardsAndRows[] = "SELECT " CARD_COLUMNS ", ROWID FROM Cards ";
// Every card with its row id, by identity, in the columns of CardRow.
constexpr char kSelectCardsById[] = "SELECT " CARD_COLUMNS ", ROWID FROM Cards ORDER BY CardId;";
// The parts before and after the wanted row ids as rows of VALUES. A cross join makes the engine
// take them one by one, in order.
constexpr char kSelectWantedCards[] = "SELECT " CARD_COLUMNS ", Cards.ROWID FROM (VALUES ";
constexpr char kOfWantedCards[] = ") AS Wanted CROSS JOIN Cards ON Cards.ROWID = Wanted.column1;";
#undef CARD_COLUMNS

// The engine does not know the type NAME and gives the column numeric affinity: the names "007" and
// "7" are one name. Existing files have it.
constexpr char kCreateCategories[] =
    "CREATE TABLE Categories("
    "Id       INTEGER PRIMARY KEY,"
    "Name     NAME    UNIQUE);";

constexpr char kCreateGlobals[] =
    "CREATE TABLE Globals("
    "Key       TEXT PRIMARY KEY,"
    "Value     TEXT);";

// The column lists of the indexes on Cards, in the order of creation. The indexes are named after
// them.
constexpr const char* kCardIndexes[] = {
    "CategoryId,ForwardX,Introduced,NextReview",
    "CategoryId,ForwardX,Introduced,ERC",
    "CategoryId,ForwardX,Introduced,IntroductionOrder",
    "CategoryId,ReverseX,RIntroduced,RNextReview",
    "CategoryId,ReverseX,RIntroduced,RERC",
    "CategoryId,ReverseX,RIntroduced,IntroductionOrder",
    "Front,Back",
    "CategoryId,IntroductionOrder",
};

// The bytes of the pages that the engine counts in the file.
constexpr char kSelectBytes[] =
    "SELECT page_count*page_size FROM pragma_page_count(),pragma_page_size();";

// Selects a text for each table and index that our statements may read or write, which asks for the
// first row of that one alone.
constexpr char kSelectTreeReads[] =
    "SELECT printf('SELECT 1 FROM \"%w\" ' || CASE type WHEN 'index' THEN 'INDEXED BY \"%w\"' ELSE"
    " 'NOT INDEXED' END || ' LIMIT 1;', tbl_name, name) FROM sqlite_master WHERE type IN"
    " ('table','index') AND tbl_name COLLATE NOCASE IN ('Cards','Categories','Globals');";

// The first schema had card ids with upper-case digits.
constexpr char kUpgradeFirstSchema[] = "UPDATE Cards SET CardId=LOWER(CardId)";

// Why a file is refused that the engine can open.
constexpr char kUnfitSchema[] =
    wxTRANSLATE("Its tables have rules, computed columns or names that no store has.");
constexpr char kCutOffStore[] = wxTRANSLATE("Its end is missing.");
constexpr char kNewerStore[] = wxTRANSLATE("It was made by a newer version of Velomind.");

// Looks through the schema of a file that may come from anywhere, before anything is written to it.
// What stands in it on our own tables has to be plain: columns with literal defaults, and indexes
// on columns, so that no score ever computes what somebody else has written. Triggers, views and
// virtual tables have to be switched off on this connection; under other names than ours they may
// be there. Returns false when the store must not be opened; the handle has the engine's error, if
// that is the reason.
bool IsPlainSchema(sqlite3* handle);
