#include "sync/ExchangeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <utility>

#include "media/ContentHash.h"

namespace {

constexpr std::string_view kMark = "velomind-exchange\t";
constexpr std::string_view kEnd = "end";
// How much is read or handed to the sink at once.
constexpr size_t kBlock = size_t{1} << 18;
// Lines of a header that a later program may add are skipped, up to so many in all.
constexpr int kMostHeaderLines = 2000;
// How much of a picture or a sound is handed on at once.
constexpr int64_t kMediaBlock = int64_t{1} << 16;

// What a byte of a line is to the form.
enum Mark : uint8_t { kPlain, kTab, kBackslash, kForbidden };

struct Tables {
    // The letter after the backslash, or 0 for a byte that stands for itself.
    std::array<char, 256> Escapes{};
    std::array<Mark, 256> Marks{};
    // Eight bytes are taken into the checksum at once.
    std::array<std::array<uint64_t, 256>, 8> Crc{};
};

constexpr Tables MakeTables() {
    Tables tables;
    tables.Escapes['\\'] = '\\';
    tables.Escapes['\t'] = 't';
    tables.Escapes['\n'] = 'n';
    tables.Escapes['\r'] = 'r';
    tables.Escapes['\0'] = '0';
    tables.Marks['\t'] = kTab;
    tables.Marks['\\'] = kBackslash;
    tables.Marks['\r'] = kForbidden;
    tables.Marks['\0'] = kForbidden;
    for (size_t i = 0; i < 256; ++i) {
        uint64_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1) ^ ((value & 1) != 0 ? 0xC96C5795D7870F42U : 0);
        }
        tables.Crc[0][i] = value;
    }
    for (size_t step = 1; step < 8; ++step) {
        for (size_t i = 0; i < 256; ++i) {
            const uint64_t value = tables.Crc[step - 1][i];
            tables.Crc[step][i] = (value >> 8) ^ tables.Crc[0][value & 0xFF];
        }
    }
    return tables;
}

constexpr Tables kTables = MakeTables();

uint8_t ByteOf(char character) {
    return static_cast<uint8_t>(character);
}

bool ParseMachine(std::string_view text, uint64_t& machine) {
    return ParseHexText(text, machine) && machine != 0;
}

bool ParseCount(std::string_view text, int64_t& value) {
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return rest == end && error == std::errc() && text.front() != '-';
}

std::string CutName(std::string name) {
    if (name.size() > kLongestMachineName) {
        size_t length = kLongestMachineName;
        while (length > 0 && (ByteOf(name[length]) & 0xC0) == 0x80) {
            --length;
        }
        name.resize(length);
    }
    return name;
}

}  // namespace

std::string HexText(uint64_t value) {
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
    return text;
}

bool ParseHexText(std::string_view text, uint64_t& value) {
    const char* const end = text.data() + text.size();
    return text.size() == 16 &&
           text.find_first_not_of("0123456789abcdef") == std::string_view::npos &&
           std::from_chars(text.data(), end, value, 16).ptr == end;
}

void ExchangeChecksum::Add(std::string_view bytes) {
    const char* next = bytes.data();
    size_t left = bytes.size();
    uint64_t state = mState;
    for (; left >= 8; left -= 8, next += 8) {
        for (int i = 0; i < 8; ++i) {
            state ^= uint64_t{ByteOf(next[i])} << (8 * i);
        }
        const auto& crc = kTables.Crc;
        state = crc[7][state & 0xFF] ^ crc[6][(state >> 8) & 0xFF] ^ crc[5][(state >> 16) & 0xFF] ^
                crc[4][(state >> 24) & 0xFF] ^ crc[3][(state >> 32) & 0xFF] ^
                crc[2][(state >> 40) & 0xFF] ^ crc[1][(state >> 48) & 0xFF] ^ crc[0][state >> 56];
    }
    for (; left > 0; --left, ++next) {
        state = (state >> 8) ^ kTables.Crc[0][(state ^ ByteOf(*next)) & 0xFF];
    }
    mState = state;
}

