#include "edit/MediaStrip.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <wx/button.h>
#include <wx/clipbrd.h>
#include <wx/dataobj.h>
#include <wx/dcbuffer.h>
#include <wx/filedlg.h>
#include <wx/filename.h>
#include <wx/graphics.h>
#include <wx/image.h>
#include <wx/mstream.h>
#include <wx/textctrl.h>
#include <wx/wrapsizer.h>

#include <algorithm>
#include <utility>

#include "base/Text.h"
#include "media/PictureFile.h"
#include "media/windows/CardPictures.h"
#include "media/windows/SoundPlayer.h"
#include "shell/MessageBox.h"
#include "shell/Toolkit.h"

namespace {

// Logical pixels.
constexpr int kThumbHeight = 48;
constexpr int kWidestThumb = 96;
constexpr int kGap = 4;
// More of them than anybody looks at are not shown.
constexpr size_t kMostShown = 20;

bool IsSame(const std::vector<MediaLine>& one, const std::vector<MediaLine>& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const MediaLine& line, const MediaLine& than) {
                          return line.Kind == than.Kind && line.Name == than.Name;
                      });
}

// Tells by the first bytes of a picture, and by the name and size of a sound.
bool IsPictureOrSound(const wxString& path) {
    const FileDescriptor file(::open(ToPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    PictureHead head;
    return HasSoundName(path)
               ? status.st_size <= kLargestMediaFile
               : HasPictureName(path) && ReadPictureHead(file.Get(), head) == PictureFault::kNone;
}

// Returns the first of many names.
wxString ListOf(const wxArrayString& names) {
    constexpr size_t kMostNamed = 5;
    wxString list;
    for (size_t i = 0; i < std::min(names.size(), kMostNamed); ++i) {
        list += (list.empty() ? "" : ", ") + names[i];
    }
    return names.size() <= kMostNamed ? list : list + L", \u2026";
}

}  // namespace

// One picture, as large as the row is high.
class MediaStrip::Thumbnail : public wxWindow {
  public:
    Thumbnail(MediaStrip& strip, const wxString& name) : mStrip(strip), mName(name) {
        SetBackgroundStyle(wxBG_STYLE_PAINT);
        const wxSize natural = strip.mpPictures->FindSize(name);
        const wxSize room(strip.FromDIP(wxSize(kWidestThumb, kThumbHeight)));
        const PictureSize fit = FitPicture({natural.x, natural.y}, {room.x, room.y});
        const wxSize size = natural.x > 0 ? wxSize(fit.Width, fit.Height) : wxSize(room.y, room.y);
        Create(&strip, wxID_ANY, wxDefaultPosition, size, wxBORDER_NONE);
        SetMinSize(size);
        SetToolTip(name);
        SetAccessibleName(*this, name);
        Bind(wxEVT_PAINT, &Thumbnail::OnPaint, this);
    }
    bool AcceptsFocus() const override { return false; }

  private:
    void OnPaint(wxPaintEvent&) {
        wxAutoBufferedPaintDC dc(this);
        dc.SetPen(*wxTRANSPARENT_PEN);
        dc.SetBrush(wxBrush(GetParent()->GetBackgroundColour()));
        dc.DrawRectangle(GetClientRect());
        const std::unique_ptr<wxGraphicsContext> context(
            wxGraphicsContext::CreateFromUnknownDC(dc));
        if (!mStrip.mpPictures->Draw(*context, mName, GetClientRect(), GetContentScaleFactor(),
                                     GetParent()->GetBackgroundColour())) {
            // One that is missing has a frame with a question mark.
            const bool isMissing = mStrip.mpPictures->FindSize(mName).x <= 0;
            context->SetPen(wxPen(GetForegroundColour()));
            context->DrawRectangle(0.5, 0.5, GetClientSize().x - 1, GetClientSize().y - 1);
            context->SetFont(GetFont(), GetForegroundColour());
            if (isMissing) {
                double width = 0;
                double height = 0;
                context->GetTextExtent("?", &width, &height);
                context->DrawText("?", (GetClientSize().x - width) / 2,
                                  (GetClientSize().y - height) / 2);
            }
        }
    }

    MediaStrip& mStrip;
    const wxString mName;
};

MediaStrip::MediaStrip(wxWindow* parent, wxTextCtrl& field)
    : wxPanel(parent),
      mField(field),
      mpPictures(std::make_unique<CardPictures>([this] { Refresh(); })) {
    SetSizer(new wxWrapSizer(wxHORIZONTAL));
    Hide();
    // A question in the middle of a drag would hold the other program up.
    LetDrop(field,
            {[this](const wxArrayString& paths) { CallAfter([this, paths] { AddFiles(paths); }); },
             [this](const wxBitmap& picture) {
                 CallAfter([this, taken = picture.ConvertToImage()] { AddImage(taken); });
             }});
    field.Bind(wxEVT_TEXT, [this](wxCommandEvent& event) {
        event.Skip();
        ShowLines();
    });
    field.Bind(wxEVT_TEXT_PASTE, [this](wxClipboardTextEvent& event) {
        if (!TakePaste()) {
            event.Skip();
        }
    });
}

MediaStrip::~MediaStrip() = default;

void MediaStrip::SetStore(const wxString& storePath) {
    if (mStore != storePath) {
        mStore = storePath;
        mpPictures->SetStore(storePath);
    }
}

wxButton* MediaStrip::MakeButton(wxWindow* parent) {
    auto* const button = new wxButton(parent, wxID_ANY, L"\u25A8 \u266A", wxDefaultPosition,
                                      wxDefaultSize, wxBU_EXACTFIT);
    button->SetToolTip(_("Add a picture or a sound"));
    SetAccessibleName(*button, _("Add a picture or a sound"));
    button->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { ChooseFiles(); });
    return button;
}

