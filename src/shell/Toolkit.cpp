#include "shell/Toolkit.h"

#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/defs.h>
#include <wx/listctrl.h>
#include <wx/panel.h>
#include <wx/radiobox.h>
#include <wx/scrolwin.h>
#include <wx/settings.h>
#include <wx/spinctrl.h>
#include <wx/stattext.h>
#include <wx/statusbr.h>
#include <wx/textctrl.h>
#include <wx/toolbar.h>
#include <wx/toplevel.h>
#include <wx/utils.h>

#ifdef __WXGTK__

#include <gtk/gtk.h>
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/gdkwayland.h>
#endif

#include <algorithm>
#include <cstddef>
#include <utility>

#include "shell/WaylandToken.h"

namespace {

// Room above and below the line of a text field, for its frame.
constexpr int kFrame = 3;

// Returns the widget that holds the focus when the window does. A text of several lines stands
// inside a scrolled window, and an editable choice holds an entry.
GtkWidget* FindInner(GtkWidget* widget) {
    const bool hasInner =
        GTK_IS_SCROLLED_WINDOW(widget) ||
        (GTK_IS_COMBO_BOX(widget) && gtk_combo_box_get_has_entry(GTK_COMBO_BOX(widget)) != FALSE);
    GtkWidget* const child = hasInner ? gtk_bin_get_child(GTK_BIN(widget)) : nullptr;
    return child == nullptr ? widget : child;
}

}  // namespace

void SetAccessibleName(const wxWindow& window, const wxString& name) {
    GtkWidget* const widget = window.GetHandle();
    if (widget == nullptr) {
        return;
    }
    for (GtkWidget* const named : {widget, FindInner(widget)}) {
        atk_object_set_name(gtk_widget_get_accessible(named), name.utf8_str());
    }
}

void SetAccessibleDescription(const wxWindow& window, const wxString& description) {
    GtkWidget* const widget = window.GetHandle();
    if (widget != nullptr) {
        atk_object_set_description(gtk_widget_get_accessible(widget), description.utf8_str());
    }
}

void NameTools(wxToolBar& bar) {
    GtkWidget* const widget = bar.GetHandle();
    GtkWidget* const tools = GTK_IS_TOOLBAR(widget) ? widget : gtk_bin_get_child(GTK_BIN(widget));
    for (size_t i = 0; i < bar.GetToolsCount(); ++i) {
        GtkToolItem* const item = gtk_toolbar_get_nth_item(GTK_TOOLBAR(tools), static_cast<int>(i));
        GtkWidget* const button = item == nullptr ? nullptr : gtk_bin_get_child(GTK_BIN(item));
        if (button != nullptr) {
            atk_object_set_name(gtk_widget_get_accessible(button),
                                bar.GetToolByPos(static_cast<int>(i))->GetLabel().utf8_str());
        }
    }
}

void SetAccessibleRole(const wxWindow& window, AccessibleRole role) {
    // In the order of AccessibleRole.
    constexpr AtkRole kRoles[] = {ATK_ROLE_PUSH_BUTTON, ATK_ROLE_LIST, ATK_ROLE_LABEL,
                                  ATK_ROLE_CHART};
    GtkWidget* const widget = window.GetHandle();
    if (widget != nullptr) {
        atk_object_set_role(gtk_widget_get_accessible(FindInner(widget)),
                            kRoles[static_cast<size_t>(role)]);
    }
}

void FitTextHeights(wxWindow& window) {
    const auto* const text = dynamic_cast<const wxTextCtrl*>(&window);
    if (text != nullptr && text->IsSingleLine()) {
        // Drops the minimum set last time, which would count as wanted.
        window.SetMinSize(wxSize(window.GetMinWidth(), -1));
        int height = 0;
        gtk_widget_get_preferred_height(window.GetHandle(), nullptr, &height);
        // The platform learns of a new font only a little later.
        height = std::max(height, window.GetCharHeight() + 2 * window.FromDIP(kFrame));
        window.SetMinSize(wxSize(window.GetMinWidth(), height));
    }
    for (wxWindow* const child : window.GetChildren()) {
        FitTextHeights(*child);
    }
}

namespace {

wxString TakeText(char* text) {
    const wxString taken = wxString::FromUTF8(text == nullptr ? "" : text);
    g_free(text);
    return taken;
}

}  // namespace

wxString ComposeText(const wxString& text) {
    return TakeText(g_utf8_normalize(text.utf8_str(), -1, G_NORMALIZE_DEFAULT_COMPOSE));
}

