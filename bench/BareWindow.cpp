#include <wx/app.h>
#include <wx/frame.h>

// The smallest program with a window: the floor for a start.
namespace {

class BareApp : public wxApp {
  public:
    bool OnInit() override {
        (new wxFrame(nullptr, wxID_ANY, "Bare"))->Show();
        return true;
    }
};

}  // namespace

wxIMPLEMENT_APP(BareApp);
