#include "statistics/StatisticsFrame.h"

#include <wx/checkbox.h>
#include <wx/clipbrd.h>
#include <wx/dataobj.h>

#include "plot/PlotControl.h"
#include "reviews/ReviewLog.h"
#include "support/GuiTest.h"

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
        ReviewLog log(ReviewLogPath(StorePath()));
        for (int i = 0; i < 3; ++i) {
            ReviewRecord record;
            record.Time = now - (2 - i) * kDay;
            record.CardId = card.CardId;
            record.Score = i == 1 ? 1 : 4;
            record.Elapsed = i == 0 ? -1 : kDay;
            log.Append(record);
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
