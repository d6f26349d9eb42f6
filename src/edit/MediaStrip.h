#pragma once

#include <wx/panel.h>
#include <wx/string.h>

#include <memory>
#include <vector>

#include "media/MediaFolder.h"
#include "media/MediaLines.h"

class CardPictures;
class SoundPlayer;
class wxArrayString;
class wxButton;
class wxImage;
class wxTextCtrl;

// The pictures and sounds that the text of a field names, small and in a row below it; hidden when
// it names none. Takes new ones: by a button, by a drop or a paste of files or of a picture. Each
// goes into the folder of the store and becomes a line of the text; a line that is deleted leaves
// its file there. Lives beside its field.
class MediaStrip : public wxPanel {
  public:
    // The field is not owned.
    MediaStrip(wxWindow* parent, wxTextCtrl& field);
    ~MediaStrip() override;

    void SetStore(const wxString& storePath);
    // Makes the button, whose place is the caller's.
    wxButton* MakeButton(wxWindow* parent);
    // Shows what the field names now; call it when its text was changed without an event.
    void ShowLines();

    // Each returns whether it could take what it was given. The user is told otherwise.
    bool AddFiles(const wxArrayString& paths);
    bool AddImage(const wxImage& image);

  private:
    class Thumbnail;

    void AddLine(MediaKind kind, const wxString& name);
    bool TakePaste();
    void ChooseFiles();
    void Play(const wxString& name);
    void Tell(int error);

    wxTextCtrl& mField;
    wxString mStore;
    // What is shown: the kinds and names.
    std::vector<MediaLine> mShown;
    std::unique_ptr<CardPictures> mpPictures;
    std::unique_ptr<SoundPlayer> mpPlayer;
};
