#pragma once

#include <wx/clntdata.h>
#include <wx/string.h>

#include <cstddef>
#include <deque>
#include <memory>

class wxWindow;

// Undo and redo for one text field, since the toolkit has none. Watches a text of one or several
// lines, the text of a search field, or one that is typed into a choice or a spin control. Ctrl+Z
// undoes; Ctrl+Shift+Z and Ctrl+Y redo. Owned by the field and ends with it. Main thread only.
//
// The history compares the text after each change, which is right for typing, paste, drop and input
// methods alike. It is a list of changes, each a place with what stood there before and after:
//
//   "cat sat"  ->  "cat sat down"  ->  "dog sat down"
//   {7, "", " "} {8, "", "down"}       {0, "cat", "dog"}
//
// What is typed in one go becomes one change a word; so does what is deleted key by key. A paste, a
// drop and a word that an input method puts in are one change each.
class TextUndo : public wxClientData {
  public:
    class Field;

    // Gives a history to each text field inside a window that the user can edit, the window itself
    // included, unless it has one already.
    static void AttachTo(wxWindow& window);
    // Returns the history of a field, or null when it has none. The window may be null.
    static TextUndo* Find(wxWindow* window);
    // Empties the history of a field, if it has one. Call it after the program itself has put
    // another text into the field; otherwise the user could bring the former text back.
    static void Restart(wxWindow& window);

    ~TextUndo() override;

    bool CanUndo() const { return mDone > 0; }
    bool CanRedo() const { return mDone < mChanges.size(); }
    // Take back the latest change, and make it again. Each leaves the caret after what it put in,
    // sends the field's usual event, and does nothing when there is no change.
    void Undo();
    void Redo();

  private:
    struct Change {
        size_t Place;
        wxString Before;
        wxString After;
        // True while it holds only letters typed one by one, so that another may join them.
        bool IsTyped;
    };
    explicit TextUndo(std::unique_ptr<Field> field);
    void Watch(wxWindow& window);
    void Begin();
    void Follow();
    bool Extend(const Change& change);
    void Add(Change change);
    void Apply(size_t place, const wxString& present, const wxString& wanted);

    std::unique_ptr<Field> mpField;
    // The text as it was after the latest change.
    wxString mText;
    // The changes from the oldest to the newest. The first mDone of them stand in the text; the
    // others were undone.
    std::deque<Change> mChanges;
    size_t mDone = 0;
    // The number of characters that all changes hold.
    size_t mSize = 0;
    // True from a change to the next turn of the event loop: further changes until then belong to
    // it.
    bool mIsSameMoment = false;
    // True while an undo or a redo changes the text.
    bool mIsApplying = false;
};
