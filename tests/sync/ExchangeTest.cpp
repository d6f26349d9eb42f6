#include "sync/Exchange.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <set>

#include "base/Unicode.h"
#include "files/StoreFiles.h"
#include "reviews/EditNotes.h"
#include "reviews/ReviewLog.h"
#include "reviews/ScheduleEvents.h"
#include "support/StoreFixture.h"

namespace {

namespace fs = std::filesystem;

constexpr int64_t kMonday = 1780000000;
constexpr int64_t kDay = 86400;

// A computer with a store of its own.
struct Computer {
    Computer(const TestDirectory& directory, const char* name) : Name(name) {
        const wxString place = directory.Path(name);
        fs::create_directories(ToUtf8(place));
        Path = place + "/Words.vlm";
        Open();
        Store.CategoryInsert("French");
    }
    void Open() { Store.Open(Path, Wait); }

    FlashCard Add(const wxString& front, int32_t category = 0) {
        FlashCard card = MakeCard(front, "back of " + front, category);
        Store.InsertFlashCard(card);
        return card;
    }
    FlashCard Get(const CardUuid& id) {
        std::list<FlashCard> found;
        Store.SelectCardById(id, found);
        return found.empty() ? FlashCard() : found.front();
    }
    void Note(const CardUuid& id, EditedField field, int64_t time) {
        EditNote note;
        note.Time = time * 1000;
        note.CardId = id;
        note.Fields.set(static_cast<size_t>(field));
        AddEditNotes(Path, {note});
    }
    void SetFront(const CardUuid& id, const wxString& front, int64_t time) {
        FlashCard card = Get(id);
        card.Front = front;
        Store.UpdateFlashCard(card);
        Note(id, EditedField::kFront, time);
    }
    // A score as study gives it: to the card, and then to the log.
    void Score(const CardUuid& id, int64_t time) {
        FlashCard card = Get(id);
        ReviewRecord record;
        record.Time = time;
        record.CardId = id;
        record.Score = 4;
        record.NewInterval = 14400;
        record.NewDifficulty = card.Forward.Difficulty;
        const ScheduleEvent event = MakeReviewEvent(record, card.Forward, 0, 0);
        card.Forward = event.After;
        Store.UpdateFlashCard(card);
        WriteBytes(ReviewLogPath(Path), ReadBytes(ReviewLogPath(Path)) + FormatEvent(event));
    }
    std::vector<int64_t> RowsOf(const std::vector<CardUuid>& ids) {
        std::vector<int64_t> rows;
        for (const CardUuid& id : ids) {
            Store.SelectRowIdById(id, rows);
        }
        return rows;
    }
    wxString CategoryOf(const CardUuid& id) {
        std::list<Category> found;
        Store.SelectCategoryById(Get(id).CategoryId, found);
        return found.empty() ? wxString("none") : found.front().Name;
    }
    // Those in the log, without what was set by hand.
    int CountReviews() const {
        const std::atomic<bool> goesOn{false};
        int count = 0;
        VisitEvents(
            ReviewLogPath(Path), 0,
            [&count](const ScheduleEvent& event) { count += event.IsSet ? 0 : 1; }, goesOn);
        return count;
    }
    int Count() {
        int32_t count = 0;
        Store.CountAllCards(count);
        return count;
    }

    std::string Name;
    wxString Path;
    RecordingReport Report;
    SilentUpgradeWait Wait;
    Database Store{Report};
};

// Cancels what asks for the time so often.
class ImpatientClock : public FakeClock {
  public:
    ImpatientClock(int64_t seconds, int calls) : FakeClock(seconds), mCalls(calls) {}
    wxDateTime Now() const override {
        mIsCancelled = mIsCancelled || mCalls-- == 0;
        return FakeClock::Now();
    }
    mutable std::atomic<bool> mIsCancelled{false};

  private:
    mutable int mCalls;
};

class ExchangeTest : public ::testing::Test {
  protected:
    ExchangeTest() { fs::create_directories(ToUtf8(Folder())); }
    wxString Folder() const { return mDirectory.Path("folder"); }

