#pragma once

#include <cstddef>

// The interface between the source that the build makes of the pictures and the code that loads
// them. It stands alone so that the made source needs no header of the windowing library.

// One picture in the program, as the bytes of a PNG file.
struct EmbeddedPicture {
    // The lower-case name of the drawing, without extension.
    const char* Name;
    // Width and height in pixels.
    int Size;
    const unsigned char* Bytes;
    size_t Length;
};

// The table of all pictures, made at build time from the drawings in icons/.
extern const EmbeddedPicture kEmbeddedPictures[];
extern const size_t kEmbeddedPictureCount;
