#include "files/StoreRepair.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <random>

#include "support/StoreFixture.h"

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
    for (size_t page = 1; page <= pages; page += 3) {
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
              (Strings{"Default|100", "7|100", "Category 1|100"}));
    EXPECT_EQ(mRepair.NamelessCategories, 1);
    EXPECT_TRUE(DescribeRepair(mRepair).StartsWith("300 cards were saved.\n"));
}

TEST_F(StoreRepairTest, AJournalIsPlayedBackInTheCopyAlone) {
    // A change that was cut off in the middle of its way to the file.
    const wxString path = mDirectory.Path("cut.vlm");
    WriteBytes(path, mWhole);
    Database database(mReport);
    ASSERT_EQ(database.Open(path, mWait), 0);
    ASSERT_EQ(database.Execute("BEGIN"), 0);
    ASSERT_EQ(database.Execute("PRAGMA cache_size=1"), 0);
    ASSERT_EQ(database.Execute("UPDATE Cards SET Front='half done', Notes=''"), 0);
    const wxString damaged = mDirectory.Path("damaged.vlm");
    const std::string journal = ReadBytes(path + "-journal");
    ASSERT_FALSE(journal.empty());
    WriteBytes(damaged + "-journal", journal);
    ASSERT_EQ(Repair(ReadBytes(path)), 0);
    EXPECT_EQ(Query(kTexts), mTexts);
    EXPECT_EQ(ReadBytes(damaged + "-journal"), journal);
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