void MediaStrip::ShowLines() {
    std::vector<MediaLine> lines = FindMediaLines(mField.GetValue());
    lines.resize(std::min(lines.size(), kMostShown));
    if (IsSame(lines, mShown)) {
        return;
    }
    mShown = std::move(lines);
    DestroyChildren();
    GetSizer()->Clear();
    const wxSizerFlags flags =
        wxSizerFlags().CentreVertical().Border(wxTOP | wxRIGHT, FromDIP(kGap));
    for (const MediaLine& line : mShown) {
        if (line.Kind == MediaKind::kPicture) {
            GetSizer()->Add(new Thumbnail(*this, line.Name), flags);
            continue;
        }
        auto* const play = new wxButton(this, wxID_ANY, L"\u25B6", wxDefaultPosition, wxDefaultSize,
                                        wxBU_EXACTFIT);
        play->SetToolTip(line.Name);
        SetAccessibleName(*play, wxString::Format(_("Play %s"), line.Name));
        play->Bind(wxEVT_BUTTON, [this, name = line.Name](wxCommandEvent&) { Play(name); });
        GetSizer()->Add(play, flags);
    }
    Show(!mShown.empty());
    wxPostEvent(GetParent(), wxSizeEvent(GetParent()->GetSize()));
}

void MediaStrip::Play(const wxString& name) {
    if (mpPlayer == nullptr) {
        mpPlayer = std::make_unique<SoundPlayer>([this] {
            CallAfter([this] {
                ShowMessageBox(
                    _("A sound could not be played: the file, a plug-in or a device is missing."),
                    _("Sound"), wxOK | wxCENTRE, this);
            });
        });
    }
    std::vector<FileDescriptor> files;
    files.push_back(MediaFolder(mStore).Open(name));
    mpPlayer->Play(std::move(files));
}

// The line goes below the one with the cursor, so that no text is cut in two.
void MediaStrip::AddLine(MediaKind kind, const wxString& name) {
    const wxString text = mField.GetValue();
    const auto length = static_cast<size_t>(mField.GetLastPosition());
    auto at = std::min(static_cast<size_t>(std::max(mField.GetInsertionPoint(), 0L)), length);
    at = std::min(text.find('\n', at), text.length());
    const bool isBlank = at == 0 || text[at - 1] == '\n';
    mField.SetInsertionPoint(static_cast<long>(at));
    mField.WriteText((isBlank ? "" : "\n") + MakeMediaLine(kind, name));
}

