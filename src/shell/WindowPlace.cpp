#include "shell/WindowPlace.h"

#include <wx/display.h>
#include <wx/stopwatch.h>
#include <wx/tokenzr.h>
#include <wx/toplevel.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>

#include "shell/Toolkit.h"

namespace {

// What the coordinates of a window system reach.
constexpr long kFarthest = 32767;
// A window that is smaller shows nothing that is of use.
constexpr int kSmallest = 64;
// How long the window manager may take to settle a new window.
constexpr long kSettlingMilliseconds = 300;
// How often the place of a window is put right; a window manager may insist on its own.
constexpr int kCorrections = 3;

struct WatchedPlace {
    // The last place that lasted, and the one since then.
    wxRect Normal;
    wxRect Latest;
    wxStopWatch SinceLatest;
    // Where the window is to be once it is shown.
    std::optional<wxRect> Wanted;
    // How often that may still be corrected.
    int Corrections = kCorrections;
    bool WasHidden = false;
    // Since the window was last seen not to be the active one.
    wxStopWatch SinceInactive;
};

std::map<const wxTopLevelWindow*, WatchedPlace>& WatchedPlaces() {
    static std::map<const wxTopLevelWindow*, WatchedPlace> places;
    return places;
}

WatchedPlace& Watched(const wxTopLevelWindow& window) {
    return WatchedPlaces()[&window];
}

bool IsNormal(const wxTopLevelWindow& window) {
    return !window.IsMaximized() && !window.IsIconized() && !window.IsFullScreen();
}

wxRect PresentPlace(const wxTopLevelWindow& window) {
    wxRect place = window.GetRect();
    if (Watched(window).WasHidden) {
        place.SetPosition(GetFramePosition(window));
    }
    return place;
}

int64_t SharedArea(const wxRect& one, const wxRect& other) {
    const wxRect shared = one.Intersect(other);
    return shared.IsEmpty() ? 0 : int64_t{shared.width} * shared.height;
}

// Window managers are free to place a new window where they like, and many do; a move of one that
// is shown they grant. The frame around a window may also turn out thicker or thinner than was
// foreseen, and the window would change its size a little at each start. Both become known about
// when the window becomes the active one; whatever changes its place later is the person.
void CorrectPlace(wxTopLevelWindow& window) {
    WatchedPlace& watched = Watched(window);
    if (!window.IsActive()) {
        watched.SinceInactive.Start();
    } else if (watched.SinceInactive.Time() > kSettlingMilliseconds) {
        watched.Wanted.reset();
    }
    if (watched.Wanted && PresentPlace(window) != *watched.Wanted && watched.Corrections > 0) {
        --watched.Corrections;
        window.SetSize(*watched.Wanted);
    }
}

// While a window is being maximised it may be told of its new place some time before it is told
// why, so a place counts only once it has lasted.
void NotePlace(const wxTopLevelWindow& window) {
    WatchedPlace& watched = Watched(window);
    const bool normal = IsNormal(window);
    const wxRect present = PresentPlace(window);
    if (normal && present == watched.Latest) {
        return;
    }
    if (watched.SinceLatest.Time() > kSettlingMilliseconds) {
        watched.Normal = watched.Latest;
    }
    watched.Latest = normal ? present : watched.Normal;
    watched.SinceLatest.Start();
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
    if (numbers.size() != 4 || numbers[2] < kSmallest || numbers[3] < kSmallest) {
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
    if (WatchedPlaces().count(&window) != 0) {
        return;
    }
    Watched(window).Normal = Watched(window).Latest = window.GetRect();
    window.Bind(wxEVT_IDLE, [&window](wxIdleEvent& event) {
        event.Skip();
        if (window.IsShown()) {
            if (IsNormal(window)) {
                CorrectPlace(window);
            }
            NotePlace(window);
        }
    });
    window.Bind(wxEVT_SHOW, [&window](wxShowEvent& event) {
        event.Skip();
        WatchedPlace& watched = Watched(window);
        if (!event.IsShown()) {
            watched.WasHidden = true;
        } else if (watched.WasHidden && IsNormal(window)) {
            // It comes back as a new one does: the toolkit counts without its frame at first, or
            // for ever.
            watched.Wanted = watched.Latest;
            watched.Corrections = kCorrections;
            watched.SinceInactive.Start();
        }
    });
    window.Bind(wxEVT_DESTROY, [&window](wxWindowDestroyEvent& event) {
        event.Skip();
        if (event.GetEventObject() == &window) {
            WatchedPlaces().erase(&window);
        }
    });
}

void MoveToPlace(wxTopLevelWindow& window, const wxRect& place) {
    WatchedPlace& watched = Watched(window);
    window.SetSize(place);
    watched.Normal = watched.Latest = place;
    watched.Wanted = window.IsShown() ? std::nullopt : std::make_optional(place);
}

wxRect GetNormalPlace(const wxTopLevelWindow& window) {
    if (WatchedPlaces().count(&window) == 0) {
        return window.GetRect();
    }
    if (!window.IsShown()) {
        // The window manager has taken its frame away, so that it counts as smaller.
        return Watched(window).Latest;
    }
    if (IsNormal(window)) {
        return PresentPlace(window);
    }
    NotePlace(window);
    return Watched(window).Normal;
}
