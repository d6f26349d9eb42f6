#pragma once

// The texts of the store file's tables and indexes. Files are shared with other versions of the
// program, so every column stays, also those that nothing here reads.

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

// NAME is no type that the engine knows, which gives the column numeric affinity: the names "007"
// and "7" are one name. Existing files have it so.
constexpr char kCreateCategories[] =
    "CREATE TABLE Categories("
    "Id       INTEGER PRIMARY KEY,"
    "Name     NAME    UNIQUE);";

constexpr char kCreateGlobals[] =
    "CREATE TABLE Globals("
    "Key       TEXT PRIMARY KEY,"
    "Value     TEXT);";

// The column lists of the indexes on Cards, in the order of creation. Their names are made from
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

// The first schema had card ids with upper-case digits.
constexpr char kUpgradeFirstSchema[] = "UPDATE Cards SET CardId=LOWER(CardId)";
