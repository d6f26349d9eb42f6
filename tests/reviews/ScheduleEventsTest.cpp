#include "reviews/ScheduleEvents.h"

#include <sys/file.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <thread>

#include "support/StoreFixture.h"

namespace {

const std::string kId = "1b4e28ba-2fa1-41d2-883f-0016d3cca427";
const std::string kReview =
    "2026-03-01T18:04:09Z\t" + kId + "\tF\t4\t86412\t86400\t131072\t16\t15\t-";
const std::string kExtension = "#\t00000000000000ab\t12\t1\t1772301837\t3\t86400\t16\t25\t4711";
const std::string kSet =
    "#=\t2026-03-01T18:05:40Z\t" + kId + "\tR\tfedcba9876543210\t13\t0\t-\t0\t5\t16\t-7";

// A log in few letters: "#" is its heading, "3a" the review of second 3 in session a and "3a=" a
// schedule set there, "3." a review without an extension, "3a-" one that has lost it, and "3a+" an
// extension alone; "x" is a foreign line and "t" a torn one. With "'" the event is one of a card
// that is to be renamed.
struct ScheduleEventsTest : StoreFixture {
    static CardUuid CardOf(bool isGone) {
        CardUuid id;
        id.Bytes.fill(isGone ? 2 : 1);
        return id;
    }
    static ScheduleEvent EventOf(const std::string& word) {
        ScheduleEvent event;
        event.Time = 1700000000 + (word[0] - '0');
        event.CardId = CardOf(word.back() == '\'');
        event.HasExtension = word[1] != '.';
        event.Session = event.HasExtension ? static_cast<uint64_t>(word[1]) : 0;
        event.Number = word[0];
        event.IsSet = word.find('=') != std::string::npos;
        event.HasExtension = event.HasExtension && !event.IsSet && word.back() != '-';
        event.Review.Time = event.Time;
        event.Review.CardId = event.CardId;
        event.Review.OldDifficulty = static_cast<uint8_t>(word[1]);
        event.From.LastReview = event.After.LastReview = wxDateTime(time_t{1700000000});
        return event;
    }
    static std::string TextOf(const std::string& word) {
        if (word == "#" || word == "x" || word == "t") {
            return word == "#" ? kReviewLogHeading : word == "x" ? "foreign\n" : "2023-11-1";
        }
        const std::string lines = FormatEvent(EventOf(word));
        const size_t second = lines.find('\n') + 1;
        return word.back() == '+' ? lines.substr(second) : lines;
    }
    static std::string LogOf(const std::string& words) {
        std::istringstream stream(words);
        std::string log;
        for (std::string word; stream >> word;) {
            log += TextOf(word);
        }
        return log;
    }
    static std::vector<ScheduleEvent> EventsOf(const std::string& words) {
        std::istringstream stream(words);
        std::vector<ScheduleEvent> events;
        for (std::string word; stream >> word;) {
            events.push_back(EventOf(word));
        }
        return events;
    }
    int64_t Visit(int64_t offset, std::string& seen) {
        return VisitEvents(
            mPath, offset,
            [&seen](const ScheduleEvent& event) {
                seen += event.IsSet ? '=' : event.HasExtension ? 'R' : 'r';
            },
            mCancelled);
    }

