#pragma once

class Database;
class EditForm;
class wxWindow;
struct FlashCard;

// Checks what a person typed into the editor and writes it into a card that is to be stored. Gives
// 0, or -1 when the person was told what is amiss, or did not want the category created that the
// card is to be in; the field in question then has the keys. The card may hold a part of the new
// values by then, and a category that was created stays.
int CollectCard(EditForm& form, Database& database, wxWindow& frame, FlashCard& card);
