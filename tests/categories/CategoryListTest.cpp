#include "list/ListFixture.h"
#include "shell/Toolkit.h"

struct CategoryListTest : ListTest {
    // The store's categories as "id name".
    Strings Stored() { return Query("SELECT Id || ' ' || Name FROM Categories ORDER BY Id"); }
    // Types the name and answers the question that may follow.
    void Rename(const wxString& name, int answer = wxID_NONE) {
        mAnswers.ThenType(name);
        if (answer != wxID_NONE) {
            mAnswers.Expect(answer);
        }
        Categories().Rename();
    }
    void Choose(long row) {
        const long chosen = wxLIST_STATE_FOCUSED | wxLIST_STATE_SELECTED;
        Categories().SetItemState(row, chosen, chosen);
    }
    long ChosenRow() {
        const long row = Categories().GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
        EXPECT_EQ(Categories().GetItemState(row, wxLIST_STATE_FOCUSED), wxLIST_STATE_FOCUSED);
        return row;
    }
    void AddCategories(const Texts& names) {
        for (const wxString& name : names) {
            EXPECT_EQ(mDatabase.CategoryInsert(name), 0);
        }
    }
    ModalAnswers mAnswers;
};

TEST_F(CategoryListTest, RowsTellWhatIsReadyAndFollowTheStore) {
    AddCategories({"Spanish", "French"});
    FlashCard card = MakeCard("a", "b", 1);
    card.Reverse.Introduced = true;
    card.Reverse.LastReview = wxDateTime(time_t(1600000000));
    Insert(card);
    Open();
    EXPECT_EQ(Rows(), (Texts{"Default", "French", "Spanish (0/1)"}));
    EXPECT_EQ(ChosenRow(), 0);

    EXPECT_EQ(mDatabase.DeleteCategory(0), 0);
    mServices.CurrentCategory = 1;
    mDatabase.Notify();
    EXPECT_EQ(Rows(), (Texts{"French", "Spanish (0/1)"}));
    AddCategories({"\u00e9cole"});
    EXPECT_EQ(mDatabase.UpdateCategory({2, "Unit 10"}), 0);
    AddCategories({"Unit 9"});
    mDatabase.Notify();
    // The rows stand in the order of the names, whenever they came.
    EXPECT_EQ(Rows(), (Texts{"\u00e9cole", "Spanish (0/1)", "Unit 9", "Unit 10"}));
    EXPECT_EQ(ChosenRow(), 1);
    EXPECT_EQ(Button().GetLabelText(), "Spanish");
}

TEST_F(CategoryListTest, RowsStandUnderTheCategoriesThatTheirNamesPutThemUnder) {
    // "Music" has no row. A name of which nothing is left has no place below.
    AddCategories({"Languages::French::Verbs", "Languages X", "Languages", "Music::Blues",
                   "Languages::French", "Languages::", "Languages::Ancient::Greek"});
    FlashCard card = MakeCard("a", "b", 5);
    card.Reverse.Introduced = true;
    card.Reverse.LastReview = wxDateTime(time_t(1600000000));
    Insert(card);
    Open();
    const wxString em(L'\u2003');
    EXPECT_EQ(Rows(),
              (Texts{"Default", "Languages", "Languages::", em + "Ancient::Greek",
                     em + "French (0/1)", em + em + "Verbs", "Languages X", "Music::Blues"}));
    Choose(4);
    EXPECT_EQ(Button().GetLabelText(), "Languages::French");
    EXPECT_EQ(Column(1), Texts{"a"});

    // An upper category shows what is below it, for as long as it is.
    const auto showsCategories = [this] {
        const Texts headings = Headings();
        return std::count(headings.begin(), headings.end(), "Category") > 0;
    };
    Choose(6);
    EXPECT_EQ(Cards().GetItemCount(), 0);
    EXPECT_FALSE(showsCategories());
    Choose(1);
    EXPECT_EQ(Column(1), Texts{"a"});
    EXPECT_TRUE(showsCategories());
    EXPECT_EQ(mDatabase.UpdateCategory({5, "French"}), 0);
    mDatabase.Notify();
    EXPECT_EQ(Button().GetLabelText(), "Languages");
    EXPECT_EQ(Cards().GetItemCount(), 0);
}

TEST_F(CategoryListTest, FirstLettersFindARowWhereverItStands) {
    AddCategories({"Languages", "Languages::French", "Languages::Frisian", "Fr\u00fchling"});
    Open();
    EXPECT_EQ(ChosenRow(), 0);
    const std::pair<char, long> typed[] = {{'f', 1}, {'R', 1}, {'i', 4}, {'x', 4}};
    for (const auto& [letter, row] : typed) {
        SendKeyEvent(wxEVT_CHAR, GetRowsWindow(Categories()), letter);
        EXPECT_EQ(ChosenRow(), row) << letter;
    }
    EXPECT_EQ(Button().GetLabelText(), "Languages::Frisian");
}