wxString FoldText(const wxString& text) {
    const wxString parts = TakeText(g_utf8_normalize(text.utf8_str(), -1, G_NORMALIZE_ALL));
    return TakeText(g_utf8_casefold(parts.utf8_str(), -1));
}

bool IsMark(wxUniChar character) {
    return g_unichar_ismark(character.GetValue()) != FALSE;
}

int GetThemeCornerRadius() {
    GtkWidget* const button = gtk_button_new();
    g_object_ref_sink(button);
    int radius = 0;
    gtk_style_context_get(gtk_widget_get_style_context(button), GTK_STATE_FLAG_NORMAL,
                          "border-radius", &radius, nullptr);
    g_object_unref(button);
    return radius;
}

int SetMarkedText(wxStaticText& window, const std::vector<MarkedText>& pieces,
                  const wxColour& background, int width) {
    const bool isDark = background.GetLuminance() < 0.5;
    const std::string error = std::string(" foreground='") + (isDark ? "#ff9b8f'" : "#b00020'");
    // In the order of TextMark.
    const std::string kMarks[] = {"", " underline='error'",
                                  " underline='double' weight='bold'" + error,
                                  " strikethrough='true'" + error};
    std::string markup;
    for (const MarkedText& piece : pieces) {
        char* const text = g_markup_escape_text(piece.Text.utf8_str(), -1);
        markup += "<span" + kMarks[static_cast<size_t>(piece.Mark)] + ">" + text + "</span>";
        g_free(text);
    }
    auto* const label = GTK_LABEL(window.GetHandle());
    gtk_label_set_line_wrap(label, TRUE);
    gtk_label_set_line_wrap_mode(label, PANGO_WRAP_WORD_CHAR);
    gtk_label_set_markup(label, markup.c_str());
    PangoLayout* const layout = gtk_widget_create_pango_layout(window.GetHandle(), nullptr);
    pango_layout_set_markup(layout, markup.c_str(), -1);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_width(layout, width * PANGO_SCALE);
    int height = 0;
    pango_layout_get_pixel_size(layout, nullptr, &height);
    g_object_unref(layout);
    return height;
}

void ShowMenuPictures() {
    GtkSettings* const settings = gtk_settings_get_default();
    if (settings != nullptr) {
        g_object_set(settings, "gtk-menu-images", TRUE, nullptr);
    }
}

// The platform is asked, since parts of a control, such as the button of a choice, take the focus
// without an event of the library.
const void* FindFocusInside(const wxScrolledWindow& form, wxRect& place) {
    GtkWidget* const inside = form.m_wxwindow;
    GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(gtk_widget_get_toplevel(inside)));
    if (focus == nullptr || gtk_widget_is_ancestor(focus, inside) == FALSE ||
        gtk_widget_translate_coordinates(focus, inside, 0, 0, &place.x, &place.y) == FALSE) {
        return nullptr;
    }
    place.SetSize(
        wxSize(gtk_widget_get_allocated_width(focus), gtk_widget_get_allocated_height(focus)));
    return focus;
}

void KeepScrollBarVisible(wxScrolledWindow& form) {
    if (GTK_IS_SCROLLED_WINDOW(form.m_widget)) {
        gtk_scrolled_window_set_overlay_scrolling(GTK_SCROLLED_WINDOW(form.m_widget), FALSE);
    }
}

namespace {

// Called for each window that the platform has restyled.
std::function<void(wxTopLevelWindow&)> gOnRestyled;

// Runs in the next frame of a window that is on the screen, just before it is restyled.
gboolean OnFrame(GtkWidget* /*widget*/, GdkFrameClock* /*clock*/, void* data) {
    auto* const window = static_cast<wxTopLevelWindow*>(data);
    window->CallAfter([window] { gOnRestyled(*window); });
    return G_SOURCE_REMOVE;
}

// Runs when a hidden window is shown.
void OnMap(GtkWidget* widget, void* data) {
    g_signal_handlers_disconnect_matched(widget, G_SIGNAL_MATCH_FUNC, 0, 0, nullptr,
                                         reinterpret_cast<void*>(&OnMap), nullptr);
    gtk_widget_add_tick_callback(widget, OnFrame, data, nullptr);
}

void OnDesktopChange() {
    for (wxWindow* const window : wxTopLevelWindows) {
        auto* const top = dynamic_cast<wxTopLevelWindow*>(window);
        GtkWidget* const widget = top == nullptr ? nullptr : top->GetHandle();
        if (widget == nullptr) {
            continue;
        }
        if (gtk_widget_get_mapped(widget) != FALSE) {
            gtk_widget_add_tick_callback(widget, OnFrame, top, nullptr);
        } else {
            g_signal_connect(widget, "map", G_CALLBACK(OnMap), top);
        }
    }
}

// The library keeps the colours of a theme until it hears of another name.
void OnVariant(GtkSettings* settings) {
    g_object_notify(G_OBJECT(settings), "gtk-theme-name");
}

}  // namespace

