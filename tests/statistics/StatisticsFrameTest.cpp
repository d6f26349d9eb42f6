#include "statistics/StatisticsFrame.h"

#include <wx/checkbox.h>
#include <wx/clipbrd.h>
#include <wx/dataobj.h>
#include <wx/hyperlink.h>

#include "plot/PlotControl.h"
#include "statistics/CostlyCards.h"
#include "support/GuiTest.h"
#include "support/LoggedReview.h"

namespace {

constexpr int64_t kDay = 86400;

struct StatisticsFrameTest : FrameTest<StatisticsFrame> {
    StatisticsFrameTest() {
        wxImage::AddHandler(new wxPNGHandler);
        mDatabase.CategoryInsert("Other");
    }

    // A card that was scored 4, a day later 1 and a day later 4 again, with its last score today.
    CardUuid Study(const wxString& front, int32_t category) {
        FlashCard card = MakeCard(front, "x", category);
        const int64_t now = mServices.Time.Now().GetTicks();
        card.Forward.Introduced = true;
        card.Forward.LastReview = wxDateTime(static_cast<time_t>(now));
        card.Forward.ReviewInterval = static_cast<float>(kDay);
        Insert(card);
        for (int i = 0; i < 3; ++i) {
            LoggedReview{card.CardId, now - (2 - i) * kDay, i == 1 ? 1 : 4, i == 0 ? -1 : kDay}
                .AppendTo(StorePath());
        }
        return card.CardId;
    }
    void Open() {
        OpenFrame(new StatisticsFrame(mServices));
        WaitForFigures();
    }
    void WaitForFigures() {
        EXPECT_TRUE(WaitFor([this] { return !mpFrame->IsCounting(); }));
    }
    const Plot& ShowPlot(StatisticsPage page) {
        mpFrame->ShowPage(page);
        return Find<PlotControl>(*mpFrame, StatisticsFrame::kPlotId).GetPlot();
    }
    wxString Copied() {
        SendCommand(*mpFrame, wxID_COPY);
        wxTextDataObject text;
        wxTheClipboard->Open();
        EXPECT_TRUE(wxTheClipboard->GetData(text));
        wxTheClipboard->Close();
        return text.GetText();
    }
};

}  // namespace

TEST_F(StatisticsFrameTest, ShowsTheReviewsOfTheChosenCategoryAndDirection) {
    Study("one", 0);
    Study("two", 1);
    Open();
    const auto reviewsToday = [this] {
        WaitForFigures();
        return ShowPlot(StatisticsPage::Reviews).Table.Rows.back().back();
    };
    EXPECT_EQ(reviewsToday(), "2");
    Choose(*mpFrame, StatisticsFrame::kCategoryId, 2);
    EXPECT_EQ(reviewsToday(), "1");
    Choose(*mpFrame, StatisticsFrame::kDirectionId, 2);
    WaitForFigures();
    EXPECT_TRUE(ShowPlot(StatisticsPage::Reviews).EmptyText.StartsWith("No reviews here"));
    // A change of the store counts again, and keeps the choice of category.
    Choose(*mpFrame, StatisticsFrame::kDirectionId, 0);
    Study("three", 1);
    mDatabase.Notify();
    EXPECT_EQ(reviewsToday(), "2");
}

TEST_F(StatisticsFrameTest, AHardCardOpensItsEditor) {
    const CardUuid id = Study("hard", 0);
    Open();
    EXPECT_EQ(ShowPlot(StatisticsPage::HardestCards).Names, std::vector<wxString>{"hard"});
    auto& plot = Find<PlotControl>(*mpFrame, StatisticsFrame::kPlotId);
    DrainEvents();
    SendKeyDown(plot, WXK_HOME);
    SendKeyDown(plot, WXK_RETURN);
    ASSERT_EQ(mServices.Edited.size(), 1U);
    EXPECT_EQ(mServices.Edited[0].CardId, id);
    // The numbers do the same.
    auto& toggle = Find<wxCheckBox>(*mpFrame, StatisticsFrame::kShowNumbersId);
    toggle.SetValue(true);
    Send(toggle, wxEVT_CHECKBOX);
    auto& numbers = Find<wxListCtrl>(*mpFrame, StatisticsFrame::kNumbersId);
    EXPECT_TRUE(numbers.IsShown());
    EXPECT_FALSE(plot.IsShown());
    EXPECT_EQ(numbers.GetItemText(0, 1), "1");
    wxListEvent activated(wxEVT_LIST_ITEM_ACTIVATED, numbers.GetId());
    activated.SetIndex(0);
    numbers.ProcessWindowEvent(activated);
    EXPECT_EQ(mServices.Edited.size(), 2U);
}

TEST_F(StatisticsFrameTest, APageIsCopiedAndSaved) {
    Study("one", 0);
    Open();
    ShowPlot(StatisticsPage::Difficulties);
    const wxString text = Copied();
    EXPECT_TRUE(text.StartsWith("Difficulty\tCards\n0\t0\n")) << text;
    EXPECT_TRUE(text.Contains("\n16\t1\n"));
    const wxString png = mDirectory.Path("plot.png");
    const wxString svg = mDirectory.Path("plot.SVG");
    EXPECT_TRUE(mpFrame->SavePicture(png));
    EXPECT_EQ(wxImage(png).GetSize(), wxSize(1800, 1040));
    EXPECT_TRUE(mpFrame->SavePicture(svg));
    EXPECT_THAT(ReadBytes(svg), testing::HasSubstr("Difficulties</text>"));
    EXPECT_FALSE(mpFrame->SavePicture(mDirectory.Path("no/such/plot.png")));
}

