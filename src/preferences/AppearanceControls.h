#pragma once

#include <wx/colourdata.h>
#include <wx/fontdata.h>
#include <wx/panel.h>

#include <initializer_list>

class wxButton;
class wxTextCtrl;

// The shared half of the controls below: a sample of what is chosen, and beside it a button that
// opens the platform's dialog for choosing another. The label that stands above the control in its
// form becomes part of the button's name for screen readers.
class AppearanceControl : public wxPanel {
  public:
    // Makes the buttons of several controls equally wide, for a form that shows them in a column.
    static void AlignButtons(std::initializer_list<const AppearanceControl*> controls);

  protected:
    AppearanceControl(wxWindow* parent, wxWindowID id) : wxPanel(parent, id) {}

    // Lays out the two. Called once, by the constructor of the derived class.
    void CreateRow(wxWindow* sample, int buttonId, const wxString& buttonText,
                   const wxString& label);

    // Runs the platform's dialog and takes its answer.
    virtual void Change() = 0;

  private:
    wxButton* mpButton = nullptr;
};

// A colour, shown as a swatch.
class ColorControl : public AppearanceControl {
  public:
    ColorControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetColourData(const wxColourData& data);
    const wxColourData& GetColourData() const { return mData; }

  private:
    void Change() override;

    wxColourData mData;
    wxPanel* mpSwatch = nullptr;
};

// A font, shown as its size and name. The name is written in the font itself, but always at the
// same size.
class FontControl : public AppearanceControl {
  public:
    enum ControlId : int { kFontNameId = 10047 };

    FontControl(wxWindow* parent, wxWindowID id, const wxString& label);

    void SetFontData(const wxFontData& data);
    const wxFontData& GetFontData() const { return mData; }

    // Returns the chosen font, or the initial one where none was chosen.
    wxFont GetFontOfData() const;

  private:
    void Change() override;

    wxFontData mData;
    wxTextCtrl* mpName = nullptr;
};
