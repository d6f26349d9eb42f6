#pragma once

#include <array>
#include <filesystem>

// The files that the engine keeps beside a store. They belong to it, and one that was left behind
// would be played back into the next store of that name.

// What the engine adds to the store's name for them.
constexpr std::array<const char*, 3> kCompanions = {"-journal", "-wal", "-shm"};

// Returns the path of a file whose name is the store's with a suffix.
std::filesystem::path Beside(std::filesystem::path store, const char* suffix);

// Deletes them. Call it only when they hold no changes that the store still needs.
void RemoveCompanions(const std::filesystem::path& store);
