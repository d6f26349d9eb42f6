#pragma once

#include <string_view>

// A sink of records: the attributes of one record, then its end. Texts are UTF-16, as the store
// keeps them.
class CardRecordWriter {
  public:
    virtual ~CardRecordWriter() = default;

    // 0, or -1 when this form has no place for an attribute of that name.
    virtual int WriteAttribute(std::u16string_view name, std::u16string_view value) = 0;
    virtual void EndRecord() = 0;
};
