#pragma once

#include <atomic>

#include "media/PictureFile.h"

// A picture of drawing commands can ask for more time and memory than there is, and its reader
// cannot be interrupted. So the program starts itself once more for one picture, with a limit on
// both, and takes the finished points from a pipe.

// Draws the picture in an open file in a process of its own.
PictureFault DrawInProcess(int file, const PictureSize& room, const std::atomic<bool>& isCancelled,
                           PicturePixels& pixels);

// Call it first in main. Returns -1 unless this process was started to draw; else it has drawn, and
// main returns the result.
int DrawIfAsked(int argc, char** argv);
