#include "media/MediaFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include "base/Unicode.h"
#include "files/StoreBackup.h"
#include "files/StoreFiles.h"
#include "files/StoreRepair.h"
#include "support/StoreFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

struct MediaFolderTest : StoreFixture {
    wxString Add(const std::string& bytes, const wxString& wanted) const {
        wxString name;
        EXPECT_EQ(mFolder.AddBytes(bytes, wanted, name), 0);
        return name;
    }
    wxString PathOf(const wxString& name) const { return StorePath() + ".media/" + name; }
    static std::vector<wxString> Names(const std::vector<MediaFile>& files) {
        std::vector<wxString> names;
        for (const MediaFile& file : files) {
            names.push_back(file.Name);
        }
        return names;
    }
    std::vector<wxString> Everything() const {
        std::vector<wxString> names;
        for (const auto& entry : fs::directory_iterator(mFolder.GetPath())) {
            names.push_back(FromPath(entry.path().filename()));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    MediaFolder mFolder{StorePath()};
};

TEST_F(MediaFolderTest, TheSameBytesKeepTheirNameAndOthersGetAnother) {
    EXPECT_EQ(Add("tit", "bird.png"), "bird.png");
    EXPECT_EQ(Add("tit", "bird.png"), "bird.png");
    EXPECT_EQ(Add("owl", "bird.png"), "bird-2.png");
    EXPECT_EQ(Add("jay", "bird.png"), "bird-3.png");
    EXPECT_EQ(Add("owl", "../bird.png"), "bird-2.png");
    EXPECT_EQ(ReadBytes(PathOf("bird.png")), "tit");
    EXPECT_EQ(ReadBytes(PathOf("bird-2.png")), "owl");
    // Nothing is left of what was written aside.
    EXPECT_THAT(Everything(), ElementsAre("bird-2.png", "bird-3.png", "bird.png"));
}

TEST_F(MediaFolderTest, AFullDiskLeavesNothingBehind) {
    Add("tit", "bird.png");
    wxString name;
    {
        const FullDisk full(10);
        EXPECT_EQ(mFolder.AddBytes(std::string(100, 'x'), "owl.png", name), EFBIG);
    }
    EXPECT_THAT(Everything(), ElementsAre("bird.png"));
}

TEST_F(MediaFolderTest, NoLinkIsFollowed) {
    WriteBytes(mDirectory.Path("secret.png"), "secret");
    Add("tit", "bird.png");
    fs::create_symlink(ToPath(mDirectory.Path("secret.png")), ToPath(PathOf("link.png")));
    ::mkfifo(PathOf("pipe.png").utf8_str(), 0600);
    EXPECT_TRUE(mFolder.Open("bird.png").IsOpen());
    for (const char* const name : {"link.png", "pipe.png", "none.png", "../secret.png"}) {
        EXPECT_FALSE(mFolder.Open(name).IsOpen()) << name;
    }
    // A file that is no longer one by the name of a link does not go through it.
    EXPECT_EQ(Add("owl", "link.png"), "link-2.png");
    EXPECT_EQ(ReadBytes(mDirectory.Path("secret.png")), "secret");

    // A whole folder that is a link is none.
    fs::rename(mFolder.GetPath(), ToPath(mDirectory.Path("elsewhere")));
    fs::create_directory_symlink(ToPath(mDirectory.Path("elsewhere")), mFolder.GetPath());
    EXPECT_FALSE(mFolder.Open("bird.png").IsOpen());
    wxString name;
    EXPECT_NE(mFolder.AddBytes("jay", "jay.png", name), 0);
    MediaListing listing;
    EXPECT_NE(mFolder.List({}, listing), 0);
}

TEST_F(MediaFolderTest, UnusedFilesWaitAndComeBackWhenACardNamesThem) {
    constexpr int64_t kNow = 1700000000;
    constexpr int64_t kDay = 86400;
    Insert(MakeCard("tit\n[picture: tit.png]", "[sound: tit.ogg]"));
    FlashCard noted = MakeCard("a", "b");
    noted.Notes = "see\n[picture: none.png]";
    Insert(noted);
    for (const char* const name : {"tit.png", "tit.ogg", "owl.png", "jay.png"}) {
        Add(name, name);
    }
    MediaListing listing;
    std::set<wxString> used;
    ASSERT_EQ(FindUsedMedia(mDatabase, used), 0);
    ASSERT_EQ(mFolder.List(used, listing), 0);
    EXPECT_THAT(Names(listing.Used), ElementsAre("tit.ogg", "tit.png"));
    EXPECT_THAT(Names(listing.Unused), ElementsAre("jay.png", "owl.png"));
    EXPECT_THAT(listing.Missing, ElementsAre("none.png"));

    ASSERT_EQ(mFolder.SetAside(listing.Unused, kNow), 0);
    EXPECT_THAT(Everything(), ElementsAre("tit.ogg", "tit.png", "unused"));
    mFolder.BringBack({"owl.png"}, kNow + 29 * kDay);
    EXPECT_EQ(ReadBytes(PathOf("owl.png")), "owl.png");
    EXPECT_EQ(ReadBytes(PathOf("unused/jay.png")), "jay.png");
    // One that is asked for comes back by itself.
    EXPECT_TRUE(mFolder.Open("jay.png").IsOpen());
    ASSERT_EQ(mFolder.SetAside({{"jay.png", 7}}, kNow), 0);
    mFolder.BringBack({}, kNow + 31 * kDay);
    EXPECT_FALSE(mFolder.Open("jay.png").IsOpen());
}

TEST_F(MediaFolderTest, TheFolderMovesWithItsStore) {
    Add("tit", "bird.png");
    mDatabase.Close();
    const wxString other = mDirectory.Path("other.vlm");
    // A folder of a store that is gone has a file of the same name and one more.
    wxString name;
    ASSERT_EQ(MediaFolder(other).AddBytes("owl", "bird.png", name), 0);
    ASSERT_EQ(MediaFolder(other).AddBytes("jay", "jay.png", name), 0);
    ASSERT_EQ(MoveStoreFile(StorePath(), other), 0);
    EXPECT_FALSE(fs::exists(mFolder.GetPath()));
    EXPECT_EQ(ReadBytes(other + ".media/bird.png"), "tit");
    EXPECT_EQ(ReadBytes(other + ".media/unused/bird.png"), "owl");
    EXPECT_EQ(ReadBytes(other + ".media/unused/jay.png"), "jay");

    // Across file systems the files are copied.
    const TemporaryDirectory memory("/dev/shm/velomind-media");
    const wxString far = memory.Path("far.vlm");
    ASSERT_EQ(MoveStoreFile(other, far), 0);
    EXPECT_EQ(ReadBytes(far + ".media/bird.png"), "tit");
    EXPECT_EQ(ReadBytes(far + ".media/unused/jay.png"), "jay");
    EXPECT_FALSE(fs::exists(ToPath(other + ".media")));
}

TEST_F(MediaFolderTest, ARepairedStoreAndOneThatIsRestoredFromACopyHaveTheirFiles) {
    Insert(MakeCard("tit", "[picture: bird.png]"));
    Add("tit", "bird.png");
    mDatabase.Close();
    const wxString other = mDirectory.Path("other.vlm");
    const auto filesOf = [](const wxString& store) {
        std::vector<wxString> files;
        for (const auto& entry : fs::recursive_directory_iterator(MediaFolder(store).GetPath())) {
            files.push_back(entry.is_directory() ? ""
                                                 : FromPath(entry.path().filename()) + "=" +
                                                       ReadBytes(FromPath(entry.path())));
        }
        std::sort(files.begin(), files.end());
        return files;
    };
    RepairReport report;
    ASSERT_EQ(RepairStore(StorePath(), other, report), 0);
    EXPECT_EQ(report.MediaError, 0);
    EXPECT_THAT(filesOf(other), ElementsAre("bird.png=tit"));
    EXPECT_THAT(filesOf(StorePath()), ElementsAre("bird.png=tit"));

    // What the store had under the name waits, and what both have is there once.
    wxString name;
    fs::remove(MediaFolder(other).GetPath() / "bird.png");
    ASSERT_EQ(MediaFolder(other).AddBytes("owl", "bird.png", name), 0);
    ASSERT_EQ(MediaFolder(other).AddBytes("jay", "jay.png", name), 0);
    Add("jay", "jay.png");
    // Another process was killed while it copied.
    fs::create_directories(ToPath(StorePath() + ".media-copy-99999999"));
    ASSERT_EQ(RestoreBackup(other, StorePath()), 0);
    EXPECT_FALSE(fs::exists(ToPath(StorePath() + ".media-copy-99999999")));
    EXPECT_THAT(filesOf(StorePath()),
                ElementsAre("", "bird.png=owl", "bird.png=tit", "jay.png=jay"));
    EXPECT_EQ(ReadBytes(PathOf("unused/bird.png")), "tit");

    // A repair goes on without them, and tells where they are.
    fs::remove(ToPath(other));
    WriteBytes(other + ".media-copy-" + std::to_string(::getpid()), "in the way");
    ASSERT_EQ(RepairStore(StorePath(), other, report), 0);
    EXPECT_EQ(report.MediaError, EEXIST);
    EXPECT_TRUE(DescribeRepair(report).Contains(StorePath() + ".media")) << DescribeRepair(report);
    EXPECT_THAT(filesOf(other), ElementsAre("bird.png=owl", "jay.png=jay"));
}

}  // namespace
