#include "study/LearningProgress.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/GuiTest.h"

namespace {

constexpr int kTotal = 10008;
// Ready, memorized, waiting, excluded.
const std::vector<int> kForward = {10001, 10002, 10003, 10000};
const std::vector<int> kReverse = {10004, 10005, 10006, 10007};
constexpr int64_t kNow = 1700000000;

class LearningProgressTest : public GuiStoreTest {
  protected:
    using Numbers = std::vector<wxString>;

    LearningProgress& Make() {
        return *new LearningProgress(mDatabase, mClock, 0, "Default", nullptr, 10039,
                                     "Learning Progress");
    }
    static Numbers Read(wxWindow& dialog, const std::vector<int>& ids) {
        Numbers numbers;
        for (const int id : ids) {
            numbers.push_back(FindById(dialog, id)->GetLabel());
        }
        return numbers;
    }
    static bool ShowsCategory(wxWindow& dialog) {
        return wxWindow::FindWindowByLabel("Category: Default", &dialog)->IsShown();
    }
    // Scored an hour ago, and due again so many seconds after that.
    static void Introduce(CardSchedule& schedule, float interval) {
        schedule.Introduced = true;
        schedule.LastReview = wxDateTime(static_cast<time_t>(kNow - 3600));
        schedule.ReviewInterval = interval;
    }

    FakeClock mClock{kNow};
};

TEST_F(LearningProgressTest, EachDirectionAddsUpToTheTotal) {
    Insert(MakeCard("waiting", "both"));
    EXPECT_FALSE(ShowsCategory(Make())) << "a single card says little of its category";
    for (const float interval : {60.0f, 120.0f, 7200.0f}) {
        FlashCard card = MakeCard("introduced", "forward");
        Introduce(card.Forward, interval);
        Insert(card);
    }
    FlashCard excluded = MakeCard("excluded", "forward");
    excluded.ForwardX = true;
    Introduce(excluded.Reverse, 60.0f);
    Insert(excluded);
    Insert(MakeCard("in another category", "", 1));

    LearningProgress& dialog = Make();
    EXPECT_EQ(Read(dialog, {kTotal}), Numbers{"5"});
    EXPECT_EQ(Read(dialog, kForward), (Numbers{"2", "1", "1", "1"}));
    EXPECT_EQ(Read(dialog, kReverse), (Numbers{"1", "0", "4", "0"}));
    EXPECT_TRUE(ShowsCategory(dialog));
}

}  // namespace
