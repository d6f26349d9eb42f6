#pragma once

#include <wx/string.h>

#include <filesystem>

// The store file as a file among others: its path, its move, its end. Nobody may have the store
// open meanwhile. Files that the engine left beside the store, such as a journal, belong to it, go
// with it, and must never meet another store.

// The name that a store file has unless the user says otherwise.
constexpr char kDefaultStoreName[] = "FlashCards2.vlm";

// Returns the path of the default store, in the user's documents directory, which is created if
// missing.
wxString GetDefaultStorePath();

// Returns the path of the store that the settings name, or the default one where they name none or
// an empty one. isStored tells which.
wxString GetChosenStorePath(bool& isStored);

// Returns the full form of a path, whether or not the file exists. A text that names no store
// (empty, or an address that begins with "file:") stays as it is.
wxString MakeStorePathFull(const wxString& path);

// Returns true for one file under two paths: through a link, or a second name.
bool IsSameFile(const wxString& path, const wxString& other);

// Returns true for a database with the tables of a store, under any name. Do not ask about the open
// store, whose locks would be lost.
bool IsStoreOfCards(const wxString& path);

// Returns true for any database of the store's engine, and for the files that the engine keeps
// beside one. None of them is a text to import. Decides by the first bytes and the name.
bool IsDatabaseFile(const wxString& path);

// The log of reviews lies beside its store and moves with it. Only statistics and what a
// forgotten card keeps need it, so an operation on it that fails is ignored.
constexpr char kReviewLogSuffix[] = ".reviews";

// Returns the path of a store's log of reviews; empty for an empty path.
wxString ReviewLogPath(const wxString& storePath);

// Copies the log of one store to another one, over any log there. Does nothing when the first one
// has none.
void CopyReviewLog(const wxString& fromStore, const wxString& toStore);

// Moves the store to another path, over any plain file there, and across file systems if need be.
// What an exchange keeps beside it goes along. Returns 0, or the system's number of the error,
// EBUSY during an exchange; then the store is whole where it was, and so is the file that it was to
// replace. The cards are in some file at every moment.
int MoveStoreFile(const wxString& from, const wxString& to);

// Moves across file systems: copies, compares byte for byte, and only then deletes. Returns 0, or
// the error's number with the store where it was.
int CopyAndDeleteStoreFile(const wxString& from, const wxString& to);

// Copies a store to another path, over any plain file there, and puts it in place in one step: at
// any moment one or the other is there, whole. Returns 0, or the error's number with the file there
// as it was.
int CopyStoreFile(const wxString& from, const wxString& to);

// Copies a store that nobody can open, with what the engine would need to mend it, to a free path.
// Returns 0 or the error's number.
int KeepStoreFile(const wxString& from, const wxString& to);

// Lets the engine take back what a program that has ended left half done in a store file, so that
// the file is whole by itself. Nothing happens where there is no file.
void PlayBackJournal(const std::filesystem::path& store);

// Replaces a file in one step by a new store without cards, and deletes what the engine left beside
// the file. Returns 0, or the error's number with all of it still there.
int ReplaceByNewStore(const wxString& path);