    wxString mPath = ReviewLogPath(StorePath());
    std::atomic<bool> mCancelled{false};
};

// Each line gives what it says, and a line that is not quite one gives nothing: an extension that
// is none leaves the review as an earlier version wrote it.
TEST_F(ScheduleEventsTest, OnlyExactLinesAreEvents) {
    const auto with = [](std::string line, const std::string& old, const std::string& now) {
        return line.replace(line.find(old), old.size(), now);
    };
    const struct {
        std::string Line;
        std::string Extension;
        char Kind;
    } cases[] = {
        {kReview, kExtension, 'R'},
        {kReview, "", 'r'},
        {kSet, "", '='},
        {kReview, with(kExtension, "1772301837", "-"), 'R'},
        {kReview, with(kExtension, "1772301837", "-5"), 'R'},
        {kReview, with(kExtension, "86400", "0.000000000000000000000000000000000000011754944"),
         'R'},
        {kReview, with(kExtension, "86400", "-340282346638528859811704183484516925440"), 'R'},
        {kReview, with(kExtension, "\t12", "\t9223372036854775807"), 'R'},
        {kReview, with(kExtension, "4711", "-2147483648"), 'R'},
        {kReview, with(kExtension, "00ab", "0000"), 'r'},
        {kReview, with(kExtension, "00ab", "0ab"), 'r'},
        {kReview, with(kExtension, "00ab", "00xb"), 'r'},
        {kReview, with(kExtension, "\t12", "\t9223372036854775808"), 'r'},
        {kReview, with(kExtension, "\t12", "\t-1"), 'r'},
        {kReview, with(kExtension, "\t1\t", "\t2\t"), 'r'},
        {kReview, with(kExtension, "1772301837", "9300000000000000"), 'r'},
        {kReview, with(kExtension, "86400", "nan"), 'r'},
        {kReview, with(kExtension, "\t16", "\t256"), 'r'},
        {kReview, with(kExtension, "\t25", "\t101"), 'r'},
        {kReview, with(kExtension, "4711", "2147483648"), 'r'},
        {kReview, kExtension + "\t", 'r'},
        {kReview, kExtension.substr(0, 40), 'r'},
        {kReview, kSet, 'r'},
        {kExtension, "", '.'},
        {with(kSet, "\tR", "\tX"), "", '.'},
        {with(kSet, "2026", "26"), "", '.'},
        {with(kSet, "-7", ""), "", '.'},
        {"#=\t", kExtension, '.'},
        {"", kExtension, '.'},
    };
    ScheduleEvent plain;
    ASSERT_TRUE(ParseEvent(kReview, "", plain));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Line + c.Extension);
        ScheduleEvent event;
        ASSERT_EQ(ParseEvent(c.Line, c.Extension, event), c.Kind != '.');
        if (c.Kind != '.') {
            EXPECT_EQ(event.IsSet ? '=' : event.HasExtension ? 'R' : 'r', c.Kind);
            EXPECT_EQ(FormatEvent(event),
                      c.Line + "\n" + (c.Kind == 'R' ? c.Extension + "\n" : ""));
        }
        if (c.Kind == 'r') {
            EXPECT_EQ(event.Number, plain.Number);
        }
    }
    EXPECT_TRUE(plain.From.Introduced);
    EXPECT_EQ(plain.From.LastReview.GetTicks(), plain.Time - 86412);
    EXPECT_EQ(plain.Number >> 62, 0);
    ScheduleEvent other;
    ASSERT_TRUE(ParseEvent(with(kReview, "\tF", "\tR"), "", other));
    EXPECT_NE(other.Number, plain.Number);
}

TEST_F(ScheduleEventsTest, EventsAreReadOnFromTheLastWholeLine) {
    const std::string whole = kReview + "\n" + kExtension + "\n";
    const struct {
        std::string Bytes;
        std::string Seen;
        // The bytes that wait for their line end.
        size_t Left;
    } cases[] = {
        {"", "", 0},
        {kReviewLogHeading + whole + kSet + "\n" + kReview + "\n" + whole, "R=rR", 0},
        {kReview + "\r\n" + kExtension + "\r\n" + kSet + "\r\n", "R=", 0},
        {whole + kReview, "R", kReview.size()},
        {kReview + "\n" + kExtension.substr(0, 30), "r", 30},
        {kReview + "\n" + kExtension.substr(0, 30) + "\n" + whole, "rR", 0},
        {kExtension + "\n" + whole + kExtension + "\n", "R", 0},
        {kReview + "\nforeign\n" + kExtension + "\n" + kReview + "\n", "rr", 0},
        {kReview + "\n" + std::string(3000, '#') + "\n" + kExtension + "\n", "r", 0},
        {whole + std::string(3000, '#'), "R", 3000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Bytes.substr(0, 300));
        WriteBytes(mPath, c.Bytes);
        std::string seen;
        const int64_t next = Visit(0, seen);
        EXPECT_EQ(seen, c.Seen);
        EXPECT_EQ(next, static_cast<int64_t>(c.Bytes.size() - c.Left));
        WriteBytes(mPath, c.Bytes.substr(0, static_cast<size_t>(next)) + whole);
        seen.clear();
        Visit(next, seen);
        EXPECT_EQ(seen, "R");
        EXPECT_EQ(Visit(next + 1000000, seen), 0);
    }
    std::filesystem::remove(mPath.utf8_string());
    std::string none;
    EXPECT_EQ(Visit(0, none), 0);
    EXPECT_EQ(none, "");
}