TEST_F(CategoryListTest, ARenameIsARenameAMergeOrNothing) {
    // The last is shown in part, and kept in full where the question is answered as it came.
    AddCategories({"7", "Keep", wxString('n', 5000) + "\nend"});
    Insert(MakeCard("seven", "", 1));
    Open();
    Choose(3);
    EXPECT_EQ(Rows()[3].length(), 200U);
    EXPECT_LT(Button().GetBestSize().x, 400);
    mAnswers.Expect(wxID_OK);
    Categories().Rename();
    EXPECT_EQ(Query("SELECT length(Name) FROM Categories WHERE Id = 3"), Strings{"5004"});
    EXPECT_EQ(mDatabase.DeleteCategory(3), 0);
    mDatabase.Notify();
    Choose(0);
    // The same text, the same name in the store's eyes, another one.
    Rename("7");
    Rename("007");
    EXPECT_EQ(Stored(), (Strings{"0 Default", "1 7", "2 Keep"}));
    Rename("seven %s \"x\"");
    EXPECT_EQ(Stored(), (Strings{"0 Default", "1 seven %s \"x\"", "2 Keep"}));

    Rename("Keep", wxID_CANCEL);
    EXPECT_TRUE(mAnswers.Dialogs.back().Message.StartsWith(
        "Category \"Keep\" already exists.\nContinuing will move all of the cards from category "
        "\"seven %s \"x\"\" into category \"Keep\"."));
    EXPECT_EQ(Stored().size(), 3U);
    Rename("Keep", wxID_OK);
    EXPECT_EQ(Stored(), (Strings{"0 Default", "2 Keep"}));
    EXPECT_EQ(Query("SELECT CategoryId FROM Cards"), Strings{"2"});
    // The cards that were shown still are.
    EXPECT_EQ(Button().GetLabelText(), "Keep");
    EXPECT_EQ(Column(1), Texts{"seven"});
}

TEST_F(CategoryListTest, ACategoryThatAMergeRemovedComesBackToItsPlace) {
    AddCategories({"First", "Second", "Third"});
    Insert(MakeCard("a", "", 1));
    Open();
    EXPECT_EQ(mDatabase.DeleteCategory(0), 0);
    mDatabase.Notify();
    Choose(0);
    const Texts before{"First", "Second", "Third"};
    EXPECT_EQ(Rows(), before);
    Rename("Third", wxID_OK);
    EXPECT_EQ(Rows(), (Texts{"Second", "Third"}));
    Command(wxID_UNDO);
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(Stored(), (Strings{"1 First", "2 Second", "3 Third"}));
    // Done again, it leaves the category that follows the cards, and not the first one, as current.
    Choose(0);
    Command(wxID_REDO);
    EXPECT_EQ(Rows(), (Texts{"Second", "Third"}));
    EXPECT_EQ(Query("SELECT CategoryId FROM Cards"), Strings{"3"});
    EXPECT_EQ(ChosenRow(), 1);
    EXPECT_EQ(Button().GetLabelText(), "Third");
    Command(wxID_UNDO);
    EXPECT_EQ(Rows(), before);
    EXPECT_EQ(Query("SELECT CategoryId FROM Cards"), Strings{"1"});
}

TEST_F(CategoryListTest, OnlyAnEmptyCategoryThatIsNotTheLastOneIsDeleted) {
    Insert(MakeCard("a", "", 1));
    Open();
    const auto remove = [this](int answer) {
        mAnswers.Expect(answer);
        SendKeyDown(*Categories().GetChildren().front(), WXK_DELETE);
        return mAnswers.Dialogs.back().Message;
    };
    EXPECT_EQ(remove(wxID_OK),
              "Cannot delete category \"Default\" because it is the only category");

    AddCategories({"Full", "Last"});
    FlashCard due = MakeCard("b", "", 1);
    due.Forward.Introduced = true;
    due.Forward.LastReview = wxDateTime(time_t(1600000000));
    Insert(due);
    mDatabase.Notify();
    Choose(1);
    EXPECT_EQ(Rows()[1], "Full (1/0)");
    EXPECT_EQ(remove(wxID_OK),
              "Cannot delete category \"Full\" because there are flash cards in it\n"
              "It concerns 1 card.");
    Choose(2);
    EXPECT_EQ(remove(wxID_CANCEL), "Do you really want to delete the selected category?");
    EXPECT_EQ(Rows(), (Texts{"Default", "Full (1/0)", "Last"}));
    remove(wxID_OK);
    // The one above follows the last one, and the one below any other.
    EXPECT_EQ(Rows(), (Texts{"Default", "Full (1/0)"}));
    EXPECT_EQ(mServices.CurrentCategory, 1);
    EXPECT_EQ(ChosenRow(), 1);
    Choose(0);
    remove(wxID_OK);
    EXPECT_EQ(Stored(), Strings{"1 Full"});
    EXPECT_EQ(mServices.CurrentCategory, 1);
    EXPECT_EQ(Column(1).back(), "b");
}