ExchangeSink SinkTo(std::string& bytes) {
    return [&bytes](std::string_view more) {
        bytes += more;
        return 0;
    };
}

ExchangeSink SinkTo(int descriptor) {
    return [descriptor](std::string_view more) {
        while (!more.empty()) {
            const ssize_t count = ::write(descriptor, more.data(), more.size());
            if (count < 0 && errno != EINTR) {
                return errno;
            }
            more.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
        }
        return 0;
    };
}

ExchangeWriter::ExchangeWriter(const ExchangeHeader& header, ExchangeSink sink)
    : mSink(std::move(sink)), mHasMedia(header.Media.has_value()) {
    const auto add = [this](const ExchangeRecord& line) { AddLine(line); };
    mBytes.reserve(kBlock + kBlock / 4);
    add({std::string(kMark.substr(0, kMark.size() - 1)), "1"});
    add({"kind", mHasMedia ? "media" : header.IsWhole ? "whole" : "changes"});
    add({"machine", HexText(header.Machine)});
    add({"name", CutName(header.Name)});
    add({"number", std::to_string(header.Number)});
    add({"time", std::to_string(header.Time)});
    bool isGood = header.Machine != 0 && header.Number >= 0 && header.Time >= 0 &&
                  header.Taken.size() <= kMostMachines;
    for (const auto& [machine, number] : header.Taken) {
        isGood = isGood && machine != 0 && number >= 0;
        add({"taken", HexText(machine), std::to_string(number)});
    }
    if (mHasMedia) {
        add({"file", header.Media->File});
        add({"bytes", std::to_string(header.Media->Bytes)});
        add({"content", header.Media->Content});
        add({"edition", std::to_string(header.Media->Edition)});
        for (const std::string& content : header.Media->Replaces) {
            add({"replaces", content});
        }
    }
    mBytes += '\n';
    if (!isGood) {
        Fail(EINVAL);
    }
}

void ExchangeWriter::Add(const ExchangeRecord& record) {
    AddRecord(record);
}

void ExchangeWriter::AddFields(const ExchangeFields& fields) {
    AddRecord(fields);
}

void ExchangeWriter::AddBytes(std::string_view bytes) {
    mBytes += bytes;
    mCount += static_cast<int64_t>(bytes.size());
    if (mBytes.size() >= kBlock) {
        Flush();
    }
}

template <typename Fields>
void ExchangeWriter::AddRecord(const Fields& fields) {
    if (fields.empty() || fields.size() > kMostExchangeFields || fields.front().empty() ||
        fields.front() == kEnd) {
        Fail(EINVAL);
        return;
    }
    AddLine(fields);
    ++mCount;
}

template <typename Fields>
void ExchangeWriter::AddLine(const Fields& fields) {
    const size_t begin = mBytes.size();
    for (const std::string_view field : fields) {
        if (mBytes.size() > begin) {
            mBytes += '\t';
        }
        // Most fields have nothing to escape: they are copied in one piece.
        size_t copied = 0;
        for (size_t i = 0; i < field.size(); ++i) {
            if (const char letter = kTables.Escapes[ByteOf(field[i])]) {
                mBytes.append(field, copied, i - copied);
                mBytes += '\\';
                mBytes += letter;
                copied = i + 1;
            }
        }
        mBytes.append(field, copied);
        if (mBytes.size() - begin > kLongestExchangeLine) {
            Fail(EMSGSIZE);
            return;
        }
    }
    mBytes += '\n';
    if (mBytes.size() >= kBlock) {
        Flush();
    }
}

void ExchangeWriter::Flush() {
    if (mError == 0) {
        mChecksum.Add(mBytes);
        mError = mSink(mBytes);
        mFlushed += static_cast<int64_t>(mBytes.size());
    }
    mBytes.clear();
}

void ExchangeWriter::Fail(int error) {
    mBytes.clear();
    mError = mError == 0 ? error : mError;
}

int ExchangeWriter::Finish() {
    if (mHasMedia) {
        // The last line begins as a line.
        mBytes += '\n';
    }
    Flush();
    const ExchangeRecord last = {std::string(kEnd), std::to_string(mCount),
                                 HexText(mChecksum.Get())};
    AddLine(last);
    Flush();
    return mError;
}