void WatchDesktop(std::function<void(wxTopLevelWindow&)> onChange) {
    gOnRestyled = std::move(onChange);
    GtkSettings* const settings = gtk_settings_get_default();
    for (const char* const signal : {"notify::gtk-theme-name", "notify::gtk-xft-dpi"}) {
        g_signal_connect_swapped(settings, signal, G_CALLBACK(OnDesktopChange), nullptr);
    }
    g_signal_connect(settings, "notify::gtk-application-prefer-dark-theme", G_CALLBACK(OnVariant),
                     nullptr);
}

namespace {

// Makes the list measure its rows again, which it does only for another font.
void MeasureRows(wxListCtrl& list) {
    const wxFont font = list.GetFont();
    list.SetFont(font.Larger());
    list.SetFont(font);
    const wxWindow& rows = GetRowsWindow(list);
    for (wxWindow* const child : list.GetChildren()) {
        if (child != &rows) {
            // The list asks for the height of its headings only when it makes them.
            child->SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
            child->SetMinSize(wxSize(-1, child->GetCharHeight() + 2 * list.FromDIP(kFrame)));
        }
    }
    list.Layout();
}

void TakeListColours(wxListCtrl& list) {
    const wxVisualAttributes colours = wxListCtrl::GetClassDefaultAttributes();
    list.SetOwnForegroundColour(colours.colFg);
    list.SetOwnBackgroundColour(colours.colBg);
    const wxWindow& rows = GetRowsWindow(list);
    for (wxWindow* const child : list.GetChildren()) {
        child->SetOwnForegroundColour(colours.colFg);
        if (child == &rows) {
            child->SetOwnBackgroundColour(colours.colBg);
        }
    }
}

void ForgetSizes(wxWindow& window) {
    window.InvalidateBestSize();
    if (auto* const list = dynamic_cast<wxListCtrl*>(&window)) {
        TakeListColours(*list);
        MeasureRows(*list);
    }
    if (auto* const bar = dynamic_cast<wxStatusBar*>(&window)) {
        // The library asks the platform for this height only when a frame takes the bar.
        gtk_widget_set_size_request(bar->GetHandle(), -1, bar->GetCharHeight() * 5 / 4);
    }
    for (wxWindow* const child : window.GetChildren()) {
        ForgetSizes(*child);
    }
}

}  // namespace

void TakeDesktopStyle(wxWindow& window) {
    ForgetSizes(window);
    // Windows that paint themselves measure and colour anew when they get this event.
    wxSysColourChangedEvent event;
    event.SetEventObject(&window);
    window.HandleWindowEvent(event);
    FitTextHeights(window);
    window.SendSizeEvent();
    window.Refresh();
}

void KeepSpinText(const wxSpinCtrl& control, SpinTextGuard keepsText) {
    // Returns TRUE to tell the platform that the text stands as it should.
    gboolean (*const onWrite)(GtkSpinButton*, void*) = [](GtkSpinButton* button, void* guard) {
        const wxString text = wxString::FromUTF8(gtk_entry_get_text(GTK_ENTRY(button)));
        return static_cast<gboolean>(
            reinterpret_cast<SpinTextGuard>(guard)(text, gtk_spin_button_get_value(button)));
    };
    g_signal_connect(control.GetHandle(), "output", G_CALLBACK(onWrite),
                     reinterpret_cast<void*>(keepsText));
}

