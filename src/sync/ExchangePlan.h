#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <vector>

#include "sync/ExchangeFolder.h"

// Which files of the folder are taken next, in which order. Each machine's files of changes are
// taken one after the other, and each only after all that its machine had taken before it wrote
// it. So a change never comes before the one that it replaced. Where a file is gone for good, a
// whole copy that holds its changes takes its place.
struct ExchangePlan {
    // They belong to the list of files.
    std::vector<const FoundFile*> Files;
    // What is taken from each machine once all of them are.
    std::map<uint64_t, int64_t> Taken;
    // The machines of which something is still on its way.
    std::set<uint64_t> WaitsFor;
};

// Files that are broken are left out. With isJoining a whole copy comes first.
ExchangePlan MakePlan(const std::vector<FoundFile>& files,
                      const std::set<std::filesystem::path>& broken, uint64_t machine,
                      std::map<uint64_t, int64_t> taken, bool isJoining, bool waitsForOthers);

// Returns the number up to which the changes of each machine are in a whole copy.
std::map<uint64_t, int64_t> CoverageOf(const ExchangeHeader& header);
// Returns true when one has all that the other has.
bool Covers(const std::map<uint64_t, int64_t>& one, const std::map<uint64_t, int64_t>& other);
// Returns true when the folder has the changes, by themselves or in a whole copy.
bool IsInFolder(const std::vector<FoundFile>& files, uint64_t machine, int64_t number);
