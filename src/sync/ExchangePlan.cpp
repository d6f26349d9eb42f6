#include "sync/ExchangePlan.h"

#include <algorithm>
#include <utility>

namespace {

using Numbers = std::map<uint64_t, int64_t>;

int64_t NumberOf(const Numbers& numbers, uint64_t machine) {
    const auto found = numbers.find(machine);
    return found == numbers.end() ? 0 : found->second;
}

// How many changes the one has that the other lacks.
int64_t Excess(const Numbers& one, const Numbers& other, uint64_t own) {
    int64_t excess = 0;
    for (const auto& [machine, number] : one) {
        const int64_t more = number - NumberOf(other, machine);
        excess += machine == own ? 0 : std::max<int64_t>(0, more);
    }
    return excess;
}

}  // namespace

std::map<uint64_t, int64_t> CoverageOf(const ExchangeHeader& header) {
    Numbers numbers = header.Taken;
    int64_t& own = numbers[header.Machine];
    own = std::max(own, header.Number);
    return numbers;
}

bool Covers(const std::map<uint64_t, int64_t>& one, const std::map<uint64_t, int64_t>& other) {
    return std::all_of(other.begin(), other.end(), [&one](const auto& machine) {
        return NumberOf(one, machine.first) >= machine.second;
    });
}

bool IsInFolder(const std::vector<FoundFile>& files, uint64_t machine, int64_t number) {
    return std::any_of(files.begin(), files.end(), [&](const FoundFile& file) {
        const ExchangeHeader& header = file.Header;
        return file.State == FileState::kWhole &&
               (header.IsWhole ? NumberOf(CoverageOf(header), machine) >= number
                               : header.Machine == machine && header.Number == number);
    });
}

ExchangePlan MakePlan(const std::vector<FoundFile>& files,
                      const std::set<std::filesystem::path>& broken, uint64_t machine,
                      std::map<uint64_t, int64_t> taken, bool isJoining, bool waitsForOthers) {
    ExchangePlan plan;
    plan.Taken = std::move(taken);
    std::map<std::pair<uint64_t, int64_t>, const FoundFile*> changes;
    std::vector<const FoundFile*> wholes;
    for (const FoundFile& file : files) {
        if (file.State != FileState::kWhole || file.IsDisputed || file.Header.Machine == machine ||
            broken.count(file.Path) > 0) {
            continue;
        }
        if (file.Header.IsWhole) {
            wholes.push_back(&file);
        } else {
            changes[{file.Header.Machine, file.Header.Number}] = &file;
        }
    }
    const auto takeChanges = [&] {
        for (bool isMoving = true; isMoving;) {
            isMoving = false;
            for (const auto& [key, file] : changes) {
                int64_t& last = plan.Taken[key.first];
                const bool isNext = waitsForOthers ? key.second == last + 1 : key.second > last;
                const bool isReady =
                    !waitsForOthers ||
                    std::all_of(file->Header.Taken.begin(), file->Header.Taken.end(),
                                [&](const auto& needed) {
                                    return needed.first == machine || needed.first == key.first ||
                                           NumberOf(plan.Taken, needed.first) >= needed.second;
                                });
                if (isNext && isReady) {
                    last = key.second;
                    plan.Files.push_back(file);
                    isMoving = true;
                }
            }
        }
    };
    if (!isJoining) {
        takeChanges();
    }
    while (!wholes.empty()) {
        const auto best = std::max_element(
            wholes.begin(), wholes.end(), [&](const FoundFile* one, const FoundFile* other) {
                return Excess(CoverageOf(one->Header), plan.Taken, machine) <
                       Excess(CoverageOf(other->Header), plan.Taken, machine);
            });
        const Numbers covered = CoverageOf((*best)->Header);
        if (Excess(covered, plan.Taken, machine) == 0) {
            break;
        }
        plan.Files.push_back(*best);
        for (const auto& [each, number] : covered) {
            if (each != machine) {
                plan.Taken[each] = std::max(NumberOf(plan.Taken, each), number);
            }
        }
        takeChanges();
    }
    takeChanges();
    for (const FoundFile& file : files) {
        if (file.State != FileState::kWhole) {
            continue;
        }
        for (const auto& [each, number] : CoverageOf(file.Header)) {
            if (each != machine && number > NumberOf(plan.Taken, each)) {
                plan.WaitsFor.insert(each);
            }
        }
    }
    // A machine of which nothing was taken needs no number.
    for (auto each = plan.Taken.begin(); each != plan.Taken.end();) {
        each = each->second == 0 ? plan.Taken.erase(each) : std::next(each);
    }
    return plan;
}
