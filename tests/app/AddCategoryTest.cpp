#include "app/AddCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    ModalAnswers answers;
    // Would make a box taller than any screen.
    const wxString tall = "tall" + wxString('\n', 5000) + "end";
    const std::pair<wxString, bool> names[] = {{"7", false},     {"Default", true}, {"007", true},
                                               {"Latin", false}, {tall, false},     {tall, true}};
    for (const auto& [name, isPresent] : names) {
        answers.ThenType(name);
        if (isPresent) {
            answers.Expect(wxID_OK);
        }
        AddCategory(nullptr, mDatabase);
    }
    // A blank name is refused, and the question comes again.
    answers.ThenType(" ");
    answers.Expect(wxID_OK);
    answers.ThenType("Greek");
    AddCategory(nullptr, mDatabase);
    EXPECT_EQ(Query("SELECT Name FROM Categories WHERE trim(Name)='' OR Name='Greek'"),
              Strings{"Greek"});
    EXPECT_TRUE(answers.Dialogs.at(2).Message.Contains("already"));

    EXPECT_EQ(Query("SELECT Id,Name FROM Categories WHERE Id < 3"),
              (Strings{"0|Default", "1|7", "2|Latin"}));
}
