#include "files/StoreRepair.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <random>

#include "support/HalfDone.h"

namespace {

constexpr int kCards = 300;
constexpr size_t kPageSize = 4096;
constexpr char kTexts[] = "SELECT CardId,Front,Back,CategoryId FROM Cards ORDER BY CardId";
constexpr char kWholeRows[] = "SELECT * FROM Cards ORDER BY CardId";

struct StoreRepairTest : StoreFixture {
    StoreRepairTest() {
        mDatabase.CategoryInsert(L"\u65e5\u672c\u8a9e");
        mDatabase.CategoryInsert("007");
        std::vector<FlashCard> cards;
        for (int i = 0; i < 2 * kCards; ++i) {
            FlashCard card = MakeCard(wxString::Format(L"front %d \U0001F600", i), "back", i % 3);
            // Longer than a page.
            card.Notes = wxString('n', static_cast<size_t>(i % 50 == 0 ? 9000 : i % 70));
            card.IntroductionOrder = i;
            card.Forward.Introduced = true;
            card.Forward.ReviewInterval = 0.25f * static_cast<float>(i);
            card.Reverse.ERC = -i;
            cards.push_back(card);
        }
        size_t inserted = 0;
        EXPECT_EQ(mDatabase.InsertFlashCards(cards, inserted), 0);
        // Their pages are free again, with all that was in them.
        EXPECT_EQ(mDatabase.Execute(
                      wxString::Format("DELETE FROM Cards WHERE IntroductionOrder>=%d", kCards)),
                  0);
        mDatabase.Close();
        mWhole = ReadBytes(StorePath());
        mTexts = Query(kTexts);
        mRows = Query(kWholeRows);
    }

    int Repair(const std::string& damaged) {
        const wxString path = mDirectory.Path("damaged.vlm");
        WriteBytes(path, damaged);
        std::filesystem::remove(StorePath().utf8_string());
        const int result = RepairStore(path, StorePath(), mRepair);
        EXPECT_EQ(ReadBytes(path), damaged);
        return result;
    }
    std::string WithoutPage(size_t page) const {
        std::string damaged = mWhole;
        damaged.replace((page - 1) * kPageSize, kPageSize, kPageSize, '\0');
        return damaged;
    }