bool MediaStrip::AddFiles(const wxArrayString& paths) {
    wxArrayString refused;
    bool isTaken = false;
    for (const wxString& path : paths) {
        const wxString fileName = wxFileName(path).GetFullName();
        const bool isSound = HasSoundName(path);
        if (!IsPictureOrSound(path)) {
            refused.push_back(wxString::Format("\"%s\"", ShownName(fileName)));
            continue;
        }
        wxString name;
        if (const int error = MediaFolder(mStore).Add(ToPath(path), fileName, name)) {
            // The next one would fail likewise.
            Tell(error);
            return false;
        }
        AddLine(isSound ? MediaKind::kSound : MediaKind::kPicture, name);
        isTaken = true;
    }
    if (!refused.empty()) {
        const auto count = static_cast<unsigned>(refused.size());
        ShowMessageBox(
            wxString::Format(
                wxPLURAL("%s is no picture and no sound that a card can have.",
                         "%s are no pictures and no sounds that a card can have.", count),
                ListOf(refused)),
            _("Add a picture or a sound"), wxOK | wxCENTRE, this);
    }
    return isTaken && refused.empty();
}

bool MediaStrip::AddImage(const wxImage& image) {
    wxMemoryOutputStream stream;
    if (!image.IsOk() || !image.SaveFile(stream, wxBITMAP_TYPE_PNG)) {
        return false;
    }
    std::string bytes(static_cast<size_t>(stream.GetLength()), '\0');
    stream.CopyTo(bytes.data(), bytes.size());
    wxString name;
    const int error = MediaFolder(mStore).AddBytes(bytes, "picture.png", name);
    if (error != 0) {
        Tell(error);
        return false;
    }
    AddLine(MediaKind::kPicture, name);
    return true;
}

void MediaStrip::Tell(int error) {
    ShowMessageBox(
        wxString::Format(_("The file could not be copied to \"%s\" (%s)."),
                         FromPath(MediaFolder(mStore).GetPath()), SystemErrorText(error)),
        _("Add a picture or a sound"), wxOK | wxCENTRE, this);
}

// Returns false for a clipboard with a text, which is pasted as ever.
bool MediaStrip::TakePaste() {
    const wxClipboardLocker lock;
    if (!lock || wxTheClipboard->IsSupported(wxDF_UNICODETEXT)) {
        return false;
    }
    if (wxTheClipboard->IsSupported(wxDF_FILENAME)) {
        wxFileDataObject files;
        if (wxTheClipboard->GetData(files)) {
            // The toolkit is in the middle of the paste.
            CallAfter([this, paths = files.GetFilenames()] { AddFiles(paths); });
            return true;
        }
    }
    wxBitmapDataObject image;
    if (!wxTheClipboard->IsSupported(wxDF_BITMAP) || !wxTheClipboard->GetData(image)) {
        return false;
    }
    CallAfter([this, taken = image.GetBitmap().ConvertToImage()] { AddImage(taken); });
    return true;
}

void MediaStrip::ChooseFiles() {
    wxFileDialog dialog(
        this, _("Add a picture or a sound"), wxString(), wxString(),
        _("Pictures and sounds") +
            "|*.png;*.jpg;*.jpeg;*.gif;*.webp;*.svg;*.ogg;*.oga;*.opus;*.mp3;*.wav;*.flac|" +
            _("All files (*.*)|*.*"),
        wxFD_OPEN | wxFD_FILE_MUST_EXIST | wxFD_MULTIPLE);
    if (dialog.ShowModal() == wxID_OK) {
        wxArrayString paths;
        dialog.GetPaths(paths);
        AddFiles(paths);
        mField.SetFocus();
    }
}
