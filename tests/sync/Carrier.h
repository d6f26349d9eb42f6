#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

// A service that carries files between the folders of several machines, as badly as real ones do.
// Like those it tells by the names in a folder what a machine has added, changed and deleted since
// its last look, and knows nothing of what is in the files. The same seed and the same files give
// the same course. Hidden files stay where they are.
class Carrier {
  public:
    explicit Carrier(std::vector<std::filesystem::path> folders);

    // Lets a while pass: looks at the folders, and brings some of what is under way. A badness of 0
    // does nothing worse than to be late, and in any order; up to 1 it also leaves machines without
    // a network, brings files in two parts, under temporary names, under the names of conflicts
    // (instead of their own, beside it, or cut for good), brings deleted ones back, and loses
    // files: on one machine until CarryAll, or everywhere and for good, as if somebody had deleted
    // them.
    void Carry(std::mt19937& random, double badness);

    // Brings all files everywhere as they were written, and all deletions.
    void CarryAll();

  private:
    // What the service last saw or put in one place of a folder.
    struct Place {
        struct stat Status {};
        bool IsAll = false;
    };
    struct Machine {
        std::filesystem::path Folder;
        std::map<std::string, Place> Places;
        // Files that it has only under other names, or has lost.
        std::set<std::string> Without;
        // The temporary names that the service has used there.
        std::set<std::string> Temporary;
    };

    bool LookAround();
    bool Look(Machine& machine);
    // What may have to be brought to a machine or to be deleted there.
    std::set<std::string> NamesFor(const Machine& machine) const;
    bool Step(Machine& machine, const std::string& name, std::mt19937* random, double badness);
    void Deliver(Machine& machine, const std::string& name);
    void DeliverBadly(Machine& machine, const std::string& name, std::mt19937& random);
    void Forget(std::mt19937& random);
    void PutDouble(Machine& machine, const std::string& name, const std::string& bytes);
    void Put(Machine& machine, const std::string& name, const std::string& bytes, bool isAll);

    std::vector<Machine> mMachines;
    // What there is by name, and what there was.
    std::map<std::string, std::string> mFiles;
    std::map<std::string, std::string> mDeleted;
    // The names of conflicts. They have none of their own.
    std::set<std::string> mConflicts;
};
