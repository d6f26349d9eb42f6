#include "sync/Carrier.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "support/StoreFixture.h"

namespace {

namespace fs = std::filesystem;

bool Chance(std::mt19937& random, double share) {
    return static_cast<double>(random() % 10000) < share * 10000;
}

// The name that a service gives the second of two files: each in its own way.
std::string ConflictName(const std::string& name, int count) {
    const size_t dot = name.rfind('.');
    const std::string stem = name.substr(0, dot);
    char words[64];
    switch (count % 3) {
        case 0:
            std::snprintf(words, sizeof words, ".sync-conflict-20260301-%06d-ABCDEFG", count);
            break;
        case 1:
            std::snprintf(words, sizeof words, " (conflicted copy 2026-03-01 %06d)", count);
            break;
        default:
            std::snprintf(words, sizeof words, " %d", count);
    }
    return dot == std::string::npos ? stem + words : stem + words + name.substr(dot);
}

bool IsSame(const struct stat& one, const struct stat& other) {
    return one.st_ino == other.st_ino && one.st_size == other.st_size &&
           one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
           one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

}  // namespace

Carrier::Carrier(std::vector<fs::path> folders) {
    for (fs::path& folder : folders) {
        mMachines.emplace_back().Folder = std::move(folder);
    }
}

// Returns whether any machine had news.
bool Carrier::LookAround() {
    bool hasNews = false;
    for (Machine& machine : mMachines) {
        hasNews = Look(machine) || hasNews;
    }
    return hasNews;
}

bool Carrier::Look(Machine& machine) {
    bool hasNews = false;
    std::set<std::string> present;
    for (const auto& entry : fs::directory_iterator(machine.Folder)) {
        const std::string name = entry.path().filename();
        if (name.front() != '.' && entry.is_regular_file() && machine.Temporary.count(name) == 0) {
            present.insert(name);
        }
    }
    for (const std::string& name : present) {
        struct stat status {};
        ::stat((machine.Folder / name).c_str(), &status);
        const auto seen = machine.Places.find(name);
        if (seen != machine.Places.end() && IsSame(seen->second.Status, status)) {
            continue;
        }
        hasNews = true;
        const std::string bytes = ReadBytes((machine.Folder / name).string());
        const auto known = mFiles.find(name);
        if (known != mFiles.end() && known->second != bytes) {
            // Two machines have written one name.
            fs::remove(machine.Folder / name);
            machine.Places.erase(name);
            PutDouble(machine, name, bytes);
            continue;
        }
        mFiles[name] = bytes;
        machine.Without.erase(name);
        machine.Places[name] = {status, true};
    }
    for (auto place = machine.Places.begin(); place != machine.Places.end();) {
        if (present.count(place->first) != 0) {
            ++place;
            continue;
        }
        hasNews = true;
        if (const auto file = mFiles.find(place->first); file != mFiles.end()) {
            mDeleted.insert(mFiles.extract(file));
        }
        place = machine.Places.erase(place);
    }
    return hasNews;
}

void Carrier::Put(Machine& machine, const std::string& name, const std::string& bytes, bool isAll) {
    Place& place = machine.Places[name];
    WriteBytes((machine.Folder / name).string(), bytes);
    ::stat((machine.Folder / name).c_str(), &place.Status);
    place.IsAll = isAll;
}

void Carrier::Deliver(Machine& machine, const std::string& name) {
    Put(machine, name, mFiles[name], true);
    machine.Without.erase(name);
}

// Makes a file with the name of a conflict, which is then carried as any other.
void Carrier::PutDouble(Machine& machine, const std::string& name, const std::string& bytes) {
    const std::string other = ConflictName(name, static_cast<int>(mConflicts.size()));
    mConflicts.insert(other);
    mFiles[other] = bytes;
    Put(machine, other, bytes, true);
}

// Brings one name up to date in one folder. Returns whether there was anything to do.
bool Carrier::Step(Machine& machine, const std::string& name, std::mt19937* random,
                   double badness) {
    const auto place = machine.Places.find(name);
    const bool isThere = place != machine.Places.end();
    if (mFiles.count(name) == 0) {
        if (isThere) {
            fs::remove(machine.Folder / name);
            machine.Places.erase(place);
        }
        machine.Without.erase(name);
        return isThere;
    }
    if ((isThere && place->second.IsAll) ||
        (random != nullptr && machine.Without.count(name) != 0)) {
        return false;
    }
    if (random != nullptr && !isThere && Chance(*random, badness)) {
        DeliverBadly(machine, name, *random);
    } else {
        Deliver(machine, name);
    }
    return true;
}

void Carrier::DeliverBadly(Machine& machine, const std::string& name, std::mt19937& random) {
    const std::string& bytes = mFiles[name];
    const std::string part = bytes.substr(0, random() % (bytes.size() + 1));
    switch (random() % (mConflicts.count(name) == 0 ? 6 : 3)) {
        case 0:
            Put(machine, name, part, false);
            break;
        case 1:
            Put(machine, name, part + std::string(bytes.size() - part.size(), '\0'), false);
            break;
        case 2: {
            const std::string temporary =
                random() % 2 == 0 ? ".syncthing." + name + ".tmp" : name + ".part";
            machine.Temporary.insert(temporary);
            WriteBytes((machine.Folder / temporary).string(), part);
            break;
        }
        case 3:
            PutDouble(machine, name, bytes);
            machine.Without.insert(name);
            break;
        case 4:
            PutDouble(machine, name, part);
            break;
        default:
            PutDouble(machine, name, bytes);
            Deliver(machine, name);
    }
}

void Carrier::Forget(std::mt19937& random) {
    const auto pick = [&random](auto& of) {
        return std::next(of.begin(), static_cast<std::ptrdiff_t>(random() % of.size()));
    };
    const auto kind = random() % 3;
    if (kind == 0 && !mDeleted.empty()) {
        mFiles.insert(mDeleted.extract(pick(mDeleted)));
    } else if (kind == 1 && !mFiles.empty()) {
        mDeleted.insert(mFiles.extract(pick(mFiles)));
    } else if (kind == 2) {
        Machine& machine = *pick(mMachines);
        if (!machine.Places.empty()) {
            const auto place = pick(machine.Places);
            fs::remove(machine.Folder / place->first);
            machine.Without.insert(place->first);
            machine.Places.erase(place);
        }
    }
}

std::set<std::string> Carrier::NamesFor(const Machine& machine) const {
    std::set<std::string> names;
    for (const auto& [name, bytes] : mFiles) {
        names.insert(name);
    }
    for (const auto& [name, place] : machine.Places) {
        names.insert(name);
    }
    return names;
}

void Carrier::Carry(std::mt19937& random, double badness) {
    LookAround();
    if (Chance(random, badness / 4)) {
        Forget(random);
    }
    std::vector<std::pair<size_t, std::string>> steps;
    for (size_t machine = 0; machine < mMachines.size(); ++machine) {
        if (Chance(random, badness / 3)) {
            continue;
        }
        for (const std::string& name : NamesFor(mMachines[machine])) {
            steps.emplace_back(machine, name);
        }
    }
    std::shuffle(steps.begin(), steps.end(), random);
    for (const auto& [machine, name] : steps) {
        if (Chance(random, 0.5)) {
            Step(mMachines[machine], name, &random, badness);
        }
    }
}

void Carrier::CarryAll() {
    LookAround();
    for (bool isMoving = true; isMoving;) {
        isMoving = false;
        for (Machine& machine : mMachines) {
            for (const std::string& name : std::exchange(machine.Temporary, {})) {
                fs::remove(machine.Folder / name);
            }
            for (const std::string& name : NamesFor(machine)) {
                isMoving = Step(machine, name, nullptr, 0) || isMoving;
            }
        }
        isMoving = LookAround() || isMoving;
    }
}