    std::string mWhole;
    Strings mTexts;
    Strings mRows;
    RepairReport mRepair;
};

TEST_F(StoreRepairTest, AnyLostPageCostsNoCardItsTextsAndOtherCardsNothing) {
    const size_t pages = mWhole.length() / kPageSize;
    ASSERT_GT(pages, 100u);
    int remade = 0;
    int shortened = 0;
    // The first page, which says what the others are, is one of them.
    for (size_t page = 1; page <= pages; page += 5) {
        SCOPED_TRACE(page);
        ASSERT_EQ(Repair(WithoutPage(page)), 0);
        EXPECT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
        const Strings rows = Query(kWholeRows);
        Strings same;
        std::set_intersection(rows.begin(), rows.end(), mRows.begin(), mRows.end(),
                              std::back_inserter(same));
        if (page == 1) {
            // The list of free pages is lost, so that deleted cards may come back.
            EXPECT_EQ(same.size(), mRows.size());
            EXPECT_GE(mRepair.Cards, kCards);
            continue;
        }
        EXPECT_EQ(Query(kTexts), mTexts);
        EXPECT_EQ(static_cast<int>(same.size()), mRepair.Cards - mRepair.Shortened);
        EXPECT_EQ(mRepair.Cards + mRepair.Remade, kCards);
        EXPECT_EQ(mRepair.Lost, 0);
        remade += mRepair.Remade;
        shortened += mRepair.Shortened;
    }
    EXPECT_GT(remade, 0);
    EXPECT_GT(shortened, 0);
}

TEST_F(StoreRepairTest, CategoriesKeepTheirNamesOrGetOne) {
    ASSERT_EQ(Repair(mWhole), 0);
    EXPECT_EQ(Query("SELECT * FROM Categories"),
              (Strings{"0|Default", "1|\u65e5\u672c\u8a9e", "2|7"}));
    mDatabase.Open(StorePath(), mWait);
    mDatabase.Execute("DELETE FROM Categories WHERE Id=1");
    mDatabase.Close();
    ASSERT_EQ(Repair(ReadBytes(StorePath())), 0);
    EXPECT_EQ(Query("SELECT c.Name,count(*) FROM Cards JOIN Categories c ON c.Id=CategoryId"
                    " GROUP BY CategoryId ORDER BY CategoryId"),
              (Strings{"Default|100", "Category 1|100", "7|100"}));
    EXPECT_EQ(mRepair.NamelessCategories, 1);
    EXPECT_TRUE(DescribeRepair(mRepair).StartsWith("300 cards were saved.\n"));
}

// What the engine itself reads of a store is the least that a repair saves.
struct ReadableDamage {
    const char* Name;
    // Run on the whole store.
    const char* Sql;
    // Bytes from a place on that become 1, then bytes cut from the end.
    size_t Place = 0;
    size_t Length = 0;
    size_t Cut = 0;
    // The last byte of the row id of row 147.
    int RowIdByte = -1;
};
constexpr char kKept[] =
    "SELECT Front,Back,CategoryId,Notes,FrontImage,Introduced,LastReview,ReviewInterval,"
    "RERC FROM Cards ORDER BY IntroductionOrder";
const ReadableDamage kReadableDamages[] = {
    {"an identity of zeros",
     "UPDATE Cards SET CardId='00000000-0000-0000-0000-000000000000' WHERE rowid=7"},
    {"an empty identity", "UPDATE Cards SET CardId='' WHERE rowid=7"},
    {"no identity", "UPDATE Cards SET CardId=NULL WHERE rowid=7"},
    {"a word as identity", "UPDATE Cards SET CardId='x' WHERE rowid=7"},
    {"a number as identity", "UPDATE Cards SET CardId=12 WHERE rowid=7"},
    {"bytes as identity", "UPDATE Cards SET CardId=x'00ff' WHERE rowid=7"},
    {"a wrong list of free pages", "", 35, 1},
    {"a table without a column", "ALTER TABLE Cards DROP COLUMN RLastScore"},
    {"a table with other columns", "ALTER TABLE Cards ADD COLUMN Colour TEXT DEFAULT 'red'"},
    {"a last page cut short",
     "INSERT INTO Cards(CardId,Front,Back,CategoryId,Notes,IntroductionOrder,Introduced,LastReview,"
     "ReviewInterval,RERC) SELECT printf('00000000-0000-4000-8000-%012d',rowid),'new','new',0,'',"
     "1000+rowid,1,1700000000,60.0,5 FROM Cards LIMIT 90",
     0, 0, 500},
    {"a row with the id of an earlier one", "", 0, 0, 0, 0x05},
    {"a row with the id of a later one", "", 0, 0, 0, 0x7F},
};

// A row id stands before the header of its record, and the identity of the card after that.
size_t RowIdPlace(const std::string& bytes, const std::string& id) {
    std::string text;
    for (const char character : id) {
        text += {character, '\0'};
    }
    for (size_t place = bytes.find(text);; place = bytes.find(text, place + 1)) {
        for (size_t header = 29; header < 33; ++header) {
            if (bytes.at(place - header) == static_cast<char>(header)) {
                return place - header - 1;
            }
        }
    }
}

TEST_F(StoreRepairTest, WhatTheEngineReadsIsSaved) {
    for (const ReadableDamage& damage : kReadableDamages) {
        SCOPED_TRACE(damage.Name);
        WriteBytes(StorePath(), mWhole);
        Query("UPDATE Cards SET FrontImage=x'00ff00' WHERE rowid%3=0");
        ASSERT_EQ(Query(damage.Sql), Strings());
        const auto rows = [this] {
            Strings kept = Query(kKept);
            std::sort(kept.begin(), kept.end());
            return kept;
        };
        const Strings whole = rows();
        std::string bytes = ReadBytes(StorePath());
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(damage.Place), damage.Length, 1);
        bytes.resize(bytes.length() - damage.Cut);
        if (damage.RowIdByte >= 0) {
            const std::string id = Query("SELECT CardId FROM Cards WHERE rowid=147").front();
            bytes[RowIdPlace(bytes, id)] = static_cast<char>(damage.RowIdByte);
        }
        WriteBytes(StorePath(), bytes);
        const Strings read = rows();
        Strings readable;
        std::set_intersection(read.begin(), read.end(), whole.begin(), whole.end(),
                              std::back_inserter(readable));
        ASSERT_GT(readable.size(), 290U);
        ASSERT_EQ(Repair(bytes), 0);
        const Strings saved = rows();
        Strings lost;
        std::set_difference(readable.begin(), readable.end(), saved.begin(), saved.end(),
                            std::back_inserter(lost));
        EXPECT_EQ(lost, Strings());
        EXPECT_EQ(Query("SELECT count(*) FROM Cards WHERE length(CardId)<>36 OR CardId NOT LIKE"
                        " '%-4%' OR CardId LIKE '00000000-0000-0000%'"),
                  Strings{"0"});
        EXPECT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
    }
}