    ExchangeReport Exchange(Computer& computer, int64_t time,
                            ExchangeAnswer answer = ExchangeAnswer::kAsk,
                            std::optional<bool> joins = true) {
        const FakeClock clock(time);
        ExchangeOptions options;
        options.StorePath = computer.Path;
        options.Folder = Folder();
        options.Name = computer.Name;
        options.Time = &clock;
        options.Rules = mRules;
        options.Answer = answer;
        options.JoinsEqualCards = joins;
        return RunExchange(options);
    }
    // Both know the same then.
    void Meet(int64_t time) {
        for (Computer* const each : {&mLaptop, &mDesktop, &mLaptop}) {
            ASSERT_EQ(Exchange(*each, time).End, ExchangeEnd::kDone);
        }
    }
    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(ToUtf8(Folder()))) {
            names.insert(entry.path().filename());
        }
        return names;
    }

    TestDirectory mDirectory;
    Computer mLaptop{mDirectory, "laptop"};
    Computer mDesktop{mDirectory, "desktop"};
    ExchangeRules mRules;
};

}  // namespace

TEST_F(ExchangeTest, AnEditOfMondayThatIsSentOnFridayLosesAgainstWednesdays) {
    for (const bool knows : {true, false}) {
        mRules.KnowsTimesOfEdits = knows;
        const CardUuid id = mLaptop.Add(knows ? "one" : "two").CardId;
        Meet(kMonday);
        mLaptop.SetFront(id, "of Monday", kMonday + 60);
        mDesktop.SetFront(id, "of Wednesday", kMonday + 2 * kDay);
        Exchange(mDesktop, kMonday + 3 * kDay);
        Exchange(mLaptop, kMonday + 4 * kDay);
        Exchange(mDesktop, kMonday + 4 * kDay);
        const wxString stands = knows ? "of Wednesday" : "of Monday";
        EXPECT_EQ(mLaptop.Get(id).Front, stands);
        EXPECT_EQ(mDesktop.Get(id).Front, stands);
        for (const Computer* const each : {&mLaptop, &mDesktop}) {
            const std::vector<LostText> lost = ReadLostTexts(each->Path);
            ASSERT_FALSE(lost.empty());
            EXPECT_EQ(lost.back().Value, knows ? "of Monday" : "of Wednesday");
        }
        // What one has looked at is looked at.
        ASSERT_EQ(CloseLostText(mLaptop.Path, ReadLostTexts(mLaptop.Path).back()), 0);
        Exchange(mLaptop, kMonday + 5 * kDay);
        Exchange(mDesktop, kMonday + 5 * kDay);
        EXPECT_TRUE(ReadLostTexts(mDesktop.Path).empty());
        EXPECT_TRUE(ReadLostTexts(mLaptop.Path).empty());
    }
}

TEST_F(ExchangeTest, AnIdThatIsUsedAgainIsNoRename) {
    for (const bool names : {true, false}) {
        mRules.NamesCategories = names;
        const wxString french = names ? "French" : "Greek";
        int32_t id = 0;
        mLaptop.Store.FindOrInsertCategory(french, id);
        mLaptop.Add("with " + french, id);
        Meet(kMonday);
        std::list<Category> found;
        mDesktop.Store.SelectCategoryByName(french, found);
        const CardUuid late = mDesktop.Add("late " + french, found.front().Id).CardId;
        int32_t other = 0;
        mLaptop.Store.FindOrInsertCategory("Other", other);
        mLaptop.Store.UpdateFlashCardCategory(id, other);
        mLaptop.Store.DeleteCategory(id);
        mLaptop.Store.CategoryBringBack({id, "Cooking " + french});
        Meet(kMonday + kDay);
        EXPECT_EQ(mDesktop.CategoryOf(late), names ? french : "Cooking " + french);
        EXPECT_EQ(mLaptop.CategoryOf(late), mDesktop.CategoryOf(late));
    }
}

TEST_F(ExchangeTest, WhatTheFolderForgetsIsSentAgain) {
    for (const bool again : {true, false}) {
        mRules.SendsAgain = again;
        mLaptop.Add("first");
        Meet(kMonday);
        const CardUuid id = mLaptop.Add("second").CardId;
        const std::set<std::string> before = Files();
        Exchange(mLaptop, kMonday + 60);
        for (const std::string& name : Files()) {
            if (before.count(name) == 0) {
                fs::remove(ToUtf8(Folder()) + "/" + name);
            }
        }
        Exchange(mLaptop, kMonday + 120);
        Exchange(mDesktop, kMonday + 180);
        EXPECT_EQ(mDesktop.Get(id).Front, again ? "second" : "");
    }
}

