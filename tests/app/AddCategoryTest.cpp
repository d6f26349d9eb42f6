#include "app/AddCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    ModalAnswers answers;
    // Would make a box taller than any screen.
    const wxString tall('\n', 5000);
    const std::pair<wxString, bool> names[] = {{"7", false},     {"Default", true}, {"007", true},
                                               {"Latin", false}, {tall, false},     {tall, true}};
    for (const auto& [name, isPresent] : names) {
        answers.ThenType(name);
        if (isPresent) {
            answers.Expect(wxID_OK);
        }
        AddCategory(nullptr, mDatabase);
    }
    EXPECT_TRUE(answers.Dialogs.at(2).Message.Contains("already"));
    EXPECT_EQ(answers.Dialogs.back().Message.Freq('\n'), 0U);
    EXPECT_EQ(Query("SELECT Id,Name FROM Categories WHERE Id < 3"),
              (Strings{"0|Default", "1|7", "2|Latin"}));
}