namespace {

constexpr char kEmptyText[] = "velomind-empty-text";

// Draws over a text of several lines, for which the platform has no such text of its own.
gboolean DrawEmptyText(GtkWidget* widget, cairo_t* context, void* /*data*/) {
    const auto* const text =
        static_cast<const char*>(g_object_get_data(G_OBJECT(widget), kEmptyText));
    auto* const view = GTK_TEXT_VIEW(widget);
    if (text == nullptr || gtk_text_buffer_get_char_count(gtk_text_view_get_buffer(view)) > 0) {
        return FALSE;
    }
    int x = 0;
    int y = 0;
    gtk_text_view_buffer_to_window_coords(view, GTK_TEXT_WINDOW_WIDGET, 0, 0, &x, &y);
    GdkRGBA colour;
    gtk_style_context_get_color(gtk_widget_get_style_context(widget), GTK_STATE_FLAG_INSENSITIVE,
                                &colour);
    gdk_cairo_set_source_rgba(context, &colour);
    PangoLayout* const layout = gtk_widget_create_pango_layout(widget, text);
    cairo_move_to(context, x, y);
    pango_cairo_show_layout(context, layout);
    g_object_unref(layout);
    return FALSE;
}

}  // namespace

namespace {

enum DropKind : guint { kNoDrop, kFilesDrop, kPictureDrop };

// Puts the cursor to a place in the widget.
void PlaceCursor(GtkTextView* view, int x, int y) {
    GtkTextIter place;
    gtk_text_view_window_to_buffer_coords(view, GTK_TEXT_WINDOW_WIDGET, x, y, &x, &y);
    gtk_text_view_get_iter_at_location(view, &place, x, y);
    gtk_text_buffer_place_cursor(gtk_text_view_get_buffer(view), &place);
}

// Returns the files among the addresses that were dropped, which may also be those of pages.
wxArrayString FilesOf(GtkSelectionData* data) {
    wxArrayString files;
    gchar** const addresses = gtk_selection_data_get_uris(data);
    for (gchar** address = addresses; address != nullptr && *address != nullptr; ++address) {
        gchar* const file = g_filename_from_uri(*address, nullptr, nullptr);
        if (file != nullptr) {
            files.push_back(wxString(file, *wxConvFileName));
        }
        g_free(file);
    }
    g_strfreev(addresses);
    return files;
}

void OnDropData(GtkWidget* widget, GdkDragContext* context, gint x, gint y, GtkSelectionData* data,
                guint kind, guint time, gpointer drops) {
    if (kind != kFilesDrop && kind != kPictureDrop) {
        return;
    }
    g_signal_stop_emission_by_name(widget, "drag-data-received");
    const auto& functions = *static_cast<const TextDrops*>(drops);
    const wxArrayString files = kind == kFilesDrop ? FilesOf(data) : wxArrayString();
    GdkPixbuf* const picture = kind == kPictureDrop ? gtk_selection_data_get_pixbuf(data) : nullptr;
    const bool isTaken = !files.empty() || picture != nullptr;
    if (isTaken) {
        PlaceCursor(GTK_TEXT_VIEW(widget), x, y);
    }
    gtk_drag_finish(context, isTaken ? TRUE : FALSE, FALSE, time);
    if (!files.empty()) {
        functions.TakeFiles(files);
    } else if (picture != nullptr) {
        // The bitmap takes the picture over.
        functions.TakePicture(wxBitmap(picture));
    }
}

}  // namespace

void LetDrop(wxTextCtrl& field, TextDrops drops) {
    GtkWidget* const widget = FindInner(field.GetHandle());
    if (!GTK_IS_TEXT_VIEW(widget)) {
        return;
    }
    GtkTargetList* const targets = gtk_drag_dest_get_target_list(widget);
    gtk_target_list_add_uri_targets(targets, kFilesDrop);
    gtk_target_list_add_image_targets(targets, kPictureDrop, FALSE);
    const GClosureNotify forget = [](gpointer data, GClosure*) {
        delete static_cast<TextDrops*>(data);
    };
    g_signal_connect_data(widget, "drag-data-received", G_CALLBACK(OnDropData),
                          new TextDrops(std::move(drops)), forget, GConnectFlags{});
}

void ShowWhileEmpty(const wxWindow& field, const wxString& text) {
    GtkWidget* const widget = FindInner(field.GetHandle());
    if (GTK_IS_ENTRY(widget)) {
        gtk_entry_set_placeholder_text(GTK_ENTRY(widget), text.utf8_str());
    } else if (GTK_IS_TEXT_VIEW(widget)) {
        g_signal_handlers_disconnect_by_func(widget, reinterpret_cast<void*>(DrawEmptyText),
                                             nullptr);
        g_object_set_data_full(G_OBJECT(widget), kEmptyText,
                               text.empty() ? nullptr : g_strdup(text.utf8_str()), g_free);
        if (!text.empty()) {
            g_signal_connect_after(widget, "draw", G_CALLBACK(DrawEmptyText), nullptr);
        }
        gtk_widget_queue_draw(widget);
    }
}

