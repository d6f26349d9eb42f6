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

// A window manager and a toolkit talk past each other, so asking a window where it is gives wrong
// answers at three moments, and this file watches each window to know better:
//
// - A new window asks for 120,90 and the manager puts it at 300,200, or the frame turns out 20
//   pixels thicker than the toolkit assumed. We ask again once the window is up (CorrectPlace), and
//   stop when the user has had time to move it.
// - A window at 120,90 is maximised. It hears that it is now at 0,0 a little before it hears why.
//   A place counts only after it lasted a moment (NotePlace), so 120,90 is what we keep.
// - A hidden window has lost its frame, and one that was shown again may count without it for
//   ever. We keep what was known before, and ask the platform instead of the library
//   (PresentPlace).

namespace {

// The largest coordinate that a window system can express.
constexpr long kFarthest = 32767;
// A smaller window would show nothing of use, so its place is taken for a mistake.
constexpr int kSmallest = 64;
// How long the window manager may take to settle a window, either new or maximised.
constexpr long kSettlingMilliseconds = 300;
// How often we ask again for a place before the window manager has its way.
constexpr int kCorrections = 3;

struct WatchedPlace {
    // Normal is the last place that lasted, Latest the newest one, which may not last.
    wxRect Normal;
    wxRect Latest;
    wxStopWatch SinceLatest;
    // The place to hold the window to while it comes up. Empty as soon as the user may move it.
    std::optional<wxRect> Wanted;
    int Corrections = kCorrections;
    bool WasHidden = false;
    // Runs from the moment the window was last seen inactive.
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

// Puts a new window where it asked to be. Window managers may place a new window where they like,
// but grant a move of one that is shown. The frame may also be thicker than the toolkit assumed,
// which would change the size a little at each start. Both show by the time the window becomes the
// active one; later changes are the user's.
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

// Keeps the present place once it has lasted. A window that is being maximised hears of its new
// place before it hears of its new state, and must not take that place for its normal one.
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
            // The window manager treats it as a new window, so its place needs correcting again.
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
        // It has lost its frame and would count as smaller.
        return Watched(window).Latest;
    }
    if (IsNormal(window)) {
        return PresentPlace(window);
    }
    NotePlace(window);
    return Watched(window).Normal;
}
