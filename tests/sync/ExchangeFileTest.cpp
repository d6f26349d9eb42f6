#include "sync/ExchangeFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "support/StoreFixture.h"

namespace {

using Records = std::vector<ExchangeRecord>;

ExchangeHeader SmallHeader() {
    ExchangeHeader header;
    header.Machine = 0x0123456789abcdef;
    header.Name = "Küche\tund\nStube";
    header.Number = 7;
    header.Time = 1700000000123;
    header.Taken = {{1, 0}, {0xffffffffffffffff, 9223372036854775807}};
    return header;
}

const Records kSmallRecords = {
    {"card", "", std::string("a\0b\tc\nd\re\\f", 11), ""},
    {"card"},
    {"\\n", "\xFF\xC3", "漢字"},
};

std::string Written(const ExchangeHeader& header, const Records& records) {
    std::string bytes;
    ExchangeWriter writer(header, SinkTo(bytes));
    for (const ExchangeRecord& record : records) {
        writer.Add(record);
    }
    EXPECT_EQ(writer.Finish(), 0);
    EXPECT_EQ(writer.GetBytes(), static_cast<int64_t>(bytes.size()));
    return bytes;
}

// A file whose last line is right whatever the rest is, as a stranger may make it.
std::string Ended(const std::string& bytes, const char* records) {
    ExchangeChecksum checksum;
    checksum.Add(bytes);
    return bytes + "end\t" + records + '\t' + HexText(checksum.Get()) + '\n';
}

struct ExchangeFileTest : ::testing::Test {
    // Reads bytes as a file of one of our names. Fills in the header and the visited records.
    FileState Read(const std::string& bytes) {
        WriteBytes(FromPath(mFile), bytes);
        return Read(mFile);
    }
    FileState Read(const std::filesystem::path& file) {
        mRecords.clear();
        const ExchangeVisit visit = [this](const ExchangeFields& fields) {
            mRecords.emplace_back(fields.begin(), fields.end());
            return mRecords.size() < mMost;
        };
        const FileState state = ReadExchangeFile(file, mHeader, &visit);
        EXPECT_TRUE(state == FileState::kWhole || mRecords.empty());
        return state;
    }

    TestDirectory mDirectory;
    std::filesystem::path mFile = ToPath(mDirectory.Path("velomind-1.changes"));
    ExchangeHeader mHeader;
    Records mRecords;
    size_t mMost = 1000000;
};

TEST_F(ExchangeFileTest, AFileGivesBackWhatWasWritten) {
    const std::string bytes = Written(SmallHeader(), kSmallRecords);
    // The form is a promise to other readers.
    EXPECT_EQ(bytes,
              "velomind-exchange\t1\nkind\tchanges\nmachine\t0123456789abcdef\n"
              "name\tKüche\\tund\\nStube\nnumber\t7\ntime\t1700000000123\n"
              "taken\t0000000000000001\t0\ntaken\tffffffffffffffff\t9223372036854775807\n\n"
              "card\t\ta\\0b\\tc\\nd\\re\\\\f\t\ncard\n\\\\n\t\xFF\xC3\t漢字\n"
              "end\t3\tb9cfa40c971c7516\n");
    ASSERT_EQ(Read(bytes), FileState::kWhole);
    EXPECT_EQ(mRecords, kSmallRecords);
    EXPECT_EQ(Written(mHeader, mRecords), bytes);
    mMost = 2;
    EXPECT_EQ(Read(bytes), FileState::kWhole);
    EXPECT_EQ(mRecords.size(), 2U);

    ExchangeChecksum checksum;
    checksum.Add("1234567");
    checksum.Add("89");
    EXPECT_EQ(HexText(checksum.Get()), "995dc9bbdf1939fa");
}

// More than the blocks in which files are read, with lines across their borders and the longest
// one.
TEST_F(ExchangeFileTest, ALongFileGivesBackWhatWasWritten) {
    Records records;
    for (size_t i = 0; i < 3000; ++i) {
        records.push_back({"card", std::to_string(i), std::string(i % 700, '\t')});
    }
    records.push_back({"c", std::string(kLongestExchangeLine - 2, 'x')});
    records.emplace_back(kMostExchangeFields, "f");
    ExchangeHeader header = SmallHeader();
    header.IsWhole = true;
    header.Name = std::string(199, 'x') + "ü";
    header.Taken.clear();
    for (uint64_t machine = 1; machine <= kMostMachines; ++machine) {
        header.Taken[machine] = 5;
    }
    ASSERT_EQ(Read(Written(header, records)), FileState::kWhole);
    EXPECT_TRUE(mRecords == records);
    EXPECT_EQ(mHeader.Taken, header.Taken);
    EXPECT_EQ(mHeader.Name, std::string(199, 'x'));
    EXPECT_TRUE(mHeader.IsWhole);
}

TEST_F(ExchangeFileTest, ACutOrChangedFileIsNeverWhole) {
    const std::string bytes = Written(SmallHeader(), kSmallRecords);
    for (size_t length = 0; length < bytes.size(); ++length) {
        const std::string cut = bytes.substr(0, length);
        EXPECT_EQ(Read(cut), FileState::kIncomplete) << length;
        // Some services reserve the room of a file first.
        EXPECT_EQ(Read(cut + std::string(bytes.size() - length, '\0')), FileState::kIncomplete)
            << length;
        EXPECT_NE(Read(cut + bytes.substr(length + 1)), FileState::kWhole) << length;
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = bytes;
            flipped[length] = static_cast<char>(flipped[length] ^ (1 << bit));
            EXPECT_NE(Read(flipped), FileState::kWhole) << length << " " << bit;
        }
    }
    EXPECT_EQ(Read(bytes + '\0'), FileState::kIncomplete);
    EXPECT_EQ(Read(bytes + 'x'), FileState::kDamaged);
    EXPECT_EQ(Read(bytes + bytes), FileState::kDamaged);
}

