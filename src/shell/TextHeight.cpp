#include "shell/TextHeight.h"

#include <wx/textctrl.h>

#ifdef __WXGTK__

#include <algorithm>

#include "shell/ToolkitFunction.h"

namespace {

// Above and below the line, for the frame of the field.
constexpr int kFrame = 3;

}  // namespace

void FitTextHeights(wxWindow& window) {
    static const auto getHeight =
        FindToolkitFunction<void (*)(void* widget, int* least, int* natural)>(
            "gtk_widget_get_preferred_height");
    const auto* const text = dynamic_cast<const wxTextCtrl*>(&window);
    if (text != nullptr && text->IsSingleLine() && getHeight != nullptr) {
        int least = 0;
        int natural = 0;
        // Without the height of before, which would count as wanted.
        window.SetMinSize(wxSize(window.GetMinWidth(), -1));
        getHeight(window.GetHandle(), &least, &natural);
        // A change of the font is known to the platform a little later only.
        natural = std::max(natural, window.GetCharHeight() + 2 * window.FromDIP(kFrame));
        window.SetMinSize(wxSize(window.GetMinWidth(), natural));
    }
    for (wxWindow* const child : window.GetChildren()) {
        FitTextHeights(*child);
    }
}

#else

void FitTextHeights(wxWindow& /*window*/) {}

#endif
