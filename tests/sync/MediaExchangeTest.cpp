#include "sync/MediaExchange.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <random>

#include "base/Unicode.h"
#include "media/ContentHash.h"
#include "media/MediaLines.h"
#include "support/StoreFixture.h"
#include "sync/Carrier.h"
#include "sync/Exchange.h"
#include "sync/ExchangeFile.h"

// Pictures and sounds that travel between three computers, each with a folder of its own.
namespace {

namespace fs = std::filesystem;

constexpr int64_t kNow = 1780000000;
constexpr size_t kComputers = 3;

struct Computer {
    fs::path Place;
    uint64_t Identity = 0;
    RecordingReport Report;
    SilentUpgradeWait Wait;
    Database Store{Report};

    wxString StorePath() const { return FromPath(Place / "Words.vlm"); }
    fs::path Folder() const { return Place / "carried"; }
    fs::path Media() const { return Place / "Words.vlm.media"; }
};

struct MediaExchangeTest : ::testing::Test {
    using Texts = std::map<std::string, std::string>;

    static void SetUpTestSuite() {
        if (fs::is_directory("/dev/shm")) {
            ::setenv("TMPDIR", "/dev/shm", 0);
        }
    }
    MediaExchangeTest() { Begin(); }
    // New computers, which know nothing of each other.
    void Begin() {
        mComputers.clear();
        mExpected.clear();
        std::vector<fs::path> folders;
        for (size_t i = 0; i < kComputers; ++i) {
            auto computer = std::make_unique<Computer>();
            computer->Place = ToPath(mDirectory.Path(wxString::Format("%i-%i", mBegun, int(i))));
            computer->Identity = i + 1;
            fs::create_directories(computer->Folder());
            computer->Store.Open(computer->StorePath(), computer->Wait);
            computer->Store.CategoryInsert("Birds");
            folders.push_back(computer->Folder());
            mComputers.push_back(std::move(computer));
        }
        mpCarrier = std::make_unique<Carrier>(folders);
        ++mBegun;
    }
    ExchangeReport Exchange(size_t which) {
        Computer& computer = *mComputers[which];
        const FakeClock clock(kNow + ++mSeconds);
        ExchangeOptions options;
        options.StorePath = computer.StorePath();
        options.Folder = FromPath(computer.Folder());
        options.Name = "computer";
        options.Time = &clock;
        options.JoinsEqualCards = true;
        options.MakeIdentity = [&] { return computer.Identity; };
        ExchangeReport report = RunExchange(options);
        EXPECT_EQ(report.End, ExchangeEnd::kDone) << report.Message;
        return report;
    }
    // All is carried until nothing is left to do.
    void Settle() {
        for (int round = 0; round < 5; ++round) {
            for (size_t i = 0; i < kComputers; ++i) {
                mpCarrier->CarryAll();
                Exchange(i);
            }
        }
    }
    // Adds a card with a picture as the editor does: under the nearest free name.
    CardUuid Add(size_t which, const std::string& wanted, const std::string& bytes) {
        Computer& computer = *mComputers[which];
        wxString name;
        EXPECT_EQ(MediaFolder(computer.StorePath()).AddBytes(bytes, FromUtf8(wanted), name), 0);
        FlashCard card = MakeCard(wxString::Format("front %i", ++mCards),
                                  "a bird\n" + MakeMediaLine(MediaKind::kPicture, name));
        computer.Store.InsertFlashCard(card);
        mExpected[ToUtf8(card.Front)] = bytes;
        return card.CardId;
    }
    void Write(size_t which, const std::string& name, const std::string& bytes) {
        fs::create_directories(mComputers[which]->Media());
        // As many programs save: aside, and renamed.
        const fs::path aside = mComputers[which]->Place / "saved";
        WriteBytes(FromPath(aside), bytes);
        fs::rename(aside, mComputers[which]->Media() / name);
    }
    // The fronts of a computer's cards, and the bytes that their backs name.
    Texts Pictures(size_t which) {
        Texts pictures;
        int64_t row = 0;
        mComputers[which]->Store.VisitCardsAfter(row, INT32_MAX, [&](const CardRow& each) {
            FlashCard card;
            each.Read(card);
            for (const MediaLine& line : FindMediaLines(card.Back)) {
                const fs::path file = mComputers[which]->Media() / ToUtf8(line.Name);
                pictures[ToUtf8(card.Front)] =
                    fs::exists(file) ? ReadBytes(FromPath(file)) : "none of " + ToUtf8(line.Name);
            }
        });
        return pictures;
    }
    void ExpectPictures() {
        const Texts first = Pictures(0);
        EXPECT_EQ(first.size(), mExpected.size());
        for (size_t i = 0; i < kComputers; ++i) {
            for (const auto& [front, bytes] : Pictures(i)) {
                EXPECT_TRUE(bytes == mExpected[front])
                    << "computer " << i << ": " << front << ": " << bytes.substr(0, 20)
                    << " and not " << mExpected[front].substr(0, 20);
            }
            EXPECT_TRUE(Pictures(i) == first) << "computer " << i;
        }
    }
    std::vector<std::string> MediaFiles(size_t which) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(mComputers[which]->Folder())) {
            if (entry.path().extension() == ".media") {
                names.push_back(entry.path().filename());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    TestDirectory mDirectory;
    std::vector<std::unique_ptr<Computer>> mComputers;
    std::unique_ptr<Carrier> mpCarrier;
    int mBegun = 0;
    int mSeconds = 0;
    int mCards = 0;
    // The bytes that the picture of each card has, by its front.
    Texts mExpected;
};

TEST_F(MediaExchangeTest, FilesComeToAllWhateverTheFolderDoes) {
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(seed);
        Begin();
        std::mt19937 random(seed);
        for (int step = 0; step < 60; ++step) {
            const size_t which = random() % kComputers;
            const auto kind = random() % 4;
            if (kind == 0) {
                // Two computers often have one name.
                Add(which, "bird" + std::to_string(random() % 6) + ".png",
                    std::to_string(step) + std::string(random() % 200000, '.'));
            } else if (kind == 1) {
                mpCarrier->Carry(random, 0.5);
            } else {
                Exchange(which);
            }
        }
        Settle();
        ExpectPictures();
    }
}

}  // namespace