namespace {

// Comes to the button that the focus has moved to.
gboolean OnRadioKeyUp(GtkWidget* button, GdkEventKey* event, void* /*data*/) {
    const guint key = event->keyval;
    if (key == GDK_KEY_Up || key == GDK_KEY_Down || key == GDK_KEY_Left || key == GDK_KEY_Right) {
        gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), TRUE);
    }
    return FALSE;
}

void WatchRadioButtons(GtkWidget* widget, void* /*data*/) {
    if (GTK_IS_RADIO_BUTTON(widget)) {
        g_signal_connect(widget, "key-release-event", G_CALLBACK(OnRadioKeyUp), nullptr);
    } else if (GTK_IS_CONTAINER(widget)) {
        gtk_container_forall(GTK_CONTAINER(widget), WatchRadioButtons, nullptr);
    }
}

}  // namespace

void LetArrowsChoose(const wxRadioBox& group) {
    WatchRadioButtons(group.GetHandle(), nullptr);
}

void UseActivationToken(const wxTopLevelWindow& window, const wxString& token) {
    gtk_window_set_startup_id(GTK_WINDOW(window.GetHandle()), token.utf8_str());
}

wxString MakeActivationToken() {
#ifdef GDK_WINDOWING_WAYLAND
    GdkDisplay* const display = gdk_display_get_default();
    if (GDK_IS_WAYLAND_DISPLAY(display)) {
        return RequestWaylandToken(gdk_wayland_display_get_wl_display(display));
    }
#endif
    return wxString();
}

bool OpenInBrowser(const wxString& address) {
    GAppInfo* const browser = g_app_info_get_default_for_type("text/html", TRUE);
    if (browser == nullptr) {
        return false;
    }
    GdkAppLaunchContext* const context =
        gdk_display_get_app_launch_context(gdk_display_get_default());
    const wxScopedCharBuffer uri = address.utf8_str();
    GList uris = {const_cast<char*>(uri.data()), nullptr, nullptr};
    const gboolean started =
        g_app_info_launch_uris(browser, &uris, G_APP_LAUNCH_CONTEXT(context), nullptr);
    g_object_unref(context);
    g_object_unref(browser);
    return started != FALSE;
}

bool HasWindowPlaces() {
#ifdef GDK_WINDOWING_WAYLAND
    return !GDK_IS_WAYLAND_DISPLAY(gdk_display_get_default());
#else
    return true;
#endif
}

bool HasInputWaiting() {
    return gdk_events_pending() != FALSE;
}

wxRect GetInnerPlace(const wxTopLevelWindow& window) {
    auto* const platform = GTK_WINDOW(window.GetHandle());
    wxRect place;
    if (HasWindowPlaces()) {
        gtk_window_get_position(platform, &place.x, &place.y);
    }
    gtk_window_get_size(platform, &place.width, &place.height);
    return place;
}

void SetInnerSize(wxTopLevelWindow& window, const wxSize& size) {
    GtkWidget* const widget = window.GetHandle();
    if (gtk_widget_get_mapped(widget) == FALSE) {
        // When the library learns how thick the frame is, it takes that off the size of a new
        // window, unless the size inside was asked for.
        window.SetClientSize(window.GetClientSize() + size - GetInnerPlace(window).GetSize());
    }
    gtk_window_resize(GTK_WINDOW(widget), size.x, size.y);
}

void MoveFrame(wxTopLevelWindow& window, const wxPoint& corner) {
    if (HasWindowPlaces()) {
        gtk_window_move(GTK_WINDOW(window.GetHandle()), corner.x, corner.y);
    }
}

bool IsTiled(const wxTopLevelWindow& window) {
    constexpr int kTiled = GDK_WINDOW_STATE_TILED | GDK_WINDOW_STATE_TOP_TILED |
                           GDK_WINDOW_STATE_RIGHT_TILED | GDK_WINDOW_STATE_BOTTOM_TILED |
                           GDK_WINDOW_STATE_LEFT_TILED;
    GdkWindow* const platform = gtk_widget_get_window(window.GetHandle());
    return platform != nullptr && (gdk_window_get_state(platform) & kTiled) != 0;
}

double TextResolution() {
    const double told = gdk_screen_get_resolution(gdk_screen_get_default());
    constexpr double kUsual = 96.0;
    return told > 0.0 ? told : kUsual;
}