namespace {

enum class LineResult { kLine, kEndOfFile, kTooLong, kError };

// Gives a file's lines one after another. Only the longest line and a block are in memory.
class LineSource {
  public:
    LineSource(int file, const std::atomic<bool>* cancelled)
        : mFile(file), mCancelled(cancelled), mBuffer(kFirstBlock) {}

    // Reads more bytes after those that are left. Returns false at the end and after an error.
    bool Fill() {
        if (mCancelled != nullptr && *mCancelled) {
            mError = ECANCELED;
            return false;
        }
        std::memmove(mBuffer.data(), mBuffer.data() + mNext, mEnd - mNext);
        mEnd -= std::exchange(mNext, 0);
        if (mEnd == mBuffer.size() || mRead > 0) {
            mBuffer.resize(std::max(kBlock, mEnd == mBuffer.size() ? 2 * mEnd : mBuffer.size()));
        }
        ssize_t count = 0;
        do {
            count = ::pread(mFile, mBuffer.data() + mEnd, mBuffer.size() - mEnd, mRead);
        } while (count < 0 && errno == EINTR);
        mError = count < 0 ? errno : 0;
        mEnd += static_cast<size_t>(std::max<ssize_t>(count, 0));
        mRead += std::max<ssize_t>(count, 0);
        return count > 0;
    }

    // Gives the next line with its end. The bytes may be written to; they hold until the next call.
    LineResult Next(char*& begin, char*& end) {
        size_t looked = mNext;
        for (;;) {
            void* const found = std::memchr(mBuffer.data() + looked, '\n', mEnd - looked);
            if (found != nullptr) {
                begin = mBuffer.data() + mNext;
                end = static_cast<char*>(found) + 1;
                if (static_cast<size_t>(end - begin) > kLongestExchangeLine + 1) {
                    return LineResult::kTooLong;
                }
                mNext = static_cast<size_t>(end - mBuffer.data());
                return LineResult::kLine;
            }
            const size_t left = mEnd - mNext;
            if (left > kLongestExchangeLine) {
                return LineResult::kTooLong;
            }
            if (!Fill()) {
                return mError != 0 ? LineResult::kError : LineResult::kEndOfFile;
            }
            looked = left;
        }
    }

    // Gives some of the next bytes, at most so many; none at the end and after an error.
    std::string_view Take(int64_t most) {
        if (mNext == mEnd && !Fill()) {
            return {};
        }
        const auto count = static_cast<size_t>(std::min(most, static_cast<int64_t>(mEnd - mNext)));
        mNext += count;
        return {mBuffer.data() + mNext - count, count};
    }

    // What has been read and not been given.
    std::string_view Rest() const { return {mBuffer.data() + mNext, mEnd - mNext}; }
    int GetError() const { return mError; }

  private:
    // A folder has many small files, whose headers are looked at.
    static constexpr size_t kFirstBlock = 4096;

    int mFile;
    const std::atomic<bool>* mCancelled;
    std::vector<char> mBuffer;
    size_t mNext = 0;
    size_t mEnd = 0;
    off_t mRead = 0;
    int mError = 0;
};

// Takes a line apart, and its escapes back in place. Returns false for a line that no writer made.
bool SplitLine(char* begin, const char* end, ExchangeFields& fields) {
    fields.clear();
    char* out = begin;
    char* field = begin;
    for (const char* next = begin; next < end; ++next) {
        switch (kTables.Marks[ByteOf(*next)]) {
            case kPlain:
                *out++ = *next;
                break;
            case kTab:
                if (fields.size() + 1 == kMostExchangeFields) {
                    return false;
                }
                fields.emplace_back(field, static_cast<size_t>(out - field));
                field = ++out;
                break;
            case kBackslash: {
                ++next;
                constexpr std::string_view kLetters = "\\tnr0";
                constexpr std::string_view kBytes("\\\t\n\r\0", 5);
                const size_t which = next < end ? kLetters.find(*next) : std::string_view::npos;
                if (which == std::string_view::npos) {
                    return false;
                }
                *out++ = kBytes[which];
                break;
            }
            case kForbidden:
                return false;
        }
    }
    fields.emplace_back(field, static_cast<size_t>(out - field));
    return true;
}

// Reads one file from its begin to its end.
class Reader {
  public:
    Reader(int file, const std::atomic<bool>* cancelled) : mLines(file, cancelled) {}

