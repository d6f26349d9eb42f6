#include <gtest/gtest.h>
#include <wx/mstream.h>

#include "exchange/DelimitedWriter.h"
#include "exchange/TextSink.h"

namespace {

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
        EXPECT_EQ(writer.WriteAttribute("Back", row.Value), 0);
        writer.EndRecord();
        writer.EndRecord();
        EXPECT_EQ(wxString(sink.GetText()), "Front,Back\n," + std::string(row.Field) + "\n,\n");
    }
}

TEST(EncodedSinkTest, WhatIsNoCharacterIsReplaced) {
    const std::wstring text = {wchar_t(0xD83D), L'\0', wchar_t(0x110000)};
    const struct {
        wxFontEncoding Encoding;
        std::string Bytes;
    } rows[] = {{wxFONTENCODING_UTF8, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                {wxFONTENCODING_UTF16BE, "\xFF\xFD\xFF\xFD\xFF\xFD"},
                {wxFONTENCODING_UTF16LE, "\xFD\xFF\xFD\xFF\xFD\xFF"}};
    for (const auto& row : rows) {
        wxMemoryOutputStream stream;
        EncodedSink sink(stream, row.Encoding);
        sink.Write(text);
        EXPECT_TRUE(sink.Flush());
        std::string bytes(static_cast<size_t>(stream.GetLength()), '\0');
        stream.CopyTo(bytes.data(), bytes.size());
        EXPECT_EQ(bytes, row.Bytes) << row.Encoding;
    }
}

}  // namespace
