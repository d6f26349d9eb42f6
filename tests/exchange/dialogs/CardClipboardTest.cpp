#include "exchange/dialogs/CardClipboard.h"

#include <wx/clipbrd.h>

#include "exchange/dialogs/CardDataObject.h"
#include "support/GuiTest.h"

namespace {

using EmptyCut = AppServices::EmptyCut;

class CardClipboardTest : public GuiStoreTest, public Observer {
  protected:
    CardClipboardTest() {
        mDatabase.CategoryInsert("other");
        FlashCard card = MakeCard("one", L"\u6C34 \U0001F600");
        card.Forward.Introduced = true;
        card.Forward.ERC = 4711;
        Insert(card);
        Insert(MakeCard("two", "b"));
        mDatabase.AddObserver(this);
    }
    ~CardClipboardTest() override {
        mClipboard.TakeBack();
        mDatabase.RemoveObserver(this);
    }
    void Update(Subject*) override { ++mNotices; }

    void Paste(int32_t category, EmptyCut empty) {
        ModalAnswers answers;
        answers.Expect(wxID_NONE);
        mClipboard.Paste(mDatabase, category, empty);
    }
    Strings Cards() {
        return Query("SELECT Front, CategoryId, ERC FROM Cards ORDER BY CategoryId, Front, ROWID");
    }

    CardClipboard mClipboard{mReport};
    int mNotices = 0;
};

TEST_F(CardClipboardTest, ACopyPastesNewCardsAgainAndAgain) {
    mClipboard.Put(mDatabase, {1, 99, 2}, true);
    Paste(1, EmptyCut::kBefore);
    Paste(1, EmptyCut::kAfter);
    EXPECT_EQ(Cards(),
              (Strings{"one|0|4711", "two|0|0", "one|1|4711", "one|1|4711", "two|1|0", "two|1|0"}));
    EXPECT_EQ(Query("SELECT count(DISTINCT CardId) FROM Cards"), Strings{"6"});
    EXPECT_EQ(mNotices, 2);
    EXPECT_TRUE(mClipboard.HasCards());
}

TEST_F(CardClipboardTest, ACutMovesItsCardsOnce) {
    for (const EmptyCut empty : {EmptyCut::kBefore, EmptyCut::kAfter}) {
        const int32_t target = empty == EmptyCut::kBefore ? 1 : 0;
        mClipboard.Put(mDatabase, {1, 99}, false);
        EXPECT_TRUE(mClipboard.HasCards());
        Paste(target, empty);
        EXPECT_FALSE(mClipboard.HasCards());
        EXPECT_EQ(Query("SELECT CategoryId FROM Cards WHERE Front = 'one'"),
                  Strings{std::to_string(target)});
        mClipboard.Paste(mDatabase, 5, empty);
    }
    EXPECT_EQ(Cards().size(), 2U);
}

TEST_F(CardClipboardTest, OtherProgramsSeeATableAndTakeTheClipboardOver) {
    mClipboard.Put(mDatabase, {1}, true);
    wxTextDataObject text;
    {
        const wxClipboardLocker locker;
        ASSERT_TRUE(wxTheClipboard->GetData(text));
    }
    const std::string id = FormatUuid(CardUuid()).utf8_string();
    EXPECT_EQ(text.GetText().AfterFirst('\n').Mid(id.length()),
              L"\tone\t\u6C34 \U0001F600\t\t\t\t0\tfalse\tfalse\t\n");
    {
        const wxClipboardLocker locker;
        wxTheClipboard->SetData(new wxTextDataObject("plain"));
        EXPECT_FALSE(mClipboard.HasCards());
        mClipboard.TakeBack();
        EXPECT_TRUE(wxTheClipboard->GetData(text));
    }
    EXPECT_EQ(text.GetText(), "plain");
}

TEST_F(CardClipboardTest, RowIdsTravelInAFixedForm) {
    const CardDataObject cards(mDatabase, {1, -2}, true);
    const wxDataFormat format = CardDataObject::GetRowIdFormat();
    std::string bytes(cards.GetDataSize(format), '\0');
    EXPECT_TRUE(cards.GetDataHere(format, bytes.data()));
    const std::string expected("\2\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF\1",
                               25);
    EXPECT_EQ(bytes, expected);

    CardDataObject read(mDatabase, {}, false);
    EXPECT_TRUE(read.SetData(format, bytes.size(), bytes.data()));
    EXPECT_EQ(read.GetRowIds(), cards.GetRowIds());
    EXPECT_TRUE(read.IsCopy());
    EXPECT_FALSE(read.SetData(wxDF_UNICODETEXT, bytes.size(), bytes.data()));
    for (const size_t length : {size_t{0}, size_t{7}, size_t{9}, size_t{24}}) {
        EXPECT_FALSE(read.SetData(format, length, bytes.data())) << length;
    }
    const std::string huge("\xFF\xFF\xFF\xFF\0\0\0\0\0", 9);
    EXPECT_FALSE(read.SetData(format, huge.size(), huge.data()));
    EXPECT_EQ(read.GetRowIds(), cards.GetRowIds());
}

TEST_F(CardClipboardTest, TheTextTellsOfCardsThatAreGone) {
    wxLogBuffer log;
    wxLog* const before = wxLog::SetActiveTarget(&log);
    const CardDataObject cards(mDatabase, {1, 98, 99}, false);
    cards.GetDataSize(wxDF_UNICODETEXT);
    cards.GetDataSize(wxDF_UNICODETEXT);
    const wxString told =
        "2 of the flash cards on the clipboard have been deleted so they couldn't be pasted.";
    wxString rest = log.GetBuffer();
    wxLog::SetActiveTarget(before);
    EXPECT_EQ(rest.Replace(told, ""), 1U) << "told once";
}

}  // namespace