    // Returns kWhole when the header is.
    FileState ReadHeader(bool looksLikeOurs, ExchangeHeader& header);
    // Reads and checks the rest. Fills in the number of records and the checksum.
    FileState ReadRecords(const ExchangeVisit* visit, ExchangeSurvey& survey);
    // The same for a picture or a sound, whose bytes go to the sink if there is one. Its failure
    // becomes the survey's error.
    FileState ReadMedia(const ExchangeSink* sink, ExchangeSurvey& survey);
    // Reads the last line alone.
    FileState ReadLastLine(int file, ExchangeSurvey& survey);

    int GetError() const { return mLines.GetError(); }
    // The visit wanted no more.
    bool IsStopped() const { return mIsStopped; }

  private:
    FileState ReadMark(bool looksLikeOurs);
    bool TakeHeaderLine(ExchangeHeader& header);
    void TakeMediaLine();
    bool EndHeader(ExchangeHeader& header);
    FileState NextLine(char*& begin, char*& end);
    FileState ReadEnd(const ExchangeSurvey& survey);

    LineSource mLines;
    ExchangeChecksum mChecksum;
    ExchangeFields mFields;
    // The keys of a header that must be there once.
    std::array<int, 5> mSeen{};
    int64_t mHeaderBytes = 0;
    // What the header says of a picture or a sound; in other files these lines mean nothing.
    bool mHasMedia = false;
    MediaPart mMedia;
    std::array<int, 4> mMediaSeen{};
    bool mIsMediaGood = true;
    bool mIsStopped = false;
};

FileState Reader::NextLine(char*& begin, char*& end) {
    switch (mLines.Next(begin, end)) {
        case LineResult::kLine:
            return FileState::kWhole;
        case LineResult::kEndOfFile:
            return FileState::kIncomplete;
        case LineResult::kTooLong:
            // Some services give a file its length first, full of zeros, and then its bytes.
            return mLines.Rest().back() == '\0' ? FileState::kIncomplete : FileState::kDamaged;
        case LineResult::kError:
            break;
    }
    return FileState::kUnreadable;
}

// Reads the first line. Long lines of something else are not read to their ends.
FileState Reader::ReadMark(bool looksLikeOurs) {
    while (mLines.Rest().size() < kMark.size() && mLines.Fill()) {
    }
    if (mLines.GetError() != 0) {
        return FileState::kUnreadable;
    }
    const std::string_view first = mLines.Rest().substr(0, kMark.size());
    const std::string_view begin = first.substr(0, first.find('\0'));
    if (kMark.substr(0, begin.size()) != begin) {
        return looksLikeOurs ? FileState::kDamaged : FileState::kForeign;
    }
    if (begin.size() < kMark.size()) {
        return looksLikeOurs || !begin.empty() ? FileState::kIncomplete : FileState::kForeign;
    }
    char* line = nullptr;
    char* end = nullptr;
    if (const FileState state = NextLine(line, end); state != FileState::kWhole) {
        return state;
    }
    const std::string_view text(line, static_cast<size_t>(end - line));
    mChecksum.Add(text);
    mHeaderBytes += end - line;
    const std::string_view version = text.substr(kMark.size(), text.size() - kMark.size() - 1);
    if (version == "1") {
        return FileState::kWhole;
    }
    const bool isNumber = !version.empty() && version.front() != '0' &&
                          version.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? FileState::kNewer : FileState::kDamaged;
}

FileState Reader::ReadHeader(bool looksLikeOurs, ExchangeHeader& header) {
    if (const FileState state = ReadMark(looksLikeOurs); state != FileState::kWhole) {
        return state;
    }
    for (int count = 0; count <= kMostHeaderLines; ++count) {
        char* line = nullptr;
        char* end = nullptr;
        if (const FileState state = NextLine(line, end); state != FileState::kWhole) {
            return state;
        }
        mChecksum.Add({line, static_cast<size_t>(end - line)});
        mHeaderBytes += end - line;
        if (end - line == 1) {
            return EndHeader(header) ? FileState::kWhole : FileState::kDamaged;
        }
        if (!SplitLine(line, end - 1, mFields) || !TakeHeaderLine(header)) {
            return FileState::kDamaged;
        }
    }
    return FileState::kDamaged;
}

// Returns whether the header has all that it needs.
bool Reader::EndHeader(ExchangeHeader& header) {
    const auto isOne = [](int seen) { return seen == 1; };
    if (mHasMedia) {
        header.Media = mMedia;
        if (!mIsMediaGood || !std::all_of(mMediaSeen.begin(), mMediaSeen.end(), isOne)) {
            return false;
        }
    }
    return std::all_of(mSeen.begin(), mSeen.end(), isOne);
}

void Reader::TakeMediaLine() {
    constexpr std::string_view kKeys[] = {"file", "bytes", "content", "edition"};
    const bool isReplaced = mFields.front() == "replaces";
    const auto* const found = std::find(std::begin(kKeys), std::end(kKeys), mFields.front());
    if (found == std::end(kKeys) && !isReplaced) {
        return;
    }
    const std::string_view value = mFields.size() == 2 ? mFields[1] : std::string_view();
    bool isGood = !value.empty();
    if (isReplaced) {
        isGood = IsContentHash(value) && mMedia.Replaces.size() < kMostReplaced;
        mMedia.Replaces.emplace_back(isGood ? value : std::string_view());
    } else {
        const auto place = static_cast<size_t>(found - std::begin(kKeys));
        ++mMediaSeen[place];
        if (place == 0) {
            isGood = isGood && value.size() <= kLongestMediaFileName;
            mMedia.File = isGood ? value : std::string_view();
        } else if (place == 2) {
            isGood = IsContentHash(value);
            mMedia.Content = isGood ? value : std::string_view();
        } else {
            isGood = isGood && ParseCount(value, place == 1 ? mMedia.Bytes : mMedia.Edition);
            isGood = isGood && mMedia.Edition <= kMostEditions;
        }
    }
    mIsMediaGood = mIsMediaGood && isGood;
}

bool Reader::TakeHeaderLine(ExchangeHeader& header) {
    const std::string_view key = mFields.front();
    if (key == "taken") {
        uint64_t machine = 0;
        int64_t number = 0;
        return mFields.size() == 3 && header.Taken.size() < kMostMachines &&
               ParseMachine(mFields[1], machine) && ParseCount(mFields[2], number) &&
               header.Taken.emplace(machine, number).second;
    }
    constexpr std::string_view kKeys[] = {"kind", "machine", "name", "number", "time"};
    const auto* const found = std::find(std::begin(kKeys), std::end(kKeys), key);
    if (found == std::end(kKeys)) {
        TakeMediaLine();
        return true;
    }
    if (mFields.size() != 2) {
        return false;
    }
    const auto place = static_cast<size_t>(found - std::begin(kKeys));
    ++mSeen[place];
    const std::string_view value = mFields[1];
    switch (place) {
        case 0:
            header.IsWhole = value == "whole";
            mHasMedia = value == "media";
            return header.IsWhole || mHasMedia || value == "changes";
        case 1:
            return ParseMachine(value, header.Machine);
        case 2:
            header.Name = value;
            return value.size() <= kLongestMachineName;
        case 3:
            return ParseCount(value, header.Number);
        default:
            return ParseCount(value, header.Time);
    }
}

FileState Reader::ReadRecords(const ExchangeVisit* visit, ExchangeSurvey& survey) {
    for (;;) {
        char* line = nullptr;
        char* end = nullptr;
        if (const FileState state = NextLine(line, end); state != FileState::kWhole) {
            return state;
        }
        const std::string_view text(line, static_cast<size_t>(end - line));
        const bool isEnd = text.substr(0, kEnd.size()) == kEnd &&
                           (text[kEnd.size()] == '\t' || text[kEnd.size()] == '\n');
        if (!isEnd) {
            mChecksum.Add(text);
        }
        if (!SplitLine(line, end - 1, mFields) || mFields.front().empty()) {
            return FileState::kDamaged;
        }
        if (isEnd) {
            survey.Checksum = mChecksum.Get();
            return ReadEnd(survey);
        }
        ++survey.Records;
        if (visit != nullptr && !(*visit)(mFields)) {
            mIsStopped = true;
            return FileState::kWhole;
        }
    }
}

FileState Reader::ReadMedia(const ExchangeSink* sink, ExchangeSurvey& survey) {
    ContentHash hash;
    while (survey.Records < mMedia.Bytes) {
        const std::string_view bytes =
            mLines.Take(std::min(mMedia.Bytes - survey.Records, kMediaBlock));
        if (bytes.empty()) {
            return mLines.GetError() == 0 ? FileState::kIncomplete : FileState::kUnreadable;
        }
        mChecksum.Add(bytes);
        hash.Add(bytes);
        survey.Records += static_cast<int64_t>(bytes.size());
        survey.Error = sink == nullptr ? 0 : (*sink)(bytes);
        if (survey.Error != 0) {
            return FileState::kUnreadable;
        }
    }
    for (const bool isLast : {false, true}) {
        char* line = nullptr;
        char* end = nullptr;
        if (const FileState state = NextLine(line, end); state != FileState::kWhole) {
            return state;
        }
        const std::string_view text(line, static_cast<size_t>(end - line));
        if (isLast ? text.substr(0, kEnd.size()) != kEnd || !SplitLine(line, end - 1, mFields)
                   : text.size() != 1) {
            return FileState::kDamaged;
        }
        if (!isLast) {
            mChecksum.Add(text);
        }
    }
    survey.Checksum = mChecksum.Get();
    return hash.Get() == mMedia.Content ? ReadEnd(survey) : FileState::kDamaged;
}

// Looks whether the last line, which has been split, tells what was read, and is the last one.
FileState Reader::ReadEnd(const ExchangeSurvey& survey) {
    int64_t records = 0;
    uint64_t checksum = 0;
    if (mFields.size() != 3 || !ParseCount(mFields[1], records) ||
        !ParseHexText(mFields[2], checksum) || records != survey.Records ||
        checksum != survey.Checksum) {
        return FileState::kDamaged;
    }
    if (mLines.Rest().empty() && !mLines.Fill()) {
        return mLines.GetError() == 0 ? FileState::kWhole : FileState::kUnreadable;
    }
    return mLines.Rest().back() == '\0' ? FileState::kIncomplete : FileState::kDamaged;
}

FileState Reader::ReadLastLine(int file, ExchangeSurvey& survey) {
    struct stat status {};
    char bytes[64];
    if (::fstat(file, &status) != 0) {
        survey.Error = errno;
        return FileState::kUnreadable;
    }
    const off_t begin = std::max<off_t>(0, status.st_size - off_t{sizeof bytes});
    const ssize_t count = ::pread(file, bytes, sizeof bytes, begin);
    if (count < 0) {
        survey.Error = errno;
        return FileState::kUnreadable;
    }
    const std::string_view tail(bytes, static_cast<size_t>(count));
    const size_t place = tail.rfind("\nend\t");
    if (place == std::string_view::npos || tail.back() != '\n') {
        return FileState::kIncomplete;
    }
    ExchangeFields fields;
    const bool isGood = SplitLine(bytes + place + 1, bytes + count - 1, fields) &&
                        fields.size() == 3 && ParseCount(fields[1], survey.Records) &&
                        ParseHexText(fields[2], survey.Checksum);
    // A picture or a sound stands between the two ends, with nothing else.
    const int64_t between = begin + static_cast<int64_t>(place) - mHeaderBytes;
    const bool isInPlace =
        !mHasMedia || (survey.Records == mMedia.Bytes && between == mMedia.Bytes);
    return isGood && isInPlace ? FileState::kWhole : FileState::kDamaged;
}

}  // namespace

