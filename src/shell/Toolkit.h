#pragma once

#include <wx/arrstr.h>
#include <wx/gdicmn.h>
#include <wx/string.h>

#include <functional>
#include <vector>

class wxBitmap;
class wxColour;
class wxListCtrl;
class wxRadioBox;
class wxScrolledWindow;
class wxSpinCtrl;
class wxStaticText;
class wxTextCtrl;
class wxToolBar;
class wxTopLevelWindow;
class wxWindow;

// What the windowing library leaves out and the platform's own toolkit has. Only Toolkit.cpp calls
// the platform; elsewhere each function does the next best thing that the library offers, which may
// be nothing. Main thread only.

// Sets what a screen reader says for a window that has no words of its own: one that paints itself,
// or a control whose label stands beside it.
void SetAccessibleName(const wxWindow& window, const wxString& name);

// Sets what a screen reader says after the name of a window.
void SetAccessibleDescription(const wxWindow& window, const wxString& description);

// Lets screen readers say the labels of tools that show pictures alone.
void NameTools(wxToolBar& bar);

// Sets the kind of control that a screen reader announces for a window that paints itself. The
// library's own controls announce theirs.
enum class AccessibleRole { Button, List, Label, Chart };
void SetAccessibleRole(const wxWindow& window, AccessibleRole role);

// Makes every one-line text field inside a window as high as the platform draws it with its font.
// The library reserves too little, and the error grows with the font. Call it before the window is
// laid out and after a change of the fields' font.
void FitTextHeights(wxWindow& window);

// Switches on the pictures of menu entries, which some desktops hide by default. Harmless when
// called again.
void ShowMenuPictures();

// Returns the child of a list control that draws the rows and takes the keyboard focus. It covers
// whatever else stands in the control.
wxWindow& GetRowsWindow(wxListCtrl& list);

// Gives the column headings the desktop's font back after the list got another one, since their
// height stays the desktop's.
void KeepHeadingFont(wxListCtrl& list);

// Makes a screen reader say the row that the keys act on, or what the whole list holds when the row
// text is empty.
void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole);

// Finds what has the keyboard focus inside a form, parts of a control included. Returns an identity
// to compare with and never to use, or null when the focus is elsewhere. Place receives its
// rectangle in pixels of the form's window.
const void* FindFocusInside(const wxScrolledWindow& form, wxRect& place);

// Shows the scroll bars of a form for as long as there is something to scroll. By default this
// platform shows them only while the mouse moves, and nothing tells that a form goes on.
void KeepScrollBarVisible(wxScrolledWindow& form);

// Calls a function for each window after the user has changed the desktop's theme or text size,
// until the program ends. The call comes from the event loop once the platform has restyled the
// window: soon for one on the screen, for another when it is shown.
void WatchDesktop(std::function<void(wxTopLevelWindow&)> onChange);

// Lets a window and all that stands in it take the desktop's present colours and text sizes. The
// library does so for most controls; lists keep the colours and forms the sizes that were right
// when they were made.
void TakeDesktopStyle(wxWindow& window);

// Asks before a spin control writes its number in place of the text that the user typed: while the
// function returns true for that text and number, the text stays. Elsewhere than on this platform
// the number replaces the text.
using SpinTextGuard = bool (*)(const wxString& text, double number);
void KeepSpinText(const wxSpinCtrl& control, SpinTextGuard keepsText);

// Shows a text, greyed, in a text field of any kind while it is empty. It is no part of what the
// user typed. An empty text shows none.
void ShowWhileEmpty(const wxWindow& field, const wxString& text);

// Lets the arrow keys choose in a group of choices. By default they move the focus alone here, and
// Return would then act on another choice than the one that the keys are at.
void LetArrowsChoose(const wxRadioBox& group);

// Entitles a window to come to the front, with the token that another process got when the user
// started it. The next Raise uses it up. Without effect where the desktop knows no such tokens.
void UseActivationToken(const wxTopLevelWindow& window, const wxString& token);
// Returns a token for a call by a process that got none. The window then comes to the front, or the
// desktop shows that it wants to. Empty where the desktop knows no such tokens.
wxString MakeActivationToken();

// Returns whether programs may know and choose where their windows lie. On Wayland they may not.
bool HasWindowPlaces();

// Returns a window's place in pixels: the corner of the frame around it, and the size inside that
// frame. The library's own sizes count frames and shadows in or not, depending on the desktop. The
// corner is 0,0 where windows have no places.
wxRect GetInnerPlace(const wxTopLevelWindow& window);
// Gives a window that size inside its frame, whether it is shown or not.
void SetInnerSize(wxTopLevelWindow& window, const wxSize& size);
// Moves the corner of the frame. Does nothing where windows have no places.
void MoveFrame(wxTopLevelWindow& window, const wxPoint& corner);

// Returns whether the user has pressed a key or moved the mouse, or the desktop has sent something
// else, that the program has not taken notice of yet.
bool HasInputWaiting();

// Returns whether the desktop has fitted a window to a part of the screen, such as its left half.
bool IsTiled(const wxTopLevelWindow& window);

// Opens an address in the desktop's program for web pages. Returns false if there is none. The
// address arrives unchanged, even with a section of a local page.
bool OpenInBrowser(const wxString& address);

// Returns the radius of the corners that the desktop's theme gives to buttons, in logical pixels.
int GetThemeCornerRadius();

// A piece of a text and how it is marked. The marks differ in form; a colour comes in addition.
enum class TextMark { None, Wavy, Underlined, Struck };
struct MarkedText {
    wxString Text;
    TextMark Mark = TextMark::None;
};
// Shows the pieces as one text in their own direction of writing, wrapped at a width in pixels, on
// a background of that colour. Returns the height that they need. Elsewhere the marks are missing.
int SetMarkedText(wxStaticText& window, const std::vector<MarkedText>& pieces,
                  const wxColour& background, int width);

// Returns a text with its accents composed with their letters, as in U+00E9, where that is possible
// (normalisation form C). Elsewhere returns it as it is.
wxString ComposeText(const wxString& text);
// Returns what is left of a text when case, width and other forms of the same letters play no part;
// accents are characters of their own after it. Elsewhere returns it in lower case.
wxString FoldText(const wxString& text);
// Returns whether a character is a mark that belongs to the letter before it.
bool IsMark(wxUniChar character);

// Takes files and pictures that are dropped on a text of several lines, whose cursor is where they
// were dropped. Text goes on to be dropped as ever: the library's own way would take it a second
// time. The functions are called in the middle of the drag, which waits for them.
struct TextDrops {
    std::function<void(const wxArrayString& paths)> TakeFiles;
    std::function<void(const wxBitmap& picture)> TakePicture;
};
void LetDrop(wxTextCtrl& field, TextDrops drops);

// Returns with how many points an inch texts are drawn on a bitmap. The desktop's text size counts,
// and the scale of the screen does not.
double TextResolution();

// Sends the event of a pressed button from a control that paints itself.
void SendPress(wxWindow& control);

// Returns a colour with that part, 0 to 1, of the other one in it.
wxColour MixColours(const wxColour& colour, const wxColour& other, double part);
