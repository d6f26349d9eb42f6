#pragma once

#include <wx/mstream.h>

#include <string>
#include <utility>

#include "formats/CardRecord.h"
#include "formats/TextSource.h"

// A file's bytes as the readers see them.
class TextOfBytes {
  public:
    explicit TextOfBytes(std::string bytes)
        : mBytes(std::move(bytes)),
          mStream(mBytes.data(), mBytes.size()),
          mSource(mStream, DetectTextEncoding(mStream)) {}
    TextOfBytes(std::string bytes, wxFontEncoding encoding)
        : mBytes(std::move(bytes)),
          mStream(mBytes.data(), mBytes.size()),
          mSource(mStream, encoding) {}
    CharSource& Source() { return mSource; }

  private:
    std::string mBytes;
    wxMemoryInputStream mStream;
    CharSource mSource;
};

// All records of the reader, each with "/" behind it and "|" between its attributes; an attribute
// as "name@line=value".
inline std::string ReadAll(CardRecordReader& reader) {
    std::string text;
    for (; reader.ReadRecord(); text += "/") {
        for (uint32_t i = 0; i < reader.GetAttributeCount(); ++i) {
            const CardAttribute& attribute = reader.GetAttribute(i);
            text += (i == 0 ? "" : "|") + attribute.Name.utf8_string() + "@" +
                    std::to_string(attribute.Line) + "=" + attribute.Value.utf8_string();
        }
    }
    return text;
}