FileDescriptor OpenPlainFile(int folder, const char* name, int& error) {
    struct stat status {};
    error = ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
    if (error != 0 || !S_ISREG(status.st_mode)) {
        error = error == 0 ? ENODEV : error;
        return {};
    }
    // Another file may have taken its place meanwhile; a pipe must not hold us up then.
    FileDescriptor file(
        ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) {
        error = errno == ELOOP ? ENODEV : errno;
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        error = ENODEV;
        return {};
    }
    return file;
}

bool LooksLikeExchangeName(std::string_view name) {
    const auto endsWith = [name](std::string_view end) {
        return name.size() >= end.size() && name.substr(name.size() - end.size()) == end;
    };
    return name.substr(0, 9) == "velomind-" &&
           (endsWith(".changes") || endsWith(".whole") || endsWith(kMediaFileSuffix));
}

ExchangeSurvey SurveyExchangeFile(int file, bool looksLikeOurs,
                                  const std::function<bool(const ExchangeHeader&)>& isWanted,
                                  const std::atomic<bool>* cancelled) {
    ExchangeSurvey survey;
    Reader reader(file, cancelled);
    survey.State = reader.ReadHeader(looksLikeOurs, survey.Header);
    if (survey.State == FileState::kWhole) {
        const bool isAll = !isWanted || isWanted(survey.Header);
        survey.State = !isAll                            ? reader.ReadLastLine(file, survey)
                       : survey.Header.Media.has_value() ? reader.ReadMedia(nullptr, survey)
                                                         : reader.ReadRecords(nullptr, survey);
    } else {
        // Half a header would be that of another file.
        survey.Header = {};
    }
    if (survey.State == FileState::kUnreadable && survey.Error == 0) {
        survey.Error = reader.GetError();
    }
    return survey;
}

