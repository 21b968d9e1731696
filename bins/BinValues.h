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

// By what the texts of one column are sorted: by their leading number where the attribute is
// numeric; otherwise texts that are numbers come first, by value, and all others follow, by their
// lower-cased characters.
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
