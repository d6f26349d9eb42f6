#include "files/StoreFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include <cerrno>

#include "files/ExchangeFiles.h"
#include "files/StoreCheck.h"
#include "support/StoreFixture.h"

namespace {

struct StoreFilesTest : ::testing::Test {
    StoreFilesTest() { WriteBytes(mStore, mCards); }

    wxString Path(const wxString& name) const { return mDirectory.Path(name); }
    size_t CountFiles() const {
        wxArrayString files;
        return wxDir::GetAllFiles(Path(wxString()), &files);
    }

    TestDirectory mDirectory;
    const wxString mStore = Path("store.vlm");
    // More than one block, and no whole number of them.
    const std::string mCards = std::string(100001, 'a') + std::string(100000, 'b');
};

TEST_F(StoreFilesTest, AMoveFollowsALinkAndReplacesAFileWithWhatWasLeftBesideIt) {
    const wxString target = Path("other.vlm");
    WriteBytes(target, "old");
    WriteBytes(target + "-journal", "would be played back into the cards");
    WriteBytes(target + "-wal", "and so would this");
    WriteBytes(target + ".reviews", "of cards that are gone");
    WriteBytes(mStore + ".reviews", "of these cards");
    WriteBytes(mStore + "-journal", std::string(512, '\0'));
    ASSERT_EQ(::symlink(mStore.utf8_str(), Path("link.vlm").utf8_str()), 0);
    EXPECT_EQ(MoveStoreFile(Path("link.vlm"), target), 0);
    EXPECT_EQ(ReadBytes(target), mCards);
    EXPECT_EQ(ReadBytes(target + ".reviews"), "of these cards");
    EXPECT_EQ(CountFiles(), 2u);
    // A store without reviews does not take over those of another one.
    WriteBytes(mStore, mCards);
    EXPECT_EQ(MoveStoreFile(mStore, target), 0);
    EXPECT_EQ(CountFiles(), 1u);
}

// Each store of two is exchanged or not, and is the present one or marked as an earlier one.
TEST_F(StoreFilesTest, WhatAnExchangeKeepsGoesWithItsStore) {
    const wxString target = Path("other.vlm");
    const auto textOf = [](const wxString& path) {
        return wxFileName::Exists(path) ? ReadBytes(path) : std::string("none");
    };
    struct Case {
        bool IsExchanged, IsMarked, IsTargetThere;
        const char* State;
        bool IsTargetMarked;
    };
    const Case cases[] = {
        {true, false, false, "of this", false}, {true, true, false, "of this", true},
        {true, false, true, "of this", false},  {true, true, true, "of this", true},
        {false, false, true, "of that", true},  {false, false, false, "none", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        WriteBytes(mStore, mCards);
        for (const char* const suffix :
             {kExchangeSuffix, kEditNotesSuffix, kTakenEditNotesSuffix}) {
            if (c.IsExchanged) {
                WriteBytes(mStore + suffix, "of this");
            }
            if (c.IsTargetThere) {
                WriteBytes(target, "old");
                WriteBytes(target + suffix, "of that");
            }
        }
        if (c.IsMarked) {
            WriteBytes(mStore + kRestoredSuffix, "");
        }
        {
            const FileDescriptor exchange(
                ::open((mStore + kExchangeLockSuffix).utf8_str(), O_RDWR | O_CREAT, 0600));
            ASSERT_EQ(::flock(exchange.Get(), LOCK_EX), 0);
            EXPECT_EQ(MoveStoreFile(mStore, target), EBUSY);
            EXPECT_EQ(ReadBytes(mStore), mCards);
            EXPECT_EQ(textOf(target), c.IsTargetThere ? "old" : "none");
            EXPECT_FALSE(wxFileName::Exists(target + kRestoredSuffix));
        }
        EXPECT_EQ(MoveStoreFile(mStore, target), 0);
        EXPECT_EQ(ReadBytes(target), mCards);
        for (const char* const suffix :
             {kExchangeSuffix, kEditNotesSuffix, kTakenEditNotesSuffix}) {
            EXPECT_EQ(textOf(target + suffix), c.State) << suffix;
            EXPECT_EQ(textOf(mStore + suffix), "none") << suffix;
        }
        EXPECT_EQ(wxFileName::Exists(target + kRestoredSuffix), c.IsTargetMarked);
        for (const char* const suffix :
             {"", kExchangeSuffix, kEditNotesSuffix, kTakenEditNotesSuffix, kRestoredSuffix}) {
            std::filesystem::remove((target + suffix).utf8_string());
        }
    }
}

TEST_F(StoreFilesTest, WhatIsNoPlaceForAStoreLeavesItWhereItIs) {
    ASSERT_TRUE(wxFileName::Mkdir(Path("directory")));
    ASSERT_EQ(::symlink(mStore.utf8_str(), Path("link.vlm").utf8_str()), 0);
    const std::pair<wxString, int> cases[] = {{wxString(), ENOENT},
                                              {"file:store.vlm", EINVAL},
                                              {Path("directory"), EISDIR},
                                              {Path("not/there.vlm"), ENOENT},
                                              {Path("store.vlm/inside"), ENOTDIR},
                                              {"/dev/null", ENODEV},
                                              {Path("link.vlm"), EEXIST},
                                              {mStore, EEXIST}};
    for (const auto& [target, error] : cases) {
        EXPECT_EQ(MoveStoreFile(mStore, target), error) << target;
        EXPECT_EQ(ReadBytes(mStore), mCards) << target;
    }
    // It must not leave pending changes behind, either.
    WriteBytes(mStore + "-journal", "hot");
    EXPECT_EQ(MoveStoreFile(mStore, Path("other.vlm")), EBUSY);
    EXPECT_FALSE(wxFileName::Exists(Path("other.vlm")));
}

// The engine has nothing against these files.
TEST_F(StoreFilesTest, AStoreThatIsRefusedIsToldWhyByTheOpenAndTheCheck) {
    const std::pair<const char*, const char*> cases[] = {
        {"UPDATE Globals SET Value='99'", "It was made by a newer version of Velomind."},
        {"ALTER TABLE Cards ADD COLUMN rowid INTEGER",
         "Its tables have rules, computed columns or names that no store has."},
        {"ALTER TABLE Cards ADD COLUMN Twice AS (Front||Front)",
         "Its tables have rules, computed columns or names that no store has."},
        {"CREATE INDEX Odd ON Cards(length(Front))",
         "Its tables have rules, computed columns or names that no store has."},
    };
    const wxString path = Path("refused.vlm");
    for (const auto& [sql, reason] : cases) {
        std::filesystem::remove(path.utf8_string());
        QuietDatabase database;
        ASSERT_EQ(database.OpenQuietly(path), 0);
        ASSERT_EQ(database.Execute(sql), 0) << sql;
        EXPECT_LT(database.OpenQuietly(path), 0) << sql;
        EXPECT_EQ(database.GetLastError(), reason) << sql;
        EXPECT_EQ(CheckStoreFile(path), std::vector<wxString>{reason}) << sql;
    }
}

TEST_F(StoreFilesTest, AFailedMoveLeavesWhatItWasToReplaceWhole) {
    const wxString target = Path("other.vlm");
    const auto expectWhole = [&] {
        EXPECT_EQ(ReadBytes(target), "old");
        EXPECT_EQ(ReadBytes(target + "-journal"), "hot");
        EXPECT_EQ(CountFiles(), 3u);
    };
    WriteBytes(target, "old");
    WriteBytes(target + "-journal", "hot");
    EXPECT_EQ(MoveStoreFile(Path(wxString()), target), EINVAL) << "into itself";
    expectWhole();
    EXPECT_NE(CopyAndDeleteStoreFile("/proc/self/cmdline", target), 0) << "cannot be deleted";
    expectWhole();
    ASSERT_TRUE(wxFileName::Mkdir(target + "-wal"));
    EXPECT_EQ(MoveStoreFile(mStore, target), EISDIR) << "what is no file is not thrown away";
    expectWhole();
    EXPECT_EQ(ReplaceByNewStore(target), EISDIR);
    expectWhole();
}

TEST_F(StoreFilesTest, AcrossFileSystemsTheOriginalGoesLast) {
    const wxString target = Path("other.vlm");
    WriteBytes(target, "old");
    for (const rlim_t room : {rlim_t{0}, rlim_t{100000}}) {
        const FullDisk disk(room);
        EXPECT_EQ(CopyAndDeleteStoreFile(mStore, target), EFBIG);
        EXPECT_EQ(ReadBytes(mStore), mCards);
        EXPECT_EQ(ReadBytes(target), "old");
        EXPECT_EQ(CountFiles(), 2u);
    }
    EXPECT_EQ(CopyAndDeleteStoreFile(mStore, target), 0);
    EXPECT_EQ(ReadBytes(target), mCards);
    EXPECT_EQ(CountFiles(), 1u);
}

}  // namespace
