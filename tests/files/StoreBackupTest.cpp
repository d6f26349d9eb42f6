#include "files/StoreBackup.h"

#include "files/ExchangeFiles.h"

#include <wx/filename.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>

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

// One backup of a hundred bytes for each time, the newest first.
std::vector<StoreBackup> BackupsAt(const std::vector<wxDateTime>& times) {
    std::vector<StoreBackup> backups;
    for (const wxDateTime& time : times) {
        StoreBackup& backup = backups.emplace_back();
        backup.Path = time.FormatISOCombined();
        backup.Time = time;
        backup.Bytes = 100;
    }
    return backups;
}

TEST_F(StoreBackupTest, ThinningKeepsDaysThenMonthsAndSpreadsWhatFits) {
    const std::vector<StoreBackup> backups =
        BackupsAt({LocalTime("2026-03-15T11:00:00"), LocalTime("2026-03-14T09:00:00"),
                   LocalTime("2026-03-14T08:00:00"), LocalTime("2026-03-10T18:00:00"),
                   LocalTime("2026-03-10T08:00:00"), LocalTime("2026-02-20T08:00:00"),
                   LocalTime("2026-01-20T08:00:00"), LocalTime("2026-01-10T08:00:00"),
                   LocalTime("2025-12-31T08:00:00"), LocalTime("2024-12-31T08:00:00")});
    struct Case {
        size_t Least;
        uint64_t MostBytes;
        // In the order in which they go.
        std::vector<size_t> Gone;
        size_t GoneBySize;
        bool IsOverLimit;
    };
    const Case cases[] = {
        {10, 5000, {}, 0, false},
        // The earlier one of a day past two days.
        {2, 5000, {4}, 0, false},
        {5, 5000, {}, 0, false},
        // Further ones of a day, further ones of a month, then the densest months.
        {2, 700, {4, 2, 1}, 2, false},
        {2, 350, {4, 2, 1, 6, 3, 7, 5}, 6, false},
        // Least stay, wherever they lie.
        {5, 350, {2, 4, 1, 6, 3}, 5, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Least << " of " << c.MostBytes);
        mSettings.Least = c.Least;
        mSettings.MostBytes = c.MostBytes;
        const BackupThinning thinning = ThinBackups(backups, mSettings);
        ASSERT_EQ(thinning.Gone.size(), c.Gone.size());
        for (size_t i = 0; i < c.Gone.size(); ++i) {
            EXPECT_EQ(thinning.Gone[i].Path, backups[c.Gone[i]].Path) << i;
        }
        EXPECT_EQ(thinning.GoneBySize, c.GoneBySize);
        EXPECT_EQ(thinning.IsOverLimit, c.IsOverLimit);
    }
}

// An exchange may come every hour.
TEST_F(StoreBackupTest, ThinningKeepsFourOfTheBackupsBeforeExchanges) {
    std::vector<wxDateTime> times;
    for (int hour = 0; hour < 30; ++hour) {
        times.push_back(LocalTime("2026-03-15T22:00:00") - wxTimeSpan::Hours(hour));
    }
    std::vector<StoreBackup> backups = BackupsAt(times);
    for (StoreBackup& backup : backups) {
        backup.Cause = BackupCause::kExchange;
    }
    backups[10].Cause = BackupCause::kDay;
    mSettings.Least = 2;
    // One is the last of the day before.
    EXPECT_EQ(ThinBackups(backups, mSettings).Gone.size(), backups.size() - 4 - 1 - 1);
}

// A hundred and twenty imports in two days, or a start with the clock nine years ahead, after a
// year of study.
TEST_F(StoreBackupTest, AFewBadDaysCostNoOtherDayOrMonthItsLastBackup) {
    std::vector<wxDateTime> year;
    for (int day = 1; day < 30; ++day) {
        year.push_back(mNow - wxTimeSpan::Days(1 + day));
    }
    for (int month = 1; month <= 12; ++month) {
        year.push_back(mNow - wxTimeSpan::Days(31) - wxDateSpan::Months(month));
    }
    std::vector<wxDateTime> imports;
    for (int i = 0; i < 120; ++i) {
        imports.push_back(mNow - wxTimeSpan::Minutes(12 * i));
    }
    std::vector<wxDateTime> future;
    for (int i = 0; i < 5; ++i) {
        future.push_back(mNow + wxDateSpan::Years(9) - wxTimeSpan::Hours(i));
    }
    mSettings.MostBytes = 5100;
    for (const std::vector<wxDateTime>& bad : {imports, future}) {
        std::vector<wxDateTime> all = bad;
        all.insert(all.end(), year.begin(), year.end());
        const BackupThinning thinning = ThinBackups(BackupsAt(all), mSettings);
        for (const StoreBackup& backup : thinning.Gone) {
            EXPECT_EQ(std::count(year.begin(), year.end(), backup.Time), 0) << backup.Path;
        }
        EXPECT_FALSE(thinning.IsOverLimit);
    }
}

