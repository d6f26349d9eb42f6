// An import on its worker thread, with the main thread answering its questions.

#include "exchange/ImportJob.h"

#include <chrono>
#include <deque>
#include <optional>

#include "exchange/ImportFixture.h"

namespace {

// Gives prepared answers, and then cancels.
struct FakeQuestions : ImportQuestions {
    CategoryAnswer AskNewCategories(wxWindow*, const std::vector<wxString>& names) override {
        for (const wxString& name : names) {
            Asked += name.utf8_string() + " ";
        }
        Asked += "? ";
        Categories.push_back(CategoryAnswer::kCancel);
        const CategoryAnswer answer = Categories.front();
        Categories.pop_front();
        return answer;
    }
    CategoryAnswer AskLongField(wxWindow*, int32_t line, int32_t lines) override {
        return AskNewCategories(nullptr, {wxString::Format("%i:%i", line, lines)});
    }
    MergeAnswer AskMerge(wxWindow*, const FlashCard& stored, const FlashCard& imported,
                         uint32_t mask) override {
        ++Merges;
        return Merge ? Merge(stored, imported, mask) : MergeAnswer();
    }

    std::deque<CategoryAnswer> Categories;
    std::function<MergeAnswer(const FlashCard&, const FlashCard&, uint32_t)> Merge;
    std::string Asked;
    int Merges = 0;
};

struct ImportOnAThread : ImportFixture {
    // Waits for the condition, and ticks meanwhile as the progress window does.
    bool TickUntil(ImportThread& thread, const std::function<bool()>& condition,
                   bool ticks = true) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        bool isMet = false;
        while (!(isMet = condition()) && std::chrono::steady_clock::now() < limit) {
            if (ticks) {
                thread.OnTimer(nullptr);
            }
            wxThread::Yield();
        }
        return isMet;
    }

    ImportThread& Run(const ImportInput& input, bool asks,
                      std::optional<ImportMergePolicy> policy = {}) {
        mThread = std::make_unique<ImportThread>(input, mDatabase, asks, &mTouched, mQuestions);
        ImportMergePolicy& own = mThread->GetResult().MergePolicy;
        own = policy.value_or(own);
        mThread->Start();
        EXPECT_TRUE(TickUntil(*mThread, [this] { return mThread->IsFinished(); }));
        mThread->Join();
        return *mThread;
    }

    size_t CardCount() { return std::stoul(Query("SELECT count(*) FROM Cards").front()); }

    FakeQuestions mQuestions;
    std::unique_ptr<ImportThread> mThread;
};

using Answer = ImportQuestions::CategoryAnswer;

const std::string kThreeCategories =
    "f: a\nb: b\nc: one\n\nf: c\nb: d\nc: one\n\nf: e\nb: f\n\nf: g\nb: h\nc: two\n\n"
    "f: i\nb: j\nc: three\n\nf: k\nb: l\nc: 0\n";

}  // namespace

TEST_F(ImportOnAThread, AsksOnceForAllNewCategoriesOfAFileWithoutFaults) {
    const std::string all = "one two three ? ";
    const struct {
        std::string Text;
        bool Ask;
        std::deque<Answer> Answers;
        std::string Asked;
        size_t Cards;
        ImportStatus Status;
    } cases[] = {
        {kThreeCategories, true, {}, all, 0, ImportStatus::kCancelled},
        {kThreeCategories, true, {Answer::kYes}, all, 6, ImportStatus::kFinished},
        {kThreeCategories, true, {Answer::kYesToAll}, all, 6, ImportStatus::kFinished},
        {kThreeCategories, false, {}, "", 6, ImportStatus::kFinished},
        {"f: a\nb: b\nc: 0\n", true, {}, "", 1, ImportStatus::kFinished},
        {kThreeCategories + "\nf: m\n", true, {}, "", 0, ImportStatus::kFailed},
    };
    // The store takes 0 for 00, and a record that names no category asks for none.
    mDatabase.UpdateCategory({0, "00"});
    for (const auto& row : cases) {
        mQuestions.Categories = row.Answers;
        mQuestions.Asked.clear();
        const ImportResult& result = Run(TextFile(row.Text), row.Ask).GetResult();
        EXPECT_EQ(mQuestions.Asked, row.Asked);
        EXPECT_EQ(CardCount(), row.Cards);
        EXPECT_EQ(result.Status, row.Status);
        mDatabase.Execute("DELETE FROM Cards");
        mDatabase.Execute("DELETE FROM Categories WHERE Id > 0");
    }
}

TEST_F(ImportOnAThread, ACancelEndsTheOpeningOfADeck) {
    ImportInput input = TextFile("");
    input.Format = ImportFormat::kDeck;
    std::atomic<bool> isOpening{false};
    input.MakeDeckReader = [&isOpening](Database&, const std::atomic<bool>& isCancelled,
                                        wxString&) {
        isOpening = true;
        while (!isCancelled) {
            wxThread::Yield();
        }
        return nullptr;
    };
    ImportThread thread(input, mDatabase, true, &mTouched, mQuestions);
    thread.Start();
    ASSERT_TRUE(TickUntil(thread, [&isOpening] { return isOpening.load(); }));
    thread.Cancel();
    EXPECT_EQ(thread.GetResult().Status, ImportStatus::kCancelled);
}

