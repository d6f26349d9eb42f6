#include "files/StoreBackup.h"

#include <filesystem>

#include "support/StoreFixture.h"

namespace {

wxDateTime LocalTime(const char* text) {
    wxDateTime time;
    EXPECT_TRUE(time.ParseISOCombined(text)) << text;
    return time;
}

struct StoreBackupTest : StoreFixture {
    StoreBackupTest() {
        mSettings.Directory = mDirectory.Path("backups/of mine");
        for (const char* const front : {"one", "two", "three"}) {
            mCards.push_back(Insert(MakeCard(front, "back")));
        }
    }
    StoreBackups MakeBackups() {
        return {mSettings, [this](const wxString& text) { mTold.push_back(text); }};
    }
    std::vector<StoreBackup> List() { return ListBackups(mSettings.Directory, StorePath()); }
    int CountFiles() const {
        const std::filesystem::directory_iterator files(mSettings.Directory.utf8_string());
        return static_cast<int>(std::distance(files, {}));
    }

    BackupSettings mSettings;
    std::vector<FlashCard> mCards;
    std::vector<wxString> mTold;
    const wxDateTime mNow = LocalTime("2026-03-15T12:00:00");
};

TEST_F(StoreBackupTest, ThinningKeepsDaysThenMonthsAndTheNewestWithinTheSize) {
    const char* const times[] = {
        "2026-03-15T11:00:00", "2026-03-14T09:00:00", "2026-03-14T08:00:00", "2026-03-10T18:00:00",
        "2026-03-10T08:00:00", "2026-02-20T08:00:00", "2026-01-20T08:00:00", "2026-01-10T08:00:00",
        "2025-12-31T08:00:00", "2024-12-31T08:00:00"};
    std::vector<StoreBackup> backups;
    for (const char* const time : times) {
        backups.push_back({time, LocalTime(time), BackupCause::kDay, 100});
    }
    struct Case {
        size_t Least;
        uint64_t MostBytes;
        std::vector<size_t> Gone;
        size_t GoneBySize;
        bool IsOverLimit;
    };
    const Case cases[] = {
        {10, 5000, {}, 0, false},
        // The earlier one of a day past two days, and of a month past one.
        {2, 5000, {4, 7}, 0, false},
        {5, 5000, {7}, 0, false},
        {2, 350, {3, 4, 5, 6, 7, 8, 9}, 5, false},
        {4, 350, {4, 5, 6, 7, 8, 9}, 4, true},
    };
    for (const Case& c : cases) {
        mSettings.Least = c.Least;
        mSettings.MostBytes = c.MostBytes;
        const BackupThinning thinning = ThinBackups(backups, mNow, mSettings);
        std::vector<wxString> gone;
        for (const StoreBackup& backup : thinning.Gone) {
            gone.push_back(backup.Path);
        }
        std::vector<wxString> expected;
        for (const size_t i : c.Gone) {
            expected.push_back(times[i]);
        }
        EXPECT_EQ(gone, expected) << c.Least;
        EXPECT_EQ(thinning.GoneBySize, c.GoneBySize) << c.Least;
        EXPECT_EQ(thinning.IsOverLimit, c.IsOverLimit) << c.Least;
    }
}

// A backup from before there was a log leaves the present one where it is.
TEST_F(StoreBackupTest, TheLogOfReviewsIsKeptAndGoesWithItsBackup) {
    const wxString log = StorePath() + ".reviews";
    StoreBackups backups = MakeBackups();
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kUser, mNow - wxTimeSpan::Days(9)), 0);
    for (const int minutes : {0, 1}) {
        WriteBytes(log, minutes == 0 ? "first" : "first and second");
        const wxDateTime time = mNow - wxTimeSpan::Days(8) + wxTimeSpan::Minutes(minutes);
        EXPECT_EQ(backups.Make(mDatabase, BackupCause::kUser, time), 0);
    }
    mDatabase.Close();
    const std::vector<StoreBackup> list = List();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].Bytes, list[1].Bytes + 11);
    EXPECT_EQ(RestoreBackup(list[1].Path, StorePath()), 0);
    EXPECT_EQ(ReadBytes(log), "first");
    EXPECT_EQ(RestoreBackup(list[2].Path, StorePath()), 0);
    EXPECT_EQ(ReadBytes(log), "first");
    mSettings.Least = 1;
    EXPECT_EQ(MakeBackups().MakeOfFile(StorePath(), BackupCause::kUser, mNow), 0);
    // One of two on the same day has gone, with its log.
    EXPECT_EQ(List().size(), 3U);
    EXPECT_EQ(CountFiles(), 5);
}

