#include <gtest/gtest.h>
#include <wx/mstream.h>

#include "formats/TextSink.h"

namespace {

// Alone, and within or behind a run of characters that go out together.
TEST(EncodedSinkTest, WhatIsNoCharacterIsReplaced) {
    const std::tuple<std::u16string, std::string, std::string> rows[] = {
        {{0xD83D}, "\xEF\xBF\xBD", "\xFF\xFD"},
        {{0xDE00}, "\xEF\xBF\xBD", "\xFF\xFD"},
        {{0}, "\xEF\xBF\xBD", "\xFF\xFD"},
        {{0xD83D, 0xDE01}, "\xF0\x9F\x98\x81", "\xD8\x3D\xDE\x01"},
        {{0x80}, "\xC2\x80", {'\0', '\x80'}}};
    const auto encode = [](const std::u16string& text, wxFontEncoding encoding) {
        wxMemoryOutputStream stream;
        EncodedSink sink(stream, encoding);
        sink.Write(text);
        EXPECT_TRUE(sink.Flush());
        std::string bytes(static_cast<size_t>(stream.GetLength()), '\0');
        stream.CopyTo(bytes.data(), bytes.size());
        return bytes;
    };
    for (const auto& [text, utf8, utf16] : rows) {
        for (size_t length = 0; length < 40; ++length) {
            const std::u16string whole = std::u16string(length, u'\u0101') + text + u'x';
            EXPECT_EQ(encode(whole, wxFONTENCODING_UTF16BE),
                      std::string(2 * length, '\x01') + utf16 + '\0' + 'x');
            EXPECT_EQ(encode(std::u16string(length, u'a') + text, wxFONTENCODING_UTF8),
                      std::string(length, 'a') + utf8);
        }
    }
}

}  // namespace
