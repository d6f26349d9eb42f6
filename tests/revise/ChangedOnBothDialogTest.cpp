#include "revise/ChangedOnBothDialog.h"

#include "support/GuiTest.h"
#include "sync/SyncState.h"

namespace {

using testing::ElementsAre;
using Id = ChangedOnBothDialog;

struct ChangedOnBothDialogTest : GuiStoreTest {
    // Adds a text that has lost; the last one added is listed last.
    void AddLost(const CardUuid& card, CardField field, const std::string& value) {
        SyncState state;
        ASSERT_TRUE(state.Open(StorePath()));
        ++mTime;
        state.AddLostText({card, field, value, {mTime, 1}, {mTime + 1, 2}});
        ASSERT_FALSE(state.Sql().HasFailed());
    }
    static std::string RowOf(wxDialog& dialog, long row) {
        auto& list = Find<wxListCtrl>(dialog, Id::kListId);
        std::string text;
        for (int column = 0; column < 4; ++column) {
            text += (column == 0 ? "" : "|") + list.GetItemText(row, column).ToStdString();
        }
        return text;
    }
    static std::string StatusOf(wxDialog& dialog) {
        return FindById(dialog, Id::kStatusId)->GetLabel().ToStdString();
    }

    int64_t mTime = 1700000000000;
};

TEST_F(ChangedOnBothDialogTest, TakesTheLostTextAsAnEditOrTakesNoteOfIt) {
    const FlashCard card = Insert(MakeCard("front", "back"));
    AddLost(card.CardId, CardField::kFront, "face");
    AddLost(card.CardId, CardField::kCategory, "=Verbs");
    AddLost(card.CardId, CardField::kForwardX, "1");
    AddLost(MakeCard("", "").CardId, CardField::kNotes, "lost\nwith its card");
    FakeServices services;
    ModalAnswers answers;
    CountingObserver observer(mDatabase);
    answers.Then([&](wxDialog& dialog) {
        const auto pressed = [&](int id) {
            const bool isOn = FindById(dialog, id)->IsEnabled();
            if (isOn) {
                Send(*FindById(dialog, id));
            }
            return isOn;
        };
        EXPECT_EQ(StatusOf(dialog),
                  "4 texts were changed on two computers. The later changes stand.");
        EXPECT_EQ(RowOf(dialog, 0), "front|Front|front|face");
        EXPECT_TRUE(pressed(Id::kTakeId));
        EXPECT_EQ(RowOf(dialog, 0), "face|Category|Default|Verbs");
        EXPECT_TRUE(pressed(Id::kTakeId));
        EXPECT_EQ(RowOf(dialog, 0), "face|Exclude from forward review|No|Yes");
        EXPECT_TRUE(pressed(Id::kLookedAtId));
        EXPECT_EQ(Find<wxTextCtrl>(dialog, Id::kLostId).GetValue(), "lost\nwith its card");
        EXPECT_EQ(RowOf(dialog, 0).substr(0, 20), "The card was deleted");
        EXPECT_FALSE(pressed(Id::kTakeId));
        EXPECT_TRUE(pressed(Id::kLookedAtId));
        EXPECT_EQ(StatusOf(dialog), "No text was changed on two computers.");
        EXPECT_FALSE(pressed(Id::kTakeId) || pressed(Id::kLookedAtId));
        dialog.EndModal(wxID_CANCEL);
    });
    ChangedOnBothDialog(nullptr, services, mDatabase).ShowModal();
    EXPECT_THAT(Query("SELECT Front,Back,Name,ForwardX FROM Cards,Categories ON CategoryId=Id"),
                ElementsAre("face|back|Verbs|0"));
    EXPECT_EQ(observer.Calls, 2);
    EXPECT_FALSE(services.History.IsEmpty());
    EXPECT_TRUE(ReadLostTexts(StorePath()).empty());
}

}  // namespace
