#pragma once

#include <wx/string.h>

// A sink of records: the attributes of one record, then its end.
class CardRecordWriter {
  public:
    virtual ~CardRecordWriter() = default;

    // 0, or -1 when this form has no place for an attribute of that name.
    virtual int WriteAttribute(const wxString& name, const wxString& value) = 0;
    virtual void EndRecord() = 0;
};
