#include "resources/ResourceBitmap.h"

#include <wx/bitmap.h>
#include <wx/filename.h>
#include <wx/icon.h>
#include <wx/image.h>
#include <wx/imagpng.h>
#include <wx/mstream.h>
#include <wx/vector.h>

#include "base/Text.h"
#include "resources/EmbeddedPictures.h"

namespace {

const char kApplicationIconName[] = "velomind";

// Returns every size of the picture of that lower-case name, or nothing for an unknown name.
wxVector<wxBitmap> LoadPictures(const wxString& name) {
    wxVector<wxBitmap> bitmaps;
    for (size_t i = 0; i < kEmbeddedPictureCount; ++i) {
        const EmbeddedPicture& picture = kEmbeddedPictures[i];
        if (name != picture.Name) {
            continue;
        }
        // A handler of its own makes the pictures independent of those that the program registers.
        wxPNGHandler handler;
        wxMemoryInputStream stream(picture.Bytes, picture.Length);
        wxImage image;
        if (handler.LoadFile(&image, stream, false)) {
            bitmaps.push_back(wxBitmap(image));
        }
    }
    return bitmaps;
}

}  // namespace

wxBitmapBundle LoadResourceBitmap(const wxString& path) {
    wxString menuPath = path;
    menuPath.Replace("tool", "menu");
    const wxString name = LowerWide(wxFileName(menuPath).GetName());
    if (name == kApplicationIconName) {
        return wxBitmapBundle();
    }
    return wxBitmapBundle::FromBitmaps(LoadPictures(name));
}

wxIconBundle LoadApplicationIcon() {
    wxIconBundle icons;
    for (const wxBitmap& bitmap : LoadPictures(kApplicationIconName)) {
        wxIcon icon;
        icon.CopyFromBitmap(bitmap);
        icons.AddIcon(icon);
    }
    return icons;
}