TEST_F(ScheduleEventsTest, EventsComeToTheirPlacesInTheLog) {
    const struct {
        std::string Log;
        std::string Events;
        std::string Merged;
    } cases[] = {
        {"", "", ""},
        {"", "2a 1a", "# 1a 2a"},
        {"# 1a 3a 5a", "6b 4b 2b 3b= 0b", "# 0b 1a 2b 3a 3b= 4b 5a 6b"},
        // What is there already, under whatever file it came, is left out.
        {"# 1a 2. 3a=", "1a 2. 3a= 1a", "# 1a 2. 3a="},
        {"# 1a 3a", "2. 2. 2b 2b", "# 1a 2. 2b 3a"},
        // The same number is another event in another session, and a set is none that is scored.
        {"# 1a", "1b 1a=", "# 1a= 1a 1b"},
        // An extension that was torn off comes back; a line without one adds nothing.
        {"# 1a 2b- 3a", "2b 2b-", "# 1a 2b 3a"},
        {"# 1a 2b 3a", "2b-", "# 1a 2b 3a"},
        {"# 1a 3a", "2b- 2b", "# 1a 2b 3a"},
        // Foreign and torn lines stay where they are. An extension alone finds no new owner.
        {"x 1a x 3a x t", "2b 4b", "x 1a 2b x 3a 4b x t"},
        {"# 1a 4a+ 3a", "2.", "# 1a 4a+ 2. 3a"},
        {"# 4a+ 3a", "2.", "# 4a+ 2. 3a"},
        {"t", "1a", "1a t"},
        // A clock was wrong for a while: new lines follow all that are earlier.
        {"# 1a 9a 2a 3a", "2b", "# 1a 9a 2a 2b 3a"},
        // A card that became another one.
        {"# 1a' 2a 3.' 4a=' x", "", "# 1a 2a 3. 4a= x"},
        {"# 1a' 2.' 5a'", "2. 3b' 1a 4.'", "# 1a 2. 3b 4. 5a"},
    };
    const std::map<CardUuid, CardUuid> renamed{{CardOf(true), CardOf(false)}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Log + " <- " + c.Events);
        std::filesystem::remove(mPath.utf8_string());
        if (!c.Log.empty()) {
            WriteBytes(mPath, LogOf(c.Log));
        }
        // The second time nothing is new.
        for (int i = 0; i < 2; ++i) {
            ASSERT_EQ(MergeEvents(mPath, EventsOf(c.Events), renamed), 0);
            const bool isThere = std::filesystem::exists(mPath.utf8_string());
            EXPECT_EQ(isThere ? ReadBytes(mPath) : "", LogOf(c.Merged));
        }
        EXPECT_FALSE(std::filesystem::exists(mPath.utf8_string() + ".merge"));
    }
}

