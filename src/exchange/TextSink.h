#pragma once

#include <wx/fontenc.h>
#include <wx/string.h>

#include <cstddef>
#include <string>
#include <string_view>

class wxOutputStream;

// Where the text of an export goes, in UTF-16. Whatever is no character for a text (NUL, half a
// surrogate pair) becomes U+FFFD, so no text is ever lost whole; a pair comes in one piece. Lines
// end in a line feed.
class TextSink {
  public:
    virtual ~TextSink() = default;

    virtual void Write(std::u16string_view text) = 0;
    // False once something could not be written; what came after it is lost.
    virtual bool IsOk() const = 0;
};

// Collects the text.
class StringSink : public TextSink {
  public:
    void Write(std::u16string_view text) override;
    bool IsOk() const override { return true; }
    const wxString& GetText() const { return mText; }

  private:
    wxString mText;
};

// Encodes the text into a byte stream, block by block, with the platform's line ends. Nothing is
// complete before Flush.
class EncodedSink : public TextSink {
  public:
    // The stream is not owned. UTF-16 in either byte order; anything else gives UTF-8.
    EncodedSink(wxOutputStream& stream, wxFontEncoding encoding);

    void Write(std::u16string_view text) override;
    bool IsOk() const override { return mIsOk; }
    // Hands on what is still held. False when anything could not be written.
    bool Flush();

  private:
    using EncodeFunction = char* (*)(std::u16string_view text, char* out);

    wxOutputStream& mStream;
    EncodeFunction mEncode;
    std::string mBlock;
    // How much of the block is filled.
    size_t mHeld = 0;
    bool mIsOk = true;
};