TEST_F(ExchangeTest, ASecondOneWithNothingNewTouchesNothing) {
    mLaptop.Add("one");
    Meet(kMonday);
    Meet(kMonday + 60);
    const std::string store = ReadBytes(mLaptop.Path);
    const std::set<std::string> files = Files();
    const ExchangeReport report = Exchange(mLaptop, kMonday + 120);
    EXPECT_EQ(report.End, ExchangeEnd::kDone);
    EXPECT_EQ(report.Sent + report.Received, 0);
    EXPECT_EQ(ReadBytes(mLaptop.Path), store);
    EXPECT_EQ(Files(), files);
    ASSERT_EQ(report.Machines.size(), 1U);
    EXPECT_EQ(report.Machines[0].Name, "desktop");
}

TEST_F(ExchangeTest, EqualCardsOfBothBecomeOneOnlyIfTheUserWants) {
    for (const bool joins : {true, false}) {
        Computer one(mDirectory, joins ? "one" : "three");
        Computer two(mDirectory, joins ? "two" : "four");
        fs::remove_all(ToUtf8(Folder()));
        fs::create_directories(ToUtf8(Folder()));
        one.Add("same");
        one.Add("same");
        two.Add("same");
        Exchange(one, kMonday);
        const ExchangeReport asked = Exchange(two, kMonday, ExchangeAnswer::kAsk, std::nullopt);
        EXPECT_EQ(asked.End, ExchangeEnd::kAsks);
        EXPECT_EQ(asked.Question, ExchangeQuestion::kEqualCards);
        EXPECT_EQ(asked.Asked, 1);
        EXPECT_EQ(two.Count(), 1);
        Exchange(two, kMonday, ExchangeAnswer::kAsk, joins);
        // The other one is not asked again.
        EXPECT_EQ(Exchange(one, kMonday, ExchangeAnswer::kAsk, std::nullopt).End,
                  ExchangeEnd::kDone);
        // Doubles of one store stay.
        EXPECT_EQ(one.Count(), joins ? 2 : 3);
        EXPECT_EQ(two.Count(), joins ? 2 : 3);
    }
}

TEST_F(ExchangeTest, AStoreThatHasGoneBackSendsNothingUntilItIsAnswered) {
    const CardUuid id = mLaptop.Add("old").CardId;
    Meet(kMonday);
    const std::string old = ReadBytes(mLaptop.Path);
    const std::string oldLog = ReadBytes(ReviewLogPath(mLaptop.Path));
    for (const ExchangeAnswer answer : {ExchangeAnswer::kTakeNewer, ExchangeAnswer::kTakeMine}) {
        mLaptop.SetFront(id, "new", kMonday + 60);
        mLaptop.Add("more");
        mLaptop.Score(id, kMonday + 30);
        Exchange(mLaptop, kMonday + 60);
        Exchange(mDesktop, kMonday + 60);
        mDesktop.Score(id, kMonday + 40);
        Meet(kMonday + 60);
        mLaptop.Store.Close();
        WriteBytes(mLaptop.Path, old);
        // The program restores the log together with the store.
        WriteBytes(ReviewLogPath(mLaptop.Path), oldLog);
        mLaptop.Open();
        const std::set<std::string> files = Files();
        const ExchangeReport asked = Exchange(mLaptop, kMonday + kDay);
        EXPECT_EQ(asked.Question, ExchangeQuestion::kGoneBack);
        EXPECT_EQ(Files(), files);
        EXPECT_EQ(Exchange(mLaptop, kMonday + kDay, answer).End, ExchangeEnd::kDone);
        Meet(kMonday + kDay + 60);
        const bool isNew = answer == ExchangeAnswer::kTakeNewer;
        EXPECT_EQ(mLaptop.Get(id).Front, isNew ? "new" : "old");
        EXPECT_EQ(mDesktop.Get(id).Front, isNew ? "new" : "old");
        EXPECT_EQ(mDesktop.Count(), isNew ? 2 : 1);
        for (Computer* const each : {&mLaptop, &mDesktop}) {
            EXPECT_EQ(each->Get(id).Forward.Introduced, isNew);
            EXPECT_EQ(each->CountReviews(), isNew ? 2 : 4) << "no review is lost";
        }
    }
}