// A backup from before there was a log leaves the present one where it is.
TEST_F(StoreBackupTest, TheLogOfReviewsIsKeptAndGoesWithItsBackup) {
    const wxString log = StorePath() + ".reviews";
    StoreBackups backups = MakeBackups();
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kUser, mNow - wxTimeSpan::Days(9)), 0);
    for (const int minutes : {0, 1}) {
        Insert(MakeCard("another", "card"));
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
    // Two days later one of the two on the same day goes, with its log.
    mSettings.Least = 1;
    for (const int days : {1, 0}) {
        Reopen();
        Insert(MakeCard("one", "more"));
        EXPECT_EQ(MakeBackups().Make(mDatabase, BackupCause::kUser, mNow - wxTimeSpan::Days(days)),
                  0);
    }
    EXPECT_EQ(List().size(), 4U);
    EXPECT_EQ(CountFiles(), 4 + 3 + 1);
}

TEST_F(StoreBackupTest, ABackupIsAStoreOfItsOwnNamedByTimeAndCause) {
    StoreBackups backups = MakeBackups();
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow), 0);
    Insert(MakeCard("four", "back"));
    EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow), 0);
    EXPECT_EQ(mDatabase.UpdateCategory({0, "Renamed"}), 0);
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
    EXPECT_EQ(ReadBytes(list[0].Path), ReadBytes(StorePath()));
    EXPECT_EQ(CountFiles(), 6) << "something was left behind";
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
    mDatabase.SetBeforeChange([&] { backups.MakeBeforeChange(mDatabase, now); });
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
    later.MakeBeforeChange(mDatabase, now);
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
    // The next exchange with other computers is told, once the store has gone back.
    const wxString mark = StorePath() + kRestoredSuffix;
    WriteBytes(StorePath() + kExchangeSuffix, "");
    EXPECT_EQ(RestoreBackup(mDirectory.Path("none"), StorePath()), ENOENT);
    WriteBytes(mDirectory.Path("text"), "Front: a\nBack: b\n");
    EXPECT_EQ(CheckBackup(mDirectory.Path("text")), EILSEQ);
    EXPECT_EQ(RestoreBackup(mDirectory.Path("text"), StorePath()), EILSEQ);
    {
        const FullDisk disk(0);
        EXPECT_EQ(RestoreBackup(path, StorePath()), EFBIG);
    }
    EXPECT_FALSE(wxFileName::Exists(mark));
    EXPECT_EQ(RestoreBackup(path, StorePath()), 0);
    EXPECT_TRUE(wxFileName::Exists(mark));
    EXPECT_EQ(ReadBytes(StorePath()), ReadBytes(path));
    EXPECT_EQ(RestoreBackup(path, mDirectory.Path("none")), 0) << "where no store is any more";
}

// Bad luck around a store of three cards and its backups, one a day for forty days.
struct BackupLuck : StoreBackupTest {
    BackupLuck() {
        mSettings.Least = 1;
        BackupSettings generous = mSettings;
        generous.Least = 1000;
        StoreBackups backups(generous, nullptr);
        for (int day = 40; day > 0; --day) {
            Change();
            backups.Make(mDatabase, BackupCause::kDay, mNow - wxTimeSpan::Days(day));
        }
        Change();
    }
    void Change() { mDatabase.UpdateCategory({0, wxString::Format("Name %i", ++mNames)}); }
    std::set<wxString> Paths() {
        std::set<wxString> paths;
        for (const StoreBackup& backup : List()) {
            paths.insert(backup.Path);
        }
        return paths;
    }
    // Makes a backup as each start of the program would.
    int Make(const wxDateTime& time) {
        return MakeBackups().Make(mDatabase, BackupCause::kImport, time);
    }