#else

void SetAccessibleName(const wxWindow& /*window*/, const wxString& /*name*/) {}

void SetAccessibleDescription(const wxWindow& /*window*/, const wxString& /*description*/) {}

void NameTools(wxToolBar& /*bar*/) {}

wxString ComposeText(const wxString& text) {
    return text;
}

wxString FoldText(const wxString& text) {
    return text.Lower();
}

bool IsMark(wxUniChar /*character*/) {
    return false;
}

int GetThemeCornerRadius() {
    constexpr int kUsualRadius = 4;
    return kUsualRadius;
}

int SetMarkedText(wxStaticText& window, const std::vector<MarkedText>& pieces,
                  const wxColour& /*background*/, int width) {
    wxString text;
    for (const MarkedText& piece : pieces) {
        text += piece.Text;
    }
    window.SetLabelText(text);
    window.Wrap(width);
    return window.GetBestSize().y;
}

void SetAccessibleRole(const wxWindow& /*window*/, AccessibleRole /*role*/) {}

void FitTextHeights(wxWindow& /*window*/) {}

void ShowMenuPictures() {}

void KeepScrollBarVisible(wxScrolledWindow& /*form*/) {}

void WatchDesktop(std::function<void(wxTopLevelWindow&)> /*onChange*/) {}

void TakeDesktopStyle(wxWindow& /*window*/) {}

void KeepSpinText(const wxSpinCtrl& /*control*/, SpinTextGuard /*keepsText*/) {}

void ShowWhileEmpty(const wxWindow& /*field*/, const wxString& /*text*/) {}

void LetDrop(wxTextCtrl& /*field*/, TextDrops /*drops*/) {}

const void* FindFocusInside(const wxScrolledWindow& form, wxRect& place) {
    const wxWindow* const focus = wxWindow::FindFocus();
    if (focus == nullptr || focus == &form || !form.IsDescendant(focus)) {
        return nullptr;
    }
    place = wxRect(form.ScreenToClient(focus->GetScreenPosition()), focus->GetSize());
    return focus;
}

void LetArrowsChoose(const wxRadioBox& /*group*/) {}

void UseActivationToken(const wxTopLevelWindow& /*window*/, const wxString& /*token*/) {}

wxString MakeActivationToken() {
    return wxString();
}

bool OpenInBrowser(const wxString& address) {
    return wxLaunchDefaultBrowser(address);
}

bool HasWindowPlaces() {
    return true;
}

bool HasInputWaiting() {
    return false;
}

wxRect GetInnerPlace(const wxTopLevelWindow& window) {
    return window.GetRect();
}

void SetInnerSize(wxTopLevelWindow& window, const wxSize& size) {
    window.SetSize(size);
}

void MoveFrame(wxTopLevelWindow& window, const wxPoint& corner) {
    window.Move(corner);
}

bool IsTiled(const wxTopLevelWindow& /*window*/) {
    return false;
}

double TextResolution() {
    return std::max(wxGetDisplayPPI().y, 1);
}

#endif

wxWindow& GetRowsWindow(wxListCtrl& list) {
    for (wxWindow* const child : list.GetChildren()) {
        // Its name is its only mark; the headings have a name of their own.
        if (child->GetName() == wxPanelNameStr) {
            return *child;
        }
    }
    return list;
}

void KeepHeadingFont(wxListCtrl& list) {
    const wxWindow& rows = GetRowsWindow(list);
    for (wxWindow* const child : list.GetChildren()) {
        if (child != &rows) {
            child->SetFont(wxSystemSettings::GetFont(wxSYS_DEFAULT_GUI_FONT));
        }
    }
}

void TellRow(wxListCtrl& list, const wxString& row, const wxString& whole) {
    wxWindow& rows = GetRowsWindow(list);
    SetAccessibleName(rows, row.empty() ? whole : row);
    SetAccessibleRole(rows, AccessibleRole::List);
}

void SendPress(wxWindow& control) {
    wxCommandEvent pressed(wxEVT_BUTTON, control.GetId());
    pressed.SetEventObject(&control);
    control.ProcessWindowEvent(pressed);
}

wxColour MixColours(const wxColour& colour, const wxColour& other, double part) {
    return wxColour(wxColour::AlphaBlend(other.Red(), colour.Red(), part),
                    wxColour::AlphaBlend(other.Green(), colour.Green(), part),
                    wxColour::AlphaBlend(other.Blue(), colour.Blue(), part));
}