TEST_F(StatisticsFrameTest, AStoreThatClosesWhileItIsCountedDoesNoHarm) {
    Study("one", 0);
    OpenFrame(new StatisticsFrame(mServices));
    mDatabase.Close();
    mDatabase.Notify();
    WaitForFigures();
    Reopen();
    mDatabase.Notify();
    WaitForFigures();
    EXPECT_EQ(ShowPlot(StatisticsPage::Reviews).Table.Rows.back().back(), "1");
}

TEST_F(StatisticsFrameTest, CardsThatTakeTooMuchAreExcludedOrBegunAnewInOneStep) {
    const int64_t now = mServices.Time.Now().GetTicks();
    std::vector<CardUuid> ids;
    for (const char* const front : {"one", "two", "three"}) {
        ids.push_back(Study(front, 0));
        for (int i = *front == 't' ? 0 : 1; i < 9; ++i) {
            LoggedReview{ids.back(), now - 40 * kDay + i * kDay, 0, kDay, 86400}.AppendTo(
                StorePath());
        }
    }
    Open();
    mpFrame->ShowPage(StatisticsPage::HardestCards);
    auto& list = Find<wxListCtrl>(*mpFrame, CostlyCardsPanel::kListId);
    const auto select = [&](std::initializer_list<const char*> fronts) {
        for (int row = 0; row < list.GetItemCount(); ++row) {
            const bool isOne = std::count(fronts.begin(), fronts.end(), list.GetItemText(row)) > 0;
            list.SetItemState(row, isOne ? wxLIST_STATE_SELECTED : 0, wxLIST_STATE_SELECTED);
        }
    };
    ASSERT_EQ(list.GetItemCount(), 3);
    EXPECT_TRUE(list.IsShownOnScreen());
    EXPECT_EQ(list.GetItemText(2) + list.GetItemText(2, 1), "one8");
    EXPECT_FALSE(FindById(*mpFrame, CostlyCardsPanel::kResetId)->IsEnabled());
    select({"one", "three"});
    Send(*FindById(*mpFrame, CostlyCardsPanel::kEditId));
    EXPECT_EQ(mServices.Edited.size(), 2U);
    Send(*FindById(*mpFrame, CostlyCardsPanel::kResetId));
    WaitForFigures();
    EXPECT_EQ(list.GetItemCount(), 1);
    EXPECT_FALSE(Stored(ids[0]).Forward.Introduced);
    select({"two"});
    Send(*FindById(*mpFrame, CostlyCardsPanel::kExcludeId));
    WaitForFigures();
    EXPECT_TRUE(Stored(ids[1]).ForwardX);
    EXPECT_FALSE(Stored(ids[1]).ReverseX);
    EXPECT_FALSE(list.IsShownOnScreen());
    UndoOutcome outcome;
    EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
    EXPECT_FALSE(Stored(ids[1]).ForwardX);
    EXPECT_EQ(mServices.History.UndoLast(mDatabase, outcome), 0);
    EXPECT_EQ(outcome.Restored, 2);
    EXPECT_EQ(Stored(ids[0]).Forward.ReviewInterval, static_cast<float>(kDay));
}

// A month of forgotten cards that were asked often, all with threes.
TEST_F(StatisticsFrameTest, TheOverviewSaysWhatTheMonthSuggestsUntilItIsSentAway) {
    const CardUuid id = Study("one", 0);
    const int64_t now = mServices.Time.Now().GetTicks();
    for (int i = 0; i < 200; ++i) {
        const bool isFirst = i % 10 == 0;
        LoggedReview{id, now - (20 - i / 10) * kDay + i % 10, isFirst ? 0 : 3, 1,
                     isFirst ? 86400.0f : 1}
            .AppendTo(StorePath());
    }
    Open();
    DrainEvents();
    wxWindow& hints = Find<wxWindow>(*mpFrame, "hints");
    const auto texts = [&hints] {
        wxString all;
        for (wxWindow* const child : hints.GetChildren()) {
            const auto* const text = dynamic_cast<wxStaticText*>(child);
            all += text == nullptr ? wxString() : text->GetLabel() + "|";
        }
        all.Replace("\n", " ");
        return all;
    };
    EXPECT_TRUE(texts().StartsWith("In the last month 180 of your 203 answers went to")) << texts();
    EXPECT_TRUE(texts().Contains("180 of your 182 passes were a 3")) << texts();
    int opened = 0;
    mpFrame->Bind(
        wxEVT_MENU, [&opened](wxCommandEvent&) { ++opened; }, wxID_PREFERENCES);
    auto& link = Find<wxWindow>(*mpFrame, wxID_PREFERENCES);
    wxHyperlinkEvent click(&link, wxID_PREFERENCES, "options:");
    link.HandleWindowEvent(click);
    EXPECT_EQ(opened, 1);
    for (int left = 2; left > 0; --left) {
        EXPECT_TRUE(hints.IsShown());
        for (wxWindow* const child : hints.GetChildren()) {
            if (dynamic_cast<wxButton*>(child) != nullptr) {
                Send(*child);
                break;
            }
        }
        DrainEvents();
    }
    EXPECT_FALSE(hints.IsShown());
    mDatabase.Notify();
    WaitForFigures();
    EXPECT_FALSE(hints.IsShown());
}