TEST_F(ExchangeTest, ManyDeletionsAreAskedAbout) {
    std::vector<CardUuid> ids;
    for (int i = 0; i < 100; ++i) {
        const FlashCard card = mLaptop.Add(wxString::Format("card %i", i));
        if (i < 20) {
            ids.push_back(card.CardId);
        }
    }
    std::vector<int64_t> rows = mLaptop.RowsOf(ids);
    Meet(kMonday);
    ExchangeReport asked;
    for (const ExchangeAnswer answer : {ExchangeAnswer::kTakeNewer, ExchangeAnswer::kAsk}) {
        mLaptop.Store.CardsDeleteByRowId(rows);
        for (const CardUuid& id : ids) {
            mLaptop.Note(id, EditedField::kDeletion, kMonday + 30);
        }
        asked = Exchange(mLaptop, kMonday + 60);
        EXPECT_EQ(asked.Question, ExchangeQuestion::kManyLost);
        EXPECT_EQ(asked.Asked, 20);
        EXPECT_TRUE(asked.IsLostHere);
        Exchange(mLaptop, kMonday + 60, answer);
        EXPECT_EQ(mLaptop.Count(), answer == ExchangeAnswer::kAsk ? 80 : 100);
        rows = mLaptop.RowsOf(ids);
    }
    EXPECT_EQ(Exchange(mLaptop, kMonday + 60, ExchangeAnswer::kTakeMine).End, ExchangeEnd::kDone);
    // The one that they come to is asked, too.
    asked = Exchange(mDesktop, kMonday + 60);
    EXPECT_EQ(asked.Question, ExchangeQuestion::kManyLost);
    EXPECT_FALSE(asked.IsLostHere);
    EXPECT_EQ(mDesktop.Count(), 100);
    // Answered for all computers, the cards stay, and are back where they were deleted.
    Exchange(mDesktop, kMonday + 60, ExchangeAnswer::kTakeMine);
    Exchange(mLaptop, kMonday + 70);
    EXPECT_EQ(mDesktop.Count(), 100);
    EXPECT_EQ(mLaptop.Count(), 100);
    mLaptop.Store.CardsDeleteByRowId(mLaptop.RowsOf(ids));
    Exchange(mLaptop, kMonday + 80, ExchangeAnswer::kTakeMine);
    Exchange(mDesktop, kMonday + 80, ExchangeAnswer::kTakeNewer);
    EXPECT_EQ(mDesktop.Count(), 80);
}

TEST_F(ExchangeTest, AFolderThatIsGoneInTheMiddleHoldsNothingUp) {
    const CardUuid id = mLaptop.Add("one").CardId;
    Meet(kMonday);
    mDesktop.SetFront(id, "two", kMonday + 60);
    Exchange(mDesktop, kMonday + 120);
    const FakeClock clock(kMonday + 180);
    ExchangeOptions options;
    options.StorePath = mLaptop.Path;
    options.Folder = Folder();
    options.Time = &clock;
    // Nothing is locked yet.
    options.BackUp = [&] { return fs::remove_all(ToUtf8(Folder())) > 0 ? 0 : EIO; };
    EXPECT_EQ(RunExchange(options).End, ExchangeEnd::kNoFolder);
    EXPECT_EQ(mLaptop.Get(id).Front, "two");
}

TEST_F(ExchangeTest, AFileThatCannotBeTakenIsTold) {
    mLaptop.Add("one");
    Meet(kMonday);
    const wxString damaged = Folder() + "/velomind-00000000000000aa-0000000001.changes";
    WriteBytes(damaged,
               "velomind-exchange\t1\nkind\tchanges\nmachine\t00000000000000aa\n"
               "number\t1\ntime\t5\n\nc\tx\nend\t1\t0000000000000000\n");
    WriteBytes(Folder() + "/other.changes", "velomind-exchange\t9\n");
    const ExchangeReport report = Exchange(mDesktop, kMonday + 60);
    EXPECT_EQ(report.End, ExchangeEnd::kDone);
    EXPECT_NE(report.Message.find("00000000000000aa"), wxString::npos) << report.Message;
    EXPECT_NE(report.Message.find("other.changes"), wxString::npos) << report.Message;
    EXPECT_TRUE(fs::exists(ToUtf8(damaged)));
    fs::remove_all(ToUtf8(Folder()));
    EXPECT_EQ(Exchange(mDesktop, kMonday + 120).End, ExchangeEnd::kNoFolder);
}

