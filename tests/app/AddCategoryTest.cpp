#include "app/AddCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    ModalAnswers answers;
    for (const char* const name : {"7", "Default", "007", "Latin"}) {
        answers.Expect([name](wxDialog& dialog) {
            dynamic_cast<wxTextEntryDialog&>(dialog).SetValue(name);
            return wxID_OK;
        });
        std::list<Category> same;
        ASSERT_EQ(mDatabase.SelectCategoryByName(name, same), 0);
        if (!same.empty()) {
            answers.Expect(wxID_OK);
        }
        AddCategory(nullptr, mDatabase);
    }
    EXPECT_TRUE(answers.Dialogs.at(2).Message.Contains("already"));
    EXPECT_EQ(Query("SELECT Id,Name FROM Categories"), (Strings{"0|Default", "1|7", "2|Latin"}));
}
