#include "media/MediaLines.h"

#include <gmock/gmock.h>

#include "base/Unicode.h"

namespace {

TEST(MediaLines, OnlyALineThatNamesASafeFileIsOne) {
    const std::string longest(kLongestMediaName - 4, 'a');
    const struct {
        const char* Text;
        const char* Names;
        const char* Words;
    } cases[] = {
        {"bird", "", "bird"},
        {"[picture: bird.png]", "bird.png", ""},
        {"bird\n[sound: bird.ogg]", "bird.ogg", "bird"},
        {"[picture: a.png]\r\nbird\r\n[sound: b.ogg]\r\nend", "a.png b.ogg", "bird\r\nend"},
        {"a\n  [picture:a b.png]  \n", "a b.png", "a\n"},
        {"say [sound: bird.ogg]", "", "say [sound: bird.ogg]"},
        {"[picture: ../store.vlm]", "", "[picture: ../store.vlm]"},
        {"[picture: /etc/passwd.png]", "", "[picture: /etc/passwd.png]"},
        {"[picture: con.png]\n[sound:]\n[picture", "", "[picture: con.png]\n[sound:]\n[picture"},
        {"[picture: .hidden.png]\n[picture: unused]", "",
         "[picture: .hidden.png]\n[picture: unused]"},
    };
    for (const auto& each : cases) {
        const wxString text = FromUtf8(each.Text);
        wxString names;
        for (const MediaLine& line : FindMediaLines(text)) {
            names += (names.empty() ? "" : " ") + line.Name;
            EXPECT_THAT(text.Mid(line.Begin, line.End - line.Begin), testing::HasSubstr(line.Name));
        }
        EXPECT_EQ(names, FromUtf8(each.Names)) << each.Text;
        EXPECT_EQ(WithoutMediaLines(text), FromUtf8(each.Words)) << each.Text;
    }
    const wxString text("a\n[picture: b.png]\n[sound: c.ogg]");
    EXPECT_EQ(WithMediaMarks(text), wxString(L"a\n\u25A8\n\u266A"));
    EXPECT_EQ(WithNamedMediaMarks(text), wxString(L"a\n\u25A8 b.png\n\u266A c.ogg"));
    EXPECT_EQ(WithSharedMediaMarks(text, "[sound: b.png]\n[sound: c.ogg]"),
              wxString(L"a\n[picture: b.png]\n\u266A c.ogg"));
}

TEST(MediaLines, AnyNameHasASafeOneNearIt) {
    const struct {
        const char* Name;
        const char* Safe;
    } cases[] = {
        {"bird.png", "bird.png"},
        {"../../etc/bird.png", "bird.png"},
        {"C:\\x\\bird.png", "bird.png"},
        {"a:b?.png", "a_b_.png"},
        {"a]b.png", "a_b.png"},
        {"a\nb\xE2\x80\xAE.png", "a_b_.png"},
        {"...", "file.bin"},
        {"", "file.bin"},
        {".png", "png.bin"},
        {"CON.png", "fileCON.png"},
        {"bird", "bird.bin"},
        {" bird .png. ", "bird.png"},
        {"\xE9\xB3\xA5.png", "\xE9\xB3\xA5.png"},
    };
    for (const auto& each : cases) {
        const wxString safe = MakeSafeMediaName(FromUtf8(each.Name));
        EXPECT_EQ(safe, FromUtf8(each.Safe));
        EXPECT_TRUE(IsSafeMediaName(safe)) << safe;
        EXPECT_EQ(MakeSafeMediaName(safe), safe);
    }
    wxString birds;
    for (int i = 0; i < 200; ++i) {
        birds += FromUtf8("\xE9\xB3\xA5");
    }
    for (const int number : {1, 2, 9999}) {
        EXPECT_TRUE(IsSafeMediaName(NumberedMediaName(MakeSafeMediaName(birds + ".png"), number)));
    }
}

}  // namespace
