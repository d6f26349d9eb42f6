#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/Time.h"
#include "store/CardUuid.h"
#include "store/FlashCard.h"

TEST(Records, IdentitiesAreReadInTheirThreeForms) {
    const wxString plain = "00112233-4455-6677-8899-aabbccddeeff";
    for (const wxString& text : {plain, plain.Upper(), "{" + plain + "}", "(" + plain + ")",
                                 wxString("00112233445566778899AabBccddEEff")}) {
        CardUuid uuid;
        EXPECT_EQ(ParseUuid(text, uuid), 0) << text;
        EXPECT_EQ(FormatUuid(uuid), plain) << text;
    }
    for (const char* text :
         {"", "00112233-4455-6677-8899-aabbccddeef", "{00112233-4455-6677-8899-aabbccddeeff)",
          "001122334455-6677-8899-aabbcc-ddeeff", "00112233-4455-6677-8899-aabbccddeefg",
          "{00112233445566778899aabbccddeeff}", "00112233-4455-6677-8899-aabbccddeeff000",
          "0011223:-4455-6677-8899-aabbccddeeff", "0011223G-4455-6677-8899-aabbccddeeff"}) {
        CardUuid uuid;
        uuid.Bytes[5] = 1;
        const CardUuid before = uuid;
        EXPECT_EQ(ParseUuid(text, uuid), 3) << text;
        EXPECT_EQ(uuid, before) << text;
    }
}

TEST(Records, AFreshIdentityIsOfVersion4InNetworkOrder) {
    CardUuid uuid;
    const auto counting = [](uint8_t* bytes, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<uint8_t>(0xF0 + i);
        }
        return true;
    };
    EXPECT_EQ(GenerateUuid(uuid, counting), 0);
    EXPECT_EQ(FormatUuid(uuid), "f3f2f1f0-f5f4-47f6-b8f9-fafbfcfdfeff");
    const CardUuid before = uuid;
    EXPECT_EQ(GenerateUuid(uuid, [](uint8_t*, size_t) { return false; }), 2);
    EXPECT_EQ(uuid, before);
    EXPECT_EQ(GenerateUuid(uuid), 0);
    EXPECT_EQ(FormatUuid(uuid)[14], '4');
    EXPECT_NE(uuid, before);
}

TEST(Records, TimeStampsAreReadAndWrittenInUtc) {
    const std::pair<const char*, const char*> good[] = {
        {"2005-1-2 3:4:5", "2005-01-02 03:04:05Z"},
        {" +2005- 1-2  3:4:5Z", "2005-01-02 03:04:05Z"},
        {"2005-02-31 10:00:00Z", "2005-03-03 10:00:00Z"},
        {"9999-12-31 23:59:59Z", "9999-12-31 23:59:59Z"},
        {"2005-01-02 ::", "2005-01-02 00:00:00Z"}};
    for (const auto& [text, canonical] : good) {
        wxDateTime read;
        EXPECT_EQ(ParseTimeStamp(text, read), 0) << text;
        EXPECT_EQ(FormatTimeStamp(read), canonical);
    }
    for (const char* text :
         {"1969-12-31 23:59:59Z", "10000-01-01 00:00:00Z", "2005-01-02 03:04:05ZZ",
          "2005-13-01 00:00:00Z", "2005-01-00 00:00:00Z", "2005-01-02 24:00:00Z",
          "2005-01-02T03:04:05Z", "18446744073709553621-01-02 03:04:05Z", "2005-01-02", ""}) {
        wxDateTime read(time_t{77});
        EXPECT_EQ(ParseTimeStamp(text, read), -1) << text;
        EXPECT_EQ(read.GetTicks(), 77) << text;
    }
    wxDateTime time;
    ASSERT_EQ(ParseTimeStamp("2009-02-13 23:31:30Z", time), 0);
    EXPECT_EQ(time.GetTicks(), 1234567890);
    EXPECT_EQ(FormatTimeStamp(wxDateTime(wxLongLong(-1))), "1969-12-31 23:59:59Z");
    EXPECT_EQ(FormatTimeStamp(wxDateTime()), "");
}

// Damaged rows reach both ends of the milliseconds that a time can hold.
TEST(Records, TheTimesOfAScheduleSaturate) {
    constexpr int64_t kLast = 2000000000000;
    constexpr int64_t kEnd = std::numeric_limits<int64_t>::max();
    const auto time = [](int64_t milliseconds) { return wxDateTime(wxLongLong(milliseconds)); };
    const std::tuple<int64_t, float, int64_t> cases[] = {{kLast, 59.9f, kLast + 59000},
                                                         {kLast, -1.5f, kLast - 1000},
                                                         {kLast, 3e9f, kLast + 3e12},
                                                         {kLast, -3e9f, kLast - 3e12},
                                                         {kLast, NAN, kLast},
                                                         {kLast, INFINITY, kEnd},
                                                         {kEnd, 5.0f, kEnd},
                                                         {-kEnd, -5.0f, -kEnd},
                                                         {-kLast, -INFINITY, -kEnd},
                                                         {kEnd, -INFINITY, 0}};
    for (const auto& [last, interval, next] : cases) {
        EXPECT_EQ((CardSchedule{true, time(last), 0, interval}.NextReview()), time(next));
    }
    EXPECT_FALSE((CardSchedule{true, wxDateTime()}.NextReview().IsValid()));
    EXPECT_EQ(SecondsBetween(time(-kEnd), time(kLast)), kEnd / 1000);
    EXPECT_EQ(SecondsBetween(time(kEnd), time(-kLast)), -kEnd / 1000);
    EXPECT_EQ(SecondsBetween(time(kLast), time(kLast - 1999)), -1);
}
