// The kinds of value that a field of the project database holds.
#pragma once

namespace DBFieldTypes {

// How a field's value is to be read. Dates are seconds since 1970-01-01T00:00:00Z, times of day
// seconds since midnight; everything is carried as text.
enum eType {
    dateTime = 0, // a date with a time of day
    date = 1,     // a date alone
    time = 2,     // a time of day alone
    text = 3,
    number = 4,
};

} // namespace DBFieldTypes