    int mNames = 0;
};

TEST_F(BackupLuck, WhatABackupMustSurvive) {
    const wxString other = mDirectory.Path("other/store.vlm");
    struct Row {
        const char* Title;
        std::function<void()> Happen;
        // How many more there are than before, and how many of those before may go.
        int Added;
        size_t Gone;
    };
    const Row rows[] = {
        {"the same list ten times, with a fault in it",
         [&] {
             for (int i = 0; i < 10; ++i) {
                 Make(mNow);
             }
         },
         1, 10},
        {"the clock nine years ahead for one start, with two imports",
         [&] {
             for (int i = 0; i < 2; ++i) {
                 Change();
                 Make(mNow + wxDateSpan::Years(9));
             }
         },
         2, 2},
        {"three starts on the day after the clock was ahead",
         [&] {
             for (int i = 0; i < 3; ++i) {
                 Change();
                 MakeBackups().MakeBeforeChange(mDatabase, mNow + wxTimeSpan::Minutes(24 * 60 + i));
             }
         },
         1, 1},
        {"a second store of that name in another folder",
         [&] {
             std::filesystem::create_directory(mDirectory.Path("other").utf8_string());
             WriteBytes(other, ReadBytes(StorePath()));
             Database second(mReport);
             ASSERT_EQ(second.Open(other, mWait), 0);
             MakeBackups().MakeBeforeChange(second, mNow);
             const std::vector<StoreBackup> its = ListBackups(mSettings.Directory, other);
             EXPECT_EQ(OwnBackups(its).size(), 1U) << "its own copy of the day";
             EXPECT_EQ(its.back().OtherPath, StorePath());
         },
         1, 0},
        {"somebody goes on in a backup, and it is the store of the settings",
         [&] {
             const std::set<wxString> paths = Paths();
             const wxString opened = *paths.begin();
             {
                 QuietDatabase backup;
                 ASSERT_EQ(backup.OpenQuietly(opened), 0);
                 backup.UpdateCategory({0, "gone on with"});
             }
             mSettings.ChosenStore = *++paths.begin();
             mSettings.MostBytes = 1;
             Change();
             Make(mNow + wxTimeSpan::Days(2));
             mSettings.MostBytes = BackupSettings().MostBytes;
             EXPECT_TRUE(wxFileName::FileExists(opened));
             EXPECT_TRUE(wxFileName::FileExists(mSettings.ChosenStore));
         },
         1, 1000},
        {"little room on the disk",
         [&] {
             mSettings.LeastRoom = uint64_t{1} << 60;
             StoreBackups backups = MakeBackups();
             Change();
             mTold.clear();
             for (int i = 0; i < 3; ++i) {
                 EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow), ENOSPC);
             }
             EXPECT_EQ(mTold.size(), 1U);
             mSettings.LeastRoom = 0;
             EXPECT_EQ(backups.Make(mDatabase, BackupCause::kImport, mNow, uint64_t{1} << 60),
                       ENOSPC)
                 << "no room for the change";
         },
         0, 0},
        {"a file of terabytes without anything in it",
         [&] {
             Change();
             const auto pages = std::filesystem::file_size(StorePath().utf8_string());
             std::filesystem::resize_file(StorePath().utf8_string(), uint64_t{1} << 32);
             EXPECT_EQ(Make(mNow + wxTimeSpan::Days(3)), 0);
             EXPECT_EQ(List().front().Bytes, pages);
             std::filesystem::resize_file(StorePath().utf8_string(), pages);
         },
         1, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Title);
        const std::set<wxString> before = Paths();
        row.Happen();
        const std::set<wxString> after = Paths();
        std::vector<wxString> gone;
        std::vector<wxString> added;
        std::set_difference(before.begin(), before.end(), after.begin(), after.end(),
                            std::back_inserter(gone));
        std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                            std::back_inserter(added));
        EXPECT_LE(gone.size(), row.Gone);
        EXPECT_EQ(added.size(), static_cast<size_t>(row.Added));
    }
}

