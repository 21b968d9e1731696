// The texts of an asset's attributes, as the columns of a bin show them.
#pragma once

#include "bins/BinItem.h"
#include "platform/project/LogAttribute.h"

#include <string>

namespace cutroom {

// The text of an attribute of the item's asset; marks are the item's own. An edit that is open is
// asked itself, another one is looked up in the project database, and opened only for what that
// does not hold. Takes the locks of what it asks: call it under no container's lock, or under the
// change lock. UTF-8.
std::string valueOf(const BinItem& item, const LogAttribute& attribute);

// What texts of one column are put in order by: as a leading number where the attribute says so,
// else as text: numbers by their value and before other text, that by lower-cased characters.
class SortKey {
public:
    SortKey(const LogAttribute& attribute, const std::wstring& text);
    friend bool operator<(const SortKey& a, const SortKey& b);

private:
    bool isText_ = false;
    double number_ = 0;
    std::wstring folded_;
    std::wstring text_;
};

} // namespace cutroom
