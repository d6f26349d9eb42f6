#include "sync/MediaExchange.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
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
    // Somebody who sees the right picture changes the text beside it.
    void Edit(size_t which, size_t number) {
        std::vector<FlashCard> cards;
        int64_t row = 0;
        Database& store = mComputers[which]->Store;
        store.VisitCardsAfter(row, INT32_MAX, [&cards](const CardRow& each) {
            FlashCard card;
            each.Read(card);
            cards.push_back(card);
        });
        Texts seen = Pictures(which);
        FlashCard card = cards.empty() ? FlashCard() : cards[number % cards.size()];
        const std::string front = ToUtf8(card.Front);
        if (!cards.empty() && seen[front] == mExpected[front]) {
            card.Back = wxString::Format("edit %i ", ++mSeconds) + card.Back;
            store.UpdateFlashCard(card);
        }
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
    const char* const seeds = std::getenv("VELOMIND_SEEDS");
    for (int seed = 1; seed <= (seeds == nullptr ? 6 : std::atoi(seeds)); ++seed) {
        SCOPED_TRACE(seed);
        Begin();
        std::mt19937 random(static_cast<uint32_t>(seed));
        for (int step = 0; step < 60; ++step) {
            const size_t which = random() % kComputers;
            const auto kind = random() % 5;
            if (kind == 0) {
                // Two computers often have one name.
                Add(which, "bird" + std::to_string(random() % 6) + ".png",
                    std::to_string(step) + std::string(random() % 200000, '.'));
            } else if (kind == 1) {
                Edit(which, random());
            } else if (kind == 2) {
                mpCarrier->Carry(random, 0.5);
            } else {
                Exchange(which);
            }
        }
        Settle();
        ExpectPictures();
    }
}

TEST_F(MediaExchangeTest, AFileThatWasChangedInItsPlaceIsChangedEverywhere) {
    Add(1, "bird.png", "first");
    Settle();
    Write(0, "bird.png", "second");
    Exchange(0);
    // A change of a change, and one that was taken back.
    for (const auto& [which, bytes] :
         {std::make_pair(size_t{2}, "third"), std::make_pair(size_t{1}, "first")}) {
        Settle();
        Write(which, "bird.png", bytes);
        mExpected["front 1"] = bytes;
        Settle();
        ExpectPictures();
        EXPECT_EQ(MediaFiles(0).size(), 1U);
    }
    // Two change it at once: the name stays with one of them, and nothing is lost.
    Write(1, "bird.png", "of one");
    Write(2, "bird.png", "of two");
    Settle();
    const std::string stands = Pictures(0)["front 1"];
    EXPECT_TRUE(stands == "of one" || stands == "of two") << stands;
    mExpected["front 1"] = stands;
    ExpectPictures();
    const std::string lost = stands == "of one" ? "of two" : "of one";
    ContentHash sum;
    sum.Add(lost);
    const fs::path kept = mComputers[stands == "of one" ? 2 : 1]->Media() /
                          ("bird-" + sum.Get().substr(0, 8) + ".png");
    EXPECT_EQ(ReadBytes(FromPath(kept)), lost);
}

TEST_F(MediaExchangeTest, AFileIsInTheFolderAsLongAsACardNamesIt) {
    const CardUuid id = Add(0, "bird.png", "bytes");
    WriteBytes(FromPath(mComputers[0]->Media() / "unused.png"), "nobody's");
    Settle();
    ASSERT_EQ(MediaFiles(2).size(), 1U);
    EXPECT_FALSE(fs::exists(mComputers[1]->Media() / "unused.png"));
    // Nothing is done or written twice.
    const std::string beside = ReadBytes(mComputers[1]->StorePath() + ".exchange");
    EXPECT_FALSE(Exchange(1).HasChanged);
    EXPECT_TRUE(ReadBytes(mComputers[1]->StorePath() + ".exchange") == beside);
    // The folder forgets it, and a computer loses its own.
    fs::remove(mComputers[0]->Folder() / MediaFiles(0).front());
    fs::remove(mComputers[2]->Media() / "bird.png");
    Settle();
    ExpectPictures();
    EXPECT_EQ(MediaFiles(1).size(), 1U);
    std::vector<int64_t> rows;
    mComputers[1]->Store.SelectRowIdById(id, rows);
    mComputers[1]->Store.CardsDeleteByRowId(rows);
    Settle();
    EXPECT_EQ(MediaFiles(0), std::vector<std::string>());
    EXPECT_TRUE(fs::exists(mComputers[2]->Media() / "bird.png"));
}