TEST_F(StoreBackupTest, ACopyWithOtherCardsThanTheStoreIsNone) {
    // Another file of the same size and change counter gets into the store's place, so that the
    // engine goes on with the pages that it remembers, and the copy has the other ones.
    int32_t count = 0;
    ASSERT_EQ(mDatabase.CountAllCards(count), 0);
    const std::string bytes = ReadBytes(StorePath());
    std::string other = bytes;
    const wxString path = mDirectory.Path("other.vlm");
    WriteBytes(path, bytes);
    {
        QuietDatabase database;
        ASSERT_EQ(database.OpenQuietly(path), 0);
        ASSERT_EQ(database.DeleteCard(mCards.front().CardId), 0);
    }
    other = ReadBytes(path);
    ASSERT_EQ(other.size(), bytes.size());
    for (const size_t counter : {24U, 92U}) {
        other.replace(counter, 4, bytes, counter, 4);
    }
    std::fstream store(StorePath().utf8_string(), std::ios::binary | std::ios::in | std::ios::out);
    store.write(other.data(), static_cast<std::streamsize>(other.size()));
    store.close();
    EXPECT_EQ(CopyOpenStore(mDatabase, mDirectory.Path("copy.vlm")), EIO);
    EXPECT_FALSE(wxFileName::FileExists(mDirectory.Path("copy.vlm")));
}

TEST_F(StoreBackupTest, AnUnfinishedCopyOfAnotherProgramStaysForAnHour) {
    MakeBackups().Make(mDatabase, BackupCause::kDay, mNow);
    const wxString made = List().front().Path;
    const wxString young = made + ".01234567.unfinished";
    const wxString old = made + ".89abcdef.unfinished";
    WriteBytes(young, "half");
    WriteBytes(old, "half");
    std::filesystem::last_write_time(
        old.utf8_string(), std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    mDatabase.UpdateCategory({0, "Changed"});
    MakeBackups().Make(mDatabase, BackupCause::kImport, mNow);
    EXPECT_TRUE(wxFileName::FileExists(young));
    EXPECT_FALSE(wxFileName::FileExists(old));
}

TEST_F(StoreBackupTest, AStoreThatIsDamagedIsKeptAsItIsBeforeItGoes) {
    mDatabase.Close();
    std::string bytes = ReadBytes(StorePath());
    const int root =
        std::stoi(Query("SELECT rootpage FROM sqlite_master WHERE name="
                        "'Cards_CategoryId_IntroductionOrder'")[0]);
    const int size = std::stoi(Query("PRAGMA page_size")[0]);
    bytes.replace(static_cast<size_t>((root - 1) * size), 100, 100, 'x');
    WriteBytes(StorePath(), bytes);
    StoreBackups backups = MakeBackups();
    EXPECT_EQ(backups.MakeOfFile(StorePath(), BackupCause::kRestore, mNow), 0);
    ASSERT_EQ(List().size(), 1U);
    EXPECT_EQ(List()[0].Cause, BackupCause::kDamaged);
    EXPECT_EQ(backups.GetLast(), List()[0].Path);
    EXPECT_EQ(ReadBytes(List()[0].Path), bytes);
    EXPECT_NE(CheckBackup(List()[0].Path), 0);
    EXPECT_TRUE(mTold.empty());
}

// A name without the sum of a path may be that of any store of that name.
TEST_F(StoreBackupTest, BackupsOfAnEarlierVersionAreOfferedAndNeverGo) {
    const wxString old = mSettings.Directory + "/store.20200101T000000Z.day.vlm";
    std::filesystem::create_directories(mSettings.Directory.utf8_string());
    WriteBytes(old, ReadBytes(StorePath()));
    mSettings.Least = 1;
    mSettings.MostBytes = 1;
    EXPECT_EQ(MakeBackups().Make(mDatabase, BackupCause::kUser, mNow), 0);
    ASSERT_EQ(List().size(), 2U);
    EXPECT_EQ(List()[1].Path, old);
    EXPECT_TRUE(IsBackup(mSettings.Directory, old));
    EXPECT_TRUE(IsBackup(mSettings.Directory, List()[0].Path));
    EXPECT_FALSE(IsBackup(mSettings.Directory, mSettings.Directory + "/store.vlm"));
    EXPECT_FALSE(IsBackup(mSettings.Directory, mDirectory.Path("store.20200101T000000Z.day.vlm")));
}

}  // namespace
