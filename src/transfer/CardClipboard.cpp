#include "transfer/CardClipboard.h"

#include <wx/clipbrd.h>
#include <wx/intl.h>
#include <wx/log.h>
#include <wx/toplevel.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "base/Process.h"
#include "base/Unicode.h"
#include "exchange/Export.h"
#include "exchange/PasteThread.h"
#include "shell/MessageBox.h"
#include "store/Database.h"
#include "store/UndoHistory.h"
#include "transfer/ProgressDialog.h"

namespace {

// The bytes of the private format, in the platform's byte order:
//
//   4  number of row ids
//   4  zero
//   8  each row id
//   1  1 for a copy, 0 for a cut
constexpr size_t kHeaderSize = 8;

size_t RowIdSize(size_t count) {
    return count * sizeof(int64_t);
}

void TellMissing(int32_t count) {
    wxLogError(_("%i of the flash cards on the clipboard have been deleted so they couldn't be "
                 "pasted."),
               count);
    for (wxWindow* const window : wxTopLevelWindows) {
        // Raising a hidden window would show it.
        if (window->IsShown()) {
            window->Raise();
        }
    }
}

// Encodes a text as the toolkit passes "Unicode text" to other programs: UTF-8 on GTK, else UTF-16.
std::string TextBytes(const wxString& text) {
#ifdef __WXGTK__
    return ToUtf8(text);
#else
    const wxCharBuffer bytes = text.mb_str(wxMBConvUTF16());
    return {bytes.data(), bytes.length()};
#endif
}

}  // namespace

CardDataObject::CardDataObject(Database& database, const std::vector<int64_t>& rowIds, bool copy)
    : mDatabase(database), mRowIds(rowIds), mCopy(copy) {}

wxDataFormat CardDataObject::GetRowIdFormat() {
    return wxDataFormat("Velomind");
}

size_t CardDataObject::GetDataSize(const wxDataFormat& format) const {
    if (format == GetRowIdFormat()) {
        return kHeaderSize + RowIdSize(mRowIds.size()) + 1;
    }
    return TextBytes(GetText()).size();
}

bool CardDataObject::GetDataHere(const wxDataFormat& format, void* buffer) const {
    auto* out = static_cast<char*>(buffer);
    if (format != GetRowIdFormat()) {
        const std::string bytes = TextBytes(GetText());
        std::copy(bytes.begin(), bytes.end(), out);
        return true;
    }
    const uint32_t header[] = {static_cast<uint32_t>(mRowIds.size()), 0};
    std::memcpy(out, header, kHeaderSize);
    out += kHeaderSize;
    if (!mRowIds.empty()) {
        std::memcpy(out, mRowIds.data(), RowIdSize(mRowIds.size()));
        out += RowIdSize(mRowIds.size());
    }
    *out = mCopy ? 1 : 0;
    return true;
}

bool CardDataObject::SetData(const wxDataFormat& format, size_t length, const void* buffer) {
    if (format != GetRowIdFormat() || length < kHeaderSize) {
        return false;
    }
    const auto* const in = static_cast<const char*>(buffer);
    uint32_t count = 0;
    std::memcpy(&count, in, sizeof count);
    // The division, unlike a product, cannot overflow for a count that somebody made up.
    const size_t space = length - kHeaderSize;
    if (space / sizeof(int64_t) < count || space - RowIdSize(count) < 1) {
        return false;
    }
    mRowIds.resize(count);
    if (count > 0) {
        std::memcpy(mRowIds.data(), in + kHeaderSize, RowIdSize(count));
    }
    mCopy = in[kHeaderSize + RowIdSize(count)] != 0;
    mTextDone = false;
    return true;
}

size_t CardDataObject::GetFormatCount(Direction direction) const {
    return direction == Get ? 2 : 1;
}

void CardDataObject::GetAllFormats(wxDataFormat* formats, Direction direction) const {
    formats[0] = GetRowIdFormat();
    if (direction == Get) {
        formats[1] = wxDF_UNICODETEXT;
    }
}

wxDataFormat CardDataObject::GetPreferredFormat(Direction /*direction*/) const {
    return GetRowIdFormat();
}

const wxString& CardDataObject::GetText() const {
    if (!mTextDone) {
        mTextDone = true;
        ExportProgress progress;
        // The store itself reports a failure; the text then has the cards that were read before.
        ExportToString(mText, mDatabase, mRowIds, {false, ExportFormat::kDelimited, L'\t'},
                       progress);
        if (progress.Missing > 0) {
            TellMissing(progress.Missing);
        }
    }
    return mText;
}

void CardClipboard::Put(Database& database, const std::vector<int64_t>& rowIds, bool copy) {
    const wxClipboardLocker clipboard;
    if (!clipboard) {
        return;
    }
    auto cards = std::make_unique<CardDataObject>(database, rowIds, copy);
    mOwn = cards->GetLifeSign();
    wxTheClipboard->SetData(cards.release());
}

void CardClipboard::Paste(Database& database, int32_t categoryId, AppServices::EmptyCut empty) {
    CardDataObject cards(database, {}, true);
    {
        const wxClipboardLocker clipboard;
        if (!HasCards() || !clipboard || !wxTheClipboard->GetData(cards)) {
            return;
        }
        if (!cards.IsCopy() && empty == AppServices::EmptyCut::kBefore) {
            wxTheClipboard->Clear();
        }
    }
    PasteThread thread(database, cards.GetRowIds(), cards.IsCopy(), categoryId);
    if (RunWithProgress(nullptr, thread, mReport,
                        _("Unable to start a thread for the flash cards to be pasted."))) {
        // Even a cancelled paste has done something.
        StoreChange change = thread.TakeChange();
        const wxString notice = DescribeWithoutUndo(change);
        mHistory.Add(std::move(change));
        database.Notify();
        if (!notice.empty()) {
            ShowMessageBox(notice, _("Paste"), wxOK | wxCENTRE);
        }
    }
    if (!cards.IsCopy() && empty == AppServices::EmptyCut::kAfter) {
        TakeBack();
    }
}

void CardClipboard::TakeBack() {
    if (HasCards()) {
        wxTheClipboard->Clear();
    }
}
