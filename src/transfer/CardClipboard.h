#pragma once

#include <wx/dataobj.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "shell/AppServices.h"

class Database;
class FatalErrorReport;

// Cards on the clipboard: their row ids for this program, and for others the cards as a table of
// text, which is made when it is first asked for. Main thread only.
class CardDataObject : public wxDataObject {
  public:
    // The database is not owned and must outlive the object. An object that is to be filled from
    // the clipboard begins with no row ids.
    CardDataObject(Database& database, const std::vector<int64_t>& rowIds, bool copy);

    // The private format, in which row ids travel.
    static wxDataFormat GetRowIdFormat();

    const std::vector<int64_t>& GetRowIds() const { return mRowIds; }
    // A copy; otherwise a cut.
    bool IsCopy() const { return mCopy; }
    // Lives as long as the object does.
    std::weak_ptr<void> GetLifeSign() const { return mLifeSign; }

    size_t GetDataSize(const wxDataFormat& format) const override;
    bool GetDataHere(const wxDataFormat& format, void* buffer) const override;
    // Takes row ids alone, and refuses a buffer that does not hold what it says.
    bool SetData(const wxDataFormat& format, size_t length, const void* buffer) override;
    size_t GetFormatCount(Direction direction = Get) const override;
    void GetAllFormats(wxDataFormat* formats, Direction direction = Get) const override;
    wxDataFormat GetPreferredFormat(Direction direction = Get) const override;

  private:
    const wxString& GetText() const;

    Database& mDatabase;
    std::vector<int64_t> mRowIds;
    bool mCopy;
    mutable bool mTextDone = false;
    mutable wxString mText;
    std::shared_ptr<void> mLifeSign = std::make_shared<int>();
};

// Brings cards into a category, as new cards or by moving them, on a worker thread behind a
// progress window, and tells the listeners of the database.
void PasteCards(Database& database, FatalErrorReport& report, const std::vector<int64_t>& rowIds,
                bool copy, int32_t categoryId);

// Puts cards on the clipboard of the desktop and brings them back into the store. What lies there
// are row ids, good for the store file of now alone: the owner takes them back before the file
// changes and before the program ends. Main thread only.
class CardClipboard {
  public:
    // The report is not owned.
    explicit CardClipboard(FatalErrorReport& report) : mReport(report) {}

    // Changes nothing in the store. Without an effect while the clipboard cannot be had.
    void Put(Database& database, const std::vector<int64_t>& rowIds, bool copy);
    // The clipboard holds cards that this program put there. Quick enough for update handlers.
    bool HasCards() const { return !mOwn.expired(); }
    void Paste(Database& database, int32_t categoryId, AppServices::EmptyCut empty);
    // Empties the clipboard, unless another program has put something there in the meantime.
    void TakeBack();

  private:
    FatalErrorReport& mReport;
    // Alive while the object that was put last is on the clipboard, which owns it. This is also how
    // row ids of another program's store are told from ours.
    std::weak_ptr<void> mOwn;
};