FileState ReadExchangeFile(const std::filesystem::path& path, ExchangeHeader& header,
                           const ExchangeVisit* visit, const std::atomic<bool>* cancelled) {
    int error = 0;
    const FileDescriptor file = OpenPlainFile(AT_FDCWD, path.c_str(), error);
    if (!file.IsOpen()) {
        return error == ENODEV ? FileState::kForeign : FileState::kUnreadable;
    }
    return ReadExchangeFile(file.Get(), LooksLikeExchangeName(path.filename().native()), header,
                            visit, cancelled);
}

FileState ReadExchangeFile(int file, bool looksLikeOurs, ExchangeHeader& header,
                           const ExchangeVisit* visit, const std::atomic<bool>* cancelled) {
    ExchangeSurvey survey = SurveyExchangeFile(file, looksLikeOurs, {}, cancelled);
    header = survey.Header;
    if (survey.State != FileState::kWhole || visit == nullptr || header.Media.has_value()) {
        return survey.State;
    }
    Reader reader(file, cancelled);
    ExchangeSurvey again;
    survey.State = reader.ReadHeader(looksLikeOurs, again.Header);
    if (survey.State == FileState::kWhole) {
        survey.State = reader.ReadRecords(visit, again);
    }
    const bool isOther = survey.State == FileState::kWhole && !reader.IsStopped() &&
                         again.Checksum != survey.Checksum;
    return isOther ? FileState::kDamaged : survey.State;
}

ExchangeSurvey ReadMediaFile(int file, const ExchangeSink& sink,
                             const std::atomic<bool>* cancelled) {
    ExchangeSurvey survey;
    Reader reader(file, cancelled);
    survey.State = reader.ReadHeader(true, survey.Header);
    if (survey.State == FileState::kWhole) {
        survey.State =
            survey.Header.Media.has_value() ? reader.ReadMedia(&sink, survey) : FileState::kForeign;
    }
    if (survey.State == FileState::kUnreadable && survey.Error == 0) {
        survey.Error = reader.GetError();
    }
    return survey;
}