TEST_F(ExchangeFileTest, AStrangersFileIsRefused) {
    const std::string first = "velomind-exchange\t1\n";
    const std::string header =
        first + "kind\twhole\nmachine\t00000000000000aa\nname\t\nnumber\t1\ntime\t2\n";
    const std::string start = header + "\n";
    std::string machines;
    for (uint64_t machine = 1; machine <= kMostMachines + 1; ++machine) {
        machines += "taken\t" + HexText(machine) + "\t1\n";
    }
    std::string later;
    for (int i = 0; i < 2500; ++i) {
        later += "later\n";
    }
    const std::string longest(kLongestExchangeLine - 2, 'x');
    const std::string fields(kMostExchangeFields, '\t');
    const struct {
        const char* What;
        std::string Bytes;
        FileState State;
    } cases[] = {
        {"nothing in it", Ended(start, "0"), FileState::kWhole},
        {"a later key", Ended(header + "later\tx\ty\n\n", "0"), FileState::kWhole},
        {"a newer version", "velomind-exchange\t2\nwhat it likes", FileState::kNewer},
        {"a huge version", "velomind-exchange\t99999999999999999999\n", FileState::kNewer},
        {"no version", "velomind-exchange\t\n", FileState::kDamaged},
        {"version 0", "velomind-exchange\t0\n", FileState::kDamaged},
        {"other text", "Dear diary\n", FileState::kDamaged},
        {"no header", Ended(first + "\n", "0"), FileState::kDamaged},
        {"a key twice", Ended(header + "time\t3\n\n", "0"), FileState::kDamaged},
        {"a kind of another", Ended(header + "kind\tparts\n\n", "0"), FileState::kDamaged},
        {"taken twice", Ended(header + machines.substr(0, 25) + machines.substr(0, 25) + "\n", "0"),
         FileState::kDamaged},
        {"taken from nobody", Ended(header + "taken\t0000000000000000\t1\n\n", "0"),
         FileState::kDamaged},
        {"taken less than none", Ended(header + "taken\t0000000000000001\t-1\n\n", "0"),
         FileState::kDamaged},
        {"too many machines", Ended(header + machines + "\n", "0"), FileState::kDamaged},
        {"a header without an end", header + later, FileState::kDamaged},
        {"a huge number",
         Ended(first + "kind\twhole\nmachine\t00000000000000aa\nname\t\n"
                       "number\t9223372036854775808\ntime\t2\n\n",
               "0"),
         FileState::kDamaged},
        {"another count", Ended(start + "a\nb\n", "3"), FileState::kDamaged},
        {"a huge count", Ended(start, "9223372036854775807"), FileState::kDamaged},
        {"another checksum", start + "end\t0\t0123456789abcdef\n", FileState::kDamaged},
        {"no count", start + "end\n", FileState::kDamaged},
        {"an empty record", Ended(start + "\n", "1"), FileState::kDamaged},
        {"no kind", Ended(start + "\tx\n", "1"), FileState::kDamaged},
        {"an unknown escape", Ended(start + "a\\x\n", "1"), FileState::kDamaged},
        {"half an escape", Ended(start + "a\\\n", "1"), FileState::kDamaged},
        {"ends of lines of another system", Ended(start + "a\r\n", "1"), FileState::kDamaged},
        {"the longest line", Ended(start + "a\t" + longest + "\n", "1"), FileState::kWhole},
        {"a longer line", Ended(start + "a\t" + longest + "x\n", "1"), FileState::kDamaged},
        {"an endless line", start + longest + longest, FileState::kDamaged},
        {"room of an endless line", start + std::string(2 * longest.size(), '\0'),
         FileState::kIncomplete},
        {"too many fields", Ended(start + "a" + fields + "\n", "1"), FileState::kDamaged},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Read(each.Bytes), each.State) << each.What;
    }
    // Under another name a file that says nothing of us is none of ours.
    const std::filesystem::path other = ToPath(mDirectory.Path("Notes.txt"));
    for (const char* const text : {"", "Dear diary\n"}) {
        WriteBytes(FromPath(other), text);
        EXPECT_EQ(Read(other), FileState::kForeign) << text;
    }
}

