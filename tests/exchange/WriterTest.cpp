#include <gtest/gtest.h>
#include <wx/mstream.h>

#include "exchange/DelimitedWriter.h"
#include "exchange/TextSink.h"

namespace {

TEST(DelimitedWriterTest, AFieldIsQuotedByItsDelimiterOrItsQuotes) {
    const std::pair<const char*, std::string> rows[] = {{"plain", "plain"},
                                                        {"x\"y", "\"x\"\"y\""},
                                                        {"a,b", "\"a,b\""},
                                                        {"x,\"y", "\"x,\"y\""},
                                                        {"a\r\nb", "a\\r\\nb"},
                                                        {"a\\nb\\", "a\\\\nb\\\\"},
                                                        {"", ""}};
    for (const auto& [value, field] : rows) {
        StringSink sink;
        DelimitedWriter writer(sink, L',');
        writer.AddColumn("Front");
        writer.AddColumn("Back");
        writer.EndHeader();
        EXPECT_LT(writer.AddColumn("Late"), 0);
        EXPECT_LT(writer.WriteAttribute("Late", value), 0);
        EXPECT_EQ(writer.WriteAttribute("Back", value), 0);
        writer.EndRecord();
        writer.EndRecord();
        EXPECT_EQ(wxString(sink.GetText()), "Front,Back\n," + field + "\n,\n");
    }
}

TEST(EncodedSinkTest, WhatIsNoCharacterIsReplaced) {
    const std::wstring text = {wchar_t(0xD83D), L'\0', wchar_t(0x110000)};
    const std::pair<wxFontEncoding, std::string> rows[] = {
        {wxFONTENCODING_UTF8, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
        {wxFONTENCODING_UTF16BE, "\xFF\xFD\xFF\xFD\xFF\xFD"},
        {wxFONTENCODING_UTF16LE, "\xFD\xFF\xFD\xFF\xFD\xFF"}};
    for (const auto& [encoding, expected] : rows) {
        wxMemoryOutputStream stream;
        EncodedSink sink(stream, encoding);
        sink.Write(text);
        EXPECT_TRUE(sink.Flush());
        std::string bytes(static_cast<size_t>(stream.GetLength()), '\0');
        stream.CopyTo(bytes.data(), bytes.size());
        EXPECT_EQ(bytes, expected) << encoding;
    }
}

}  // namespace
