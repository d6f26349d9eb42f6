#include <gtest/gtest.h>
#include <wx/mstream.h>

#include "exchange/DelimitedWriter.h"
#include "exchange/TextSink.h"
#include "exchange/VlmTextWriter.h"

namespace {

std::string Utf8(const StringSink& sink) {
    return wxString(sink.GetText()).utf8_string();
}

TEST(VlmTextWriterTest, AValueIsOneLineForEachOfItsLines) {
    StringSink sink;
    VlmTextWriter writer(sink);
    EXPECT_EQ(writer.WriteAttribute("Front", "a: #b"), 0);
    EXPECT_EQ(writer.WriteAttribute("Author", ""), 0);
    EXPECT_EQ(writer.WriteAttribute("Notes", "a\n\nb\n"), 0);
    EXPECT_EQ(writer.WriteAttribute("#Front", "x"), -1);
    EXPECT_EQ(writer.WriteAttribute("Fr:ont", "x"), -1);
    EXPECT_EQ(Utf8(sink), "");
    writer.EndRecord();
    writer.EndRecord();
    EXPECT_EQ(Utf8(sink), "Front: a: #b\nNotes: a\nNotes: \nNotes: b\nNotes: \n\n\n");
}

TEST(DelimitedWriterTest, AFieldIsQuotedByItsDelimiterOrItsQuotes) {
    const struct {
        const char* Value;
        const char* Field;
    } rows[] = {{"plain", "plain"},
                {"x\"y", "\"x\"\"y\""},
                {"a,b", "\"a,b\""},
                {"x,\"y", "\"x,\"y\""},
                {"a\r\nb", "a\\r\\nb"},
                {"a\\nb\\", "a\\\\nb\\\\"},
                {"", ""}};
    for (const auto& row : rows) {
        StringSink sink;
        DelimitedWriter writer(sink, L',');
        writer.AddColumn("Front");
        writer.AddColumn("Back");
        writer.EndHeader();
        EXPECT_EQ(writer.AddColumn("Notes"), -1);
        EXPECT_EQ(writer.WriteAttribute("Notes", row.Value), -1);
        EXPECT_EQ(writer.WriteAttribute("Back", row.Value), 0);
        writer.EndRecord();
        writer.EndRecord();
        EXPECT_EQ(Utf8(sink), "Front,Back\n," + std::string(row.Field) + "\n,\n");
    }
}

TEST(EncodedSinkTest, EveryCharacterHasBytesInEachEncoding) {
    const std::wstring text = {L'a',
                               wchar_t(0xE9),
                               wchar_t(0x4E00),
                               wchar_t(0x1F600),
                               wchar_t(0x10FFFF),
                               wchar_t(0xD83D),
                               L'\0',
                               wchar_t(0x110000)};
    const struct {
        wxFontEncoding Encoding;
        std::string Bytes;
    } rows[] = {
        {wxFONTENCODING_UTF8,
         "a\xC3\xA9\xE4\xB8\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF"
         "\xBD"},
        {wxFONTENCODING_UTF16BE,
         std::string("\0a\0\xE9\x4E\0\xD8\x3D\xDE\0\xDB\xFF\xDF\xFF\xFF\xFD\xFF\xFD\xFF\xFD", 20)},
        {wxFONTENCODING_UTF16LE,
         std::string("a\0\xE9\0\0\x4E\x3D\xD8\0\xDE\xFF\xDB\xFF\xDF\xFD\xFF\xFD\xFF\xFD\xFF", 20)}};
    for (const auto& row : rows) {
        wxMemoryOutputStream stream;
        EncodedSink sink(stream, row.Encoding);
        // Enough for many blocks, whose ends fall anywhere.
        std::string expected;
        for (int i = 0; i < 20000; ++i) {
            sink.Write(text);
            expected += row.Bytes;
        }
        EXPECT_TRUE(sink.Flush());
        std::string bytes(static_cast<size_t>(stream.GetLength()), '\0');
        stream.CopyTo(bytes.data(), bytes.size());
        EXPECT_TRUE(bytes == expected) << row.Encoding;
    }
}

}  // namespace
