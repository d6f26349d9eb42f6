#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <cstddef>
#include <string>
#include <string_view>

class wxOutputStream;

// Receives the text of an export, in UTF-16 and with a line feed at the end of each line. The
// library's own stream is many times slower and loses a record with a number that is no character.
// NUL and half a surrogate pair become U+FFFD. Pass the two halves of a pair in one call.
class TextSink {
  public:
    virtual ~TextSink() = default;

    virtual void Write(std::u16string_view text) = 0;
    // Returns false once something could not be written; what followed it is lost.
    virtual bool IsOk() const = 0;
};

// Collects the text in memory.
class StringSink : public TextSink {
  public:
    void Write(std::u16string_view text) override;
    bool IsOk() const override { return true; }
    const wxString& GetText() const { return mText; }

  private:
    wxString mText;
};

// Encodes the text into a byte stream, block by block, with the platform's line ends. The text is
// complete only after Flush.
class EncodedSink : public TextSink {
  public:
    // The stream is not owned. The encoding is UTF-16 in either byte order; anything else means
    // UTF-8.
    EncodedSink(wxOutputStream& stream, wxFontEncoding encoding);

    void Write(std::u16string_view text) override;
    bool IsOk() const override { return mIsOk; }
    // Writes what is still held. Returns false when anything since the start could not be written.
    bool Flush();

  private:
    using EncodeFunction = char* (*)(std::u16string_view text, char* out);

    wxOutputStream& mStream;
    EncodeFunction mEncode;
    std::string mBlock;
    // The bytes of the block that are filled.
    size_t mHeld = 0;
    bool mIsOk = true;
};