TEST_F(ExchangeTest, WhatIsCutShortAnywhereHasNotHappened) {
    const CardUuid id = mLaptop.Add("one").CardId;
    const CardSchedule from = mLaptop.Get(id).Forward;
    // A log of many years is read in pieces.
    std::string log(size_t{2} << 20, '#');
    for (size_t i = 99; i < log.size(); i += 100) {
        log[i] = '\n';
    }
    WriteBytes(ReviewLogPath(mLaptop.Path), log + "#\n");
    bool wasCancelled = true;
    for (int calls = -1; wasCancelled; ++calls) {
        const int64_t time = kMonday + (calls + 2) * kDay;
        FlashCard card = mLaptop.Get(id);
        card.Forward.Introduced = true;
        card.Forward.LastReview = wxDateTime(static_cast<time_t>(time));
        card.Forward.ReviewInterval = static_cast<float>(calls + 2) * kDay;
        mLaptop.Store.UpdateFlashCard(card);
        // It was given before the card had what came before, and is worked out from that.
        ReviewRecord review;
        review.CardId = id;
        review.Time = time;
        review.NewInterval = card.Forward.ReviewInterval;
        review.NewDifficulty = card.Forward.Difficulty;
        const wxString path = ReviewLogPath(mLaptop.Path);
        WriteBytes(path, ReadBytes(path) + FormatEvent(MakeReviewEvent(review, from, 0, 0)));
        const ImpatientClock clock(time + 60, calls);
        ExchangeOptions options;
        options.StorePath = mLaptop.Path;
        options.Folder = Folder();
        options.Name = mLaptop.Name;
        options.Time = &clock;
        options.IsCancelled = &clock.mIsCancelled;
        const ExchangeReport report = RunExchange(options);
        EXPECT_EQ(report.End, ExchangeEnd::kDone) << calls;
        EXPECT_EQ(report.Message, "") << calls;
        wasCancelled = clock.mIsCancelled || calls < 0;
        Meet(time + 120);
        for (Computer* const each : {&mLaptop, &mDesktop}) {
            EXPECT_EQ(ReadBytes(ReviewLogPath(each->Path)).find("#="), std::string::npos) << calls;
        }
    }
}

// The full disk is told once, though several files are to be written.
TEST_F(ExchangeTest, AFolderThatTakesNothingIsToldOnce) {
    mLaptop.Add("one");
    Meet(kMonday);
    for (const std::string& name : Files()) {
        const size_t machine = name.find('-') + 1;
        fs::create_directories(ToUtf8(Folder()) + "/.velomind-" + name.substr(machine, 16) +
                               ".tmp/x");
        fs::remove(ToUtf8(Folder()) + "/" + name);
    }
    const wxString message = Exchange(mLaptop, kMonday + 60).Message;
    EXPECT_EQ(message.find("cannot be used"), message.rfind("cannot be used")) << message;
    EXPECT_NE(message.find("cannot be used"), wxString::npos) << message;
}

TEST_F(ExchangeTest, AStoreThatIsMovedOrReachedByALinkStaysTheSameComputer) {
    const CardUuid ids[] = {mLaptop.Add("one").CardId, mLaptop.Add("two").CardId};
    Meet(kMonday);
    const wxString former = mLaptop.Path;
    const wxString place = mDirectory.Path("moved");
    fs::create_directories(ToUtf8(place));
    fs::create_directory_symlink(ToUtf8(place), ToUtf8(mDirectory.Path("link")));
    mLaptop.Store.Close();
    mLaptop.Path = place + "/Words.vlm";
    ASSERT_EQ(MoveStoreFile(former, mLaptop.Path), 0);
    FollowMovedExchange(former, mLaptop.Path);
    EXPECT_EQ(Exchange(mLaptop, kMonday + 60).Machines.size(), 1U);
    mLaptop.Path = mDirectory.Path("link") + "/Words.vlm";
    EXPECT_EQ(Exchange(mLaptop, kMonday + 120).Machines.size(), 1U);
    mLaptop.Open();
    for (const CardUuid& id : ids) {
        mLaptop.Score(id, kMonday + 130);
    }
    EXPECT_EQ(Exchange(mLaptop, kMonday + 180).Sent, 4) << "each card and each review once";
}
