#include "sync/ExchangeFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <random>
#include <set>

#include "support/StoreFixture.h"
#include "sync/Carrier.h"

// Stands in for the system's call. Some file systems know no flags.
static bool gRefusesFlags = false;
extern "C" int renameat2(int fromAt, const char* from, int toAt, const char* to,
                         unsigned flags) noexcept {
    if (gRefusesFlags) {
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, fromAt, from, toAt, to, flags));
}

namespace {

namespace fs = std::filesystem;

ExchangeHeader HeaderOf(const ExchangeFileId& id) {
    ExchangeHeader header;
    header.Machine = id.Machine;
    header.Number = id.Number;
    header.IsWhole = id.IsWhole;
    header.Name = "laptop";
    return header;
}

std::string BytesOf(const ExchangeFileId& id, const std::string& text = "text") {
    std::string bytes;
    ExchangeWriter writer(HeaderOf(id), SinkTo(bytes));
    writer.Add({"card", text});
    EXPECT_EQ(writer.Finish(), 0);
    return bytes;
}

// The header is whole, and the rest is not.
std::string Cut(const std::string& bytes) {
    return bytes.substr(0, bytes.find("card"));
}

std::string Damaged(std::string bytes) {
    bytes[bytes.find("card")] = 'C';
    return bytes;
}

constexpr ExchangeFileId kOne{0xA, 1, false};
constexpr ExchangeFileId kTwo{0xA, 2, false};
constexpr ExchangeFileId kOther{0xB, 1, false};
constexpr ExchangeFileId kCopy{0xA, 2, true};

struct ExchangeFolderTest : ::testing::Test {
    static void SetUpTestSuite() {
        if (fs::is_directory("/dev/shm")) {
            ::setenv("TMPDIR", "/dev/shm", 0);
        }
    }
    void Write(const std::string& name, const std::string& bytes) {
        WriteBytes(FromPath(mPath / name), bytes);
    }
    // Lists the folder as "machine-number state name", in its order.
    StoreFixture::Strings Listed(int expected = 0) {
        static const char* const kStates[] = {"whole", "incomplete", "damaged",
                                              "newer", "foreign",    "unreadable"};
        std::vector<FoundFile> files;
        EXPECT_EQ(mFolder.List(files), expected);
        StoreFixture::Strings lines;
        for (const FoundFile& file : files) {
            lines.push_back(std::to_string(file.Header.Machine) + '-' +
                            std::to_string(file.Header.Number) + ' ' +
                            kStates[static_cast<int>(file.State)] +
                            (file.IsDisputed ? " disputed " : " ") + file.Path.filename().string());
        }
        return lines;
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(mPath)) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    TestDirectory mDirectory;
    fs::path mPath = ToPath(mDirectory.Path(""));
    ExchangeFolder mFolder{mPath};
    const std::string mNameOfOne = ExchangeFileName(kOne);
};

TEST_F(ExchangeFolderTest, AFileIsWhatItsContentSays) {
    const std::string one = BytesOf(kOne);
    using Files = std::map<std::string, std::string>;
    const struct {
        const char* What;
        Files Present;
        StoreFixture::Strings Listed;
    } cases[] = {
        {"nothing", {}, {}},
        {"in order, whatever the names",
         {{"a.whole", BytesOf(kCopy)},
          {"b", BytesOf(kOther)},
          {"c", BytesOf(kTwo)},
          {"velomind-000000000000000b-0000000001.changes", one}},
         {"10-1 whole velomind-000000000000000b-0000000001.changes", "10-2 whole c",
          "10-2 whole a.whole", "11-1 whole b"}},
        {"doubled and renamed",
         {{"X 2.changes", one},
          {"X (conflicted copy 2026-03-01 120000).changes", one},
          {"X.sync-conflict-20260301-120000-ABCDEFG.changes", one}},
         {"10-1 whole X (conflicted copy 2026-03-01 120000).changes"}},
        {"a whole one beside cut and damaged ones",
         {{"velomind-a.changes", Damaged(one)},
          {"velomind-b.changes", one},
          {"velomind-c.changes", Cut(one)}},
         {"10-1 whole velomind-b.changes"}},
        {"only cut, empty and damaged ones",
         {{"velomind-a.changes", Damaged(one)},
          {"velomind-b.changes", Cut(one)},
          {"velomind-c.changes", ""},
          {"velomind-d.changes", one.substr(0, 60)},
          {"empty.txt", ""}},
         {"0-0 incomplete velomind-c.changes", "0-0 incomplete velomind-d.changes",
          "10-1 damaged velomind-a.changes", "10-1 incomplete velomind-b.changes"}},
        {"two machines with one identity",
         {{"a", one}, {"b", BytesOf(kOne, "other")}, {"c", one}},
         {"10-1 whole disputed a", "10-1 whole disputed b"}},
        {"another version", {{"a", "velomind-exchange\t2\n"}}, {"0-0 newer a"}},
        {"what is not ours",
         {{"Notes.txt", "Dear diary"},
          {".syncthing.x.changes.tmp", one},
          {"velomind-x.changes", "Dear diary"}},
         {"0-0 damaged velomind-x.changes"}},
    };
    for (const auto& each : cases) {
        for (const auto& [name, bytes] : each.Present) {
            Write(name, bytes);
        }
        EXPECT_EQ(Listed(), each.Listed) << each.What;
        for (const auto& [name, bytes] : each.Present) {
            fs::remove(mPath / name);
        }
    }
}

TEST_F(ExchangeFolderTest, LinksPipesAndFoldersAreLeftAlone) {
    const fs::path outside = ToPath(mDirectory.Path("outside"));
    fs::create_directory(outside);
    const fs::path target = outside / "target";
    WriteBytes(FromPath(target), BytesOf(kOne));
    fs::create_symlink(target, mPath / "velomind-a.changes");
    ASSERT_EQ(::mkfifo((mPath / "velomind-b.changes").c_str(), 0600), 0);
    EXPECT_EQ(Listed(), StoreFixture::Strings{});
    // A link that has the name of a file of ours goes; what it leads to stays.
    fs::create_symlink(target, mPath / mNameOfOne);
    EXPECT_EQ(mFolder.Put(kOne, BytesOf(kOne, "mine")), 0);
    EXPECT_EQ(Listed(), StoreFixture::Strings{"10-1 whole " + mNameOfOne});
    EXPECT_EQ(ReadBytes(FromPath(target)), BytesOf(kOne));
    // A folder in its place is told.
    fs::create_directory(mPath / ExchangeFileName(kTwo));
    EXPECT_EQ(mFolder.Put(kTwo, BytesOf(kTwo)), EISDIR);
    EXPECT_EQ(mFolder.Remove({kTwo}), EISDIR);
    fs::create_directory(mPath / ".velomind-000000000000000b.tmp");
    EXPECT_EQ(mFolder.Put(kOther, BytesOf(kOther)), EISDIR);
}

TEST_F(ExchangeFolderTest, OnlyWhatIsWantedIsCheckedAndNoWholeFileTwice) {
    Write("a", Damaged(BytesOf(kOne)));
    int reads = 0;
    const auto state = [this, &reads](bool isWanted) {
        std::vector<FoundFile> files;
        reads = 0;
        const auto want = [&](const ExchangeHeader&) {
            ++reads;
            return isWanted;
        };
        EXPECT_EQ(mFolder.List(files, want), 0);
        return files.at(0).State;
    };
    EXPECT_EQ(state(false), FileState::kWhole);
    EXPECT_EQ(state(true), FileState::kDamaged);
    // One of the same size takes its place.
    Write("b", BytesOf(kOne));
    fs::rename(mPath / "b", mPath / "a");
    EXPECT_EQ(state(true), FileState::kWhole);
    EXPECT_EQ(reads, 1);
    EXPECT_EQ(state(true), FileState::kWhole);
    EXPECT_EQ(reads, 0);
    Write("b", Damaged(BytesOf(kOne)));
    fs::rename(mPath / "b", mPath / "a");
    EXPECT_EQ(state(true), FileState::kDamaged);
}

TEST_F(ExchangeFolderTest, AFileOfOnesOwnIsPutOnceAndNeverChanged) {
    const std::string one = BytesOf(kOne);
    const std::string other = BytesOf(kOne, "other");
    const wxString prepared = mDirectory.Path(".prepared");
    WriteBytes(prepared, other);
    for (const bool refusesFlags : {false, true}) {
        gRefusesFlags = refusesFlags;
        // A kill has left the file that is written aside.
        Write(".velomind-000000000000000a.tmp", "half");
        EXPECT_EQ(mFolder.Put(kOne, one), 0);
        EXPECT_EQ(mFolder.Put(kOne, one), 0);
        EXPECT_EQ(mFolder.Put(kOne, other), EEXIST);
        EXPECT_EQ(mFolder.PutFrom(kOne, ToPath(prepared)), EEXIST);
        EXPECT_EQ(ReadBytes(FromPath(mPath / mNameOfOne)), one);
        // What a service has spoiled is put right.
        for (const std::string& spoiled : {std::string(), Cut(one), one + "x"}) {
            Write(mNameOfOne, spoiled);
            EXPECT_EQ(mFolder.PutFrom(kOne, ToPath(prepared)), 0);
            EXPECT_EQ(ReadBytes(FromPath(mPath / mNameOfOne)), other);
        }
        EXPECT_EQ(Names(), (std::set<std::string>{mNameOfOne, ".prepared"}));
        EXPECT_EQ(mFolder.Remove({kOne}), 0);
    }
    gRefusesFlags = false;
    EXPECT_EQ(mFolder.PutFrom(kTwo, ToPath(mDirectory.Path("missing"))), ENOENT);
}

TEST_F(ExchangeFolderTest, OwnFilesGoWithTheirDoubles) {
    Write("X 2.changes", BytesOf(kOne));
    Write("X 3.changes", Cut(BytesOf(kOne)));
    Write("X 4.changes", BytesOf(kTwo));
    Write("X 5.changes", BytesOf(kOther));
    Write("X 6.whole", BytesOf(kCopy));
    ASSERT_EQ(mFolder.Put(kOne, BytesOf(kOne)), 0);
    ASSERT_EQ(mFolder.Put(kCopy, BytesOf(kCopy)), 0);
    EXPECT_EQ(mFolder.Remove({kOne, kCopy, {0xA, 77, false}}), 0);
    EXPECT_EQ(Names(), (std::set<std::string>{"X 3.changes", "X 4.changes", "X 5.changes"}));
}

TEST_F(ExchangeFolderTest, AFolderThatIsGoneOrFullOrForReadingOnlyIsTold) {
    ASSERT_EQ(mFolder.Put(kOne, BytesOf(kOne)), 0);
    const std::string large = BytesOf(kTwo, std::string(100000, 'x'));
    {
        const FullDisk full(70000);
        EXPECT_EQ(mFolder.Put(kTwo, large), EFBIG);
    }
    EXPECT_EQ(Names(), std::set<std::string>{mNameOfOne});
    if (::geteuid() != 0) {
        fs::permissions(mPath, fs::perms::owner_read | fs::perms::owner_exec);
        EXPECT_EQ(mFolder.Put(kTwo, large), EACCES);
        EXPECT_EQ(mFolder.Remove({kOne}), EACCES);
        EXPECT_EQ(Listed(), StoreFixture::Strings{"10-1 whole " + mNameOfOne});
        fs::permissions(mPath, fs::perms::owner_all);
        fs::permissions(mPath / mNameOfOne, fs::perms::none);
        EXPECT_EQ(Listed(), StoreFixture::Strings{"0-0 unreadable " + mNameOfOne});
    }
    fs::remove_all(mPath);
    EXPECT_EQ(mFolder.Put(kTwo, large), ENOENT);
    EXPECT_EQ(mFolder.Remove({kOne}), ENOENT);
    EXPECT_EQ(Listed(ENOENT), StoreFixture::Strings{});
    std::vector<FoundFile> files;
    const std::atomic<bool> cancelled{true};
    fs::create_directory(mPath);
    Write("a", BytesOf(kOne));
    EXPECT_EQ(mFolder.List(files, {}, &cancelled), ECANCELED);
}

// A file that is listed as whole is the one that its machine wrote, whatever a service does, and at
// the end all of them are everywhere.
TEST_F(ExchangeFolderTest, FilesComeWholeOrNotAtAllThroughABadService) {
    for (uint32_t seed = 1; seed <= 10; ++seed) {
        std::mt19937 random(seed);
        const TestDirectory place;
        std::vector<ExchangeFolder> folders;
        std::vector<fs::path> paths;
        for (const char* const name : {"a", "b", "c"}) {
            paths.push_back(ToPath(place.Path(name)));
            fs::create_directory(paths.back());
            folders.emplace_back(paths.back());
        }
        Carrier carrier(paths);
        std::map<ExchangeFileId, std::string> written;
        std::set<ExchangeFileId> gone;
        for (int64_t step = 1; step <= 40; ++step) {
            const size_t machine = random() % folders.size();
            const ExchangeFileId id{machine + 1, step, random() % 8 == 0};
            written[id] = BytesOf(id, std::string(random() % 300, 'x'));
            ASSERT_EQ(folders[machine].Put(id, written[id]), 0);
            if (step % 10 == 0) {
                ASSERT_EQ(folders[machine].Remove({id}), 0);
                gone.insert(id);
            }
            carrier.Carry(random, 0.4);
            for (ExchangeFolder& folder : folders) {
                std::vector<FoundFile> files;
                ASSERT_EQ(folder.List(files), 0);
                for (const FoundFile& file : files) {
                    ASSERT_TRUE(file.State != FileState::kWhole ||
                                ReadBytes(FromPath(file.Path)) == written[IdOf(file.Header)]);
                }
            }
        }
        carrier.CarryAll();
        // What the service has lost is put again.
        for (const auto& [id, bytes] : written) {
            if (gone.count(id) == 0) {
                ASSERT_EQ(folders[id.Machine - 1].Put(id, bytes), 0);
            }
        }
        carrier.CarryAll();
        for (ExchangeFolder& folder : folders) {
            std::vector<FoundFile> files;
            ASSERT_EQ(folder.List(files), 0);
            std::set<ExchangeFileId> whole;
            for (const FoundFile& file : files) {
                if (file.State == FileState::kWhole && gone.count(IdOf(file.Header)) == 0) {
                    whole.insert(IdOf(file.Header));
                }
            }
            EXPECT_EQ(whole.size(), written.size() - gone.size()) << seed;
        }
    }
}

}  // namespace