// Study goes on while the lines of others come in, and a log that is larger than what is read at
// once is copied in pieces.
TEST_F(ScheduleEventsTest, NoLineIsLostThatIsAddedMeanwhile) {
    constexpr int kMerges = 20;
    std::string old;
    for (int i = 0; i < 20000; ++i) {
        old += TextOf("0.");
    }
    WriteBytes(mPath, old);
    std::atomic<int> added{0};
    std::atomic<bool> isDone{false};
    std::thread study([&] {
        ReviewLog log(mPath);
        while (!isDone && added < 20000) {
            added += log.Append(ReviewRecord(), CardSchedule(), 0, 0) ? 1 : 0;
        }
    });
    for (int i = 0; i < kMerges; ++i) {
        ScheduleEvent event = EventOf("1b");
        event.Number = i;
        EXPECT_EQ(MergeEvents(mPath, {event}, {}), 0);
    }
    isDone = true;
    study.join();
    std::map<uint64_t, int> seen;
    VisitEvents(
        mPath, 0, [&seen](const ScheduleEvent& event) { ++seen[event.Session]; }, mCancelled);
    EXPECT_EQ(seen[0], 20000);
    EXPECT_EQ(seen['b'], kMerges);
    EXPECT_GT(added, 0);
    EXPECT_EQ(seen[EventSession()], added);
}

TEST_F(ScheduleEventsTest, AMergeThatFailsLeavesTheLogAsItWas) {
    const std::string log = LogOf("# 1a 3a t");
    WriteBytes(mPath, log);
    for (const rlim_t room : {rlim_t{0}, rlim_t{10}, log.size() + 10}) {
        const FullDisk full(room);
        EXPECT_NE(MergeEvents(mPath, EventsOf("2b"), {}), 0);
    }
    {
        // Another program holds the lock and never gives it back: a score is written all the same.
        const FileDescriptor holder(::open(mPath.utf8_string().c_str(), O_RDONLY));
        ASSERT_EQ(::flock(holder.Get(), LOCK_EX), 0);
        EXPECT_EQ(MergeEvents(mPath, EventsOf("2b"), {}), EBUSY);
        EXPECT_EQ(ReadBytes(mPath), log);
        EXPECT_TRUE(ReviewLog(mPath).Append({EventOf("4a")}));
    }
    EXPECT_EQ(ReadBytes(mPath), log + "\n" + TextOf("4a"));
    EXPECT_FALSE(std::filesystem::exists(mPath.utf8_string() + ".merge"));
    const wxString directory = mDirectory.Path("directory");
    std::filesystem::create_directory(directory.utf8_string());
    EXPECT_EQ(MergeEvents(directory, EventsOf("2b"), {}), EINVAL);
}

// A score that waits for the lock finds another log in its place, and goes into that one.
TEST_F(ScheduleEventsTest, AScoreFollowsTheLogThatTookThePlaceOfAnother) {
    WriteBytes(mPath, LogOf("# 1a"));
    const wxString other = mDirectory.Path("other");
    WriteBytes(other, LogOf("# 2b"));
    const std::filesystem::path path = mPath.utf8_string();
    const auto countOpen = [&path] {
        int open = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone;
            open += std::filesystem::read_symlink(entry.path(), gone) == path ? 1 : 0;
        }
        return open;
    };
    FileDescriptor holder(::open(path.c_str(), O_RDONLY));
    ASSERT_EQ(::flock(holder.Get(), LOCK_EX), 0);
    std::thread score([this] { ReviewLog(mPath).Append({EventOf("3a")}); });
    while (countOpen() < 2) {
        std::this_thread::yield();
    }
    std::filesystem::rename(other.utf8_string(), path);
    holder.Close();
    score.join();
    EXPECT_EQ(ReadBytes(mPath), LogOf("# 2b 3a"));
}

// The system may give the number of the log that is gone to the one after the next.
TEST_F(ScheduleEventsTest, FiguresReadALogAnewThatHasTheNumberOfAnEarlierOne) {
    WriteBytes(mPath, LogOf("# 5a"));
    ReviewHistory history;
    EXPECT_TRUE(history.Update(mPath, mCancelled));
    WriteBytes(mPath, LogOf("# 1b 2b 5a"));
    EXPECT_TRUE(history.Update(mPath, mCancelled));
    ASSERT_EQ(history.Reviews().size(), 3U);
    EXPECT_EQ(history.Reviews().front().Time, EventOf("1b").Time);
}

}  // namespace
