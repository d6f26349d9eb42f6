#include <wx/menu.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>

#include <algorithm>

#include "media/MediaFolder.h"
#include "media/windows/CardPictures.h"
#include "media/windows/SoundPlayer.h"
#include "shell/CommandIds.h"
#include "shell/Settings.h"
#include "store/Database.h"
#include "study/CardViewer.h"
#include "study/PictureView.h"
#include "study/StudyFrame.h"
#include "study/StudyTexts.h"

// Sounds of a card, and its pictures in the whole window.

void StudyFrame::AddMediaCommands() {
    AddCommand(
        ID_PLAY_SOUNDS, [this](bool checked) { SetPlaysSounds(checked); },
        [](wxUpdateUIEvent& event) { event.Check(ReadBooleanSetting(kSettingPlaySounds)); });
    AddCommand(
        ID_SHOW_PICTURE, [this](bool) { ShowNextPicture(); },
        [this](wxUpdateUIEvent& event) { event.Enable(!FindPictures().empty()); });
    Bind(EVT_CARD_PICTURE, [this](wxCommandEvent& event) {
        if (IsBackVisible()) {
            ShowPicture(event.GetString());
        } else {
            ShowBack();
        }
    });
}

void StudyFrame::SetPlaysSounds(bool plays) {
    WriteBooleanSetting(kSettingPlaySounds, plays);
    if (!plays) {
        PlaySounds({});
    } else if (HasCard()) {
        mStudySpeech.PlayAgain();
    }
}

void StudyFrame::PlaySounds(const std::vector<wxString>& names) {
    mSoundFault.clear();
    if (mpSoundPlayer == nullptr) {
        if (names.empty()) {
            return;
        }
        mpSoundPlayer = std::make_unique<SoundPlayer>([this] {
            mSoundFault = _("This sound cannot be played.");
            if (HasCard()) {
                UpdateStatusTexts();
            }
        });
    }
    if (names.empty() || mpDatabase == nullptr) {
        mpSoundPlayer->Stop();
        return;
    }
    const MediaFolder folder(mpDatabase->GetPath());
    std::vector<FileDescriptor> files;
    files.reserve(names.size());
    for (const wxString& name : names) {
        files.push_back(folder.Open(name));
    }
    mpSoundPlayer->Play(std::move(files));
}

// The back has no pictures before it is shown.
std::vector<wxString> StudyFrame::FindPictures() const {
    std::vector<wxString> names;
    if (HasCard()) {
        for (const CardViewerSide* const side :
             {&mpCardViewer->GetFirst(), &mpCardViewer->GetSecond()}) {
            for (const SidePicture& picture : side->Pictures) {
                if (picture.Natural.x > 0) {
                    names.push_back(picture.Name);
                }
            }
        }
    }
    return names;
}

void StudyFrame::ShowNextPicture() {
    if (mpPictureView != nullptr && mpPictureView->IsShown()) {
        mpPictureView->Step(1);
        return;
    }
    const std::vector<wxString> names = FindPictures();
    if (!names.empty()) {
        ShowPicture(names.front());
    }
}

void StudyFrame::ShowPicture(const wxString& name) {
    const std::vector<wxString> names = FindPictures();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        return;
    }
    if (mpPictureView == nullptr) {
        mpPictureView = new PictureView(this, [this] { HidePicture(); });
        GetSizer()->Add(mpPictureView, wxSizerFlags(1).Expand());
    }
    mpPictureView->SetBackgroundColour(mpCardViewer->GetBackgroundColour());
    mpPictureView->SetPictures(mpCardViewer->GetPictures(), names,
                               static_cast<size_t>(found - names.begin()));
    DropPresses();
    GetSizer()->Show(mpCardSizer, false);
    mpPictureView->Show();
    Layout();
    mpChildFocus = mpPictureView;
    mpPictureView->SetFocus();
}

void StudyFrame::HidePicture() {
    if (mpPictureView == nullptr || !mpPictureView->IsShown()) {
        return;
    }
    mpPictureView->Hide();
    GetSizer()->Show(mpCardSizer, true);
    // Shows all that the sizer holds; UpdateAnswer knows better.
    HideAnswer();
    UpdateAnswer();
    Layout();
    TakeKeys();
}
