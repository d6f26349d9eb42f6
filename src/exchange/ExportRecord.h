#pragma once

#include <string_view>

class CardRecordWriter;
class CardRow;
class DelimitedWriter;

// Which attributes of a card go into its record, in which order and with which values. The caller
// ends the record.

// The attributes of the full forms. The second texts of the sides become attributes of their own
// only when they are to be split off. An empty category is left out. 0, or -1 from the writer or
// for a card without an identity.
int WriteCardRecord(CardRecordWriter& writer, const CardRow& card, std::u16string_view category,
                    bool splitSecondTexts, bool includeScheduling);

// The header of the delimited form: a column for each attribute that WriteCardRecord writes.
void WriteCardHeader(DelimitedWriter& writer, bool splitSecondTexts, bool includeScheduling);

// The few attributes that the previous generation of the program knows.
int WriteVersion1Record(CardRecordWriter& writer, const CardRow& card, bool includeScheduling);
