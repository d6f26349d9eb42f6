#include "transfer/CardClipboard.h"

#include <wx/clipbrd.h>

#include "store/UndoHistory.h"
#include "support/GuiTest.h"

namespace {

using EmptyCut = AppServices::EmptyCut;

struct CardClipboardTest : GuiStoreTest {
    CardClipboardTest() {
        mDatabase.CategoryInsert("other");
        FlashCard card = MakeCard("one", L"\u6C34 \U0001F600");
        card.Forward.Introduced = true;
        card.Forward.ERC = 4711;
        Insert(card);
        Insert(MakeCard("two", "b"));
    }
    ~CardClipboardTest() override { mClipboard.TakeBack(); }

    void Paste(int32_t category, EmptyCut empty) {
        ModalAnswers answers;
        answers.ThenWatch();
        mClipboard.Paste(mDatabase, category, empty);
    }
    Strings Cards() {
        return Query("SELECT Front, CategoryId, ERC FROM Cards ORDER BY CategoryId, Front, ROWID");
    }

    UndoHistory mHistory;
    CardClipboard mClipboard{mReport, mHistory};
    CountingObserver mObserver{mDatabase};
};

TEST_F(CardClipboardTest, ACopyPastesNewCardsAgainAndAgain) {
    mClipboard.Put(mDatabase, {1, 99, 2}, true);
    Paste(1, EmptyCut::kBefore);
    Paste(1, EmptyCut::kAfter);
    EXPECT_EQ(Cards(),
              (Strings{"one|0|4711", "two|0|0", "one|1|4711", "one|1|4711", "two|1|0", "two|1|0"}));
    EXPECT_EQ(Query("SELECT count(DISTINCT CardId) FROM Cards"), Strings{"6"});
    EXPECT_EQ(mObserver.Calls, 2);
    EXPECT_TRUE(mClipboard.HasCards());
    EXPECT_EQ(mHistory.GetUndoLabel(), "Undo pasting of 2 cards");
}

TEST_F(CardClipboardTest, OtherProgramsSeeATableAndTakeTheClipboardOver) {
    mClipboard.Put(mDatabase, {1}, true);
    const wxClipboardLocker locker;
    wxTextDataObject text;
    ASSERT_TRUE(wxTheClipboard->GetData(text));
    EXPECT_TRUE(text.GetText().Contains(L"\tone\t\u6C34 \U0001F600\t"));
    wxTheClipboard->SetData(new wxTextDataObject("plain"));
    EXPECT_FALSE(mClipboard.HasCards());
    mClipboard.TakeBack();
    EXPECT_TRUE(wxTheClipboard->GetData(text));
    EXPECT_EQ(text.GetText(), "plain");
}

TEST_F(CardClipboardTest, RowIdsTravelWholeOrNotAtAll) {
    const CardDataObject cards(mDatabase, {1, -2}, true);
    const wxDataFormat format = CardDataObject::GetRowIdFormat();
    std::string bytes(cards.GetDataSize(format), '\0');
    EXPECT_TRUE(cards.GetDataHere(format, bytes.data()));
    CardDataObject read(mDatabase, {}, false);
    EXPECT_TRUE(read.SetData(format, bytes.size(), bytes.data()));
    EXPECT_EQ(read.GetRowIds(), cards.GetRowIds());
    EXPECT_TRUE(read.IsCopy());
    const std::string huge("\xFF\xFF\xFF\xFF\0\0\0\0\0", 9);
    for (const std::string& wrong : {bytes.substr(0, 7), bytes.substr(0, 24), huge}) {
        EXPECT_FALSE(read.SetData(format, wrong.size(), wrong.data())) << wrong.size();
    }
    EXPECT_EQ(read.GetRowIds(), cards.GetRowIds());
}

}  // namespace
