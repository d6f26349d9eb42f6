#include "shell/TextUndo.h"

#include <wx/event.h>
#include <wx/spinctrl.h>
#include <wx/textentry.h>
#include <wx/window.h>

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace {

// A longer text has no history, as each key would have to read all of it.
constexpr size_t kLongestText = size_t{1} << 18;
// The oldest changes are dropped when all of them together have more characters than this.
constexpr size_t kMostCharacters = size_t{1} << 18;

// Compares two texts and returns the length of what they begin with in common.
size_t CommonStart(const std::wstring& one, const std::wstring& other, size_t most) {
    const auto end = one.begin() + static_cast<std::ptrdiff_t>(most);
    return static_cast<size_t>(std::mismatch(one.begin(), end, other.begin()).first - one.begin());
}

size_t CommonEnd(const std::wstring& one, const std::wstring& other, size_t most) {
    const auto end = one.rbegin() + static_cast<std::ptrdiff_t>(most);
    return static_cast<size_t>(std::mismatch(one.rbegin(), end, other.rbegin()).first -
                               one.rbegin());
}

// Returns true between a space and the letter of the next word.
bool IsWordStart(const wxString& before, const wxString& after) {
    return IsWideSpace(before.Last()) && !IsWideSpace(after[0]);
}

}  // namespace

// The field as the history sees it. Positions count characters.
class TextUndo::Field {
  public:
    virtual ~Field() = default;
    virtual wxString GetText() const = 0;
    virtual size_t GetCaret() const = 0;
    // Puts a text in place of another, with the events that typing sends.
    virtual void Replace(size_t from, size_t to, const wxString& text) = 0;
};

namespace {

// A text of one or several lines, a search field, or a choice that is typed into.
class EntryField : public TextUndo::Field {
  public:
    explicit EntryField(wxTextEntry& entry) : mEntry(entry) {}

    wxString GetText() const override { return mEntry.GetValue(); }
    size_t GetCaret() const override { return static_cast<size_t>(mEntry.GetInsertionPoint()); }
    void Replace(size_t from, size_t to, const wxString& text) override {
        const auto first = static_cast<long>(from);
        const auto last = static_cast<long>(to);
        // The toolkit sends no event for a removal that is part of an empty replacement.
        text.empty() ? mEntry.Remove(first, last) : mEntry.Replace(first, last, text);
        mEntry.SetInsertionPoint(static_cast<long>(from + text.length()));
    }

  private:
    wxTextEntry& mEntry;
};

// The text of a spin control, which the toolkit can only set as a whole.
class SpinField : public TextUndo::Field {
  public:
    explicit SpinField(wxSpinCtrl& control) : mControl(control) {}

    wxString GetText() const override { return mControl.GetTextValue(); }
    size_t GetCaret() const override { return GetText().length(); }
    void Replace(size_t from, size_t to, const wxString& text) override {
        const wxString former = GetText();
        mControl.SetValue(former.Left(from) + text + former.Mid(to));
        mControl.SetSelection(-1, -1);
    }

  private:
    wxSpinCtrl& mControl;
};

// Returns null for a window without a text that the user can edit.
std::unique_ptr<TextUndo::Field> MakeField(wxWindow& window) {
    if (auto* const spin = dynamic_cast<wxSpinCtrl*>(&window)) {
        return std::make_unique<SpinField>(*spin);
    }
    auto* const entry = dynamic_cast<wxTextEntry*>(&window);
    if (entry == nullptr || !entry->IsEditable()) {
        return nullptr;
    }
    return std::make_unique<EntryField>(*entry);
}

}  // namespace

TextUndo::TextUndo(std::unique_ptr<Field> field) : mpField(std::move(field)) {
    Begin();
}

TextUndo::~TextUndo() = default;

void TextUndo::AttachTo(wxWindow& window) {
    std::unique_ptr<Field> field = MakeField(window);
    if (field != nullptr && Find(&window) == nullptr) {
        auto* const history = new TextUndo(std::move(field));
        // A choice hides the window's client object behind those of its rows.
        static_cast<wxEvtHandler&>(window).SetClientObject(history);
        history->Watch(window);
    }
    for (wxWindow* const child : window.GetChildren()) {
        AttachTo(*child);
    }
}

TextUndo* TextUndo::Find(wxWindow* window) {
    const wxEvtHandler* const handler = window;
    return handler == nullptr ? nullptr : dynamic_cast<TextUndo*>(handler->GetClientObject());
}

void TextUndo::Restart(wxWindow& window) {
    if (TextUndo* const history = Find(&window)) {
        history->Begin();
    }
}

