#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/StoreFixture.h"
#include "sync/Carrier.h"
#include "sync/Exchange.h"

// A course of study on several computers, made of a seed: cards are added, edited, moved, studied,
// scored anew and deleted, categories renamed and their ids used again, backups restored, lists
// imported on two computers, under wrong clocks, with a folder that is carried badly. At the end
// all is carried, and what the computers have is compared with each other and with what was done.
class Simulation {
  public:
    struct Options {
        uint32_t Seed = 1;
        int Steps = 120;
        // How badly the folder is carried, 0 to 1.
        double Badness = 0.5;
        ExchangeRules Rules;
        // The computers are one to three more.
        size_t LeastMachines = 1;
        bool ImportsTwice = true;
        bool RestoresBackups = true;
    };

    explicit Simulation(const Options& options);
    ~Simulation();

    // Returns what is wrong, one fault a line; empty when nothing is.
    std::string Run();

  private:
    struct Machine;
    struct Change;

    void Step();
    void DoSomething(Machine& machine);
    FlashCard NewCard(const wxString& front, const wxString& back, int32_t categoryId);
    void AddCard(Machine& machine);
    void EditCard(Machine& machine);
    void DeleteCard(Machine& machine);
    void BringBackCard(Machine& machine);
    void Score(Machine& machine);
    void SetSchedule(Machine& machine);
    void ChangeCategories(Machine& machine);
    void ImportList(Machine& machine);
    void Restore(Machine& machine);
    void Learn(Machine& machine);
    ExchangeReport Exchange(Machine& machine);
    std::optional<FlashCard> AnyCard(Machine& machine);
    int64_t Note(Machine& machine, const CardUuid& card, const std::string& fields);
    void NoteChange(Machine& machine, const CardUuid& card, bool isDeletion, char field = ' ',
                    const std::string& text = std::string(), int64_t notedAt = 0);
    std::string Compare();
    static std::string LogOf(const Machine& machine, const std::string& id);
    static std::string EventsOf(const Machine& machine);
    std::string CourseOf(const CardUuid& card);
    std::string CompareTexts(const std::map<std::string, std::string>& cards);
    std::string CompareDeletions(const std::map<std::string, std::string>& cards);
    int Number(int below);
    bool Chance(double share);

    const Options mOptions;
    std::mt19937 mRandom;
    TestDirectory mDirectory;
    std::vector<std::unique_ptr<Machine>> mMachines;
    std::unique_ptr<Carrier> mCarrier;
    int64_t mTime = 1780000000;
    int mText = 0;
    // Something may be done while an exchange ends.
    bool mStudiesOn = true;
    std::set<CardUuid> mListed;
    // Every review that was given and is not lost by a restored backup, by its key.
    std::set<std::string> mReviews;
    // Every text that was written into a field, with its card and field, until it was replaced by
    // somebody who knew it.
    std::vector<Change> mChanges;
    std::string mFaults;
};