TEST_F(MediaExchangeTest, WhatAStrangerPutsIntoTheFolderIsTakenOnlyIfItIsWhatItSays) {
    const auto sumOf = [](const std::string& bytes) {
        ContentHash sum;
        sum.Add(bytes);
        return sum.Get();
    };
    const auto fileOf = [](const std::string& name, const std::string& bytes,
                           const std::string& content) {
        ExchangeHeader header;
        header.Machine = 0x77;
        header.Number = 1;
        header.Media = {name, static_cast<int64_t>(bytes.size()), content, 1, {}};
        std::string file;
        ExchangeWriter writer(header, SinkTo(file));
        writer.AddBytes(bytes);
        EXPECT_EQ(writer.Finish(), 0);
        return file;
    };
    const auto with = [](std::string text, const std::string& from, const std::string& to) {
        const size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos);
        return text.replace(at, from.size(), to);
    };
    const std::string good = fileOf("bird.png", "feathers", sumOf("feathers"));
    struct Case {
        const char* Title;
        std::string Bytes;
        // Begins what is told; null for a file that is taken.
        const char* Told;
    };
    const Case cases[] = {
        {"a path", fileOf("../bird.png", "feathers", sumOf("feathers")), ""},
        {"a hidden name", fileOf(".bird.png", "feathers", sumOf("feathers")), ""},
        {"a name of a megabyte", with(good, "bird.png", std::string(1 << 20, 'b')), "The file"},
        {"too short for what it says", with(good, "bytes\t8", "bytes\t9"), "The file"},
        {"too long for what it says", with(good, "bytes\t8", "bytes\t7"), "The file"},
        {"of a huge length", with(good, "bytes\t8", "bytes\t9223372036854775807"), "The file"},
        {"of a negative length", with(good, "bytes\t8", "bytes\t-8"), "The file"},
        {"without a sum", with(good, "content\t", "contents\t"), "The file"},
        {"with other bytes", with(good, "feathers", "feathery"), "The file"},
        {"with another sum", with(good, sumOf("feathers"), sumOf("feathery")), "The file"},
        {"with a false sum", fileOf("bird.png", "feathers", sumOf("feathery")), "The file"},
        {"of the last edition", with(good, "edition\t1", "edition\t9223372036854775807"),
         "The file"},
        {"with more after it", good + "x", ""},
        {"cut", good.substr(0, good.size() - 30), ""},
        {"empty", fileOf("bird.png", "", sumOf("")), ""},
        {"good", good, nullptr}};
    Exchange(0);
    mComputers[0]->Store.InsertFlashCard(
        MakeCard("bird", "[picture: bird.png]\n[picture: ../bird.png]\n[sound: .bird.png]"));
    const fs::path folder = mComputers[0]->Folder();
    WriteBytes(mDirectory.Path("secret"), good);
    fs::create_symlink(ToPath(mDirectory.Path("secret")), folder / "velomind-link.media");
    ASSERT_EQ(::mkfifo((folder / "velomind-pipe.media").c_str(), 0600), 0);
    fs::create_directory(folder / "velomind-folder.media");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Title);
        const wxString path = FromPath(folder / "velomind-0000000000000077-0000000001.media");
        WriteBytes(path, c.Bytes);
        for (int round = 0; round < 3; ++round) {
            const ExchangeReport report = Exchange(0);
            EXPECT_TRUE(report.Message.StartsWith(c.Told == nullptr ? "" : c.Told))
                << report.Message;
        }
        EXPECT_EQ(ReadBytes(path), c.Bytes);
        EXPECT_EQ(fs::exists(mComputers[0]->Media() / "bird.png"), c.Told == nullptr);
        EXPECT_FALSE(fs::exists(mComputers[0]->Place / "bird.png"));
    }
    // A name and a kind of the carrier's own do no harm, and an older content takes nothing back.
    fs::rename(folder / "velomind-0000000000000077-0000000001.media", folder / "holiday.jpg");
    WriteBytes(FromPath(folder / "copy 2.media"), good);
    EXPECT_EQ(Exchange(0).Message, "");
    EXPECT_EQ(ReadBytes(FromPath(mComputers[0]->Media() / "bird.png")), "feathers");
}

TEST_F(MediaExchangeTest, WhatCannotBeWrittenIsToldAndComesNextTime) {
    Add(0, "bird.png", std::string(3 << 20, 'b'));
    {
        const FullDisk full(1 << 20);
        EXPECT_TRUE(Exchange(0).Message.StartsWith("The file \"bird.png\" could not be sent: "));
    }
    EXPECT_EQ(MediaFiles(0).size(), 0U);
    Exchange(0);
    mpCarrier->CarryAll();
    {
        const FullDisk full(1 << 20);
        EXPECT_TRUE(Exchange(1).Message.StartsWith("The file \"bird.png\" could not be taken: "));
    }
    EXPECT_TRUE(fs::is_empty(mComputers[1]->Media()));
    // More than is exchanged; a hole weighs nothing on the disk.
    Add(0, "film.png", "x");
    fs::resize_file(mComputers[0]->Media() / "film.png", kMostMediaBytes + 1);
    EXPECT_EQ(Exchange(0).Message,
              "The file \"film.png\" is larger than 100 MB and is not exchanged.");
    mExpected["front 2"] = "none of film.png";
    fs::remove(mComputers[0]->Media() / "film.png");
    Settle();
    ExpectPictures();
}

}  // namespace