TEST_F(StoreBackupTest, ABackupIsAStoreOfItsOwnNamedByTimeAndCause) {
    StoreBackups backups = MakeBackups();
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow), 0);
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow), 0);
    // An import that reads on under a lock of its own must not keep a backup from being made.
    const StoreReadLock reading(mDatabase);
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kUser, mNow + wxTimeSpan::Minute()), 0);
    WriteBytes(mSettings.Directory + "/store.20260315T120000Z.unknown.vlm", "no backup");
    WriteBytes(mSettings.Directory + "/store.20269915T120000Z.day.vlm", "no backup");
    const std::vector<StoreBackup> list = List();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].Cause, BackupCause::kUser);
    EXPECT_EQ(list[1].Time, mNow + wxTimeSpan::Second());
    EXPECT_EQ(list[2].Time, mNow);
    EXPECT_EQ(ReadBytes(list[2].Path), ReadBytes(StorePath()));
    EXPECT_EQ(CountFiles(), 5) << "something was left behind";
    // The engine's lock has not been lost with a descriptor of the copy.
    Database other(mReport);
    ASSERT_EQ(other.Open(StorePath(), mWait), 0);
    EXPECT_LT(other.UpdateCategory({0, "changed"}), 0);
    EXPECT_TRUE(mTold.empty());
}

TEST_F(StoreBackupTest, AFullDiskIsToldOnceAndLeavesNothingBehind) {
    StoreBackups backups = MakeBackups();
    {
        const FullDisk disk(4096);
        EXPECT_EQ(backups.Make(mDatabase, BackupCause::kMerge, mNow), EFBIG);
        EXPECT_EQ(backups.Make(mDatabase, BackupCause::kMerge, mNow), EFBIG);
    }
    EXPECT_EQ(mTold.size(), 1u);
    EXPECT_EQ(CountFiles(), 0);
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kMerge, mNow), 0);
    EXPECT_EQ(List().size(), 1u);
    mDatabase.Execute("DELETE FROM Cards");
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kMerge, mNow), 0);
    EXPECT_EQ(List().size(), 1u) << "a store without cards is worth no backup";
}

TEST_F(StoreBackupTest, TheFirstChangeOfADayIsPrecededByABackup) {
    StoreBackups backups = MakeBackups();
    wxDateTime now = mNow;
    mDatabase.SetBeforeChange([&] { backups.MakeDaily(mDatabase, now); });
    int32_t count = 0;
    EXPECT_EQ(mDatabase.CountAllCards(count), 0);
    EXPECT_EQ(List().size(), 0u) << "reading is no change";
    EXPECT_EQ(mDatabase.CardDeleteByRowId(1), 0);
    EXPECT_EQ(mDatabase.CardDeleteByRowId(2), 0);
    ASSERT_EQ(List().size(), 1u);
    now += wxTimeSpan::Hours(24);
    EXPECT_EQ(mDatabase.CardDeleteByRowId(3), 0);
    // Another start of the program on the same day.
    StoreBackups later = MakeBackups();
    later.MakeDaily(mDatabase, now);
    ASSERT_EQ(List().size(), 2u);
    for (const auto& [index, cards] : {std::pair<size_t, int>{0, 1}, {1, 3}}) {
        Database backup(mReport);
        ASSERT_EQ(backup.Open(List()[index].Path, mWait), 0);
        EXPECT_EQ(backup.CountAllCards(count), 0);
        EXPECT_EQ(count, cards);
    }
    // Another store that is opened on that day has a first change of its own.
    const wxString other = mDirectory.Path("other.vlm");
    Insert(MakeCard("of both", "stores"));
    WriteBytes(other, ReadBytes(StorePath()));
    mDatabase.Close();
    ASSERT_EQ(mDatabase.Open(other, mWait), 0);
    EXPECT_EQ(mDatabase.UpdateCategory({0, "Renamed"}), 0);
    EXPECT_EQ(ListBackups(mSettings.Directory, other).size(), 1u);
}

TEST_F(StoreBackupTest, ABackupTellsWhatHasChangedSinceAndBringsItBack) {
    StoreBackups backups = MakeBackups();
    ASSERT_EQ(backups.Make(mDatabase, BackupCause::kUser, mNow), 0);
    EXPECT_EQ(mDatabase.DeleteCard(mCards[0].CardId), 0);
    mCards[1].Notes = "changed";
    mCards[2].Reverse.ReviewInterval = 60;
    mDatabase.UpdateFlashCard(mCards[1]);
    mDatabase.UpdateFlashCard(mCards[2]);
    Insert(MakeCard("new", "back"));
    const wxString path = List().front().Path;
    {
        Database backup(mReport);
        ASSERT_EQ(backup.Open(path, mWait), 0);
        StoreDifference difference;
        EXPECT_EQ(CompareStores(mDatabase, backup, difference), 0);
        EXPECT_EQ(difference.BackupCards, 3);
        EXPECT_EQ(difference.Added, 1);
        EXPECT_EQ(difference.MissingRowIds, std::vector<int64_t>{1});
        EXPECT_EQ(difference.Changed, 1);
        EXPECT_EQ(difference.Scored, 1);
    }
    mDatabase.Close();
    EXPECT_EQ(RestoreBackup(mDirectory.Path("none"), StorePath()), ENOENT);
    WriteBytes(mDirectory.Path("broken"), "no store");
    EXPECT_EQ(RestoreBackup(mDirectory.Path("broken"), StorePath()), EILSEQ);
    EXPECT_EQ(Query("SELECT count(*) FROM Cards WHERE Notes='changed'"), Strings{"1"});
    EXPECT_EQ(RestoreBackup(path, StorePath()), 0);
    EXPECT_EQ(ReadBytes(StorePath()), ReadBytes(path));
    EXPECT_EQ(RestoreBackup(path, mDirectory.Path("none")), 0) << "where no store is any more";
}

}  // namespace
