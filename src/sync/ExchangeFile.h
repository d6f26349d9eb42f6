#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Files.h"

// A file with which computers exchange cards: text that somebody else carries, and may cut, double,
// rename or delay. docs/EXCHANGE.md tells every byte. Its last line has the number of its records
// and a checksum of all bytes before, so that its content alone tells whether it is whole.

// The fields of a record. The first one is its kind: not empty, and not "end".
using ExchangeRecord = std::vector<std::string>;
// The same as views into bytes that somebody else keeps.
using ExchangeFields = std::vector<std::string_view>;

// A longer line, or one with more fields, is neither written nor read.
constexpr size_t kLongestExchangeLine = size_t{16} << 20;
constexpr size_t kMostExchangeFields = 4096;
// The bytes of a machine's name; a longer one is cut between two characters.
constexpr size_t kLongestMachineName = 200;
constexpr size_t kMostMachines = 1000;
// What a picture or a sound can be called, and how many former contents are told.
constexpr size_t kLongestMediaFileName = 255;
constexpr size_t kMostReplaced = 64;
constexpr int64_t kMostEditions = 1000000000;

// A picture or a sound, which a file has instead of records.
struct MediaPart {
    // What cards call it, in UTF-8. Whoever takes it looks first whether that is a safe name.
    std::string File;
    int64_t Bytes = 0;
    // The SHA-256 of its bytes in 64 hexadecimal digits.
    std::string Content;
    // Counts the contents that the file has had under its name, and tells former ones, the last of
    // them first.
    int64_t Edition = 1;
    std::vector<std::string> Replaces;
};

// What a file says of itself. Numbers and times are not negative, and no machine is 0.
struct ExchangeHeader {
    // A copy of all cards, or else changes.
    bool IsWhole = false;
    uint64_t Machine = 0;
    // What the machine's user calls it.
    std::string Name;
    int64_t Number = 0;
    // Milliseconds since 1970 by the machine's clock.
    int64_t Time = 0;
    // The number of the last file that the machine has taken from each other one.
    std::map<uint64_t, int64_t> Taken;
    std::optional<MediaPart> Media;
};

// A machine's number as files have it: 16 digits, lower case. The second returns false, with value
// unchanged, for anything else.
std::string HexText(uint64_t value);
bool ParseHexText(std::string_view text, uint64_t& value);

// Takes the next bytes of a file, and returns 0 or the system's number of an error.
using ExchangeSink = std::function<int(std::string_view)>;
// Returns a sink that grows a text, or one that writes to an open file. Both must outlive it.
ExchangeSink SinkTo(std::string& bytes);
ExchangeSink SinkTo(int descriptor);

// The checksum of a file: CRC-64/XZ, whose value for "123456789" is 995dc9bbdf1939fa.
class ExchangeChecksum {
  public:
    void Add(std::string_view bytes);
    uint64_t Get() const { return ~mState; }

  private:
    uint64_t mState = ~uint64_t{0};
};

// Writes a file record by record. The first failure stops all writing, and Finish returns it.
class ExchangeWriter {
  public:
    ExchangeWriter(const ExchangeHeader& header, ExchangeSink sink);

    void Add(const ExchangeRecord& record);
    // The same without copies of the fields.
    void AddFields(const ExchangeFields& fields);
    // Adds bytes of a picture or a sound.
    void AddBytes(std::string_view bytes);

    // Writes the last line. Returns 0 or the sink's number; EINVAL for a header or a record that no
    // file can have, EMSGSIZE for a line that is too long. It makes nothing last on the disk.
    int Finish();

    // The number of records, or of bytes of a picture or a sound, so far.
    int64_t GetCount() const { return mCount; }
    // The number of bytes of the file so far; after Finish, of all.
    int64_t GetBytes() const { return mFlushed + static_cast<int64_t>(mBytes.size()); }

  private:
    template <typename Fields>
    void AddRecord(const Fields& fields);
    template <typename Fields>
    void AddLine(const Fields& fields);
    void Flush();
    void Fail(int error);

    ExchangeSink mSink;
    std::string mBytes;
    ExchangeChecksum mChecksum;
    int64_t mCount = 0;
    int64_t mFlushed = 0;
    bool mHasMedia = false;
    int mError = 0;
};

enum class FileState {
    // All is there, or, where only the ends were read, both ends are.
    kWhole,
    // Its end is not there yet: whoever carries it may still bring it.
    kIncomplete,
    // It says of itself that it is not what was written.
    kDamaged,
    // A later version of the program wrote it.
    kNewer,
    // It is none of these files: something else, a link, a device, a folder.
    kForeign,
    // The system does not let it be read, or the reading was cancelled.
    kUnreadable,
};

// What is known of a file after a look at it.
struct ExchangeSurvey {
    FileState State = FileState::kForeign;
    // The system's number where the file is unreadable.
    int Error = 0;
    // What the header says, if the file got that far. Only a whole file's header is to be believed.
    ExchangeHeader Header;
    uint64_t Checksum = 0;
    // The bytes of a picture or a sound count as so many records.
    int64_t Records = 0;
};

// Opens a plain file in an open folder (or AT_FDCWD) for reading. Links are not followed and
// devices not opened. Without one error is the system's number, ENODEV for what is no plain file.
FileDescriptor OpenPlainFile(int folder, const char* name, int& error);

// Looks at an open file. Reads the header and then, if isWanted is empty or returns true for the
// header, all of the file and checks it; else only its last line. A name that looks like one of
// ours decides nothing but what is told of a file whose content says nothing: it is empty
// (incomplete), or something else (damaged, not foreign).
ExchangeSurvey SurveyExchangeFile(int file, bool looksLikeOurs,
                                  const std::function<bool(const ExchangeHeader&)>& isWanted,
                                  const std::atomic<bool>* cancelled);
bool LooksLikeExchangeName(std::string_view name);
// How the names of pictures and sounds end.
constexpr std::string_view kMediaFileSuffix = ".media";

// Is given the records in their order; the views hold until it returns. False ends the reading.
using ExchangeVisit = std::function<bool(const ExchangeFields&)>;

// Reads a file, with a few blocks in memory at a time. All of it is checked before the first record
// is visited, so nothing of a cut or damaged one is ever seen. Only when the file changes under the
// reader can it end with another state than kWhole after visits: what was visited is then void. The
// bytes of the fields are those of the file: they need not be UTF-8.
FileState ReadExchangeFile(const std::filesystem::path& path, ExchangeHeader& header,
                           const ExchangeVisit* visit = nullptr,
                           const std::atomic<bool>* cancelled = nullptr);
// The same for an open file, as for SurveyExchangeFile.
FileState ReadExchangeFile(int file, bool looksLikeOurs, ExchangeHeader& header,
                           const ExchangeVisit* visit, const std::atomic<bool>* cancelled);

// Reads a picture or a sound and hands its bytes on, block by block. They are what was sent only if
// the state is kWhole in the end. Where the sink fails the state is kUnreadable, with its number.
ExchangeSurvey ReadMediaFile(int file, const ExchangeSink& sink,
                             const std::atomic<bool>* cancelled);
