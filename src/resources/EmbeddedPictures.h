#pragma once

#include <cstddef>

// One picture in the program, as the bytes of a PNG file.
struct EmbeddedPicture {
    // The lower-case name of its source without extension.
    const char* Name;
    // Edge in pixels.
    int Size;
    const unsigned char* Bytes;
    size_t Length;
};

// Made at build time from the sources in icons/.
extern const EmbeddedPicture kEmbeddedPictures[];
extern const size_t kEmbeddedPictureCount;