TEST_F(ImportOnAThread, MergesAsThePolicySays) {
    std::vector<FlashCard> cards;
    std::string text;
    for (int i = 0; i < 4; ++i) {
        cards.push_back(Insert(MakeCard(wxString::Format("f%i", i), "b")));
        text += "id: " + FormatUuid(cards.back().CardId).utf8_string() + "\n" +
                (i == 1 ? "Author: w\n\n" : "Back: new\n\n");
    }
    const auto backs = [this] { return Query("SELECT Back, Author FROM Cards ORDER BY Front"); };

    mQuestions.Merge = [](const FlashCard& stored, const FlashCard& imported, uint32_t mask) {
        EXPECT_EQ(mask, 0x9U);
        ImportQuestions::MergeAnswer answer;
        answer.IsOk = true;
        answer.Merged = imported;
        answer.Merged.Back = stored.Back + "+" + imported.Back;
        if (stored.Front == "f2") {
            answer.Further = ImportMergePolicy::kKeepDatabase;
        }
        return answer;
    };
    ImportResult& asked = Run(TextFile(text), false, ImportMergePolicy::kAsk).GetResult();
    EXPECT_EQ(asked.Status, ImportStatus::kFinished);
    EXPECT_EQ(asked.RecordsMerged, 4);
    EXPECT_EQ(mQuestions.Merges, 2);
    EXPECT_EQ(backs(), (std::vector<std::string>{"b+new|", "b|w", "b+new|", "b|"}));

    EXPECT_EQ(Run(TextFile(text), false).GetResult().RecordsMerged, 3);
    EXPECT_EQ(mQuestions.Merges, 2);
    EXPECT_EQ(backs(), (std::vector<std::string>{"new|", "b|w", "new|", "new|"}));
}

// A change of a schedule alone, too, when the user wants to be asked; a record without a change
// never.
TEST_F(ImportOnAThread, AsksBeforeAnyChange) {
    const FlashCard card = Insert(MakeCard("f", "b"));
    const std::string id = "id: " + FormatUuid(card.CardId).utf8_string() + "\n";
    mQuestions.Merge = [](const FlashCard& stored, const FlashCard&, uint32_t) {
        ImportQuestions::MergeAnswer answer;
        answer.IsOk = true;
        answer.Merged = stored;
        return answer;
    };
    for (const bool asks : {true, false}) {
        ImportInput input = TextFile(id + "Introduced: true\nLastScore: 2\n\n" + id);
        input.AskBeforeChanges = asks;
        Run(input, true);
        EXPECT_EQ(mQuestions.Merges, 1);
        EXPECT_EQ(Stored(card.CardId).Forward.Introduced, !asks);
    }
}

// Only whoever can answer is asked; others are told.
TEST_F(ImportOnAThread, AsksAboutAFieldOfManyLines) {
    for (const bool asks : {true, false}) {
        ImportInput input =
            TextFile("Wort;Meaning\nHund;dog\nKatze;\"c\na\nt\n1\n2\n3\"\nKuh;cow\n");
        GuessFormat(input, mDatabase);
        Run(input, asks);
        EXPECT_EQ(mQuestions.Asked, "3:6 ? ");
        EXPECT_EQ(CardCount(), asks ? 0 : 3) << "cancelled";
        EXPECT_EQ(mThread->GetResult().Notices.size(), asks ? 0U : 1U);
    }
}

TEST_F(ImportOnAThread, LeavesWholeCardsWhenItIsCancelledOrItsOwnerGoes) {
    // More cards than are written before anybody can press a button.
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "f: f" + std::to_string(i) + "\nb: b\nNotes: n\n\n";
    }
    {
        ImportThread thread(TextFile(text), mDatabase, false, nullptr, mQuestions);
        thread.Start();
        ASSERT_TRUE(TickUntil(thread, [this] {
            int32_t count = 0;
            return mDatabase.CountAllCards(count) == 0 && count > 20;
        }));
        thread.Cancel();
        EXPECT_EQ(thread.GetResult().Status, ImportStatus::kCancelled);
        EXPECT_EQ(CardCount(), static_cast<size_t>(thread.GetResult().RecordsInserted));
        EXPECT_EQ(Query("SELECT count(*) FROM Cards WHERE Notes<>'n'").front(), "0");
        mDatabase.Execute("DELETE FROM Cards");
    }
    {
        ImportThread thread(TextFile(text), mDatabase, false, nullptr, mQuestions);
        thread.Start();
    }
    EXPECT_LT(CardCount(), 100000U);
}

// Also with a question open that nobody will answer any more, in the moment between two passes, and
// when the worker is just about to end.
TEST_F(ImportOnAThread, EndsWhenItIsCancelledAtAnyMoment) {
    size_t cards = 0;
    for (int round = 0; round < 80; ++round) {
        const std::string number = std::to_string(round);
        const bool asks = round % 2 == 1;
        std::string text = "f: " + number;
        text += "\nb: b\n\nf: " + number;
        text += asks ? "\nb: c\nc: new\n" : "\nb: c\n";
        ImportThread thread(TextFile(text), mDatabase, true, nullptr, mQuestions);
        thread.Start();
        const auto moment =
            std::chrono::steady_clock::now() + std::chrono::microseconds(100 * round);
        ASSERT_TRUE(TickUntil(
            thread, [&] { return std::chrono::steady_clock::now() >= moment; }, !asks));
        thread.Cancel();
        EXPECT_TRUE(thread.IsFinished());
        const ImportResult& result = thread.GetResult();
        cards += static_cast<size_t>(result.RecordsInserted);
        EXPECT_EQ(CardCount(), cards);
        EXPECT_TRUE(result.Status == ImportStatus::kCancelled ||
                    (result.RecordsInserted == 2 && !asks));
    }
}