void TextUndo::Watch(wxWindow& window) {
    window.Bind(wxEVT_TEXT, [this, &window](wxCommandEvent& event) {
        event.Skip();
        if (!mIsApplying) {
            Follow();
            mIsSameMoment = true;
            window.CallAfter([this] { mIsSameMoment = false; });
        }
    });
    // Input methods have had the key by now.
    window.Bind(wxEVT_CHAR, [this](wxKeyEvent& event) {
        const int key = event.GetKeyCode();
        const int modifiers = event.GetModifiers();
        const bool isPlain = modifiers == wxMOD_CONTROL;
        const bool isShifted = modifiers == (wxMOD_CONTROL | wxMOD_SHIFT);
        if (isPlain && key == WXK_CONTROL_Z) {
            Undo();
        } else if ((isShifted && key == WXK_CONTROL_Z) || (isPlain && key == WXK_CONTROL_Y)) {
            Redo();
        } else {
            event.Skip();
        }
    });
}

void TextUndo::Begin() {
    mText = mpField->GetText();
    if (mText.length() > kLongestText) {
        mText.clear();
    }
    mChanges.clear();
    mDone = 0;
    mSize = 0;
}

// Finds what the user has changed since the last time. The text alone does not tell which of
// several equal letters was typed, but the caret does: it stands after them.
void TextUndo::Follow() {
    const wxString text = mpField->GetText();
    if (text.length() > kLongestText || mText.length() > kLongestText) {
        Begin();
        return;
    }
    const std::wstring& before = mText.ToStdWstring();
    const std::wstring& after = text.ToStdWstring();
    const size_t shorter = std::min(before.length(), after.length());
    const size_t caret = std::min(mpField->GetCaret(), after.length());
    const size_t end = CommonEnd(before, after, std::min(shorter, after.length() - caret));
    const size_t start = CommonStart(before, after, shorter - end);
    Change change = {start, before.substr(start, before.length() - end - start),
                     after.substr(start, after.length() - end - start), false};
    change.IsTyped = change.After.length() == 1;
    mText = text;
    if (change.Before.empty() && change.After.empty()) {
        return;
    }
    if (CanRedo() || !Extend(change)) {
        Add(std::move(change));
    }
}

// Joins a change to the newest one if both belong to one word. Returns false if not.
bool TextUndo::Extend(const Change& change) {
    if (mDone == 0) {
        return false;
    }
    Change& last = mChanges.back();
    const bool isPut = change.Before.empty();
    if (isPut && mIsSameMoment && last.After.empty() && change.Place == last.Place) {
        // The toolkit may report in two steps what replaces a selection.
        last.After = change.After;
        last.IsTyped = change.IsTyped;
    } else if (isPut && change.IsTyped && last.IsTyped &&
               change.Place == last.Place + last.After.length() &&
               !IsWordStart(last.After, change.After)) {
        last.After += change.After;
    } else if (change.After.empty() && change.Before.length() == 1 && last.After.empty() &&
               change.Place == last.Place && !IsWordStart(last.Before, change.Before)) {
        // The Delete key.
        last.Before += change.Before;
    } else if (change.After.empty() && change.Before.length() == 1 && last.After.empty() &&
               change.Place + 1 == last.Place && !IsWordStart(last.Before.Left(1), change.Before)) {
        // The Backspace key.
        last.Before = change.Before + last.Before;
        last.Place = change.Place;
    } else {
        return false;
    }
    mSize += change.Before.length() + change.After.length();
    return true;
}

void TextUndo::Add(Change change) {
    const auto sizeOf = [](const Change& one) { return one.Before.length() + one.After.length(); };
    while (CanRedo()) {
        mSize -= sizeOf(mChanges.back());
        mChanges.pop_back();
    }
    mSize += sizeOf(change);
    mChanges.push_back(std::move(change));
    while (mSize > kMostCharacters) {
        mSize -= sizeOf(mChanges.front());
        mChanges.pop_front();
    }
    mDone = mChanges.size();
}

void TextUndo::Undo() {
    if (CanUndo()) {
        // Copied, as a handler of the field's event may begin a new history.
        const Change change = mChanges[--mDone];
        Apply(change.Place, change.After, change.Before);
    }
}

void TextUndo::Redo() {
    if (CanRedo()) {
        const Change change = mChanges[mDone++];
        Apply(change.Place, change.Before, change.After);
    }
}

void TextUndo::Apply(size_t place, const wxString& present, const wxString& wanted) {
    // The program may have put another text into the field without a word.
    if (mpField->GetText() != mText) {
        Begin();
        return;
    }
    const wxString text = mText.Left(place) + wanted + mText.Mid(place + present.length());
    mIsApplying = true;
    mpField->Replace(place, place + present.length(), wanted);
    mIsApplying = false;
    mText = text;
    // An input method may have added its text, and a spin control takes only numbers.
    if (mpField->GetText() != text) {
        Begin();
    }
}
