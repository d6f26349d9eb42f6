#pragma once

#include <sys/stat.h>

#include <string>

#include "base/Files.h"

// A text beside the store to which lines are added while others read it or put another file in its
// place. Who adds or replaces locks the file for a moment; the lock is the system's own (flock).

// Locks an open file. Waits for some milliseconds while another program holds the lock. Returns 0,
// EBUSY when that takes longer, or the error's number of a file system that knows no locks. The
// lock ends at the latest when the file is closed.
int LockFile(int descriptor);
void UnlockFile(int descriptor);

// Returns true while the path names the file with this status.
bool IsFileAt(const std::string& path, const struct stat& status);

// Returns the path of the store beside which a log lies.
std::string StoreOfLog(const std::string& logPath);
// Returns the mode that lets those read a file beside a store who may read the store.
mode_t ModeOfStore(const std::string& storePath);

// Opens a file beside a store to add to it, and locks it. A missing file is made, for those who may
// read the store. Returns 0 with the file's status, or the error's number; EINVAL for what is no
// plain file. Does without a lock that cannot be had: a line that is added at the very moment at
// which another file takes the place of this one is then lost.
int OpenToAppend(const std::string& path, const std::string& storePath, FileDescriptor& file,
                 struct stat& status);

// Adds lines in one write, without waiting for the disk. An empty file gets the heading before
// them, and a torn line at the end its line end. Returns 0 or the error's number.
int AppendLines(const std::string& path, const std::string& storePath, const char* heading,
                std::string lines);
