#pragma once

#include <wx/dataobj.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "shell/AppServices.h"

class Database;
class FatalErrorReport;
class UndoHistory;

// Cards on the clipboard: row ids for this program, and for others a table of text, made when a
// program first asks for it. Belongs to the clipboard once it is put there. Main thread only.
class CardDataObject : public wxDataObject {
  public:
    // The database is not owned and must outlive the object. Pass no row ids to an object that the
    // clipboard is going to fill.
    CardDataObject(Database& database, const std::vector<int64_t>& rowIds, bool copy);

    // Returns the private format in which row ids travel.
    static wxDataFormat GetRowIdFormat();

    const std::vector<int64_t>& GetRowIds() const { return mRowIds; }
    // Returns true for a copy and false for a cut.
    bool IsCopy() const { return mCopy; }
    // Returns a pointer that expires when the clipboard deletes the object.
    std::weak_ptr<void> GetLifeSign() const { return mLifeSign; }

    size_t GetDataSize(const wxDataFormat& format) const override;
    bool GetDataHere(const wxDataFormat& format, void* buffer) const override;
    // Takes row ids only. Returns false, with nothing changed, for a buffer that is shorter than
    // the count in it says.
    bool SetData(const wxDataFormat& format, size_t length, const void* buffer) override;
    size_t GetFormatCount(Direction direction = Get) const override;
    void GetAllFormats(wxDataFormat* formats, Direction direction = Get) const override;
    wxDataFormat GetPreferredFormat(Direction direction = Get) const override;

  private:
    const wxString& GetText() const;

    Database& mDatabase;
    std::vector<int64_t> mRowIds;
    bool mCopy;
    // The toolkit asks for the size and the bytes of the text in const operations.
    mutable bool mTextDone = false;
    mutable wxString mText;
    std::shared_ptr<void> mLifeSign = std::make_shared<int>();
};

// Puts cards on the desktop's clipboard and pastes them into the store. The row ids that lie there
// mean nothing in another store file, so the application, which owns this object, takes them back
// before the file changes and before the program ends. Main thread only.
class CardClipboard {
  public:
    // The report and the history, which gets what each paste did, are not owned.
    CardClipboard(FatalErrorReport& report, UndoHistory& history)
        : mReport(report), mHistory(history) {}

    // Puts a copy or a cut on the clipboard and leaves the store as it is. Does nothing while
    // another program holds the clipboard open.
    void Put(Database& database, const std::vector<int64_t>& rowIds, bool copy);
    // Returns whether the clipboard holds cards that this program put there. Quick enough for
    // update handlers, as it does not ask the desktop.
    bool HasCards() const { return !mOwn.expired(); }
    // Brings the cards into a category on a worker thread, behind a progress window, and notifies
    // the observers of the database: a copy as new cards, a cut by moving. Does nothing when the
    // clipboard holds no cards of this program.
    void Paste(Database& database, int32_t categoryId, AppServices::EmptyCut empty);
    // Empties the clipboard, unless another program has put something there in the meantime.
    void TakeBack();

  private:
    FatalErrorReport& mReport;
    UndoHistory& mHistory;
    // Expires when the object that was put last has left the clipboard. Row ids that lie there
    // after that are those of another run of the program and must not be pasted.
    std::weak_ptr<void> mOwn;
};