TEST_F(ExchangeFileTest, WhatIsNoPlainFileIsNotOpened) {
    WriteBytes(FromPath(mFile), Written(SmallHeader(), kSmallRecords));
    const auto place = [this](const char* name) { return ToPath(mDirectory.Path(name)); };
    std::filesystem::create_symlink(mFile, place("link.changes"));
    std::filesystem::create_symlink("/dev/zero", place("device.changes"));
    std::filesystem::create_directory(place("folder.changes"));
    // Reading a pipe without a writer would wait for ever.
    ASSERT_EQ(::mkfifo(place("pipe.changes").c_str(), 0600), 0);
    for (const char* const name : {"link", "device", "folder", "pipe"}) {
        EXPECT_EQ(Read(place((std::string(name) + ".changes").c_str())), FileState::kForeign)
            << name;
    }
    EXPECT_EQ(Read(place("missing.changes")), FileState::kUnreadable);
    const std::atomic<bool> cancelled{true};
    EXPECT_EQ(ReadExchangeFile(mFile, mHeader, nullptr, &cancelled), FileState::kUnreadable);
}

TEST_F(ExchangeFileTest, AFileThatCannotBeReadIsNotWritten) {
    const auto result = [](const ExchangeHeader& header, const ExchangeRecord& record) {
        std::string bytes;
        ExchangeWriter writer(header, SinkTo(bytes));
        writer.Add(record);
        writer.Add({"card"});
        return writer.Finish();
    };
    const ExchangeHeader good = SmallHeader();
    EXPECT_EQ(result(good, {}), EINVAL);
    EXPECT_EQ(result(good, {"", "x"}), EINVAL);
    EXPECT_EQ(result(good, {"end", "x"}), EINVAL);
    EXPECT_EQ(result(good, ExchangeRecord(kMostExchangeFields + 1, "x")), EINVAL);
    EXPECT_EQ(result(good, {"c", std::string(kLongestExchangeLine, 'x')}), EMSGSIZE);
    EXPECT_EQ(result(good, {"c", std::string(kLongestExchangeLine / 2, '\t')}), EMSGSIZE);
    ExchangeHeader bad = good;
    bad.Machine = 0;
    EXPECT_EQ(result(bad, {"card"}), EINVAL);
    bad = good;
    bad.Time = -1;
    EXPECT_EQ(result(bad, {"card"}), EINVAL);

    const FileDescriptor full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    ExchangeWriter writer(good, SinkTo(full.Get()));
    EXPECT_EQ(writer.Finish(), ENOSPC);
}

}  // namespace
