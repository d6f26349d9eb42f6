#include "app/AddCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    ModalAnswers answers;
    for (const char* const name : {"7", "Default", "007", "Latin"}) {
        answers.ThenType(name);
        if (wxString(name) == "Default" || wxString(name) == "007") {
            answers.Expect(wxID_OK);
        }
        AddCategory(nullptr, mDatabase);
    }
    EXPECT_TRUE(answers.Dialogs.at(2).Message.Contains("already"));
    EXPECT_EQ(Query("SELECT Id,Name FROM Categories"), (Strings{"0|Default", "1|7", "2|Latin"}));
}