TEST_F(StoreRepairTest, WhatLiesBesideADamagedStoreIsPlayedBackInTheCopyAlone) {
    // A log of what was written, and a change that was cut off in the middle of its way.
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"-wal", "PRAGMA journal_mode=WAL; UPDATE Cards SET Front='new' WHERE rowid<9", "8"},
        {"-journal", "PRAGMA cache_size=1; BEGIN; UPDATE Cards SET Front='new', Notes=''", "0"}};
    const wxString damaged = mDirectory.Path("damaged.vlm");
    for (const auto& [suffix, change, changed] : rows) {
        WriteBytes(StorePath(), mWhole);
        LeaveHalfDone(StorePath(), damaged, change);
        const std::string beside = ReadBytes(damaged + suffix);
        ASSERT_FALSE(beside.empty());
        ASSERT_EQ(Repair(ReadBytes(damaged)), 0);
        EXPECT_EQ(Query("SELECT count(*) FROM Cards WHERE Front='new'"), Strings{changed});
        EXPECT_EQ(Query("SELECT count(*) FROM Cards"), Strings{std::to_string(kCards)});
        EXPECT_EQ(ReadBytes(damaged + suffix), beside);
        std::filesystem::remove((damaged + suffix).utf8_string());
    }
}

// A terabyte of holes behind the pages, and a table that has to be found among them.
TEST_F(StoreRepairTest, WhatIsNotThereTakesNoTime) {
    const wxString path = mDirectory.Path("long.vlm");
    WriteBytes(path, WithoutPage(1));
    std::filesystem::resize_file(path.utf8_string(), std::uintmax_t{1} << 40);
    std::filesystem::remove(StorePath().utf8_string());
    ASSERT_EQ(RepairStore(path, StorePath(), mRepair), 0);
    EXPECT_GE(mRepair.Cards, kCards);
}

TEST_F(StoreRepairTest, ARepairThatWasKilledLeavesNothingForLong) {
    const std::filesystem::path root = mDirectory.Path("").utf8_string();
    for (const char* const name : {"velomind-repair-abc123", "velomind-repair-mine"}) {
        std::filesystem::create_directory(root / name);
        WriteBytes(mDirectory.Path(wxString(name) + "/damaged.vlm"), mWhole);
    }
    ASSERT_EQ(Repair(mWhole), 0);
    EXPECT_FALSE(std::filesystem::exists(root / "velomind-repair-abc123"));
    EXPECT_TRUE(std::filesystem::exists(root / "velomind-repair-mine"));
}

TEST_F(StoreRepairTest, WhatIsNoStoreAndAnyBytesEndWithAnAnswer) {
    EXPECT_EQ(Repair(""), EILSEQ);
    EXPECT_EQ(Repair(std::string(20000, 'x')), EILSEQ);
    EXPECT_EQ(RepairStore(mDirectory.Path("none"), StorePath(), mRepair), ENOENT);
    WriteBytes(StorePath(), "mine");
    EXPECT_EQ(RepairStore(mDirectory.Path("damaged.vlm"), StorePath(), mRepair), EEXIST);
    EXPECT_EQ(ReadBytes(StorePath()), "mine");
    std::minstd_rand random(1);
    for (int i = 0; i < 40; ++i) {
        std::string damaged = mWhole;
        for (int change = 0; change < 4000; ++change) {
            damaged[random() % damaged.length()] = static_cast<char>(random());
        }
        ASSERT_EQ(Repair(damaged), 0);
        EXPECT_EQ(Query("PRAGMA integrity_check"), Strings{"ok"});
    }
}

}  // namespace
