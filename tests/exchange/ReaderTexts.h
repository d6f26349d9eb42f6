#pragma once

#include <wx/mstream.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "exchange/CardRecordReader.h"
#include "exchange/CharSource.h"
#include "exchange/TextEncoding.h"

// A file's bytes as the readers see them.
class TextOfBytes {
  public:
    explicit TextOfBytes(std::string bytes)
        : mBytes(std::move(bytes)),
          mStream(mBytes.data(), mBytes.size()),
          mSource(mStream, DetectTextEncoding(mStream)) {}
    CharSource& Source() { return mSource; }

  private:
    std::string mBytes;
    wxMemoryInputStream mStream;
    CharSource mSource;
};

// A record as "name@line=value" pieces, so that a failing comparison reads at a glance.
using Record = std::vector<std::string>;

inline std::vector<Record> ReadAll(CardRecordReader& reader) {
    std::vector<Record> records;
    while (reader.ReadRecord()) {
        Record record;
        for (uint32_t i = 0; i < reader.GetAttributeCount(); ++i) {
            const CardAttribute& attribute = reader.GetAttribute(i);
            record.push_back(attribute.Name.utf8_string() + "@" + std::to_string(attribute.Line) +
                             "=" + attribute.Value.utf8_string());
        }
        records.push_back(record);
    }
    return records;
}
