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
// answers at several moments, and this file watches each window to know better:
//
// - A new window asks for 120,90 and the manager puts it at 300,200. We ask again once the window
//   is up (CorrectPlace), and stop when the user has had time to move it.
// - A window at 120,90 is maximised. It hears that it is now at 0,0 a little before it hears why.
//   A place counts only after it lasted a moment (NotePlace), so 120,90 is what we keep.
// - The frame turns out 25 pixels thicker than the library assumed, or the desktop has the program
//   draw frame and shadow itself and the library counts them as inside. A window that stored such
//   sizes would grow or shrink a little at each start. The platform's own measures have neither
//   fault (GetInnerPlace).
// - A window manager that tiles shows every window as maximised from the start. Only a window that
//   was free before counts as maximised by the user.

namespace {

// The largest coordinate that a window system can express.
constexpr long kFarthest = 32767;
// A smaller window would be of no use, so its place is taken for a mistake.
constexpr int kSmallest = 64;
// How long the window manager may take to settle a window, either new or maximised.
constexpr long kSettlingMilliseconds = 300;
// How often we ask again for a place before the window manager has its way.
constexpr int kCorrections = 3;

const char* const kMaximised = "maximised";

struct WatchedPlace {
    // The last place that lasted, and what the user chose last.
    WindowPlace Kept;
    // The newest place, which may not last. While the window is not free it is the kept one.
    wxRect Latest;
    bool IsFree = true;
    wxStopWatch SinceLatest;
    // The window has been free for long enough to believe it.
    bool WasFree = false;
    // The place to hold the window at while it comes up. Empty as soon as the user may move it.
    std::optional<wxRect> Wanted;
    int Corrections = kCorrections;
    bool WasHidden = false;
    // Runs from the moment the window was last seen inactive or not free.
    wxStopWatch SinceInactive;
};

std::map<const wxTopLevelWindow*, WatchedPlace>& WatchedPlaces() {
    static std::map<const wxTopLevelWindow*, WatchedPlace> places;
    return places;
}

WatchedPlace& Watched(const wxTopLevelWindow& window) {
    return WatchedPlaces()[&window];
}

bool IsFree(const wxTopLevelWindow& window) {
    return !window.IsMaximized() && !window.IsIconized() && !window.IsFullScreen() &&
           !IsTiled(window);
}

int64_t SharedArea(const wxRect& one, const wxRect& other) {
    const wxRect shared = one.Intersect(other);
    return shared.IsEmpty() ? 0 : int64_t{shared.width} * shared.height;
}

// Holds the window at a place while it comes up or comes back.
void Want(wxTopLevelWindow& window, const wxRect& place) {
    WatchedPlace& watched = Watched(window);
    watched.Wanted = place;
    watched.Corrections = kCorrections;
    watched.SinceInactive.Start();
}

void ApplyPlace(wxTopLevelWindow& window, const wxRect& place) {
    MoveFrame(window, place.GetPosition());
    SetInnerSize(window, place.GetSize());
}

// Puts a new window where it asked to be. Window managers may place a new window where they like,
// but grant a move of one that is shown. Some forget the free size of a window that comes up
// maximised, so the time runs only while it is free. Changes that come later are the user's.
void CorrectPlace(wxTopLevelWindow& window) {
    WatchedPlace& watched = Watched(window);
    if (!window.IsActive() || !IsFree(window)) {
        watched.SinceInactive.Start();
        return;
    }
    if (watched.SinceInactive.Time() > kSettlingMilliseconds) {
        watched.Wanted.reset();
    }
    if (watched.Wanted && GetInnerPlace(window) != *watched.Wanted && watched.Corrections > 0) {
        --watched.Corrections;
        ApplyPlace(window, *watched.Wanted);
    }
}

// Keeps the present place once it has lasted. A window that is being maximised hears of its new
// place before it hears of its new state, and must not take that place for its free one.
void NotePlace(const wxTopLevelWindow& window) {
    WatchedPlace& watched = Watched(window);
    const bool isFree = IsFree(window);
    const wxRect present = isFree ? GetInnerPlace(window) : watched.Latest;
    if (isFree == watched.IsFree && present == watched.Latest) {
        return;
    }
    if (watched.IsFree && watched.SinceLatest.Time() > kSettlingMilliseconds) {
        watched.Kept.Free = watched.Latest;
        watched.WasFree = true;
    }
    if (isFree || watched.WasFree) {
        watched.Kept.Maximised = window.IsMaximized();
    }
    watched.IsFree = isFree;
    watched.Latest = isFree ? present : watched.Kept.Free;
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

wxString FormatSize(const WindowPlace& place) {
    const wxString size = wxString::Format("%i,%i", place.Free.width, place.Free.height);
    return place.Maximised ? size + "," + kMaximised : size;
}

bool ParseSize(const wxString& text, WindowPlace& place) {
    wxString size = text;
    const bool maximised = text.EndsWith(wxString(",") + kMaximised, &size);
    wxRect read;
    if (!ParsePlace("0,0," + size, read)) {
        return false;
    }
    place.Free.SetSize(read.GetSize());
    place.Maximised = maximised;
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
    SetInnerSize(window, window.GetSize());
    Watched(window).Kept.Free = Watched(window).Latest = GetInnerPlace(window);
    window.Bind(wxEVT_IDLE, [&window](wxIdleEvent& event) {
        event.Skip();
        if (window.IsShown()) {
            CorrectPlace(window);
            NotePlace(window);
        }
    });
    window.Bind(wxEVT_SHOW, [&window](wxShowEvent& event) {
        event.Skip();
        WatchedPlace& watched = Watched(window);
        watched.SinceLatest.Start();
        if (!event.IsShown()) {
            watched.WasHidden = true;
        } else if (watched.WasHidden) {
            // The window manager treats it as a new window.
            Want(window, watched.Latest);
        }
    });
    window.Bind(wxEVT_DESTROY, [&window](wxWindowDestroyEvent& event) {
        event.Skip();
        if (event.GetEventObject() == &window) {
            WatchedPlaces().erase(&window);
        }
    });
}

void MoveToPlace(wxTopLevelWindow& window, const WindowPlace& place) {
    WatchedPlace& watched = Watched(window);
    watched.Kept = place;
    if (!HasWindowPlaces()) {
        watched.Kept.Free.SetPosition({0, 0});
    }
    watched.Latest = watched.Kept.Free;
    watched.IsFree = true;
    ApplyPlace(window, watched.Latest);
    watched.Wanted.reset();
    if (!window.IsShown()) {
        Want(window, watched.Latest);
        window.Maximize(place.Maximised);
    }
}

WindowPlace GetPlace(const wxTopLevelWindow& window) {
    if (WatchedPlaces().count(&window) == 0) {
        return {GetInnerPlace(window), window.IsMaximized()};
    }
    WatchedPlace& watched = Watched(window);
    if (!window.IsShown()) {
        return {watched.Latest, watched.Kept.Maximised};
    }
    if (IsFree(window)) {
        return {GetInnerPlace(window), false};
    }
    NotePlace(window);
    return watched.Kept;
}

void TakeTurnOf(const wxTopLevelWindow& shown, wxTopLevelWindow& window) {
    if (!HasWindowPlaces() && shown.IsShown() && !window.IsShown()) {
        MoveToPlace(window, GetPlace(shown));
        window.Maximize(shown.IsMaximized());
    }
}
