#include "study/LearningProgress.h"

#include "support/GuiTest.h"

namespace {

// Cards of one hour ago whose interval has passed or not, new ones and excluded ones.
TEST_F(GuiStoreTest, EachDirectionOfTheLearningProgressAddsUpToTheTotal) {
    const FakeClock clock;
    const auto insert = [&](float forward, float reverse, bool excluded, int32_t category) {
        FlashCard card = MakeCard("front", "back", category);
        card.ForwardX = excluded;
        for (CardSchedule* const schedule : {&card.Forward, &card.Reverse}) {
            schedule->ReviewInterval = schedule == &card.Forward ? forward : reverse;
            schedule->Introduced = schedule->ReviewInterval > 0;
            schedule->LastReview = clock.Now() - wxTimeSpan::Hour();
        }
        Insert(card);
    };
    const auto make = [&]() -> LearningProgress& {
        return *new LearningProgress({mDatabase, clock, {0, "Default"}}, nullptr, 10039,
                                     "Progress");
    };
    const auto showsCategory = [](wxWindow& dialog) {
        return wxWindow::FindWindowByLabel("Category: Default", &dialog)->IsShown();
    };
    mDatabase.CategoryInsert("Other");
    insert(0, 0, false, 0);
    EXPECT_FALSE(showsCategory(make())) << "a single card says little of its category";
    insert(60, 0, false, 0);
    insert(120, 0, false, 0);
    insert(7200, 0, false, 0);
    insert(0, 60, true, 0);
    insert(60, 60, false, 1);

    LearningProgress& dialog = make();
    wxString numbers;
    // The total, then ready, memorized, waiting and excluded ones of both directions.
    const auto& front = LearningProgress::kForwardIds;
    const auto& back = LearningProgress::kReverseIds;
    for (const int id :
         {int{LearningProgress::kTotalId}, front.Ready, front.Memorized, front.Waiting,
          front.Excluded, back.Ready, back.Memorized, back.Waiting, back.Excluded}) {
        numbers += FindById(dialog, id)->GetLabel() + " ";
    }
    EXPECT_EQ(numbers, "5 2 1 1 1 1 0 4 0 ");
    EXPECT_TRUE(showsCategory(dialog));
    // All categories: ready, due within a day and new ones, each in both directions.
    insert(3600 * 25, 3600 * 24 + 3599, false, 1);
    const auto showsOutlook = [&] {
        LearningProgress& other = make();
        wxString text;
        for (int id = LearningProgress::kOutlookId; id <= LearningProgress::kNextDueId; ++id) {
            text += FindById(other, id)->GetLabel() + " ";
        }
        return text;
    };
    EXPECT_EQ(showsOutlook(), "3 2 1 1 1 4 Next card due now ");
    ASSERT_EQ(mDatabase.Execute("UPDATE Cards SET ForwardX=1, ReverseX=1 WHERE"
                                " NextReview<1700000000 OR RNextReview<1700000000"),
              0);
    EXPECT_EQ(showsOutlook(), "0 0 0 1 0 0 Next card due in 24 hours ");
    ASSERT_EQ(mDatabase.Execute("DELETE FROM Cards"), 0);
    EXPECT_EQ(showsOutlook(), "0 0 0 0 0 0 No card has been scored yet ");
}

}  // namespace
