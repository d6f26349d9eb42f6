#pragma once

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/Files.h"
#include "store/Database.h"
#include "support/Fakes.h"

// A fresh directory for one test, removed with everything in it.
struct TestDirectory : TemporaryDirectory {
    TestDirectory();
};

// Writes bytes to a file, and reads a whole file as bytes.
void WriteBytes(const wxString& path, const std::string& bytes);
std::string ReadBytes(const wxString& path);

// A card with an id of its own and texts; the fields are public, so a test changes what it wants.
FlashCard MakeCard(const wxString& front, const wxString& back, int32_t categoryId = 0);

// No file of this process may grow beyond this many bytes while the object lives.
struct FullDisk {
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        Limit(bytes);
    }
    ~FullDisk() { Limit(RLIM_INFINITY); }
    static void Limit(rlim_t bytes) {
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = std::min(bytes, limit.rlim_max);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
};

// A real store file with one category "Default" (id 0), open.
struct StoreFixture : ::testing::Test {
    using Strings = std::vector<std::string>;

    StoreFixture();

    // Puts the card into the store and gives it back.
    FlashCard Insert(const FlashCard& card);
    // The stored card of that id; the test fails when there is none.
    FlashCard Stored(const CardUuid& id);
    // Runs a query on the file through a connection of its own and gives the rows, columns joined
    // by "|".
    Strings Query(const std::string& sql);
    wxString StorePath() const { return mDirectory.Path("store.vlm"); }
    void Reopen();

    TestDirectory mDirectory;
    RecordingReport mReport;
    SilentUpgradeWait mWait;
    Database mDatabase{mReport};
};
