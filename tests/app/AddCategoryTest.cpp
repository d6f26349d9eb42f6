#include "app/AddCategory.h"

#include <gtest/gtest.h>
#include <wx/textdlg.h>

#include "support/GuiTest.h"

namespace {

class CountingObserver : public Observer {
  public:
    void Update(Subject*) override { ++Notices; }
    int Notices = 0;
};

class AddCategoryTest : public GuiStoreTest {
  protected:
    AddCategoryTest() { mDatabase.AddObserver(&mObserver); }
    ~AddCategoryTest() override { mDatabase.RemoveObserver(&mObserver); }

    std::function<int(wxDialog&)> Type(const wxString& name) {
        return [name](wxDialog& dialog) {
            dynamic_cast<wxTextEntryDialog&>(dialog).SetValue(name);
            return wxID_OK;
        };
    }

    size_t CountCategories() { return Query("SELECT Id FROM Categories").size(); }

    CountingObserver mObserver;
};

TEST_F(AddCategoryTest, AddsTheNameAndTellsTheObservers) {
    ModalAnswers answers;
    answers.Expect(Type("Latin"));
    AddCategory(nullptr, mDatabase);
    EXPECT_EQ(Query("SELECT Id,Name FROM Categories WHERE Id=1").front(), "1|Latin");
    EXPECT_EQ(mObserver.Notices, 1);
}

TEST_F(AddCategoryTest, ANameThatTheStoreSeesAsPresentChangesNothing) {
    ASSERT_EQ(mDatabase.CategoryInsert("7"), 0);
    for (const char* const name : {"Default", "007"}) {
        SCOPED_TRACE(name);
        ModalAnswers answers;
        answers.Expect(Type(name));
        answers.Expect(wxID_OK);
        AddCategory(nullptr, mDatabase);
        EXPECT_TRUE(answers.Dialogs.back().Message.Contains("already"));
    }
    EXPECT_EQ(CountCategories(), 2U);
    EXPECT_EQ(mObserver.Notices, 0);
}

TEST_F(AddCategoryTest, NoNameIsNoCategory) {
    ModalAnswers answers;
    answers.Expect(Type(wxString()));
    answers.Expect(wxID_CANCEL);
    AddCategory(nullptr, mDatabase);
    AddCategory(nullptr, mDatabase);
    EXPECT_EQ(CountCategories(), 1U);
}

}  // namespace
