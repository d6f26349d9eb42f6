#include "categories/CurrentCategory.h"

#include "support/GuiTest.h"

TEST_F(GuiStoreTest, ANewCategoryIsNotOneThatTheStoreSeesAsPresent) {
    ModalAnswers answers;
    // Would make a box taller than any screen.
    const wxString tall = "tall" + wxString('\n', 5000);
    // What is typed, and how many answers follow: to a message, and to the question asked again.
    const std::pair<wxString, int> names[] = {{"7", 0}, {"Default", 1},    {"007", 1}, {"Latin", 0},
                                              {"", 2},  {L" \t\u3000", 2}, {tall, 0},  {tall, 1}};
    for (const auto& [name, following] : names) {
        answers.ThenType(name);
        for (int i = 0; i < following; ++i) {
            answers.Expect(i == 0 ? wxID_OK : wxID_CANCEL);
        }
        AddCategory(nullptr, mDatabase);
    }
    EXPECT_TRUE(answers.Dialogs.at(2).Message.Contains("already"));
    EXPECT_EQ(answers.Dialogs.back().Message.Freq('\n'), 0U);
    EXPECT_EQ(Query("SELECT Id,substr(Name, 1, 7) FROM Categories"),
              (Strings{"0|Default", "1|7", "2|Latin", "3|" + (tall.Left(7)).ToStdString()}));
}
