#pragma once

class Database;
class EditForm;
class wxWindow;
struct FlashCard;

// Checks what the user typed into the editor and writes it into a card that is to be stored. The
// card comes as the store has it at this moment, and keeps each field that the user did not touch.
// A card without an id is a new one, of which every field is the form's. Carriage returns in typed
// texts become line feeds.
//
// Returns 0, or -1 after the user was told what is amiss or did not want the category created; the
// field in question then has the keys. By then the card may hold a part of the new values, and a
// category that was created stays.
int CollectCard(EditForm& form, Database& database, wxWindow& frame, FlashCard& card);
