#pragma once

#include <sys/stat.h>
#include <wx/event.h>
#include <wx/gdicmn.h>
#include <wx/graphics.h>
#include <wx/string.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "base/Job.h"
#include "media/MediaFolder.h"
#include "media/PictureFile.h"

// The pictures that a window shows. The size of a picture is known at once, so that there is a
// place for it; its points are read by a worker and kept until others need the room. Belongs to a
// window and lives on the main thread.
class CardPictures : private wxEvtHandler {
  public:
    // The function is called when a picture that was asked for can be drawn, or cannot.
    explicit CardPictures(std::function<void()> changed);
    ~CardPictures() override;

    // Takes the pictures of a store from now on; an empty path is none.
    void SetStore(const wxString& storePath);

    // Returns the size of a picture at a scale of 1; empty for one that cannot be shown. Looks
    // whether another file has come under its name, as by an exchange with another computer.
    wxSize FindSize(const wxString& name);

    // Draws a picture into a rectangle of its own proportions, at so many points of the screen for
    // each unit. Returns false when it is not there yet, and begins to read it. A picture that one
    // would not see on a ground of that colour, such as a black formula without a ground of its own
    // on a dark one, gets a sheet behind it.
    bool Draw(wxGraphicsContext& context, const wxString& name, const wxRect& place, double scale,
              const wxColour& ground);
    // The same, but reads a picture at once; for paper, which cannot be drawn again later.
    bool DrawNow(wxGraphicsContext& context, const wxString& name, const wxRect& place,
                 double scale, const wxColour& ground);

    // Forgets what was asked for and has not begun, since another card is shown.
    void DropRequests() { mWanted.clear(); }
    bool IsReading() const { return mpJob != nullptr; }

  private:
    struct Picture {
        struct stat Status {};
        PictureHead Head;
        PictureFault Fault = PictureFault::kNone;
        wxGraphicsBitmap Bitmap;
        PictureSize Points;
        // How light its points are, from 0 to 1; nothing for one that has a ground of its own.
        std::optional<double> Lightness;
        uint64_t LastUse = 0;

        int64_t Bytes() const { return int64_t{4} * Points.Width * Points.Height; }
    };
    struct Request {
        wxString Name;
        PictureSize Points;
    };
    struct Reading;

    Picture* Find(const wxString& name);
    void DropOther(const wxString& name);
    // Returns how many points the picture needs in a place, or nothing where it has them.
    std::optional<PictureSize> FindMissingPoints(Picture& picture, const wxRect& place,
                                                 double scale);
    void Ask(const wxString& name, const PictureSize& points);
    void ReadNext();
    void Finish(int number);
    void Take(Reading& reading);
    static bool DrawInto(wxGraphicsContext& context, const Picture& picture, const wxRect& place,
                         const wxColour& ground);
    void MakeRoom();

    const std::function<void()> mChanged;
    MediaFolder mFolder{wxString()};
    std::map<wxString, Picture> mPictures;
    std::vector<Request> mWanted;
    uint64_t mUses = 0;
    // Counts the readings, so that the late end of one that was given up is known.
    int mNumber = 0;
    // What the worker reads; handed over when it ends.
    std::unique_ptr<Reading> mpReading;
    std::unique_ptr<Job> mpJob;
};
