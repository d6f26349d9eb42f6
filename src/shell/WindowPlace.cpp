#include "shell/WindowPlace.h"

#include <wx/display.h>
#include <wx/tokenzr.h>
#include <wx/toplevel.h>

#include <algorithm>
#include <cstdint>
#include <map>

namespace {

// What the coordinates of a window system reach.
constexpr long kFarthest = 32767;

std::map<const wxTopLevelWindow*, wxRect>& NormalPlaces() {
    static std::map<const wxTopLevelWindow*, wxRect> places;
    return places;
}

bool IsNormal(const wxTopLevelWindow& window) {
    return !window.IsMaximized() && !window.IsIconized() && !window.IsFullScreen();
}

int64_t SharedArea(const wxRect& one, const wxRect& other) {
    const wxRect shared = one.Intersect(other);
    return shared.IsEmpty() ? 0 : int64_t{shared.width} * shared.height;
}

}  // namespace

wxString FormatPlace(const wxRect& place) {
    return wxString::Format("%i,%i,%i,%i", place.x, place.y, place.width, place.height);
}

bool ParsePlace(const wxString& text, wxRect& place) {
    std::vector<int> numbers;
    wxStringTokenizer tokens(text, ",", wxTOKEN_RET_EMPTY_ALL);
    while (tokens.HasMoreTokens()) {
        long number = 0;
        if (!tokens.GetNextToken().ToLong(&number) || number < -kFarthest || number > kFarthest) {
            return false;
        }
        numbers.push_back(static_cast<int>(number));
    }
    if (numbers.size() != 4 || numbers[2] <= 0 || numbers[3] <= 0) {
        return false;
    }
    place = wxRect(numbers[0], numbers[1], numbers[2], numbers[3]);
    return true;
}

wxRect ClampPlace(const wxRect& place, const std::vector<wxRect>& screens) {
    if (screens.empty()) {
        return place;
    }
    const auto screen = std::max_element(
        screens.begin(), screens.end(), [&place](const wxRect& one, const wxRect& other) {
            return SharedArea(place, one) < SharedArea(place, other);
        });
    wxRect clamped = place;
    clamped.width = std::min(clamped.width, screen->width);
    clamped.height = std::min(clamped.height, screen->height);
    clamped.x = std::clamp(clamped.x, screen->x, screen->x + screen->width - clamped.width);
    clamped.y = std::clamp(clamped.y, screen->y, screen->y + screen->height - clamped.height);
    return clamped;
}

std::vector<wxRect> ScreenAreas() {
    std::vector<wxRect> areas;
    for (unsigned int i = 0; i < wxDisplay::GetCount(); ++i) {
        areas.push_back(wxDisplay(i).GetClientArea());
    }
    return areas;
}

void WatchPlace(wxTopLevelWindow& window) {
    if (!NormalPlaces().emplace(&window, window.GetRect()).second) {
        return;
    }
    // Moves and sizes arrive before the window system tells that they come from maximising, so the
    // place is noted only once everything that was told is known.
    window.Bind(wxEVT_IDLE, [&window](wxIdleEvent& event) {
        event.Skip();
        if (IsNormal(window)) {
            NormalPlaces()[&window] = window.GetRect();
        }
    });
    window.Bind(wxEVT_DESTROY, [&window](wxWindowDestroyEvent& event) {
        event.Skip();
        if (event.GetEventObject() == &window) {
            NormalPlaces().erase(&window);
        }
    });
}

wxRect GetNormalPlace(const wxTopLevelWindow& window) {
    const auto noted = NormalPlaces().find(&window);
    return IsNormal(window) || noted == NormalPlaces().end() ? window.GetRect() : noted->second;
}
